#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <cstdint>
#include <span>

namespace Tessaron
{

/// Where the volume header begins in the volume's first block, and its copy in its last one, bytes.
inline constexpr std::size_t hfsPlusVolumeHeaderOffset = 1024;
inline constexpr std::size_t hfsPlusVolumeHeaderSize = 512;

/// A file that belongs to the volume itself, in one extent.
struct HfsPlusSpecialFile {
    std::uint64_t firstBlock = 0; ///< in the image
    std::uint64_t blockCount = 0;
    std::uint32_t clumpSize = 0; ///< bytes
};

/// What the volume header says.
struct HfsPlusVolumeFacts {
    FileTime time;
    std::uint32_t fileCount = 0;
    std::uint32_t folderCount = 0;
    std::uint32_t totalBlocks = 0;
    std::uint32_t freeBlocks = 0;
    std::uint32_t nextFreeBlock = 0; ///< where to look for free blocks first
    std::uint32_t nextId = 0;
    std::uint64_t volumeId = 0; ///< tells the volume from others
    std::uint32_t contents = 0; ///< see shortContentsRecord()
    bool hasSparedBlocks = false; ///< the file of bad blocks has some, those of other filesystems
    HfsPlusSpecialFile allocationFile;
    HfsPlusSpecialFile extentsFile;
    HfsPlusSpecialFile catalogFile;
};

/// Writes 512 bytes (HFS Plus Volume Format, "Volume Header"). `to` holds zeros.
void storeHfsPlusVolumeHeader(std::uint8_t *to, const HfsPlusVolumeFacts &facts);

} // namespace Tessaron
