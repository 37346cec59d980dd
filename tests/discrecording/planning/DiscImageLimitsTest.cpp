#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr std::int64_t gibibyte = std::int64_t{1} << 30;

void writeAt(const QByteArray &path, std::int64_t offset, const QByteArray &bytes)
{
    const int descriptor = ::open(path.constData(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(::pwrite(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()), offset), bytes.size());
    ::close(descriptor);
}

} // namespace

TEST(DiscImageLimits, fileAbove4GiB_hasSeveralSections_inBothTrees)
{
    const TemporaryTree tree;
    const std::int64_t size = 9 * gibibyte + 12345;
    const QByteArray path = tree.makeSparseFile("big", size);
    writeAt(path, 0, "begin");
    writeAt(path, 0xFFFFF800, "second section");
    writeAt(path, size - 3, "end");
    tree.makeFile("small", "behind it");
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    for (const IsoVolume *const volume : {reader.primary(), reader.joliet()}) {
        const IsoObject *const big = volume->root.child(QStringLiteral("big"));
        ASSERT_TRUE(big);
        EXPECT_EQ(big->size, static_cast<std::uint64_t>(size));
        ASSERT_EQ(big->extents.size(), 3u);
        EXPECT_EQ(big->extents[0].bytes, 0xFFFFF800u);
        EXPECT_EQ(big->extents[1].bytes, 0xFFFFF800u);
        const std::uint64_t start = std::uint64_t{big->extents[0].block} * 2048;
        EXPECT_EQ(image.bytes(start, 5), "begin");
        EXPECT_EQ(image.bytes(std::uint64_t{big->extents[1].block} * 2048, 14), "second section");
        EXPECT_EQ(image.bytes(start + static_cast<std::uint64_t>(size) - 3, 4), QByteArray("end\0", 4));
        EXPECT_EQ(reader.contents(*volume->root.child(QStringLiteral("small"))), "behind it");
    }
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageLimits, fileOfExactlyOneSection_hasOneRecord)
{
    const TemporaryTree tree;
    tree.makeSparseFile("fits", 0xFFFFF800);
    tree.makeSparseFile("over", 0xFFFFF801);
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.child(QStringLiteral("fits"))->extents.size(), 1u);
    EXPECT_EQ(reader.primary()->root.child(QStringLiteral("over"))->extents.size(), 2u);
    EXPECT_EQ(reader.primary()->root.child(QStringLiteral("over"))->extents[1].bytes, 1u);
}

TEST(DiscImageLimits, planDiscImage_fails_whenTheImageWouldNeedMoreThan32BitsOfBlocks)
{
    const TemporaryTree tree;
    const QByteArray path = tree.makeFile("huge");
    if (::truncate(path.constData(), 8192 * gibibyte) != 0)
        GTEST_SKIP() << "the file system has no files of this size";
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    EXPECT_FALSE(image.plan().image);
    EXPECT_EQ(image.error().code(), dskFulErr);
    EXPECT_FALSE(image.error().localizedRecoverySuggestion().isEmpty());
}

TEST(DiscImageLimits, deepFolders_areStoredInPlace_andReportedOnce)
{
    const TemporaryTree tree;
    QByteArray path;
    for (int level = 1; level <= 20; ++level)
        path += "level" + QByteArray::number(level) + '/';
    tree.makeFile(path + "file", "deep");
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    const IsoObject *const file = IsoImageReader::objectAt(
        *reader.primary(), QStringLiteral("/") + QString::fromUtf8(path) + QStringLiteral("file"));
    ASSERT_TRUE(file);
    EXPECT_EQ(reader.contents(*file), "deep");
    // The root is the first level: level8 is the ninth.
    const auto items = image.items(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered);
    ASSERT_EQ(items.size(), 13u);
    EXPECT_TRUE(items[0].path.endsWith(QStringLiteral("/level8")));
    EXPECT_TRUE(items[12].path.endsWith(QStringLiteral("/level20")));
    EXPECT_FALSE(items[0].isLost);
}

TEST(DiscImageLimits, pathsBeyond255Characters_areReportedForTheirFolder)
{
    const auto root = DRFolder::virtualFolderWithName({});
    std::shared_ptr<DRFolder> folder = root;
    for (int level = 0; level < 7; ++level) {
        const auto next = DRFolder::virtualFolderWithName(QStringLiteral("A").repeated(31));
        folder->addChild(next);
        folder = next;
    }
    // Seven folders of 31 and a separator each: 224; with these files 255 and 256.
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("B").repeated(28), "fits"));
    const WrittenImage fitting(root);
    EXPECT_EQ(fitting.plan().report->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered), 0u);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("C").repeated(29), "does not"));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(image.plan().report->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered), 1u);
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageLimits, seventyThousandFolders_fitIntoThePathTable_whenTheirParentHasASmallNumber)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (int number = 0; number < 70'000; ++number)
        root->addChild(DRFolder::virtualFolderWithName(QStringLiteral("F%1").arg(number)));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->pathTableFolders, 70'001u);
    EXPECT_EQ(image.plan().folderCount, 70'000u);
    EXPECT_EQ(image.plan().report->count(), 0u);
}

TEST(DiscImageLimits, foldersBelowTooManyParents_areMissingInThePathTable_andReported)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (int number = 10'000; number < 76'000; ++number) {
        const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("F%1").arg(number));
        if (number >= 75'000)
            folder->addChild(DRFolder::virtualFolderWithName(QStringLiteral("BELOW")));
        root->addChild(folder);
    }
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    // Parents have numbers 2 to 66,001; those of the last 1,000 begin with 65,002.
    const std::size_t missing = 66'001 - 65'535;
    EXPECT_EQ(reader.primary()->pathTableFolders, 66'001u + 1'000 - missing);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered), missing);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::Joliet, DRStorageReportItem::Kind::Altered), missing);
    EXPECT_TRUE(IsoImageReader::objectAt(*reader.primary(), QStringLiteral("/F75999/BELOW"))) << "directories hold it";
}

TEST(DiscImageLimits, timesOutOfRange_areClampedAndReported)
{
    const auto root = DRFolder::virtualFolderWithName({});
    const auto early = DRFile::virtualFileWithName(QStringLiteral("EARLY"), "e");
    early->setProperty(QDateTime(QDate(1899, 12, 31), QTime(23, 59, 59), Qt::UTC), DRContentModificationDate,
                       DRAllFilesystems);
    const auto late = DRFile::virtualFileWithName(QStringLiteral("LATE"), "l");
    late->setProperty(QDateTime(QDate(2156, 1, 1), QTime(0, 0), Qt::UTC), DRContentModificationDate, DRAllFilesystems);
    root->addChild(early);
    root->addChild(late);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.children[0]->recordingTime, -2208988800);
    EXPECT_EQ(reader.primary()->root.children[1]->recordingTime, 5869583999);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered), 2u);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::Joliet, DRStorageReportItem::Kind::Altered), 2u);
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

} // namespace Tessaron::Testing
