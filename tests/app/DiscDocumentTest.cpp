#include "app/DiscDocument.h"

#include "app/Translations.h"

#include "tests/app/Nodes.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileReference.h>

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class DiscDocumentTest : public testing::Test
{
protected:
    DiscDocumentTest()
    {
        tree.makeFile("photos/beach.jpg", QByteArray(3000, 'b'));
        tree.makeFile("photos/old/house.jpg", QByteArray(100, 'h'));
        tree.makeFile("letter.txt", "Dear reader,\n");
        tree.makeFile("other/letter.txt", "another\n");
    }

    void addAll() { EXPECT_EQ(addTo(document, {tree.path("photos"), tree.path("letter.txt")}), QStringList()); }
    [[nodiscard]] QStringList paths() const { return pathsOf(document.model().root()); }
    void expectSound() const { EXPECT_EQ(faultOf(document.model().root()), QString()); }
    [[nodiscard]] DiscNode *at(const char *path) const { return nodeAt(document, QString::fromUtf8(path)); }

    const TemporaryTree tree;
    DiscDocument document;
    const QStringList all = {QStringLiteral("/photos/"), QStringLiteral("/photos/old/"),
                             QStringLiteral("/photos/old/house.jpg"), QStringLiteral("/photos/beach.jpg"),
                             QStringLiteral("/letter.txt")};
};

} // namespace

TEST_F(DiscDocumentTest, addTaken_showsFoldersFirst_andCountsWholeBlocks)
{
    addAll();
    EXPECT_EQ(paths(), all);
    EXPECT_EQ(document.model().root().totalBytes, 2048u * 4);
    EXPECT_EQ(document.model().root().objects, 6u);
    EXPECT_EQ(at("/photos/beach.jpg")->size, 3000u);
    expectSound();
}

TEST_F(DiscDocumentTest, addTaken_canBeUndoneAndDoneAgain)
{
    addAll();
    document.undoStack().undo();
    EXPECT_EQ(paths(), QStringList());
    EXPECT_EQ(document.model().root().totalBytes, 0u);
    expectSound();
    document.undoStack().redo();
    EXPECT_EQ(paths(), all);
    expectSound();
}

TEST_F(DiscDocumentTest, addTaken_tells_whenTheFileIsOnTheDiscAlready)
{
    addAll();
    const QStringList told = addTo(document, {tree.path("letter.txt")});
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.front().contains(QStringLiteral("already"))) << told.front().toStdString();
    EXPECT_EQ(paths(), all);
}

TEST_F(DiscDocumentTest, addTaken_givesAFreeName_whenAnotherFileHasIt)
{
    addAll();
    const QStringList told = addTo(document, {tree.path("other/letter.txt")});
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.front().contains(QStringLiteral("letter 2.txt"))) << told.front().toStdString();
    ASSERT_NE(at("/letter 2.txt"), nullptr);
    EXPECT_EQ(at("/letter 2.txt")->sourcePath(), tree.path("other/letter.txt"));
    expectSound();
}

TEST_F(DiscDocumentTest, addTaken_tellsWhatCannotBeRead_andAddsTheRest)
{
    const QStringList told = addTo(document, {tree.path("gone.txt"), tree.path("letter.txt")});
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.front().contains(QStringLiteral("gone.txt"))) << told.front().toStdString();
    EXPECT_EQ(paths(), QStringList({QStringLiteral("/letter.txt")}));
}

TEST_F(DiscDocumentTest, addTaken_tellsFoldersThatCannotBeListed)
{
    tree.makeFile("photos/secret/hidden.txt");
    tree.setMode("photos/secret", 0);
    tree.setMode({}, 0755);
    QStringList told;
    {
        const WithoutRootRights withoutRights;
        told = addTo(document, {tree.path("photos")});
    }
    tree.setMode("photos/secret", 0700);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.front().contains(QStringLiteral("secret"))) << told.front().toStdString();
    EXPECT_TRUE(at("/photos/secret")->isUnreadable);
}

