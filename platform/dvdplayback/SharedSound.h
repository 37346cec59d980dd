#pragma once

#include "platform/dvdplayback/SharedMemory.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace Tessaron
{

/// What the device that plays takes: its rate in samples a second, and channels, as 32-bit floating point from -1 to 1.
struct SoundForm {
    std::uint32_t rate = 48'000;
    std::uint32_t channels = 2; ///< in the order of WAVE files: 1, 2 or 6 (left, right, centre, bass, two behind)

    friend bool operator==(const SoundForm &, const SoundForm &) = default;
};

enum class SoundDevice : std::uint32_t {
    Opening, ///< not known yet
    Open,
    Absent, ///< no device was found, or it cannot be opened
};

/// Memory that three processes share: the helper puts in the sound of a disc, the program that plays takes it out, the
/// session sets the volume. A frame is one sample for each channel; frames are counted from the begin. Each number in
/// it has one side that writes it. No side believes what it reads: numbers are checked, samples may be anything.
class SharedSound
{
public:
    using Clock = std::chrono::steady_clock;

    /// For the session.
    [[nodiscard]] static Result<std::unique_ptr<SharedSound>> create();
    /// For the other two, which were given the descriptor.
    [[nodiscard]] static Result<std::unique_ptr<SharedSound>> attach(UniqueDescriptor descriptor);

    [[nodiscard]] int descriptor() const { return m_memory.descriptor(); }

    // For the session.

    /// From 0 to 1: what each sample is multiplied with on its way to the device.
    void setGain(float gain);
    /// Why there is no device, in words of the system.
    [[nodiscard]] QString reason() const;
    /// Said by the session where the program that plays cannot be started.
    void tellAbsent(const QByteArray &why);

    // For the program that plays. The device is told once, before the first take().

    /// `latency` is how many frames the device holds between take() and being heard.
    void tellOpen(const SoundForm &form, std::uint32_t latency);
    /// Fills `samples`, a multiple of the channels, with what is to be played next; silence where there is nothing. One
    /// thread.
    void take(std::span<float> samples, Clock::time_point now);

    // For the helper, one thread.

    [[nodiscard]] SoundDevice device() const;
    /// Once the device is open.
    [[nodiscard]] SoundForm form() const;
    /// How many frames can be given now.
    [[nodiscard]] std::size_t room() const;
    /// Gives whole frames, as many as there is room for at most; how many frames were taken in.
    std::size_t give(std::span<const float> samples);
    /// How many frames have been given from the begin.
    [[nodiscard]] std::uint64_t given() const { return m_given; }
    /// Frames that were given and not taken are not played any more.
    void drop();
    /// Nothing is taken until the pause ends.
    void setPaused(bool isPaused);
    /// The number of the frame that is heard at a time, which is behind what was taken; absent before anything was.
    [[nodiscard]] std::optional<std::int64_t> heard(Clock::time_point now) const;
    /// When the device has last asked for sound: one that does not any more is as good as absent.
    [[nodiscard]] Clock::time_point lastAsked() const;

private:
    struct Layout;

    explicit SharedSound(SharedMemory memory);

    const SharedMemory m_memory;
    Layout *const m_layout;
    SoundForm m_form; ///< of the side that plays
    std::uint32_t m_latency = 0;
    std::uint64_t m_taken = 0;
    float m_gain = 0;
    std::uint64_t m_given = 0; ///< of the helper
};

} // namespace Tessaron
