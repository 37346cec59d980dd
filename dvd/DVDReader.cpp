#include "dvd/DVDFailure.h"
#include "dvd/EventBorder.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <QCoreApplication>
#include <QPointer>
#include <QScreen>

#include <TessaronClassesUI/DVDReader.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <cstdio>
#include <memory>

namespace Tessaron
{

namespace
{

constexpr QRect firstContentRect(100, 100, 300, 300);

QPointer<VideoWindow> window;
bool isInit = false; ///< media is open
bool isDVDInit = false; ///< the session is ours
bool isVolume = false; ///< the media is a volume
std::shared_ptr<DVDReader> notifier; ///< hears the window
std::shared_ptr<DVDReader> appNotifier; ///< hears the end of the program
QMetaObject::Connection endOfProgram; ///< which is told to it
std::uint32_t lastDisplay = 0; ///< none yet

void printError(OSStatus status)
{
    std::printf("DVD Error %d\n", int(status));
    std::fflush(stdout);
}

void bringToFront()
{
    window->show();
    window->raise();
    window->activateWindow();
}

/// The session's window, and its place; 0, or the first failure.
OSStatus bindWindow()
{
    OSStatus status = DVDSetVideoWindowID(window->windowNumber());
    if (status == noErr)
        status = DVDReader::setVideoBounds();
    return status == noErr ? DVDReader::setVideoDisplay() : status;
}

bool beginSession()
{
    if (!isDVDInit) {
        if (const OSStatus status = DVDInitialize(); status != noErr) {
            printError(status);
            return false;
        }
        isDVDInit = true;
    }
    if (!appNotifier) {
        appNotifier = std::make_shared<DVDReader>();
        endOfProgram =
            QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, QCoreApplication::instance(),
                             [hearer = appNotifier] { atEventBorder([&] { hearer->appWillTerminate(); }); });
    }
    return true;
}

} // namespace

bool DVDReader::openMedia(const QString &path, bool isVolumePath)
{
    const QPointer<VideoWindow> older = window;
    // Not by way of the window's closing: what is reported over it is this caller's, and closing that has failed is
    // still to be done, even where the window is gone.
    if (const std::shared_ptr<DVDReader> hearer = notifier)
        hearer->windowWillClose();
    if (older)
        older->close();
    // One whose media could not be opened has no delegate that would forget it.
    window = nullptr;
    if (isInit)
        return true;
    window = new VideoWindow(firstContentRect);
    window->setAttribute(Qt::WA_DeleteOnClose);
    if (!beginSession())
        return false;
    if (const OSStatus status = bindWindow(); status != noErr) {
        printError(status);
        return false;
    }
    FSRef ref;
    bool isDirectory = false;
    // A path that leads nowhere goes on, too: it is the session that refuses it.
    const OSStatus made = FSPathMakeRef(fileSystemRepresentation(path), &ref, &isDirectory);
    if (made != noErr && isDirectory) {
        printError(made);
        return false;
    }
    const OSStatus opened = isVolumePath ? DVDOpenMediaVolume(&ref) : DVDOpenMediaFile(&ref);
    if (opened != noErr) {
        printError(opened);
        return false;
    }
    if (!notifier) {
        notifier = std::make_shared<DVDReader>();
        VideoWindowDelegate delegate;
        delegate.context = CallbackContext(notifier);
        delegate.windowWillClose = [] { notifier->windowWillClose(); };
        delegate.windowFrameDidChange = [] { static_cast<void>(setVideoBounds()); };
        window->setDelegate(delegate);
    }
    isInit = true;
    isVolume = isVolumePath;
    return true;
}

void DVDReader::play()
{
    if (!isMediaOpen() || !window)
        return;
    bool isPlaying = false;
    static_cast<void>(DVDIsPlaying(&isPlaying));
    if (isPlaying) {
        bringToFront();
        return;
    }
    std::uint16_t width = 0, height = 0;
    if (DVDGetNativeVideoSize(&width, &height) == noErr) {
        // The frame gets the size of the picture, once it exists.
        window->resize(QSize(width, height) - (window->frameSize() - window->size()));
        window->move(firstContentRect.topLeft());
        static_cast<void>(setVideoBounds());
    }
    const QRect visible = window->screen()->availableGeometry();
    const QSize frame = window->frameSize();
    window->move(visible.center() - QPoint(frame.width(), frame.height()) / 2);
    bringToFront();
    static_cast<void>(DVDPlay());
}

void DVDReader::stop()
{
    bool isPlaying = false;
    if (isMediaOpen() && DVDIsPlaying(&isPlaying) == noErr && isPlaying)
        static_cast<void>(DVDStop());
}

bool DVDReader::isMediaOpen()
{
    if (!isInit || !isDVDInit)
        return false;
    bool hasMedia = false;
    reportDVDFailure(DVDHasMedia(&hasMedia), "DVDHasMedia", "isMediaOpen", nullptr, "DVDReader", __LINE__);
    return hasMedia;
}

OSStatus DVDReader::setVideoBounds()
{
    // The content view fills the window, but follows only when that is shown.
    const QSizeF content = window ? window->size() : QSize(0, 0);
    const double frameHeight = window ? window->frameGeometry().height() : 0;
    // The height is the frame's, not the content's.
    const QRectF bounds(0, frameHeight - content.height(), content.width(), frameHeight);
    return DVDSetVideoCGBounds(&bounds);
}

OSStatus DVDReader::setVideoDisplay()
{
    const std::uint32_t display = window ? VideoWindow::screenNumberOf(*window) : lastDisplay;
    if (display == lastDisplay)
        return noErr;
    bool isSupported = false;
    const OSStatus status = DVDSwitchToDisplay(display, &isSupported);
    if (status != noErr)
        return status;
    if (isSupported)
        lastDisplay = display;
    else
        qWarning("video display %d not supported", int(display));
    return status;
}

void DVDReader::closeMediaReleaseMemory()
{
    stop();
    isInit = false;
    if (isDVDInit) {
        static_cast<void>(DVDSetVideoWindowID(0));
        static_cast<void>(isVolume ? DVDCloseMediaVolume() : DVDCloseMediaFile());
    }
    notifier = nullptr;
    window = nullptr;
}

void DVDReader::windowWillClose()
{
    closeMediaReleaseMemory();
}

void DVDReader::appWillTerminate()
{
    closeMediaReleaseMemory();
    if (isDVDInit)
        static_cast<void>(DVDDispose());
    isDVDInit = false;
    QObject::disconnect(endOfProgram);
    appNotifier = nullptr;
}

} // namespace Tessaron
