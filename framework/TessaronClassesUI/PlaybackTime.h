#pragma once

#include "platform/foundation/Export.h"

#include <QLabel>

#include <cstdint>

namespace Tessaron
{

/// A field that shows how much of a title has been played, "00:01:02", or after a left click how much is left,
/// "-00:58:59".
/// Times are milliseconds, shown to the nearest second. On the main thread.
class TESSARON_EXPORT PlaybackTime : public QLabel
{
    Q_OBJECT

public:
    /// Shows the elapsed time; empty until times are set.
    explicit PlaybackTime(QWidget *parent = nullptr);

    void setTimeElapsed(std::uint32_t elapsed, std::uint32_t timeRemaining);
    /// Shows the time that is wanted; called whenever one of the three has changed.
    void setTimeText();

    /// False: the elapsed time is shown; true: the remaining one.
    [[nodiscard]] bool timeBase() const { return m_timeBase; }
    [[nodiscard]] std::uint32_t timeElapsed() const { return m_timeElapsed; }
    [[nodiscard]] std::uint32_t timeRemaining() const { return m_timeRemaining; }

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    bool m_timeBase = false;
    std::uint32_t m_timeElapsed = 0;
    std::uint32_t m_timeRemaining = 0;
};

} // namespace Tessaron
