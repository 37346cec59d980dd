#include "platform/dvdplayback/player/PlaybackClock.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

using std::chrono::seconds;

constexpr std::int64_t ticksInSecond = 90'000;
/// Sound that is off its place by less is left where it is: times of packets are not more exact, and an ear that
/// forgives 40 milliseconds hears a cut at once.
constexpr std::int64_t tolerance = ticksInSecond / 50;
/// What is further away says nothing about where it belongs.
constexpr std::int64_t farthest = 10 * ticksInSecond;
/// A sound server may have to be started first.
constexpr seconds patienceWithDevice(3);
/// A device asks many times in a second.
constexpr seconds longestPauseOfDevice(2);

std::int64_t ticksBetween(PlaybackClock::Clock::time_point from, PlaybackClock::Clock::time_point to)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(to - from).count() * 9 / 100;
}

} // namespace

PlaybackClock::PlaybackClock(SharedSound *sound)
    : m_sound(sound)
{
}

std::int64_t PlaybackClock::ticksOf(std::int64_t frames) const
{
    return frames * ticksInSecond / form().rate;
}

std::int64_t PlaybackClock::framesOf(std::int64_t ticks) const
{
    return ticks * form().rate / ticksInSecond;
}

std::int64_t PlaybackClock::framesHeard(Clock::time_point now) const
{
    return std::max(m_sound->heard(now).value_or(m_firstFrame), m_firstFrame);
}

std::int64_t PlaybackClock::time(Clock::time_point now) const
{
    if (m_mode == Mode::Held || m_isPaused)
        return m_base;
    if (m_mode == Mode::Steady)
        return m_base + ticksBetween(m_instant, now) / m_slowness;
    return m_firstTime + ticksOf(framesHeard(now) - m_firstFrame);
}

void PlaybackClock::hold()
{
    m_mode = Mode::Held;
    m_isFirstPlaced = false;
    m_silence = 0;
}

void PlaybackClock::forget()
{
    hold();
    m_waiting.clear();
    m_framesWaiting = 0;
    m_addedTo.reset();
    if (m_sound)
        m_sound->drop();
}

void PlaybackClock::begin(std::int64_t time, Clock::time_point now)
{
    runSteadily(time, now);
}

void PlaybackClock::runSteadily(std::int64_t time, Clock::time_point now)
{
    m_mode = Mode::Steady;
    m_base = time;
    m_instant = now;
    m_isFirstPlaced = false;
    m_silence = 0;
}

void PlaybackClock::setPaused(bool isPaused, Clock::time_point now)
{
    if (m_isPaused == isPaused)
        return;
    const std::int64_t time = this->time(now);
    m_isPaused = isPaused;
    if (m_sound)
        m_sound->setPaused(isPaused);
    m_instant = now;
    if (m_mode != Mode::Held)
        m_base = time;
}

void PlaybackClock::setSlowness(int slowness, Clock::time_point now)
{
    if (m_slowness == slowness)
        return;
    const std::int64_t time = this->time(now);
    const bool wasHeld = m_mode == Mode::Held;
    m_slowness = slowness;
    forget();
    if (!wasHeld)
        runSteadily(time, now);
}

// The device.

void PlaybackClock::look(Clock::time_point now)
{
    if (!m_firstLook)
        m_firstLook = now;
    if (m_sound->device() != SoundDevice::Open || m_isPaused)
        return;
    if (!m_openSince)
        m_openSince = now;
    const bool wasDead = m_isDead;
    const auto last = std::max(m_sound->lastAsked(), *m_openSince);
    m_isDead = now - last > longestPauseOfDevice;
    if (m_isDead && !wasDead && m_mode == Mode::Sound)
        runSteadily(time(now), now);
}

bool PlaybackClock::isWaitingForDevice(Clock::time_point now)
{
    if (!m_sound || m_slowness != 1)
        return false;
    look(now);
    return m_sound->device() == SoundDevice::Opening && now - *m_firstLook < patienceWithDevice;
}

bool PlaybackClock::takesSound(Clock::time_point now)
{
    if (!m_sound || m_slowness != 1)
        return false;
    look(now);
    return m_sound->device() == SoundDevice::Open && !m_isDead;
}

