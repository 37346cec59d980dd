#include "app/DataView.h"

#include "app/CapacityBar.h"
#include "app/DiscRows.h"
#include "app/DiscTreeView.h"
#include "app/NoticeBar.h"
#include "app/OptionsDialog.h"

#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileReference.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QRadioButton>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class DataViewTest : public testing::Test
{
protected:
    DataViewTest()
    {
        tree.makeFile("photos/beach.jpg", QByteArray(3000, 'b'));
        tree.makeFile("letter.txt", "Dear reader,\n");
        view.resize(800, 600);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    [[nodiscard]] static QMimeData *mimeFor(const QList<QByteArray> &paths)
    {
        QByteArray list;
        for (const QByteArray &path : paths)
            list += "file://" + path.toPercentEncoding("/") + "\r\n";
        auto *const data = new QMimeData;
        data->setData(QStringLiteral("text/uri-list"), list);
        return data;
    }

    /// What the window system sends when files are dragged in and let go.
    void drop(const QList<QByteArray> &paths, const QPoint &place)
    {
        const std::unique_ptr<QMimeData> data(mimeFor(paths));
        QWidget *const target = view.tree().viewport();
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDragMoveEvent move(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &move);
        EXPECT_TRUE(move.isAccepted());
        QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(event.dropAction(), Qt::CopyAction);
        waitUntilTaken();
    }
    void waitUntilTaken()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return !view.intake().isRunning(); }));
    }

    [[nodiscard]] QStringList paths() const { return pathsOf(document.model().root()); }
    [[nodiscard]] DiscNode *at(const char *path) const { return nodeAt(document, QString::fromUtf8(path)); }
    void choose(const DiscNode &node) { view.tree().setCurrentIndex(document.model().indexOf(node)); }
    [[nodiscard]] QAction &action(const QString &text)
    {
        for (QAction *const each : view.discActions()) {
            if (each->text().remove(u'&').startsWith(text))
                return *each;
        }
        ADD_FAILURE() << "no action " << text.toStdString();
        return *view.discActions().front();
    }

    const TemporaryTree tree;
    DiscDocument document;
    DataView view{document};
};

} // namespace

TEST_F(DataViewTest, drop_putsFilesAndFoldersOntoTheDisc)
{
    drop({tree.path("photos"), tree.path("letter.txt")}, QPoint(100, 200));
    EXPECT_EQ(
        paths(),
        QStringList({QStringLiteral("/photos/"), QStringLiteral("/photos/beach.jpg"), QStringLiteral("/letter.txt")}));
    EXPECT_FALSE(view.notices().isVisible());
}

TEST_F(DataViewTest, drop_onAFolder_putsThemIntoIt)
{
    drop({tree.path("photos")}, QPoint(100, 200));
    drop({tree.path("letter.txt")}, view.tree().visualRect(document.model().indexOf(*at("/photos"))).center());
    EXPECT_NE(at("/photos/letter.txt"), nullptr);
}

TEST_F(DataViewTest, drop_ofNamesThatAreNoText_keepsTheirBytes)
{
    const QByteArray name = "bad\xFF name";
    tree.makeFile(name, "x");
    drop({tree.path(name)}, QPoint(100, 200));
    ASSERT_EQ(document.model().root().children.size(), 1u);
    const DiscNode &node = *document.model().root().children.front();
    EXPECT_TRUE(node.hasUndecodableName);
    EXPECT_EQ(node.sourcePath(), tree.path(name));
    EXPECT_EQ(document.model().index(0, 0).data().toString(), QStringLiteral("bad\uFFFD name"));
}

TEST_F(DataViewTest, drop_ofWhatIsGone_isTold)
{
    drop({tree.path("gone")}, QPoint(100, 200));
    EXPECT_TRUE(view.notices().isVisible());
    EXPECT_TRUE(view.notices().text().contains(QStringLiteral("gone"))) << view.notices().text().toStdString();
}

TEST_F(DataViewTest, drag_isRefused_whenTheFilesWouldBeTakenAway)
{
    const std::unique_ptr<QMimeData> data(mimeFor({tree.path("letter.txt")}));
    QDragEnterEvent enter(QPoint(100, 200), Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.tree().viewport(), &enter);
    EXPECT_FALSE(enter.isAccepted());
    QDragMoveEvent move(QPoint(100, 200), Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.tree().viewport(), &move);
    EXPECT_FALSE(move.isAccepted());
}

