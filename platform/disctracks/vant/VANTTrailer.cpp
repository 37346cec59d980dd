#include "platform/disctracks/vant/VANTTrailer.h"

#include "platform/disctracks/vant/Crc32.h"
#include "platform/disctracks/vant/VANTRecords.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t mostOfField = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t mostBytes = std::numeric_limits<std::uint64_t>::max();

NSError trailerError(DiscTracksErrorCode code, const QString &reason)
{
    return NSError(DiscTracksErrorDomain, int(code), {{NSLocalizedFailureReasonErrorKey, reason}});
}

NSError tooLarge(const DiscTrack &track)
{
    return trailerError(DiscTracksErrorCode::TooLarge,
                        QStringLiteral("Track %1 is larger than a VANT image can say.").arg(track.number));
}

/// All but the place in the file. An error for a track that the format cannot describe.
Result<VANTTrack> describeTrack(const DiscTrack &track)
{
    const auto misshapen = [&](const QString &how) {
        return trailerError(DiscTracksErrorCode::TrackShape, QStringLiteral("Track %1 %2.").arg(track.number).arg(how));
    };
    if (track.blockSize == 0)
        return misshapen(QStringLiteral("has blocks of no bytes"));
    if (track.postgap.length > track.length)
        return misshapen(QStringLiteral("is shorter than its postgap"));
    if (track.postgap.length > 0 && !track.postgap.isStored)
        return misshapen(QStringLiteral("has a postgap that the image does not hold; a VANT image holds it"));
    const auto isTooLarge = [](std::uint64_t number) { return number > mostOfField; };
    if (isTooLarge(track.pregap.length) || isTooLarge(track.postgap.length)
        || std::ranges::any_of(track.indexPoints, isTooLarge))
        return tooLarge(track);

    VANTTrack description;
    description.number = track.number;
    description.length = track.length;
    description.blockSize = track.blockSize;
    // Where something was stated, what was left out is carried as left out.
    const RecordingNumbers numbers = track.recording == RecordingNumbers{} ? recordingNumbers(track) : track.recording;
    description.trackMode = numbers.trackMode;
    description.dataForm = numbers.dataForm;
    description.blockType = numbers.blockType;
    description.sessionFormat = numbers.sessionFormat;
    description.pregap = std::uint32_t(track.pregap.length);
    description.postgap = std::uint32_t(track.postgap.length);
    description.copyState = track.copyState;
    description.hasPreEmphasis = track.hasPreEmphasis;
    description.hasFourChannels = track.hasFourChannels;
    description.indexPoints.assign(track.indexPoints.begin(), track.indexPoints.end());
    return description;
}

/// Adds count × size to a sum; false when that leaves 64 bits.
bool addProduct(std::uint64_t count, std::uint64_t size, std::uint64_t *sum)
{
    if (count > (mostBytes - *sum) / size)
        return false;
    *sum += count * size;
    return true;
}

void appendRecordHead(std::uint32_t tag, std::size_t payloadSize, QByteArray *records)
{
    std::array<std::uint8_t, vantRecordHeadSize> head;
    storeBigEndian<std::uint32_t>(&head[VANTRecordHead::tag], tag);
    storeBigEndian<std::uint32_t>(&head[VANTRecordHead::payloadSize], std::uint32_t(payloadSize));
    records->append(reinterpret_cast<const char *>(head.data()), qsizetype(head.size()));
}

/// Gathers the records of a trailer and keeps count of what they describe.
class TrailerMaker
{
public:
    [[nodiscard]] NSError addSession(const DiscSession &session)
    {
        if (session.tracks.empty())
            return trailerError(DiscTracksErrorCode::NoTracks, QStringLiteral("A session has no track."));
        std::array<std::uint8_t, vantSessionPayloadSize> payload;
        storeBigEndian<std::uint32_t>(&payload[VANTSessionField::number], ++m_sessionCount);
        storeBigEndian<std::uint32_t>(&payload[VANTSessionField::trackCount], std::uint32_t(session.tracks.size()));
        appendRecordHead(vantSessionTag, payload.size(), &m_bytes);
        m_bytes.append(reinterpret_cast<const char *>(payload.data()), qsizetype(payload.size()));
        for (const DiscTrack &track : session.tracks) {
            if (NSError error = addTrack(track))
                return error;
        }
        return {};
    }

