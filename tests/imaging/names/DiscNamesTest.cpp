#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscNames.h>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

namespace
{

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

std::shared_ptr<DRFile> fileNamed(const char *name)
{
    return DRFile::virtualFileWithName(text(name), {});
}

std::shared_ptr<DRFolder> folderNamed(const char *name)
{
    return DRFolder::virtualFolderWithName(text(name));
}

} // namespace

TEST(DiscNames, msfValue_countsFrames)
{
    EXPECT_EQ(msfValue(text("01:02:03")), 4653);
    EXPECT_EQ(msfValue(text("1 : 2 : 3")), 4653);
    EXPECT_EQ(msfValue(text("00:99:99")), 7524);
    EXPECT_EQ(msfValue(text("::")), 0);
    EXPECT_EQ(msfValue(text("x:2y:-3")), 147);
    EXPECT_EQ(msfValue(text("+1:\t1:1")), 4576);
    EXPECT_EQ(msfValue(text("99999999999:0:0")), std::int64_t(2147483647) * 60 * 75);
    EXPECT_EQ(msfValue(text("-99999999999:0:0")), std::int64_t(-2147483648) * 60 * 75);
    for (const char *const malformed : {"01:02", "1:2:3:4", "", "4653"})
        EXPECT_EQ(msfValue(text(malformed)), std::nullopt) << malformed;
    EXPECT_EQ(msfValue(QString()), std::nullopt);
}

TEST(DiscNames, extensionForTessaronDiscImageFormat_knowsEachSingleBit)
{
    const char *const extensions[] = {"dmg", "iso", "nrg", "cdi", "toast", "bin", "toc", "cdr", "vant"};
    for (int bit = 0; bit < 9; ++bit)
        EXPECT_EQ(extensionForTessaronDiscImageFormat(1 << bit), text(extensions[bit]));
    for (const TessaronDiscImageFormat other : {0, 3, 34, 512, -1})
        EXPECT_TRUE(extensionForTessaronDiscImageFormat(other).isNull()) << other;
}

TEST(DiscNames, occurenceOfString_comparesFirstOccurrences)
{
    const QString format = text("%@ of %d, %@");
    EXPECT_TRUE(occurenceOfString(format, text("%@"), text("%d")));
    EXPECT_FALSE(occurenceOfString(format, text("%d"), text("%@")));
    EXPECT_TRUE(occurenceOfString(format, text("%d"), text("%s")));
    EXPECT_FALSE(occurenceOfString(format, text("%s"), text("%d")));
    EXPECT_FALSE(occurenceOfString(format, text("%@"), text("%@"))) << "not strictly before";
    EXPECT_FALSE(occurenceOfString(format, QString(), text("%d")));
    EXPECT_TRUE(occurenceOfString(format, text("%d"), QString()));
}

TEST(DiscNames, matchesRegExp_matchesTheWholeText)
{
    EXPECT_TRUE(matchesRegExp(text("VTS_01_1.VOB"), text("VTS_\\d\\d_\\d\\.VOB")));
    EXPECT_FALSE(matchesRegExp(text("xVTS_01_1.VOB"), text("VTS_\\d\\d_\\d\\.VOB")));
    EXPECT_FALSE(matchesRegExp(text("VTS_01_1.VOB\n"), text("VTS_\\d\\d_\\d\\.VOB")));
    EXPECT_TRUE(matchesRegExp(text("ab"), text("a|ab")));
    EXPECT_TRUE(matchesRegExp(text("größe"), text("\\w+")));
    for (const char *const lineEnd : {"\n", "\r", "\f", "\xC2\x85", "\xE2\x80\xA8"})
        EXPECT_FALSE(matchesRegExp(text("a") + text(lineEnd) + text("b"), text("a.b")));
    EXPECT_TRUE(matchesRegExp(text("A"), text("(?i)a")));
    EXPECT_TRUE(matchesRegExp(text(""), text("")));
    EXPECT_FALSE(matchesRegExp(text("("), text("(")));
    EXPECT_FALSE(matchesRegExp(text("axyz"), text("a)|(?:b")));
    EXPECT_TRUE(matchesRegExp(text("x"), text("[[a-z]&&[^aeiou]]")));
    EXPECT_FALSE(matchesRegExp(text("a"), QString()));
}

