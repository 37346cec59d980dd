#include "platform/discimage/source/DiscImageSource.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/disctracks/vant/VANTReader.h"
#include "platform/disctracks/vant/VANTRecords.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t userDataSize = 2048;
constexpr std::uint32_t rawSectorSize = 2352;

// ECMA-130 14: a sector of data begins with a sync field of 12 bytes, then come its address and its mode.
constexpr std::array<std::uint8_t, 12> syncField = {0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
constexpr std::size_t sectorModeOffset = 15;

NSError beyondTheEnd(std::uint64_t offset, std::uint64_t length, std::uint64_t imageLength)
{
    return discImageError(DiscImageErrorCode::Truncated, offset,
                          QStringLiteral("Something of %1 should be here, but the image ends at byte %2")
                              .arg(counted(length, "byte", "bytes"))
                              .arg(imageLength));
}

} // namespace

ImageBytes::~ImageBytes() = default;

std::uint32_t firstBlockForSectors(const TableOfContents &contents, const DiscTrack &track)
{
    const std::int64_t number = contents.firstBlockOfTrack(track.number).number();
    return number > 0 && number <= std::numeric_limits<std::uint32_t>::max() ? std::uint32_t(number) : 0;
}

std::vector<DescribedDataTrack> describedDataTracks(const VANTImage &image)
{
    std::vector<DescribedDataTrack> result;
    const TableOfContents contents = tableOfContentsOfVANT(image);
    for (std::size_t session = 0; session < contents.sessions.size(); ++session) {
        const std::vector<VANTTrack> &places = image.sessions[session].tracks;
        for (std::size_t index = 0; index < places.size(); ++index) {
            const DiscTrack &track = contents.sessions[session].tracks[index];
            const std::optional<SectorForm> form = track.sectorForm();
            const auto part = form && !track.isAudio() ? userDataPart(track.kind, *form) : std::nullopt;
            if (part)
                result.push_back({track.number,
                                  {places[index].startOffset, track.blockSize, std::uint32_t(part->offset), track.kind,
                                   track.storedBlocks() - (track.pregap.isStored ? track.pregap.length : 0),
                                   firstBlockForSectors(contents, track)}});
        }
    }
    return result;
}

DiscImageSourceResult DiscImageSource::sourceWithFile(const QString &path)
{
    return open(path, std::nullopt);
}

DiscImageSourceResult DiscImageSource::sourceWithFile(const QString &path, const DiscImageSectors &sectors)
{
    return open(path, sectors);
}

namespace
{

NSError noImageFileError(const QString &path)
{
    return NSError(
        NSOSStatusErrorDomain, paramErr,
        {{NSLocalizedFailureReasonErrorKey, QStringLiteral("it is neither a regular file nor a block device")},
         {NSFilePathErrorKey, path}});
}

} // namespace

DiscImageSourceResult DiscImageSource::open(const QString &path, const std::optional<DiscImageSectors> &sectors)
{
    std::shared_ptr<DiscImageSource> source(new DiscImageSource);
    source->m_path = path;
    // Without O_NONBLOCK, opening a fifo would wait for a writer.
    source->m_file.reset(
        ::open(fileSystemRepresentation(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!source->m_file)
        return {nullptr, NSError::errorWithErrno(errno, path)};
    struct stat status;
    if (::fstat(source->m_file.get(), &status) != 0)
        return {nullptr, NSError::errorWithErrno(errno, path)};
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode))
        return {nullptr, S_ISDIR(status.st_mode) ? NSError::errorWithErrno(EISDIR, path) : noImageFileError(path)};
    const off_t end = ::lseek(source->m_file.get(), 0, SEEK_END); // a block device states no size
    if (end < 0)
        return {nullptr, NSError::errorWithErrno(errno, path)};
    source->m_fileLength = std::uint64_t(end);
    source->m_dataLength = source->m_fileLength;
    if (const NSError error = source->recogniseTrailer(path))
        return {nullptr, error};
    if (sectors)
        source->m_sectors = *sectors;
    else
        source->recogniseSectors();
    source->measure();
    source->m_partitions = readPartitionTables(*source, {});
    return {std::move(source), {}};
}

