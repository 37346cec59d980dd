#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <QDateTime>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

std::shared_ptr<DRFolder> realFolder(const TemporaryTree &tree, const QByteArray &relative = {})
{
    return DRFolder::folderWithPath(tree.pathText(relative));
}

std::shared_ptr<DRFile> realFile(const TemporaryTree &tree, const QByteArray &relative)
{
    return DRFile::fileWithPath(tree.pathText(relative));
}

/// An image of a root with what the reader made of it; every problem fails the test.
struct ReadImage {
    explicit ReadImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options = {})
        : written(root, options)
        , reader(written.path())
    {
        EXPECT_FALSE(written.error()) << qPrintable(written.error().localizedDescription());
        EXPECT_EQ(reader.problems(), QStringList());
    }

    [[nodiscard]] const IsoObject &primary(const char *path) const
    {
        static const IsoObject none;
        const IsoObject *const object = IsoImageReader::objectAt(*reader.primary(), QString::fromUtf8(path));
        EXPECT_TRUE(object) << path;
        return object ? *object : none;
    }
    [[nodiscard]] const IsoObject *joliet(const char *path) const
    {
        return IsoImageReader::objectAt(*reader.joliet(), QString::fromUtf8(path));
    }

    WrittenImage written;
    IsoImageReader reader;
};

} // namespace

TEST(DiscImageContents, realFolder_isTakenWholesale)
{
    const TemporaryTree tree;
    tree.makeFile("read me.txt", "hello");
    tree.makeFile("sub/deeper/data", QByteArray(100'000, 'd'));
    tree.makeFolder("empty folder");
    tree.makeFile("empty file");
    const ReadImage image(realFolder(tree));
    ASSERT_TRUE(image.reader.primary() && image.reader.joliet());
    EXPECT_EQ(image.reader.contents(image.primary("/read me.txt")), "hello");
    EXPECT_EQ(image.reader.contents(image.primary("/sub/deeper/data")), QByteArray(100'000, 'd'));
    EXPECT_TRUE(image.primary("/empty folder").isFolder);
    EXPECT_EQ(image.primary("/empty file").size, 0u);
    EXPECT_EQ(image.primary("/read me.txt").identifier, "READ_ME.TXT;1");
    EXPECT_EQ(image.primary("/empty file").identifier, "EMPTY_FILE.;1");
    EXPECT_EQ(differencesBetween(*image.reader.primary(), *image.reader.joliet()), QStringList());
    ASSERT_TRUE(image.joliet("/sub/deeper/data"));
    EXPECT_EQ(image.joliet("/sub/deeper/data")->extents, image.primary("/sub/deeper/data").extents) << "stored once";
    EXPECT_EQ(image.written.plan().fileCount, 3u);
    EXPECT_EQ(image.written.plan().folderCount, 3u);
}

TEST(DiscImageContents, virtualFolder_holdsItsChildren_withContentsFromMemoryAndDisk)
{
    const TemporaryTree tree;
    tree.makeFile("on disk", "from disk");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("Root"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("inner"));
    root->addChild(folder);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("in memory"), QByteArray(5000, 'm')));
    const auto renamed = realFile(tree, "on disk");
    renamed->setBaseName(QStringLiteral("other name"));
    folder->addChild(renamed);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("nothing"), {}));
    const ReadImage image(root);
    EXPECT_EQ(image.reader.contents(image.primary("/inner/in memory")), QByteArray(5000, 'm'));
    EXPECT_EQ(image.reader.contents(image.primary("/inner/other name")), "from disk");
    EXPECT_EQ(image.primary("/inner/nothing").size, 0u);
    EXPECT_EQ(image.primary("/inner").rockRidge->mode, static_cast<unsigned int>(S_IFDIR | 0755));
    EXPECT_EQ(image.primary("/inner/in memory").rockRidge->mode, static_cast<unsigned int>(S_IFREG | 0644));
}