void PlaybackClock::add(DecodedSound piece)
{
    const auto frames = std::int64_t(piece.samples.size() / form().channels);
    m_framesWaiting += frames;
    // Not each has a time of its own, and any may be the first one to be heard.
    if (!piece.time)
        piece.time = m_addedTo;
    if (piece.time)
        m_addedTo = *piece.time + ticksOf(frames);
    m_waiting.push_back(std::move(piece));
}

std::optional<std::int64_t> PlaybackClock::firstSound() const
{
    std::int64_t frames = 0;
    for (const DecodedSound &piece : m_waiting) {
        if (piece.time)
            return *piece.time - ticksOf(frames);
        frames += std::int64_t(piece.samples.size() / form().channels);
    }
    return std::nullopt;
}

std::int64_t PlaybackClock::soundAhead(Clock::time_point now) const
{
    if (!m_sound)
        return 0;
    const std::int64_t given = m_mode == Mode::Sound ? std::int64_t(m_sound->given()) - framesHeard(now) : 0;
    return ticksOf(std::max<std::int64_t>(given, 0) + m_framesWaiting);
}

void PlaybackClock::advance(Clock::time_point now, bool isDry)
{
    if (m_mode == Mode::Held || m_isPaused)
        return;
    if (!takesSound(now)) {
        m_waiting.clear();
        m_framesWaiting = 0;
        if (m_mode == Mode::Sound)
            runSteadily(time(now), now);
        return;
    }
    if (m_mode == Mode::Steady && !m_waiting.empty())
        follow(time(now));
    if (m_mode != Mode::Sound)
        return;
    giveWaiting();
    const auto given = std::int64_t(m_sound->given());
    if (isDry && m_waiting.empty() && m_sound->heard(now).value_or(0) >= given)
        runSteadily(m_firstTime + ticksOf(given - m_firstFrame), now);
}

/// From the next frame on, at that time, it is the sound that is followed.
void PlaybackClock::follow(std::int64_t time)
{
    m_sound->drop();
    m_mode = Mode::Sound;
    m_firstFrame = std::int64_t(m_sound->given());
    m_firstTime = time;
    m_isFirstPlaced = false;
    m_silence = 0;
}

void PlaybackClock::giveWaiting()
{
    while (!m_waiting.empty() && give(&m_waiting.front())) {
        m_waiting.pop_front();
        m_isFirstPlaced = false;
    }
}

bool PlaybackClock::give(DecodedSound *piece)
{
    const std::size_t channels = form().channels;
    const auto given = std::int64_t(m_sound->given());
    if (!piece->time && given == m_firstFrame)
        piece->time = firstSound();
    if (!std::exchange(m_isFirstPlaced, true) && piece->time) {
        const std::int64_t off = *piece->time - (m_firstTime + ticksOf(given - m_firstFrame));
        // The begin of a run is exact.
        const std::int64_t allowed = given == m_firstFrame ? 0 : tolerance;
        if (off > allowed && off < farthest) {
            m_silence = framesOf(off);
        } else if (off < -allowed && off > -farthest) {
            const std::size_t left = std::min(std::size_t(framesOf(-off)) * channels, piece->samples.size());
            piece->samples.erase(piece->samples.begin(), piece->samples.begin() + std::ptrdiff_t(left));
            m_framesWaiting -= std::int64_t(left / channels);
        }
    }
    constexpr std::size_t framesOfSilence = 1024, mostChannels = 6;
    constexpr std::array<float, framesOfSilence * mostChannels> silence{};
    while (m_silence > 0) {
        const auto count = std::min(std::size_t(m_silence), framesOfSilence);
        const std::size_t taken = m_sound->give({silence.data(), count * channels});
        if (taken == 0)
            return false;
        m_silence -= std::int64_t(taken);
    }
    const std::size_t taken = m_sound->give(piece->samples);
    m_framesWaiting -= std::int64_t(taken);
    piece->samples.erase(piece->samples.begin(), piece->samples.begin() + std::ptrdiff_t(taken * channels));
    return piece->samples.empty();
}

} // namespace Tessaron
