#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace Tessaron
{

/// Which view of an image a reader gives. ISO 9660 and Rock Ridge are two views of the same directories: one with the
/// short names, one with all that Rock Ridge adds.
enum class VolumeKind : std::uint8_t {
    ISO9660,
    RockRidge,
    Joliet,
    UDF,
    HFSPlus,
};

/// What a volume says of itself.
struct DiscVolumeFacts {
    VolumeKind kind = VolumeKind::ISO9660;
    QString name; ///< as recorded, without padding
    std::uint32_t blockSize = 0; ///< bytes
    std::uint64_t blockCount = 0; ///< as the volume states it; may exceed the image
    std::uint64_t offset = 0; ///< where the volume begins in the image, bytes
    std::optional<VolumeTime> created;
    std::optional<VolumeTime> modified;
    /// The years (first and last, inclusive) that its times can express; others were set to the nearest.
    int firstYear = 1900;
    int lastYear = 2155;
};

/// Told one object of a folder; the object lives for the call only. False ends the listing.
using VolumeVisitor = std::function<bool(const VolumeObject &object)>;

/// Reads one filesystem of an image. The bytes may be anything: what makes no sense is an error of DiscImageErrorDomain
/// with its offset; memory does not grow with the volume, and every call ends. A reader keeps no state of a listing and
/// may be used by several threads at once.
class TESSARON_EXPORT VolumeReader
{
public:
    virtual ~VolumeReader() = default;
    VolumeReader(const VolumeReader &) = delete;
    VolumeReader &operator=(const VolumeReader &) = delete;

    [[nodiscard]] const DiscVolumeFacts &facts() const { return m_facts; }
    [[nodiscard]] const DiscImageSource &source() const { return *m_source; }

    /// The root folder, without a name.
    [[nodiscard]] virtual VolumeObject root() const = 0;

    /// Tells each object of the folder, in the volume's order, without descending; "." and ".." and what the filesystem
    /// keeps for itself (such as the folder of hard links of HFS+) are left out. `folder` is root() or an object that
    /// was told. An error comes after what could be told before it. What is listed takes time in proportion to the
    /// folder, so a folder that is reached twice must be noticed by the caller (see walkVolume()).
    [[nodiscard]] virtual NSError listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const = 0;

    /// Reads up to `length` bytes of a file's contents from `offset` on; `*bytesRead` is less at the end of the file
    /// only. The same for all filesystems: it follows the object's extents.
    [[nodiscard]] NSError read(const VolumeObject &file, std::uint64_t offset, void *buffer, std::size_t length,
                               std::size_t *bytesRead) const;

protected:
    explicit VolumeReader(std::shared_ptr<const DiscImageSource> source)
        : m_source(std::move(source))
    {
    }

    DiscVolumeFacts m_facts;

private:
    const std::shared_ptr<const DiscImageSource> m_source;
};

/// The result of looking for a filesystem: a reader when it was found, an error when it is there but cannot be read,
/// neither when the image does not have it. A reader may come with an error: a part of the volume is damaged.
struct VolumeReaderResult {
    std::unique_ptr<VolumeReader> reader;
    NSError error;
};

/// No file of a sound image is in more pieces; more are taken for an attack on memory.
inline constexpr std::size_t maximumVolumeExtents = 1'000'000;

/// Puts a run behind the others, joined to the last one where they touch. False when there are too many.
[[nodiscard]] TESSARON_EXPORT bool appendVolumeExtent(const VolumeExtent &extent, std::vector<VolumeExtent> *extents);

/// "ISO 9660", "Rock Ridge", "Joliet", "UDF", "HFS+".
[[nodiscard]] TESSARON_EXPORT QString volumeKindName(VolumeKind kind);

} // namespace Tessaron
