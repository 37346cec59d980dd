#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

namespace Tessaron::Testing
{

TEST(HfsPlusLinks, hardLinks_areNamesOfOneFile)
{
    const TemporaryTree tree;
    tree.makeFile("a", QByteArray(5000, 'a'));
    tree.makeHardLink("b", "a");
    tree.makeHardLink("sub/c", "a");
    tree.makeFile("alone", "x");
    const ReadHfsImage image(realFolder(tree));
    ASSERT_TRUE(image.reader.privateFolder());
    ASSERT_EQ(image.reader.privateFolder()->children.size(), 1u);
    const HfsObject &file = *image.reader.privateFolder()->children[0];
    EXPECT_EQ(file.special, 3u);
    EXPECT_EQ(image.reader.contents(file.data), QByteArray(5000, 'a'));
    for (const char *const path : {"/a", "/b", "/sub/c"}) {
        EXPECT_EQ(image.at(path).typeAndCreator(), "hlnkhfs+") << path;
        EXPECT_EQ(image.reader.resolved(image.at(path)), &file) << path;
    }
    EXPECT_NE(image.at("/alone").typeAndCreator(), "hlnkhfs+");
    EXPECT_EQ(image.reader.fileCount(), 5u);
    EXPECT_EQ(image.reader.root().children.back().get(), image.reader.privateFolder()) << "NUL comes last";
}

TEST(HfsPlusLinks, fileWithOneNameInTheVolume_isNoLink)
{
    const TemporaryTree tree;
    tree.makeFile("a", "contents");
    tree.makeHardLink("b", "a");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    const auto a = DRFile::fileWithPath(tree.pathText("a"));
    a->setExplicitFilesystemMask(DRFilesystemInclusionMaskISO9660);
    root->addChild(a);
    root->addChild(DRFile::fileWithPath(tree.pathText("b")));
    const ReadHfsImage image(root, optionsFor(9));
    EXPECT_EQ(image.reader.privateFolder(), nullptr);
    EXPECT_EQ(image.reader.objectAt(QStringLiteral("/a")), nullptr);
    EXPECT_EQ(image.contents("/b"), "contents");
}

TEST(HfsPlusLinks, attributesOfTheFirstName_hold_andOthersAreReported)
{
    const TemporaryTree tree;
    tree.makeFile("file", "f");
    tree.setMode("file", 0640);
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    for (const char *const name : {"first", "second"}) {
        const auto file = DRFile::fileWithPath(tree.pathText("file"));
        file->setBaseName(QString::fromLatin1(name));
        if (qstrcmp(name, "second") == 0)
            file->setProperty(0600u, DRPosixFileMode, DRAllFilesystems);
        root->addChild(file);
    }
    const ReadHfsImage image(root);
    EXPECT_EQ(image.reader.resolved(image.at("/second"))->mode & 07777, 0640);
    const auto altered = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Altered);
    ASSERT_EQ(altered.size(), 1u);
    EXPECT_EQ(altered[0].path, QStringLiteral("/second"));
}

TEST(HfsPlusLinks, namesOfLinkedFiles_areInOrder_whenTheirNumbersGetLonger)
{
    // The IDs of the linked files would pass from 999 to 1000.
    const TemporaryTree tree;
    for (int number = 0; number < 240; ++number) {
        tree.makeFile("f" + QByteArray::number(number), QByteArray::number(number));
        for (int name = 0; name < 3; ++name)
            tree.makeHardLink("l" + QByteArray::number(name) + "/" + QByteArray::number(number),
                              "f" + QByteArray::number(number));
    }
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.reader.privateFolder()->children.size(), 240u);
    EXPECT_EQ(image.contents("/l2/239"), "239");
    EXPECT_EQ(image.contents("/l0/7"), "7");
}

TEST(HfsPlusLinks, emptyFileWithTwoNames_isLinked)
{
    const TemporaryTree tree;
    tree.makeFile("a");
    tree.makeHardLink("b", "a");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.reader.privateFolder()->children.at(0)->special, 2u);
    EXPECT_EQ(image.contents("/b"), "");
}

} // namespace Tessaron::Testing
