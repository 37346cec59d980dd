#pragma once

#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QMetaType>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tessaron
{

/// The sound that is to be drawn.
struct WaveformOrder {
    QByteArray path; ///< of an audio or movie file; bytes
    /// How many peaks are kept at most: those of longer sounds stand for 2, 4, 8 … frames each.
    std::size_t mostPeaks = std::size_t(1) << 20;
};

/// The lowest and the highest sample of both channels in a stretch of sound; 127 is full scale.
struct WaveformPeak {
    std::int8_t lowest = 0;
    std::int8_t highest = 0;

    friend bool operator==(const WaveformPeak &, const WaveformPeak &) = default;
};

/// How a sound looks. A value.
struct Waveform {
    std::vector<WaveformPeak> peaks; ///< the last one may stand for less than the others
    std::uint32_t framesPerPeak = 1; ///< 1, 2, 4, 8 …; a second has 75 frames
    std::uint64_t samples = 0; ///< of the whole file, at 44,100 Hz
};

/// How a look at a sound has ended.
struct WaveformResult {
    NSError error; ///< null when the waveform is whole; domain and codes are those of DiscJobErrors.h
    Waveform waveform;
};

/// Decodes a file, in a program of its own, and measures how it looks. Memory is bounded by `mostPeaks`. See DiscJob
/// for threads and lifetime; the progress counts bytes of CD sound.
class TESSARON_EXPORT WaveformJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit WaveformJob(WaveformOrder order, QObject *parent = nullptr);
    ~WaveformJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const WaveformResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::WaveformResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::WaveformResult)
