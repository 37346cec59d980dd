#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"
#include "platform/quicktime/AudioDamage.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

namespace Tessaron
{

class SoundHelper;
class SoundHelpers;

namespace SoundProtocol
{
struct Message;
}

/// The length of a sound in samples of both channels: 44,100 in a second, 588 in a frame of a CD.
struct CDAudioLength {
    std::uint64_t samples = 0;
    /// False where the file does not say it to the sample, which MPEG program and transport streams, Matroska and ASF
    /// never do; CDSound::countSamples() finds out.
    bool isExact = false;
};

/// What numbers the samples are.
enum class CDSampleForm : std::uint8_t {
    Int16, ///< as on the disc: signed, the lower byte first
    Float32, ///< before they are rounded, for measuring; 1 is full scale, and what is louder is not cut off
};

struct CDSoundOptions {
    CDSampleForm form = CDSampleForm::Int16;
    double gain = 1; ///< each sample is multiplied by it, before it is rounded
    /// Have the length counted where the file does not say it, which takes as long as decoding all of it.
    bool needsExactLength = false;
    /// Where programs that decode come from, and go back to; null to start one for this sound alone.
    SoundHelpers *helpers = nullptr;
};

/// The sound of an audio or movie file as that of a CD (IEC 60908), read in order: 44,100 samples a second of two
/// channels, left before right. One thread at a time.
///
/// It is decoded by a program of the framework, DummyRedbook, which works ahead by up to a second: a file that makes a
/// decoder crash, or take all memory, is an error (decoderHasEnded, MediaErrors.h). How it is decoded says
/// CDAudioDecoder.
class CDSound
{
public:
    static constexpr std::size_t bytesPerSample = 4; ///< both channels, Int16
    static constexpr std::size_t bytesPerFloatSample = 8; ///< both channels, Float32
    static constexpr std::uint32_t samplesPerSecond = 44100;
    static constexpr std::uint32_t samplesPerFrame = 588; ///< 1/75 s
    static constexpr std::uint32_t bytesPerFrame = 2352;

    /// Opens a local, regular file, reading all of it when only that tells its length.
    [[nodiscard]] static Result<std::unique_ptr<CDSound>>
    openFile(const QByteArray &path, const std::stop_token &stop = {}, const CDSoundOptions &options = {});

    /// The exact length, found by decoding all of the file where nothing less tells it. `helpers` as in the options.
    [[nodiscard]] static Result<std::uint64_t> countSamples(const QByteArray &path, const std::stop_token &stop = {},
                                                            SoundHelpers *helpers = nullptr);

    ~CDSound();
    CDSound(const CDSound &) = delete;
    CDSound &operator=(const CDSound &) = delete;

    [[nodiscard]] CDAudioLength length() const { return m_length; }

    /// What the file says of the sound: names in lower case ("title", "artist", "album", "album_artist", "composer",
    /// "isrc" and whatever else there is) with their texts. Texts above 8,192 characters are left out.
    [[nodiscard]] const QMap<QString, QString> &tags() const { return m_tags; }

    /// The next samples, `atMost` bytes of them and whole ones; empty only at the end. They are valid until the next
    /// call. An error ends the sound: the system failed a read, the decoder crashed, or the reading was cancelled.
    [[nodiscard]] Result<std::span<const char>> next(std::size_t atMost);

    /// Puts up to `samples` samples into the buffer; how many, fewer than asked for only at the end.
    [[nodiscard]] Result<std::size_t> read(char *buffer, std::size_t samples);

    /// What was broken so far; complete once next() or read() has come to the end.
    [[nodiscard]] const AudioDamageReport &damage();

private:
    CDSound(QByteArray path, std::unique_ptr<SoundHelper> helper, const std::stop_token &stop,
            const CDSoundOptions &options);

    [[nodiscard]] NSError open();
    [[nodiscard]] NSError failure();
    [[nodiscard]] bool askForSound();
    /// The answer to a request other than for sound. What comes before it is sound that was asked for earlier.
    [[nodiscard]] Result<QByteArray> recordFor(const SoundProtocol::Message &request);
    [[nodiscard]] NSError takeNextSound();

    const QByteArray m_path;
    const CDSoundOptions m_options;
    const std::stop_token m_stop;
    std::unique_ptr<SoundHelper> m_helper;
    using OnStop = std::stop_callback<std::function<void()>>;
    std::unique_ptr<OnStop> m_onStop; ///< interrupts the helper; goes first
    CDAudioLength m_length;
    QMap<QString, QString> m_tags;
    std::span<const char> m_rest; ///< of the slot that is read
    std::size_t m_asked = 0; ///< slots that were asked for and have not come
    std::uint32_t m_nextSlot = 0; ///< to ask for
    std::deque<SoundProtocol::Message> m_come; ///< and were not read yet
    bool m_isAtEnd = false;
    std::uint64_t m_damagedPlaces = 0;
    AudioDamageReport m_damage;
};

} // namespace Tessaron
