#pragma once

#include "dvd/player/DiscPlayback.h"

#include <QWidget>

class QLabel;
class QMenu;
class QSlider;
class QToolButton;

namespace Tessaron
{

class PlaybackTime;
class TimeSlider;

/// The controls that lie over the lower part of the picture. Shows what plays, and asks for what the user wants. On the
/// main thread.
class ControlBar : public QWidget
{
    Q_OBJECT

public:
    ControlBar(DiscPlayback *playback, QWidget *parent);

    /// Whether a menu of the bar is open, or something in it held by the mouse: it must not hide then.
    [[nodiscard]] bool isInUse() const;
    /// What all the controls need side by side, also those that are hidden now; points.
    [[nodiscard]] int smallestWidth() const { return m_smallestWidth; }
    void setFullScreen(bool isFullScreen);
    /// Puts what the buttons offer into a menu, for those who have no mouse.
    void fillMenu(QMenu *menu);

Q_SIGNALS:
    void fullScreenWanted();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QToolButton *addButton(const char *name, const char *symbol, const char *text);
    QToolButton *addMenuButton(const char *name, const char *symbol, const char *text,
                               void (ControlBar::*fill)(QMenu *));
    void layOut();
    void follow();
    void setSymbol(QToolButton *button, const char *symbol) const;
    void fillChapters(QMenu *menu);
    void fillAudio(QMenu *menu);
    void fillSubtitles(QMenu *menu);
    void fillAngles(QMenu *menu);

    DiscPlayback *const m_playback;
    TimeSlider *m_slider = nullptr;
    PlaybackTime *m_time = nullptr;
    QSlider *m_volume = nullptr;
    QToolButton *m_previous = nullptr;
    QToolButton *m_scanBackward = nullptr;
    QToolButton *m_play = nullptr;
    QToolButton *m_stop = nullptr;
    QToolButton *m_scanForward = nullptr;
    QToolButton *m_next = nullptr;
    QToolButton *m_chapters = nullptr;
    QToolButton *m_menu = nullptr;
    QToolButton *m_audio = nullptr;
    QToolButton *m_subtitles = nullptr;
    QToolButton *m_angles = nullptr;
    QToolButton *m_mute = nullptr;
    QToolButton *m_fullScreen = nullptr;
    QList<QMenu *> m_menus;
    int m_smallestWidth = 0;
};

} // namespace Tessaron
