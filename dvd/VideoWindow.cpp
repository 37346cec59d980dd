#include "dvd/DVDFailure.h"
#include "dvd/EventBorder.h"
#include "dvd/VideoGeometry.h"
#include "dvd/VideoView.h"

#include "platform/dvdplayback/DVDPlayback.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QVBoxLayout>

#include <TessaronClassesUI/VideoWindow.h>
#include <algorithm>
#include <utility>
#include <vector>

namespace Tessaron
{

namespace
{

/// The screen that the video was last switched to, 0 for none yet; DVDReader has one of its own.
std::uint32_t lastDisplay = 0;

/// Each of them hears of the moves of all video windows.
std::vector<VideoWindow *> awakeWindows;

void report(OSStatus status, const char *function, const char *method, const VideoWindow *window, int line)
{
    reportDVDFailure(status, function, method, window, "VideoWindow", line);
}

std::int16_t truncated(double value)
{
    return std::int16_t(std::int32_t(value));
}

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Enter:
    case QEvent::Leave:
        return true;
    default:
        return false;
    }
}

} // namespace

VideoWindow::VideoWindow(const QRect &contentRect)
    : QWidget(nullptr, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
    , m_view(new VideoView(this))
{
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_view);
    setGeometry(contentRect);
}

VideoWindow::~VideoWindow()
{
    std::erase(awakeWindows, this);
}

QWidget *VideoWindow::contentView() const
{
    return m_view;
}

std::uint32_t VideoWindow::windowNumber() const
{
    return std::uint32_t(winId());
}

std::uint32_t VideoWindow::screenNumberOf(const QWidget &window)
{
    return std::uint32_t(QGuiApplication::screens().indexOf(window.screen()) + 1);
}

void VideoWindow::awakeFromNib()
{
    if (!std::exchange(m_isAwake, true))
        awakeWindows.push_back(this);
    setMouseTracking(true);
    m_view->setMouseTracking(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
}

void VideoWindow::setupVideoWindow()
{
    qInfo("Step 2: Set Video Window");
    report(DVDSetVideoWindowID(windowNumber()), "DVDSetVideoWindowID", "setupVideoWindow", this, __LINE__);
    setVideoDisplay();
    setVideoBounds();
}

void VideoWindow::setVideoDisplay()
{
    const std::uint32_t display = screenNumberOf(*this);
    if (display == lastDisplay)
        return;
    qInfo("Step 3: Set Video Display");
    bool isSupported = false;
    report(DVDSwitchToDisplay(display, &isSupported), "DVDSwitchToDisplay", "setVideoDisplay", this, __LINE__);
    if (isSupported)
        lastDisplay = display;
    else
        qWarning("video display %d not supported", int(display));
}

void VideoWindow::setVideoBounds()
{
    const double frameHeight = frameGeometry().height();
    const QSizeF content = size(); // the content view fills it, but follows only when the window is shown
    DVDRect bounds;
    bounds.top = truncated(frameHeight - content.height());
    bounds.left = 0;
    bounds.bottom = truncated(frameHeight);
    bounds.right = truncated(content.width());
    report(DVDSetVideoBounds(&bounds), "DVDSetVideoBounds", "setVideoBounds", this, __LINE__);
}

float VideoWindow::titleAspectRatio() const
{
    std::int16_t ratio = kDVDAspectRatioUninitialized;
    static_cast<void>(DVDGetAspectRatio(&ratio));
    return ratioOfAspect(ratio);
}

QSizeF VideoWindow::getVideoSize() const
{
    std::uint16_t width = 720, height = 480;
    static_cast<void>(DVDGetNativeVideoSize(&width, &height));
    return {double(titleAspectRatio()) * height, double(height)};
}

void VideoWindow::setWindowSize(std::uint32_t sizeCode)
{
    const QRectF visible = screen()->availableGeometry();
    const QSizeF size =
        videoContentSize(sizeCode, double(titleAspectRatio()), visible.size(), QWidget::size(), getVideoSize());
    const QPoint topLeft = sizeCode == MaximumVideo ? visible.topLeft().toPoint() : frameGeometry().topLeft();
    setUpdatesEnabled(false);
    resize(size.toSize());
    move(topLeft);
    setUpdatesEnabled(true);
}

bool VideoWindow::event(QEvent *event)
{
    if (isInput(event->type()))
        followMouse(*event);
    const bool isHandled = QWidget::event(event);
    // Some systems tell the screen behind the move that has led there.
    if (event->type() == QEvent::ScreenChangeInternal && m_isAwake)
        atEventBorder([&] { windowDidMove(*this); });
    return isHandled;
}

void VideoWindow::followMouse(const QEvent &event)
{
    std::int32_t button = -1;
    const auto *const mouse = dynamic_cast<const QMouseEvent *>(&event);
    // The second press of two quick ones is a press like the first; a mouse that moves with a button held down drags.
    const bool isPress = (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick)
        && mouse->button() == Qt::LeftButton;
    const bool isMove = event.type() == QEvent::MouseMove && mouse->buttons() == Qt::NoButton;
    if (isPress || isMove) {
        const QPointF place = mouse->position();
        const DVDPoint point = {truncated(place.y() + heightAboveContent()), truncated(place.x())};
        static_cast<void>(isPress ? DVDDoMenuClick(&point, &button) : DVDDoMenuMouseOver(&point, &button));
    }
    const Qt::CursorShape shape = button != -1 ? Qt::PointingHandCursor : Qt::ArrowCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

/// The frame's own height lies above the content. Some systems make a frame only when the window has been shown, which
/// they do not tell: without a look at each use the session would go on taking points from where there was no frame.
int VideoWindow::heightAboveContent()
{
    const int above = frameGeometry().height() - height();
    if (std::exchange(m_above, above) == above)
        return above;
    if (m_isAwake)
        atEventBorder([&] { setVideoBounds(); });
    else if (m_delegate.windowFrameDidChange && m_delegate.context.isAlive())
        m_delegate.windowFrameDidChange();
    return above;
}

void VideoWindow::keyPressEvent(QKeyEvent *event)
{
    if (m_delegate.onKeyDown && m_delegate.context.isAlive() && m_delegate.onKeyDown(*event))
        QCoreApplication::removePostedEvents(this, QEvent::KeyPress);
    else
        QWidget::keyPressEvent(event);
}

void VideoWindow::closeEvent(QCloseEvent *event)
{
    if (m_delegate.windowWillClose && m_delegate.context.isAlive())
        atEventBorder([&] { m_delegate.windowWillClose(); });
    QWidget::closeEvent(event);
}

void VideoWindow::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    const std::vector<VideoWindow *> hearers = awakeWindows; // a handler of failures may close windows
    for (VideoWindow *const hearer : hearers) {
        if (std::find(awakeWindows.begin(), awakeWindows.end(), hearer) != awakeWindows.end())
            atEventBorder([&] { hearer->windowDidMove(*this); });
    }
}

void VideoWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_isAwake)
        atEventBorder([&] { frameDidChange(*m_view); });
}

void VideoWindow::windowDidMove(VideoWindow &window)
{
    window.setVideoDisplay();
}

void VideoWindow::frameDidChange(const QWidget &view)
{
    if (&view != m_view)
        return;
    setWindowSize(RefitVideo);
    setVideoBounds();
}

} // namespace Tessaron
