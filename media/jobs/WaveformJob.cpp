#include "imaging/jobs/OneStepWork.h"
#include "imaging/jobs/SoundFileError.h"
#include "platform/quicktime/CDSound.h"
#include <TessaronClasses/WaveformJob.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <span>

namespace Tessaron
{

namespace
{

constexpr std::size_t pieceSize = std::size_t(64) * CDSound::bytesPerFrame;

/// Gathers the peaks of sound that comes piece by piece.
class PeakGatherer
{
public:
    explicit PeakGatherer(std::size_t mostPeaks)
        : m_mostPeaks(std::max<std::size_t>(mostPeaks, 2))
    {
    }

    /// Whole samples of both channels, 16 bits each.
    void add(std::span<const char> bytes)
    {
        while (!bytes.empty()) {
            const std::uint64_t whole = std::uint64_t(m_waveform.framesPerPeak) * CDSound::samplesPerFrame;
            const std::size_t count =
                std::size_t(std::min<std::uint64_t>(whole - m_inPeak, bytes.size() / CDSound::bytesPerSample));
            if (count == 0)
                return;
            if (m_inPeak == 0)
                m_waveform.peaks.push_back({});
            measure(bytes.first(count * CDSound::bytesPerSample));
            bytes = bytes.subspan(count * CDSound::bytesPerSample);
            m_waveform.samples += count;
            m_inPeak += count;
            if (m_inPeak < whole)
                continue;
            m_inPeak = 0;
            if (m_waveform.peaks.size() == m_mostPeaks)
                halve();
        }
    }

    [[nodiscard]] Waveform take() { return std::move(m_waveform); }

private:
    void measure(std::span<const char> bytes)
    {
        std::int16_t lowest = 0;
        std::int16_t highest = 0;
        for (std::size_t at = 0; at + sizeof(std::int16_t) <= bytes.size(); at += sizeof(std::int16_t)) {
            std::int16_t value = 0;
            std::memcpy(&value, bytes.data() + at, sizeof value);
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
        }
        constexpr int scale = 256;
        WaveformPeak &peak = m_waveform.peaks.back();
        peak.lowest = std::min(peak.lowest, std::int8_t(lowest / scale));
        peak.highest = std::max(peak.highest, std::int8_t(highest / scale));
    }

    /// The sound is longer than there is room for: each peak stands for two.
    void halve()
    {
        std::vector<WaveformPeak> &peaks = m_waveform.peaks;
        for (std::size_t number = 0; number < peaks.size(); number += 2) {
            const WaveformPeak &one = peaks[number];
            const WaveformPeak &other = peaks[std::min(number + 1, peaks.size() - 1)];
            peaks[number / 2] = {std::min(one.lowest, other.lowest), std::max(one.highest, other.highest)};
        }
        const bool isOdd = peaks.size() % 2 != 0;
        m_inPeak = isOdd ? std::uint64_t(m_waveform.framesPerPeak) * CDSound::samplesPerFrame : 0;
        peaks.resize((peaks.size() + 1) / 2);
        m_waveform.framesPerPeak *= 2;
    }

    const std::size_t m_mostPeaks;
    Waveform m_waveform;
    std::uint64_t m_inPeak = 0; ///< samples that the last peak stands for so far
};

} // namespace

class WaveformJob::Work final : public OneStepWork<WaveformResult>
{
public:
    explicit Work(WaveformOrder given)
        : m_order(std::move(given))
    {
    }

    [[nodiscard]] DiscJobProgress progress() const override
    {
        DiscJobProgress progress;
        progress.phase = DiscJobPhase::Measuring;
        progress.bytesDone = m_bytesDone;
        return progress;
    }

private:
    [[nodiscard]] NSError run(const std::stop_token &stop) override
    {
        const Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(m_order.path, stop);
        if (!sound)
            return soundFileError(m_order.path, sound.error());
        PeakGatherer peaks(m_order.mostPeaks);
        for (;;) {
            const Result<std::span<const char>> piece = (*sound)->next(pieceSize);
            if (!piece)
                return soundFileError(m_order.path, piece.error());
            if (piece->empty())
                break;
            peaks.add(*piece);
            m_bytesDone += piece->size();
        }
        result.waveform = peaks.take();
        return {};
    }

    const WaveformOrder m_order;
    std::atomic<std::uint64_t> m_bytesDone = 0;
};

WaveformJob::WaveformJob(WaveformOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

WaveformJob::~WaveformJob() = default;

const WaveformResult &WaveformJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void WaveformJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
