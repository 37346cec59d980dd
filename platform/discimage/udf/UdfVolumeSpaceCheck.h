#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What stands in the descriptors of a volume and in its integrity descriptor, for the check of its files.
struct UdfVolumeCounts {
    std::uint32_t blockSize = 0; ///< bytes; 0 when no anchor was found
    std::vector<std::uint64_t> partitionBlocks; ///< as the partition descriptors say, in their order
    std::vector<std::uint16_t> partitionNumbers; ///< of the same
};

/// Holds recognition sequence, anchors and both sequences of volume descriptors against one another. Absent when the
/// image has no trace of UDF.
[[nodiscard]] std::optional<UdfVolumeCounts> checkUdfVolumeSpace(const DiscImageSource &source,
                                                                 const VolumeProblems &problems);

} // namespace Tessaron
