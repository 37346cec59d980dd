// A disc with ten thousand files, put together, saved and opened again as a person does it: by drops, drags and keys.

#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/DiscTreeView.h"
#include "app/MainWindow.h"
#include "app/ProjectActions.h"
#include "app/ProjectKeeper.h"

#include "tests/app/Keys.h"
#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/SilentMount.h"
#include "tests/support/TemporaryTree.h"

#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

void dropOnto(QWidget &target, const QPoint &place, const QMimeData &data, Qt::DropAction action)
{
    QDragEnterEvent enter(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDragMoveEvent move(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &move);
    EXPECT_TRUE(move.isAccepted());
    QDropEvent drop(place, action, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &drop);
}

/// The folders as the file manager sends them.
std::unique_ptr<QMimeData> urlsOf(const QList<QByteArray> &paths)
{
    QList<QUrl> urls;
    for (const QByteArray &path : paths)
        urls << QUrl::fromLocalFile(QString::fromUtf8(path));
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    return data;
}

class LargeSessionTest : public testing::Test
{
protected:
    LargeSessionTest()
    {
        window.resize(1000, 700);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    [[nodiscard]] DataView &view() { return window.dataPanel().dataView(); }
    [[nodiscard]] DiscDocument &document() { return window.dataPanel().document(); }
    [[nodiscard]] QTreeView &rows() { return view().tree(); }
    [[nodiscard]] DiscNode *at(const char *path) { return nodeAt(document(), QString::fromUtf8(path)); }
    [[nodiscard]] QStringList paths() { return pathsOf(document().model().root()); }

    void drop(const QList<QByteArray> &paths)
    {
        dropOnto(*rows().viewport(), QPoint(100, 400), *urlsOf(paths), Qt::CopyAction);
    }
    void waitUntilTaken()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return !view().intake().isRunning(); }));
    }
    /// Chooses a file in the dialog that is open.
    void answerFileDialog(const QByteArray &path)
    {
        QFileDialog *dialog = nullptr;
        ASSERT_TRUE(runEventLoopUntil([&] {
            dialog = window.findChild<QFileDialog *>();
            return dialog && dialog->isVisible();
        }));
        auto *const name = dialog->findChild<QLineEdit *>();
        ASSERT_NE(name, nullptr);
        name->selectAll();
        QTest::keyClicks(name, QString::fromUtf8(path));
        QTest::keyClick(name, Qt::Key_Return);
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.findChild<QFileDialog *>(); }));
        window.activateWindow(); // as a window manager does
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void clickHeader(int column)
    {
        QHeaderView &header = *rows().header();
        const QPoint place(header.sectionViewportPosition(column) + header.sectionSize(column) / 2,
                           header.height() / 2);
        QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::NoModifier, place);
        drainEventLoop();
    }

    const TemporaryTree tree;
    MainWindow window;
};

} // namespace

