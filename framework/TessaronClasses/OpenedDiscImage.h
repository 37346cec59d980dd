#pragma once

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron
{

/// One track of an image's table of contents.
struct DiscImageTrack {
    std::uint32_t session = 1;
    std::uint32_t number = 0;
    QByteArray mode; ///< such as "MODE1/2048" or "AUDIO"
    bool isData = false;
    std::uint32_t blockSize = 0;
    std::uint64_t offset = 0; ///< of its data in the file, bytes
    std::uint64_t length = 0; ///< blocks in the file, from `offset` on
    std::uint32_t pregap = 0; ///< blocks in front of those
    bool isPregapInFile = false; ///< they lie in front of `offset`; else they are made when the disc is written
    std::uint32_t postgap = 0; ///< blocks of silence or zeros at the track's end
    QByteArray file; ///< path of the file that holds it, where that is not the image's own
};

/// How the file of an image is laid out.
enum class DiscImageLayout : std::uint8_t {
    Blocks, ///< blocks of user data from its first byte on
    CueSheet, ///< as a cue sheet says, or a .ccd or .toc file
    RawSectors, ///< raw sectors that nothing describes
    VANT, ///< with a trailer
};

/// A part of an image that may have filesystems of its own: a track of data behind the first one, or a partition.
struct DiscImagePart {
    QString name; ///< such as "track 2" or "partition 1 of the GPT"
    std::optional<std::uint32_t> track; ///< its number; absent for a partition
    std::optional<std::size_t> partition; ///< its index among source->partitions() of the image; absent for a track
    std::shared_ptr<const DiscImageSource> source; ///< null when it cannot be opened: `error` says why
    std::vector<FoundVolume> volumes; ///< without those that the image itself has at this place
    NSError error;
};

/// A disc image that was opened to be looked at.
struct OpenedDiscImage {
    QByteArray path; ///< of the file that holds the blocks
    QByteArray cueSheet; ///< path of the cue sheet, .ccd or .toc file that describes it; empty for an image without one
    DiscImageLayout layout = DiscImageLayout::Blocks;
    std::shared_ptr<const DiscImageSource> source; ///< never null
    std::vector<DiscImageTrack> tracks; ///< empty when nothing describes them
    std::vector<FoundVolume> volumes; ///< of the whole image, or of its first track of data
    std::vector<DiscImagePart> parts; ///< tracks, then partitions that begin behind the image's own begin
    /// Which parts of a description were passed over or had to be interpreted, and why one beside the image was not
    /// used.
    QStringList notes;
};

/// Opens an image: a file of blocks, a block device, a cue sheet, a .ccd or .toc file, or a file whose name ends in
/// ".bin" or ".img" with a cue sheet (a .ccd file) of the same name beside it that names it. Finds its tracks and
/// filesystems. An error of code Source (DiscJobErrors.h) when it cannot be read. Reads from the disk, so it is not for
/// the main thread. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<OpenedDiscImage> openDiscImage(const QByteArray &path);

} // namespace Tessaron
