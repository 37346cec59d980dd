#include "imaging/jobs/SoundLoudness.h"

#include "platform/quicktime/CDSound.h"

#include <algorithm>
#include <cmath>
#include <ebur128.h>

namespace Tessaron
{

namespace
{

constexpr unsigned int channels = 2;
constexpr double decibelsOfTenfold = 20;

/// The library says minus infinity where all blocks are below its gate.
std::optional<double> known(double loudness)
{
    return std::isfinite(loudness) ? std::optional(loudness) : std::nullopt;
}

double truePeakOf(ebur128_state *state)
{
    double highest = 0;
    for (unsigned int channel = 0; channel < channels; ++channel) {
        double peak = 0;
        if (ebur128_true_peak(state, channel, &peak) == EBUR128_SUCCESS)
            highest = std::max(highest, peak);
    }
    return highest;
}

} // namespace

double SoundLoudness::truePeakLevel() const
{
    return decibelsOfTenfold * std::log10(truePeak);
}

double normalizingGain(const SoundLoudness &loudness)
{
    if (!loudness.loudness || loudness.truePeak <= 0)
        return 1;
    const double wanted = normalLoudness - *loudness.loudness;
    const double allowed = highestTruePeak - loudness.truePeakLevel();
    return std::pow(10, std::min(wanted, allowed) / decibelsOfTenfold);
}

struct LoudnessMeter::State {
    explicit State(ebur128_state *made)
        : state(made)
    {
    }
    ~State() { ebur128_destroy(&state); }
    State(const State &) = delete;
    State &operator=(const State &) = delete;

    ebur128_state *state;
};

LoudnessMeter::LoudnessMeter(std::unique_ptr<State> state)
    : m_state(std::move(state))
{
}

LoudnessMeter::~LoudnessMeter() = default;

std::unique_ptr<LoudnessMeter> LoudnessMeter::create()
{
    // The histogram counts blocks by tenths of a decibel instead of keeping them all.
    constexpr int mode = EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK | EBUR128_MODE_HISTOGRAM;
    ebur128_state *const state = ebur128_init(channels, CDSound::samplesPerSecond, mode);
    if (!state)
        return nullptr;
    return std::unique_ptr<LoudnessMeter>(new LoudnessMeter(std::make_unique<State>(state)));
}

bool LoudnessMeter::add(std::span<const float> samples)
{
    return ebur128_add_frames_float(m_state->state, samples.data(), samples.size() / channels) == EBUR128_SUCCESS;
}

SoundLoudness LoudnessMeter::loudness() const
{
    SoundLoudness result;
    double loudness = 0;
    if (ebur128_loudness_global(m_state->state, &loudness) == EBUR128_SUCCESS)
        result.loudness = known(loudness);
    result.truePeak = truePeakOf(m_state->state);
    return result;
}

SoundLoudness LoudnessMeter::loudnessOf(const std::vector<std::unique_ptr<LoudnessMeter>> &meters)
{
    SoundLoudness result;
    std::vector<ebur128_state *> states;
    for (const std::unique_ptr<LoudnessMeter> &meter : meters) {
        states.push_back(meter->m_state->state);
        result.truePeak = std::max(result.truePeak, truePeakOf(meter->m_state->state));
    }
    double loudness = 0;
    if (ebur128_loudness_global_multiple(states.data(), states.size(), &loudness) == EBUR128_SUCCESS)
        result.loudness = known(loudness);
    return result;
}

} // namespace Tessaron
