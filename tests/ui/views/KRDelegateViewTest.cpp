#include <QApplication>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>

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
    std::optional<Qt::DropAction> enter()
    {
        QDragEnterEvent event({5, 5}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
        return event.isAccepted() ? std::optional(event.dropAction()) : std::nullopt;
    }

    std::optional<Qt::DropAction> move()
    {
        QDragMoveEvent event({6, 6}, m_possible, &m_mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
        return event.isAccepted() ? std::optional(event.dropAction()) : std::nullopt;
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
