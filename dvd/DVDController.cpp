#include "dvd/DVDFailure.h"
#include "dvd/DVDWindowFile.h"
#include "dvd/EventBorder.h"
#include "dvd/MediaIdentifier.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSBundle.h"
#include "platform/workspace/NSWorkspace.h"

#include <QAbstractButton>
#include <QAction>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QSlider>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDBookmark.h>
#include <TessaronClassesUI/DVDController.h>
#include <TessaronClassesUI/DVDEvent.h>
#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t timeEventRate = 1000;
constexpr std::uint32_t allRegions = 0xff;
constexpr std::uint32_t refit = 0; ///< a code of VideoWindow::setWindowSize()

// Of the process and not of one controller.
bool hasBegunSessionForMedia = false; ///< never false again

/// Never destroyed: at the end of the process the application of its windows may be gone before it.
std::shared_ptr<DVDController> &sharedController()
{
    static auto *const controller = new std::shared_ptr<DVDController>;
    return *controller;
}

QString noNumber()
{
    return QStringLiteral("-");
}

bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) { return character.unicode() < 0x80; });
}

void showText(QLabel *label, const QString &text)
{
    if (label)
        label->setText(text);
}

void showNumber(QLabel *label, std::uint32_t number)
{
    showText(label, QString::number(std::int32_t(number)));
}

