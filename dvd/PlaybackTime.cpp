#include <QMouseEvent>

#include <TessaronClassesUI/PlaybackTime.h>

namespace Tessaron
{

PlaybackTime::PlaybackTime(QWidget *parent)
    : QLabel(parent)
{
}

void PlaybackTime::setTimeElapsed(std::uint32_t elapsed, std::uint32_t timeRemaining)
{
    m_timeElapsed = elapsed;
    m_timeRemaining = timeRemaining;
    setTimeText();
}

void PlaybackTime::setTimeText()
{
    const std::uint32_t value = m_timeBase ? m_timeRemaining : m_timeElapsed;
    // In 32 bits, so that a title that plays a little longer than it says, whose remaining time has fallen below 0 and
    // come around, shows 0.
    const std::uint32_t seconds = std::uint32_t(value + 500U) / 1000U;
    constexpr QLatin1Char zero('0');
    setText(QStringLiteral("%1%2:%3:%4")
                .arg(m_timeBase ? QStringLiteral("-") : QString())
                .arg(seconds / 3600, 2, 10, zero)
                .arg(seconds % 3600 / 60, 2, 10, zero)
                .arg(seconds % 60, 2, 10, zero));
    update();
}

void PlaybackTime::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_timeBase = !m_timeBase;
        setTimeText();
    }
    QLabel::mousePressEvent(event);
}

/// The second click of two quick ones is a click like the first.
void PlaybackTime::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

} // namespace Tessaron
