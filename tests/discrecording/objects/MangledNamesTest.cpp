#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

std::shared_ptr<DRFile> addFile(DRFolder &folder, const QString &name)
{
    auto file = DRFile::virtualFileWithName(name, {});
    folder.addChild(file);
    return file;
}

} // namespace

TEST(MangledNames, mangledNameForFilesystem_isLegalInEach)
{
    const auto file = DRFile::virtualFileWithName(QStringLiteral("Résumé: final.draft"), {});
    EXPECT_EQ(file->mangledNameForFilesystem(DRISO9660LevelOne), QStringLiteral("R_SUM___.DRA"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRISO9660LevelTwo), QStringLiteral("R_SUM___FINAL.DRAFT"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRISO9660), QStringLiteral("R_SUM___FINAL.DRAFT"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRJoliet), QStringLiteral("Résumé_ final.draft"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRUDF), QStringLiteral("Résumé: final.draft"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRHFSPlus), QString::fromUtf16(u"Re\x0301sume\x0301/ final.draft"));
    EXPECT_EQ(file->mangledNameForFilesystem(DRAllFilesystems), QStringLiteral("Résumé: final.draft"));
}

TEST(MangledNames, mangledNameForFilesystem_tellsSiblingsApart)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    const auto one = addFile(*folder, QStringLiteral("chapter-one.text"));
    const auto two = addFile(*folder, QStringLiteral("chapter-two.text"));
    const auto upper = addFile(*folder, QStringLiteral("CHAPTER-ONE.text"));
    EXPECT_EQ(upper->mangledNameForFilesystem(DRISO9660LevelOne), QStringLiteral("CHAPTER_.TEX"));
    EXPECT_EQ(one->mangledNameForFilesystem(DRISO9660LevelOne), QStringLiteral("CHAPTE_1.TEX"));
    EXPECT_EQ(two->mangledNameForFilesystem(DRISO9660LevelOne), QStringLiteral("CHAPTE_2.TEX"));
    EXPECT_EQ(two->mangledNameForFilesystem(DRISO9660LevelTwo), QStringLiteral("CHAPTER_TWO.TEXT"));
    EXPECT_EQ(one->mangledNameForFilesystem(DRISO9660LevelTwo), QStringLiteral("CHAPTER_ONE_1.TEXT"));
    EXPECT_EQ(upper->mangledNameForFilesystem(DRJoliet), QStringLiteral("CHAPTER-ONE.text"));
    EXPECT_EQ(one->mangledNameForFilesystem(DRHFSPlus), QStringLiteral("chapter-one_1.text"));
}

TEST(MangledNames, mangledNameForFilesystem_ignoresSiblingsThatTheFilesystemDoesNotHold)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    const auto one = addFile(*folder, QStringLiteral("same:name"));
    const auto two = addFile(*folder, QStringLiteral("same?name"));
    EXPECT_EQ(two->mangledNameForFilesystem(DRJoliet), QStringLiteral("same_name_1"));
    one->setExplicitFilesystemMask(DRFilesystemInclusionMaskHFSPlus);
    EXPECT_EQ(two->mangledNameForFilesystem(DRJoliet), QStringLiteral("same_name"));
    folder->setExplicitFilesystemMask(DRFilesystemInclusionMaskUDF);
    one->setExplicitFilesystemMask(0);
    EXPECT_EQ(two->mangledNameForFilesystem(DRJoliet), QStringLiteral("same_name")) << "both are left out";
}

TEST(MangledNames, mangledNameForFilesystem_numbersSiblingsAsImagesDo_whateverTheirOrder)
{
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    const auto late = DRFile::virtualFileWithName(QStringLiteral("a;b"), "");
    const auto early = DRFile::virtualFileWithName(QStringLiteral("a+b"), "");
    folder->addChild(late);
    folder->addChild(early);
    EXPECT_EQ(early->mangledNameForFilesystem(DRISO9660LevelTwo), QStringLiteral("A_B"));
    EXPECT_NE(late->mangledNameForFilesystem(DRISO9660LevelTwo), QStringLiteral("A_B"));
}