void bringToFront(QWidget *window)
{
    if (!window)
        return;
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

// Life cycle.

DVDController::DVDController() = default;

std::shared_ptr<DVDController> DVDController::sharedInstance()
{
    return sharedController() ? sharedController() : init();
}

/// Null where there is a shared instance already.
std::shared_ptr<DVDController> DVDController::makeSharedInstance()
{
    if (sharedController())
        return nullptr;
    std::shared_ptr<DVDController> controller(new DVDController);
    controller->observeSleep();
    sharedController() = controller;
    return controller;
}

std::shared_ptr<DVDController> DVDController::init()
{
    std::shared_ptr<DVDController> controller = makeSharedInstance();
    if (!controller)
        return sharedController();
    controller->loadWindowFile();
    return controller;
}

std::shared_ptr<DVDController> DVDController::initWithOutlets(const DVDControllerOutlets &outlets)
{
    std::shared_ptr<DVDController> controller = makeSharedInstance();
    if (!controller)
        return sharedController();
    controller->connectOutlets(outlets);
    return controller;
}

std::shared_ptr<DVDController> DVDController::init_old()
{
    std::shared_ptr<DVDController> controller(new DVDController);
    controller->observeWorkspace(NSWorkspaceDidMountNotification,
                                 [raw = controller.get()](const NSNotification &one) { raw->deviceDidMount(one); });
    controller->observeSleep();
    controller->becomeDelegateOfApplication();
    return controller;
}

DVDController::~DVDController()
{
    m_bookmarks.clear();
    NSWorkspace::sharedWorkspace().notificationCenter().removeObserver(this);
    NSNotificationCenter::defaultCenter().removeObserver(this);
    // The session must not call one that is gone; it waits for a call that is under way.
    for (const std::uint32_t identifier : m_registrations)
        static_cast<void>(DVDUnregisterEventCallBack(identifier));
    if (!m_registrations.empty())
        static_cast<void>(DVDSetFatalErrorCallBack(nullptr, nullptr));
}

void DVDController::observeWorkspace(const QString &notification,
                                     const std::function<void(const NSNotification &)> &handler)
{
    NSWorkspace::sharedWorkspace().notificationCenter().addObserver(
        this, notification, {}, [handler](const NSNotification &one) { atEventBorder([&] { handler(one); }); });
}

void DVDController::observeSleep()
{
    observeWorkspace(NSWorkspaceWillSleepNotification, [this](const NSNotification &) { machineWillSleep(); });
    observeWorkspace(NSWorkspaceDidWakeNotification, [this](const NSNotification &) { machineDidWake(); });
}

void DVDController::becomeDelegateOfApplication()
{
    NSApplicationDelegate delegate;
    delegate.context = CallbackContext(shared_from_this());
    delegate.applicationDidFinishLaunching = [this] {
        const std::shared_ptr<DVDController> self = shared_from_this();
        atEventBorder([this] { applicationDidFinishLaunching(); });
    };
    delegate.applicationShouldTerminate = [this] { return applicationShouldTerminate(); };
    delegate.applicationWillTerminate = [this] {
        const std::shared_ptr<DVDController> self = shared_from_this();
        atEventBorder([this] { applicationWillTerminate(); });
    };
    NSApplication::sharedApplication().setDelegate(std::move(delegate));
}

// The window file.

void DVDController::loadWindowFile()
{
    m_windowFile = DVDWindowFile::load();
    if (!m_windowFile)
        return;
    connectOutlets(m_windowFile->outlets);
    for (QObject *const control : m_windowFile->controls)
        connectControl(control);
    for (QMenu *const menu : m_windowFile->menus)
        QObject::connect(menu, &QMenu::aboutToShow, menu, [this] { validateMenuItems(); });
    VideoWindow *const video = m_outlets.mVideoWindow;
    QObject::connect(video, &QWidget::customContextMenuRequested, video, [this, video](const QPoint &place) {
        validateMenuItems();
        QMenu::exec(video->actions(), video->mapToGlobal(place), nullptr, video);
    });
    m_windowFile->awaken();
    validateMenuItems();
}

void DVDController::connectOutlets(const DVDControllerOutlets &outlets)
{
    m_outlets = outlets;
    // A key that fails to be carried out is one that was taken.
    const auto takesKey = [this](const QKeyEvent &event) {
        const std::shared_ptr<DVDController> self = shared_from_this();
        bool isTaken = true;
        atEventBorder([&] { isTaken = onKeyDown(event); });
        return isTaken;
    };
    if (m_outlets.mVideoWindow) {
        VideoWindowDelegate delegate;
        delegate.context = CallbackContext(shared_from_this());
        delegate.onKeyDown = takesKey;
        m_outlets.mVideoWindow->setDelegate(std::move(delegate));
    }
    if (m_outlets.mControlWindow) {
        ControlWindowDelegate delegate;
        delegate.context = CallbackContext(shared_from_this());
        delegate.onKeyDown = takesKey;
        m_outlets.mControlWindow->setDelegate(std::move(delegate));
    }
}

/// Lets a control of the window file do what its property "action" says. The windows end with this object.
void DVDController::connectControl(QObject *control)
{
    const auto perform = [this, control] {
        const std::shared_ptr<DVDController> self = weak_from_this().lock(); // an action may give it up
        if (!self)
            return;
        const QString action = control->property("action").toString();
        atEventBorder([&] { performAction(action, control); });
        validateMenuItems();
    };
    if (auto *const item = qobject_cast<QAction *>(control))
        QObject::connect(item, &QAction::triggered, item, perform);
    else if (auto *const button = qobject_cast<QAbstractButton *>(control))
        QObject::connect(button, &QAbstractButton::clicked, button, perform);
    else if (auto *const slider = qobject_cast<QAbstractSlider *>(control))
        QObject::connect(slider, &QAbstractSlider::valueChanged, slider, perform);
}

// The application's delegate.

void DVDController::applicationDidFinishLaunching()
{
    beginSession();
    resetUI();
    if (m_outlets.mVideoWindow)
        m_outlets.mVideoWindow->setupVideoWindow();
    static_cast<void>(searchMountedDVDDisc());
}

NSApplicationTerminateReply DVDController::applicationShouldTerminate() const
{
    return NSTerminateNow;
}

void DVDController::applicationWillTerminate()
{
    endSession();
    if (sharedController().get() == this)
        sharedController() = nullptr;
}

// The session.

/// Reports a call of the session that failed; nothing for 0. Throws where the handler does.
void DVDController::report(const char *operation, const char *function, OSStatus status, int line) const
{
    reportDVDFailure(status, function, operation, this, "DVDController", line);
}

void DVDController::beginSession()
{
    qInfo("Step 1: Begin Session");
    if (const OSStatus status = DVDInitialize(); status != noErr) {
        qWarning("DVDInitialize returned %d", int(status));
        if (status == kDVDErrorInitializingLib)
            displayAlertWithMessage(QStringLiteral("frameworkBusy"), QStringLiteral("frameworkBusyInfo"));
    }
    static constexpr std::array<std::uint32_t, 7> codes = {
        kDVDEventDisplayMode, kDVDEventError,     kDVDEventPlayback,      kDVDEventPTT,
        kDVDEventTitle,       kDVDEventTitleTime, kDVDEventVideoStandard,
    };
    const OSStatus registered = DVDRegisterEventCallBack(MyDVDEventHandler, codes.data(), std::uint32_t(codes.size()),
                                                         this, &m_eventCallBackID);
    if (registered == noErr)
        m_registrations.push_back(m_eventCallBackID);
    report("beginSession", "DVDRegisterEventCallBack", registered);
    report("beginSession", "DVDSetFatalErrorCallBack", DVDSetFatalErrorCallBack(MyDVDErrorHandler, this));
    report("beginSession", "DVDSetTimeEventRate", DVDSetTimeEventRate(timeEventRate));
}

bool DVDController::isValidMedia(const QString &path, FSRef *folder)
{
    if (!QFileInfo(path).isDir() || !isAscii(path))
        return false;
    if (FSPathMakeRef(path.toLatin1(), folder, nullptr) != noErr)
        return false;
    bool isValid = false;
    const OSStatus status = DVDIsValidMediaRef(folder, &isValid);
    std::printf("Media status %d\n", int(status));
    std::fflush(stdout);
    return isValid;
}

bool DVDController::openMedia(const QString &path, bool isVolume)
{
    if (!hasBegunSessionForMedia) {
        bringToFront(m_outlets.mVideoWindow);
        beginSession();
        resetUI();
        if (m_outlets.mVideoWindow)
            m_outlets.mVideoWindow->setupVideoWindow();
        hasBegunSessionForMedia = true;
    }
    FSRef folder;
    if (!isValidMedia(path, &folder)) {
        qWarning("NOT VALID");
        return false;
    }
    if (hasMedia())
        closeMedia();
    const OSStatus status = isVolume ? DVDOpenMediaVolume(&folder) : DVDOpenMediaFile(&folder);
    if (status == noErr) {
        // Without it, closeMedia() closes a folder.
        if (isVolume)
            m_volumePath = path;
        qInfo("Step 5: Open Media");
        qInfo("Media Folder: %s", displayableText(path).toUtf8().constData());
        logMediaInfo();
        validateMenuItems();
        return true;
    }
    report("openMedia", isVolume ? "DVDOpenMediaVolume" : "DVDOpenMediaFile", status);
    if (status == kDVDErrordRegionCodeUninitialized) {
        displayAlertWithMessage(QStringLiteral("noRegionCode"), QStringLiteral("noRegionCodeInfo"));
        NSApplication::sharedApplication().terminate(this);
    }
    return false;
}

void DVDController::closeMedia()
{
    if (!hasMedia())
        return;
    qInfo("Step 7: Close Media");
    if (m_volumePath.isNull()) {
        report("closeMedia", "DVDCloseMediaFile", DVDCloseMediaFile());
    } else {
        report("closeMedia", "DVDCloseMediaVolume", DVDCloseMediaVolume());
        m_volumePath = QString();
    }
    resetUI();
    m_bookmarks.clear();
    validateMenuItems();
}

void DVDController::endSession()
{
    if (m_eventCallBackID == 0)
        return;
    closeMedia();
    qInfo("Step 8: End Session");
    static_cast<void>(DVDUnregisterEventCallBack(m_eventCallBackID));
    report("endSession", "DVDDispose", DVDDispose());
    m_registrations.clear();
    m_eventCallBackID = 0;
}

void DVDController::resetUI()
{
    showText(m_outlets.mTitleText, noNumber());
    showText(m_outlets.mSceneText, noNumber());
    if (m_outlets.mTimeText)
        m_outlets.mTimeText->setTimeElapsed(0, 0);
}

void DVDController::logMediaInfo()
{
    if (!hasMedia())
        return;
    std::array<std::uint8_t, 8> identifier{};
    static_cast<void>(DVDGetMediaUniqueID(identifier.data()));
    qInfo("Media ID: %s", mediaIdentifierText(identifier).constData());
    std::uint32_t discRegions = allRegions, driveRegion = allRegions;
    std::int16_t changesLeft = -1;
    static_cast<void>(DVDGetDiscRegionCode(&discRegions));
    static_cast<void>(DVDGetDriveRegionCode(&driveRegion, &changesLeft));
    qInfo("Disc Regions: 0x%x", discRegions);
    qInfo("Drive Region: 0x%x", driveRegion);
    qInfo("Changes Left: %d", int(changesLeft));
    if ((driveRegion | discRegions) != driveRegion)
        qWarning("Warning: region code mismatch");
}

bool DVDController::hasMedia()
{
    bool hasMedia = false;
    report("hasMedia", "DVDHasMedia", DVDHasMedia(&hasMedia));
    return hasMedia;
}

std::int16_t DVDController::setAudioVolume(bool up)
{
    std::uint16_t minimum = 0, volume = 0, maximum = 0;
    static_cast<void>(DVDGetAudioVolumeInfo(&minimum, &volume, &maximum));
    const auto step = std::int16_t((maximum - minimum + 1) / 16);
    const int wanted = up ? std::min(volume + step, int(maximum)) : std::max(volume - step, int(minimum));
    const auto next = std::int16_t(wanted);
    report("setAudioVolume", "DVDSetAudioVolume", DVDSetAudioVolume(next));
    return next;
}

int DVDController::displayAlertWithMessage(const QString &messageKey, const QString &infoKey)
{
    const std::shared_ptr<NSBundle> bundle = NSBundle::frameworkBundle();
    const QString table = QStringLiteral("Localizable");
    const QString missing = QStringLiteral("No translation");
    QMessageBox alert;
    alert.setIcon(QMessageBox::Critical);
    alert.setText(bundle->localizedString(messageKey, missing, table));
    alert.setInformativeText(bundle->localizedString(infoKey, missing, table));
    alert.exec();
    return NSAlertFirstButtonReturn;
}

void DVDController::handleDVDEvent(const std::shared_ptr<const DVDEvent> &event)
{
    // Values, since what is done may be the end of the event.
    const std::uint32_t value1 = event->eventData1(), value2 = event->eventData2();
    switch (event->eventCode()) {
    case kDVDEventTitle:
        showNumber(m_outlets.mTitleText, value1);
        setVideoWindowSize(refit);
        break;
    case kDVDEventPTT:
        showNumber(m_outlets.mSceneText, value1);
        break;
    case kDVDEventDisplayMode:
    case kDVDEventVideoStandard:
        setVideoWindowSize(refit);
        break;
    case kDVDEventPlayback:
        m_dvdState = std::int32_t(value1);
        break;
    case kDVDEventTitleTime:
        if (m_outlets.mTimeText)
            m_outlets.mTimeText->setTimeElapsed(value1, value2 - value1);
        break;
    case kDVDEventError:
        handleDVDError(OSStatus(value1));
        break;
    default:
        break;
    }
}

void DVDController::handleDVDError(OSStatus error)
{
    OSStatus none = noErr;
    m_fatalError.compare_exchange_strong(none, error);
    qWarning("fatal error %d", int(error));
    NSApplication::sharedApplication().terminate(this);
}

bool DVDController::searchMountedDVDDisc()
{
    return false;
}

// Notifications.

void DVDController::deviceDidMount(const NSNotification &notification)
{
    if (m_dvdState == std::int32_t(kDVDStatePlaying))
        return;
    const QString path = notification.userInfo.value(NSDevicePathKey).toString();
    qInfo("Device did mount: %s", displayableText(path).toUtf8().constData());
    static_cast<void>(openMedia(path + QStringLiteral("/VIDEO_TS"), true));
}

void DVDController::machineWillSleep()
{
    report("machineWillSleep", "DVDSleep", DVDSleep());
}

void DVDController::machineDidWake()
{
    report("machineDidWake", "DVDWakeUp", DVDWakeUp());
}

// What the session calls.

void MyDVDEventHandler(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference)
{
    const std::shared_ptr<const DVDEvent> event = DVDEvent::initWithData(code, value1, value2);
    performOnMainThread([controller = static_cast<DVDController *>(reference)->weak_from_this(), event] {
        if (const std::shared_ptr<DVDController> alive = controller.lock())
            atEventBorder([&] { alive->handleDVDEvent(event); });
    });
}

void MyDVDErrorHandler(OSStatus error, void *reference)
{
    static_cast<DVDController *>(reference)->handleDVDError(error);
}

} // namespace Tessaron