TEST_F(DataViewTest, rows_areMovedIntoFolders_byDragging)
{
    drop({tree.path("photos"), tree.path("letter.txt")}, QPoint(100, 200));
    const std::unique_ptr<QMimeData> rows(document.model().mimeData({document.model().indexOf(*at("/letter.txt"))}));
    const QPoint place = view.tree().visualRect(document.model().indexOf(*at("/photos"))).center();
    QDragEnterEvent enter(place, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.tree().viewport(), &enter);
    QDragMoveEvent move(place, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.tree().viewport(), &move);
    EXPECT_TRUE(move.isAccepted());
    QDropEvent event(place, Qt::MoveAction, rows.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.tree().viewport(), &event);
    EXPECT_EQ(paths(),
              QStringList({QStringLiteral("/photos/"), QStringLiteral("/photos/beach.jpg"),
                           QStringLiteral("/photos/letter.txt")}));
    EXPECT_EQ(faultOf(document.model().root()), QString());
}

TEST_F(DataViewTest, rowsOfAnotherProcess_areRefused)
{
    drop({tree.path("letter.txt")}, QPoint(100, 200));
    QMimeData foreign; // as it comes from there: the type, and bytes that mean something in that process alone
    foreign.setData(discRowsMimeType, QByteArray(sizeof(void *), '\x7F'));
    EXPECT_FALSE(document.model().canDropMimeData(&foreign, Qt::MoveAction, -1, -1, {}));
    EXPECT_FALSE(document.model().dropMimeData(&foreign, Qt::MoveAction, -1, -1, {}));
    EXPECT_EQ(paths(), QStringList({QStringLiteral("/letter.txt")}));
}

TEST_F(DataViewTest, rename_byTyping_changesTheName)
{
    drop({tree.path("letter.txt")}, QPoint(100, 200));
    choose(*at("/letter.txt"));
    view.tree().setFocus();
    action(QStringLiteral("Rename")).trigger();
    auto *const editor = view.tree().findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("note.txt"));
    QTest::keyClick(editor, Qt::Key_Return);
    drainEventLoop();
    EXPECT_EQ(paths(), QStringList({QStringLiteral("/note.txt")}));
}

TEST_F(DataViewTest, renamedItem_staysInView_whereverItsNameSortsIt)
{
    for (int number = 0; number < 200; ++number)
        tree.makeFile("many/" + QByteArray::number(1000 + number));
    drop({tree.path("many")}, QPoint(100, 200));
    view.tree().expandAll();
    const DiscNode *const node = at("/many/1000");
    choose(*node);
    view.tree().setFocus();
    action(QStringLiteral("Rename")).trigger();
    auto *const editor = view.tree().findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("zebra"));
    QTest::keyClick(editor, Qt::Key_Return);
    drainEventLoop();
    const QRect row = view.tree().visualRect(document.model().indexOf(*node));
    EXPECT_TRUE(view.tree().viewport()->rect().contains(row)) << row.top();
}

TEST_F(DataViewTest, rename_tellsWhy_whenTheNameIsTaken)
{
    drop({tree.path("letter.txt"), tree.path("photos")}, QPoint(100, 200));
    EXPECT_TRUE(document.model().setData(document.model().indexOf(*at("/letter.txt")), QStringLiteral("photos")));
    EXPECT_TRUE(view.notices().isVisible());
    EXPECT_NE(at("/letter.txt"), nullptr);
}

TEST_F(DataViewTest, newFolder_isMadeInTheChosenOne_andItsNameCanBeTypedAtOnce)
{
    drop({tree.path("photos")}, QPoint(100, 200));
    choose(*at("/photos"));
    action(QStringLiteral("New Folder")).trigger();
    auto *const editor = view.tree().findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("sorted"));
    QTest::keyClick(editor, Qt::Key_Return);
    drainEventLoop();
    ASSERT_NE(at("/photos/sorted"), nullptr);
    EXPECT_EQ(at("/photos/sorted")->kind, DiscNodeKind::VirtualFolder);
}

