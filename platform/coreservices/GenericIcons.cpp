#include "platform/coreservices/GenericIcons.h"

#include <QPainter>
#include <QPainterPath>

namespace Tessaron
{

namespace
{

const QColor folderColour(0x6F, 0xA8, 0xDC);
const QColor folderEdge(0x3D, 0x6E, 0xA5);
const QColor sheetColour(0xFC, 0xFC, 0xFC);
const QColor sheetEdge(0x8C, 0x8C, 0x8C);

/// Drawings are made on a square of this side and scaled.
constexpr qreal gridSide = 16;

void drawFolder(QPainter &painter)
{
    QPainterPath outline;
    outline.moveTo(1, 13.5);
    outline.lineTo(1, 3);
    outline.lineTo(6, 3);
    outline.lineTo(7.5, 4.5);
    outline.lineTo(15, 4.5);
    outline.lineTo(15, 13.5);
    outline.closeSubpath();
    painter.setPen(QPen(folderEdge, 0.8));
    painter.setBrush(folderColour);
    painter.drawPath(outline);
    painter.drawLine(QLineF(1, 6.5, 15, 6.5));
}

void drawSheet(QPainter &painter)
{
    QPainterPath outline;
    outline.moveTo(3, 1);
    outline.lineTo(10, 1);
    outline.lineTo(13, 4);
    outline.lineTo(13, 15);
    outline.lineTo(3, 15);
    outline.closeSubpath();
    painter.setPen(QPen(sheetEdge, 0.8));
    painter.setBrush(sheetColour);
    painter.drawPath(outline);
    painter.drawPolyline(QPolygonF({{10, 1}, {10, 4}, {13, 4}}));
}

} // namespace

QImage drawnIcon(bool isFolder, int side)
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / gridSide, side / gridSide);
    if (isFolder)
        drawFolder(painter);
    else
        drawSheet(painter);
    return image;
}

} // namespace Tessaron
