#pragma once

#include "platform/discrecording/image/ImageLayout.h"

#include <cstdint>
#include <span>

namespace Tessaron
{

/// The driver descriptor and the partition map with which an image begins (Inside Macintosh: Devices, "The Partition
/// Map").
struct ApplePartitionMap {
    /// What the map counts in, bytes: 512 or 2048. The entries lie one such unit apart, from the second one on.
    std::uint32_t unit = 0;
    std::uint64_t imageBlocks = 0;
    BlockRun volume; ///< the HFS+ volume

    /// Bytes of descriptor and map at most.
    static constexpr std::size_t size = 3 * std::size_t{logicalBlockSize};

    /// The unit that most systems know, Linux among them, as long as it can count the image's blocks: up to
    /// 2 TiB. Above, the block of the disc.
    [[nodiscard]] static std::uint32_t unitFor(std::uint64_t imageBlocks);

    /// Writes descriptor and map. `to` holds zeros; what lies between the structures is left alone.
    void store(std::span<std::uint8_t, size> to) const;

private:
    void storeEntry(std::uint8_t *to, bool isMap) const;
};

} // namespace Tessaron
