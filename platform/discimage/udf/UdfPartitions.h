#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/NSError.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A block of a partition, as structures of UDF refer to one another.
struct UdfBlockAddress {
    std::uint32_t block = 0;
    std::uint16_t partition = 0; ///< index of the partition reference

    friend bool operator==(const UdfBlockAddress &, const UdfBlockAddress &) = default;
};

/// A run of blocks by number, anywhere in the image (ECMA-167 3/7.1).
struct UdfVolumeExtent {
    std::uint32_t length = 0; ///< bytes
    std::uint32_t block = 0;

    friend bool operator==(const UdfVolumeExtent &, const UdfVolumeExtent &) = default;
};

/// What the volume structure of a UDF disc (ECMA-167 part 3) leads to.
struct UdfVolumeStructure {
    DiscVolumeFacts facts;
    struct Partition {
        std::vector<VolumeExtent> extents; ///< in the image; one, unless the partition is a metadata file
        std::uint64_t length = 0; ///< bytes, of all extents
        std::uint16_t number = 0; ///< of the descriptor that it is part of
        std::optional<std::uint32_t> metadataFile; ///< block of the file entry, of a metadata partition (UDF 2.2.10)
        std::optional<std::uint32_t> metadataMirror; ///< and of its copy
    };
    std::vector<Partition> partitions; ///< by partition reference
    UdfBlockAddress fileSet;
    UdfVolumeExtent integrity; ///< where the integrity descriptors are
    std::uint64_t logicalVolumeOffset = 0; ///< in the image, of the sequence with the descriptor of the volume
    std::array<std::uint8_t, 128> implementationUse{}; ///< of that descriptor

    /// Offset in the image of a block; absent when it is in none of the partitions.
    [[nodiscard]] std::optional<std::uint64_t> offsetOf(const UdfBlockAddress &address) const;
    /// Appends where `length` bytes from a block on lie; the address has an offset. False when there are too many
    /// pieces.
    [[nodiscard]] bool appendRuns(const UdfBlockAddress &address, std::uint64_t length,
                                  std::vector<VolumeExtent> *extents) const;
};

/// The size of blocks by which a UDF volume is found: one for which there is an anchor. A device that was formatted
/// anew may have anchors for more; then the volume counts that was made last.
[[nodiscard]] std::optional<std::uint32_t> udfBlockSizeOf(const DiscImageSource &source);

/// Finds a UDF volume: recognition sequence, anchor, volume descriptors, the reserve sequence where the main one is
/// damaged. `*isThere` tells whether the image says that it is UDF; an error means that it cannot be read.
[[nodiscard]] NSError readUdfVolumeStructure(const DiscImageSource &source, bool *isThere,
                                             UdfVolumeStructure *structure);

} // namespace Tessaron
