#include "dvd/DVDWindowFile.h"
#include "dvd/EventBorder.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/workspace/NSWorkspace.h"

#include <QAction>
#include <QFileDialog>
#include <QHash>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QSlider>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDBookmark.h>
#include <TessaronClassesUI/DVDController.h>
#include <TessaronClassesUI/VideoWindow.h>

// What users do: the controller's actions, keys and menu items.

namespace Tessaron
{

namespace
{

constexpr std::int16_t scanRate = 4;
/// Codes of VideoWindow::setWindowSize().
enum SizeCode : std::uint32_t { Small = 1, Normal = 2, Maximum = 3 };
/// What the session told last, as the controller keeps it.
enum State : std::int32_t {
    Playing = kDVDStatePlaying,
    PlayingStill = kDVDStatePlayingStill,
    Paused = kDVDStatePaused,
    Stopped = kDVDStateStopped
};

/// Whose turn it is, in whatever list of bookmarks there is then. The process's, and never limited by what there is.
std::size_t bookmarkCursor = 0;

constexpr char16_t upArrow = 0xF700, downArrow = 0xF701, leftArrow = 0xF702, rightArrow = 0xF703;
constexpr char16_t carriageReturn = 13, enter = 3, space = 32;

/// The first character of a key press; arrows have characters of the private area. 0 without one.
char16_t characterOf(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Up:
        return upArrow;
    case Qt::Key_Down:
        return downArrow;
    case Qt::Key_Left:
        return leftArrow;
    case Qt::Key_Right:
        return rightArrow;
    case Qt::Key_Return:
        return carriageReturn;
    case Qt::Key_Enter:
        return enter;
    case Qt::Key_Space:
        return space;
    default:
        return event.text().isEmpty() ? u'\0' : event.text().front().unicode();
    }
}

using Action = void (DVDController::*)(QObject *sender);

Action actionOfName(const QString &name)
{
    static const QHash<QString, Action> actions = {
        {QStringLiteral("onMediaFolder"), &DVDController::onMediaFolder},
        {QStringLiteral("onPlay"), &DVDController::onPlay},
        {QStringLiteral("onPause"), &DVDController::onPause},
        {QStringLiteral("onStop"), &DVDController::onStop},
        {QStringLiteral("onEject"), &DVDController::onEject},
        {QStringLiteral("onScanForward"), &DVDController::onScanForward},
        {QStringLiteral("onScanBackward"), &DVDController::onScanBackward},
        {QStringLiteral("onPreviousScene"), &DVDController::onPreviousScene},
        {QStringLiteral("onNextScene"), &DVDController::onNextScene},
        {QStringLiteral("onToggleMenu"), &DVDController::onToggleMenu},
        {QStringLiteral("onNextAngle"), &DVDController::onNextAngle},
        {QStringLiteral("onNewBookmark"), &DVDController::onNewBookmark},
        {QStringLiteral("onNextBookmark"), &DVDController::onNextBookmark},
        {QStringLiteral("onVolumeDown"), &DVDController::onVolumeDown},
        {QStringLiteral("onVolumeUp"), &DVDController::onVolumeUp},
        {QStringLiteral("onMute"), &DVDController::onMute},
        {QStringLiteral("onAudioVolume"), &DVDController::onAudioVolume},
        {QStringLiteral("onShowController"), &DVDController::onShowController},
        {QStringLiteral("onVideoMax"), &DVDController::onVideoMax},
        {QStringLiteral("onVideoNormal"), &DVDController::onVideoNormal},
        {QStringLiteral("onVideoSmall"), &DVDController::onVideoSmall},
    };
    return actions.value(name, nullptr);
}

} // namespace

void DVDController::onMediaFolder(QObject * /*sender*/)
{
    if (hasMedia()) {
        closeMedia();
        return;
    }
    QFileDialog panel;
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    if (panel.exec() == QDialog::Accepted)
        static_cast<void>(openMedia(panel.selectedFiles().constFirst(), false));
}

