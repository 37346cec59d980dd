#pragma once

#include "platform/disctracks/vant/VANTImage.h"

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// The shape of a VANT trailer, described in docs/vant-format.md. All integers are big-endian.
//
//     records …                       tag, length and payload each
//     tail (vantTailSize bytes)       found from the end of the file

inline constexpr std::uint16_t vantMajorVersion = 1;
inline constexpr std::uint16_t vantMinorVersion = 0;

/// No trailer is longer: 99 tracks with 98 index points each and all of a disc's CD-TEXT take less than a hundredth. A
/// reader need not believe a damaged length beyond it.
inline constexpr std::uint64_t vantMaximumTrailerSize = std::uint64_t(16) << 20;

/// Where the fields of the tail lie. A later minor version may put fields in front of them and enlarge `tailSize`.
namespace VANTTail
{
inline constexpr std::size_t recordsLength = 0; ///< 64 bits, bytes
inline constexpr std::size_t dataLength = 8; ///< 64 bits, bytes of track data at the start of the file
inline constexpr std::size_t majorVersion = 16; ///< 16 bits
inline constexpr std::size_t minorVersion = 18; ///< 16 bits
inline constexpr std::size_t tailSize = 20; ///< 32 bits, bytes of the tail itself
inline constexpr std::size_t reserved = 24; ///< 32 bits, zero
inline constexpr std::size_t checksum = 28; ///< 32 bits, CRC-32 of the trailer's bytes in front of this field
inline constexpr std::size_t magic = 32; ///< vantMagic, the last bytes of the file
} // namespace VANTTail
inline constexpr std::size_t vantTailSize = 40;

/// Like the signature of other formats, it does not survive a transfer that takes the file for text.
inline constexpr std::uint8_t vantMagic[8] = {'V', 'A', 'N', 'T', 0x0D, 0x0A, 0x1A, 0x0A};
static_assert(VANTTail::magic + sizeof(vantMagic) == vantTailSize);

/// Where the fields of a record's head lie; the payload follows.
namespace VANTRecordHead
{
inline constexpr std::size_t tag = 0; ///< 32 bits
inline constexpr std::size_t payloadSize = 4; ///< 32 bits, bytes
} // namespace VANTRecordHead
inline constexpr std::size_t vantRecordHeadSize = 8;

constexpr std::uint32_t vantTag(const char (&letters)[5])
{
    return std::uint32_t(std::uint8_t(letters[0])) << 24 | std::uint32_t(std::uint8_t(letters[1])) << 16
        | std::uint32_t(std::uint8_t(letters[2])) << 8 | std::uint32_t(std::uint8_t(letters[3]));
}
inline constexpr std::uint32_t vantSessionTag = vantTag("SESS"); ///< opens a session: number, count of its tracks
inline constexpr std::uint32_t vantTrackTag = vantTag("TRAK"); ///< a track of the session opened last
inline constexpr std::uint32_t vantCDTextTag = vantTag("CDTX"); ///< one block of CD-TEXT

/// Where the fields of a session's payload lie.
namespace VANTSessionField
{
inline constexpr std::size_t number = 0; ///< 32 bits
inline constexpr std::size_t trackCount = 4; ///< 32 bits
} // namespace VANTSessionField
inline constexpr std::size_t vantSessionPayloadSize = 8;

/// Where the fields of a track's payload lie; the index points (32 bits each) follow.
namespace VANTTrackField
{
inline constexpr std::size_t number = 0; ///< 32 bits
inline constexpr std::size_t flags = 4; ///< 32 bits, below
inline constexpr std::size_t startOffset = 8; ///< 64 bits
inline constexpr std::size_t length = 16; ///< 64 bits
inline constexpr std::size_t blockSize = 24; ///< 32 bits
inline constexpr std::size_t trackMode = 28; ///< 32 bits, signed, valid where its flag is set; so are the next three
inline constexpr std::size_t dataForm = 32;
inline constexpr std::size_t blockType = 36;
inline constexpr std::size_t sessionFormat = 40;
inline constexpr std::size_t pregap = 44; ///< 32 bits
inline constexpr std::size_t postgap = 48; ///< 32 bits
inline constexpr std::size_t indexPointCount = 52; ///< 32 bits
} // namespace VANTTrackField
inline constexpr std::size_t vantTrackPayloadSize = 56;

namespace VANTTrackFlag
{
inline constexpr std::uint32_t hasPreEmphasis = 1u << 0;
inline constexpr std::uint32_t hasFourChannels = 1u << 1;
inline constexpr std::uint32_t statesTrackMode = 1u << 4;
inline constexpr std::uint32_t statesDataForm = 1u << 5;
inline constexpr std::uint32_t statesBlockType = 1u << 6;
inline constexpr std::uint32_t statesSessionFormat = 1u << 7;
inline constexpr unsigned int copyStateShift = 8; ///< two bits: CopyState
inline constexpr std::uint32_t copyStateMask = 3;
} // namespace VANTTrackFlag

/// Puts a track's payload at the end of `records`.
void appendVANTTrack(const VANTTrack &track, QByteArray *records);
/// Reads a payload of `size` bytes; false, with the offset in it of what is wrong, when it makes no sense.
[[nodiscard]] bool readVANTTrack(const std::uint8_t *payload, std::size_t size, VANTTrack *track, std::size_t *wrongAt);

} // namespace Tessaron
