#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/NSError.h"

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

/// What the volume structure of a UDF disc (ECMA-167 part 3) leads to.
struct UdfVolumeStructure {
    DiscVolumeFacts facts;
    struct Partition {
        std::uint64_t offset = 0; ///< in the image, bytes
        std::uint64_t length = 0; ///< bytes
    };
    std::vector<Partition> partitions; ///< by partition reference
    UdfBlockAddress fileSet;

    /// Offset in the image of a block; absent when it is in none of the partitions.
    [[nodiscard]] std::optional<std::uint64_t> offsetOf(const UdfBlockAddress &address) const;
    /// Number in its partition of the block at this offset of the image.
    [[nodiscard]] std::uint32_t blockAt(std::uint64_t offset, std::uint16_t partition) const
    {
        return std::uint32_t((offset - partitions[partition].offset) / facts.blockSize);
    }
};

/// Finds a UDF volume: recognition sequence, anchor, volume descriptors, the reserve sequence where the main one is
/// damaged. `*isThere` tells whether the image says that it is UDF; an error means that it cannot be read.
[[nodiscard]] NSError readUdfVolumeStructure(const DiscImageSource &source, bool *isThere,
                                             UdfVolumeStructure *structure);

} // namespace Tessaron
