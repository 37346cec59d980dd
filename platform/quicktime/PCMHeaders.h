#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// The form of the samples behind a header: whole frames of 16 bits a channel.
struct PCMForm {
    std::uint32_t samplesPerSecond = 44100;
    std::uint16_t channels = 2;

    [[nodiscard]] std::uint32_t bytesPerFrame() const { return channels * 2U; }
};

/// The header of a WAVE file with this number of bytes of samples. A size beyond 32 bits makes it an RF64 file (EBU
/// Tech 3306), whose true sizes are in a chunk "ds64"; `hasRoom` leaves the room for that chunk, so that a header may
/// later become one of the other kind without another length. `bytesBehind` are those of chunks behind the samples.
[[nodiscard]] QByteArray waveHeader(const PCMForm &form, std::uint64_t bytes, bool hasRoom,
                                    std::uint64_t bytesBehind = 0);

/// The chunk "LIST" with what tags (CDSound::tags()) say of the sound: title, artist, album, track, genre, comment,
/// composer; the format has no place for others. In UTF-8, which it leaves open. Empty without such a tag.
[[nodiscard]] QByteArray waveTags(const QMap<QString, QString> &tags);

/// The header of an AIFF file (Audio Interchange File Format 1.3), whose samples have the higher byte first.
[[nodiscard]] QByteArray aiffHeader(const PCMForm &form, std::uint64_t bytes);
/// The most bytes of samples that an AIFF file holds: its sizes are signed 32-bit numbers.
inline constexpr std::uint64_t mostBytesInAiff = 0x7FFFFFFF - 46;

/// From that size on, a WAVE file must be an RF64 file.
inline constexpr std::uint64_t mostBytesInWave = 0xFFFFFFFF - 72;

} // namespace Tessaron