std::shared_ptr<const DiscImageSource> DiscImageSource::sourceWithBytes(const QByteArray &bytes,
                                                                        std::uint32_t firstBlock)
{
    std::shared_ptr<DiscImageSource> source(new DiscImageSource);
    source->m_bytes = bytes;
    source->m_fileLength = std::uint64_t(bytes.size());
    source->m_dataLength = source->m_fileLength;
    const VANTReadResult trailer = VANTReader::imageFromBytes(bytes);
    source->m_vantImage = trailer.image;
    if (trailer.image)
        source->m_dataLength = trailer.image->dataLength;
    else if (trailer.error.code() != qint64(VANTErrorCode::NoTrailer))
        source->m_vantError = trailer.error;
    else
        source->recogniseDamagedTrailer();
    source->recogniseSectors();
    source->m_sectors.firstBlock += firstBlock;
    source->measure();
    source->m_partitions = readPartitionTables(*source, {});
    return source;
}

std::shared_ptr<const DiscImageSource> DiscImageSource::sourceWithReader(std::shared_ptr<const ImageBytes> bytes,
                                                                         const DiscImageSectors &sectors,
                                                                         std::shared_ptr<const ImageBytes> earlier)
{
    std::shared_ptr<DiscImageSource> source(new DiscImageSource);
    source->m_fileLength = source->m_dataLength = bytes->length();
    source->m_reader = std::move(bytes);
    source->m_earlier = std::move(earlier);
    source->m_sectors = sectors;
    source->measure();
    source->m_partitions = readPartitionTables(*source, {});
    return source;
}

std::shared_ptr<const DiscImageSource>
DiscImageSource::sourceWithPartition(std::shared_ptr<const DiscImageSource> whole, std::uint64_t offset,
                                     std::uint64_t length)
{
    std::shared_ptr<DiscImageSource> source(new DiscImageSource);
    source->m_partitionOffset = std::min(offset, whole->length());
    source->m_length = std::min(length, whole->length() - source->m_partitionOffset);
    source->m_fileLength = source->m_dataLength = source->m_length;
    source->m_whole = std::move(whole);
    source->m_partitions = readPartitionTables(*source, {}); // an image in a partition brings its own map along
    return source;
}

/// An error says that the file could not be opened a second time; whether it has a trailer is not known then.
NSError DiscImageSource::recogniseTrailer(const QString &path)
{
    const VANTReadResult trailer = VANTReader::imageFromFile(path);
    if (isLackOfDescriptors(trailer.error))
        return trailer.error;
    if (trailer.image) {
        m_vantImage = trailer.image;
        m_dataLength = trailer.image->dataLength;
    } else if (trailer.error.domain() == VANTErrorDomain && trailer.error.code() != qint64(VANTErrorCode::NoTrailer)) {
        m_vantError = trailer.error;
    } else {
        recogniseDamagedTrailer();
    }
    return {};
}

/// Without its last bytes a trailer is not found; what resembles them is one that was damaged.
void DiscImageSource::recogniseDamagedTrailer()
{
    std::array<std::uint8_t, vantTailSize> tail;
    if (m_fileLength < tail.size() || readFile(m_fileLength - tail.size(), tail.data(), tail.size()))
        return;
    std::size_t same = 0;
    for (std::size_t index = 0; index < sizeof vantMagic; ++index)
        same += tail[VANTTail::magic + index] == vantMagic[index] ? 1 : 0;
    constexpr std::size_t enough = 5;
    if (same < enough)
        return;
    const std::uint64_t offset = m_fileLength - sizeof vantMagic;
    m_vantError = NSError(
        VANTErrorDomain, int(VANTErrorCode::Damaged),
        {{NSLocalizedFailureReasonErrorKey,
          QStringLiteral("The mark at the end of the VANT image is damaged (at byte %1 of the file)").arg(offset)},
         {VANTErrorReasonKey, QStringLiteral("The mark at the end of the VANT image is damaged")},
         {VANTErrorOffsetKey, quint64(offset)}});
}

