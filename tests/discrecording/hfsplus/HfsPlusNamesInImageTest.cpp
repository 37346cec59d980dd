#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

namespace Tessaron::Testing
{

TEST(HfsPlusNamesInImage, names_areDecomposed_andTheSeparatorIsExchanged)
{
    const TemporaryTree tree;
    tree.makeFile("Ångström: é", "a");
    tree.makeFile("한국어/ファイル", "b");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.at("/Ångström: é").recordedName, u"A\x030Angstro\x0308m/ e\x0301");
    EXPECT_EQ(image.contents("/한국어/ファイル"), "b");
    EXPECT_EQ(image.written.plan().report->count(), 0u) << "another form of the same text is no other name";
}

TEST(HfsPlusNamesInImage, namesThatDifferInCase_areToldApart_andReported)
{
    const TemporaryTree tree;
    tree.makeFile("README.txt", "1");
    tree.makeFile("ReadMe.txt", "2");
    tree.makeFile("readme.txt", "3");
    tree.makeFile("Ärger", "4");
    tree.makeFile("ärger", "5");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.contents("/README.txt"), "1");
    EXPECT_EQ(image.contents("/ReadMe_1.txt"), "2");
    EXPECT_EQ(image.contents("/readme_2.txt"), "3");
    EXPECT_EQ(image.contents("/Ärger"), "4");
    EXPECT_EQ(image.contents("/ärger_1"), "5");
    const auto renamed = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(renamed.size(), 3u);
    EXPECT_EQ(renamed[0].nameGiven, QStringLiteral("ReadMe_1.txt"));
    EXPECT_TRUE(renamed[0].isLost) << "no other tree holds it";
}

TEST(HfsPlusNamesInImage, composedAndDecomposedForms_areTheSameName)
{
    const TemporaryTree tree;
    tree.makeFile("\xC3\xA9", "composed");
    tree.makeFile("e\xCC\x81", "decomposed");
    const ReadHfsImage image(realFolder(tree), optionsFor(9));
    EXPECT_EQ(image.reader.fileCount(), 2u);
    const auto renamed = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(renamed.size(), 1u);
    EXPECT_FALSE(renamed[0].isLost) << "Rock Ridge has both";
}

TEST(HfsPlusNamesInImage, ignoredCharacters_doNotTellNamesApart)
{
    const TemporaryTree tree;
    tree.makeFile("ab", "1");
    tree.makeFile("a\xE2\x80\x8D"
                  "b",
                  "2");
    tree.makeFile("\xE2\x80\x8D", "nothing that counts");
    tree.makeFile("\xEF\xBF\xBF", "U+FFFF");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.reader.fileCount(), 4u);
    EXPECT_EQ(image.contents("/ab"), "1");
    EXPECT_EQ(image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed).size(), 3u);
}

TEST(HfsPlusNamesInImage, bytesThatAreNotUtf8_areReplaced_andReported)
{
    const TemporaryTree tree;
    tree.makeFile("bad\xFF\xFEname", "1");
    const ReadHfsImage image(realFolder(tree), optionsFor(15));
    EXPECT_EQ(image.contents("/bad__name"), "1");
    const auto renamed = image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(renamed.size(), 1u);
    EXPECT_EQ(renamed[0].nameGiven, QStringLiteral("bad__name"));
}

TEST(HfsPlusNamesInImage, longestNames_fit_andLongerOnesAreCut)
{
    const TemporaryTree tree;
    tree.makeFile(QByteArray(255, 'a'), "1");
    QByteArray expanding;
    for (int count = 0; count < 127; ++count)
        expanding += "\xC7\x95"; // decomposes into three units
    tree.makeFile(expanding, "2");
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.contents(QByteArray(256, 'a').replace(0, 1, "/").constData()), "1");
    EXPECT_EQ(image.reader.root().children.size(), 2u);
    for (const auto &child : image.reader.root().children)
        EXPECT_EQ(child->recordedName.size(), 255u);
    EXPECT_EQ(image.written.items(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed).size(), 1u);
}

TEST(HfsPlusNamesInImage, volumeName_isTheRoots)
{
    EXPECT_EQ(ReadHfsImage(DRFolder::virtualFolderWithName(QStringLiteral("Müll: 1"))).reader.root().name,
              QStringLiteral("Müll: 1"));
    const ReadHfsImage unnamed(DRFolder::virtualFolderWithName({}));
    EXPECT_EQ(unnamed.reader.root().name, QStringLiteral("untitled"));
    EXPECT_EQ(unnamed.written.plan().report->count(DRDiscTree::HFSPlus, DRStorageReportItem::Kind::Renamed), 1u);
}

TEST(HfsPlusNamesInImage, everyLetter_isWhereTheOrderWantsIt)
{
    // The reader knows the order from the Unicode facts; no two of these names may be in another one.
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("letters"));
    for (char16_t unit = 0x21; unit < 0x0600; ++unit) {
        if (unit != u'/' && unit != u'.' && unit != 0x7F)
            root->addChild(DRFile::virtualFileWithName(QString(QChar(unit)) + u'x', {}));
    }
    const ReadHfsImage image(root);
    EXPECT_GT(image.reader.fileCount(), 1400u);
}

} // namespace Tessaron::Testing
