#include <QApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QTest>
#include <QWindow>

#include <TessaronClassesUI/ControlWindow.h>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

using namespace Tessaron;

TEST(ControlWindowTest, awakeFromNib_movesToTheCornerOfItsScreen)
{
    ControlWindow window;
    window.resize(300, 120);
    window.move(300, 300);
    window.awakeFromNib();
    const QRect visible = window.screen()->availableGeometry();
    EXPECT_EQ(window.frameGeometry().left(), visible.left());
    EXPECT_EQ(window.frameGeometry().bottom(), visible.bottom());
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(window.frameGeometry().left(), visible.left()) << "with the frame that it has then";
    EXPECT_EQ(window.frameGeometry().bottom(), visible.bottom());
}

TEST(ControlWindowTest, keys_areTheDelegatesFirst)
{
    ControlWindow window;
    QKeyEvent unheard(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    QApplication::sendEvent(&window, &unheard);
    EXPECT_FALSE(unheard.isAccepted());
    int asked = 0;
    auto life = std::make_shared<int>();
    ControlWindowDelegate delegate;
    delegate.context = CallbackContext(life);
    delegate.onKeyDown = [&](const QKeyEvent &event) {
        ++asked;
        return event.key() == Qt::Key_Space;
    };
    window.setDelegate(delegate);
    // What waits behind a key that was taken is discarded; behind one that was not it stays.
    const auto press = [&](Qt::Key key) {
        QApplication::postEvent(&window, new QKeyEvent(QEvent::KeyPress, Qt::Key_Y, Qt::NoModifier));
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&window, &event);
        const int before = asked;
        QApplication::sendPostedEvents(&window);
        return std::pair(event.isAccepted(), asked - before);
    };
    EXPECT_EQ(press(Qt::Key_Space), std::pair(true, 0));
    EXPECT_EQ(press(Qt::Key_X), std::pair(false, 1));
    life.reset();
    asked = 0;
    EXPECT_EQ(press(Qt::Key_Space), std::pair(false, 0));
    EXPECT_EQ(asked, 0);
}

/// The platform without a screen activates every window that is shown: what it is asked for is looked at.
TEST(ControlWindowTest, shownWindow_leavesTheActiveOneActive)
{
    ControlWindow window;
    window.show();
    ASSERT_NE(window.windowHandle(), nullptr);
    EXPECT_TRUE(window.windowHandle()->property("_q_showWithoutActivating").toBool());
}

TEST(ControlWindowTest, anotherProgramsTurn_hidesTheWindow)
{
    ControlWindow window;
    window.awakeFromNib();
    window.show();
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    EXPECT_FALSE(window.isVisible());
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.windowHandle()->property("_q_showWithoutActivating").toBool())
        << "the video's keys stay its own";
    window.hide();
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_FALSE(window.isVisible()) << "it was hidden by the user";
}
