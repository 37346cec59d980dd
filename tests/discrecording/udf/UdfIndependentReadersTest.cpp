#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/discrecording/udf/UdfImageReader.h"
#include "tests/discrecording/udf/UdfLibraryReader.h"
#include "tests/support/TemporaryTree.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

PlanOptions optionsFor(DRFilesystemMask filesystems)
{
    PlanOptions options;
    options.filesystems = filesystems;
    options.sourceDateEpoch = 1'700'000'000;
    return options;
}

constexpr DRFilesystemMask bridge =
    DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet | DRFilesystemInclusionMaskUDF;

/// Ordinary and odd files, all with contents of their own.
void makeTree(const TemporaryTree &tree)
{
    tree.makeFile("read me.txt", "hello\n");
    tree.makeFile("data/numbers.bin", QByteArray(3'000'000, '\x17'));
    tree.makeFile("data/empty");
    tree.makeFile("data/block", QByteArray(2048, 'b'));
    tree.makeFolder("data/empty folder");
    tree.makeFile("\xC3\x9C\xE2\x82\xAC/\xE6\x97\xA5\xE6\x9C\xAC", "wide");
    tree.makeFile("what?*:", "forbidden elsewhere");
    tree.makeFile(QByteArray(254, 'L'), "a long name");
    tree.makeFile("a/b/c/d/e/f/g/h/i/j/k/l", "deep");
    tree.makeHardLink("data/hard link", "read me.txt");
    for (int number = 0; number < 300; ++number)
        tree.makeFile("many/name " + QByteArray::number(number), QByteArray::number(number));
}

QByteArray sha1(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
}

} // namespace

TEST(UdfIndependentReaders, library_listsAndReadsAll_withEachMaskThatHasUdf)
{
    const TemporaryTree tree;
    makeTree(tree);
    for (const DRFilesystemMask mask : {4u, 5u, 6u, 7u}) {
        SCOPED_TRACE(mask);
        const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), optionsFor(mask));
        UdfImageReader reader(image.path());
        EXPECT_EQ(reader.problems(), QStringList());
        const LibraryVolume volume = readWithLibrary(image.path());
        ASSERT_TRUE(volume.isReadable);
        EXPECT_EQ(volume.name, reader.volumeName());
        ASSERT_EQ(volume.objects.size() + 1, reader.objects().size());
        for (const auto &[path, object] : volume.objects) {
            ASSERT_TRUE(tree.exists(path)) << path.constData();
            if (object.isFolder)
                continue;
            EXPECT_EQ(object.digest, sha1(tree.contents(path))) << path.constData();
            EXPECT_EQ(object.digest, reader.digest(path)) << path.constData();
        }
    }
}

TEST(UdfIndependentReaders, library_readsFilesBeyondTheLimitsOfAnExtent)
{
    const TemporaryTree tree;
    const qint64 size = Q_INT64_C(4) * 1024 * 1024 * 1024 + 5000;
    tree.makeSparseFile("big", size);
    tree.makeFile("small", "behind it");
    QFile big(tree.pathText("big"));
    ASSERT_TRUE(big.open(QIODevice::ReadWrite));
    for (const qint64 at : {qint64(0), qint64(0x3FFFF800) - 3, size - 7}) {
        big.seek(at);
        big.write("landmark", qMin(qint64(8), size - at));
    }
    big.close();
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), optionsFor(DRFilesystemInclusionMaskUDF), 4096);
    UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    QCryptographicHash hash(QCryptographicHash::Sha1);
    ASSERT_TRUE(big.open(QIODevice::ReadOnly));
    hash.addData(&big);
    const LibraryVolume volume = readWithLibrary(image.path());
    EXPECT_TRUE(volume.isReadable);
    EXPECT_EQ(volume.objects.at("big").size, size);
    EXPECT_EQ(volume.objects.at("big").digest, hash.result());
    EXPECT_EQ(volume.objects.at("small").digest, sha1("behind it"));
}

