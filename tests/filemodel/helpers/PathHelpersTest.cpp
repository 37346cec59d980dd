#include "platform/coreservices/Aliases.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/PathHelpers.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

class PathHelpers : public ::testing::Test
{
protected:
    bool keepsAttributes() const
    {
        return ::setxattr(tree.makeFile("attribute-probe").constData(), "user.probe", "1", 1, 0) == 0;
    }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(PathHelpers, fsRef_isValid_onlyWhereSomethingIs)
{
    tree.makeSymbolicLink("broken", "nowhere");
    const FSRef link = fsRef(tree.pathText("broken"));
    EXPECT_TRUE(FSRefValid(&link));
    EXPECT_EQ(stringWithFSRef(&link), tree.pathText("broken"));
    const FSRef missing = fsRef(tree.pathText("missing"));
    EXPECT_FALSE(FSRefValid(&missing));
    EXPECT_TRUE(stringWithFSRef(&missing).isNull());
    EXPECT_TRUE(stringWithFSRef(nullptr).isNull());
}

TEST_F(PathHelpers, paths_keepNamesThatAreNotUtf8)
{
    tree.makeFile("caf\xE9");
    const FSRef ref = fsRef(tree.pathText("caf\xE9"));
    EXPECT_TRUE(FSRefValid(&ref));
    EXPECT_EQ(stringWithFSRef(&ref), tree.pathText("caf\xE9"));
}

TEST_F(PathHelpers, stringWithFSRef_takes1023Bytes_andNoMore)
{
    const qsizetype room = 1023 - tree.path().size() - 1;
    QByteArray relative;
    while (room - relative.size() > 200)
        relative += QByteArray(100, 'd') + '/';
    relative += QByteArray(room - relative.size(), 'f');
    tree.makeFile(relative);
    tree.makeFile(relative + 'f');
    const FSRef fits = fsRef(tree.pathText(relative));
    const FSRef tooLong = fsRef(tree.pathText(relative + 'f'));
    EXPECT_EQ(stringWithFSRef(&fits), tree.pathText(relative));
    EXPECT_TRUE(FSRefValid(&tooLong));
    EXPECT_TRUE(stringWithFSRef(&tooLong).isNull());
}

TEST_F(PathHelpers, unusedName_isThePathItself_whenNothingIsThere)
{
    EXPECT_EQ(unusedName(tree.pathText("a.txt")), tree.pathText("a.txt"));
    EXPECT_EQ(unusedName(QString()), QString());
}

TEST_F(PathHelpers, unusedName_countsUp_untilANameIsFree)
{
    tree.makeFile("a.txt");
    EXPECT_EQ(unusedName(tree.pathText("a.txt")), tree.pathText("a-1.txt"));
    tree.makeFile("a-1.txt");
    EXPECT_EQ(unusedName(tree.pathText("a.txt")), tree.pathText("a-2.txt"));
    tree.makeFolder("folder");
    tree.makeFolder("folder-1");
    EXPECT_EQ(unusedName(tree.pathText("folder")), tree.pathText("folder-2"));
    EXPECT_EQ(unusedName(tree.pathText("folder/")), tree.pathText("folder-2"));
}

TEST_F(PathHelpers, unusedName_passesOverNamesThatAreTakenElsewhere)
{
    tree.makeFile("a-2.txt");
    const QStringList promised{tree.pathText("a.txt"), tree.pathText("a-1.txt"), tree.pathText("b.txt")};
    const auto isPromised = [&](const QString &path) { return promised.contains(path); };
    EXPECT_EQ(unusedName(tree.pathText("a.txt"), isPromised), tree.pathText("a-3.txt"));
    EXPECT_EQ(unusedName(tree.pathText("b.txt"), isPromised), tree.pathText("b-1.txt"));
    EXPECT_EQ(unusedName(tree.pathText("c.txt"), isPromised), tree.pathText("c.txt"));
}

TEST_F(PathHelpers, unusedName_takesOnlyARealExtensionForOne)
{
    tree.makeFile(".hidden");
    tree.makeFile("dotted.folder/plain");
    tree.makeFile("caf\xE9.txt");
    EXPECT_EQ(unusedName(tree.pathText(".hidden")), tree.pathText(".hidden-1"));
    EXPECT_EQ(unusedName(tree.pathText("dotted.folder/plain")), tree.pathText("dotted.folder/plain-1"));
    EXPECT_EQ(unusedName(tree.pathText("caf\xE9.txt")), tree.pathText("caf\xE9-1.txt"));
}

TEST_F(PathHelpers, unusedName_doesNotGiveTheNameOfABrokenLink)
{
    tree.makeSymbolicLink("link", "nowhere");
    EXPECT_EQ(unusedName(tree.pathText("link")), tree.pathText("link-1"));
}

TEST_F(PathHelpers, unusedName_isNeverLongerThanAFileSystemTakes)
{
    const QByteArray longest = QByteArray(249, 'a') + ".txt" + "yy"; // 255 bytes
    tree.makeFile(longest);
    const QString unused = unusedName(tree.pathText(longest));
    EXPECT_EQ(unused, tree.pathText(QByteArray(247, 'a') + "-1.txtyy"));
    tree.makeFile(QByteArray(247, 'a') + "-1.txtyy");
    EXPECT_EQ(unusedName(tree.pathText(longest)), tree.pathText(QByteArray(247, 'a') + "-2.txtyy"));
    QByteArray accents;
    for (int letter = 0; letter < 127; ++letter)
        accents += "\xC3\xA9";
    tree.makeFile(accents);
    EXPECT_EQ(unusedName(tree.pathText(accents)), tree.pathText(accents.first(252) + "-1")) << "whole letters";
}

TEST_F(PathHelpers, stringByResolvingFinderAlias_leavesOtherFilesAlone)
{
    tree.makeFile("file");
    EXPECT_EQ(stringByResolvingFinderAlias(tree.pathText("file")), tree.pathText("file"));
    EXPECT_TRUE(stringByResolvingFinderAlias(tree.pathText("missing")).isNull());
    EXPECT_TRUE(stringByResolvingFinderAlias(QString()).isNull());
}

TEST_F(PathHelpers, stringByResolvingFinderAlias_followsChains_andKeepsThePathOfABrokenAlias)
{
    if (!keepsAttributes())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    tree.makeFile("target");
    tree.makeFile("doomed");
    ASSERT_EQ(writeAliasFile(tree.path("inner"), fsRef(tree.pathText("target"))), noErr);
    ASSERT_EQ(writeAliasFile(tree.path("outer"), fsRef(tree.pathText("inner"))), noErr);
    ASSERT_EQ(writeAliasFile(tree.path("broken"), fsRef(tree.pathText("doomed"))), noErr);
    tree.remove("doomed");
    EXPECT_EQ(stringByResolvingFinderAlias(tree.pathText("outer")), tree.pathText("target"));
    EXPECT_EQ(stringByResolvingFinderAlias(tree.pathText("broken")), tree.pathText("broken"));
    EXPECT_TRUE(isFinderAliasAtPath(tree.pathText("outer")));
    EXPECT_TRUE(isFinderAliasAtPath(tree.pathText("broken")));
}

TEST_F(PathHelpers, isFinderAliasAtPath_isFalse_forEverythingElse)
{
    tree.makeFile("file");
    tree.makeSymbolicLink("link", "file");
    EXPECT_FALSE(isFinderAliasAtPath(tree.pathText("file")));
    EXPECT_FALSE(isFinderAliasAtPath(tree.pathText("link")));
    EXPECT_FALSE(isFinderAliasAtPath(tree.pathText("missing")));
    EXPECT_FALSE(isFinderAliasAtPath(tree.pathText()));
    EXPECT_FALSE(isFinderAliasAtPath(QString()));
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_removesAFolderOfWorthlessFiles)
{
    tree.makeFolder("empty");
    tree.makeFile("folder/.DS_Store", "settings");
    tree.makeFile("folder/empty file");
    tree.makeFile("folder/caf\xE9");
    EXPECT_TRUE(deleteDirectoryAtPathIfEmpty(tree.pathText("empty")));
    EXPECT_TRUE(deleteDirectoryAtPathIfEmpty(tree.pathText("folder")));
    EXPECT_FALSE(tree.exists("empty"));
    EXPECT_FALSE(tree.exists("folder"));
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_takesTheFolder_howeverItsPathIsSpelled)
{
    for (const char *const path : {"folder/", "folder//", "folder/.", "./folder", "other/../folder"}) {
        tree.makeFolder("other");
        tree.makeFile("folder/empty file");
        EXPECT_TRUE(deleteDirectoryAtPathIfEmpty(tree.pathText() + u'/' + QString::fromUtf8(path))) << path;
        EXPECT_FALSE(tree.exists("folder")) << path;
    }
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_removesNothing_fromAFolderThatHoldsMore)
{
    tree.makeFolder("withFolder/inner");
    tree.makeFile("withFolder/empty file");
    tree.makeFile("withFile/empty file");
    tree.makeFile("withFile/file", "x");
    tree.makeFile("withLink/empty file");
    tree.makeSymbolicLink("withLink/link", "empty file");
    tree.makeFolder("withSettingsFolder/.DS_Store");
    for (const char *const name : {"withFolder", "withFile", "withLink", "withSettingsFolder"})
        EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText(name))) << name;
    EXPECT_TRUE(tree.exists("withFolder/inner"));
    for (const char *const name : {"withFolder/empty file", "withFile/empty file", "withFile/file", "withLink/link"})
        EXPECT_TRUE(::faccessat(AT_FDCWD, tree.path(name).constData(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) << name;
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_isFalse_forWhatIsNoFolder)
{
    tree.makeFile("file");
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("missing")));
    EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("file")));
    EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("link")));
    EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("link/")));
    EXPECT_TRUE(tree.exists("folder"));
    EXPECT_TRUE(tree.exists("file"));
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_isFalse_forAFolderThatCannotBeListed)
{
    tree.setMode("", 0777);
    tree.makeFolder("closed");
    tree.setMode("closed", 0300);
    {
        const Testing::WithoutRootRights rights;
        EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("closed")));
    }
    EXPECT_TRUE(tree.exists("closed"));
}

TEST_F(PathHelpers, deleteDirectoryAtPathIfEmpty_isFalse_whenTheFolderMayNotBeRemoved)
{
    tree.makeFolder("closed/folder");
    tree.setMode("closed", 0555);
    {
        const Testing::WithoutRootRights rights;
        EXPECT_FALSE(deleteDirectoryAtPathIfEmpty(tree.pathText("closed/folder")));
    }
    tree.setMode("closed", 0755);
    EXPECT_TRUE(tree.exists("closed/folder"));
}

} // namespace Tessaron