TEST(DiscImageContents, attributes_areTheSources)
{
    const TemporaryTree tree;
    tree.makeFile("folder/script", "#!");
    tree.setMode("folder/script", 04751);
    tree.setModificationTime("folder/script", 1'000'000'001);
    tree.setMode("folder", 0711);
    tree.setModificationTime("folder", 1'000'000'002);
    const ReadImage image(realFolder(tree));
    struct stat status;
    ASSERT_EQ(::stat(tree.path("folder/script").constData(), &status), 0);
    const RockRidgeEntry &file = *image.primary("/folder/script").rockRidge;
    EXPECT_EQ(file.mode, static_cast<unsigned int>(S_IFREG | 04751));
    EXPECT_EQ(file.userId, status.st_uid);
    EXPECT_EQ(file.groupId, status.st_gid);
    EXPECT_EQ(file.modificationTime, 1'000'000'001);
    EXPECT_EQ(file.accessTime, 1'000'000'001);
    EXPECT_EQ(file.attributeTime, status.st_ctim.tv_sec);
    EXPECT_EQ(image.primary("/folder/script").recordingTime, 1'000'000'001);
    EXPECT_EQ(image.joliet("/folder/script")->recordingTime, 1'000'000'001);
    EXPECT_EQ(image.primary("/folder").rockRidge->mode, static_cast<unsigned int>(S_IFDIR | 0711));
    EXPECT_EQ(image.primary("/folder").rockRidge->modificationTime, 1'000'000'002);
    EXPECT_EQ(image.primary("/folder").rockRidge->linkCount, 2u);
    EXPECT_EQ(image.primary("/").isFolder, true);
}

TEST(DiscImageContents, virtualFolder_takesTimesAndModeFromItsSource)
{
    const TemporaryTree tree;
    tree.makeFolder("model");
    tree.setMode("model", 0750);
    tree.setModificationTime("model", 1'234'567'890);
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.path("model"), &ref, nullptr), noErr);
    const auto root = DRFolder::virtualFolderWithName({});
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("copy"));
    folder->setSourceRef(ref);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("child"), "c"));
    root->addChild(folder);
    const ReadImage image(root);
    EXPECT_EQ(image.primary("/copy").rockRidge->mode, static_cast<unsigned int>(S_IFDIR | 0750));
    EXPECT_EQ(image.primary("/copy").rockRidge->modificationTime, 1'234'567'890);
}

TEST(DiscImageContents, properties_takeThePlaceOfTheSources)
{
    const TemporaryTree tree;
    tree.makeFile("file", "f");
    const auto root = DRFolder::virtualFolderWithName({});
    const auto file = realFile(tree, "file");
    file->setProperty(0100600u, DRPosixFileMode, DRAllFilesystems);
    file->setProperty(1234u, DRPosixUID, DRAllFilesystems);
    file->setProperty(70'000u, DRPosixGID, DRISO9660);
    file->setProperty(QDateTime::fromSecsSinceEpoch(500'000'000), DRContentModificationDate, DRAllFilesystems);
    file->setProperty(QDateTime::fromSecsSinceEpoch(600'000'000), DRAccessDate, DRAllFilesystems);
    file->setProperty(QDateTime::fromSecsSinceEpoch(-1), DRAttributeModificationDate, DRAllFilesystems);
    root->addChild(file);
    const ReadImage image(root);
    const RockRidgeEntry &entry = *image.primary("/file").rockRidge;
    EXPECT_EQ(entry.mode, static_cast<unsigned int>(S_IFREG | 0600));
    EXPECT_EQ(entry.userId, 1234u);
    EXPECT_EQ(entry.groupId, 70'000u);
    EXPECT_EQ(entry.modificationTime, 500'000'000);
    EXPECT_EQ(entry.accessTime, 600'000'000);
    EXPECT_EQ(entry.attributeTime, -1);
}

TEST(DiscImageContents, invisible_setsTheHiddenFlag_whereItIsSet)
{
    const auto root = DRFolder::virtualFolderWithName({});
    const auto everywhere = DRFile::virtualFileWithName(QStringLiteral("everywhere"), "1");
    everywhere->setProperty(true, DRInvisible, DRAllFilesystems);
    const auto inJoliet = DRFile::virtualFileWithName(QStringLiteral("joliet"), "2");
    inJoliet->setProperty(true, DRInvisible, DRJoliet);
    root->addChild(everywhere);
    root->addChild(inJoliet);
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("nowhere"), "3"));
    const ReadImage image(root);
    EXPECT_TRUE(image.primary("/everywhere").isHidden);
    EXPECT_TRUE(image.joliet("/everywhere")->isHidden);
    EXPECT_FALSE(image.primary("/joliet").isHidden);
    EXPECT_TRUE(image.joliet("/joliet")->isHidden);
    EXPECT_FALSE(image.primary("/nowhere").isHidden);
    EXPECT_FALSE(image.joliet("/nowhere")->isHidden);
}

TEST(DiscImageContents, hardLinks_shareContentsAndSerialNumber)
{
    const TemporaryTree tree;
    tree.makeFile("one", "the same");
    tree.makeHardLink("folder/two", "one");
    tree.makeFile("three", "the same");
    const ReadImage image(realFolder(tree));
    const IsoObject &one = image.primary("/one");
    const IsoObject &two = image.primary("/folder/two");
    const IsoObject &three = image.primary("/three");
    EXPECT_EQ(one.extents, two.extents);
    EXPECT_EQ(one.rockRidge->serialNumber, two.rockRidge->serialNumber);
    EXPECT_EQ(one.rockRidge->linkCount, 2u);
    EXPECT_EQ(two.rockRidge->linkCount, 2u);
    EXPECT_NE(three.extents, one.extents);
    EXPECT_NE(three.rockRidge->serialNumber, one.rockRidge->serialNumber);
    EXPECT_EQ(three.rockRidge->linkCount, 1u);
}

TEST(DiscImageContents, fileAddedTwice_isStoredOnce)
{
    const TemporaryTree tree;
    tree.makeFile("file", QByteArray(10'000, 'x'));
    const auto root = DRFolder::virtualFolderWithName({});
    const auto other = realFile(tree, "file");
    other->setBaseName(QStringLiteral("again"));
    const auto different = realFile(tree, "file");
    different->setBaseName(QStringLiteral("as script"));
    different->setProperty(0755u, DRPosixFileMode, DRAllFilesystems);
    root->addChild(realFile(tree, "file"));
    root->addChild(other);
    root->addChild(different);
    const ReadImage image(root);
    EXPECT_EQ(image.primary("/file").extents, image.primary("/again").extents);
    EXPECT_EQ(image.primary("/file").extents, image.primary("/as script").extents);
    EXPECT_EQ(image.primary("/file").rockRidge->serialNumber, image.primary("/again").rockRidge->serialNumber);
    EXPECT_NE(image.primary("/file").rockRidge->serialNumber, image.primary("/as script").rockRidge->serialNumber);
    EXPECT_EQ(image.primary("/as script").rockRidge->linkCount, 1u);
}

TEST(DiscImageContents, symbolicLinks_keepTheirTargets)
{
    const TemporaryTree tree;
    QByteArray longTarget;
    while (longTarget.size() < 900)
        longTarget += "some/folders/";
    longTarget += QByteArray(250, 'e');
    QByteArray longestTarget = QByteArray("../../") + QByteArray("0123456789/").repeated(300) + QByteArray(255, 'z');
    const std::vector<std::pair<QByteArray, QByteArray>> links{
        {"relative", "file"},   {"up", "../sibling/file"},  {"absolute", "/usr/share/doc"},
        {"root", "/"},          {"dangling", "not there"},  {"dot", "./a/./b"},
        {"folder", "a/"},       {"twice", "a//b"},          {"long", longTarget},
        {"bytes", "caf\xE9/x"}, {"longest", longestTarget}, {"component", QByteArray(255, 'c')},
    };
    for (const auto &[name, target] : links)
        tree.makeSymbolicLink(name, target);
    const ReadImage image(realFolder(tree));
    for (const auto &[name, target] : links) {
        const IsoObject &link = image.primary("/" + name);
        ASSERT_TRUE(link.rockRidge);
        EXPECT_EQ(link.rockRidge->mode & S_IFMT, static_cast<unsigned int>(S_IFLNK));
        EXPECT_EQ(link.size, 0u);
        const QByteArray wanted = name == "folder" ? "a/." : name == "twice" ? "a/b" : target;
        EXPECT_EQ(link.rockRidge->linkTarget, wanted) << name.constData();
        EXPECT_FALSE(image.joliet("/" + name));
    }
    EXPECT_EQ(image.written.items(DRDiscTree::Joliet, DRStorageReportItem::Kind::Refused).size(), links.size());
    EXPECT_EQ(image.written.plan().report->count(DRDiscTree::RockRidge, DRStorageReportItem::Kind::Altered), 2u);
    EXPECT_EQ(image.written.plan().report->lostCount(), 0u);
}

TEST(DiscImageContents, fifosSocketsAndDevices_areInRockRidgeAlone)
{
    const TemporaryTree tree;
    tree.makeFifo("fifo");
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = tree.path("socket");
    ASSERT_LT(static_cast<std::size_t>(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    ::close(socket);
    const bool hasDevices = ::mknod(tree.path("device").constData(), S_IFBLK | 0640, makedev(8, 17)) == 0
        && ::mknod(tree.path("far").constData(), S_IFCHR | 0640, makedev(511, 70'000)) == 0;
    const ReadImage image(realFolder(tree));
    EXPECT_EQ(image.primary("/fifo").rockRidge->mode & S_IFMT, static_cast<unsigned int>(S_IFIFO));
    EXPECT_EQ(image.primary("/socket").rockRidge->mode & S_IFMT, static_cast<unsigned int>(S_IFSOCK));
    EXPECT_FALSE(image.joliet("/fifo"));
    EXPECT_FALSE(image.joliet("/socket"));
    if (hasDevices) {
        EXPECT_EQ(image.primary("/device").rockRidge->mode, static_cast<unsigned int>(S_IFBLK | 0640));
        EXPECT_EQ(image.primary("/device").rockRidge->deviceNumber, 8u << 8 | 17);
        EXPECT_EQ(image.primary("/far").rockRidge->deviceNumber, std::uint64_t{511} << 32 | 70'000);
    }
    EXPECT_EQ(image.written.plan().report->lostCount(), 0u);
}

TEST(DiscImageContents, specialObjects_areLost_whenThereIsNoRockRidge)
{
    const TemporaryTree tree;
    tree.makeFifo("fifo");
    tree.makeSymbolicLink("link", "file");
    tree.makeFile("FILE", "f");
    PlanOptions options;
    options.rockRidge = false;
    const ReadImage image(realFolder(tree), options);
    EXPECT_FALSE(image.primary("/FILE").rockRidge);
    EXPECT_EQ(image.reader.primary()->root.children.size(), 1u);
    EXPECT_EQ(image.written.plan().report->lostCount(), 2u);
    EXPECT_EQ(image.written.plan().fileCount, 1u);
}

TEST(DiscImageContents, contentsOfABigFile_areARunOfTheFile)
{
    const TemporaryTree tree;
    tree.makeFile("a", "small");
    QByteArray big(1'000'001, '\0');
    for (qsizetype at = 0; at < big.size(); ++at)
        big[at] = static_cast<char>(at * 7 + at / 251);
    tree.makeFile("b", big);
    tree.makeFile("c", "small, too");
    const ReadImage image(realFolder(tree));
    EXPECT_EQ(image.reader.contents(image.primary("/b")), big);
    const std::uint32_t start = image.primary("/b").extents[0].block;
    const BlockImage &blocks = *image.written.plan().image;
    EXPECT_FALSE(blocks.pieceAt(BlockAddress(0), 100'000).isFileRun);
    EXPECT_EQ(blocks.pieceAt(BlockAddress(0), 100'000).blockCount, start);
    const ImagePiece first = blocks.pieceAt(BlockAddress(start), 100);
    EXPECT_TRUE(first.isFileRun);
    EXPECT_EQ(first.blockCount, 100u);
    EXPECT_EQ(first.run.offset, 0u);
    EXPECT_EQ(first.run.length, 100u * 2048);
    const ImagePiece rest = blocks.pieceAt(BlockAddress(start + 100), 100'000);
    EXPECT_TRUE(rest.isFileRun);
    EXPECT_EQ(rest.run.offset, 100u * 2048);
    EXPECT_EQ(rest.run.length, 1'000'001u - 100 * 2048);
    EXPECT_EQ(rest.blockCount, (1'000'001u + 2047) / 2048 - 100);
    EXPECT_EQ(lastKnownPath(blocks.fileContents(first.run.fileIndex).ref), tree.path("b"));
    EXPECT_EQ(blocks.fileContents(first.run.fileIndex).size, 1'000'001u);
}

TEST(DiscImageContents, linkCount_countsTheNamesInTheTree)
{
    const TemporaryTree tree;
    tree.makeFile("A", "shared");
    tree.makeHardLink("B", "A");
    tree.makeHardLink("C", "A");
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"A", "B", "C"})
        root->addChild(DRFile::fileWithPath(tree.pathText(name)));
    root->children()[0]->setExplicitFilesystemMask(DRFilesystemInclusionMaskJoliet);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    ASSERT_TRUE(reader.primary());
    ASSERT_EQ(reader.primary()->root.children.size(), 2u);
    for (const auto &child : reader.primary()->root.children)
        EXPECT_EQ(child->rockRidge->linkCount, 2u);
}

TEST(DiscImageContents, linkCount_isOne_whenTheOtherNameHasOtherAttributes)
{
    const TemporaryTree tree;
    tree.makeFile("A", "shared");
    tree.makeHardLink("B", "A");
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"A", "B"})
        root->addChild(DRFile::fileWithPath(tree.pathText(name)));
    root->children()[1]->setProperty(0600u, DRPosixFileMode, DRAllFilesystems);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    ASSERT_TRUE(reader.primary());
    ASSERT_EQ(reader.primary()->root.children.size(), 2u);
    for (const auto &child : reader.primary()->root.children)
        EXPECT_EQ(child->rockRidge->linkCount, 1u);
}

/// Targets of symbolic links that need more than one entry, each divided in another way.
QByteArrayList longLinkTargets()
{
    return {QByteArray(250, 'c'),
            QByteArray(255, 'd'),
            QByteArray(255, 'e') + "/" + QByteArray(255, 'f') + "/g",
            QByteArray("../").repeated(200) + "end",
            QByteArray("../").repeated(124) + "..",
            QByteArray("../").repeated(125) + "..",
            QByteArray("name/../").repeated(50) + "x",
            "ab/" + QByteArray("c/").repeated(80) + "de/" + QByteArray("f/").repeated(80) + "g",
            "/" + QByteArray(249, 'n') + "/y",
            QByteArray(248, 'm') + "/../z",
            QByteArray(246, 'o') + "/../z",
            QByteArray(246, 'p') + "/q/r"};
}

TEST(DiscImageContents, longLinkTargets_areWhole_withoutEmptyComponents)
{
    QByteArrayList targets = longLinkTargets();
    targets.append(QByteArray(1000, 'c'));
    targets.append(QByteArray("a/").repeated(300) + "b");
    targets.append(QByteArray("./").repeated(300) + "b");
    const TemporaryTree tree;
    for (qsizetype index = 0; index < targets.size(); ++index)
        tree.makeSymbolicLink("L" + QByteArray::number(index), targets[index]);
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    ASSERT_EQ(reader.primary()->root.children.size(), static_cast<std::size_t>(targets.size()));
    for (const auto &child : reader.primary()->root.children)
        EXPECT_EQ(child->rockRidge->linkTarget, targets[child->name.mid(1).toInt()]) << qPrintable(child->name);
}

QByteArray targetOfLink(const QByteArray &path)
{
    QByteArray target(4096, '\0');
    const ssize_t length = ::readlink(path.constData(), target.data(), std::size_t(target.size()));
    return length < 0 ? QByteArray() : target.first(length);
}

/// The same targets as independent programs read them back.
TEST(DiscImageContents, longLinkTargets_areReadBackByOthers)
{
    const QByteArrayList targets = longLinkTargets();
    const TemporaryTree tree;
    for (qsizetype index = 0; index < targets.size(); ++index)
        tree.makeSymbolicLink("L" + QByteArray::number(index), targets[index]);
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    const TemporaryTree target;
    target.makeFolder("bsdtar");
    const auto expectTargets = [&](const QByteArray &folder) {
        for (qsizetype index = 0; index < targets.size(); ++index)
            EXPECT_EQ(targetOfLink(target.path(folder + "/L" + QByteArray::number(index))), targets[index])
                << folder.constData() << ' ' << index;
    };
    if (hasProgram(QStringLiteral("bsdtar"))) {
        const ProgramRun result =
            runProgram(QStringLiteral("bsdtar"),
                       {QStringLiteral("-xpf"), image.path(), QStringLiteral("-C"), target.pathText("bsdtar")});
        EXPECT_EQ(result.status, 0) << result.errors.constData();
        expectTargets("bsdtar");
    }
    if (hasProgram(QStringLiteral("xorriso"))) {
        const ProgramRun result =
            runProgram(QStringLiteral("xorriso"),
                       {QStringLiteral("-osirrox"), QStringLiteral("on"), QStringLiteral("-indev"), image.path(),
                        QStringLiteral("-extract"), QStringLiteral("/"), target.pathText("xorriso")});
        EXPECT_EQ(result.status, 0) << result.errors.constData();
        expectTargets("xorriso");
    }
    if (hasProgram(QStringLiteral("isoinfo"))) {
        const QByteArray listing =
            runProgram(QStringLiteral("isoinfo"),
                       {QStringLiteral("-R"), QStringLiteral("-l"), QStringLiteral("-i"), image.path()})
                .output;
        for (const QByteArray &wanted : targets)
            EXPECT_TRUE(listing.contains("-> " + wanted + "\n")) << wanted.constData();
    }
}

} // namespace Tessaron::Testing