TEST(UdfIndependentReaders, udfinfo_saysWhatTheVolumeIs)
{
    if (!hasProgram(QStringLiteral("udfinfo")))
        GTEST_SKIP() << "udfinfo is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    const auto root = DRFolder::folderWithPath(tree.pathText());
    root->setBaseName(QStringLiteral("Größe €"));
    for (const DRFilesystemMask mask : {4u, 5u, 6u, 7u}) {
        SCOPED_TRACE(mask);
        const WrittenImage image(root, optionsFor(mask));
        const ProgramRun result = runProgram(QStringLiteral("udfinfo"), {QStringLiteral("--utf8"), image.path()});
        EXPECT_EQ(result.status, 0);
        EXPECT_FALSE(result.errors.contains("rror")) << result.errors.constData();
        EXPECT_FALSE(result.errors.contains("arning")) << result.errors.constData();
        const QByteArrayList lines = result.output.split('\n');
        for (const char *const line : {"label=Größe €", "udfrev=1.02", "integrity=closed", "numfiles=309", "numdirs=16",
                                       "accesstype=readonly", "blocksize=2048"})
            EXPECT_TRUE(lines.contains(line)) << line << " is not in\n" << result.output.constData();
    }
}

TEST(UdfIndependentReaders, blkid_takesItForUdf)
{
    if (!hasProgram(QStringLiteral("blkid")))
        GTEST_SKIP() << "blkid is not installed";
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("A Disc"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("f"), "x"));
    const WrittenImage image(root, optionsFor(bridge));
    const QByteArray output =
        runProgram(QStringLiteral("blkid"),
                   {QStringLiteral("-p"), QStringLiteral("-o"), QStringLiteral("export"), image.path()})
            .output;
    EXPECT_TRUE(output.contains("\nTYPE=udf\n") || output.startsWith("TYPE=udf\n")) << output.constData();
    EXPECT_TRUE(output.contains("LABEL=A\\ Disc") || output.contains("LABEL=A Disc")) << output.constData();
    EXPECT_TRUE(output.contains("VERSION=1.02")) << output.constData();
}

TEST(UdfIndependentReaders, sevenZip_extractsAll)
{
    if (!hasProgram(QStringLiteral("7z")))
        GTEST_SKIP() << "7z is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    for (const DRFilesystemMask mask : {DRFilesystemInclusionMaskUDF, bridge}) {
        SCOPED_TRACE(mask);
        const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), optionsFor(mask));
        const QTemporaryDir target;
        const ProgramRun result = runProgram(QStringLiteral("7z"),
                                             {QStringLiteral("x"), QStringLiteral("-tudf"), QStringLiteral("-y"),
                                              QStringLiteral("-o") + target.path(), image.path()});
        EXPECT_EQ(result.status, 0) << result.output.constData() << result.errors.constData();
        const ProgramRun difference =
            runProgram(QStringLiteral("diff"), {QStringLiteral("-r"), tree.pathText(), target.path()});
        EXPECT_EQ(difference.status, 0) << difference.output.constData();
    }
}

TEST(UdfIndependentReaders, isoinfo_stillReadsTheOtherTrees)
{
    if (!hasProgram(QStringLiteral("isoinfo")))
        GTEST_SKIP() << "isoinfo is not installed";
    const TemporaryTree tree;
    tree.makeFile("folder/file name", "contents");
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), optionsFor(bridge));
    for (const QString &flag : {QStringLiteral("-R"), QStringLiteral("-J")}) {
        const ProgramRun result = runProgram(
            QStringLiteral("isoinfo"),
            {flag, QStringLiteral("-i"), image.path(), QStringLiteral("-x"), QStringLiteral("/folder/file name")});
        EXPECT_EQ(result.output, "contents") << flag.toStdString();
    }
}

} // namespace Tessaron::Testing
