#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"

#include <QSizeF>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <memory>

class QKeyEvent;

namespace Tessaron
{

class VideoView;

/// Answers for a VideoWindow, on the main thread. Each function is called only if it is there.
struct VideoWindowDelegate {
    CallbackContext context;
    /// Whether it took the key; else the window handles it. Presses that wait for the window behind one that was taken
    /// are discarded, as far as they have reached the program: those that the system holds still are not in its reach.
    std::function<bool(const QKeyEvent &event)> onKeyDown;
    /// The window is about to close.
    std::function<void()> windowWillClose;
    /// The system has given the window another frame, which places for the session are measured from. An awake window
    /// tells the session by itself.
    std::function<void()> windowFrameDidChange;
};

/// The window in which the DVD session shows its pictures, and which passes the mouse on to the disc's menus. Sizes are
/// in points; places are those of the screen, from its top left. On the main thread.
///
/// Failures of the session's calls are reported to the NSAssertionHandler, with the file "VideoWindow".
class TESSARON_EXPORT VideoWindow : public QWidget
{
    Q_OBJECT

public:
    /// A titled window that can be closed, hidden at first.
    explicit VideoWindow(const QRect &contentRect = QRect(100, 100, 640, 480));
    ~VideoWindow() override;

    void setDelegate(VideoWindowDelegate delegate) { m_delegate = std::move(delegate); }
    /// Where pictures are drawn: all of the window but its frame.
    [[nodiscard]] QWidget *contentView() const;
    /// The window's number, which the session names it by.
    [[nodiscard]] std::uint32_t windowNumber() const;
    /// The place of the window's screen among those of the system, from 1; 0 for a window without a screen.
    [[nodiscard]] static std::uint32_t screenNumberOf(const QWidget &window);

    /// From now on the window follows its own moves and changes of size, and hears the mouse without a pressed button.
    void awakeFromNib();
    /// Binds the session to this window, its screen and its place.
    void setupVideoWindow();
    /// Tells the session which screen the window is on, if that is another one than before.
    void setVideoDisplay();
    /// Tells the session where in the window's frame pictures lie.
    void setVideoBounds();
    /// 0 fits the width to the title's shape, 1 is half of the disc's size, 2 the disc's size, 3 as large as the
    /// screen. The window grows downward from its top left corner.
    void setWindowSize(std::uint32_t sizeCode);
    /// The size at which a picture has its right shape and its own number of lines.
    [[nodiscard]] QSizeF getVideoSize() const;
    [[nodiscard]] float titleAspectRatio() const;

    // Called by the window itself once it is awake.

    /// A view has changed its size; if that is the content view, the window takes the title's shape again.
    void frameDidChange(const QWidget &view);
    /// A video window, this one or another one, has been moved, perhaps to another screen.
    void windowDidMove(VideoWindow &window);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void followMouse(const QEvent &event);
    [[nodiscard]] int heightAboveContent();

    VideoWindowDelegate m_delegate;
    VideoView *m_view = nullptr; ///< owned as a child
    bool m_isAwake = false;
    int m_above = 0; ///< height of the frame above the content, as far as the window has looked
};

} // namespace Tessaron