TEST_F(LargeSessionTest, tenThousandFiles_areAdded_reordered_saved_andOpenedAgain)
{
    constexpr int folders = 100;
    constexpr int filesInEach = 100;
    QList<QByteArray> added;
    for (int folder = 0; folder < folders; ++folder) {
        const QByteArray name = "photos/year " + QByteArray::number(folder);
        for (int file = 0; file < filesInEach; ++file)
            tree.makeFile(name + "/picture " + QByteArray::number(file) + ".jpg", QByteArray(file, 'p'));
        added << tree.path(name);
    }
    drop(added);
    waitUntilTaken();
    ASSERT_EQ(document().model().root().objects, std::uint32_t(folders * (filesInEach + 1) + 1));

    // A new folder, and half of what is there dragged into it.
    rows().setFocus();
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    typeName("half");
    DiscNode *const half = at("/half");
    ASSERT_NE(half, nullptr);
    QModelIndexList dragged;
    for (int row = 0; row < folders / 2; ++row)
        dragged << document().model().index(1 + row, 0); // behind the new folder, which is the first by its name
    const std::unique_ptr<QMimeData> data(document().model().mimeData(dragged));
    rows().scrollTo(document().model().indexOf(*half));
    dropOnto(*rows().viewport(), rows().visualRect(document().model().indexOf(*half)).center(), *data, Qt::MoveAction);
    EXPECT_EQ(half->children.size(), std::size_t(folders / 2));
    EXPECT_EQ(document().model().root().children.size(), std::size_t(folders / 2 + 1));

    // The order is turned round by a click on the head of its column, and again.
    const QStringList ascending = paths();
    clickHeader(DiscTreeModel::Name);
    EXPECT_NE(paths(), ascending);
    clickHeader(DiscTreeModel::Name);
    EXPECT_EQ(paths(), ascending);

    // What matches is found while someone types, all of it removed, and the step undone.
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("picture 7.jpg"));
    EXPECT_TRUE(runEventLoopUntil([this] { return document().model().rowCount() == folders; }));
    rows().setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(document().model().rowCount(), 0);
    EXPECT_EQ(document().model().root().objects, std::uint32_t(folders * filesInEach + 2));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(document().model().rowCount(), folders);
    press(Qt::Key_F, Qt::ControlModifier);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_TRUE(runEventLoopUntil([this] { return !document().model().isFiltered(); }));
    EXPECT_EQ(paths(), ascending);
    EXPECT_EQ(faultOf(document().model().root()), QString());

    rows().setFocus();
    press(Qt::Key_S, Qt::ControlModifier);
    answerFileDialog(tree.path("session.tessaron"));
    EXPECT_TRUE(runEventLoopUntil([this] { return window.projects().keeper()->isSaved(); }));
    EXPECT_TRUE(tree.exists("session.tessaron"));

    rows().setFocus();
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(document().model().root().objects, 1u);
    press(Qt::Key_O, Qt::ControlModifier);
    answerFileDialog(tree.path("session.tessaron"));
    EXPECT_TRUE(runEventLoopUntil([this] { return document().model().root().objects > 1; }));
    EXPECT_EQ(paths(), ascending);
    EXPECT_EQ(faultOf(document().model().root()), QString());
    EXPECT_TRUE(window.projects().keeper()->isSaved());
    EXPECT_EQ(window.projects().keeper()->missingPaths(), QStringList());
}

/// A folder on it hangs in the system until the end of the test.
TEST_F(LargeSessionTest, windowGoesOn_whileAMountDoesNotAnswer)
{
    tree.makeFile("good/letter.txt", "Dear reader,\n");
    SilentMount silent(tree.makeFolder("silent"));
    if (!silent.mount())
        GTEST_SKIP() << "this user, or this system, may not mount what the test needs";
    // Every wait below would be one of the system's, which has no end: that this test ends is what it shows.
    drop({tree.path("silent/photos")});
    EXPECT_TRUE(view().intake().isRunning());
    QTimer alive;
    alive.start(0);
    int turns = 0;
    EXPECT_TRUE(runEventLoopUntil([&turns] { return ++turns > 3; }));
    alive.stop();

    view().intake().cancel();
    EXPECT_FALSE(view().intake().isRunning());
    drop({tree.path("good")});
    waitUntilTaken();
    EXPECT_NE(at("/good/letter.txt"), nullptr);

    // A project that names a file there hangs as well, and can be left for another one.
    tree.makeFile("hangs.tessaron",
                  "{\"format\":\"tessaron-project\",\"version\":1,\"kind\":\"data\",\"items\":[{\"name\":\"x\","
                  "\"kind\":\"file\",\"path\":\""
                      + tree.path("silent/x") + "\"}]}");
    tree.makeFile("opens.tessaron",
                  "{\"format\":\"tessaron-project\",\"version\":1,\"kind\":\"data\",\"items\":[{\"name\":\"y\","
                  "\"kind\":\"newFolder\"}]}");
    document().undoStack().setClean();
    window.openFiles({tree.path("hangs.tessaron")});
    EXPECT_TRUE(runEventLoopUntil([this] { return window.projects().keeper()->isBusy(); }));
    window.openFiles({tree.path("opens.tessaron")});
    EXPECT_TRUE(runEventLoopUntil([this] { return at("/y") != nullptr; }));

    drop({tree.path("silent/more")});
    EXPECT_TRUE(window.close());
    window.letGo();
    silent.answer(); // so that nothing of this process stays in the system
}
