#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace Tessaron::Testing
{

namespace
{

/// A tree with something of everything that other readers know.
void makeTree(const TemporaryTree &tree)
{
    tree.makeFile("plain.txt", "plain");
    tree.makeFile("folder/Ünïcode", QByteArray(70'000, 'u'));
    tree.makeFile("folder/empty");
    for (int number = 0; number < 300; ++number)
        tree.makeFile("many/file " + QByteArray::number(number), QByteArray::number(number));
}

QByteArray bytesOfFile(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

/// Where the driver of Linux finds the volume when it is given the whole device (fs/hfsplus/wrapper.c, part_tbl.c): a
/// volume header or a wrapper 1024 bytes in, else the map in the second sector, whose entries it takes to lie one
/// sector apart and to count in sectors. -1 when it finds none.
qint64 placeByTheKernel(const QByteArray &image)
{
    const auto number16 = [&](qint64 at) { return qFromBigEndian<quint16>(image.constData() + at); };
    const auto number32 = [&](qint64 at) { return qFromBigEndian<quint32>(image.constData() + at); };
    const auto isHeader = [&](qint64 at) { return image.mid(at + 1024, 2) == "H+"; };
    if (isHeader(0))
        return 0;
    if (image.mid(1024, 2) == "BD") {
        const qint64 unit = number32(1024 + 20);
        if (unit % 512 != 0 || (number16(1024 + 10) & 0x8000) == 0 || number16(1024 + 124) != 0x482B)
            return -1;
        const qint64 place = number16(1024 + 28) * qint64{512} + number16(1024 + 126) * unit;
        return isHeader(place) ? place : -1;
    }
    const quint32 entries = number32(512 + 4);
    for (quint32 entry = 0; entry < entries; ++entry) {
        const qint64 at = 512 + qint64{entry} * 512;
        if (image.mid(at, 2) != "PM")
            return -1;
        if (image.mid(at + 48, 9) == "Apple_HFS") {
            const qint64 place = number32(at + 8) * qint64{512};
            return isHeader(place) ? place : -1;
        }
    }
    return -1;
}

} // namespace

class HfsPlusReaders : public ::testing::TestWithParam<DRFilesystemMask>
{
};

TEST_P(HfsPlusReaders, sevenZip_extractsWhatWasWritten)
{
    if (!hasProgram(QStringLiteral("7z")))
        GTEST_SKIP() << "7z is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    const QTemporaryDir folder;
    QString volume = image.path();
    if (GetParam() != hfsPlusOnly) {
        // It looks for the volume where a file begins; so it gets the partition out of the map first.
        ASSERT_LE(runProgram(QStringLiteral("7z"),
                             {QStringLiteral("x"), QStringLiteral("-tapm"), QStringLiteral("-y"),
                              QStringLiteral("-o") + folder.path(), image.path()})
                      .status,
                  1);
        const QStringList found = QDir(folder.path()).entryList({QStringLiteral("*.hfs")});
        ASSERT_EQ(found.size(), 1);
        volume = folder.filePath(found.front());
    }
    const ProgramRun result = runProgram(QStringLiteral("7z"),
                                         {QStringLiteral("x"), QStringLiteral("-thfs"), QStringLiteral("-y"),
                                          QStringLiteral("-o") + folder.path(), volume});
    // What precedes and follows the volume in the image is worth a warning.
    ASSERT_LE(result.status, 1) << result.output.toStdString() << result.errors.toStdString();
    const QString root = folder.filePath(QDir(tree.pathText()).dirName());
    EXPECT_EQ(bytesOfFile(root + QStringLiteral("/plain.txt")), "plain");
    // 7z leaves names as they are stored.
    EXPECT_EQ(bytesOfFile(root + QStringLiteral("/folder/Ünïcode").normalized(QString::NormalizationForm_D)),
              QByteArray(70'000, 'u'));
    EXPECT_EQ(bytesOfFile(root + QStringLiteral("/folder/empty")), "");
    for (int number = 0; number < 300; ++number)
        EXPECT_EQ(bytesOfFile(root + QStringLiteral("/many/file %1").arg(number)), QByteArray::number(number));
}

TEST_P(HfsPlusReaders, sevenZip_findsTheVolumeInThePartitionMap)
{
    if (!hasProgram(QStringLiteral("7z")))
        GTEST_SKIP() << "7z is not installed";
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("file"), "f"));
    const WrittenImage image(root, optionsFor(GetParam()));
    const ProgramRun result =
        runProgram(QStringLiteral("7z"), {QStringLiteral("l"), QStringLiteral("-tapm"), image.path()});
    EXPECT_EQ(result.status, 0) << result.output.toStdString();
    EXPECT_TRUE(result.output.contains("HFS+.hfs")) << result.output.toStdString();
}

TEST_P(HfsPlusReaders, driverOfLinux_findsTheVolume_onTheWholeDevice)
{
    const TemporaryTree tree;
    makeTree(tree);
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    EXPECT_EQ(placeByTheKernel(image.bytes(0, 64 << 10)), 8 * 2048);
}

TEST_P(HfsPlusReaders, mmls_findsTheVolumeInThePartitionMap)
{
    if (!hasProgram(QStringLiteral("mmls")))
        GTEST_SKIP() << "mmls is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    // It counts in units of the device, which is a disc only where the map does so, too.
    const bool isAlone = GetParam() == hfsPlusOnly;
    const ProgramRun result = runProgram(QStringLiteral("mmls"),
                                         {QStringLiteral("-t"), QStringLiteral("mac"), QStringLiteral("-b"),
                                          isAlone ? QStringLiteral("2048") : QStringLiteral("512"), image.path()});
    EXPECT_EQ(result.status, 0) << result.errors.toStdString();
    const QByteArray start = isAlone ? " 0000000008 " : " 0000000032 ";
    bool isFound = false;
    for (const QByteArray &line : result.output.split('\n'))
        isFound |= line.contains("Apple_HFS") && line.simplified().contains(start.trimmed());
    EXPECT_TRUE(isFound) << result.output.toStdString();
}

TEST_P(HfsPlusReaders, hfsplusTools_readTheWholeDevice)
{
    // They know nothing of partition maps.
    if (GetParam() != hfsPlusOnly)
        return;
    if (!hasProgram(QStringLiteral("hpmount")))
        GTEST_SKIP() << "hpmount is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    const WrittenImage image(realFolder(tree), optionsFor(GetParam()));
    // The tools keep the mounted volume in the home folder.
    const QTemporaryDir home;
    const auto run = [&](const QString &command) {
        return runProgram(QStringLiteral("sh"),
                          {QStringLiteral("-c"), QStringLiteral("HOME='%1' %2 </dev/null").arg(home.path(), command)},
                          home.path());
    };
    ASSERT_EQ(run(QStringLiteral("hpmount -r '%1'").arg(image.path())).status, 0);
    EXPECT_EQ(run(QStringLiteral("hpls many")).output.count("file "), 300);
    EXPECT_EQ(run(QStringLiteral("hpcopy -r plain.txt out")).status, 0);
    EXPECT_EQ(bytesOfFile(home.filePath(QStringLiteral("out"))), "plain");
    EXPECT_EQ(run(QStringLiteral("hpcd many && HOME='%1' hpcopy -r 'FILE 299' out2").arg(home.path())).status, 0);
    EXPECT_EQ(bytesOfFile(home.filePath(QStringLiteral("out2"))), "299") << "found without regard to case";
    (void)run(QStringLiteral("hpumount"));
}

TEST_P(HfsPlusReaders, blkid_recognisesTheVolumeOrABridge)
{
    if (!hasProgram(QStringLiteral("blkid")))
        GTEST_SKIP() << "blkid is not installed";
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("Label"));
    // Of less than a floppy disk libblkid takes the first filesystem that it finds.
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("file"), QByteArray(2 << 20, 'f')));
    const WrittenImage image(root, optionsFor(GetParam()));
    const ProgramRun result = runProgram(QStringLiteral("blkid"), {QStringLiteral("-p"), image.path()});
    EXPECT_EQ(result.status, 0) << result.errors.toStdString();
    EXPECT_TRUE(result.output.contains("LABEL=\"Label\"") || result.output.contains("LABEL=\"LABEL\""))
        << result.output.toStdString();
    const bool hasUdf = (GetParam() & DRFilesystemInclusionMaskUDF) != 0;
    const char *const type = GetParam() == hfsPlusOnly ? " TYPE=\"hfsplus\""
        : hasUdf                                       ? " TYPE=\"udf\""
                                                       : " TYPE=\"iso9660\"";
    EXPECT_TRUE(result.output.contains(type)) << result.output.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Masks, HfsPlusReaders, ::testing::Range<DRFilesystemMask>(8, 16));

TEST(HfsPlusReadersAlone, hpfsck_findsHeadersAndExtentsSound)
{
    if (!hasProgram(QStringLiteral("hpfsck")))
        GTEST_SKIP() << "hpfsck is not installed";
    const TemporaryTree tree;
    makeTree(tree);
    const WrittenImage image(realFolder(tree), optionsFor(hfsPlusOnly));
    const ProgramRun result = runProgram(QStringLiteral("hpfsck"), {QStringLiteral("-v"), image.path()});
    // It stops at any catalog, whoever wrote it (docs/hfsplus.md), but not before.
    QByteArray unwrapped = result.output;
    unwrapped.replace('\t', "");
    const auto isDone = [&](const QByteArray &step) {
        const qsizetype start = unwrapped.indexOf("*** Checking " + step);
        const qsizetype next = unwrapped.indexOf("*** Checking", start + 1);
        return start >= 0 && unwrapped.mid(start, next - start).contains("Done ***");
    };
    EXPECT_TRUE(isDone("Volume Header:")) << result.output.toStdString();
    EXPECT_TRUE(isDone("Backup Volume Header:")) << result.output.toStdString();
    EXPECT_TRUE(isDone("Extents Btree:")) << result.output.toStdString();
    EXPECT_FALSE(result.output.contains("Invalid")) << result.output.toStdString();
    EXPECT_FALSE(result.output.contains("nexpected")) << result.output.toStdString();
}

TEST(HfsPlusReadersAlone, wrapper_isThere_onlyWhereTheImageHoldsNothingElse)
{
    const TemporaryTree tree;
    makeTree(tree);
    for (DRFilesystemMask mask = 8; mask < 16; ++mask) {
        const WrittenImage image(realFolder(tree), optionsFor(mask));
        const HfsPlusImageReader reader(image.path());
        EXPECT_EQ(reader.hasWrapper(), mask == hfsPlusOnly);
        EXPECT_EQ(reader.mapUnit(), mask == hfsPlusOnly ? 2048u : 512u);
    }
}

} // namespace Tessaron::Testing
