#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

#include <QDateTime>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Tessaron::Testing
{

TEST(HfsPlusContents, realFolder_isTakenWholesale)
{
    const TemporaryTree tree;
    tree.makeFile("read me.txt", "hello");
    tree.makeFile("sub/deeper/data", QByteArray(100'000, 'd'));
    tree.makeFolder("empty folder");
    tree.makeFile("empty file");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.contents("/read me.txt"), "hello");
    EXPECT_EQ(image.contents("/sub/deeper/data"), QByteArray(100'000, 'd'));
    EXPECT_TRUE(image.at("/empty folder").isFolder);
    EXPECT_EQ(image.at("/empty file").data, HfsFork());
    EXPECT_EQ(image.reader.fileCount(), 3u);
    EXPECT_EQ(image.reader.folderCount(), 3u);
    EXPECT_EQ(image.written.plan().report->count(), 0u) << "nothing to be told";
    EXPECT_EQ(image.reader.attributes() & 0x8000u, 0x8000u) << "locked: the disc has other filesystems";
}

TEST(HfsPlusContents, emptyTree_isAVolume)
{
    const ReadHfsImage image(DRFolder::virtualFolderWithName(QStringLiteral("Nothing")));
    EXPECT_EQ(image.reader.root().name, QStringLiteral("Nothing"));
    EXPECT_TRUE(image.reader.root().children.empty());
}

TEST(HfsPlusContents, contents_comeFromMemoryAndDisk)
{
    const TemporaryTree tree;
    tree.makeFile("on disk", "from disk");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("Root"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("inner"));
    root->addChild(folder);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("in memory"), QByteArray(5000, 'm')));
    folder->addChild(DRFile::fileWithPath(tree.pathText("on disk")));
    const ReadHfsImage image(root);
    EXPECT_EQ(image.contents("/inner/in memory"), QByteArray(5000, 'm'));
    EXPECT_EQ(image.contents("/inner/on disk"), "from disk");
    EXPECT_EQ(image.at("/inner/in memory").mode, S_IFREG | 0644);
}

TEST(HfsPlusContents, attributes_areTheSources)
{
    const TemporaryTree tree;
    tree.makeFile("folder/script", "#!");
    tree.setMode("folder/script", 04751);
    tree.setModificationTime("folder/script", 1'000'000'001);
    tree.setMode("folder", 0711);
    tree.setModificationTime("folder", 1'000'000'002);
    const ReadHfsImage image(realFolder(tree));
    struct stat status;
    ASSERT_EQ(::stat(tree.path("folder/script").constData(), &status), 0);
    const HfsObject &file = image.at("/folder/script");
    EXPECT_EQ(file.mode, S_IFREG | 04751);
    EXPECT_EQ(file.userId, status.st_uid);
    EXPECT_EQ(file.groupId, status.st_gid);
    EXPECT_EQ(file.modificationTime, 1'000'000'001);
    EXPECT_EQ(file.accessTime, 1'000'000'001);
    EXPECT_EQ(file.creationTime, 1'000'000'001) << "not created after it was changed";
    EXPECT_EQ(file.attributeTime, status.st_ctim.tv_sec);
    EXPECT_EQ(image.at("/folder").mode, S_IFDIR | 0711);
    EXPECT_EQ(image.at("/folder").modificationTime, 1'000'000'002);
}

TEST(HfsPlusContents, dateProperties_takeThePlaceOfTheSources)
{
    const auto root = DRFolder::virtualFolderWithName({});
    const auto file = DRFile::virtualFileWithName(QStringLiteral("file"), "f");
    const auto set = [&](const QString &key, qint64 seconds) {
        file->setProperty(QDateTime::fromSecsSinceEpoch(seconds), key, DRAllFilesystems);
    };
    set(DRCreationDate, 100);
    set(DRContentModificationDate, 200);
    set(DRAttributeModificationDate, 300);
    set(DRAccessDate, 400);
    root->addChild(file);
    const auto late = DRFile::virtualFileWithName(QStringLiteral("late"), "l");
    late->setProperty(QDateTime::fromSecsSinceEpoch(3'000'000'000), DRContentModificationDate, DRAllFilesystems);
    root->addChild(late);
    const ReadHfsImage image(root);
    EXPECT_EQ(image.at("/file").creationTime, 100);
    EXPECT_EQ(image.at("/file").modificationTime, 200);
    EXPECT_EQ(image.at("/file").attributeTime, 300);
    EXPECT_EQ(image.at("/file").accessTime, 400);
    EXPECT_EQ(image.at("/late").modificationTime, 2'212'122'495);
    const auto altered = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Altered);
    ASSERT_EQ(altered.size(), 1u);
    EXPECT_EQ(altered[0].path, QStringLiteral("/late"));
    EXPECT_TRUE(altered[0].reason.contains(QStringLiteral("2040")));
}

TEST(HfsPlusContents, symbolicLinks_areFilesWithTheirTarget)
{
    const TemporaryTree tree;
    tree.makeSymbolicLink("short", "../elsewhere");
    tree.makeSymbolicLink("long", QByteArray(3000, 'x'));
    tree.makeSymbolicLink("other", "y");
    const ReadHfsImage image(realFolder(tree), optionsFor(15));
    EXPECT_EQ(image.contents("/short"), "../elsewhere");
    EXPECT_EQ(image.contents("/long"), QByteArray(3000, 'x'));
    EXPECT_EQ(image.contents("/other"), "y");
    EXPECT_EQ(image.at("/short").typeAndCreator(), "slnkrhap");
    EXPECT_EQ(image.at("/short").mode, S_IFLNK | 0777);
}

TEST(HfsPlusContents, specialFiles_areKept_andTooBigDeviceNumbersRefused)
{
    const TemporaryTree tree;
    tree.makeFile("plain", "p");
    tree.makeFifo("fifo");
    const bool hasDevices = ::mknod(tree.path("device").constData(), S_IFCHR | 0600, makedev(7, 70'000)) == 0
        && ::mknod(tree.path("big device").constData(), S_IFBLK | 0600, makedev(300, 1)) == 0;
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.at("/fifo").mode & S_IFMT, S_IFIFO);
    if (!hasDevices)
        GTEST_SKIP() << "no right to make device files";
    EXPECT_EQ(image.at("/device").mode & S_IFMT, S_IFCHR);
    EXPECT_EQ(image.at("/device").special, 7u << 24 | 70'000u);
    EXPECT_EQ(image.reader.objectAt(QStringLiteral("/big device")), nullptr);
    const auto refused = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Refused);
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_EQ(refused[0].path, QStringLiteral("/big device"));
    EXPECT_TRUE(refused[0].isLost);
}

TEST(HfsPlusContents, everyCombinationOfFilesystems_sharesOneCopy)
{
    const TemporaryTree tree;
    tree.makeFile("a/file", QByteArray(10'000, 'f'));
    tree.makeFile("b/other", QByteArray(3'000, 'o'));
    tree.makeSymbolicLink("link", "a/file");
    tree.makeHardLink("c/again", "a/file");
    std::uint64_t largest = 0;
    for (DRFilesystemMask mask = 8; mask <= 15; ++mask) {
        const ReadHfsImage image(realFolder(tree), optionsFor(mask));
        EXPECT_EQ(image.contents("/a/file"), QByteArray(10'000, 'f')) << mask;
        EXPECT_EQ(image.contents("/c/again"), QByteArray(10'000, 'f')) << mask;
        EXPECT_EQ(image.contents("/b/other"), QByteArray(3'000, 'o')) << mask;
        EXPECT_EQ(image.contents("/link"), "a/file") << mask;
        largest = std::max(largest, image.written.size());
    }
    EXPECT_LT(largest, 1024u * 1024) << "the filesystems share the contents";
}

TEST(HfsPlusContents, maskedItems_areMissing_andTheirBlocksBelongToNobodyHere)
{
    const TemporaryTree tree;
    for (int number = 0; number < 40; ++number)
        tree.makeFile(QByteArray::number(number), QByteArray(3000, 'x'));
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("masks"));
    for (int number = 0; number < 40; ++number) {
        const auto file = DRFile::fileWithPath(tree.pathText(QByteArray::number(number)));
        if (number % 2 == 1)
            file->setExplicitFilesystemMask(DRFilesystemInclusionMaskISO9660);
        root->addChild(file);
    }
    const ReadHfsImage image(root, optionsFor(15));
    EXPECT_EQ(image.reader.fileCount(), 20u);
    EXPECT_EQ(image.reader.objectAt(QStringLiteral("/1")), nullptr);
    EXPECT_EQ(image.contents("/2"), QByteArray(3000, 'x'));
    EXPECT_GE(image.reader.extents()->records().size(), 3u) << "twenty gaps and the other filesystems";
}

TEST(HfsPlusContents, volume_isOmitted_whenMasksLeaveNothingForIt)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("masks"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    folder->setExplicitFilesystemMask(DRFilesystemInclusionMaskUDF);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("inherits"), "1"));
    root->addChild(folder);
    const auto file = DRFile::virtualFileWithName(QStringLiteral("file"), "2");
    file->setExplicitFilesystemMask(DRFilesystemInclusionMaskISO9660);
    root->addChild(file);
    const WrittenImage without(root, optionsFor(15));
    // Nothing but the record of contents is there: no partition map, wrapper or volume header.
    constexpr qsizetype record = 30'720;
    EXPECT_EQ(without.bytes(0, record), QByteArray(record, '\0'));
    EXPECT_EQ(without.bytes(record + 40, 2008), QByteArray(2008, '\0'));
    for (const DRStorageReportItem::Kind kind :
         {DRStorageReportItem::Kind::Refused, DRStorageReportItem::Kind::Renamed})
        EXPECT_TRUE(without.items(DRDiscTree::HFSPlus, kind).empty());

    root->addChild(DRFile::virtualFileWithName(QStringLiteral("unmasked"), "3"));
    const ReadHfsImage with(root, optionsFor(15));
    EXPECT_EQ(with.contents("/unmasked"), "3");
    EXPECT_EQ(with.reader.fileCount(), 1u);
}

TEST(HfsPlusContents, sameTree_givesTheSameBytes_withAGivenTime)
{
    const auto makeTree = [](TemporaryTree &tree) {
        tree.makeFile("one", "1");
        tree.makeFile("two/three", QByteArray(7777, '3'));
        tree.makeHardLink("two/again", "one");
        tree.makeSymbolicLink("link", "one");
        for (const char *const path : {"one", "two/three", "two"})
            tree.setModificationTime(path, 1'600'000'000);
    };
    TemporaryTree first;
    TemporaryTree second;
    makeTree(first);
    makeTree(second);
    PlanOptions options = optionsFor(15);
    options.sourceDateEpoch = 1'500'000'000;
    const auto bytes = [&](const TemporaryTree &tree, std::uint32_t piece) {
        const auto root = DRFolder::virtualFolderWithName(QStringLiteral("same"));
        root->addChild(realFolder(tree, "two"));
        root->addChild(DRFile::fileWithPath(tree.pathText("one")));
        root->addChild(DRFile::fileWithPath(tree.pathText("link")));
        const WrittenImage image(root, options);
        return imageBytes(*image.plan().image, piece);
    };
    const QByteArray once = bytes(first, 512);
    EXPECT_EQ(once, bytes(second, 512));
    EXPECT_EQ(once, bytes(first, 1)) << "the size of pieces does not matter";
    EXPECT_EQ(once, bytes(first, 7));
}

} // namespace Tessaron::Testing
