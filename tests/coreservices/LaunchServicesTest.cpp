#include "platform/coreservices/LaunchServices.h"

#include "platform/coreservices/ForkAttributes.h"
#include "tests/support/TemporaryTree.h"

#include <QMimeDatabase>

#include <cstdio>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

class LaunchServices : public ::testing::Test
{
protected:
    FSRef ref(const QByteArray &relative) const
    {
        FSRef made;
        EXPECT_EQ(FSPathMakeRefWithOptions(tree.path(relative), kFSPathMakeRefDoNotFollowLeafSymlink, &made, nullptr),
                  noErr);
        return made;
    }

    std::uint32_t flags(const QByteArray &relative) const
    {
        const FSRef made = ref(relative);
        LSItemInfoRecord info;
        EXPECT_EQ(LSCopyItemInfoForRef(&made, &info), noErr);
        return info.flags;
    }

    QString kind(const QByteArray &relative) const
    {
        const FSRef made = ref(relative);
        QString text;
        EXPECT_EQ(LSCopyKindStringForRef(&made, &text), noErr);
        return text;
    }

    bool setFinderFlags(const QByteArray &relative, std::uint16_t finderFlags) const
    {
        QByteArray info(32, '\0');
        info[8] = static_cast<char>(finderFlags >> 8);
        info[9] = static_cast<char>(finderFlags & 0xFF);
        return ::setxattr(tree.path(relative).constData(), finderInfoAttribute, info.constData(), 32, 0) == 0;
    }

    static QString comment(const char *type) { return QMimeDatabase().mimeTypeForName(QLatin1String(type)).comment(); }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(LaunchServices, extensionOfName_isWhatFollowsTheLastDot)
{
    EXPECT_EQ(extensionOfName("a.txt"), "txt");
    EXPECT_EQ(extensionOfName("a.tar.gz"), "gz");
    EXPECT_EQ(extensionOfName(".b.c"), "c");
    for (const char *const none : {"", "a", ".bashrc", "a.", "..a", "...", "Dr. No", "."})
        EXPECT_TRUE(extensionOfName(none).isEmpty()) << none;
}

TEST_F(LaunchServices, flags_tellFilesFoldersAndLinksApart)
{
    tree.makeFile("file.txt");
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    EXPECT_EQ(flags("file.txt"), kLSItemInfoIsPlainFile);
    EXPECT_EQ(flags("folder"), kLSItemInfoIsContainer);
    EXPECT_EQ(flags("link"), kLSItemInfoIsPlainFile | kLSItemInfoIsSymlink);
}

TEST_F(LaunchServices, aFolderWithAPackagesExtension_isAPackage_butAFileIsNot)
{
    tree.makeFolder("Program.app");
    tree.makeFolder("Text.RTFD");
    tree.makeFolder("folder.txt");
    tree.makeFile("file.app");
    EXPECT_TRUE(flags("Program.app") & kLSItemInfoIsPackage);
    EXPECT_TRUE(flags("Text.RTFD") & kLSItemInfoIsPackage);
    EXPECT_FALSE(flags("folder.txt") & kLSItemInfoIsPackage);
    EXPECT_FALSE(flags("file.app") & kLSItemInfoIsPackage);
}

TEST_F(LaunchServices, aNameThatBeginsWithADot_isInvisible)
{
    tree.makeFile(".hidden");
    tree.makeFolder(".folder");
    EXPECT_TRUE(flags(".hidden") & kLSItemInfoIsInvisible);
    EXPECT_TRUE(flags(".folder") & kLSItemInfoIsInvisible);
}

TEST_F(LaunchServices, finderFlags_makeInvisibleAliasPackageAndHiddenExtension)
{
    tree.makeFile("invisible");
    tree.makeFile("alias");
    tree.makeFile("name.txt");
    tree.makeFolder("bundle");
    if (!setFinderFlags("invisible", kFinderIsInvisible))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    ASSERT_TRUE(setFinderFlags("alias", kFinderIsAlias));
    ASSERT_TRUE(setFinderFlags("name.txt", kFinderHasHiddenExtension));
    ASSERT_TRUE(setFinderFlags("bundle", kFinderHasBundle));
    EXPECT_TRUE(flags("invisible") & kLSItemInfoIsInvisible);
    EXPECT_TRUE(flags("alias") & kLSItemInfoIsAliasFile);
    EXPECT_TRUE(flags("name.txt") & kLSItemInfoExtensionIsHidden);
    EXPECT_TRUE(flags("bundle") & kLSItemInfoIsPackage);
    const FSRef hidden = ref("name.txt");
    LSItemAttributes attributes;
    ASSERT_EQ(LSCopyItemAttributes(&hidden, kLSRolesViewer, {kLSItemDisplayName}, &attributes), noErr);
    EXPECT_EQ(attributes.displayName, "name");
    EXPECT_TRUE(attributes.displayKind.isEmpty());
}

TEST_F(LaunchServices, kind_comesFromTheName_andFromTheContentsWithoutAnExtension)
{
    tree.makeFile("page.html", "not really");
    tree.makeFile("picture", "\x89PNG\r\n\x1A\n");
    tree.makeFolder("folder.txt");
    tree.makeSymbolicLink("link.txt", "nowhere");
    tree.makeFifo("fifo");
    EXPECT_EQ(kind("page.html"), comment("text/html"));
    EXPECT_EQ(kind("picture"), comment("image/png"));
    EXPECT_EQ(kind("folder.txt"), comment("inode/directory"));
    EXPECT_EQ(kind("link.txt"), comment("inode/symlink"));
    EXPECT_EQ(kind("fifo"), comment("inode/fifo"));
    EXPECT_FALSE(kind("page.html").isEmpty());
}

TEST_F(LaunchServices, attributes_useTheNameOfNow_afterARename)
{
    tree.makeFile("old.txt");
    const FSRef made = ref("old.txt");
    ASSERT_EQ(std::rename(tree.path("old.txt").constData(), tree.path("new.html").constData()), 0);
    LSItemAttributes attributes;
    ASSERT_EQ(LSCopyItemAttributes(&made, kLSRolesViewer, {kLSItemDisplayName, kLSItemDisplayKind}, &attributes),
              noErr);
    EXPECT_EQ(attributes.displayName, "new.html");
    EXPECT_EQ(QString::fromUtf8(attributes.displayKind), comment("text/html"));
    LSItemInfoRecord info;
    ASSERT_EQ(LSCopyItemInfoForRef(&made, &info), noErr);
    EXPECT_EQ(info.extension, "html");
}

TEST_F(LaunchServices, everything_fails_whenTheFileIsGone)
{
    tree.makeFile("file");
    const FSRef gone = ref("file");
    tree.remove("file");
    LSItemAttributes attributes;
    LSItemInfoRecord info;
    QString text;
    EXPECT_EQ(LSCopyItemAttributes(&gone, kLSRolesViewer, {kLSItemDisplayName}, &attributes), fnfErr);
    EXPECT_EQ(LSCopyItemInfoForRef(&gone, &info), fnfErr);
    EXPECT_EQ(LSCopyKindStringForRef(&gone, &text), fnfErr);
    EXPECT_EQ(LSCopyItemInfoForRef(nullptr, &info), paramErr);
}

} // namespace Tessaron
