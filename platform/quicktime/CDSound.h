#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/AudioDamage.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>

namespace Tessaron
{

class CDAudioDecoder;
struct MediaService;

/// The length of a sound in samples of both channels: 44,100 in a second, 588 in a frame of a CD.
struct CDAudioLength {
    std::uint64_t samples = 0;
    /// False where the file does not say it to the sample, which MPEG program and transport streams, Matroska and ASF
    /// never do; CDSound::countSamples() finds out.
    bool isExact = false;
};

/// The sound of an audio or movie file as that of a CD (IEC 60908), read in order: 44,100 samples a second of two
/// channels, each a signed 16-bit integer, the lower byte first, left before right. Decoded by the media module (see
/// QTMovie.h), which says how: CDAudioDecoder. One thread at a time.
class CDSound
{
public:
    static constexpr std::size_t bytesPerSample = 4; ///< both channels
    static constexpr std::uint32_t samplesPerSecond = 44100;
    static constexpr std::uint32_t samplesPerFrame = 588; ///< 1/75 s
    static constexpr std::uint32_t bytesPerFrame = 2352;

    /// Opens a local, regular file, reading all of it when only that tells its length.
    [[nodiscard]] static Result<std::unique_ptr<CDSound>> openFile(const QByteArray &path,
                                                                   const std::stop_token &stop = {});

    /// The exact length, found by decoding all of the file where nothing less tells it.
    [[nodiscard]] static Result<std::uint64_t> countSamples(const QByteArray &path, const std::stop_token &stop = {});

    ~CDSound();
    CDSound(const CDSound &) = delete;
    CDSound &operator=(const CDSound &) = delete;

    [[nodiscard]] CDAudioLength length() const;

    /// Puts up to `samples` samples (4 bytes each) into the buffer; how many, 0 only at the end. An error ends the
    /// sound: the system failed a read, or the reading was cancelled.
    [[nodiscard]] Result<std::size_t> read(char *buffer, std::size_t samples);

    /// What was broken so far; complete once read() has given 0.
    [[nodiscard]] const AudioDamageReport &damage() const;

    /// What the file says of the sound: names in lower case ("title", "artist", "album", "album_artist", "composer",
    /// "isrc" and whatever else there is) with their texts.
    [[nodiscard]] QMap<QString, QString> tags() const;

private:
    CDSound(const MediaService &service, CDAudioDecoder *decoder);

    const MediaService &m_service;
    CDAudioDecoder *const m_decoder; ///< the module's, closed by this object
};

} // namespace Tessaron
