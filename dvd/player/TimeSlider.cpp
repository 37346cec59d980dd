#include "dvd/player/TimeSlider.h"

#include "dvd/player/PlayerTexts.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

constexpr double margin = 8; ///< room for half of the knob
constexpr double grooveHeight = 4;
constexpr double knobRadius = 6.5;
constexpr int heightOfAll = 22;
constexpr double markHeight = 10;

int asValue(milliseconds time)
{
    return int(std::clamp<std::int64_t>(time.count(), 0, std::numeric_limits<int>::max()));
}

} // namespace

TimeSlider::TimeSlider(QWidget *parent)
    : QAbstractSlider(parent)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRange(0, 0);
    setAccessibleName(playerText("Time"));
}

QSize TimeSlider::sizeHint() const
{
    return {200, heightOfAll};
}

void TimeSlider::setTime(milliseconds elapsed, milliseconds length)
{
    setEnabled(length.count() > 0);
    if (isSliderDown())
        return;
    setRange(0, asValue(length));
    setValue(asValue(elapsed));
}

void TimeSlider::setChapters(std::vector<milliseconds> starts)
{
    if (starts == m_chapters)
        return;
    m_chapters = std::move(starts);
    update();
}

double TimeSlider::placeOf(milliseconds time) const
{
    const double groove = std::max(width() - 2 * margin, 1.0);
    return maximum() > 0 ? margin + groove * std::clamp(double(time.count()) / maximum(), 0.0, 1.0) : margin;
}

milliseconds TimeSlider::timeAt(double place) const
{
    const double groove = std::max(width() - 2 * margin, 1.0);
    return milliseconds(std::llround(std::clamp((place - margin) / groove, 0.0, 1.0) * maximum()));
}

int TimeSlider::chapterAt(milliseconds time) const
{
    return int(std::upper_bound(m_chapters.begin(), m_chapters.end(), time) - m_chapters.begin());
}

void TimeSlider::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double middle = height() / 2.0;
    const double now = placeOf(milliseconds(isSliderDown() ? sliderPosition() : value()));
    const QRectF groove(margin, middle - grooveHeight / 2, std::max(width() - 2 * margin, 1.0), grooveHeight);
    QColor light = palette().color(QPalette::WindowText);
    const QColor bright = isEnabled() ? palette().color(QPalette::Highlight) : light;
    light.setAlphaF(isEnabled() ? 0.3F : 0.15F);
    painter.setBrush(light);
    painter.drawRoundedRect(groove, grooveHeight / 2, grooveHeight / 2);
    if (!isEnabled())
        return;
    if (m_pointed && *m_pointed > now) {
        painter.drawRoundedRect(QRectF(groove.topLeft(), QPointF(*m_pointed, groove.bottom())), grooveHeight / 2,
                                grooveHeight / 2);
    }
    painter.setBrush(bright);
    painter.drawRoundedRect(QRectF(groove.topLeft(), QPointF(now, groove.bottom())), grooveHeight / 2,
                            grooveHeight / 2);
    painter.setBrush(palette().color(QPalette::WindowText));
    for (const milliseconds start : m_chapters) {
        // The begin of the title needs no mark.
        if (start.count() > 0)
            painter.drawRect(QRectF(placeOf(start) - 0.75, middle - markHeight / 2, 1.5, markHeight));
    }
    painter.drawEllipse(QPointF(now, middle), knobRadius, knobRadius);
}

void TimeSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || maximum() == 0)
        return;
    setSliderDown(true);
    setSliderPosition(asValue(timeAt(event->position().x())));
    tellTime(event->position().toPoint());
    update();
}

void TimeSlider::mouseMoveEvent(QMouseEvent *event)
{
    m_pointed = std::clamp(event->position().x(), margin, std::max(width() - margin, margin));
    if (isSliderDown())
        setSliderPosition(asValue(timeAt(event->position().x())));
    tellTime(event->position().toPoint());
    update();
}

void TimeSlider::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !isSliderDown())
        return;
    const milliseconds time(sliderPosition());
    setSliderDown(false);
    update();
    Q_EMIT wanted(time);
}

void TimeSlider::leaveEvent(QEvent *event)
{
    m_pointed.reset();
    update();
    QAbstractSlider::leaveEvent(event);
}

/// The wheel is the volume's, wherever the mouse is.
void TimeSlider::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void TimeSlider::tellTime(const QPoint &place)
{
    if (maximum() == 0)
        return;
    const milliseconds time = timeAt(place.x());
    QString text = shortTime(time);
    if (const int chapter = chapterAt(time); chapter > 0)
        text = playerText("%1, chapter %2").arg(text).arg(chapter);
    QToolTip::showText(mapToGlobal(QPoint(place.x(), -2 * heightOfAll)), text, this);
}

} // namespace Tessaron
