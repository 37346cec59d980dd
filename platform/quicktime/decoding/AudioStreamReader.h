#pragma once

#include "platform/quicktime/AudioDamage.h"
#include "platform/quicktime/decoding/HeardRun.h"
#include "platform/quicktime/decoding/MediaContainer.h"

#include <QMap>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Samples inside of a frame.
struct SampleRun {
    const AVFrame *frame = nullptr; ///< null at the end of the sound
    int first = 0;
    int count = 0;
};

/// Where its samples begin in each plane of the frame.
[[nodiscard]] std::vector<const std::uint8_t *> planesOf(const SampleRun &run);

/// The length of a stream in samples of its own rate.
struct SampleCount {
    std::int64_t samples = 0;
    bool isExact = false;
};

/// Decodes the best audio stream of a file to exactly the samples that are to be heard: what encoders put before and
/// behind them is left out, wherever the file says how much that is. What is broken becomes silence of the same length
/// and is reported. One thread at a time.
class AudioStreamReader
{
public:
    [[nodiscard]] static Result<std::unique_ptr<AudioStreamReader>> open(const QByteArray &path, std::stop_token stop);

    [[nodiscard]] int sampleRate() const { return m_stream->codecpar->sample_rate; }
    [[nodiscard]] SampleCount length() const { return m_length; }
    [[nodiscard]] const AVCodecParameters &parameters() const { return *m_stream->codecpar; }
    [[nodiscard]] const QByteArray &path() const { return m_container->path(); }
    /// As CDSound::tags().
    [[nodiscard]] QMap<QString, QString> tags() const;

    /// The next samples, valid until the next call. Rate, layout and format are those of the frame: a stream may change
    /// them on the way.
    [[nodiscard]] Result<SampleRun> next();

    [[nodiscard]] const AudioDamageReport &damage() const { return m_damage; }
    /// How much of the file was read, from 0 to 1.
    [[nodiscard]] double progress() const;

private:
    AudioStreamReader(std::unique_ptr<MediaContainer> container, AVStream *stream, CodecContext decoder);

    [[nodiscard]] NSError findLength(std::stop_token stop);
    void takeLengthOfVorbis(std::int64_t samplesInPackets);
    [[nodiscard]] NSError openDecoder();
    [[nodiscard]] Result<bool> decodeMore();
    void chooseWhoChecks();
    [[nodiscard]] Result<bool> feedDecoder();
    [[nodiscard]] bool isShortEndOfUnknownLength() const;
    void lookAtPacket();
    void lookForGap();
    [[nodiscard]] bool makeSilence(std::int64_t samples);
    [[nodiscard]] std::int64_t samplesOfPacket() const;
    [[nodiscard]] SampleRun heardPart();
    void lookAtEnd();
    void report(const QString &what);

    const std::unique_ptr<MediaContainer> m_container;
    AVStream *const m_stream; ///< the container's
    const CodecContext m_decoder;
    const Packet m_packet;
    const Frame m_frame;
    const Frame m_silence;

    SampleCount m_length;
    std::optional<MediaRun> m_run; ///< in ticks; the decoder's own skipping is off then
    std::int64_t m_missing = 0; ///< samples that a tag announces and no packet has
    std::int64_t m_position = 0; ///< samples decoded, heard or not
    std::int64_t m_heard = 0;
    std::int64_t m_pendingSilence = 0;
    std::optional<std::int64_t> m_nextTime; ///< where the next packet should begin, in ticks
    std::optional<std::int64_t> m_nextByte; ///< the same in the file
    bool m_hasPacket = false;
    bool m_isDraining = false;
    bool m_isAtEnd = false;
    AudioDamageReport m_damage;
};

} // namespace Tessaron
