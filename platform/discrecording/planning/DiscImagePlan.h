#pragma once

#include "platform/discrecording/image/BlockImage.h"
#include "platform/discrecording/objects/DRFilesystems.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace Tessaron
{

class DRFolder;
class DRStorageReport;

/// The time given by the environment variable SOURCE_DATE_EPOCH, in seconds since 1970; empty when it is unset or no
/// number.
[[nodiscard]] std::optional<std::int64_t> sourceDateEpochFromEnvironment();

/// What a disc image is to be like.
struct PlanOptions {
    /// The filesystems that may be written; each is written when an object's mask asks for it.
    DRFilesystemMask filesystems = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet;
    /// Names, permissions, times and links of POSIX beside ISO 9660.
    bool rockRidge = true;
    /// Zero blocks behind the last file. None by default: the image is a multiple of 32 KiB anyway; a CD written track
    /// at once wants 150 for readers that read ahead.
    std::uint32_t trailingPaddingBlocks = 0;
    /// Makes images reproducible: the volume's date, and the latest time that any object gets. See docs/iso9660.md.
    std::optional<std::int64_t> sourceDateEpoch = sourceDateEpochFromEnvironment();
    /// Files of at least this many bytes come as FileRun pieces of their own; smaller ones are gathered.
    std::uint32_t bigFileSize = 256 * 1024;
    /// Where on its disc the image begins: behind another track, or in a later session. The addresses that ISO 9660,
    /// Joliet and the volume structures of UDF record count from the disc's begin; those of HFS+ from the image's.
    BlockAddress firstBlock;
    /// How many threads look at the source files, this one included.
    unsigned int threadCount = 2;
};

/// A disc image that is ready to be produced.
struct DiscImagePlan {
    std::shared_ptr<const BlockImage> image; ///< null when planning failed or was cancelled
    std::shared_ptr<const DRStorageReport> report; ///< what the image cannot hold as it stands; null with a null image
    std::uint32_t fileCount = 0; ///< objects on the disc that are not folders
    std::uint32_t folderCount = 0; ///< folders on the disc, the root not counted
};

/// Turns the tree below `root` into a disc image: looks at every source file, makes the names for each filesystem and
/// gives every block its address. Reads no contents. The tree must not change meanwhile; afterwards the plan does not
/// need it.
///
/// What cannot be stored as it stands is not an error but an entry in the report. `*error` is set when there can be no
/// image at all (no filesystem left to write, a first block below 0, an end beyond 2^32 blocks). When `cancellation` is
/// requested the answer is an empty plan with a null error. `progress`, when given, is told a number from 0 to 1 on the
/// calling thread.
[[nodiscard]] DiscImagePlan planDiscImage(const std::shared_ptr<DRFolder> &root, const PlanOptions &options,
                                          const std::stop_token &cancellation,
                                          const std::function<void(double)> &progress, NSError *error);

} // namespace Tessaron
