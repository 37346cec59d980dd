#pragma once

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/PlayerConnection.h"
#include "platform/dvdplayback/SessionLock.h"
#include "platform/dvdplayback/SharedFrames.h"
#include "platform/dvdplayback/SharedSound.h"
#include "platform/dvdplayback/SoundProcess.h"

#include <QImage>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <thread>
#include <vector>

namespace Tessaron
{

/// True when a drive of that region may not play a disc that prohibits these regions: no region is left that both
/// allow.
[[nodiscard]] bool regionsExcludeEachOther(std::uint8_t prohibitedByDisc, std::uint8_t prohibitedByDrive);

/// The playback session of this process, behind the functions of DVDPlayback.h. Thread-safe.
///
/// Two locks: `m_calls` is held while a call is carried out, and while the helper answers it; `m_mutex` guards what the
/// helper has told, and is held for moments only, so that questions never wait for the disc. The helper is heard on the
/// connection's thread, which only notes what it hears; callbacks are made on a third one.
class DVDSession
{
public:
    static DVDSession &instance();

    [[nodiscard]] OSStatus begin();
    [[nodiscard]] OSStatus end();
    [[nodiscard]] bool hasBegun() const;

    [[nodiscard]] OSStatus addCallBack(DVDEventCallBack callBack, std::set<std::uint32_t> codes, void *reference,
                                       std::uint32_t *identifier);
    [[nodiscard]] OSStatus removeCallBack(std::uint32_t identifier);
    [[nodiscard]] OSStatus setFatalErrorCallBack(DVDFatalErrorCallBack callBack, void *reference);

    [[nodiscard]] OSStatus openMedia(const QByteArray &path);
    [[nodiscard]] OSStatus closeMedia();
    [[nodiscard]] bool hasMedia() const;

    /// Asks the helper; kDVDErrorNoValidMedia without media.
    [[nodiscard]] OSStatus ask(PlayerMessageKind kind, const QByteArray &payload = {}, QByteArray *answer = nullptr);
    [[nodiscard]] OSStatus setTimeRate(std::uint32_t milliseconds);
    [[nodiscard]] OSStatus sleep();
    [[nodiscard]] OSStatus wakeUp();

    /// Absent without media.
    [[nodiscard]] std::optional<PlayerState> state() const;
    [[nodiscard]] std::optional<DVDDescription> description() const;
    /// Why the media that was opened last cannot be played on; empty while it can.
    [[nodiscard]] QString mediaFailure() const;
    /// Why there is no device for sound; empty with one, before that is known, and without media.
    [[nodiscard]] QString soundFailure() const;

    /// The picture that is to be seen now; false when it was taken before.
    [[nodiscard]] bool takeFrame(QImage *image);
    /// Called on the connection's thread whenever there is a new picture; empty for none. None is called any more when
    /// this has returned.
    void setFrameHearer(std::function<void()> hearer);

    /// For tests: the region of the drive that discs are taken to be in from now on.
    void setDriveRegion(const std::optional<DVDDriveRegion> &region);
    /// For tests: the helper's process; -1 without media.
    [[nodiscard]] pid_t helperProcess() const;

    struct Settings {
        std::uint16_t volume = 255;
        bool isMuted = false;
        std::uint32_t window = 0;
        std::uint32_t display = 0;
        std::optional<std::uint32_t> unsupportedDisplay; ///< for tests: a screen that does not show pictures
        QRectF bounds{0, 0, 720, 480}; ///< of the video, in points from the top left of the window's frame
    };
    [[nodiscard]] Settings settings() const;
    void setSettings(const std::function<void(Settings *)> &change);

private:
    struct Event {
        std::uint32_t code = 0;
        std::uint32_t value1 = 0;
        std::uint32_t value2 = 0;
        bool isFatal = false; ///< for the fatal-error callback, besides those of the event
    };
    struct CallBack {
        DVDEventCallBack function = nullptr;
        std::set<std::uint32_t> codes;
        void *reference = nullptr;
    };

    DVDSession() = default;
    ~DVDSession();
    void hear(const PlayerMessage &message);
    void hearState(const PlayerState &state);
    void hearEnd(OSStatus status, const QString &why);
    void tell(const Event &event);
    void deliverEvents(const std::stop_token &stop);
    void deliver(const Event &event);
    [[nodiscard]] OSStatus connect(const QByteArray &path);
    void dropMedia();
    void setGain() const;
    [[nodiscard]] QString reasonForSilence() const;

    std::mutex m_calls; ///< held while a call is carried out; guards the next members
    SessionLock m_lock;
    std::unique_ptr<SoundProcess> m_soundProcess;
    std::unique_ptr<PlayerConnection> m_connection;
    std::uint32_t m_timeRate = 900;
    bool m_playsAfterSleep = false;

    mutable std::mutex m_mutex; ///< guards the members below
    bool m_hasBegun = false;
    bool m_isAlive = false; ///< media is open, and its helper lives
    bool m_hasEnded = false; ///< the helper of the media that is open, or is being opened
    QString m_mediaFailure; ///< why it has
    std::optional<DVDDescription> m_description;
    PlayerState m_state;
    std::unique_ptr<SharedFrames> m_frames;
    std::unique_ptr<SharedSound> m_sound;
    std::optional<DVDDriveRegion> m_driveRegion;
    pid_t m_helperProcess = -1;
    Settings m_settings;

    std::mutex m_frameHearing; ///< held while the hearer is called
    std::function<void()> m_frameHearer;

    std::mutex m_telling; ///< guards the members below
    std::condition_variable_any m_told;
    std::deque<Event> m_events;
    std::map<std::uint32_t, CallBack> m_callBacks;
    std::uint32_t m_lastIdentifier = 0;
    DVDFatalErrorCallBack m_fatalErrorCallBack = nullptr;
    void *m_fatalErrorReference = nullptr;
    std::uint32_t m_running = 0; ///< identifier of the callback that runs now
    bool m_tellsFatalError = false; ///< the call back for fatal errors runs now
    std::thread::id m_tellingThread;

    std::jthread m_teller; ///< guarded by m_calls; calls back
};

} // namespace Tessaron
