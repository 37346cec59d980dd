#include "platform/disctracks/vant/VANTReader.h"

#include "platform/disctracks/vant/Crc32.h"
#include "platform/disctracks/vant/VANTRecords.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

NSError errorAt(VANTErrorCode code, std::uint64_t offset, const QString &reason)
{
    return NSError(VANTErrorDomain, int(code),
                   {{NSLocalizedFailureReasonErrorKey,
                     QStringLiteral("%1 (at byte %2 of the file)").arg(reason, QString::number(offset))},
                    {VANTErrorReasonKey, reason},
                    {VANTErrorOffsetKey, quint64(offset)}});
}

NSError noTrailer(std::uint64_t fileSize)
{
    return errorAt(VANTErrorCode::NoTrailer, fileSize - std::min<std::uint64_t>(fileSize, sizeof(vantMagic)),
                   QStringLiteral("The file does not end with the mark of a VANT image"));
}

NSError withPath(const NSError &error, const QString &path)
{
    QVariantMap userInfo = error.userInfo();
    userInfo.insert(NSFilePathErrorKey, path);
    return NSError(error.domain(), error.code(), userInfo);
}

/// What the tail says about the place of the trailer.
struct TailFacts {
    std::uint64_t recordsLength = 0;
    std::uint64_t dataLength = 0;
    std::uint16_t majorVersion = 0;
    std::uint16_t minorVersion = 0;
    std::uint32_t tailSize = 0;

    [[nodiscard]] std::uint64_t trailerSize() const { return recordsLength + tailSize; }
};

/// Reads the last vantTailSize bytes of a file of `fileSize` bytes.
NSError readTail(const std::uint8_t *tail, std::uint64_t fileSize, TailFacts *facts)
{
    const std::uint64_t offset = fileSize - vantTailSize;
    if (std::memcmp(tail + VANTTail::magic, vantMagic, sizeof(vantMagic)) != 0)
        return noTrailer(fileSize);
    facts->recordsLength = loadBigEndian<std::uint64_t>(tail + VANTTail::recordsLength);
    facts->dataLength = loadBigEndian<std::uint64_t>(tail + VANTTail::dataLength);
    facts->majorVersion = loadBigEndian<std::uint16_t>(tail + VANTTail::majorVersion);
    facts->minorVersion = loadBigEndian<std::uint16_t>(tail + VANTTail::minorVersion);
    facts->tailSize = loadBigEndian<std::uint32_t>(tail + VANTTail::tailSize);
    if (facts->majorVersion != vantMajorVersion)
        return errorAt(VANTErrorCode::UnknownVersion, offset + VANTTail::majorVersion,
                       QStringLiteral("The image is of version %1 of the format, which is not known here")
                           .arg(facts->majorVersion));
    const std::uint64_t room = std::min(fileSize, vantMaximumTrailerSize);
    if (facts->tailSize < vantTailSize || facts->tailSize > room)
        return errorAt(VANTErrorCode::Damaged, offset + VANTTail::tailSize,
                       QStringLiteral("A tail of %1 bytes is impossible").arg(facts->tailSize));
    if (facts->recordsLength > room - facts->tailSize)
        return errorAt(VANTErrorCode::Damaged, offset + VANTTail::recordsLength,
                       QStringLiteral("Records of %1 bytes are impossible").arg(facts->recordsLength));
    return {};
}

/// Walks the records of a trailer whose checksum is right. It may still be the work of somebody who means harm.
class TrailerParser
{
public:
    TrailerParser(const std::uint8_t *records, const TailFacts &facts, std::uint64_t trailerOffset)
        : m_records(records)
        , m_size(std::size_t(facts.recordsLength))
        , m_trailerOffset(trailerOffset)
    {
        m_image.majorVersion = facts.majorVersion;
        m_image.minorVersion = facts.minorVersion;
        m_image.dataLength = facts.dataLength;
        m_image.trailerOffset = trailerOffset;
        m_image.trailerLength = facts.trailerSize();
    }

