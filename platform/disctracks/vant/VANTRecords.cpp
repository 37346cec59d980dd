#include "platform/disctracks/vant/VANTRecords.h"

#include "platform/foundation/ByteOrder.h"

#include <array>
#include <limits>

namespace Tessaron
{

namespace
{

using OptionalMember = std::optional<std::int32_t> VANTTrack::*;

/// The numbers that a layout may leave out: where each lies and which flag says that it is there.
struct OptionalField {
    OptionalMember member;
    std::size_t offset;
    std::uint32_t flag;
};
constexpr std::array<OptionalField, 4> optionalFields = {{
    {&VANTTrack::trackMode, VANTTrackField::trackMode, VANTTrackFlag::statesTrackMode},
    {&VANTTrack::dataForm, VANTTrackField::dataForm, VANTTrackFlag::statesDataForm},
    {&VANTTrack::blockType, VANTTrackField::blockType, VANTTrackFlag::statesBlockType},
    {&VANTTrack::sessionFormat, VANTTrackField::sessionFormat, VANTTrackFlag::statesSessionFormat},
}};

std::uint32_t flagsOf(const VANTTrack &track)
{
    std::uint32_t flags = std::uint32_t(track.copyState) << VANTTrackFlag::copyStateShift;
    if (track.hasPreEmphasis)
        flags |= VANTTrackFlag::hasPreEmphasis;
    if (track.hasFourChannels)
        flags |= VANTTrackFlag::hasFourChannels;
    for (const OptionalField &field : optionalFields) {
        if (track.*field.member)
            flags |= field.flag;
    }
    return flags;
}

} // namespace

void appendVANTTrack(const VANTTrack &track, QByteArray *records)
{
    std::array<std::uint8_t, vantTrackPayloadSize> payload{};
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::number], track.number);
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::flags], flagsOf(track));
    storeBigEndian<std::uint64_t>(&payload[VANTTrackField::startOffset], track.startOffset);
    storeBigEndian<std::uint64_t>(&payload[VANTTrackField::length], track.length);
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::blockSize], track.blockSize);
    for (const OptionalField &field : optionalFields) {
        const auto value = std::uint32_t((track.*field.member).value_or(0));
        storeBigEndian<std::uint32_t>(&payload[field.offset], value);
    }
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::pregap], track.pregap);
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::postgap], track.postgap);
    storeBigEndian<std::uint32_t>(&payload[VANTTrackField::indexPointCount], std::uint32_t(track.indexPoints.size()));
    records->append(reinterpret_cast<const char *>(payload.data()), qsizetype(payload.size()));
    for (const std::uint32_t point : track.indexPoints) {
        std::uint8_t bytes[4];
        storeBigEndian<std::uint32_t>(bytes, point);
        records->append(reinterpret_cast<const char *>(bytes), sizeof(bytes));
    }
}

bool readVANTTrack(const std::uint8_t *payload, std::size_t size, VANTTrack *track, std::size_t *wrongAt)
{
    *wrongAt = 0;
    if (size < vantTrackPayloadSize)
        return false;
    *wrongAt = VANTTrackField::indexPointCount;
    const auto pointCount = loadBigEndian<std::uint32_t>(payload + VANTTrackField::indexPointCount);
    if (pointCount > (size - vantTrackPayloadSize) / 4)
        return false;
    const auto flags = loadBigEndian<std::uint32_t>(payload + VANTTrackField::flags);
    track->number = loadBigEndian<std::uint32_t>(payload + VANTTrackField::number);
    track->startOffset = loadBigEndian<std::uint64_t>(payload + VANTTrackField::startOffset);
    track->length = loadBigEndian<std::uint64_t>(payload + VANTTrackField::length);
    track->blockSize = loadBigEndian<std::uint32_t>(payload + VANTTrackField::blockSize);
    for (const OptionalField &field : optionalFields) {
        if (flags & field.flag)
            track->*field.member = std::int32_t(loadBigEndian<std::uint32_t>(payload + field.offset));
    }
    track->pregap = loadBigEndian<std::uint32_t>(payload + VANTTrackField::pregap);
    track->postgap = loadBigEndian<std::uint32_t>(payload + VANTTrackField::postgap);
    track->copyState = CopyState((flags >> VANTTrackFlag::copyStateShift) & VANTTrackFlag::copyStateMask);
    track->hasPreEmphasis = flags & VANTTrackFlag::hasPreEmphasis;
    track->hasFourChannels = flags & VANTTrackFlag::hasFourChannels;
    track->indexPoints.resize(pointCount);
    for (std::uint32_t index = 0; index < pointCount; ++index)
        track->indexPoints[index] =
            loadBigEndian<std::uint32_t>(payload + vantTrackPayloadSize + std::size_t{4} * index);

    *wrongAt = VANTTrackField::blockSize;
    if (track->blockSize == 0)
        return false;
    *wrongAt = VANTTrackField::length;
    if (track->length > std::numeric_limits<std::uint64_t>::max() / track->blockSize)
        return false;
    *wrongAt = VANTTrackField::startOffset;
    if (track->startOffset > std::numeric_limits<std::uint64_t>::max() - track->byteLength())
        return false;
    *wrongAt = VANTTrackField::postgap;
    return track->postgap <= track->length;
}

} // namespace Tessaron