TEST_F(DiscDocumentTest, addTaken_namesALinkGivenByItsOwnName)
{
    tree.makeSymbolicLink("link.txt", "letter.txt");
    EXPECT_EQ(addTo(document, {tree.path("link.txt")}), QStringList());
    EXPECT_EQ(paths(), QStringList({QStringLiteral("/link.txt")}));
    EXPECT_EQ(at("/link.txt")->kind, DiscNodeKind::File);
}

TEST_F(DiscDocumentTest, remove_canBeUndone_withAllThatWasBelow)
{
    addAll();
    document.remove({at("/photos"), at("/letter.txt")});
    EXPECT_EQ(paths(), QStringList());
    expectSound();
    document.undoStack().undo();
    EXPECT_EQ(paths(), all);
    expectSound();
}

TEST_F(DiscDocumentTest, remove_ofManyScatteredRows_canBeUndone)
{
    tree.makeFolder("many");
    for (int number = 0; number < 1000; ++number)
        tree.makeFile("many/file" + QByteArray::number(number));
    addTo(document, {tree.path("many")});
    std::vector<DiscNode *> leaving;
    for (std::size_t row = 0; row < 1000; row += 2)
        leaving.push_back(at("/many")->children[row].get());
    const QStringList before = paths();
    document.remove(leaving);
    EXPECT_EQ(at("/many")->children.size(), 500u);
    expectSound();
    document.undoStack().undo();
    EXPECT_EQ(paths(), before);
    expectSound();
}

TEST_F(DiscDocumentTest, rename_changesTheNameOnTheDisc_andCanBeUndone)
{
    addAll();
    EXPECT_EQ(document.rename(*at("/letter.txt"), QStringLiteral("a note.md")), QString());
    ASSERT_NE(at("/a note.md"), nullptr);
    expectSound();
    document.undoStack().undo();
    EXPECT_EQ(paths(), all);
    EXPECT_FALSE(at("/letter.txt")->item->fileReference()->hasDesiredName());
}

TEST_F(DiscDocumentTest, rename_saysWhy_whenANameCannotBe)
{
    addAll();
    EXPECT_EQ(addTo(document, {tree.path("other")}), QStringList());
    EXPECT_NE(document.rename(*at("/letter.txt"), QString()), QString());
    EXPECT_NE(document.rename(*at("/letter.txt"), QStringLiteral("a/b")), QString());
    EXPECT_NE(document.rename(*at("/letter.txt"), QStringLiteral("..")), QString());
    EXPECT_NE(document.rename(*at("/letter.txt"), QStringLiteral("photos")), QString());
    EXPECT_NE(document.rename(*at("/letter.txt"), QString(256, u'x')), QString());
    EXPECT_NE(at("/letter.txt"), nullptr);
}

TEST_F(DiscDocumentTest, move_goesIntoTheFolder_andBackWhenUndone)
{
    addAll();
    EXPECT_EQ(document.move({at("/letter.txt")}, *at("/photos/old")), QStringList());
    EXPECT_NE(at("/photos/old/letter.txt"), nullptr);
    EXPECT_EQ(at("/letter.txt"), nullptr);
    expectSound();
    document.undoStack().undo();
    EXPECT_EQ(paths(), all);
    expectSound();
}

TEST_F(DiscDocumentTest, move_givesAFreeName_whenItIsTakenThere)
{
    addAll();
    addTo(document, {tree.path("other")});
    const QStringList told = document.move({at("/letter.txt")}, *at("/other"));
    EXPECT_EQ(told.size(), 1);
    EXPECT_NE(at("/other/letter 2.txt"), nullptr);
    document.undoStack().undo();
    EXPECT_NE(at("/letter.txt"), nullptr);
    EXPECT_NE(at("/other/letter.txt"), nullptr);
    expectSound();
}

TEST_F(DiscDocumentTest, move_isRefused_intoItself)
{
    addAll();
    EXPECT_EQ(document.move({at("/photos")}, *at("/photos/old")).size(), 1);
    EXPECT_EQ(paths(), all);
}

