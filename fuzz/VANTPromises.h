#pragma once

#include "platform/disctracks/vant/Crc32.h"
#include "platform/disctracks/vant/VANTReader.h"
#include "platform/disctracks/vant/VANTRecords.h"
#include "platform/foundation/ByteOrder.h"

#include <cstring>

namespace Tessaron
{

/// Puts the right checksum (and the magic) at the end of bytes that are to be read as a VANT image, so that a change in
/// the records is not hidden behind a wrong checksum. Nothing happens when the bytes claim no possible trailer.
inline void correctVANTChecksum(std::uint8_t *bytes, std::size_t size)
{
    if (size < vantTailSize)
        return;
    std::uint8_t *const tail = bytes + size - vantTailSize;
    std::memcpy(tail + VANTTail::magic, vantMagic, sizeof(vantMagic));
    const auto tailSize = loadBigEndian<std::uint32_t>(tail + VANTTail::tailSize);
    const auto recordsLength = loadBigEndian<std::uint64_t>(tail + VANTTail::recordsLength);
    if (tailSize > size || tailSize < vantTailSize || recordsLength > size - tailSize)
        return;
    const std::size_t start = size - tailSize - std::size_t(recordsLength);
    std::uint8_t *const checksum = tail + VANTTail::checksum;
    storeBigEndian<std::uint32_t>(checksum, crc32(0, bytes + start, std::size_t(checksum - (bytes + start))));
}

/// Which promise of the reader a result breaks; null when it keeps all.
inline const char *brokenVANTPromise(const VANTReadResult &result, std::uint64_t fileSize)
{
    if (result.image.has_value() == bool(result.error))
        return "either an image or an error";
    if (result.error) {
        const bool hasOffset = result.error.userInfo().value(VANTErrorOffsetKey).toULongLong() <= fileSize;
        const bool hasReason = !result.error.localizedFailureReason().isEmpty();
        return hasOffset && hasReason ? nullptr : "an error says what is wrong and where";
    }
    const VANTImage &image = *result.image;
    if (image.dataLength > image.trailerOffset || image.trailerOffset + image.trailerLength != fileSize)
        return "data, trailer and the file's size agree";
    if (image.sessions.empty())
        return "there is a session";
    std::uint64_t end = 0;
    std::uint32_t number = 0;
    for (const VANTSession &session : image.sessions) {
        if (session.tracks.empty())
            return "a session has tracks";
        for (const VANTTrack &track : session.tracks) {
            if (track.number != ++number || track.blockSize == 0 || track.startOffset < end)
                return "tracks are in order";
            if (track.length > (image.dataLength - track.startOffset) / track.blockSize)
                return "a track lies within the data";
            if (track.postgap > track.length)
                return "a postgap lies within its track";
            end = track.startOffset + track.byteLength();
        }
    }
    return nullptr;
}

} // namespace Tessaron