TEST(DiscNames, dvdName_keepsLevelOneCharacters)
{
    EXPECT_EQ(dvdName(text("")), text("DVD"));
    EXPECT_EQ(dvdName(QString()), text("DVD"));
    EXPECT_EQ(dvdName(text("My-Movie")), text("MY_MOVIE"));
    EXPECT_EQ(dvdName(text("__a")), text("A"));
    EXPECT_EQ(dvdName(text("a - b")), text("A_B"));
    EXPECT_EQ(dvdName(text("it's 2 p.m.")), text("IT_S_2_PM"));
    EXPECT_EQ(dvdName(text("äöü€")), text("DVD"));
    EXPECT_EQ(dvdName(text("😀 x")), text("X"));
    EXPECT_EQ(dvdName(text("_")), text("DVD"));
    EXPECT_EQ(dvdName(text("a_")), text("A_"));
}

TEST(DiscNames, dvdName_stopsAfterTwentySevenCharacters)
{
    EXPECT_EQ(dvdName(QString(40, u'a')), QString(27, u'A'));
    EXPECT_EQ(dvdName(QString(27, u'a')), QString(27, u'A'));
    EXPECT_EQ(dvdName(QStringLiteral("_") + QString(40, u'a')), QString(26, u'A')) << "the leading _ goes last";
}

TEST(DiscNames, dvdName_isTheSame_whereTheTextNamesAFile)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    tree.makeFolder("folder");
    const auto expected = [](QString path) {
        path.remove(u'/').replace(u'-', u' ');
        QString letters;
        for (const QChar character : std::as_const(path)) {
            if (character.isLetterOrNumber() || character == u'_')
                letters += character.toUpper();
            else if (character == u' ')
                letters += u'_';
        }
        return letters.left(27);
    };
    EXPECT_EQ(dvdName(tree.pathText("file")), expected(tree.pathText("file")));
    EXPECT_EQ(dvdName(tree.pathText("folder")), expected(tree.pathText("folder")));
    EXPECT_EQ(dvdName(tree.pathText("missing")), expected(tree.pathText("missing")));
}

TEST(DiscNames, fullDescription_listsTheChildrenOfVirtualFolders)
{
    const TemporaryTree tree;
    tree.makeFile("real/inside");
    const auto root = folderNamed("root");
    EXPECT_EQ(fullDescription(*root), QStringLiteral(""));
    const auto inner = folderNamed("inner");
    inner->addChild(fileNamed("deep"));
    root->addChild(fileNamed("one"));
    root->addChild(inner);
    root->addChild(folderNamed("empty"));
    root->addChild(DRFolder::folderWithPath(tree.pathText("real")));
    EXPECT_EQ(fullDescription(*root), text("one\ndeep\n\n\nreal\n"));
    EXPECT_EQ(fullDescription(*fileNamed("one")), text("one"));
    EXPECT_EQ(fullDescription(*DRFolder::folderWithPath(tree.pathText("real"))), text("real"));
}

TEST(DiscNames, childWithBaseName_findsTheFirstExactMatch)
{
    const auto root = folderNamed("root");
    const auto first = fileNamed("name");
    root->addChild(fileNamed("Name"));
    root->addChild(first);
    root->addChild(folderNamed("name"));
    EXPECT_EQ(childWithBaseName(*root, text("name")), first);
    EXPECT_FALSE(childWithBaseName(*root, text("NAME")));
    EXPECT_FALSE(childWithBaseName(*root, QString()));
}

TEST(DiscNames, removeAllChildren_leavesThemWithoutParent)
{
    const auto root = folderNamed("root");
    const auto one = fileNamed("one");
    root->addChild(one);
    root->addChild(folderNamed("two"));
    removeAllChildren(*root);
    EXPECT_TRUE(root->children().empty());
    EXPECT_FALSE(one->parent());
    removeAllChildren(*root);
    EXPECT_TRUE(root->children().empty());
}
