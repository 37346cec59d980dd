#include "platform/coreservices/Aliases.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/foundation/NSBundle.h"
#include "tests/support/MeasurableMemory.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/PathHelpers.h>

#include <QDateTime>
#include <QImage>
#include <QUrl>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

class KRFileReferenceTest : public ::testing::Test
{
protected:
    std::shared_ptr<KRFileReference> reference(const QByteArray &relative) const
    {
        std::shared_ptr<KRFileReference> made = KRFileReference::fileReferenceWithPath(tree.pathText(relative));
        EXPECT_TRUE(made);
        return made;
    }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(KRFileReferenceTest, records_startEmpty)
{
    const _ZelFileAttribute none = ZelFileAttributeNone_fct();
    EXPECT_EQ(none.empty, 1);
    for (const char flag : {none.directory, none.nameBeginsWithADot, none.bundle, none.symLink, none.alias,
                            none.invisible, none.extensionHidden})
        EXPECT_EQ(flag, 2);
    EXPECT_EQ(none.dataSizeIsKnown, 1);
    EXPECT_EQ(none.rsrcSizeIsKnown, 1);
    EXPECT_FALSE(none.extension || none.displayName || none.name || none.displayKind || none.path || none.smallIcon
                 || none.largeIcon);
    EXPECT_EQ(none.smallIconDataLength + none.largeIconDataLength, 0);
    const _TessaronAttributes options = TessaronFileAttributesNone_fct();
    EXPECT_EQ(options.invisible, 0);
    EXPECT_EQ(options.useBasicFSInclusion, 1);
    EXPECT_EQ(options.basicFSInclusion, 0);
    EXPECT_EQ(options.advancedFSInclusion, 15u);
    EXPECT_EQ(options.hasBasicFSInclusion, 0);
    EXPECT_EQ(options.hasAdvancedFSInclusion, 0);
}

TEST_F(KRFileReferenceTest, factories_giveNull_forNoFileAndNoName)
{
    EXPECT_FALSE(KRFileReference::fileReferenceWithPath(QString()));
    EXPECT_FALSE(KRFileReference::fileReferenceWithPath(tree.pathText("missing")));
    EXPECT_FALSE(KRFileReference::fileReferenceWithPath(tree.pathText("missing"), ZelFileAttributeNone_fct()));
    EXPECT_FALSE(KRFileReference::virtualFolderWithName(QString()));
    EXPECT_FALSE(KRFileReference::virtualFolderWithName(QLatin1String("")));
}

TEST_F(KRFileReferenceTest, flags_areThoseOfTheFile)
{
    tree.makeFile("file.txt");
    tree.makeFolder("folder");
    tree.makeFolder("Program.app");
    tree.makeFile(".hidden");
    tree.makeSymbolicLink("link", "folder");
    EXPECT_FALSE(reference("file.txt")->isContainer());
    EXPECT_TRUE(reference("folder")->isContainer());
    EXPECT_FALSE(reference("folder")->isBundle());
    EXPECT_TRUE(reference("Program.app")->isBundle());
    EXPECT_TRUE(reference("Program.app")->isContainer());
    EXPECT_TRUE(reference(".hidden")->isInvisible());
    EXPECT_FALSE(reference("file.txt")->isInvisible());
    EXPECT_TRUE(reference("link")->isSymbolicLink());
    EXPECT_FALSE(reference("link")->isContainer());
    EXPECT_FALSE(reference("link")->isAlias());
    EXPECT_FALSE(reference("file.txt")->isExtensionHidden());
    EXPECT_FALSE(reference("file.txt")->isVirtual());
}

TEST_F(KRFileReferenceTest, initWithFSRef_looksAtTheDisk_onlyWhenAsked)
{
    tree.makeFolder("folder");
    const FSRef ref = fsRef(tree.pathText("folder"));
    const std::shared_ptr<KRFileReference> made = KRFileReference::initWithFSRef(ref);
    EXPECT_EQ(*made->fileRef(), ref);
    EXPECT_TRUE(made->isContainer());
    EXPECT_EQ(made->path(), tree.pathText("folder"));
}

TEST_F(KRFileReferenceTest, sizes_areAllocatedBytesOfBothForks_andZeroForContainers)
{
    tree.makeFile("file", QByteArray(9000, 'x'));
    tree.makeFile("folder/inner", QByteArray(9000, 'x'));
    struct stat facts;
    ASSERT_EQ(::stat(tree.path("file").constData(), &facts), 0);
    const auto allocated = static_cast<std::uint64_t>(facts.st_blocks) * 512;
    EXPECT_EQ(reference("file")->dataPhysicalSize(), allocated);
    EXPECT_EQ(reference("file")->rsrcPhysicalSize(), 0u);
    EXPECT_EQ(reference("folder")->physicalSize(), 0u);
    if (::setxattr(tree.path("file").constData(), resourceForkAttribute, "fork", 4, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const std::shared_ptr<KRFileReference> forked = reference("file");
    EXPECT_GE(forked->rsrcPhysicalSize(), 512u);
    EXPECT_EQ(forked->physicalSize(), forked->dataPhysicalSize() + forked->rsrcPhysicalSize());
}

TEST_F(KRFileReferenceTest, dates_areThoseOfTheLinkItself)
{
    tree.makeFile("file");
    tree.setModificationTime("file", 1000000000);
    tree.makeSymbolicLink("link", "file");
    EXPECT_EQ(reference("file")->modificationDate().toSecsSinceEpoch(), 1000000000);
    EXPECT_GT(reference("link")->modificationDate().toSecsSinceEpoch(), 1000000000);
}

TEST_F(KRFileReferenceTest, creationDate_isTheTimeOfBirth_andStays)
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    tree.makeFile("file");
    tree.setModificationTime("file", 1000000000);
    const QDateTime created = reference("file")->creationDate();
    if (!created.isValid())
        GTEST_SKIP() << "this file system keeps no times of birth";
    struct statx facts;
    ASSERT_EQ(::statx(AT_FDCWD, tree.path("file").constData(), 0, STATX_BTIME, &facts), 0);
    EXPECT_EQ(created.toSecsSinceEpoch(), facts.stx_btime.tv_sec);
    EXPECT_GE(created.msecsTo(QDateTime::currentDateTimeUtc()), 0);
    EXPECT_GE(before.msecsTo(created), -20) << "the clock of file systems goes in ticks";
}

TEST_F(KRFileReferenceTest, modificationDate_mayBeTheStartOfTheEpoch)
{
    tree.makeFile("file");
    tree.setModificationTime("file", 0);
    ASSERT_TRUE(reference("file")->modificationDate().isValid());
    EXPECT_EQ(reference("file")->modificationDate().toMSecsSinceEpoch(), 0);
}

TEST_F(KRFileReferenceTest, isAlias_isTrue_forAnAliasFile)
{
    tree.makeFile("target");
    const OSStatus status = writeAliasFile(tree.path("alias"), fsRef(tree.pathText("target")));
    if (status == permErr)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    ASSERT_EQ(status, noErr);
    EXPECT_TRUE(reference("alias")->isAlias());
    EXPECT_FALSE(reference("target")->isAlias());
}

TEST_F(KRFileReferenceTest, aFileThatIsGone_hasNothing)
{
    tree.makeFile("file.txt", "x");
    const std::shared_ptr<KRFileReference> gone = KRFileReference::initWithFSRef(fsRef(tree.pathText("file.txt")));
    tree.remove("file.txt");
    EXPECT_TRUE(gone->displayName().isNull());
    EXPECT_TRUE(gone->name().isNull());
    EXPECT_TRUE(gone->extension().isNull());
    EXPECT_TRUE(gone->displayKind().isNull());
    EXPECT_TRUE(gone->kind().isNull());
    EXPECT_TRUE(gone->path().isNull());
    EXPECT_FALSE(gone->url().isValid());
    EXPECT_FALSE(gone->creationDate().isValid());
    EXPECT_FALSE(gone->modificationDate().isValid());
    EXPECT_EQ(gone->physicalSize(), 0u);
    EXPECT_TRUE(gone->aliasData().isNull());
    EXPECT_FALSE(gone->isContainer());
    EXPECT_FALSE(gone->isInvisible());
}

TEST_F(KRFileReferenceTest, aFailedSizeQuery_countsAsKnown)
{
    tree.makeFile("file", "x");
    const std::shared_ptr<KRFileReference> file = reference("file");
    tree.remove("file");
    EXPECT_EQ(file->dataPhysicalSize(), 0u);
    tree.makeFile("file", QByteArray(9000, 'x'));
    EXPECT_EQ(file->dataPhysicalSize(), 0u);
}

TEST_F(KRFileReferenceTest, url_keepsBytesThatAreNotUtf8)
{
    tree.makeFile("caf\xE9 #1");
    const std::shared_ptr<KRFileReference> file = reference("caf\xE9 #1");
    EXPECT_TRUE(file->url().toEncoded().endsWith("/caf%E9%20%231"));
    EXPECT_TRUE(file->url().isLocalFile());
}

TEST_F(KRFileReferenceTest, aPathBeyondTheBuffer_isNull_butTheFileWorks)
{
    QByteArray folder;
    for (int level = 0; level < 6; ++level)
        folder += QByteArray(200, 'd') + '/';
    tree.makeFile(folder + "file", QByteArray(5000, 'x'));
    const std::shared_ptr<KRFileReference> file = reference(folder + "file");
    EXPECT_TRUE(file->path().isNull());
    EXPECT_TRUE(file->name().isNull());
    EXPECT_EQ(file->displayName(), QStringLiteral("file"));
    EXPECT_GE(file->dataPhysicalSize(), 5000u);
    EXPECT_TRUE(file->url().isValid());
}

TEST_F(KRFileReferenceTest, aliasData_leadsBack)
{
    tree.makeFile("file", "x");
    FSRef found;
    EXPECT_EQ(FSRefFromAliasData(reference("file")->aliasData(), &found), noErr);
    EXPECT_EQ(found, *reference("file")->fileRef());
}

TEST_F(KRFileReferenceTest, virtualFolder_hasItsNameAndNothingElse)
{
    const std::shared_ptr<KRFileReference> folder =
        KRFileReference::virtualFolderWithName(QStringLiteral("\u00DCbung"));
    EXPECT_EQ(folder->displayName(), QStringLiteral("\u00DCbung"));
    EXPECT_EQ(folder->name(), QStringLiteral("\u00DCbung"));
    EXPECT_TRUE(folder->extension().isNull());
    EXPECT_TRUE(folder->displayKind().isNull());
    EXPECT_TRUE(folder->isVirtual());
    EXPECT_TRUE(folder->isContainer());
    EXPECT_FALSE(folder->isBundle() || folder->isSymbolicLink() || folder->isAlias() || folder->isInvisible()
                 || folder->isExtensionHidden());
    EXPECT_TRUE(folder->path().isNull());
    EXPECT_FALSE(folder->url().isValid());
    EXPECT_FALSE(folder->creationDate().isValid());
    EXPECT_FALSE(folder->modificationDate().isValid());
    EXPECT_EQ(folder->physicalSize(), 0u);
    EXPECT_TRUE(folder->aliasData().isNull());
    EXPECT_EQ(*folder->fileRef(), FSRef());
}

TEST_F(KRFileReferenceTest, virtualFolder_takesItsKindFromTheMainBundle)
{
    const std::shared_ptr<KRFileReference> folder = KRFileReference::virtualFolderWithName(QStringLiteral("x"));
    NSBundle::setMainBundlePath(tree.pathText("bundle"));
    EXPECT_EQ(folder->kind(), QStringLiteral("virtual folder"));
    tree.makeFile("bundle2/Resources/Localizable.strings", "\"virtual folder\" = \"Made up\";");
    NSBundle::setMainBundlePath(tree.pathText("bundle2"));
    EXPECT_EQ(folder->kind(), QStringLiteral("Made up"));
}

TEST_F(KRFileReferenceTest, virtualFolder_keepsItsName_whenItsCacheIsReset)
{
    const std::shared_ptr<KRFileReference> folder = KRFileReference::virtualFolderWithName(QStringLiteral("x"));
    folder->resetAllGettableAttributes();
    EXPECT_EQ(folder->displayName(), QStringLiteral("x"));
    folder->resetAllAttributes();
    EXPECT_EQ(folder->name(), QStringLiteral("x"));
    EXPECT_TRUE(folder->isContainer());
}

TEST_F(KRFileReferenceTest, icons_areSquaresOfTheirSize)
{
    tree.makeFile("file.txt");
    EXPECT_EQ(reference("file.txt")->smallIcon().size(), QSize(16, 16));
    EXPECT_EQ(reference("file.txt")->largeIcon().size(), QSize(32, 32));
    const std::shared_ptr<KRFileReference> folder = KRFileReference::virtualFolderWithName(QStringLiteral("x"));
    EXPECT_EQ(folder->smallIcon().size(), QSize(16, 16));
    EXPECT_GT(folder->largeIcon().width(), 16);
    EXPECT_EQ(folder->largeIcon().cacheKey(),
              KRFileReference::virtualFolderWithName(QStringLiteral("y"))->largeIcon().cacheKey());
}

TEST_F(KRFileReferenceTest, options_belongToTheReference_andMayBeChangedInPlace)
{
    tree.makeFile("file");
    const std::shared_ptr<KRFileReference> file = reference("file");
    EXPECT_EQ(file->tessaronAttributes()->advancedFSInclusion, 15u);
    file->tessaronAttributes()->invisible = 1;
    EXPECT_EQ(file->tessaronAttributes()->invisible, 1);
    EXPECT_EQ(reference("file")->tessaronAttributes()->invisible, 0);
}

TEST_F(KRFileReferenceTest, aReference_costsLittleMemory)
{
    if (!Testing::memoryIsMeasurable)
        GTEST_SKIP() << "a sanitizer adds memory of its own";
    tree.makeFile("file");
    const FSRef ref = fsRef(tree.pathText("file"));
    std::vector<std::shared_ptr<KRFileReference>> references(20000);
    const std::size_t before = ::mallinfo2().uordblks;
    for (std::shared_ptr<KRFileReference> &made : references)
        made = KRFileReference::initWithFSRef(ref);
    const std::size_t bytesEach = (::mallinfo2().uordblks - before) / references.size();
    RecordProperty("bytesEach", static_cast<int>(bytesEach));
    EXPECT_LE(bytesEach, 192u);
}

} // namespace Tessaron
