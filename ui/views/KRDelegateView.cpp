#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>

#include <TessaronClassesUI/KRDelegateView.h>
#include <initializer_list>

namespace Tessaron
{

namespace
{

/// The ring is drawn around the bounds less this, in points.
constexpr qreal ringInset = 3;

/// A drag is accepted with the action that the sender proposes where it may be, else with another one, and refused by
/// accepting it with no action: of a drag that is not accepted Qt tells nothing more, neither its moves nor its end.
void acceptDrag(QDropEvent &event, Qt::DropActions allowed)
{
    const Qt::DropActions possible = allowed & event.possibleActions();
    if (possible.testFlag(event.proposedAction())) {
        event.acceptProposedAction();
        return;
    }
    for (const Qt::DropAction action : {Qt::CopyAction, Qt::MoveAction, Qt::LinkAction}) {
        if (possible.testFlag(action)) {
            event.setDropAction(action);
            event.accept();
            return;
        }
    }
    event.setDropAction(Qt::IgnoreAction);
    event.accept();
}

} // namespace

KRDelegateView::KRDelegateView(QWidget *parent)
    : QWidget(parent)
{
    setAcceptDrops(true);
}

Qt::DropActions KRDelegateView::draggingSourceOperationMaskForLocal(bool) const
{
    return Qt::DropActions::fromInt(-1);
}

Qt::DropActions KRDelegateView::draggingEntered(const QDropEvent &sender)
{
    m_hasFocus = true;
    update();
    const KRDelegateViewDelegate delegate = m_delegate; // it may set another one
    if (!delegate.draggingEntered || !delegate.context.isAlive())
        return {};
    return delegate.draggingEntered(*this, sender);
}

Qt::DropActions KRDelegateView::draggingUpdated(const QDropEvent &sender)
{
    m_hasFocus = true;
    const KRDelegateViewDelegate delegate = m_delegate;
    if (!delegate.draggingUpdated || !delegate.context.isAlive())
        return {};
    return delegate.draggingUpdated(*this, sender);
}

void KRDelegateView::draggingExited()
{
    m_hasFocus = false;
    update();
}

bool KRDelegateView::prepareForDragOperation(const QDropEvent &sender)
{
    const KRDelegateViewDelegate delegate = m_delegate;
    if (!delegate.prepareForDragOperation || !delegate.context.isAlive())
        return false;
    return delegate.prepareForDragOperation(*this, sender);
}

bool KRDelegateView::performDragOperation(const QDropEvent &sender)
{
    m_hasFocus = false;
    update();
    const KRDelegateViewDelegate delegate = m_delegate;
    if (!delegate.performDragOperation || !delegate.context.isAlive())
        return false;
    return delegate.performDragOperation(*this, sender);
}

void KRDelegateView::dragEnterEvent(QDragEnterEvent *event)
{
    acceptDrag(*event, draggingEntered(*event));
}

void KRDelegateView::dragMoveEvent(QDragMoveEvent *event)
{
    acceptDrag(*event, draggingUpdated(*event));
}

void KRDelegateView::dragLeaveEvent(QDragLeaveEvent *)
{
    draggingExited();
}

/// A drop that is not taken ends the drag all the same: the ring goes.
void KRDelegateView::dropEvent(QDropEvent *event)
{
    if (!prepareForDragOperation(*event)) {
        draggingExited();
        event->ignore();
        return;
    }
    if (performDragOperation(*event))
        event->accept();
    else
        event->ignore();
}

/// The ring lies around what it is drawn for, as wide as there is room for it.
void KRDelegateView::paintEvent(QPaintEvent *)
{
    if (!m_hasFocus)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor colour = palette().color(QPalette::Highlight);
    colour.setAlphaF(0.6F);
    painter.setPen(QPen(colour, ringInset, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    const qreal middle = ringInset / 2;
    painter.drawRect(QRectF(rect()).adjusted(middle, middle, -middle, -middle));
}

} // namespace Tessaron
