#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/AudioDamage.h"
#include "platform/quicktime/CDSound.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>

namespace Tessaron
{

struct CDAudioDecoderOptions {
    CDSampleForm form = CDSampleForm::Int16;
    double gain = 1; ///< see CDSoundOptions
    std::uint32_t rate = CDSound::samplesPerSecond; ///< samples a second of what comes out
};

/// Decodes the sound of an audio or movie file to that of a CD (IEC 60908): 44,100 samples a second of two channels,
/// each a signed 16-bit integer, the lower byte first, left before right.
///
/// - Sound that has this form already comes out bit for bit, unless there is a gain; all other is resampled with soxr's
///   best quality and dithered (triangular). As Float32 it comes as it is before the dithering.
/// - What encoders put before and behind the sound is left out to the sample, where the file says how much that is: the
///   LAME tag of MP3, edit lists and iTunSMPB of MP4 and QuickTime, the pre-skip and the end of Opus and Vorbis.
/// - Mono goes to both channels at full level. More than two channels are mixed with the coefficients of ITU-R BS.775,
///   turned down so far that nothing clips.
/// - What cannot be decoded in the middle becomes silence of the same length and is told by damage().
///
/// The file can be anything: it leads to no other file and to no network. One thread at a time.
class CDAudioDecoder
{
public:
    static constexpr std::size_t bytesPerSample = 4; ///< both channels
    static constexpr std::uint32_t samplesPerSecond = 44100;
    static constexpr std::size_t bytesPerFrame = 2352; ///< 1/75 s

    /// Opens a local, regular file, reading all of it when only that tells its length. Errors have the domain
    /// NSOSStatusErrorDomain: noMovieFound for what holds no sound, noCodecErr for what cannot be decoded,
    /// userCanceledErr, and those of the file system.
    [[nodiscard]] static Result<std::unique_ptr<CDAudioDecoder>>
    openFile(const QByteArray &path, std::stop_token stop = {}, const CDAudioDecoderOptions &options = {});

    /// The exact length, found by decoding all of the file where nothing less tells it.
    [[nodiscard]] static Result<std::uint64_t> countSamples(const QByteArray &path, std::stop_token stop = {});

    ~CDAudioDecoder();
    CDAudioDecoder(const CDAudioDecoder &) = delete;
    CDAudioDecoder &operator=(const CDAudioDecoder &) = delete;

    [[nodiscard]] CDAudioLength length() const;

    /// Bytes of both channels: 4, or 8 for Float32.
    [[nodiscard]] std::size_t sizeOfSample() const;

    /// Puts up to `samples` samples into the buffer; how many, 0 only at the end. An error ends the
    /// sound: the system failed a read, or the decoder was cancelled.
    [[nodiscard]] Result<std::size_t> read(char *buffer, std::size_t samples);

    /// What was broken so far; complete once read() has given 0.
    [[nodiscard]] const AudioDamageReport &damage() const;

    /// As CDSound::tags().
    [[nodiscard]] QMap<QString, QString> tags() const;

    /// How much of the sound was read, from 0 to 1; by the length of the file where that of the sound is not known.
    [[nodiscard]] double progress() const;

private:
    struct Private;
    explicit CDAudioDecoder(std::unique_ptr<Private> priv);

    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