    [[nodiscard]] VANTReadResult parse()
    {
        if (m_image.dataLength > m_trailerOffset)
            return {{},
                    errorAt(VANTErrorCode::Incomplete, m_trailerOffset,
                            QStringLiteral("The tracks need %1 bytes, but only %2 lie in front of the trailer")
                                .arg(m_image.dataLength)
                                .arg(m_trailerOffset))};
        while (m_position < m_size) {
            if (const NSError error = parseRecord())
                return {{}, error};
        }
        if (const NSError error = closeSession())
            return {{}, error};
        if (m_image.sessions.empty())
            return {{}, damaged(0, QStringLiteral("The trailer describes no track"))};
        return {std::move(m_image), {}};
    }

private:
    [[nodiscard]] NSError damaged(std::size_t position, const QString &reason) const
    {
        return errorAt(VANTErrorCode::Damaged, m_trailerOffset + position, reason);
    }

    [[nodiscard]] NSError parseRecord()
    {
        const std::size_t start = m_position;
        if (m_size - start < vantRecordHeadSize)
            return damaged(start, QStringLiteral("The last record is cut off"));
        const auto tag = loadBigEndian<std::uint32_t>(m_records + start + VANTRecordHead::tag);
        const auto size = loadBigEndian<std::uint32_t>(m_records + start + VANTRecordHead::payloadSize);
        const std::size_t payload = start + vantRecordHeadSize;
        if (size > m_size - payload)
            return damaged(start + VANTRecordHead::payloadSize,
                           QStringLiteral("A record of %1 bytes reaches past the records' end").arg(size));
        m_position = payload + size;
        switch (tag) {
        case vantSessionTag:
            return parseSession(payload, size);
        case vantTrackTag:
            return parseTrack(payload, size);
        case vantCDTextTag:
            m_image.cdTextBlocks.append(QByteArray(reinterpret_cast<const char *>(m_records + payload), size));
            return {};
        default:
            return {}; // of a later minor version
        }
    }

    [[nodiscard]] NSError parseSession(std::size_t payload, std::uint32_t size)
    {
        if (NSError error = closeSession())
            return error;
        if (size < vantSessionPayloadSize)
            return damaged(payload, QStringLiteral("A session's record has only %1 bytes").arg(size));
        const auto number = loadBigEndian<std::uint32_t>(m_records + payload + VANTSessionField::number);
        if (number != m_image.sessions.size() + 1)
            return damaged(payload, QStringLiteral("Session %1 is out of order").arg(number));
        m_expectedTracks = loadBigEndian<std::uint32_t>(m_records + payload + VANTSessionField::trackCount);
        m_sessionPayload = payload;
        m_image.sessions.emplace_back();
        return {};
    }

    /// Holds what the session opened last says against the tracks that followed.
    [[nodiscard]] NSError closeSession() const
    {
        if (m_image.sessions.empty())
            return {};
        const std::size_t count = m_image.sessions.back().tracks.size();
        if (count == m_expectedTracks && count > 0)
            return {};
        return damaged(m_sessionPayload + VANTSessionField::trackCount,
                       QStringLiteral("Session %1 should have %2 tracks, but has %3")
                           .arg(m_image.sessions.size())
                           .arg(m_expectedTracks)
                           .arg(count));
    }

    [[nodiscard]] NSError parseTrack(std::size_t payload, std::uint32_t size)
    {
        VANTTrack track;
        std::size_t wrongAt = 0;
        if (m_image.sessions.empty())
            return damaged(payload, QStringLiteral("A track belongs to no session"));
        if (!readVANTTrack(m_records + payload, size, &track, &wrongAt))
            return damaged(payload + wrongAt,
                           QStringLiteral("The description of track %1 makes no sense").arg(m_trackCount + 1));
        if (track.number != m_trackCount + 1)
            return damaged(payload + VANTTrackField::number,
                           QStringLiteral("Track %1 is out of order").arg(track.number));
        if (track.startOffset < m_dataEnd)
            return damaged(payload + VANTTrackField::startOffset,
                           QStringLiteral("Track %1 overlaps the track before it").arg(track.number));
        m_dataEnd = track.startOffset + track.byteLength();
        if (m_dataEnd > m_image.dataLength)
            return damaged(payload + VANTTrackField::length,
                           QStringLiteral("Track %1 reaches past the image's data").arg(track.number));
        ++m_trackCount;
        m_image.sessions.back().tracks.push_back(std::move(track));
        return {};
    }

