#include "tests/discimage/hfsplus/HfsPlusVolumeMaker.h"
#include "tests/discimage/hfsplus/WalkedVolume.h"

namespace Tessaron::Testing
{

namespace
{

using File = HfsPlusVolumeMaker::File;

/// What the maker puts into the extents' blocks, up to a length.
QByteArray blocks(const HfsPlusVolumeMaker &maker, const HfsPlusExtents &extents, qsizetype length)
{
    QByteArray bytes;
    for (const auto &[start, count] : extents) {
        for (std::uint32_t block = start; block < start + count; ++block)
            bytes += QByteArray(qsizetype(maker.blockSize()), char(block));
    }
    return bytes.first(length);
}

/// Extents of one block each, every second block.
HfsPlusExtents pieces(std::uint32_t first, std::uint32_t count)
{
    HfsPlusExtents extents;
    for (std::uint32_t index = 0; index < count; ++index)
        extents.emplace_back(first + 2 * index, 1);
    return extents;
}

} // namespace

TEST(HfsPlusForeignVolume, fileInManyPieces_isReadWhole)
{
    for (const std::uint32_t blockSize : {512u, 1024u, 4096u}) {
        HfsPlusVolumeMaker maker(blockSize);
        const std::uint32_t first = maker.firstFreeBlock();
        const HfsPlusExtents all = pieces(first, 19);
        File file;
        file.length = 18 * std::uint64_t{blockSize} + 7;
        file.blocks = 19;
        file.extents.assign(all.begin(), all.begin() + 8);
        maker.setRoot(1);
        maker.addFile(2, u"pieces", file);
        maker.addFileThread(16, 2, u"pieces");
        maker.addExtents(16, 8, {all.begin() + 8, all.begin() + 16});
        maker.addExtents(16, 16, {all.begin() + 16, all.end()});
        const WalkedVolume walked(maker.image());
        EXPECT_EQ(walked.errors, QStringList()) << blockSize;
        EXPECT_EQ(walked.contents("pieces"), blocks(maker, all, qsizetype(file.length))) << blockSize;
        EXPECT_EQ(walked.objects["pieces"].extents.size(), 19u);
        EXPECT_EQ(walked.opened.reader->facts().blockSize, blockSize);
    }
}

TEST(HfsPlusForeignVolume, filesThatContradictThemselves_areErrors_andTheOthersAreTold)
{
    const auto errorsOf = [](const File &file, const HfsPlusExtents &more) {
        HfsPlusVolumeMaker maker;
        maker.setRoot(2);
        maker.addFile(2, u"bad", file);
        maker.addFile(2, u"good", {});
        maker.addFileThread(16, 2, u"bad");
        if (!more.empty())
            maker.addExtents(16, 8, more);
        const WalkedVolume walked(maker.image());
        EXPECT_EQ(walked.objects.keys(), QList<QByteArray>{"good"});
        return walked.errors.join(u'|');
    };
    File file;
    file.length = std::uint64_t{9} * 4096;
    file.blocks = 9;
    file.extents = pieces(20, 8);
    EXPECT_TRUE(errorsOf(file, {}).contains(QStringLiteral("fewer blocks than it says")))
        << "nothing in the extents file";
    EXPECT_TRUE(errorsOf(file, {{0, 0}}).contains(QStringLiteral("fewer blocks than it says")));
    EXPECT_TRUE(errorsOf(file, {{50, 2}}).contains(QStringLiteral("more blocks than their fork")));
    EXPECT_TRUE(errorsOf(file, {{199, 2}}).contains(QStringLiteral("outside of the volume")));
    EXPECT_TRUE(errorsOf(file, {{200, 1}}).contains(QStringLiteral("outside of the volume")));
    file.blocks = 8;
    EXPECT_TRUE(errorsOf(file, {}).contains(QStringLiteral("longer than its blocks")));
    file.length = ~std::uint64_t{0};
    EXPECT_TRUE(errorsOf(file, {}).contains(QStringLiteral("longer than its blocks")));
}

TEST(HfsPlusForeignVolume, filesInManyPieces_doNotShareThem)
{
    HfsPlusVolumeMaker maker;
    File file;
    file.length = 9 * std::uint64_t{maker.blockSize()};
    file.blocks = 9;
    file.extents = pieces(20, 8);
    maker.setRoot(3);
    maker.addFile(2, u"a", file);
    maker.addFile(2, u"b", file);
    file.id = 17;
    maker.addFile(2, u"without thread", file);
    maker.addFileThread(16, 2, u"b");
    maker.addExtents(16, 8, {{50, 1}});
    maker.addExtents(17, 8, {{51, 1}});
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>{"b"});
    ASSERT_EQ(walked.errors.size(), 1);
    EXPECT_TRUE(walked.errors[0].contains(QStringLiteral("not the one that has its ID")));
}

TEST(HfsPlusForeignVolume, catalogInTwoPieces_isRead)
{
    HfsPlusVolumeMaker maker(2048);
    maker.hasCatalogInTwoPieces = true;
    maker.setRoot(2);
    maker.addFile(2, u"file", {});
    maker.addFolder(2, u"folder", 17, 0);
    maker.addFolderThread(17, 2, u"folder");
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.errors, QStringList());
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>({"file", "folder"}));
}

