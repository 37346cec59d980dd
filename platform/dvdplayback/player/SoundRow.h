#pragma once

#include "platform/dvdplayback/player/Navigator.h"
#include "platform/dvdplayback/player/PlaybackClock.h"
#include "platform/dvdplayback/player/SoundDecoder.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Tessaron
{

/// The sound that was read and waits to be decoded for the clock, which hands it on. One thread.
class SoundRow
{
public:
    explicit SoundRow(PlaybackClock *clock);

    void add(const SoundStream &stream, std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time);
    [[nodiscard]] bool isEmpty() const { return m_sound.empty(); }
    /// Drops all that waits.
    void clear() { m_sound.clear(); }
    /// Drops what belongs to pictures before that time.
    void dropBefore(std::int64_t time);
    /// Forgets what was begun: what comes next is elsewhere on the disc.
    void forget();
    /// Decodes up to this much sound (90 kHz) ahead of what is heard; all of it when nothing follows for now.
    void decode(PlaybackClock::Clock::time_point now, std::int64_t mostAhead, bool isLast);

private:
    struct SoundBytes {
        SoundStream stream;
        std::vector<std::uint8_t> bytes;
        std::optional<std::int64_t> time;
    };

    PlaybackClock *const m_clock;
    std::deque<SoundBytes> m_sound;
    std::unique_ptr<SoundDecoder> m_decoder; ///< null before the first sound
    SoundStream m_streamOfDecoder;
};

} // namespace Tessaron