    [[nodiscard]] NSError addCDText(const QByteArray &block)
    {
        if (!hasRoomFor(std::size_t(block.size())))
            return tooLong();
        appendRecordHead(vantCDTextTag, std::size_t(block.size()), &m_bytes);
        m_bytes.append(block);
        return {};
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
    [[nodiscard]] NSError addTrack(const DiscTrack &track)
    {
        Result<VANTTrack> description = describeTrack(track);
        if (!description)
            return description.error();
        if (track.pregap.isStored && !addProduct(track.pregap.length, track.blockSize, &m_dataLength))
            return tooLarge(track);
        description->startOffset = m_dataLength;
        if (!addProduct(track.length, track.blockSize, &m_dataLength))
            return tooLarge(track);
        const std::size_t payloadSize = vantTrackPayloadSize + 4 * description->indexPoints.size();
        if (!hasRoomFor(payloadSize))
            return tooLong();
        appendRecordHead(vantTrackTag, payloadSize, &m_bytes);
        appendVANTTrack(*description, &m_bytes);
        return {};
    }

    [[nodiscard]] bool hasRoomFor(std::size_t payloadSize) const
    {
        return std::uint64_t(m_bytes.size()) + vantRecordHeadSize + payloadSize + vantTailSize
            <= vantMaximumTrailerSize;
    }

    [[nodiscard]] static NSError tooLong()
    {
        return trailerError(DiscTracksErrorCode::TooLarge,
                            QStringLiteral("The description is longer than the %1 bytes that a VANT image can have.")
                                .arg(vantMaximumTrailerSize));
    }

    QByteArray m_bytes;
    std::uint64_t m_dataLength = 0;
    std::uint32_t m_sessionCount = 0;
};

DiscTrack discTrackOf(const VANTTrack &track, std::uint64_t endBefore)
{
    DiscTrack result;
    result.number = track.number;
    result.blockSize = track.blockSize;
    result.length = track.length;
    result.pregap.length = track.pregap;
    const std::uint64_t room = track.startOffset - endBefore;
    result.pregap.isStored = track.pregap > 0 && room >= std::uint64_t(track.pregap) * track.blockSize;
    result.postgap = {track.postgap, true};
    result.indexPoints.assign(track.indexPoints.begin(), track.indexPoints.end());
    result.copyState = track.copyState;
    result.hasPreEmphasis = track.hasPreEmphasis;
    result.hasFourChannels = track.hasFourChannels;
    result.recording = {track.trackMode, track.dataForm, track.blockType, track.sessionFormat};
    result.kind = trackKindOfBlockType(track.blockType, track.blockSize);
    return result;
}

} // namespace

Result<QByteArray> vantTrailer(const TableOfContents &contents, const QList<QByteArray> &cdTextBlocks)
{
    if (contents.sessions.empty())
        return trailerError(DiscTracksErrorCode::NoTracks, QStringLiteral("There is no track."));
    TrailerMaker maker;
    for (const DiscSession &session : contents.sessions) {
        if (NSError error = maker.addSession(session))
            return error;
    }
    for (const QByteArray &block : cdTextBlocks) {
        if (NSError error = maker.addCDText(block))
            return error;
    }
    return maker.finish();
}

QStringList lostInVANT(const TableOfContents &contents)
{
    QStringList lost;
    if (!contents.mediaCatalogNumber.isEmpty())
        lost << QStringLiteral("the disc's catalogue number");
    if (!contents.cdText.isEmpty())
        lost << QStringLiteral("CD-TEXT");
    const std::vector<const DiscTrack *> tracks = contents.tracks();
    if (std::ranges::any_of(tracks, [](const DiscTrack *track) { return !track->isrc.isEmpty(); }))
        lost << QStringLiteral("the tracks' ISRCs");
    return lost;
}

TableOfContents tableOfContentsOfVANT(const VANTImage &image)
{
    TableOfContents contents;
    std::uint64_t end = 0;
    for (const VANTSession &session : image.sessions) {
        DiscSession &described = contents.sessions.emplace_back();
        for (const VANTTrack &track : session.tracks) {
            described.tracks.push_back(discTrackOf(track, end));
            end = track.startOffset + track.byteLength();
        }
    }
    contents.joinSessions();
    return contents;
}

} // namespace Tessaron
