#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"

#include <QPoint>
#include <QWidget>

#include <functional>

class QKeyEvent;

namespace Tessaron
{

/// Answers for a ControlWindow, on the main thread.
struct ControlWindowDelegate {
    CallbackContext context;
    /// Whether it took the key; else the window handles it. May be missing. Presses that wait for the window behind one
    /// that was taken are discarded, as far as they have reached the program: those that the system holds still are not
    /// in its reach.
    std::function<bool(const QKeyEvent &event)> onKeyDown;
};

/// The small window with the DVD player's controls, which floats beside the video. On the main thread.
class TESSARON_EXPORT ControlWindow : public QWidget
{
    Q_OBJECT

public:
    /// Hidden at first. Showing it leaves the active window active.
    explicit ControlWindow(QWidget *parent = nullptr);

    void setDelegate(ControlWindowDelegate delegate) { m_delegate = std::move(delegate); }

    /// Moves the window into the bottom left corner of what its screen has free for windows. From now on it hides while
    /// another program is active.
    void awakeFromNib();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void moveToCorner();
    void followApplication(Qt::ApplicationState state);

    ControlWindowDelegate m_delegate;
    bool m_isAwake = false;
    bool m_isHiddenByApplication = false; ///< and comes back with it
    bool m_knowsFrame = false; ///< the frame that the system gives has been looked at
    QPoint m_corner; ///< where moveToCorner() has put it
};

} // namespace Tessaron
