#include "platform/quicktime/SampleDescriptions.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/NSStringEncoding.h"
#include "platform/quicktime/AtomSource.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace Tessaron
{

namespace
{

// Bytes from the begin of a description.
constexpr qsizetype formatAt = 4;
namespace Sound
{
constexpr qsizetype version = 16, channels = 24, sampleSize = 26, sampleRate = 32;
constexpr qsizetype size = 36; ///< of version 0
namespace Version1
{
constexpr qsizetype samplesPerPacket = 36, bytesPerPacket = 40, bytesPerFrame = 44, size = 52;
}
namespace Version2
{
constexpr qsizetype sampleRate = 40, channels = 48, bitsPerChannel = 56, bytesPerPacket = 64, framesPerPacket = 68,
                    size = 72;
}
} // namespace Sound
namespace Image
{
constexpr qsizetype width = 32, height = 34, frameCount = 48, name = 50, depth = 82;
constexpr qsizetype longestName = 31;
constexpr qsizetype size = 86;
} // namespace Image

template <typename Integer>
Integer bigEndian(const QByteArray &bytes, qsizetype at)
{
    return loadBigEndian<Integer>(reinterpret_cast<const std::uint8_t *>(bytes.constData()) + at);
}

bool isVersion2(const QByteArray &bytes)
{
    return bigEndian<std::uint16_t>(bytes, Sound::version) == 2 && bytes.size() >= Sound::Version2::size;
}

bool isVersion1(const QByteArray &bytes)
{
    return bigEndian<std::uint16_t>(bytes, Sound::version) == 1 && bytes.size() >= Sound::Version1::size;
}

/// The description as version 2 has it: numbers of 32 bits, and a rate of floating point.
void readVersion2(const QByteArray &bytes, QTSoundDescription *sound)
{
    const auto rate = std::bit_cast<double>(bigEndian<std::uint64_t>(bytes, Sound::Version2::sampleRate));
    const bool isRate = std::isfinite(rate) && rate >= 0 && rate <= UINT32_MAX;
    sound->sampleRate = isRate ? std::uint32_t(rate) : 0;
    const auto shortOf = [](std::uint32_t value) { return std::int16_t(std::min<std::uint32_t>(value, INT16_MAX)); };
    sound->numChannels = shortOf(bigEndian<std::uint32_t>(bytes, Sound::Version2::channels));
    sound->sampleSize = shortOf(bigEndian<std::uint32_t>(bytes, Sound::Version2::bitsPerChannel));
}

bool isPcm(std::uint32_t format)
{
    static constexpr std::array codes = {
        std::uint32_t(0),          fourCharacterCode("raw "), fourCharacterCode("NONE"),
        fourCharacterCode("twos"), fourCharacterCode("sowt"), fourCharacterCode("in24"),
        fourCharacterCode("in32"), fourCharacterCode("fl32"), fourCharacterCode("fl64")};
    return std::find(codes.begin(), codes.end(), format) != codes.end();
}

/// In version 1, the field for bits says 16 whatever there is; of samples that are not compressed, another one tells.
void readVersion1(const QByteArray &bytes, QTSoundDescription *sound)
{
    const std::uint32_t size = bigEndian<std::uint32_t>(bytes, Sound::Version1::bytesPerPacket);
    const bool isOneSample = bigEndian<std::uint32_t>(bytes, Sound::Version1::samplesPerPacket) == 1;
    constexpr std::uint32_t longestSample = 8;
    if (isOneSample && isPcm(sound->dataFormat) && size > 0 && size <= longestSample)
        sound->sampleSize = std::int16_t(size * 8);
}

} // namespace

QString windowsMediaName(std::uint32_t code)
{
    if (code >> 8 == fourCharacterCode("\0WMA"))
        return QStringLiteral("Windows Media Audio");
    return code >> 8 == fourCharacterCode("\0WMV") ? QStringLiteral("Windows Media Video") : QString();
}

std::optional<QTSoundDescription> soundDescription(const QByteArray &bytes, std::int64_t length,
                                                   std::uint32_t mediaTimeScale)
{
    if (bytes.size() < Sound::size)
        return {};
    QTSoundDescription sound;
    sound.dataFormat = bigEndian<std::uint32_t>(bytes, formatAt);
    sound.descSize = length;
    sound.numChannels = std::int16_t(bigEndian<std::uint16_t>(bytes, Sound::channels));
    sound.sampleSize = std::int16_t(bigEndian<std::uint16_t>(bytes, Sound::sampleSize));
    sound.sampleRate = bigEndian<std::uint32_t>(bytes, Sound::sampleRate) >> 16;
    if (isVersion2(bytes))
        readVersion2(bytes, &sound);
    else if (isVersion1(bytes))
        readVersion1(bytes, &sound);
    // 88,200 hertz and more have no room; a 0 stands there, and the media counts in samples.
    if (sound.sampleRate == 0)
        sound.sampleRate = mediaTimeScale;
    sound.name = windowsMediaName(sound.dataFormat);
    return sound;
}

std::optional<QTImageDescription> imageDescription(const QByteArray &bytes)
{
    if (bytes.size() < Image::size)
        return {};
    QTImageDescription image;
    image.codecType = bigEndian<std::uint32_t>(bytes, formatAt);
    image.width = std::int16_t(bigEndian<std::uint16_t>(bytes, Image::width));
    image.height = std::int16_t(bigEndian<std::uint16_t>(bytes, Image::height));
    image.frameCount = std::int16_t(bigEndian<std::uint16_t>(bytes, Image::frameCount));
    image.depth = std::int16_t(bigEndian<std::uint16_t>(bytes, Image::depth));
    const auto length = std::min<qsizetype>(std::uint8_t(bytes[Image::name]), Image::longestName);
    const QByteArray name = bytes.mid(Image::name + 1, length);
    // Programs of today write UTF-8, older ones the characters of their time.
    image.name = name.isValidUtf8() ? QString::fromUtf8(name) : stringWithBytes(name, NSStringEncoding::MacOSRoman);
    if (image.name.isEmpty())
        image.name = windowsMediaName(image.codecType);
    return image;
}

std::optional<std::uint64_t> bytesOfSoundSamples(const QByteArray &bytes, std::uint64_t samples)
{
    if (bytes.size() < Sound::size)
        return {};
    std::uint64_t samplesInFrame = 1, bytesOfFrame = 0;
    if (isVersion2(bytes)) {
        bytesOfFrame = bigEndian<std::uint32_t>(bytes, Sound::Version2::bytesPerPacket);
        samplesInFrame = bigEndian<std::uint32_t>(bytes, Sound::Version2::framesPerPacket);
    } else if (isVersion1(bytes)) {
        bytesOfFrame = bigEndian<std::uint32_t>(bytes, Sound::Version1::bytesPerFrame);
        samplesInFrame = bigEndian<std::uint32_t>(bytes, Sound::Version1::samplesPerPacket);
    }
    if (bytesOfFrame == 0 && isPcm(bigEndian<std::uint32_t>(bytes, formatAt))) {
        const std::uint64_t bits = bigEndian<std::uint16_t>(bytes, Sound::sampleSize);
        bytesOfFrame = (bits + 7) / 8 * bigEndian<std::uint16_t>(bytes, Sound::channels);
        samplesInFrame = 1;
    }
    if (bytesOfFrame == 0 || samplesInFrame == 0)
        return {};
    // Both factors have 32 bits at most.
    return (samples + samplesInFrame - 1) / samplesInFrame * bytesOfFrame;
}

} // namespace Tessaron
