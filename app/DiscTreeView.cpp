#include "app/DiscTreeView.h"

#include "app/FileDrops.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>

namespace Tessaron::Desktop
{

DiscTreeView::DiscTreeView(QWidget *parent)
    : QTreeView(parent)
{
    // Without it the view would measure every row of a folder that is opened.
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(EditKeyPressed | SelectedClicked);
    setAlternatingRowColors(true);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setSortingEnabled(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(false);
}

void DiscTreeView::setEmptyText(const QString &title, const QString &text)
{
    m_emptyTitle = title;
    m_emptyText = text;
    setAccessibleDescription(title + u' ' + text);
    viewport()->update();
}

void DiscTreeView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (model() && model()->rowCount() == 0)
        drawEmptyText();
}

void DiscTreeView::drawEmptyText()
{
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr int margin = 16;
    const QRect frame = viewport()->rect().adjusted(margin, margin, -margin, -margin);
    const QColor colour = palette().color(m_isDraggedOver ? QPalette::Highlight : QPalette::PlaceholderText);
    QPen dashes(colour, m_isDraggedOver ? 3 : 1.5, Qt::DashLine);
    painter.setPen(dashes);
    constexpr int corner = 12;
    painter.drawRoundedRect(frame, corner, corner);
    painter.setPen(palette().color(QPalette::Text));
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    const int bigHeight = QFontMetrics(big).height();
    const QRect inside = frame.adjusted(margin, 0, -margin, 0);
    painter.setFont(big);
    painter.drawText(inside.adjusted(0, 0, 0, -bigHeight), int(Qt::AlignCenter) | int(Qt::TextWordWrap), m_emptyTitle);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(inside.adjusted(0, 2 * bigHeight, 0, 0), int(Qt::AlignCenter) | int(Qt::TextWordWrap),
                     m_emptyText);
}

void DiscTreeView::dragEnterEvent(QDragEnterEvent *event)
{
    m_isDraggedOver = true;
    viewport()->update();
    QTreeView::dragEnterEvent(event);
    copyOnly(*event);
}

void DiscTreeView::dragMoveEvent(QDragMoveEvent *event)
{
    QTreeView::dragMoveEvent(event);
    copyOnly(*event);
}

void DiscTreeView::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_isDraggedOver = false;
    viewport()->update();
    QTreeView::dragLeaveEvent(event);
}

/// Files from outside stay where they are, whatever the sender proposes; rows of this view are moved.
void DiscTreeView::dropEvent(QDropEvent *event)
{
    m_isDraggedOver = false;
    viewport()->update();
    QTreeView::dropEvent(event);
    copyOnly(*event);
}

/// What the base class accepts is the sender's proposal: a sender that hears of a move removes the files.
void DiscTreeView::copyOnly(QDropEvent &event) const
{
    if (event.source() == this || !holdsFiles(*event.mimeData()) || !event.isAccepted())
        return;
    if (!event.possibleActions().testFlag(Qt::CopyAction)) {
        event.ignore();
        return;
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace Tessaron::Desktop
