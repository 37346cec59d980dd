#pragma once

#include <QAbstractSlider>

#include <chrono>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Shows how far a title is, with marks where its chapters begin, and lets the user go elsewhere: a click goes there at
/// once, a drag when it ends. Its value is the time in milliseconds. Under the mouse it tells time and chapter. On the
/// main thread.
class TimeSlider : public QAbstractSlider
{
    Q_OBJECT

public:
    explicit TimeSlider(QWidget *parent = nullptr);

    /// Left alone while the user drags.
    void setTime(std::chrono::milliseconds elapsed, std::chrono::milliseconds length);
    /// Where chapters begin, in order.
    void setChapters(std::vector<std::chrono::milliseconds> starts);

    /// Of a time on the groove, and the other way around; points of this widget.
    [[nodiscard]] double placeOf(std::chrono::milliseconds time) const;
    [[nodiscard]] std::chrono::milliseconds timeAt(double place) const;
    /// The chapter that a time is in, from 1; 0 without chapters.
    [[nodiscard]] int chapterAt(std::chrono::milliseconds time) const;

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// The user wants to go there.
    void wanted(std::chrono::milliseconds time);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void tellTime(const QPoint &place);

    std::vector<std::chrono::milliseconds> m_chapters;
    std::optional<double> m_pointed; ///< where the mouse is over the groove
};

} // namespace Tessaron
