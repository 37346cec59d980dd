#include "app/CapacityMeter.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

constexpr int barHeight = 12;

} // namespace

CapacityMeter::CapacityMeter(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("How full the disc is"));
}

void CapacityMeter::setFill(double fill)
{
    m_fill = fill;
    update();
}

QSize CapacityMeter::sizeHint() const
{
    return {200, barHeight};
}

QSize CapacityMeter::minimumSizeHint() const
{
    return {80, barHeight};
}

void CapacityMeter::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath outline;
    outline.addRoundedRect(frame, frame.height() / 2, frame.height() / 2);
    painter.fillPath(outline, palette().color(QPalette::Base));
    painter.save();
    painter.setClipPath(outline);
    // With too much the bar stands for all of it, and the hatched end for what is beyond the disc.
    const double scale = std::max(m_fill, 1.0);
    QRectF part = frame;
    part.setWidth(frame.width() * std::min(m_fill, 1.0) / scale);
    painter.fillRect(part, palette().color(QPalette::Highlight));
    if (m_fill > 1) {
        part.setLeft(part.right());
        part.setRight(frame.right());
        painter.fillRect(part, QBrush(palette().color(QPalette::Text), Qt::BDiagPattern));
    }
    painter.restore();
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawPath(outline);
}

} // namespace Tessaron::Desktop