void DVDController::onPlay(QObject * /*sender*/)
{
    if (!hasMedia() || m_dvdState == Playing)
        return;
    qInfo("Step 6: Play");
    report("onPlay", "DVDPlay", DVDPlay());
}

void DVDController::onPause(QObject * /*sender*/)
{
    if (!hasMedia() || m_dvdState == Paused)
        return;
    report("onPause", "DVDPause", DVDPause());
}

void DVDController::onStop(QObject * /*sender*/)
{
    if (!hasMedia())
        return;
    if (m_dvdState == Stopped)
        resetUI();
    report("onStop", "DVDStop", DVDStop());
}

void DVDController::onEject(QObject * /*sender*/)
{
    if (m_volumePath.isNull())
        return;
    const QString path = m_volumePath;
    closeMedia();
    NSWorkspace::sharedWorkspace().unmountAndEjectDeviceAtPath(path, [](const NSError &error) {
        if (error)
            qWarning("%s", error.localizedDescription().toUtf8().constData());
    });
}

void DVDController::onScanForward(QObject * /*sender*/)
{
    if (m_dvdState == Playing)
        report("onScanForward", "DVDScan", DVDScan(scanRate, kDVDScanDirectionForward));
}

void DVDController::onScanBackward(QObject * /*sender*/)
{
    if (m_dvdState == Playing)
        report("onScanBackward", "DVDScan", DVDScan(scanRate, kDVDScanDirectionBackward));
}

void DVDController::onPreviousScene(QObject * /*sender*/)
{
    if (m_dvdState == Playing)
        report("onPreviousScene", "DVDPreviousChapter", DVDPreviousChapter());
}

void DVDController::onNextScene(QObject * /*sender*/)
{
    if (m_dvdState == Playing)
        report("onNextScene", "DVDNextChapter", DVDNextChapter());
}

void DVDController::onToggleMenu(QObject * /*sender*/)
{
    if (m_dvdState != Playing && m_dvdState != PlayingStill && m_dvdState != Paused)
        return;
    bool isOnMenu = false;
    report("onToggleMenu", "DVDIsOnMenu", DVDIsOnMenu(&isOnMenu));
    if (isOnMenu)
        report("onToggleMenu", "DVDReturnToTitle", DVDReturnToTitle());
    else
        report("onToggleMenu", "DVDGoToMenu", DVDGoToMenu(kDVDMenuRoot));
}

void DVDController::onNextAngle(QObject * /*sender*/)
{
    if (m_dvdState != Playing)
        return;
    std::uint16_t count = 0, angle = 0;
    static_cast<void>(DVDGetNumAngles(&count));
    static_cast<void>(DVDGetAngle(&angle));
    auto next = std::uint16_t(angle + 1);
    if (next > count)
        next = 1;
    report("onNextAngle", "DVDSetAngle", DVDSetAngle(next));
}

void DVDController::onNewBookmark(QObject * /*sender*/)
{
    if (m_dvdState == Playing || m_dvdState == PlayingStill)
        m_bookmarks.push_back(DVDBookmark::init());
}

void DVDController::onNextBookmark(QObject * /*sender*/)
{
    if (m_bookmarks.empty())
        return;
    m_bookmarks.at(bookmarkCursor)->gotoBookmark();
    if (++bookmarkCursor == m_bookmarks.size())
        bookmarkCursor = 0;
}

void DVDController::onVolumeDown(QObject * /*sender*/)
{
    showVolume(setAudioVolume(false));
}

void DVDController::onVolumeUp(QObject * /*sender*/)
{
    showVolume(setAudioVolume(true));
}

void DVDController::showVolume(std::int16_t volume)
{
    if (!m_outlets.mAudioControl)
        return;
    const QSignalBlocker blocker(m_outlets.mAudioControl); // not what the user has set
    m_outlets.mAudioControl->setValue(volume);
}

