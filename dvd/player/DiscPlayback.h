#pragma once

#include "dvd/player/RequestThread.h"
#include "dvd/player/ResumeStore.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/RunLoopQueue.h"

#include <QObject>
#include <QRect>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Where playing begins.
struct PlaybackStart {
    std::optional<std::uint16_t> title; ///< absent: where the disc was left, else where it begins itself
    std::uint16_t chapter = 1; ///< of that title
};

/// What plays now.
struct PlaybackNow {
    std::uint32_t state = kDVDStateUnknown; ///< a DVDState
    bool isOnMenu = false;
    std::uint16_t title = 0; ///< 0 in menus
    std::uint16_t chapter = 0;
    std::uint16_t angle = 1;
    std::uint16_t angles = 1;
    std::chrono::milliseconds elapsed{0}; ///< in the title
    std::chrono::milliseconds length{0};
    double ratio = 4.0 / 3; ///< of the picture's width to its height

    [[nodiscard]] bool isMoving() const
    {
        return state == kDVDStatePlaying || state == kDVDStatePlayingStill || state == kDVDStateScanning;
    }
    friend bool operator==(const PlaybackNow &, const PlaybackNow &) = default;
};

/// Plays one disc in the session of this process, for a window. Calls that wait for the disc are made on a thread of
/// its own, in the order in which they are asked for; what they come to is told by signals. On the main thread.
class DiscPlayback : public QObject
{
    Q_OBJECT

public:
    explicit DiscPlayback(ResumeStore store = {});
    /// As close().
    ~DiscPlayback() override;

    /// Opens and plays; opened() or failedToOpen() tells how that went. Once.
    void open(const QByteArray &path, const PlaybackStart &start);
    /// Keeps the place, and ends the session. The call that runs is waited for.
    void close();
    /// True while a call of the session runs or waits.
    [[nodiscard]] bool isBusy() const { return m_requests && m_requests->isBusy(); }

    /// Empty before opened().
    [[nodiscard]] const DVDDescription &disc() const { return m_disc; }
    /// Null in menus, and for a title that the disc does not describe.
    [[nodiscard]] const DVDTitle *title() const;
    [[nodiscard]] const PlaybackNow &now() const { return m_now; }

    // Requests. One that cannot be met now changes nothing; refused() tells of it.

    void play();
    void pause();
    /// Pauses what moves, and lets go on or begin what does not.
    void playOrPause();
    /// Pauses what plays, and lets go on what is paused; nothing in a still picture, while scanning or stopped.
    void pauseOrGoOn();
    /// As a disc that was just put in.
    void playFromBegin();
    void stop();
    void scan(bool isBackward);
    void goToChapter(int title, int chapter);
    /// -1 for the one before, or the begin of the first one, 1 for the next one.
    void stepChapter(int by);
    void goToTime(std::chrono::milliseconds time);
    /// Forth or back from the time that plays.
    void skip(std::chrono::milliseconds by);
    void setAngle(int angle);
    void toggleMenu();
    /// Only menus answer; refused() does not tell where one does not.
    void navigate(std::uint32_t navigation);
    /// The mouse is at a point of the window, in which the picture has that place; pointed() tells about the button.
    void pointAt(const QPoint &point, const QRect &picture, bool activates);

    // Sound. Volume from 0 to 255.

    [[nodiscard]] int volume() const;
    void setVolume(int volume);
    [[nodiscard]] bool isMuted() const;
    void setMuted(bool isMuted);

    // Streams of the title, counted from 1 as the disc describes them; 0 for no stream.

    [[nodiscard]] int audioStream() const;
    void setAudioStream(int stream);
    [[nodiscard]] int subtitleStream() const;
    void setSubtitleStream(int stream);

Q_SIGNALS:
    void opened();
    /// A sentence without the full stop, about the disc.
    void failedToOpen(const QString &why);
    /// now() has changed.
    void changed();
    /// Playing goes on where the disc was left.
    void resumed(std::chrono::milliseconds at);
    /// What was asked for cannot be done where the disc is now, or the disc forbids it.
    void refused();
    /// The disc is played without sound; why, in words of the system.
    void withoutSound(const QString &why);
    /// The place cannot be kept in the file of that path. Told once.
    void placeLost(const QString &path);
    /// Playing has ended over an error; a sentence without the full stop.
    void failed(const QString &why);
    /// The disc has come to its end.
    void ended();
    /// Whether a button of the disc's menu is under the mouse.
    void pointed(bool isOnButton);

private:
    struct Opening {
        OSStatus status = noErr;
        QString why;
        DVDDescription disc;
        bool isResumed = false;
    };

    static void hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference);
    [[nodiscard]] static Opening openDisc(const QByteArray &path, const PlaybackStart &start, const ResumeStore &store);
    /// Has the session's thread make a call; what it came to goes to the function, or else to takeAnswer().
    void request(std::function<OSStatus()> call, std::function<void(OSStatus)> whenDone = {});
    void takeAnswer(OSStatus status);
    void takeStop(OSStatus status);
    void observeSleep();
    void takeOpening(const Opening &opening);
    void takeEvent(std::uint32_t code, std::uint32_t value1);
    void refresh();
    void keepPlace();

    const ResumeStore m_store;
    RunLoopQueue m_queue; ///< to the main thread
    std::unique_ptr<RequestThread> m_requests; ///< null before open(), and again behind close()
    bool m_hasSession = false;
    std::uint32_t m_registration = 0; ///< of hearEvent(); 0 without
    DVDDescription m_disc;
    PlaybackNow m_now;
    bool m_isOpen = false;
    bool m_isStopping = false; ///< since the user wants it
    bool m_hasToldSilence = false;
    bool m_hasToldLostPlace = false;
    bool m_isPointing = false; ///< a look for a button is under way
    QTimer m_placeTimer;
};

} // namespace Tessaron
