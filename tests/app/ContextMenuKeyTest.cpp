// Keys come from the screen's keyboard, and menus are those that a user sees.
#include "app/ContextMenuKey.h"

#include "app/AudioPanel.h"
#include "app/AudioView.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/DiscTreeView.h"
#include "app/ImagePanel.h"
#include "app/ImageTreeView.h"
#include "app/ImageView.h"
#include "app/MainWindow.h"

#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class ContextMenuKeyTest : public testing::Test
{
protected:
    ContextMenuKeyTest()
    {
        qApp->installEventFilter(&contextMenuKey);
        window.setGeometry(0, 0, 960, 640);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    /// What the menu offers that a key opens where the keyboard is; empty when none opens.
    [[nodiscard]] QStringList menuOf(QWidget &widget, const char *key = "shift+F10")
    {
        widget.setFocus();
        drainEventLoop();
        EXPECT_EQ(QApplication::focusWidget(), &widget);
        QStringList texts;
        QTimer looking; // a menu has an event loop of its own
        QObject::connect(&looking, &QTimer::timeout, &looking, [this, &texts] {
            auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu)
                return;
            place = menu->geometry();
            for (const QAction *const action : menu->actions()) {
                if (!action->isSeparator())
                    texts << action->text().remove(u'&');
            }
            menu->close();
        });
        looking.start(0);
        const ProgramRun run = runProgram("xdotool", {"key", key});
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        EXPECT_TRUE(runEventLoopUntil([&texts] { return !texts.isEmpty(); }));
        return texts;
    }

    const TemporaryTree tree;
    ContextMenuKey contextMenuKey;
    MainWindow window;
    QRect place; ///< of the last menu, on the screen
};

} // namespace

TEST_F(ContextMenuKeyTest, everyListOfThePanels_hasItsMenu)
{
    DataView &data = window.dataPanel().dataView();
    EXPECT_TRUE(menuOf(*data.findChild<DiscTreeView *>()).contains(QStringLiteral("Paste Files")));
    window.showPanel(1);
    EXPECT_TRUE(menuOf(window.audioPanel().audioView().table()).contains(QStringLiteral("CD-TEXT…")));
}

TEST_F(ContextMenuKeyTest, menuOfAnImage_opensAtTheRow)
{
    tree.makeFile("source/letter.txt", "Dear reader,\n");
    const ProgramRun run =
        runProgram("genisoimage", {"-quiet", "-J", "-o", tree.path("disc.iso"), tree.path("source")});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    window.openFiles({tree.path("disc.iso")});
    ASSERT_TRUE(runEventLoopUntil([this] { return !window.imagePanel().isLooking(); }));
    ImageTreeView &rows = window.findChild<ImageView *>()->tree();
    rows.setCurrentIndex(rows.model()->index(1, 0));
    EXPECT_TRUE(menuOf(rows).contains(QStringLiteral("Copy Files")));
    const QRect row = rows.visualRect(rows.currentIndex());
    EXPECT_EQ(place.topLeft(), rows.mapToGlobal(row.center()));
    // The key of the menu, which Qt knows, opens it at the same place.
    const QRect ofKey = place;
    (void)menuOf(rows, "Menu");
    EXPECT_EQ(place, ofKey);
}

TEST_F(ContextMenuKeyTest, fieldForText_hasItsOwnMenu)
{
    auto *const name = window.dataPanel().dataView().findChild<QLineEdit *>();
    EXPECT_GE(menuOf(*name).size(), 6);
}
