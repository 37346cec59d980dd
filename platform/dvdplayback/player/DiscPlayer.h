#pragma once

#include "platform/dvdplayback/SharedFrames.h"
#include "platform/dvdplayback/player/Navigator.h"
#include "platform/dvdplayback/player/Subpicture.h"
#include "platform/dvdplayback/player/VideoDecoder.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace Tessaron
{

/// Plays a disc into shared memory, on a steady clock: reads a little ahead, decodes, and shows each picture at its
/// time. What the disc says on its way (chapters, menus, stills) waits in the same row as the pictures, so that it is
/// told when they are seen. One thread; all work is done in advance() and in requests.
class DiscPlayer
{
public:
    using Clock = std::chrono::steady_clock;

    struct Hearers {
        std::function<void(const PlayerState &)> state; ///< has changed
        std::function<void(std::uint32_t elapsed, std::uint32_t length)> titleTime; ///< milliseconds
        std::function<void(std::uint32_t number)> frame; ///< is to be seen
        std::function<void(const QString &why)> failure; ///< playing has ended over it
    };

    DiscPlayer(DiscFiles *disc, DVDDescription description, SharedFrames *frames, Hearers hearers);

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
    /// Says that it is stopped, and what the pictures of the disc are like.
    void tellFirstState();
    void setTimeRate(std::chrono::milliseconds rate) { m_timeRate = rate; }

private:
    // What waits to be seen or told, in order.
    struct Overlay {
        Subpicture subpicture;
        std::int64_t presentation = 0;
    };
    struct Still {
        std::optional<int> seconds;
    };
    struct Wait {
    };
    struct End {
    };
    struct Button {
    };
    using Item = std::variant<VideoPicture, NavigationPosition, Overlay, Still, Wait, End, Button>;

    [[nodiscard]] bool start();
    void readAhead();
    void takeSector();
    void takeStep(NavigationStep step);
    [[nodiscard]] bool isFull() const;
    /// True when the front item is gone; else *wait says for how long it stays.
    [[nodiscard]] bool showFront(Clock::time_point now, std::optional<std::chrono::milliseconds> *wait);
    void show(VideoPicture picture);
    void compose();
    void take(const NavigationPosition &position);
    void tellState();
    void tellTime(Clock::time_point now);
    void setPlayback(std::uint32_t playback);
    void forgetAhead();
    void followButton();
    void showSelection();
    [[nodiscard]] bool settle();
    [[nodiscard]] OSStatus jump(const std::function<OSStatus()> &request);
    [[nodiscard]] std::optional<std::chrono::milliseconds> advanceScan(Clock::time_point now);
    void fail(const QString &why);

    DiscFiles *const m_disc;
    const DVDDescription m_description;
    SharedFrames *const m_frames;
    const Hearers m_hearers;
    std::unique_ptr<Navigator> m_navigator; ///< null while stopped
    std::unique_ptr<VideoDecoder> m_video;
    std::unique_ptr<SubpictureDecoder> m_subpictures;
    std::deque<Item> m_items;
    std::size_t m_pictures = 0; ///< among them
    bool m_isBarred = false; ///< a still, a wait or the end lies ahead: nothing more is read before it
    bool m_dropsAtJump = false; ///< what waits is of no interest once the disc jumps
    bool m_needsPosition = false; ///< a jump was made that no navigation pack has confirmed

    PlayerState m_state;
    PlayerState m_told;
    VideoPicture m_shown; ///< the picture that is seen; without a frame before the first one
    Scaler m_scaler;
    std::optional<Subpicture> m_overlay;
    Clock::time_point m_overlayUntil = Clock::time_point::max();
    std::optional<ButtonColours> m_button;
    Clock::time_point m_due; ///< of the next picture
    std::optional<Clock::time_point> m_stillUntil; ///< the end of a still that stands; max() for one without
    std::uint32_t m_playbackBefore = 0; ///< the pause
    std::chrono::milliseconds m_timeRate{900};
    Clock::time_point m_timeTold;
    Clock::time_point m_positionTaken;
    int m_scanRate = 0; ///< negative backward; 0 without
    std::int64_t m_scanTime = 0; ///< milliseconds in the title
};

} // namespace Tessaron
