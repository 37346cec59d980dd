#include "tests/imaging/jobs/JobRun.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/WaveformJob.h>

#include <algorithm>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t samplesPerFrame = 588;

WaveformResult waveformOf(const WaveformOrder &order)
{
    WaveformJob job(order);
    return JobRun<WaveformJob, WaveformResult>(job).result;
}

/// What the peaks of these samples are, by the plainest of ways.
std::vector<WaveformPeak> peaksOf(const Samples &samples, std::size_t framesPerPeak)
{
    std::vector<WaveformPeak> peaks;
    const std::size_t step = framesPerPeak * samplesPerFrame * 2;
    for (std::size_t first = 0; first < samples.size(); first += step) {
        const auto begin = samples.begin() + std::ptrdiff_t(first);
        const auto end = samples.begin() + std::ptrdiff_t(std::min(first + step, samples.size()));
        const auto [lowest, highest] = std::minmax_element(begin, end);
        peaks.push_back({std::int8_t(std::min<int>(*lowest, 0) / 256), std::int8_t(std::max<int>(*highest, 0) / 256)});
    }
    return peaks;
}

} // namespace

TEST(WaveformJob, peaks_areThoseOfEachFrame)
{
    const TemporaryTree tree;
    Samples samples = tone(100 * samplesPerFrame + 100);
    std::fill(samples.begin(), samples.begin() + 20 * samplesPerFrame * 2, std::int16_t(0));
    samples[30 * samplesPerFrame * 2] = -32768;
    samples[31 * samplesPerFrame * 2 + 1] = 32767;
    const WaveformResult result = waveformOf({tree.makeFile("a.wav", waveFile(samples))});
    ASSERT_FALSE(result.error) << result.error.localizedDescription().toStdString();
    EXPECT_EQ(result.waveform.samples, samples.size() / 2);
    EXPECT_EQ(result.waveform.framesPerPeak, 1u);
    EXPECT_EQ(result.waveform.peaks, peaksOf(samples, 1));
    EXPECT_EQ(result.waveform.peaks[5], WaveformPeak());
    EXPECT_EQ(result.waveform.peaks[30].lowest, -128);
    EXPECT_EQ(result.waveform.peaks[31].highest, 127);
}

TEST(WaveformJob, longSounds_takeNoMoreThanWasAllowed)
{
    const TemporaryTree tree;
    const Samples samples = noise(103 * samplesPerFrame + 7);
    const QByteArray path = tree.makeFile("a.wav", waveFile(samples));
    for (const std::size_t most : {std::size_t(64), std::size_t(33), std::size_t(16), std::size_t(2)}) {
        const WaveformResult result = waveformOf({path, most});
        ASSERT_FALSE(result.error);
        EXPECT_LE(result.waveform.peaks.size(), most);
        EXPECT_EQ(result.waveform.samples, samples.size() / 2);
        EXPECT_EQ(result.waveform.peaks, peaksOf(samples, result.waveform.framesPerPeak)) << most;
    }
}

TEST(WaveformJob, fileThatIsNoSound_isAnError)
{
    const TemporaryTree tree;
    const WaveformResult result = waveformOf({tree.makeFile("letter.txt", "Dear reader,\n")});
    EXPECT_TRUE(isDiscJobError(result.error, DiscJobErrorCode::Source));
    EXPECT_TRUE(result.waveform.peaks.empty());
}