TEST_F(DiscDocumentTest, newFolder_getsAFreeName_andCanBeUndone)
{
    const QString first = document.addFolder(document.model().root()).name;
    const QString second = document.addFolder(document.model().root()).name;
    EXPECT_NE(first, second);
    document.undoStack().undo();
    EXPECT_EQ(paths(), QStringList({u'/' + first + u'/'}));
}

TEST_F(DiscDocumentTest, everything_isAsBefore_afterAllSteps_haveBeenUndone)
{
    addAll();
    DiscNode &folder = document.addFolder(document.model().root());
    EXPECT_EQ(document.rename(folder, QStringLiteral("mixed")), QString());
    EXPECT_EQ(document.move({at("/photos/beach.jpg"), at("/letter.txt")}, folder), QStringList());
    EXPECT_EQ(document.rename(*at("/mixed/letter.txt"), QStringLiteral("note")), QString());
    _TessaronAttributes options = TessaronFileAttributesNone_fct();
    options.invisible = 1;
    document.setOptions({at("/mixed/note")}, options);
    document.remove({at("/photos")});
    document.setVolumeName(QStringLiteral("Summer"));
    const QStringList after = paths();
    while (document.undoStack().canUndo()) {
        document.undoStack().undo();
        expectSound();
    }
    EXPECT_EQ(paths(), QStringList());
    while (document.undoStack().canRedo()) {
        document.undoStack().redo();
        expectSound();
    }
    EXPECT_EQ(paths(), after);
    EXPECT_EQ(document.volumeName(), QStringLiteral("Summer"));
    EXPECT_EQ(at("/mixed/note")->item->fileReference()->tessaronAttributes()->invisible, 1);
}

TEST_F(DiscDocumentTest, copyForJob_hasTheNamesOptionsAndSizes_andSharesNoItem)
{
    addAll();
    EXPECT_EQ(document.rename(*at("/letter.txt"), QStringLiteral("letter.md")), QString());
    EXPECT_EQ(document.rename(*at("/photos"), QStringLiteral("photos.2024")), QString());
    EXPECT_EQ(document.rename(*at("/photos.2024/beach.jpg"), QStringLiteral("beach")), QString());
    _TessaronAttributes options = TessaronFileAttributesNone_fct();
    options.hasBasicFSInclusion = 1;
    options.basicFSInclusion = 2;
    document.setOptions({at("/letter.md")}, options);
    const std::shared_ptr<KRFileHierarchyItem> copy = copyForJob(document.model().root());
    ASSERT_EQ(copy->numberOfItems(), 2u);
    KRFileReference &folder = *copy->items()[0]->fileReference();
    KRFileReference &letter = *copy->items()[1]->fileReference();
    EXPECT_EQ(folder.desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("photos.2024"));
    EXPECT_EQ(letter.desiredNameWithExtensionEvenIfHidden(true), QStringLiteral("letter.md"));
    EXPECT_EQ(copy->items()[0]->items()[1]->fileReference()->desiredNameWithExtensionEvenIfHidden(true),
              QStringLiteral("beach"));
    EXPECT_EQ(letter.tessaronAttributes()->basicFSInclusion, 2);
    EXPECT_GT(copy->contentsPhysicalSize(), 0u);
    EXPECT_NE(copy->items()[1], at("/letter.md")->item);
    EXPECT_NE(copy->items()[1]->fileReference(), at("/letter.md")->item->fileReference());
}

TEST(DiscDocumentNames, newDisc_andNewFolder_haveNamesInTheLanguageOfTheUser)
{
    QCoreApplication &application = *QCoreApplication::instance();
    installTranslations(application, QLocale(QLocale::German));
    {
        DiscDocument document;
        EXPECT_EQ(document.volumeName(), QStringLiteral("Unbenannte Disc"));
        EXPECT_EQ(document.addFolder(document.model().root()).name, QStringLiteral("Unbenannter Ordner"));
    }
    qDeleteAll(application.findChildren<QTranslator *>());
    EXPECT_EQ(DiscDocument().volumeName(), QStringLiteral("untitled disc"));
}
