#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"
#include "platform/workspace/NSApplication.h"

#include <QList>
#include <QPointer>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QAbstractButton;
class QAction;
class QKeyEvent;
class QLabel;
class QSlider;
class QWidget;

namespace Tessaron
{

class ControlWindow;
class DVDBookmark;
class DVDEvent;
struct DVDWindowFile;
class PlaybackTime;
class VideoWindow;
struct NSNotification;

/// The windows and controls of a DVD player. Any of them may be missing, or end before the controller does: what would
/// be done with it is left out then.
struct DVDControllerOutlets {
    QPointer<QAbstractButton> mPlayButton;
    QPointer<QSlider> mAudioControl; ///< shows the volume after each step
    QPointer<QLabel> mSceneText; ///< number of the chapter, or "-"
    QPointer<QLabel> mTitleText; ///< number of the title, or "-"
    QPointer<ControlWindow> mControlWindow;
    QPointer<PlaybackTime> mTimeText;
    QPointer<VideoWindow> mVideoWindow;
};

/// The player of video DVDs: it owns the session (DVDPlayback.h), opens discs, keeps windows and controls up to date,
/// and does what menu items, buttons and keys ask for. On the main thread, in a program with a QApplication; the one
/// operation that any thread may call is handleDVDError().
///
/// Calls of the session that fail are reported to the NSAssertionHandler of the calling thread with the file
/// "DVDController" and a description such as "DVDPlay returned -70015". The standard handler throws
/// NSInternalInconsistencyException: nothing more of the operation is done. Where the event loop leads here, by a
/// control, a key, a notification or an event of the disc, the exception ends the operation and goes no further.
class TESSARON_EXPORT DVDController : public std::enable_shared_from_this<DVDController>
{
public:
    /// The one controller; the first call makes it by init().
    [[nodiscard]] static std::shared_ptr<DVDController> sharedInstance();
    /// The shared instance if there is one. Else a new one, which becomes it, with the windows and menu items of the
    /// interface file "dvdWin"; without them, and with a line in the log, where that cannot be loaded. It hears when
    /// the machine goes to sleep and wakes up.
    [[nodiscard]] static std::shared_ptr<DVDController> init();
    /// The same with windows and controls of the program's own, which stay the program's. The two windows are told to
    /// ask onKeyDown(); what else leads to actions the program connects.
    [[nodiscard]] static std::shared_ptr<DVDController> initWithOutlets(const DVDControllerOutlets &outlets);
    /// A controller without windows that is not the shared one. It opens discs as they are mounted and is the
    /// application's delegate. Nothing here calls it.
    [[nodiscard]] static std::shared_ptr<DVDController> init_old();
    /// Hears nothing any more. A session goes on until endSession() or DVDDispose().
    ~DVDController();
    DVDController(const DVDController &) = delete;
    DVDController &operator=(const DVDController &) = delete;

    // The application's delegate.

    /// Begins the session and binds the video window to it.
    void applicationDidFinishLaunching();
    /// NSTerminateNow: quitting is never delayed.
    [[nodiscard]] NSApplicationTerminateReply applicationShouldTerminate() const;
    /// Ends the session and gives up the shared instance.
    void applicationWillTerminate();

    // The session.

    /// Begins the session, hears its events, the time once a second. A session that is held elsewhere
    /// (kDVDErrorInitializingLib) is told in an alert. Failing to begin is only logged, and the rest is done all the
    /// same. Twice without endSession() between is such a failure.
    void beginSession();
    /// Whether there is a folder at the path that the session can open. `*folder` becomes its reference as soon as one
    /// can be made. Paths with characters outside of ASCII have none: they are refused. Prints "Media status 0" on
    /// standard output.
    [[nodiscard]] bool isValidMedia(const QString &path, FSRef *folder);
    /// Opens a folder VIDEO_TS, or the one that holds it, as a volume's or as one chosen; true when it is open. Media
    /// that was open is closed. The first call of the process that gets so far shows the video window and begins the
    /// session, whether or not one has begun. A folder that is not valid leaves "NOT VALID" in the log.
    /// kDVDErrordRegionCodeUninitialized, once reported, is told in an alert and ends the application.
    [[nodiscard]] bool openMedia(const QString &path, bool isVolume);
    /// Closes media and forgets its bookmarks; nothing without media.
    void closeMedia();
    /// Closes media and ends the session; nothing without a session.
    void endSession();
    /// Shows neither title nor chapter, and no time.
    void resetUI();
    /// Logs the disc's identity and what its regions and the drive's are; nothing without media.
    void logMediaInfo();
    /// Reports a failure, as without a session.
    [[nodiscard]] bool hasMedia();
    /// A sixteenth of the range louder or softer, within it; the new volume.
    std::int16_t setAudioVolume(bool up);
    /// Shows a critical alert, the texts of two keys of the framework's table "Localizable", and waits for the user;
    /// NSAlertFirstButtonReturn.
    int displayAlertWithMessage(const QString &messageKey, const QString &infoKey);
    void handleDVDEvent(const std::shared_ptr<const DVDEvent> &event);
    /// Logs the error and ends the application. On any thread.
    void handleDVDError(OSStatus error);
    /// False: mounted discs are found by deviceDidMount().
    bool searchMountedDVDDisc();