TEST(HfsPlusForeignVolume, caseSensitiveNames_areInTheOrderOfTheirUnits)
{
    const auto make = [](bool isHfsx, bool isCaseSensitive) {
        HfsPlusVolumeMaker maker;
        maker.isHfsx = isHfsx;
        maker.isCaseSensitive = isCaseSensitive;
        maker.setRoot(2);
        maker.addFolder(2, u"B", 17, 0);
        maker.addFolder(2, u"a", 18, 0);
        maker.addFolderThread(17, 2, u"B");
        maker.addFolderThread(18, 2, u"a");
        return maker.image();
    };
    const WalkedVolume sensitive(make(true, true));
    EXPECT_EQ(sensitive.errors, QStringList());
    EXPECT_EQ(sensitive.objects.keys(), QList<QByteArray>({"B", "a"}));
    EXPECT_FALSE(WalkedVolume(make(true, false)).errors.isEmpty());
    EXPECT_FALSE(WalkedVolume(make(false, true)).errors.isEmpty()) << "HFS+ itself knows no other order";
}

TEST(HfsPlusForeignVolume, hardLinks_leadToFilesByNumber_ifTheirDateSaysSo)
{
    HfsPlusVolumeMaker maker;
    File link;
    link.typeAndCreator = "hlnkhfs+";
    link.special = 77;
    File inode;
    inode.id = 40;
    inode.special = 1;
    inode.length = 10;
    inode.blocks = 1;
    inode.extents = {{maker.firstFreeBlock(), 1}};
    const std::u16string privateName = std::u16string(4, u'\0') + u"HFS+ Private Data";
    maker.setRoot(4);
    maker.addFile(2, u"link", link);
    link.id = 17;
    link.created = 999;
    maker.addFile(2, u"no link", link);
    link.id = 18;
    link.created = 1000;
    link.special = 78;
    maker.addFile(2, u"to nowhere", link);
    maker.addFolder(2, privateName, 30, 1);
    maker.addFolderThread(30, 2, privateName);
    maker.addFile(30, u"iNode77", inode);
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>({"link", "no link"}));
    EXPECT_EQ(walked.objects["link"].identity, 40u);
    EXPECT_EQ(walked.objects["link"].size, 10u);
    EXPECT_EQ(walked.objects["no link"].identity, 17u);
    ASSERT_EQ(walked.errors.size(), 1);
    EXPECT_TRUE(walked.errors[0].contains(QStringLiteral("leads nowhere")));
}

TEST(HfsPlusForeignVolume, whatTheVolumeKeepsForItself_isLeftOut)
{
    HfsPlusVolumeMaker maker;
    maker.hasJournal = true;
    maker.setRoot(4);
    File file;
    maker.addFile(2, u".HFS+ Private Directory Data\r", file);
    maker.addFile(2, u".journal", file);
    maker.addFile(2, u".journal_info_block", file);
    maker.addFile(2, u"file", file);
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.errors, QStringList());
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>{"file"});
    maker.hasJournal = false;
    EXPECT_EQ(WalkedVolume(maker.image()).objects.size(), 3) << "without a journal these are anybody's names";
}

TEST(HfsPlusForeignVolume, impossibleNames_areErrors)
{
    for (const std::u16string &name : {std::u16string(u"a:b"), std::u16string(u".."), std::u16string(u".")}) {
        HfsPlusVolumeMaker maker;
        maker.setRoot(2);
        maker.addFile(2, name, {});
        maker.addFile(2, u"good/name", {});
        const WalkedVolume walked(maker.image());
        EXPECT_EQ(walked.objects.keys(), QList<QByteArray>{"good:name"});
        EXPECT_EQ(walked.errors.size(), 1);
    }
}

TEST(HfsPlusForeignVolume, filesWithoutPermissions_areKnownByTheirType)
{
    HfsPlusVolumeMaker maker;
    File file;
    file.mode = 0;
    file.length = 5;
    file.blocks = 1;
    file.extents = {{65, 1}};
    maker.setRoot(2);
    maker.addFile(2, u"file", file);
    file.typeAndCreator = "slnkrhap";
    maker.addFile(2, u"link", file);
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.errors, QStringList());
    EXPECT_EQ(walked.objects["file"].kind, VolumeObjectKind::File);
    EXPECT_EQ(walked.objects["file"].mode, std::nullopt);
    EXPECT_EQ(walked.objects["link"].kind, VolumeObjectKind::SymbolicLink);
    EXPECT_EQ(walked.objects["link"].linkTarget, "AAAAA");
}

TEST(HfsPlusForeignVolume, foldersThatLeadInCircles_areErrors)
{
    HfsPlusVolumeMaker maker;
    maker.setRoot(1);
    maker.addFolder(2, u"folder", 17, 1);
    maker.addFolderThread(17, 2, u"folder");
    maker.addFolder(17, u"itself", 17, 1);
    const WalkedVolume walked(maker.image());
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>({"folder", "folder/itself"}));
    ASSERT_EQ(walked.errors.size(), 1);
    EXPECT_TRUE(walked.errors[0].startsWith(QStringLiteral("folder/itself: ")));
}

} // namespace Tessaron::Testing