void DiscImageSource::recogniseSectors()
{
    if (m_vantImage) {
        const std::vector<DescribedDataTrack> tracks = describedDataTracks(*m_vantImage);
        if (!tracks.empty()) {
            m_sectors = tracks.front().sectors;
            return;
        }
    }
    std::array<std::uint8_t, rawSectorSize + syncField.size()> start;
    if (m_dataLength < start.size() || readFile(0, start.data(), start.size()))
        return;
    const auto isSync = [](const std::uint8_t *at) { return std::equal(syncField.begin(), syncField.end(), at); };
    if (!isSync(start.data()) || !isSync(start.data() + rawSectorSize))
        return;
    m_sectors.size = rawSectorSize;
    // Mode 2 has a subheader of 8 bytes behind the header in its form 1, the one with 2048 bytes of user data.
    m_sectors.dataOffset = start[sectorModeOffset] == 2 ? 24 : 16;
    m_sectors.kind = kindOfSector(start.data());
}

void DiscImageSource::measure()
{
    const std::uint64_t available = m_dataLength - std::min(m_dataLength, m_sectors.start);
    m_length = m_sectors.size == userDataSize ? available : available / m_sectors.size * userDataSize;
    // Behind a track there may be others.
    if (m_sectors.count > 0 && m_length / userDataSize > m_sectors.count)
        m_length = m_sectors.count * userDataSize;
}

NSError DiscImageSource::readFile(std::uint64_t offset, void *buffer, std::size_t length) const
{
    if (m_reader)
        return m_reader->read(offset, buffer, length);
    if (!m_file) {
        std::memcpy(buffer, m_bytes.constData() + offset, length);
        return {};
    }
    std::size_t got = 0;
    if (const int failure = readFully(m_file.get(), offset, buffer, length, &got))
        return NSError::errorWithErrno(failure, m_path);
    if (got < length) // it was longer when it was opened
        return beyondTheEnd(offset + got, length - got, offset + got);
    return {};
}

std::uint64_t DiscImageSource::sectorCount() const
{
    const std::uint64_t available = (m_dataLength - std::min(m_dataLength, m_sectors.start)) / m_sectors.size;
    return m_sectors.count == 0 ? available : std::min(available, m_sectors.count);
}

NSError DiscImageSource::readSectors(std::uint64_t first, std::size_t count, void *buffer) const
{
    const std::uint64_t all = sectorCount();
    if (first > all || count > all - first)
        return beyondTheEnd(first * userDataSize, count * userDataSize, m_length);
    return readFile(m_sectors.start + first * m_sectors.size, buffer, count * m_sectors.size);
}

bool DiscImageSource::isEarlier(std::uint64_t offset, std::uint64_t length) const
{
    const std::uint64_t end = std::min(std::uint64_t(m_sectors.firstBlock) * userDataSize, m_earlier->length());
    return offset >= beforeTheImage && offset - beforeTheImage <= end && length <= end - (offset - beforeTheImage);
}

NSError DiscImageSource::read(std::uint64_t offset, void *buffer, std::size_t length) const
{
    if (!contains(offset, length))
        return beyondTheEnd(offset, length, m_length);
    if (length == 0) // no buffer is needed then
        return {};
    if (m_whole)
        return m_whole->read(m_partitionOffset + offset, buffer, length);
    if (offset >= beforeTheImage)
        return m_earlier->read(offset - beforeTheImage, buffer, length);
    if (m_sectors.size == userDataSize)
        return readFile(m_sectors.start + offset, buffer, length);
    auto *to = static_cast<char *>(buffer);
    while (length > 0) {
        const std::uint64_t within = offset % userDataSize;
        const std::size_t part = std::size_t(std::min<std::uint64_t>(userDataSize - within, length));
        const std::uint64_t sector = m_sectors.start + offset / userDataSize * m_sectors.size;
        if (NSError error = readFile(sector + m_sectors.dataOffset + within, to, part))
            return error;
        to += part;
        length -= part;
        offset += part;
    }
    return {};
}

} // namespace Tessaron
