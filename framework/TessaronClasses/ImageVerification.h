#pragma once

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/ImageDifferences.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

/// An image, and the sources that it is compared with.
struct VerificationRequest {
    std::shared_ptr<const DiscImageSource> image;
    std::vector<FoundVolume> volumes; ///< of the image, see volumesInImage()
    std::vector<DiscSource> sources; ///< see discSourcesAtPaths()
    /// In place of the sources: what is below its root is what the image should hold, each under its name on the disc
    /// and in the filesystems that its options choose. Null for none. Used by no other thread meanwhile.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
    /// The filesystems that the image must have, no more and no fewer; absent to take it as it is.
    std::optional<DiscFilesystems> filesystems;
    /// The image goes on with what its disc had before: what the sources do not have is not a difference.
    bool hasEarlierFiles = false;
    /// Further tracks and partitions, and the image itself when what is compared is one of these: their structures are
    /// checked, and nothing of them is compared.
    std::vector<DiscImagePart> checkedOnly;
    QString part; ///< name of the part that is compared; empty for the image itself
};

/// How one volume compares with the sources.
struct VolumeVerification {
    VolumeKind kind = VolumeKind::ISO9660;
    std::uint64_t files = 0; ///< found in it, all but folders
    std::uint64_t folders = 0;
    std::uint64_t renamed = 0; ///< under another name than the source's, as the filesystem's rules allow
    std::uint64_t leftOut = 0; ///< links and special files that the filesystem cannot hold
};

/// How an image compares with its sources.
struct VerificationResult {
    NSError error; ///< why not all was compared, such as a stop: the rest says what was found until then
    std::vector<VolumeVerification> volumes; ///< in the order in which they were compared
    ImageDifferenceList differences;
    QStringList notes; ///< which parts of the image were not compared
    std::uint64_t files = 0; ///< of the sources
    std::uint64_t folders = 0;
    std::uint64_t bytesCompared = 0; ///< contents that several filesystems or names share count once
};

/// Reads every filesystem of an image and compares it with the sources that the image was made of: names, kinds, sizes,
/// contents, modification times and targets of links. Blocks until it is done or stopped; `progress` is called on the
/// same thread, at least for every megabyte, with phase, files, folders and bytes set. Programs with an event loop use
/// VerifyJob.
[[nodiscard]] TESSARON_EXPORT VerificationResult
verifyImage(const VerificationRequest &request, const std::stop_token &stop,
            const std::function<void(const DiscJobProgress &)> &progress);

} // namespace Tessaron
