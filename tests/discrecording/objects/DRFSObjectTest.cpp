#include "platform/discrecording/objects/DRFSObject.h"

#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

TEST(DRFSObject, baseName_isTheSourcesOwn_untilOneIsSet)
{
    const TemporaryTree tree;
    tree.makeFile("photo.jpg", "x");
    const auto file = DRFile::fileWithPath(tree.pathText("photo.jpg"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->hasExplicitBaseName());
    EXPECT_EQ(file->baseName(), QStringLiteral("photo.jpg"));
    EXPECT_EQ(file->baseNameBytes(), QByteArray("photo.jpg"));
    file->setBaseName(QStringLiteral("Urlaub ä.jpg"));
    EXPECT_TRUE(file->hasExplicitBaseName());
    EXPECT_EQ(file->baseName(), QStringLiteral("Urlaub ä.jpg"));
    EXPECT_EQ(file->baseNameBytes(), QByteArray("Urlaub \xC3\xA4.jpg"));
}

TEST(DRFSObject, baseName_keepsEveryByte_whenTheNameIsNotUtf8)
{
    const TemporaryTree tree;
    tree.makeFile("caf\xE9.txt");
    tree.makeFile("other");
    const auto file = DRFile::fileWithPath(tree.pathText("caf\xE9.txt"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->baseNameBytes(), QByteArray("caf\xE9.txt"));
    const auto other = DRFile::fileWithPath(tree.pathText("other"));
    other->setBaseName(file->baseName());
    EXPECT_EQ(other->baseNameBytes(), QByteArray("caf\xE9.txt"));
}

TEST(DRFSObject, sourceRef_ofAVirtualFolderDoesNotChangeItsName)
{
    const TemporaryTree tree;
    tree.makeFolder("real");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.path("real"), &ref, nullptr), noErr);
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("given"));
    EXPECT_EQ(folder->sourceRef(), FSRef());
    folder->setSourceRef(ref);
    EXPECT_TRUE(folder->isVirtual());
    EXPECT_TRUE(folder->hasExplicitBaseName());
    EXPECT_EQ(folder->baseName(), QStringLiteral("given"));
    EXPECT_EQ(folder->sourceRef(), ref);
}

TEST(DRFSObject, propertyForKey_fallsBackToTheMoreGeneralFilesystem)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("f"));
    EXPECT_FALSE(folder->propertyForKey(DRInvisible, DRJoliet).isValid());
    folder->setProperty(true, DRInvisible, DRAllFilesystems);
    folder->setProperty(false, DRInvisible, DRISO9660);
    EXPECT_EQ(folder->propertyForKey(DRInvisible, DRJoliet), QVariant(true));
    EXPECT_EQ(folder->propertyForKey(DRInvisible, DRAllFilesystems), QVariant(true));
    EXPECT_EQ(folder->propertyForKey(DRInvisible, DRISO9660), QVariant(false));
    EXPECT_EQ(folder->propertyForKey(DRInvisible, DRISO9660LevelOne), QVariant(false));
    EXPECT_EQ(folder->propertyForKey(DRInvisible, DRISO9660LevelTwo), QVariant(false));
    EXPECT_FALSE(folder->propertyForKey(DRMacFinderFlags, DRJoliet).isValid());
}

TEST(DRFSObject, setProperty_replacesAndTakesOut)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("f"));
    folder->setProperty(1, DRMacFinderFlags, DRHFSPlus);
    folder->setProperty(2, DRMacFinderFlags, DRHFSPlus);
    EXPECT_EQ(folder->propertiesForFilesystem(DRHFSPlus), (QVariantMap{{DRMacFinderFlags, 2}}));
    EXPECT_TRUE(folder->propertiesForFilesystem(DRUDF).isEmpty());
    folder->setProperty(QVariant(), DRMacFinderFlags, DRHFSPlus);
    EXPECT_TRUE(folder->propertiesForFilesystem(DRHFSPlus).isEmpty());
    folder->setProperty(QVariant(), DRMacFinderFlags, DRHFSPlus);
    EXPECT_TRUE(folder->propertiesForFilesystem(DRHFSPlus).isEmpty());
}

TEST(DRFSObject, propertiesForFilesystem_mergesAllLevels)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("f"));
    folder->setProperty(QStringLiteral("all"), DRPublisher, DRAllFilesystems);
    folder->setProperty(QStringLiteral("iso"), DRPublisher, DRISO9660);
    folder->setProperty(1, DRISOLevel, DRISO9660LevelOne);
    folder->setProperty(QStringLiteral("set"), DRVolumeSet, DRAllFilesystems);
    EXPECT_EQ(
        folder->propertiesForFilesystem(DRISO9660LevelOne),
        (QVariantMap{{DRPublisher, QStringLiteral("iso")}, {DRISOLevel, 1}, {DRVolumeSet, QStringLiteral("set")}}));
}

TEST(DRFSObject, effectiveFilesystemMask_isInherited)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    const auto file = DRFile::virtualFileWithName(QStringLiteral("file"), "x");
    root->addChild(folder);
    folder->addChild(file);
    EXPECT_EQ(file->effectiveFilesystemMask(), DRFilesystemInclusionMaskAll);
    root->setExplicitFilesystemMask(12);
    EXPECT_EQ(file->effectiveFilesystemMask(), 12u);
    EXPECT_EQ(file->explicitFilesystemMask(), 0u);
    folder->setExplicitFilesystemMask(3);
    EXPECT_EQ(file->effectiveFilesystemMask(), 3u);
    file->setExplicitFilesystemMask(1);
    EXPECT_EQ(file->effectiveFilesystemMask(), 1u);
}

TEST(DRFile, fileWithPath_refusesFoldersAndNothing)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "folder");
    EXPECT_FALSE(DRFile::fileWithPath(tree.pathText("folder")));
    EXPECT_FALSE(DRFile::fileWithPath(tree.pathText("missing")));
    const auto link = DRFile::fileWithPath(tree.pathText("link"));
    ASSERT_TRUE(link); // the link itself, not the folder that it names
    EXPECT_FALSE(link->isFolder());
    EXPECT_FALSE(link->isVirtual());
}

TEST(DRFile, DRFileCreateReal_doesNotLookAtTheDisk)
{
    const TemporaryTree tree;
    tree.makeFile("gone");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.path("gone"), &ref, nullptr), noErr);
    tree.remove("gone");
    EXPECT_TRUE(DRFileCreateReal(&ref));
    const FSRef nothing;
    EXPECT_FALSE(DRFileCreateReal(&nothing));
    EXPECT_FALSE(DRFileCreateReal(nullptr));
}

TEST(DRFile, virtualContents_areThoseGiven)
{
    const auto file = DRFile::virtualFileWithName(QStringLiteral("info.txt"), QByteArray("a\0b", 3));
    EXPECT_TRUE(file->isVirtual());
    EXPECT_EQ(file->virtualContents(), QByteArray("a\0b", 3));
    EXPECT_EQ(file->baseName(), QStringLiteral("info.txt"));
}
