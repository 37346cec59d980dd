#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Tessaron
{

/// How loud a sound is, by EBU R128.
struct SoundLoudness {
    std::optional<double> loudness; ///< programme loudness, LUFS; none for silence and sounds under 0.4 s
    double truePeak = 0; ///< of the louder channel, 1 is full scale

    /// dBTP; minus infinity for silence.
    [[nodiscard]] double truePeakLevel() const;
};

/// What normalized sound has (ReplayGain 2.0's reference level; EBU R128's -23 LUFS are far below all other CDs).
inline constexpr double normalLoudness = -18; // LUFS
/// What it never exceeds (EBU R128, maximum permitted true peak level).
inline constexpr double highestTruePeak = -1; // dBTP

/// The factor that brings a sound to normalLoudness, or as near as highestTruePeak lets it. 1 for silence.
[[nodiscard]] double normalizingGain(const SoundLoudness &loudness);

/// Measures the sound of a CD. Its memory does not grow with the sound. One thread at a time.
class LoudnessMeter
{
public:
    /// Null when memory runs out.
    [[nodiscard]] static std::unique_ptr<LoudnessMeter> create();
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter &) = delete;
    LoudnessMeter &operator=(const LoudnessMeter &) = delete;

    /// Samples of both channels, left before right; false when memory runs out.
    [[nodiscard]] bool add(std::span<const float> samples);

    [[nodiscard]] SoundLoudness loudness() const;
    /// Of all of them together, as if they were one sound.
    [[nodiscard]] static SoundLoudness loudnessOf(const std::vector<std::unique_ptr<LoudnessMeter>> &meters);

private:
    struct State;
    explicit LoudnessMeter(std::unique_ptr<State> state);

    const std::unique_ptr<State> m_state;
};

} // namespace Tessaron
