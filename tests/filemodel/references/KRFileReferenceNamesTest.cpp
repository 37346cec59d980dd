#include "platform/coreservices/ForkAttributes.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileReference.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace Tessaron
{

namespace
{

class KRFileReferenceNames : public ::testing::Test
{
protected:
    std::shared_ptr<KRFileReference> file(const QByteArray &name) const
    {
        return KRFileReference::fileReferenceWithPath(QString(stringWithFileSystemRepresentation(tree.makeFile(name))));
    }

    const Testing::TemporaryTree tree;
};

} // namespace

TEST_F(KRFileReferenceNames, names_comeFromTheFile)
{
    const std::shared_ptr<KRFileReference> made = file("archive.tar.gz");
    EXPECT_EQ(made->name(), QStringLiteral("archive.tar.gz"));
    EXPECT_EQ(made->displayName(), QStringLiteral("archive.tar.gz"));
    EXPECT_EQ(made->extension(), QStringLiteral("gz"));
    EXPECT_FALSE(made->displayKind().isEmpty());
    EXPECT_EQ(made->kind(), made->displayKind());
    EXPECT_TRUE(file("README")->extension().isNull());
}

TEST_F(KRFileReferenceNames, name_isTheLastComponent_ofAPathThatEndsInASlash)
{
    const auto nameFor = [this](const char *path) {
        _ZelFileAttribute known = ZelFileAttributeNone_fct();
        known.empty = 0;
        known.path = mallocCopy(path);
        return KRFileReference::initWithFSRef(*file("file")->fileRef(), std::move(known))->name();
    };
    EXPECT_EQ(nameFor("/"), QStringLiteral("/"));
    EXPECT_EQ(nameFor("//"), QStringLiteral("/"));
    EXPECT_EQ(nameFor("/volume/folder/"), QStringLiteral("folder"));
    EXPECT_EQ(KRFileReference::initWithPath(QStringLiteral("/"))->name(), QStringLiteral("/"));
}

TEST_F(KRFileReferenceNames, flagsAndNames_readNoContents)
{
    // A file that is read gets a new time of access where the old one is before its modification.
    const std::shared_ptr<KRFileReference> made = file("unheardof");
    tree.makeFile("unheardof", "some text");
    const timespec times[] = {{1000, 0}, {2000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, tree.path("unheardof").constData(), times, 0), 0);
    const auto accessTime = [this] {
        struct stat facts = {};
        EXPECT_EQ(::stat(tree.path("unheardof").constData(), &facts), 0);
        return facts.st_atim.tv_sec;
    };
    EXPECT_FALSE(made->isInvisible() || made->isBundle() || made->isExtensionHidden());
    EXPECT_EQ(made->displayName(), QStringLiteral("unheardof"));
    EXPECT_EQ(accessTime(), 1000);
    EXPECT_FALSE(made->displayKind().isEmpty());
    if (accessTime() == 1000)
        GTEST_SKIP() << "this file system keeps no times of access";
}

TEST_F(KRFileReferenceNames, names_keepBytesThatAreNotUtf8)
{
    const std::shared_ptr<KRFileReference> made = file("caf\xE9.t\xFFt");
    EXPECT_EQ(fileSystemRepresentation(made->name()), "caf\xE9.t\xFFt");
    EXPECT_EQ(fileSystemRepresentation(made->displayName()), "caf\xE9.t\xFFt");
    EXPECT_EQ(fileSystemRepresentation(made->extension()), "t\xFFt");
    made->setDesiredName(QStringLiteral("coffee"));
    EXPECT_EQ(fileSystemRepresentation(made->desiredNameWithExtensionEvenIfHidden(true)), "coffee.t\xFFt");
}

TEST_F(KRFileReferenceNames, displayName_leavesOutAHiddenExtension)
{
    const std::shared_ptr<KRFileReference> made = file("letter.pdf");
    QByteArray info(32, '\0');
    info[9] = kFinderHasHiddenExtension;
    if (::setxattr(tree.path("letter.pdf").constData(), finderInfoAttribute, info.constData(), 32, 0) != 0)
        GTEST_SKIP() << "this file system keeps no extended attributes";
    EXPECT_EQ(made->displayName(), QStringLiteral("letter"));
    EXPECT_EQ(made->name(), QStringLiteral("letter.pdf"));
    EXPECT_EQ(made->extension(), QStringLiteral("pdf"));
    EXPECT_TRUE(made->isExtensionHidden());
}

TEST_F(KRFileReferenceNames, desiredName_isSetAndTakenAway)
{
    const std::shared_ptr<KRFileReference> made = file("a.txt");
    EXPECT_FALSE(made->hasDesiredName());
    EXPECT_TRUE(made->desiredName().isNull());
    EXPECT_TRUE(made->setDesiredName(QStringLiteral("b")));
    EXPECT_TRUE(made->hasDesiredName());
    EXPECT_EQ(made->desiredName(), QStringLiteral("b"));
    EXPECT_TRUE(made->setDesiredName(QString()));
    EXPECT_FALSE(made->hasDesiredName());
}

TEST_F(KRFileReferenceNames, desiredNameWithExtension_appendsTheExtension_onlyWithTheFlag)
{
    const std::shared_ptr<KRFileReference> made = file("scan.pdf");
    made->setDesiredName(QStringLiteral("Report"));
    EXPECT_TRUE(made->isExtensionHiddenIsDesiredName());
    EXPECT_EQ(made->desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("Report.pdf"));
    EXPECT_EQ(made->desiredNameWithExtensionEvenIfHidden(false), QStringLiteral("Report"));
}

TEST_F(KRFileReferenceNames, desiredNameWithExtension_appendsNothing_toANameThatHasIt)
{
    const std::shared_ptr<KRFileReference> made = file("scan.pdf");
    made->setDesiredName(QStringLiteral("Report.pdf"));
    EXPECT_FALSE(made->isExtensionHiddenIsDesiredName());
    EXPECT_EQ(made->desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("Report.pdf"));
    made->setDesiredName(QStringLiteral("Report.txt"));
    EXPECT_TRUE(made->isExtensionHiddenIsDesiredName());
    EXPECT_EQ(made->desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("Report.txt.pdf"));
}

TEST_F(KRFileReferenceNames, isExtensionHiddenIsDesiredName_needsADesiredNameAndAnExtension)
{
    const std::shared_ptr<KRFileReference> plain = file("README");
    EXPECT_FALSE(plain->isExtensionHiddenIsDesiredName());
    plain->setDesiredName(QStringLiteral("Read.me"));
    EXPECT_FALSE(plain->isExtensionHiddenIsDesiredName());
    EXPECT_FALSE(file("a.pdf")->isExtensionHiddenIsDesiredName());
}

TEST_F(KRFileReferenceNames, withoutADesiredName_theFlagDecidesBetweenNothingAndTheDisplayName)
{
    const std::shared_ptr<KRFileReference> made = file("scan.pdf");
    EXPECT_TRUE(made->desiredNameWithExtensionEvenIfHidden(true).isNull());
    EXPECT_EQ(made->desiredNameWithExtensionEvenIfHidden(false), QStringLiteral("scan.pdf"));
}

TEST_F(KRFileReferenceNames, theNameServes_whereThereIsNoDisplayName)
{
    _ZelFileAttribute known = ZelFileAttributeNone_fct();
    known.empty = 0;
    known.name = mallocCopy("given name");
    const auto gone = KRFileReference::initWithFSRef(FSRef(), std::move(known));
    EXPECT_TRUE(gone->displayName().isNull());
    EXPECT_EQ(gone->desiredNameWithExtensionEvenIfHidden(false), QStringLiteral("given name"));
    EXPECT_TRUE(gone->desiredNameWithExtensionEvenIfHidden(true).isNull());
}

TEST_F(KRFileReferenceNames, virtualFolder_isCalledAsDesired_elseByItsName)
{
    const std::shared_ptr<KRFileReference> folder = KRFileReference::virtualFolderWithName(QStringLiteral("New.x"));
    EXPECT_EQ(folder->desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("New.x"));
    folder->setDesiredName(QStringLiteral("Old"));
    EXPECT_EQ(folder->desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("Old"));
    EXPECT_EQ(folder->desiredNameWithExtensionEvenIfHidden(false), QStringLiteral("Old"));
    EXPECT_FALSE(folder->isExtensionHiddenIsDesiredName());
}

TEST_F(KRFileReferenceNames, anEmptyDesiredName_isADesiredName)
{
    const auto made = file("a.txt");
    made->setDesiredName(QLatin1String(""));
    EXPECT_TRUE(made->hasDesiredName());
}

} // namespace Tessaron
