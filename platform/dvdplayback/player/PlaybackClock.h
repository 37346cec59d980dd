#pragma once

#include "platform/dvdplayback/SharedSound.h"
#include "platform/dvdplayback/player/SoundDecoder.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace Tessaron
{

/// The time of the disc that is seen and heard: where sound is played, the time of what comes out of the device, so
/// that pictures keep to it; else that of the system's steady clock. All times are of one line of 90 kHz ticks, on
/// which what plays one after the other follows on (see Timeline). Sound is put onto that line here: gaps become
/// silence, what overlaps is left out. One thread.
class PlaybackClock
{
public:
    using Clock = std::chrono::steady_clock;

    /// Without shared memory there is no sound.
    explicit PlaybackClock(SharedSound *sound);

    /// Stands until begin(). What sound was added waits.
    void hold();
    /// The same, and no sound that was added is heard any more.
    void forget();
    void begin(std::int64_t time, Clock::time_point now);
    [[nodiscard]] bool isHeld() const { return m_mode == Mode::Held; }
    /// The time is that of what comes out of a device.
    [[nodiscard]] bool followsSound() const { return m_mode == Mode::Sound; }
    void setPaused(bool isPaused, Clock::time_point now);
    /// So many times as slow as usual, without sound if not 1.
    void setSlowness(int slowness, Clock::time_point now);

    /// True while sound that is added will be heard; false without a device.
    [[nodiscard]] bool takesSound(Clock::time_point now);
    /// True while it is not known yet whether there is a device.
    [[nodiscard]] bool isWaitingForDevice(Clock::time_point now);
    [[nodiscard]] SoundDevice device() const { return m_sound ? m_sound->device() : SoundDevice::Absent; }
    [[nodiscard]] SoundForm form() const { return m_sound ? m_sound->form() : SoundForm(); }
    void add(DecodedSound piece);

    /// Hands sound on to the device. `isDry` says that no more sound comes before something else has happened: then the
    /// time does not wait for it.
    void advance(Clock::time_point now, bool isDry);
    [[nodiscard]] std::int64_t time(Clock::time_point now) const;
    /// How much sound waits to be heard, in ticks.
    [[nodiscard]] std::int64_t soundAhead(Clock::time_point now) const;
    [[nodiscard]] bool hasSound() const { return !m_waiting.empty(); }
    /// The time of the first sound that waits, as far as one of those that wait has a time.
    [[nodiscard]] std::optional<std::int64_t> firstSound() const;

private:
    enum class Mode : std::uint8_t { Held, Steady, Sound };

    [[nodiscard]] std::int64_t ticksOf(std::int64_t frames) const;
    [[nodiscard]] std::int64_t framesOf(std::int64_t ticks) const;
    [[nodiscard]] std::int64_t framesHeard(Clock::time_point now) const;
    void runSteadily(std::int64_t time, Clock::time_point now);
    void follow(std::int64_t time);
    void giveWaiting();
    /// True when all of the piece is given.
    [[nodiscard]] bool give(DecodedSound *piece);
    void look(Clock::time_point now);

    SharedSound *const m_sound; ///< may be null
    Mode m_mode = Mode::Held;
    bool m_isPaused = false;
    int m_slowness = 1;
    std::int64_t m_base = 0; ///< the time that stands while held or paused, or that of the instant
    Clock::time_point m_instant; ///< of a steady run
    std::int64_t m_firstFrame = 0; ///< of the run with sound; heard at m_firstTime
    std::int64_t m_firstTime = 0;
    std::deque<DecodedSound> m_waiting;
    std::int64_t m_framesWaiting = 0;
    std::optional<std::int64_t> m_addedTo; ///< the time of what is added next
    std::int64_t m_silence = 0; ///< frames to be given before the first piece that waits
    bool m_isFirstPlaced = false; ///< the first piece that waits has been put onto the line
    std::optional<Clock::time_point> m_firstLook;
    std::optional<Clock::time_point> m_openSince;
    bool m_isDead = false; ///< the device does not ask any more
};

} // namespace Tessaron
