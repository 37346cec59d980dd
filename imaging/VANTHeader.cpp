#include "platform/disctracks/vant/Crc32.h"
#include "platform/disctracks/vant/VANTRecords.h"
#include "platform/foundation/ByteOrder.h"
#include <TessaronClasses/VANTHeader.h>

#include <array>
#include <cstring>
#include <limits>

namespace Tessaron
{

namespace
{

/// The sessions of a layout; what is not an array of sessions is one session.
std::vector<DRTrackArray> sessionsOfLayout(const DRLayout &layout)
{
    if (const auto *const sessions = std::get_if<std::vector<DRTrackArray>>(&layout))
        return *sessions;
    return {tracksOfLayout(layout)};
}

std::optional<std::int32_t> optionalNumber(const QVariantMap &properties, const QString &key)
{
    const QVariant value = properties.value(key);
    return value.isValid() ? std::optional<std::int32_t>(value.toInt()) : std::nullopt;
}

VANTCopyState copyStateOf(const QVariantMap &properties)
{
    const QString state = properties.value(DRSerialCopyManagementStateKey).toString();
    if (state == DRSCMSCopyrightFree)
        return VANTCopyState::CopyrightFree;
    if (state == DRSCMSCopyrightProtectedOriginal)
        return VANTCopyState::ProtectedOriginal;
    if (state == DRSCMSCopyrightProtectedCopy)
        return VANTCopyState::ProtectedCopy;
    return VANTCopyState::Unstated;
}

/// Fills all but the number and the place. False for a track that cannot be described.
bool describeTrack(const DRTrack &track, VANTTrack *description)
{
    const QVariantMap properties = track.properties();
    bool isLengthKnown = false;
    bool isSizeKnown = false;
    description->length = properties.value(DRTrackLengthKey).toULongLong(&isLengthKnown);
    description->blockSize = properties.value(DRBlockSizeKey).toUInt(&isSizeKnown);
    if (!isLengthKnown || !isSizeKnown || description->blockSize == 0)
        return false;
    description->trackMode = optionalNumber(properties, DRTrackModeKey);
    description->dataForm = optionalNumber(properties, DRDataFormKey);
    description->blockType = optionalNumber(properties, DRBlockTypeKey);
    description->sessionFormat = optionalNumber(properties, DRSessionFormatKey);
    description->pregap = properties.value(DRPreGapLengthKey).toUInt();
    description->postgap = properties.value(DRPostGapLengthKey).toUInt();
    description->copyState = copyStateOf(properties);
    description->hasPreEmphasis = properties.value(DRAudioPreEmphasisKey).toBool();
    description->hasFourChannels = properties.value(DRAudioFourChannelKey).toBool();
    const QVariantList points = properties.value(DRIndexPointsKey).toList();
    for (const QVariant &point : points)
        description->indexPoints.push_back(point.toUInt());
    return description->postgap <= description->length;
}

void appendRecordHead(std::uint32_t tag, std::size_t payloadSize, QByteArray *records)
{
    std::array<std::uint8_t, vantRecordHeadSize> head;
    storeBigEndian<std::uint32_t>(&head[0], tag);
    storeBigEndian<std::uint32_t>(&head[4], std::uint32_t(payloadSize));
    records->append(reinterpret_cast<const char *>(head.data()), qsizetype(head.size()));
}

/// Gathers the records of a trailer and keeps count of what they describe.
class HeaderMaker
{
public:
    [[nodiscard]] bool addSession(const DRTrackArray &tracks)
    {
        if (tracks.empty())
            return false;
        std::array<std::uint8_t, vantSessionPayloadSize> payload;
        storeBigEndian<std::uint32_t>(&payload[0], ++m_sessionCount);
        storeBigEndian<std::uint32_t>(&payload[4], std::uint32_t(tracks.size()));
        appendRecordHead(vantSessionTag, payload.size(), &m_bytes);
        m_bytes.append(reinterpret_cast<const char *>(payload.data()), qsizetype(payload.size()));
        for (const std::shared_ptr<DRTrack> &track : tracks) {
            if (!track || !addTrack(*track))
                return false;
        }
        return true;
    }

    [[nodiscard]] bool addCDText(const QByteArray &block)
    {
        if (!hasRoomFor(std::size_t(block.size())))
            return false;
        appendRecordHead(vantCDTextTag, std::size_t(block.size()), &m_bytes);
        m_bytes.append(block);
        return true;
    }

    /// The records with the tail behind them.
    [[nodiscard]] QByteArray finish()
    {
        std::array<std::uint8_t, vantTailSize> tail{};
        storeBigEndian<std::uint64_t>(&tail[VANTTail::recordsLength], std::uint64_t(m_bytes.size()));
        storeBigEndian<std::uint64_t>(&tail[VANTTail::dataLength], m_dataLength);
        storeBigEndian<std::uint16_t>(&tail[VANTTail::majorVersion], vantMajorVersion);
        storeBigEndian<std::uint16_t>(&tail[VANTTail::minorVersion], vantMinorVersion);
        storeBigEndian<std::uint32_t>(&tail[VANTTail::tailSize], vantTailSize);
        const std::uint32_t ofRecords = crc32(0, m_bytes.constData(), std::size_t(m_bytes.size()));
        storeBigEndian<std::uint32_t>(&tail[VANTTail::checksum], crc32(ofRecords, tail.data(), VANTTail::checksum));
        std::memcpy(&tail[VANTTail::magic], vantMagic, sizeof(vantMagic));
        return m_bytes + QByteArray(reinterpret_cast<const char *>(tail.data()), qsizetype(tail.size()));
    }

private:
    [[nodiscard]] bool addTrack(const DRTrack &track)
    {
        VANTTrack description;
        if (!describeTrack(track, &description))
            return false;
        description.number = ++m_trackCount;
        description.startOffset = m_dataLength;
        const std::size_t payloadSize = vantTrackPayloadSize + 4 * description.indexPoints.size();
        const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - m_dataLength;
        if (description.length > room / description.blockSize || !hasRoomFor(payloadSize))
            return false;
        m_dataLength += description.byteLength();
        appendRecordHead(vantTrackTag, payloadSize, &m_bytes);
        appendVANTTrack(description, &m_bytes);
        return true;
    }

    [[nodiscard]] bool hasRoomFor(std::size_t payloadSize) const
    {
        return std::uint64_t(m_bytes.size()) + vantRecordHeadSize + payloadSize + vantTailSize
            <= vantMaximumTrailerSize;
    }

    QByteArray m_bytes;
    std::uint64_t m_dataLength = 0;
    std::uint32_t m_sessionCount = 0;
    std::uint32_t m_trackCount = 0;
};

} // namespace

QByteArray VANTHeaderForDRLayout(const DRLayout &layout)
{
    return VANTHeaderForDRLayout(layout, {});
}

QByteArray VANTHeaderForDRLayout(const DRLayout &layout, const QList<QByteArray> &arrayOfCDTextBlocks)
{
    const std::vector<DRTrackArray> sessions = sessionsOfLayout(layout);
    if (sessions.empty())
        return {};
    HeaderMaker maker;
    for (const DRTrackArray &session : sessions) {
        if (!maker.addSession(session))
            return {};
    }
    for (const QByteArray &block : arrayOfCDTextBlocks) {
        if (!maker.addCDText(block))
            return {};
    }
    return maker.finish();
}

} // namespace Tessaron
