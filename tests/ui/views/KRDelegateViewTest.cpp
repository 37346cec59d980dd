#include <QApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QWindow>

#include <TessaronClassesUI/KRDelegateView.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

using namespace Tessaron;

namespace
{

class KRDelegateViewTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_view.resize(60, 40);
        m_mime.setText(QStringLiteral("dragged"));
        m_delegate.draggingEntered = [this](KRDelegateView &view, const QDropEvent &drag) {
            EXPECT_EQ(&view, &m_view);
            EXPECT_EQ(drag.mimeData(), &m_mime);
            m_calls << QStringLiteral("entered");
            return m_entered;
        };
        m_delegate.draggingUpdated = [this](KRDelegateView &, const QDropEvent &) {
            m_calls << QStringLiteral("updated");
            return m_updated;
        };
        m_delegate.prepareForDragOperation = [this](KRDelegateView &, const QDropEvent &) {
            m_calls << QStringLiteral("prepare");
            return m_isPrepared;
        };
        m_delegate.performDragOperation = [this](KRDelegateView &, const QDropEvent &) {
            m_calls << QStringLiteral("perform");
            return m_isPerformed;
        };
        m_view.setDelegate(m_delegate);
    }

    /// The action that the view accepts, if any.
    [[nodiscard]] static std::optional<Qt::DropAction> answer(const QDropEvent &event)
    {
        return event.isAccepted() && event.dropAction() != Qt::IgnoreAction ? std::optional(event.dropAction())
                                                                            : std::nullopt;
    }

    std::optional<Qt::DropAction> enter()
    {
        QDragEnterEvent event({5, 5}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
        return answer(event);
    }

    std::optional<Qt::DropAction> move()
    {
        QDragMoveEvent event({6, 6}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
        return answer(event);
    }

    bool drop()
    {
        QDropEvent event({6, 6}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
        return event.isAccepted();
    }

    void leave()
    {
        QDragLeaveEvent event;
        QApplication::sendEvent(&m_view, &event);
    }

    /// What the view draws, nothing left out.
    [[nodiscard]] QImage drawn()
    {
        QImage picture(m_view.size(), QImage::Format_ARGB32);
        picture.fill(Qt::white);
        m_view.render(&picture, {}, {}, {});
        return picture;
    }

    [[nodiscard]] bool hasRing()
    {
        QImage blank(m_view.size(), QImage::Format_ARGB32);
        blank.fill(Qt::white);
        const QImage picture = drawn();
        const QRect inside(3, 3, 54, 34);
        EXPECT_EQ(picture.copy(inside), blank.copy(inside)) << "the ring is around the middle";
        return picture != blank;
    }

    KRDelegateView m_view;
    KRDelegateViewDelegate m_delegate;
    QMimeData m_mime;
    QStringList m_calls;
    Qt::DropActions m_possible = Qt::CopyAction | Qt::MoveAction;
    Qt::DropActions m_entered = Qt::CopyAction;
    Qt::DropActions m_updated = Qt::CopyAction;
    bool m_isPrepared = true;
    bool m_isPerformed = true;
};

} // namespace

TEST_F(KRDelegateViewTest, dragsThatBeginHere_mayBecomeAnyAction)
{
    EXPECT_EQ(m_view.draggingSourceOperationMaskForLocal(true).toInt(), -1);
    EXPECT_EQ(m_view.draggingSourceOperationMaskForLocal(false).toInt(), -1);
}

TEST_F(KRDelegateViewTest, drag_asksTheDelegateInOrder)
{
    EXPECT_EQ(enter(), Qt::CopyAction);
    EXPECT_EQ(move(), Qt::CopyAction);
    EXPECT_TRUE(drop());
    EXPECT_EQ(m_calls,
              QStringList({QStringLiteral("entered"), QStringLiteral("updated"), QStringLiteral("prepare"),
                           QStringLiteral("perform")}));
}

TEST_F(KRDelegateViewTest, drag_isAcceptedWithTheProposedAction_elseWithOneThatTheDelegateAllows)
{
    m_entered = Qt::CopyAction | Qt::MoveAction;
    EXPECT_EQ(enter(), Qt::CopyAction) << "proposed without a key";
    m_entered = Qt::MoveAction;
    EXPECT_EQ(enter(), Qt::MoveAction);
    m_entered = Qt::LinkAction;
    EXPECT_EQ(enter(), std::nullopt) << "the sender does not offer it";
    m_entered = {};
    EXPECT_EQ(enter(), std::nullopt);
}

TEST_F(KRDelegateViewTest, drop_isNotPerformed_whenItIsNotPrepared)
{
    m_isPrepared = false;
    EXPECT_TRUE(enter().has_value());
    EXPECT_FALSE(drop());
    EXPECT_FALSE(m_calls.contains(QStringLiteral("perform")));
    EXPECT_FALSE(hasRing());
}

TEST_F(KRDelegateViewTest, drop_isRefused_whenTheDelegateFails)
{
    m_isPerformed = false;
    EXPECT_TRUE(enter().has_value());
    EXPECT_FALSE(drop());
    EXPECT_FALSE(hasRing());
}

TEST_F(KRDelegateViewTest, ring_isDrawnFromEnteringToLeaving_andAgainWhenTheDragComesBack)
{
    EXPECT_FALSE(hasRing());
    (void)enter();
    EXPECT_TRUE(hasRing());
    leave();
    EXPECT_FALSE(hasRing());
    (void)enter();
    EXPECT_TRUE(hasRing());
    (void)drop();
    EXPECT_FALSE(hasRing());
}

TEST_F(KRDelegateViewTest, ring_isThreePointsWide_inTheColourOfThePalette_atAnyResolution)
{
    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::Highlight, QColor(0, 250, 0));
    m_view.setPalette(dark);
    (void)enter();
    QImage picture(m_view.size() * 2, QImage::Format_ARGB32);
    picture.setDevicePixelRatio(2);
    picture.fill(Qt::black);
    m_view.render(&picture, {}, {}, {});
    const QRect inside = picture.rect().adjusted(6, 6, -6, -6);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor colour = picture.pixelColor(x, y);
            const bool isRing = colour.green() > 100 && colour.red() == 0 && colour.blue() == 0;
            ASSERT_EQ(isRing, !inside.contains(x, y)) << x << ", " << y;
        }
}