void DVDController::onMute(QObject * /*sender*/)
{
    bool isMuted = false;
    static_cast<void>(DVDIsMuted(&isMuted));
    report("onMute", "DVDMute", DVDMute(!isMuted));
}

void DVDController::onAudioVolume(QObject *sender)
{
    const float value = sender ? sender->property("value").toFloat() : 0;
    report("onAudioVolume", "DVDSetAudioVolume", DVDSetAudioVolume(std::int16_t(int(value))));
}

void DVDController::onShowController(QObject * /*sender*/)
{
    ControlWindow *const window = m_outlets.mControlWindow;
    if (!window)
        return;
    if (window->isVisible()) {
        window->hide();
        return;
    }
    window->show();
    window->raise();
}

void DVDController::setVideoWindowSize(std::uint32_t sizeCode)
{
    if (m_outlets.mVideoWindow)
        m_outlets.mVideoWindow->setWindowSize(sizeCode);
}

void DVDController::onVideoMax(QObject * /*sender*/)
{
    setVideoWindowSize(Maximum);
}

void DVDController::onVideoNormal(QObject * /*sender*/)
{
    setVideoWindowSize(Normal);
}

void DVDController::onVideoSmall(QObject * /*sender*/)
{
    setVideoWindowSize(Small);
}

bool DVDController::onKeyDown(const QKeyEvent &event)
{
    const auto navigate = [this](DVDUserNavigation navigation) {
        report("onKeyDown", "DVDDoUserNavigation", DVDDoUserNavigation(navigation));
        return true;
    };
    switch (characterOf(event)) {
    case upArrow:
        return navigate(kDVDUserNavigationMoveUp);
    case downArrow:
        return navigate(kDVDUserNavigationMoveDown);
    case leftArrow:
        return navigate(kDVDUserNavigationMoveLeft);
    case rightArrow:
        return navigate(kDVDUserNavigationMoveRight);
    case carriageReturn:
    case enter:
        return navigate(kDVDUserNavigationEnter);
    case space:
        if (m_dvdState == Playing)
            onPause();
        else if (m_dvdState == Paused)
            onPlay();
        return true;
    default:
        return false;
    }
}

/// Menus show texts, and items hear shortcuts, of the last time that they were validated.
void DVDController::validateMenuItems()
{
    if (!m_windowFile)
        return;
    for (QObject *const control : m_windowFile->controls) {
        auto *const item = qobject_cast<QAction *>(control);
        // Without a session there is no media to tell of, and asking for it would be a report.
        const bool isToBeLeft =
            m_eventCallBackID == 0 && item && item->property("action") == QStringLiteral("onMediaFolder");
        if (item && !isToBeLeft)
            atEventBorder([&] { static_cast<void>(validateMenuItem(*item)); });
    }
}

bool DVDController::validateMenuItem(QAction &menuItem)
{
    const QString action = menuItem.property("action").toString();
    if (action == QStringLiteral("onMediaFolder")) {
        const bool isOpen = hasMedia();
        menuItem.setText(isOpen ? QStringLiteral("Close Media Folder") : QStringLiteral("Open Media Folder..."));
        menuItem.setShortcut(QKeySequence(Qt::CTRL | (isOpen ? Qt::Key_W : Qt::Key_O)));
    } else if (action == QStringLiteral("onMute")) {
        bool isMuted = false;
        static_cast<void>(DVDIsMuted(&isMuted));
        menuItem.setCheckable(true);
        menuItem.setChecked(isMuted);
    } else if (action == QStringLiteral("onShowController")) {
        const bool isVisible = m_outlets.mControlWindow && m_outlets.mControlWindow->isVisible();
        menuItem.setText(isVisible ? QStringLiteral("Hide Controller") : QStringLiteral("Show Controller"));
    }
    return true;
}

bool DVDController::performAction(const QString &action, QObject *sender)
{
    const Action operation = actionOfName(action);
    if (!operation)
        return false;
    (this->*operation)(sender);
    return true;
}

} // namespace Tessaron
