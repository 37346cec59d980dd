#include "dvd/player/PlayerSymbols.h"

#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

namespace Tessaron
{

namespace
{

// Symbols lie in a square of 24 by 24 units, most of them between 4 and 20.

constexpr qreal unitsOfSymbol = 24;

QPainterPath polygon(std::initializer_list<QPointF> points)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(points));
    path.closeSubpath();
    return path;
}

QPainterPath box(qreal x, qreal y, qreal width, qreal height)
{
    QPainterPath path;
    path.addRect(x, y, width, height);
    return path;
}

QPainterPath outline(const QPainterPath &path, qreal width)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setCapStyle(Qt::RoundCap);
    return stroker.createStroke(path);
}

QPainterPath mirrored(const QPainterPath &path)
{
    return QTransform(-1, 0, 0, 1, unitsOfSymbol, 0).map(path);
}

QPainterPath line(std::initializer_list<QPointF> points, qreal width)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(points));
    return outline(path, width);
}

QPainterPath nextPath()
{
    return polygon({{5, 5}, {15.5, 12}, {5, 19}}) | box(16.5, 5, 2.5, 14);
}

QPainterPath scanPath()
{
    return polygon({{3.5, 5.5}, {12, 12}, {3.5, 18.5}}) | polygon({{12, 5.5}, {20.5, 12}, {12, 18.5}});
}

QPainterPath menuPath()
{
    return box(4, 5.5, 16, 2.5) | box(4, 10.75, 16, 2.5) | box(4, 16, 16, 2.5);
}

/// A camera on the left, two views to the right.
QPainterPath anglePath()
{
    QPainterPath camera;
    camera.addRoundedRect(QRectF(3, 8, 11, 9), 1.5, 1.5);
    return camera | polygon({{15, 11.5}, {21, 8}, {21, 17}, {15, 13.5}});
}

QPainterPath loudspeaker()
{
    return polygon({{3.5, 9}, {7, 9}, {12, 4.5}, {12, 19.5}, {7, 15}, {3.5, 15}});
}

QPainterPath soundPath()
{
    QPainterPath waves;
    waves.arcMoveTo(QRectF(9, 8, 8, 8), 50);
    waves.arcTo(QRectF(9, 8, 8, 8), 50, -100);
    waves.arcMoveTo(QRectF(6.5, 4.5, 15, 15), 50);
    waves.arcTo(QRectF(6.5, 4.5, 15, 15), 50, -100);
    return loudspeaker() | outline(waves, 1.7);
}

QPainterPath mutedPath()
{
    return loudspeaker() | line({{15, 9}, {21, 15}}, 1.8) | line({{21, 9}, {15, 15}}, 1.8);
}

/// Two speech bubbles.
QPainterPath languagePath()
{
    QPainterPath first;
    first.addRoundedRect(QRectF(3, 4, 11.5, 8.5), 2, 2);
    first |= polygon({{5.5, 12}, {9.5, 12}, {5.5, 16}});
    QPainterPath second;
    second.addRoundedRect(QRectF(9.5, 9.5, 11.5, 8.5), 2, 2);
    second |= polygon({{18.5, 17.5}, {14.5, 17.5}, {18.5, 21.5}});
    QPainterPath gap;
    gap.addRoundedRect(QRectF(8, 8, 14.5, 11.5), 3, 3);
    return (first - gap) | second;
}

QPainterPath subtitlesPath()
{
    QPainterPath frame;
    frame.addRoundedRect(QRectF(3.5, 5.5, 17, 13), 2, 2);
    return outline(frame, 1.6) | box(6.5, 11.5, 6, 1.8) | box(14, 11.5, 3.5, 1.8) | box(6.5, 14.6, 3, 1.8)
        | box(11, 14.6, 6.5, 1.8);
}

QPainterPath fullScreenPath(bool isLeaving)
{
    const QPainterPath corner = isLeaving ? line({{5, 10}, {10, 10}, {10, 5}}, 2) : line({{5, 10}, {5, 5}, {10, 5}}, 2);
    const QPainterPath upper = corner | mirrored(corner);
    return upper | QTransform(1, 0, 0, -1, 0, unitsOfSymbol).map(upper);
}

const QHash<QByteArray, QPainterPath> &symbolPaths()
{
    static const QHash<QByteArray, QPainterPath> paths = {
        {"play", polygon({{6, 4}, {19.5, 12}, {6, 20}})},
        {"pause", box(6, 4.5, 4, 15) | box(14, 4.5, 4, 15)},
        {"stop", box(5.5, 5.5, 13, 13)},
        {"next", nextPath()},
        {"previous", mirrored(nextPath())},
        {"scanForward", scanPath()},
        {"scanBackward", mirrored(scanPath())},
        {"menu", menuPath()},
        {"angle", anglePath()},
        {"sound", soundPath()},
        {"muted", mutedPath()},
        {"language", languagePath()},
        {"subtitles", subtitlesPath()},
        {"fullScreen", fullScreenPath(false)},
        {"leaveFullScreen", fullScreenPath(true)},
    };
    return paths;
}

class SymbolEngine final : public QIconEngine
{
public:
    SymbolEngine(const QPainterPath &path, const QColor &colour, const QColor &disabled)
        : m_path(path)
        , m_colour(colour)
        , m_disabled(disabled)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        const int side = std::min(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.center().x() + 0.5 - side / 2.0, rect.center().y() + 0.5 - side / 2.0);
        painter->scale(side / unitsOfSymbol, side / unitsOfSymbol);
        painter->fillPath(m_path, mode == QIcon::Disabled ? m_disabled : m_colour);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    [[nodiscard]] QIconEngine *clone() const override { return new SymbolEngine(*this); }

private:
    QPainterPath m_path;
    QColor m_colour;
    QColor m_disabled;
};

} // namespace

QIcon playerSymbol(const QByteArray &name, const QColor &colour, const QColor &disabled)
{
    const auto path = symbolPaths().constFind(name);
    return path == symbolPaths().constEnd() ? QIcon() : QIcon(new SymbolEngine(*path, colour, disabled));
}

} // namespace Tessaron