    const std::uint8_t *const m_records;
    const std::size_t m_size;
    const std::uint64_t m_trailerOffset;
    VANTImage m_image;
    std::size_t m_position = 0;
    std::uint64_t m_dataEnd = 0; ///< of the track before
    std::uint32_t m_trackCount = 0;
    std::uint32_t m_expectedTracks = 0; ///< of the session opened last
    std::size_t m_sessionPayload = 0; ///< its place
};

/// Reads a whole trailer, which ends at the end of a file of `fileSize` bytes.
VANTReadResult parseTrailer(const std::uint8_t *trailer, const TailFacts &facts, std::uint64_t fileSize)
{
    const auto checksumAt = std::size_t(facts.trailerSize()) - vantTailSize + VANTTail::checksum;
    const auto checksum = loadBigEndian<std::uint32_t>(trailer + checksumAt);
    if (checksum != crc32(0, trailer, checksumAt))
        return {{},
                errorAt(VANTErrorCode::Damaged, fileSize - vantTailSize + VANTTail::checksum,
                        QStringLiteral("The checksum of the image's description is wrong"))};
    return TrailerParser(trailer, facts, fileSize - facts.trailerSize()).parse();
}

/// Reads `length` bytes at `offset`; 0, or an `errno` value. A file that ends too early is an input error.
int readAt(int descriptor, std::uint8_t *to, std::size_t length, std::uint64_t offset)
{
    std::size_t got = 0;
    const int failure = readFully(descriptor, offset, to, length, &got);
    return failure == 0 && got < length ? EIO : failure;
}

VANTReadResult readOpenFile(int descriptor, const QString &path)
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return {{}, NSError::errorWithErrno(errno, path)};
    if (!S_ISREG(status.st_mode))
        return {{}, NSError::errorWithErrno(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path)};
    const auto fileSize = std::uint64_t(status.st_size);
    if (fileSize < vantTailSize)
        return {{}, noTrailer(fileSize)};
    std::uint8_t tail[vantTailSize];
    if (const int failure = readAt(descriptor, tail, vantTailSize, fileSize - vantTailSize))
        return {{}, NSError::errorWithErrno(failure, path)};
    TailFacts facts;
    if (const NSError error = readTail(tail, fileSize, &facts))
        return {{}, error};
    std::vector<std::uint8_t> trailer(std::size_t(facts.trailerSize()));
    if (const int failure = readAt(descriptor, trailer.data(), trailer.size(), fileSize - trailer.size()))
        return {{}, NSError::errorWithErrno(failure, path)};
    return parseTrailer(trailer.data(), facts, fileSize);
}

} // namespace

VANTReadResult VANTReader::imageFromFile(const QString &path)
{
    // Without O_NONBLOCK, opening a fifo would wait for a writer.
    const UniqueDescriptor file(
        ::open(fileSystemRepresentation(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return {{}, NSError::errorWithErrno(errno, path)};
    VANTReadResult result = readOpenFile(file.get(), path);
    if (result.error)
        result.error = withPath(result.error, path);
    return result;
}

VANTReadResult VANTReader::imageFromBytes(QByteArrayView bytes)
{
    const auto size = std::uint64_t(bytes.size());
    if (size < vantTailSize)
        return {{}, noTrailer(size)};
    const auto *const end = reinterpret_cast<const std::uint8_t *>(bytes.data()) + bytes.size();
    TailFacts facts;
    if (const NSError error = readTail(end - vantTailSize, size, &facts))
        return {{}, error};
    return parseTrailer(end - facts.trailerSize(), facts, size);
}

} // namespace Tessaron