TEST_F(DataViewTest, remove_takesTheSelectionOut)
{
    drop({tree.path("photos"), tree.path("letter.txt")}, QPoint(100, 200));
    view.tree().selectAll();
    action(QStringLiteral("Remove")).trigger();
    EXPECT_EQ(paths(), QStringList());
    EXPECT_FALSE(action(QStringLiteral("Remove")).isEnabled());
}

TEST_F(DataViewTest, paste_addsCopiedFiles)
{
    QApplication::clipboard()->setMimeData(mimeFor({tree.path("letter.txt")}));
    action(QStringLiteral("Paste")).trigger();
    waitUntilTaken();
    EXPECT_EQ(paths(), QStringList({QStringLiteral("/letter.txt")}));
}

TEST_F(DataViewTest, paste_tells_whenThereAreNoFiles)
{
    QApplication::clipboard()->setText(QStringLiteral("words"));
    action(QStringLiteral("Paste")).trigger();
    EXPECT_TRUE(view.notices().isVisible());
}

TEST_F(DataViewTest, options_areSetByTheDialog)
{
    drop({tree.path("letter.txt")}, QPoint(100, 200));
    choose(*at("/letter.txt"));
    action(QStringLiteral("Options")).trigger();
    auto *const dialog = view.findChild<OptionsDialog *>();
    ASSERT_NE(dialog, nullptr);
    for (QRadioButton *const choice : dialog->findChildren<QRadioButton *>()) {
        if (choice->text().contains(QStringLiteral("PCs")))
            choice->click();
    }
    dialog->findChild<QCheckBox *>()->click();
    dialog->accept();
    const _TessaronAttributes &options = *at("/letter.txt")->item->fileReference()->tessaronAttributes();
    EXPECT_EQ(options.invisible, 1);
    EXPECT_EQ(options.hasBasicFSInclusion, 1);
    EXPECT_EQ(options.basicFSInclusion, 2);
    document.undoStack().undo();
    EXPECT_EQ(at("/letter.txt")->item->fileReference()->tessaronAttributes()->invisible, 0);
}

TEST_F(DataViewTest, filter_findsAsYouType)
{
    drop({tree.path("photos"), tree.path("letter.txt")}, QPoint(100, 200));
    QTest::keyClicks(&view.filterField(), QStringLiteral("beach"));
    EXPECT_TRUE(runEventLoopUntil([this] { return document.model().isFiltered(); }));
    EXPECT_EQ(document.model().rowCount(), 1);
    EXPECT_FALSE(view.tree().isColumnHidden(DiscTreeModel::Place));
}

TEST_F(DataViewTest, discName_isTyped_andUndone)
{
    const QString before = document.volumeName();
    view.nameField().selectAll();
    QTest::keyClicks(&view.nameField(), QStringLiteral("Summer"));
    EXPECT_EQ(document.volumeName(), QStringLiteral("Summer"));
    document.undoStack().undo();
    EXPECT_EQ(view.nameField().text(), before);
}

TEST_F(DataViewTest, capacity_saysHowMuchIsTooMuch)
{
    tree.makeSparseFile("big", 800'000'000);
    view.capacity().setMediumKey(QStringLiteral("cd-700"));
    drop({tree.path("letter.txt")}, QPoint(100, 200));
    EXPECT_FALSE(view.capacity().isTooMuch());
    EXPECT_TRUE(view.capacity().text().contains(QStringLiteral("free"))) << view.capacity().text().toStdString();
    drop({tree.path("big")}, QPoint(100, 300));
    EXPECT_TRUE(view.capacity().isTooMuch());
    EXPECT_TRUE(view.capacity().text().contains(QStringLiteral("too much"))) << view.capacity().text().toStdString();
}

TEST_F(DataViewTest, everyControl_hasANameForScreenReaders)
{
    for (QWidget *const widget : view.findChildren<QWidget *>()) {
        const bool isNameless = widget->focusPolicy() != Qt::NoFocus && widget->isVisibleTo(&view)
            && QAccessible::queryAccessibleInterface(widget)
            && QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty();
        EXPECT_FALSE(isNameless) << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
    }
}
