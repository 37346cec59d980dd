#include "platform/dvdplayback/SharedSound.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>

namespace Tessaron
{

namespace
{

/// 2.7 seconds of two channels, 0.9 of six.
constexpr std::uint64_t capacity = std::uint64_t(1) << 18;
constexpr std::size_t longestReason = 256;
/// Years of sound: what has more is nonsense that another side wrote.
constexpr std::uint64_t mostFrames = std::uint64_t(1) << 45;
constexpr std::int64_t furthestOrigin = std::int64_t(1) << 62;
constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;

bool isUsable(const SoundForm &form)
{
    return (form.channels == 1 || form.channels == 2 || form.channels == 6) && form.rate >= 8000
        && form.rate <= 192'000;
}

float usableGain(float gain)
{
    return std::isfinite(gain) ? std::clamp(gain, 0.0F, 1.0F) : 0.0F;
}

std::int64_t nanosecondsOf(SharedSound::Clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

/// Without an overflow in any process's life.
std::int64_t nanosecondsOfFrames(std::int64_t frames, std::uint32_t rate)
{
    return frames / rate * nanosecondsInSecond + frames % rate * nanosecondsInSecond / rate;
}

std::int64_t framesInNanoseconds(std::int64_t time, std::uint32_t rate)
{
    return time / nanosecondsInSecond * rate
        + std::llround(double(time % nanosecondsInSecond) * rate / double(nanosecondsInSecond));
}

} // namespace

struct SharedSound::Layout {
    // Of the program that plays, or of the session in its place.
    std::atomic<std::uint32_t> device; ///< a SoundDevice
    std::atomic<std::uint32_t> rate;
    std::atomic<std::uint32_t> channels;
    std::atomic<std::uint64_t> taken;
    std::atomic<std::int64_t> origin; ///< when frame 0 would have been heard, by what is heard now; nanoseconds
    std::atomic<std::int64_t> asked; ///< nanoseconds; 0 for not yet
    std::array<char, longestReason> reason; ///< before the device is told
    // Of the helper.
    std::atomic<std::uint64_t> given;
    std::atomic<std::uint64_t> droppedTo; ///< what was given before is not to be played
    std::atomic<std::uint32_t> isPaused;
    // Of the session.
    std::atomic<float> gain;