    // Notifications.

    /// Opens the folder VIDEO_TS of what has been mounted, unless something plays.
    void deviceDidMount(const NSNotification &notification);
    void machineWillSleep();
    void machineDidWake();

    // What users do. Each takes the control that asks for it; only onAudioVolume() looks at it, and none needs it else.

    /// Closes media, or lets the user choose a folder to open.
    void onMediaFolder(QObject *sender = nullptr);
    void onPlay(QObject *sender = nullptr);
    void onPause(QObject *sender = nullptr);
    /// When stopped already, clears the displays, and stops once more: the next onPlay() begins at the disc's begin.
    void onStop(QObject *sender = nullptr);
    /// Closes media that was opened as a volume and ejects its disc. Failing to eject is a line in the log.
    void onEject(QObject *sender = nullptr);
    /// While playing: four times as fast.
    void onScanForward(QObject *sender = nullptr);
    void onScanBackward(QObject *sender = nullptr);
    void onPreviousScene(QObject *sender = nullptr);
    void onNextScene(QObject *sender = nullptr);
    /// To the disc's root menu, or back from a menu to the title.
    void onToggleMenu(QObject *sender = nullptr);
    /// The next angle; the first one behind the last.
    void onNextAngle(QObject *sender = nullptr);
    void onNewBookmark(QObject *sender = nullptr);
    /// Goes to the bookmark whose turn it is. The turn is the process's and outlives media; where it has no bookmark,
    /// std::out_of_range is thrown.
    void onNextBookmark(QObject *sender = nullptr);
    void onVolumeDown(QObject *sender = nullptr);
    void onVolumeUp(QObject *sender = nullptr);
    void onMute(QObject *sender = nullptr);
    /// Sets the volume to the sender's property "value".
    void onAudioVolume(QObject *sender);
    /// Shows the control window, without activating it, or hides it.
    void onShowController(QObject *sender = nullptr);
    void onVideoMax(QObject *sender = nullptr);
    void onVideoNormal(QObject *sender = nullptr);
    void onVideoSmall(QObject *sender = nullptr);

    /// Arrows, Return and Enter lead through the disc's menus, the space bar pauses and goes on; whether it was one of
    /// these.
    bool onKeyDown(const QKeyEvent &event);
    /// Gives a menu item the text, shortcut and mark that it has to have now; true always: each may be chosen. What an
    /// item does is its property "action": "onMediaFolder".
    bool validateMenuItem(QAction &menuItem);

    /// Does what a control with that property "action" asks for; false for names that are none of the actions above.
    bool performAction(const QString &action, QObject *sender);

    [[nodiscard]] const DVDControllerOutlets &outlets() const { return m_outlets; }
    /// Set during this media.
    [[nodiscard]] const std::vector<std::shared_ptr<DVDBookmark>> &bookmarks() const { return m_bookmarks; }
    /// The path that was opened as a volume; null where nothing is, or where it was opened as a folder.
    [[nodiscard]] QString volumePath() const { return m_volumePath; }
    /// A DVDState: what the session told last; 0 at first.
    [[nodiscard]] std::int32_t dvdState() const { return m_dvdState; }
    /// 0 without a session.
    [[nodiscard]] std::uint32_t eventCallBackID() const { return m_eventCallBackID; }
    /// The error that handleDVDError() was told first; 0 without one. On any thread.
    [[nodiscard]] OSStatus fatalError() const { return m_fatalError; }

private:
    DVDController();
    [[nodiscard]] static std::shared_ptr<DVDController> makeSharedInstance();
    void loadWindowFile();
    void connectOutlets(const DVDControllerOutlets &outlets);
    void connectControl(QObject *control);
    void validateMenuItems();
    void observeWorkspace(const QString &notification, const std::function<void(const NSNotification &)> &handler);
    void observeSleep();
    void becomeDelegateOfApplication();
    void setVideoWindowSize(std::uint32_t sizeCode);
    void report(const char *operation, const char *function, OSStatus status, int line = __builtin_LINE()) const;
    void showVolume(std::int16_t volume);

    std::unique_ptr<DVDWindowFile> m_windowFile; ///< null where it is not loaded
    DVDControllerOutlets m_outlets;
    std::vector<std::shared_ptr<DVDBookmark>> m_bookmarks;
    QString m_volumePath;
    std::int32_t m_dvdState = 0;
    std::uint32_t m_eventCallBackID = 0;
    std::vector<std::uint32_t> m_registrations; ///< all that this object has made since it last ended a session
    std::atomic<OSStatus> m_fatalError = noErr;
};

/// What DVDController::displayAlertWithMessage() answers: its only button.
inline constexpr int NSAlertFirstButtonReturn = 1000;

/// Carries an event of the session to the main thread, without waiting; `reference` is the DVDController. On the
/// session's thread.
TESSARON_EXPORT void MyDVDEventHandler(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference);
/// Passes a fatal error of the session on to the DVDController `reference`. On the session's thread.
TESSARON_EXPORT void MyDVDErrorHandler(OSStatus error, void *reference);

} // namespace Tessaron