TEST_F(KRDelegateViewTest, ring_isThere_afterAnUpdateAlone)
{
    (void)m_view.draggingUpdated(QDropEvent({6, 6}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier));
    EXPECT_TRUE(hasRing());
}

TEST_F(KRDelegateViewTest, ring_isDrawnAlsoForADragThatIsRefused)
{
    m_entered = {};
    EXPECT_EQ(enter(), std::nullopt);
    EXPECT_TRUE(hasRing());
}

/// A window hands a drag to the view in it, and goes on telling a view of a drag only as long as the view accepts it.
class KRDelegateViewInWindow : public KRDelegateViewTest
{
protected:
    void SetUp() override
    {
        KRDelegateViewTest::SetUp();
        m_window.resize(100, 100);
        m_view.setParent(&m_window);
        m_view.move(20, 20);
        m_window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_window));
    }

    void TearDown() override { m_view.setParent(nullptr); }

    /// What the system sends to a window, and whether it is told that a drop would be taken.
    bool dragTo(const QPoint &place)
    {
        if (!m_isInside) {
            QDragEnterEvent event(place, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(m_window.windowHandle(), &event);
            m_isInside = true;
        }
        QDragMoveEvent event(place, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_window.windowHandle(), &event);
        return answer(event).has_value();
    }

    QWidget m_window;
    bool m_isInside = false;
};

TEST_F(KRDelegateViewInWindow, refusedDrag_isAskedForAgainAsItMoves_andTakesItsRingAlong)
{
    m_entered = m_updated = {};
    EXPECT_FALSE(dragTo({25, 25}));
    EXPECT_TRUE(hasRing());
    EXPECT_FALSE(dragTo({30, 30}));
    m_updated = Qt::CopyAction;
    EXPECT_TRUE(dragTo({40, 40})) << "further in, the delegate would take it";
    EXPECT_EQ(m_calls.count(QStringLiteral("entered")), 1);
    m_updated = {};
    EXPECT_FALSE(dragTo({45, 45}));
    EXPECT_FALSE(dragTo({5, 5})) << "outside of the view";
    EXPECT_FALSE(hasRing());
}

TEST_F(KRDelegateViewTest, whatLacksAFunction_isRefused)
{
    m_delegate.draggingUpdated = nullptr;
    m_delegate.performDragOperation = nullptr;
    m_view.setDelegate(m_delegate);
    EXPECT_EQ(enter(), Qt::CopyAction);
    EXPECT_EQ(move(), std::nullopt);
    EXPECT_FALSE(drop());
    EXPECT_FALSE(hasRing());
}

TEST_F(KRDelegateViewTest, drags_areRefused_withoutADelegateOrAfterTheEndOfItsContext)
{
    auto context = std::make_shared<int>(0);
    m_delegate.context = std::shared_ptr<const void>(context);
    m_view.setDelegate(m_delegate);
    EXPECT_TRUE(enter().has_value());
    context.reset();
    m_calls.clear();
    EXPECT_EQ(enter(), std::nullopt);
    EXPECT_EQ(move(), std::nullopt);
    EXPECT_FALSE(drop());
    m_view.setDelegate({});
    EXPECT_EQ(enter(), std::nullopt);
    EXPECT_FALSE(drop());
    EXPECT_TRUE(m_calls.isEmpty());
}

TEST_F(KRDelegateViewTest, delegate_mayBeReplacedWhileItIsAsked)
{
    m_delegate.draggingEntered = [this](KRDelegateView &view, const QDropEvent &) {
        view.setDelegate({});
        return m_entered;
    };
    m_view.setDelegate(m_delegate);
    m_delegate = {};
    EXPECT_EQ(enter(), Qt::CopyAction);
}