    float samples[capacity]; // frame after frame
};

SharedSound::SharedSound(SharedMemory memory)
    : m_memory(std::move(memory))
    , m_layout(static_cast<Layout *>(m_memory.begin()))
{
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<float>::is_always_lock_free);
    m_given = m_layout->given;
}

Result<std::unique_ptr<SharedSound>> SharedSound::create()
{
    Result<SharedMemory> memory = SharedMemory::create("tessaron-dvd-sound", sizeof(Layout));
    if (!memory)
        return memory.error();
    std::unique_ptr<SharedSound> sound(new SharedSound(*std::move(memory)));
    sound->setGain(1);
    return sound;
}

Result<std::unique_ptr<SharedSound>> SharedSound::attach(UniqueDescriptor descriptor)
{
    Result<SharedMemory> memory = SharedMemory::attach(std::move(descriptor), sizeof(Layout));
    if (!memory)
        return memory.error();
    return std::unique_ptr<SharedSound>(new SharedSound(*std::move(memory)));
}

void SharedSound::setGain(float gain)
{
    m_layout->gain = gain;
}

QString SharedSound::reason() const
{
    const auto &reason = m_layout->reason;
    return QString::fromUtf8(QByteArray(reason.data(), qsizetype(reason.size())).constData());
}

void SharedSound::tellAbsent(const QByteArray &why)
{
    const QByteArray text = why.left(qsizetype(longestReason) - 1);
    std::copy(text.begin(), text.end(), m_layout->reason.begin());
    m_layout->device = std::uint32_t(SoundDevice::Absent);
}

// The side that plays.

void SharedSound::tellOpen(const SoundForm &form, std::uint32_t latency)
{
    m_form = form;
    m_latency = latency;
    m_gain = usableGain(m_layout->gain);
    m_layout->rate = form.rate;
    m_layout->channels = form.channels;
    if (isUsable(form))
        m_layout->device = std::uint32_t(SoundDevice::Open);
    else
        tellAbsent("it takes " + QByteArray::number(form.rate) + " samples a second on "
                   + QByteArray::number(form.channels) + " channels");
}

void SharedSound::take(std::span<float> samples, Clock::time_point now)
{
    const std::uint64_t framesInAll = capacity / m_form.channels;
    const std::uint64_t given = m_layout->given.load(std::memory_order_acquire);
    m_taken = std::max(m_taken, std::min(m_layout->droppedTo.load(std::memory_order_acquire), given));
    if (given < m_taken || given - m_taken > framesInAll)
        m_taken = std::min(given, mostFrames);
    const bool isPaused = m_layout->isPaused != 0;
    const std::uint64_t count =
        isPaused || given > mostFrames ? 0 : std::min<std::uint64_t>(samples.size() / m_form.channels, given - m_taken);
    const std::int64_t time = nanosecondsOf(now);
    // In silence the device goes on to play what it holds back.
    if (count > 0)
        m_layout->origin = time - nanosecondsOfFrames(std::int64_t(m_taken) - m_latency, m_form.rate);
    m_layout->asked = time;
    // A step of the volume would be a click: it is spread over what is taken.
    const float gain = usableGain(m_layout->gain);
    const float step = count > 0 ? (gain - m_gain) / float(count) : 0;
    float *out = samples.data();
    std::uint64_t place = m_taken % framesInAll;
    for (std::uint64_t frame = 0; frame < count; ++frame) {
        const float *in = m_layout->samples + place * m_form.channels;
        place = place + 1 < framesInAll ? place + 1 : 0;
        m_gain = frame + 1 < count ? m_gain + step : gain;
        for (std::uint32_t channel = 0; channel < m_form.channels; ++channel)
            *out++ = std::isfinite(in[channel]) ? in[channel] * m_gain : 0.0F;
    }
    std::fill(out, samples.data() + samples.size(), 0.0F);
    m_taken += count;
    m_layout->taken.store(m_taken, std::memory_order_release);
}

// The helper's.

SoundDevice SharedSound::device() const
{
    const std::uint32_t device = m_layout->device;
    return device <= std::uint32_t(SoundDevice::Absent) ? static_cast<SoundDevice>(device) : SoundDevice::Absent;
}

SoundForm SharedSound::form() const
{
    const SoundForm form = {m_layout->rate, m_layout->channels};
    return isUsable(form) ? form : SoundForm();
}

std::size_t SharedSound::room() const
{
    const std::uint64_t framesInAll = capacity / form().channels;
    const std::uint64_t taken = m_layout->taken.load(std::memory_order_acquire);
    const std::uint64_t waiting = taken <= m_given ? m_given - taken : 0;
    return std::size_t(framesInAll - std::min(waiting, framesInAll));
}

std::size_t SharedSound::give(std::span<const float> samples)
{
    const std::uint32_t channels = form().channels;
    const std::uint64_t framesInAll = capacity / channels;
    const std::size_t count = std::min(samples.size() / channels, room());
    const std::uint64_t place = m_given % framesInAll;
    const std::uint64_t toTheEnd = std::min<std::uint64_t>(count, framesInAll - place);
    float *const ring = m_layout->samples;
    std::copy_n(samples.data(), toTheEnd * channels, ring + place * channels);
    std::copy_n(samples.data() + toTheEnd * channels, (count - toTheEnd) * channels, ring);
    m_given += count;
    m_layout->given.store(m_given, std::memory_order_release);
    return count;
}

void SharedSound::drop()
{
    m_layout->droppedTo.store(m_given, std::memory_order_release);
}

void SharedSound::setPaused(bool isPaused)
{
    m_layout->isPaused = isPaused ? 1 : 0;
}

std::optional<std::int64_t> SharedSound::heard(Clock::time_point now) const
{
    // In this order: what has been taken was so by the origin that is read behind it.
    const std::uint64_t taken = m_layout->taken.load(std::memory_order_acquire);
    if (taken == 0)
        return std::nullopt;
    const std::int64_t origin = std::clamp(m_layout->origin.load(), -furthestOrigin, furthestOrigin);
    const std::int64_t frame = framesInNanoseconds(nanosecondsOf(now) - origin, form().rate);
    return std::min(frame, std::int64_t(std::min(taken, m_given)));
}

SharedSound::Clock::time_point SharedSound::lastAsked() const
{
    return Clock::time_point(std::chrono::nanoseconds(m_layout->asked));
}

} // namespace Tessaron
