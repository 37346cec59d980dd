#pragma once

#include "platform/discimage/source/ImageBytes.h"
#include "platform/discimage/source/PartitionTables.h"
#include "platform/disctracks/SectorForm.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/disctracks/vant/VANTImage.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron
{

/// How the sectors of a file hold the 2048 bytes of user data that filesystems are made of.
struct DiscImageSectors {
    std::uint64_t start = 0; ///< offset in the file of the first sector
    std::uint32_t size = 2048; ///< bytes in the file for one sector; 2048 when there is nothing but user data
    std::uint32_t dataOffset = 0; ///< of the user data in the sector
    TrackKind kind = TrackKind::Unstated; ///< of the track that the sectors are of, where that is known
    std::uint64_t count = 0; ///< sectors of that track; 0: all up to the end of the data
    /// Where the first sector lies on its disc: filesystems of a track behind another one, or in a later session, count
    /// their blocks from the disc's begin.
    std::uint32_t firstBlock = 0;

    friend bool operator==(const DiscImageSectors &, const DiscImageSectors &) = default;
};

/// For `firstBlock` above: where the track's index 1 lies on the disc. 0 for a place that no filesystem can have.
[[nodiscard]] TESSARON_EXPORT std::uint32_t firstBlockForSectors(const TableOfContents &contents,
                                                                 const DiscTrack &track);

/// A track of data of a VANT image whose form holds filesystems.
struct DescribedDataTrack {
    std::uint32_t number = 0;
    DiscImageSectors sectors;
};

/// The tracks of data that a trailer describes, in their order.
[[nodiscard]] TESSARON_EXPORT std::vector<DescribedDataTrack> describedDataTracks(const VANTImage &image);

class DiscImageSource;

/// The result of opening an image: the source, or the reason why it cannot be opened.
struct DiscImageSourceResult {
    std::shared_ptr<const DiscImageSource> source;
    NSError error; ///< null when there is a source
};

/// The blocks of a disc image, read by offset. All offsets are those of the user data: for a file of raw sectors they
/// are not those of the file. Every access is checked against the length. Thread-safe after construction.
class TESSARON_EXPORT DiscImageSource
{
public:
    /// Opens the image file at the path, a regular file or a block device. A VANT trailer and partition maps are
    /// looked for. The sectors are those of the first track of data that a trailer describes; without one, raw sectors
    /// (2352 bytes with their sync marks) are recognised.
    [[nodiscard]] static DiscImageSourceResult sourceWithFile(const QString &path);
    /// The same, with the sectors as the caller knows them, for example from a cue sheet.
    [[nodiscard]] static DiscImageSourceResult sourceWithFile(const QString &path, const DiscImageSectors &sectors);
    /// An image that lies in memory.
    [[nodiscard]] static std::shared_ptr<const DiscImageSource> sourceWithBytes(const QByteArray &bytes,
                                                                                std::uint32_t firstBlock = 0);
    /// An image that lies elsewhere. `sectors` says how its bytes hold the user data; no trailer is looked for.
    /// `earlier`, which may be null, has the user data of the disc in front of sectors.firstBlock: the filesystem of a
    /// later session leads there.
    [[nodiscard]] static std::shared_ptr<const DiscImageSource>
    sourceWithReader(std::shared_ptr<const ImageBytes> bytes, const DiscImageSectors &sectors,
                     std::shared_ptr<const ImageBytes> earlier = {});
    /// The blocks of a partition as an image of their own, which begins with the partition's first byte. It has neither
    /// a trailer nor sectors, but may have partitions. The run is cut to what `whole` has.
    [[nodiscard]] static std::shared_ptr<const DiscImageSource>
    sourceWithPartition(std::shared_ptr<const DiscImageSource> whole, std::uint64_t offset, std::uint64_t length);

    /// Bytes of user data, of the track where sectors().count says how long it is: of a VANT image without the trailer.
    [[nodiscard]] std::uint64_t length() const { return m_length; }
    /// Bytes of the file as it is.
    [[nodiscard]] std::uint64_t fileLength() const { return m_fileLength; }
    [[nodiscard]] const DiscImageSectors &sectors() const { return m_sectors; }
    /// The block of the disc, of 2048 bytes, that the image begins with.
    [[nodiscard]] std::uint32_t firstBlock() const { return m_sectors.firstBlock; }
    /// Where a byte of the disc, counted from the disc's begin, lies in the image. What lies in front of the image has
    /// an offset beyond any end, by which it can be read only where the image came with the earlier blocks of its disc;
    /// no sum of two such offsets and lengths overflows.
    [[nodiscard]] std::uint64_t offsetOnDisc(std::uint64_t byteOfDisc) const
    {
        const std::uint64_t first = std::uint64_t(m_sectors.firstBlock) * 2048;
        return byteOfDisc >= first ? byteOfDisc - first : beforeTheImage + byteOfDisc;
    }
    /// The way back: the byte of the disc that lies at an offset of the image.
    [[nodiscard]] std::uint64_t byteOnDisc(std::uint64_t offset) const
    {
        return offset >= beforeTheImage ? offset - beforeTheImage : offset + std::uint64_t(m_sectors.firstBlock) * 2048;
    }
    /// The number that the disc gives to the block, of `blockSize` bytes, at an offset of the image.
    [[nodiscard]] std::uint64_t blockOnDisc(std::uint64_t offset, std::uint32_t blockSize) const
    {
        return byteOnDisc(offset) / blockSize;
    }

    /// Reads exactly `length` bytes at `offset`, or fails: with DiscImageErrorCode::Truncated when they are not all
    /// there, with an error of NSOSStatusErrorDomain when the system refuses.
    [[nodiscard]] NSError read(std::uint64_t offset, void *buffer, std::size_t length) const;
    /// Reads whole sectors as they stand in the file, sectors().size bytes each; `first` counts from sectors().start.
    [[nodiscard]] NSError readSectors(std::uint64_t first, std::size_t count, void *buffer) const;
    /// How many sectors there are for readSectors(): those of the track, as far as the file holds them.
    [[nodiscard]] std::uint64_t sectorCount() const;
    /// True when the run lies within the image, or within the earlier blocks that came with it; no sum can overflow.
    [[nodiscard]] bool contains(std::uint64_t offset, std::uint64_t length) const
    {
        const bool isWithin = offset <= m_length && length <= m_length - offset;
        return isWithin || (m_earlier && isEarlier(offset, length));
    }
    /// The system's descriptor of the file, for advice about reading; -1 for an image that is not in a file. Owned by
    /// this object.
    [[nodiscard]] int descriptor() const { return m_whole ? m_whole->descriptor() : m_file.get(); }

    /// What a VANT trailer says; absent when the file has none, or a damaged one (vantError() is set then).
    [[nodiscard]] const std::optional<VANTImage> &vantImage() const { return m_vantImage; }
    [[nodiscard]] const NSError &vantError() const { return m_vantError; }
    /// The entries of all partition maps, an Apple map's own included; empty for an image
    /// without a map. See
    /// readPartitionTables().
    [[nodiscard]] const std::vector<DiscImagePartition> &partitions() const { return m_partitions; }

private:
    DiscImageSource() = default;
    [[nodiscard]] static DiscImageSourceResult open(const QString &path,
                                                    const std::optional<DiscImageSectors> &sectors);
    [[nodiscard]] NSError recogniseTrailer(const QString &path);
    void recogniseSectors();
    void measure();
    void recogniseDamagedTrailer();
    [[nodiscard]] NSError readFile(std::uint64_t offset, void *buffer, std::size_t length) const;
    [[nodiscard]] bool isEarlier(std::uint64_t offset, std::uint64_t length) const;

    static constexpr std::uint64_t beforeTheImage = std::uint64_t{1} << 62;

    QString m_path;
    UniqueDescriptor m_file;
    QByteArray m_bytes; ///< of an image in memory
    std::shared_ptr<const ImageBytes> m_reader; ///< of an image that lies elsewhere
    std::shared_ptr<const ImageBytes> m_earlier; ///< what lies on the disc in front of that; null when it is not known
    std::shared_ptr<const DiscImageSource> m_whole; ///< what a partition is part of
    std::uint64_t m_partitionOffset = 0; ///< in that
    std::uint64_t m_fileLength = 0;
    std::uint64_t m_dataLength = 0; ///< bytes of the file in front of a trailer
    std::uint64_t m_length = 0;
    DiscImageSectors m_sectors;
    std::optional<VANTImage> m_vantImage;
    NSError m_vantError;
    std::vector<DiscImagePartition> m_partitions;
};

} // namespace Tessaron
