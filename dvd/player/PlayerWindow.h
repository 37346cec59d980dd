#pragma once

#include "dvd/player/DiscPlayback.h"

#include <QTimer>
#include <QWidget>

class QLabel;

namespace Tessaron
{

class ControlBar;
class VideoView;

/// The window of the player: the picture in its right shape, over it the controls, which hide while nothing moves but
/// the film, and short messages. On the main thread.
class PlayerWindow : public QWidget
{
    Q_OBJECT

public:
    /// Hidden at first. The playback must outlive it.
    explicit PlayerWindow(DiscPlayback *playback);
    ~PlayerWindow() override;

    /// In the middle of the window, until something plays.
    void showMessage(const QString &text);
    /// In a corner, for some seconds.
    void showNote(const QString &text);
    void setFullScreen(bool isFullScreen);

    /// Where the picture is drawn: as large as the window lets it in its shape.
    [[nodiscard]] QRect pictureRect() const;
    [[nodiscard]] ControlBar *controls() const { return m_controls; }

Q_SIGNALS:
    void closed();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    [[nodiscard]] bool takeNavigationKey(int key);
    [[nodiscard]] bool takePlayingKey(const QKeyEvent &event);
    [[nodiscard]] bool takeSoundKey(int key);
    [[nodiscard]] bool takeStreamKey(int key);
    [[nodiscard]] bool takeWindowKey(const QKeyEvent &event);
    void changeVolume(int by);
    void takeOpening();
    void follow();
    void layOut();
    void showControls();
    void hideControls();
    void takePointed(bool isOnButton);

    DiscPlayback *const m_playback;
    VideoView *const m_picture; ///< as the following ones, a child
    ControlBar *const m_controls;
    QLabel *const m_message;
    QLabel *const m_note;
    QTimer m_hideTimer;
    QTimer m_noteTimer;
    double m_ratio = 4.0 / 3;
    bool m_isOnButton = false; ///< of the disc's menu, the mouse
};

} // namespace Tessaron
