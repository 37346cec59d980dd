#include "app/ImageTreeView.h"

#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>

namespace Tessaron::Desktop
{

ImageTreeView::ImageTreeView(QWidget *parent)
    : QTreeView(parent)
{
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setDragEnabled(true);
    setDragDropMode(DragOnly);
}

bool ImageTreeView::isDragWanted() const
{
    return m_isDragWanted && (QGuiApplication::mouseButtons() & Qt::LeftButton) != 0;
}

void ImageTreeView::mousePressEvent(QMouseEvent *event)
{
    m_isDragWanted = false;
    QTreeView::mousePressEvent(event);
}

/// Called again with each movement of the mouse until the drag begins.
void ImageTreeView::startDrag(Qt::DropActions)
{
    if (std::exchange(m_isDragWanted, true))
        return;
    Q_EMIT dragWanted();
}

void ImageTreeView::drag(std::unique_ptr<QMimeData> offer)
{
    const QPointer<ImageTreeView> self(this); // the window may be closed meanwhile
    auto *const drag = new QDrag(this);
    drag->setMimeData(offer.release());
    (void)drag->exec(Qt::CopyAction);
    if (!self)
        return;
    m_isDragWanted = false;
    setState(NoState); // the button was released elsewhere
}

} // namespace Tessaron::Desktop
