#pragma once

#include "platform/dvdplayback/SharedSound.h"
#include "platform/dvdplayback/player/Navigator.h"
#include "platform/dvdplayback/player/PlaybackClock.h"
#include "platform/dvdplayback/player/PlaybackRows.h"
#include "platform/dvdplayback/player/SoundRow.h"
#include "platform/dvdplayback/player/Subpicture.h"
#include "platform/dvdplayback/player/Timeline.h"
#include "platform/dvdplayback/player/VideoScreen.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace Tessaron
{

/// Plays a disc into shared memory: reads a little ahead, and lets everything be decoded, seen, heard and told in its
/// order and at its time. One thread; all work is done in advance() and in requests.
class DiscPlayer
{
public:
    using Clock = std::chrono::steady_clock;

    struct Hearers {
        std::function<void(const PlayerState &)> state; ///< has changed
        std::function<void(std::uint32_t elapsed, std::uint32_t length)> titleTime; ///< milliseconds
        std::function<void(std::uint32_t number)> frame; ///< is to be seen
        std::function<void(const QString &why)> failure; ///< playing has ended over it
        std::function<Clock::time_point()> now = Clock::now; ///< asked, in fact
    };

    /// Without memory for sound it plays in silence.
    DiscPlayer(DiscFiles *disc, DVDDescription description, SharedFrames *frames, SharedSound *sound, Hearers hearers);

    /// Shows what is due and reads ahead; how long nothing is to be done, absent for until the next request.
    [[nodiscard]] std::optional<std::chrono::milliseconds> advance();

    // Requests, as in DVDPlayback.h.

    [[nodiscard]] OSStatus play();
    [[nodiscard]] OSStatus pause();
    [[nodiscard]] OSStatus stop();
    [[nodiscard]] OSStatus scan(int rate, bool isBackward);
    [[nodiscard]] OSStatus playChapter(int title, int chapter);
    [[nodiscard]] OSStatus stepChapter(int by);
    [[nodiscard]] OSStatus setAngle(int angle);
    [[nodiscard]] OSStatus goToMenu(std::uint32_t menu);
    [[nodiscard]] OSStatus returnToTitle();
    [[nodiscard]] OSStatus navigate(std::uint32_t navigation);
    [[nodiscard]] OSStatus pointAt(int x, int y, bool activates, std::int32_t *button);
    [[nodiscard]] OSStatus goToPlace(const PlayerPlace &place);
    [[nodiscard]] OSStatus goToTime(std::uint32_t elapsed);
    [[nodiscard]] OSStatus playSlowly(int times);
    [[nodiscard]] OSStatus stepPicture();
    [[nodiscard]] OSStatus setSoundStream(int stream);
    [[nodiscard]] OSStatus setSubtitleStream(int stream);
    /// Says that it is stopped, and what the pictures of the disc are like.
    void tellFirstState();
    /// Pauses what plays, also where the disc forbids users to.
    void sleep();
    void setTimeRate(std::chrono::milliseconds rate) { m_timeRate = rate; }

private:
    /// A disc that takes more steps than these without a navigation pack runs in circles.
    static constexpr int mostStepsToPosition = 20'000;

    [[nodiscard]] bool start();
    void readAhead(Clock::time_point now);
    void takeSector();
    void takeSound(const ElementaryPiece &piece);
    void takeStep(NavigationStep step);
    [[nodiscard]] bool needsMore(Clock::time_point now);
    [[nodiscard]] bool needsSound(Clock::time_point now);
    [[nodiscard]] bool isFarAhead(Clock::time_point now) const;
    [[nodiscard]] bool isDry(Clock::time_point now) const;
    [[nodiscard]] bool isSoundOver(Clock::time_point now) const;
    void beginRun(Clock::time_point now);
    [[nodiscard]] bool showPicture(VideoPicture *picture, Clock::time_point now,
                                   std::optional<std::chrono::milliseconds> *wait);
    [[nodiscard]] bool endStill(const Still &still, Clock::time_point now,
                                std::optional<std::chrono::milliseconds> *wait);
    void takeOverlay(Overlay overlay, Clock::time_point now);
    /// True when the front item is gone; else *wait says for how long it stays.
    [[nodiscard]] bool showFront(Clock::time_point now, std::optional<std::chrono::milliseconds> *wait);
    void show(VideoPicture picture);
    void take(const NavigationPosition &position);
    void takeInTime(const TimedPosition &position, Clock::time_point now);
    void takeWaitingPosition();
    void tellState();
    void tellTime(Clock::time_point now);
    [[nodiscard]] bool isMoving() const;
    void setPlayback(std::uint32_t playback);
    void forgetAhead();
    void followButton();
    void showSelection();
    [[nodiscard]] bool settle();
    [[nodiscard]] bool isForbidden(UserOperation operation) const;
    [[nodiscard]] OSStatus jumpToChapter(int title, int chapter);
    [[nodiscard]] OSStatus jumpAlongFirstAngle(const std::function<OSStatus()> &search, int angle);
    void end();
    [[nodiscard]] OSStatus jump(const std::function<OSStatus()> &request);
    [[nodiscard]] std::optional<std::chrono::milliseconds> advanceScan(Clock::time_point now);
    void fail(const QString &why);

    DiscFiles *const m_disc;
    const DVDDescription m_description;
    const Hearers m_hearers;
    std::unique_ptr<Navigator> m_navigator; ///< null while stopped
    std::unique_ptr<SubpictureDecoder> m_subpictures;
    PlaybackRows m_rows;
    Timeline m_timeline;
    PlaybackClock m_clock;
    SoundRow m_sound; ///< behind its clock
    VideoScreen m_screen;
    std::optional<std::int64_t> m_runBegin; ///< a picture of that time is seen, and the clock waits for sound
    bool m_dropsAtJump = false; ///< what waits is of no interest once the disc jumps
    bool m_needsPosition = false; ///< a jump was made that no navigation pack has confirmed

    PlayerState m_state;
    PlayerState m_told;
    Clock::time_point m_lastShown; ///< when a picture was
    std::optional<Clock::time_point> m_stillUntil; ///< the end of a still that stands; max() for one without
    std::uint32_t m_playbackBefore = 0; ///< the pause
    std::chrono::milliseconds m_timeRate{900};
    Clock::time_point m_timeTold;
    std::optional<std::int64_t> m_positionTime; ///< of the position that was taken last; absent until it is known
    std::optional<TimedPosition> m_nextPosition; ///< is not due yet
    Clock::time_point m_scanDue;
    int m_scanRate = 0; ///< negative backward; 0 without
    std::int64_t m_scanTime = 0; ///< milliseconds in the title
};

} // namespace Tessaron
