#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/filemodel/tree/LayoutRecorder.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/VirtualFolders.h>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(VirtualFolders, virtualFolderWithPath_takesNameFlagsAndIconOnly)
{
    const TemporaryTree tree;
    tree.makeFile("folder/Icon\r", "icon");
    tree.makeFile("folder/other", "x");
    tree.makeFolder("folder/inner");
    tree.makeSymbolicLink("link", "folder");
    const auto folder = virtualFolderWithPath(tree.pathText("folder"));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->isVirtual());
    EXPECT_EQ(folder->baseName(), QStringLiteral("folder"));
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("Icon\r")}));
    EXPECT_FALSE(folder->children().front()->isVirtual());
    EXPECT_EQ(folder->propertyForKey(DRMacFinderFlags, DRAllFilesystems), QVariant(0)) << "known to be none";
    const auto throughLink = virtualFolderWithPath(tree.pathText("link"));
    ASSERT_TRUE(throughLink);
    EXPECT_EQ(throughLink->baseName(), QStringLiteral("folder"));
}

TEST(VirtualFolders, virtualFolderWithPath_isNull_forWhatIsNoFolder)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    EXPECT_FALSE(virtualFolderWithPath(tree.pathText("file")));
    EXPECT_FALSE(virtualFolderWithPath(tree.pathText("missing")));
    EXPECT_FALSE(virtualFolderWithPath(QString()));
}

TEST(VirtualFolders, virtualFolderWithFSRef_remembersItsSource)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.path("folder"), &ref, nullptr), noErr);
    const auto folder = virtualFolderWithFSRef(ref);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->sourceRef(), ref);
    EXPECT_TRUE(folder->children().empty());
}

TEST(VirtualFolders, virtualFolderWithFileReference_isNeverNull)
{
    const auto ofVirtual = virtualFolderWithFileReference(KRFileReference::virtualFolderWithName(QStringLiteral("v")));
    ASSERT_TRUE(ofVirtual);
    EXPECT_EQ(ofVirtual->baseName(), QStringLiteral("v"));
    EXPECT_EQ(ofVirtual->sourceRef(), FSRef());
    const auto ofNothing = virtualFolderWithFileReference(KRFileReference::initWithFSRef(FSRef()));
    ASSERT_TRUE(ofNothing);
    EXPECT_EQ(ofNothing->baseName(), QStringLiteral(""));
    EXPECT_FALSE(ofNothing->propertyForKey(DRMacFinderFlags, DRAllFilesystems).isValid());
}

TEST(VirtualFolders, whateverIsCalledIcon_isAdded_asTheFileOfTheIcon)
{
    const TemporaryTree tree;
    tree.makeFolder("folder/Icon\r");
    const auto folder = virtualFolderWithPath(tree.pathText("folder"));
    ASSERT_EQ(folder->children().size(), 1u);
    EXPECT_FALSE(folder->children().front()->isFolder());
    EXPECT_EQ(folder->children().front()->baseName(), QStringLiteral("Icon\r"));
}
