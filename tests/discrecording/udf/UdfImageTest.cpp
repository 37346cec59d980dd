#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/discrecording/udf/UdfImageReader.h"
#include "tests/support/TemporaryTree.h"

#include <QDateTime>
#include <QTimeZone>
#include <QVariant>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

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

const PlanOptions udfAlone = optionsFor(DRFilesystemInclusionMaskUDF);

std::shared_ptr<DRFolder> folderOf(const TemporaryTree &tree)
{
    return DRFolder::folderWithPath(tree.pathText());
}

void expectSound(const UdfImageReader &reader)
{
    EXPECT_EQ(reader.problems(), QStringList());
}

QByteArrayList pathsIn(const UdfImageReader &reader)
{
    QByteArrayList paths;
    for (const auto &[path, object] : reader.objects())
        paths.append(path);
    return paths;
}

} // namespace

TEST(UdfImage, planDiscImage_makesASoundVolume_withEachMaskThatHasUdf)
{
    const TemporaryTree tree;
    tree.makeFile("read me.txt", "hello");
    tree.makeFile("data/numbers.bin", QByteArray(300'001, '\x17'));
    tree.makeFile("data/empty");
    tree.makeFolder("data/empty folder");
    tree.makeFile("a/b/c/d/e/f/g/h/i/j", "deep");
    for (const DRFilesystemMask others : {0u, DRFilesystemInclusionMaskISO9660, DRFilesystemInclusionMaskJoliet,
                                          DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet}) {
        SCOPED_TRACE(others);
        const WrittenImage image(folderOf(tree), optionsFor(others | DRFilesystemInclusionMaskUDF));
        ASSERT_FALSE(image.error());
        UdfImageReader reader(image.path());
        expectSound(reader);
        EXPECT_EQ(pathsIn(reader),
                  (QByteArrayList{"", "a", "a/b", "a/b/c", "a/b/c/d", "a/b/c/d/e", "a/b/c/d/e/f", "a/b/c/d/e/f/g",
                                  "a/b/c/d/e/f/g/h", "a/b/c/d/e/f/g/h/i", "a/b/c/d/e/f/g/h/i/j", "data", "data/empty",
                                  "data/empty folder", "data/numbers.bin", "read me.txt"}));
        EXPECT_EQ(reader.contents("read me.txt"), "hello");
        EXPECT_EQ(reader.contents("data/numbers.bin"), QByteArray(300'001, '\x17'));
        EXPECT_EQ(reader.contents("data/empty"), "");
        EXPECT_EQ(image.plan().report->count(DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed), 0u);
    }
}

TEST(UdfImage, planDiscImage_putsOnlyWhatUdfMayHoldIntoIt)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    const auto add = [](DRFolder &folder, const char *name, DRFilesystemMask mask) {
        const auto file = DRFile::virtualFileWithName(QString::fromLatin1(name), QByteArray(name));
        file->setExplicitFilesystemMask(mask);
        folder.addChild(file);
    };
    const auto inside = DRFolder::virtualFolderWithName(QStringLiteral("inside"));
    inside->setExplicitFilesystemMask(DRFilesystemInclusionMaskISO9660);
    root->addChild(inside);
    add(*root, "both", DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskISO9660);
    add(*root, "iso", DRFilesystemInclusionMaskISO9660);
    add(*inside, "udf", DRFilesystemInclusionMaskUDF);
    add(*inside, "joliet", DRFilesystemInclusionMaskJoliet);
    const WrittenImage image(root, optionsFor(7));
    UdfImageReader reader(image.path());
    expectSound(reader);
    EXPECT_EQ(pathsIn(reader), (QByteArrayList{"", "both", "inside", "inside/udf"}));
    EXPECT_EQ(reader.contents("inside/udf"), "udf");

    // Nobody asks for UDF: no such volume.
    const auto other = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    add(*other, "iso", DRFilesystemInclusionMaskISO9660);
    EXPECT_FALSE(WrittenImage(other, optionsFor(7)).bytes(0, std::uint64_t{100} * 2048).contains("NSR02"));
}

TEST(UdfImage, planDiscImage_makesAnEmptyVolume_ofNothing)
{
    const WrittenImage image(DRFolder::virtualFolderWithName(QStringLiteral("Nothing")), udfAlone);
    const UdfImageReader reader(image.path());
    expectSound(reader);
    EXPECT_EQ(pathsIn(reader), QByteArrayList{""});
    EXPECT_EQ(reader.objects().at("").links, 1);
}

TEST(UdfImage, volumeName_isKept_whereItFits)
{
    const QString umlauts = QStringLiteral("Über");
    const QString wide = QString(63, QChar(0x65E5));
    for (const QString &name : {QStringLiteral("A disc: with/name"), umlauts, wide, QString(126, u'x')}) {
        const WrittenImage image(DRFolder::virtualFolderWithName(name), udfAlone);
        const UdfImageReader reader(image.path());
        expectSound(reader);
        EXPECT_EQ(reader.volumeName(), name);
        EXPECT_EQ(image.plan().report->count(), 0u);
    }
    const WrittenImage image(DRFolder::virtualFolderWithName(wide + QStringLiteral("z")), udfAlone);
    EXPECT_EQ(UdfImageReader(image.path()).volumeName(), wide);
    ASSERT_EQ(image.items(DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed).size(), 1u);
    EXPECT_EQ(image.items(DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed)[0].nameGiven, wide);
}

TEST(UdfImage, volumeSet_beginsWithDigitsThatFollowFromTimeAndContents)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    root->setProperty(QStringLiteral("The Set"), DRVolumeSet, DRAllFilesystems);
    const QString first = UdfImageReader(WrittenImage(root, udfAlone).path()).volumeSet();
    EXPECT_TRUE(first.startsWith(QStringLiteral("6553F100"))) << first.toStdString(); // 1,700,000,000
    EXPECT_EQ(first.mid(16), QStringLiteral("The Set"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("f"), "x"));
    const QString second = UdfImageReader(WrittenImage(root, udfAlone).path()).volumeSet();
    EXPECT_EQ(second.first(8), first.first(8));
    EXPECT_NE(second.mid(8, 8), first.mid(8, 8));
}

TEST(UdfImage, longFiles_haveSeveralDescriptors_andTheirExactSizes)
{
    const TemporaryTree tree;
    const qint64 gibibyte = qint64(1) << 30;
    tree.makeSparseFile("a one descriptor", gibibyte - 2048);
    tree.makeSparseFile("b two", gibibyte);
    tree.makeSparseFile("c five and a bit", 5 * gibibyte + 123);
    const WrittenImage image(folderOf(tree), optionsFor(7), 1 << 18);
    const UdfImageReader reader(image.path());
    expectSound(reader);
    const auto &objects = reader.objects();
    EXPECT_EQ(objects.at("a one descriptor").extents.size(), 1u);
    EXPECT_EQ(objects.at("b two").extents.size(), 2u);
    EXPECT_EQ(objects.at("b two").extents.back().bytes, 2048u);
    EXPECT_EQ(objects.at("c five and a bit").extents.size(), 6u);
    EXPECT_EQ(objects.at("c five and a bit").size, static_cast<std::uint64_t>(5 * gibibyte + 123));
}

TEST(UdfImage, hugeFiles_continueInAllocationExtents)
{
    const TemporaryTree tree;
    const qint64 part = 0x3FFFF800;
    // As many descriptors as a file entry holds, one more, and one more than a file entry and an allocation extent
    // hold.
    tree.makeSparseFile("a", 234 * part);
    tree.makeSparseFile("b", 234 * part + 1);
    tree.makeSparseFile("c", (233 + 253) * part);
    tree.makeSparseFile("d", (233 + 253) * part + 4096);
    const WrittenImage image(folderOf(tree), udfAlone, 1 << 30);
    ASSERT_FALSE(image.error());
    const UdfImageReader reader(image.path());
    expectSound(reader);
    EXPECT_EQ(reader.objects().at("a").extents.size(), 234u);
    EXPECT_EQ(reader.objects().at("b").extents.size(), 235u);
    EXPECT_EQ(reader.objects().at("c").extents.size(), 486u);
    EXPECT_EQ(reader.objects().at("d").extents.size(), 487u);
}

TEST(UdfImage, directories_areTheSame_whateverThePiecesAre)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("many"));
    root->addChild(folder);
    for (int number = 0; number < 20'000; ++number)
        folder->addChild(DRFile::virtualFileWithName(QStringLiteral("entry number %1").arg(number), {}));
    const WrittenImage image(root, udfAlone);
    const UdfImageReader reader(image.path());
    expectSound(reader);
    EXPECT_EQ(reader.objects().size(), 20'002u);
    EXPECT_GT(reader.objects().at("many").size, 8u * 64 * 2048) << "more than one restart";
    const QByteArray whole = image.bytes(0, image.size());
    EXPECT_EQ(imageBytes(*image.plan().image, 1), whole);
    EXPECT_EQ(imageBytes(*image.plan().image, 77), whole);
    EXPECT_EQ(imageBytes(*image.plan().image, 1 << 20), whole);
}

TEST(UdfImage, image_hasTheSameBytes_whenTheTimeIsGiven)
{
    const TemporaryTree tree;
    tree.makeFile("folder/file", "contents");
    tree.makeSymbolicLink("folder/link", "file");
    const WrittenImage first(folderOf(tree), optionsFor(7));
    ::sleep(1);
    tree.setMode("folder/file", 0600); // what a copy of the tree would not keep: the time of the attributes' change
    tree.setMode("folder/file", 0644);
    const WrittenImage second(folderOf(tree), optionsFor(7));
    EXPECT_EQ(first.bytes(0, first.size()), second.bytes(0, second.size()));
}

TEST(UdfImage, prepare_stops_whenCancelled)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("f"), "x"));
    std::stop_source stopper;
    NSError error;
    const DiscImagePlan plan = planDiscImage(
        root, udfAlone, stopper.get_token(),
        [&](double share) {
            if (share >= 0.6)
                stopper.request_stop();
        },
        &error);
    EXPECT_EQ(plan.image, nullptr);
    EXPECT_FALSE(error);
}

} // namespace Tessaron::Testing
