// Files are dragged out of the window by a mouse, on a screen of X11: other platforms without a screen cannot drag.
#include "app/AbandonedJob.h"
#include "app/FileDrops.h"
#include "app/ImagePanel.h"
#include "app/ImageTreeView.h"
#include "app/ImageView.h"
#include "app/MainWindow.h"

#include "tests/app/InvisibleScreen.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

QByteArray bytesAt(const QByteArray &path)
{
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What a file manager does with what is dropped on it.
class DropTarget final : public QWidget
{
public:
    DropTarget()
    {
        setAcceptDrops(true);
        setGeometry(1000, 20, 180, 180); // beside the program's window
        show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(this));
    }
    [[nodiscard]] const QList<QByteArray> &paths() const { return m_paths; }
    [[nodiscard]] Qt::DropActions offered() const { return m_offered; }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override { event->acceptProposedAction(); }
    void dropEvent(QDropEvent *event) override
    {
        m_paths = pathsOfFiles(*event->mimeData());
        m_offered = event->possibleActions();
        event->acceptProposedAction();
    }

private:
    QList<QByteArray> m_paths;
    Qt::DropActions m_offered;
};

/// The mouse of the screen.
void mouse(const QList<QByteArray> &commands)
{
    const ProgramRun run = runProgram("xdotool", commands);
    EXPECT_EQ(run.status, 0) << run.errors.constData();
}
void moveMouse(const QPoint &place)
{
    mouse({"mousemove", QByteArray::number(place.x()), QByteArray::number(place.y())});
}

class DragTest : public testing::Test
{
protected:
    DragTest()
    {
        tree.makeFile("source/letter.txt", "Dear reader,\n");
        const ProgramRun run =
            runProgram("genisoimage", {"-quiet", "-J", "-o", tree.path("disc.iso"), tree.path("source")});
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
        window.setGeometry(0, 0, 960, 640);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        window.openFiles({tree.path("disc.iso")});
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.imagePanel().isLooking(); }));
    }
    /// The middle of the row of the one file, on the screen.
    [[nodiscard]] QPoint placeOfFile()
    {
        ImageContentsModel &contents = window.imagePanel().contents();
        ImageTreeView &rows = window.findChild<ImageView *>()->tree();
        const QModelIndex joliet = contents.index(1, 0);
        rows.expand(joliet);
        EXPECT_TRUE(runEventLoopUntil([&] { return contents.rowCount(joliet) == 1; }));
        drainEventLoop();
        const QRect row = rows.visualRect(contents.index(0, 0, joliet));
        return rows.viewport()->mapToGlobal(row.center());
    }
    /// Begins to drag, a little at a time, until the files are being taken out: the button stays down.
    void pullFrom(const QPoint &place)
    {
        moveMouse(place);
        mouse({"mousedown", "1"});
        int step = 0;
        QTimer steps;
        QObject::connect(&steps, &QTimer::timeout, &steps, [&] {
            step = (step + 1) % 10;
            moveMouse(place + QPoint(5 * step, step));
        });
        steps.start(interval);
        ASSERT_TRUE(runEventLoopUntil([this] { return window.imagePanel().lending().isWorking() || outcome; }));
    }
    /// Goes along the places, and lets the button go at the last one. Steps go on in the event loop of a drag.
    void dropOn(const DropTarget &target, QList<QPoint> places)
    {
        for (int step = 0; step < 5; ++step) // a target answers each movement
            places << target.mapToGlobal(QPoint(60 + step, 60));
        QTimer steps;
        QObject::connect(&steps, &QTimer::timeout, &steps, [&] {
            if (!places.isEmpty())
                moveMouse(places.takeFirst());
            else {
                mouse({"mouseup", "1"});
                steps.stop();
            }
        });
        steps.start(interval);
        EXPECT_TRUE(runEventLoopUntil([&target] { return !target.paths().isEmpty(); }));
    }

    static constexpr int interval = 30; ///< milliseconds; what is faster comes as one movement
    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
};

} // namespace

TEST_F(DragTest, files_areDropped_onceTheyAreTakenOut)
{
    const DropTarget target;
    pullFrom(placeOfFile());
    ASSERT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    dropOn(target, {});
    ASSERT_EQ(target.paths().size(), 1);
    EXPECT_TRUE(target.paths().front().endsWith("/letter.txt"));
    EXPECT_EQ(bytesAt(target.paths().front()), "Dear reader,\n");
    EXPECT_EQ(target.offered(), Qt::CopyAction);
    ASSERT_TRUE(outcome);
    EXPECT_TRUE(outcome->isComplete);
    EXPECT_FALSE(outcome->summary.contains(QStringLiteral("once more"))) << outcome->summary.toStdString();
}

TEST_F(DragTest, drag_isAskedForAgain_whereTheButtonWasLetGo)
{
    const DropTarget target;
    pullFrom(placeOfFile());
    mouse({"mouseup", "1"});
    ASSERT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("once more"))) << outcome->summary.toStdString();
    EXPECT_TRUE(target.paths().isEmpty());
    // The files are there: the next drag takes nothing out.
    outcome.reset();
    const QPoint place = placeOfFile(); // what was told has moved it
    moveMouse(place);
    mouse({"mousedown", "1"});
    dropOn(target, {place + QPoint(5, 1), place + QPoint(15, 3), place + QPoint(40, 9), place + QPoint(60, 9)});
    EXPECT_FALSE(outcome) << "it was taken out again";
    EXPECT_EQ(target.paths(), window.imagePanel().lending().paths());
}

int main(int argc, char **argv)
{
    ::setenv("LC_ALL", "C.UTF-8", 1);
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const QTemporaryDir home;
    for (const char *const name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.path().toUtf8());
    const InvisibleScreen screen;
    qputenv("DISPLAY", screen.display());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    const int status = RUN_ALL_TESTS();
    // Jobs that have ended go with the next turn of an event loop, which tests do not reach.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (!waitUntilAllAreGone(std::chrono::seconds(20)))
        std::fputs("a job that was given up has not ended\n", stderr);
    return status;
}
