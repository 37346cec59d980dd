#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

#include <cstdio>

namespace Tessaron::Testing
{

namespace
{

const QByteArray finderInfoName = "user.com.apple.FinderInfo";
const QByteArray resourceForkName = "user.com.apple.ResourceFork";

QByteArray info(const QByteArray &typeAndCreator, unsigned int flags)
{
    QByteArray bytes(32, '\0');
    bytes.replace(0, typeAndCreator.size(), typeAndCreator);
    bytes[8] = static_cast<char>(flags >> 8);
    bytes[9] = static_cast<char>(flags);
    return bytes;
}

} // namespace

TEST(HfsPlusMacAttributes, finderInfoAndResourceForks_areTheSources)
{
    const TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "the temporary folder keeps no extended attributes";
    tree.makeFile("folder/document", "data fork");
    tree.setExtendedAttribute("folder/document", finderInfoName, info("TEXTttxt", 0x0400));
    tree.setExtendedAttribute("folder/document", resourceForkName, QByteArray(3500, 'r'));
    tree.makeFile("folder/only resources");
    tree.setExtendedAttribute("folder/only resources", resourceForkName, "resources");
    tree.makeFile("folder/Icon\r");
    tree.setExtendedAttribute("folder/Icon\r", resourceForkName, "icns");
    tree.setExtendedAttribute("folder", finderInfoName, info("", 0x0400));
    tree.makeHardLink("linked", "folder/document");
    const ReadHfsImage image(realFolder(tree), optionsFor(15));
    const HfsObject &document = *image.reader.resolved(image.at("/folder/document"));
    EXPECT_EQ(document.finderInfo, info("TEXTttxt", 0x0400));
    EXPECT_EQ(image.reader.contents(document.resource), QByteArray(3500, 'r'));
    EXPECT_EQ(image.reader.contents(image.at("/folder/only resources").resource), "resources");
    EXPECT_EQ(image.at("/folder/only resources").data, HfsFork());
    EXPECT_EQ(image.reader.contents(image.at("/folder/Icon\r").resource), "icns");
    EXPECT_EQ(image.at("/folder").finderFlags(), 0x0400) << "it has a custom icon";
}

TEST(HfsPlusMacAttributes, renamedSource_keepsItsOwn_alsoWhereAnotherFileHasItsOldName)
{
    const TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "the temporary folder keeps no extended attributes";
    tree.makeFile("name", "data fork");
    tree.setExtendedAttribute("name", finderInfoName, info("TEXTttxt", 0));
    tree.setExtendedAttribute("name", resourceForkName, "its own");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    root->addChild(DRFile::fileWithPath(tree.pathText("name")));
    ASSERT_EQ(::rename(tree.path("name").constData(), tree.path("other").constData()), 0);
    tree.makeFile("name", "foreign");
    tree.setExtendedAttribute("name", finderInfoName, info("PICTview", 0));
    tree.setExtendedAttribute("name", resourceForkName, "another file's");
    const ReadHfsImage image(root, optionsFor(15));
    EXPECT_EQ(image.at("/name").finderInfo, info("TEXTttxt", 0));
    EXPECT_EQ(image.reader.contents(image.at("/name").resource), "its own");
    EXPECT_EQ(image.contents("/name"), "data fork");
}

TEST(HfsPlusMacAttributes, propertiesOfTheLayout_areFinderFlags)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    const auto add = [&](const char *name) {
        auto file = DRFile::virtualFileWithName(QString::fromLatin1(name), "f");
        root->addChild(file);
        return file;
    };
    add("plain");
    add("hidden")->setProperty(true, DRInvisible, DRAllFilesystems);
    add("hidden elsewhere")->setProperty(true, DRInvisible, DRISO9660);
    add("flags")->setProperty(0x2400, DRMacFinderFlags, DRAllFilesystems);
    add("negative")->setProperty(-32768, DRMacFinderFlags, DRHFSPlus);
    const auto extension = add("extension.txt");
    extension->setProperty(true, DRMacFinderHideExtension, DRAllFilesystems);
    extension->setProperty(0x0400, DRMacFinderFlags, DRAllFilesystems);
    const ReadHfsImage image(root, optionsFor(15));
    EXPECT_EQ(image.at("/plain").finderFlags(), 0);
    EXPECT_EQ(image.at("/hidden").finderFlags(), 0x4000);
    EXPECT_EQ(image.at("/hidden elsewhere").finderFlags(), 0);
    EXPECT_EQ(image.at("/flags").finderFlags(), 0x2400);
    EXPECT_EQ(image.at("/negative").finderFlags(), 0x8000);
    EXPECT_EQ(image.at("/extension.txt").finderFlags(), 0x0410);
}

TEST(HfsPlusMacAttributes, sourceThatClaimsToBeALink_isNone)
{
    const TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "the temporary folder keeps no extended attributes";
    tree.makeFile("false link", "contents");
    tree.setExtendedAttribute("false link", finderInfoName, info("hlnkhfs+", 0));
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.at("/false link").typeAndCreator(), QByteArray(8, '\0'));
    EXPECT_EQ(image.contents("/false link"), "contents");
}

TEST(HfsPlusMacAttributes, resourceForkThatChanges_endsTheImage_andIsNamed)
{
    const TemporaryTree tree;
    if (!keepsAttributes(tree))
        GTEST_SKIP() << "the temporary folder keeps no extended attributes";
    tree.makeFile("document");
    tree.setExtendedAttribute("document", resourceForkName, "first");
    NSError error;
    const DiscImagePlan plan = planDiscImage(realFolder(tree), optionsFor(hfsPlusOnly), {}, {}, &error);
    ASSERT_TRUE(plan.image);
    tree.setExtendedAttribute("document", resourceForkName, "other");
    for (std::uint32_t at = 0; at < plan.image->blockCount() && !error;) {
        const ImagePiece piece = plan.image->pieceAt(BlockAddress(at), 64);
        std::vector<std::uint8_t> bytes(std::size_t{piece.blockCount} * 2048);
        error = plan.image->fillPiece(BlockAddress(at), bytes, {});
        at += piece.blockCount;
    }
    EXPECT_EQ(error.code(), fBsyErr);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("document")));
}

} // namespace Tessaron::Testing
