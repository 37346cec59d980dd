#pragma once

#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Where an HFS+ volume lies in the image, and how it counts blocks.
struct HfsPlusVolumePlace {
    std::uint64_t offset = 0; ///< of the volume's first byte in the image
    std::uint32_t blockSize = 0; ///< bytes
    std::uint32_t blockCount = 0;
};

/// What the volume says of a fork (HFS Plus Volume Format, "Fork Data Structure"); its first eight extents follow these
/// numbers.
struct HfsPlusForkHead {
    std::uint64_t length = 0; ///< bytes
    std::uint32_t blockCount = 0;
};

/// Reads the head of a structure of HfsPlusForkDataField::size bytes.
[[nodiscard]] HfsPlusForkHead hfsPlusForkHead(const std::uint8_t *from);

/// Collects the extents of one fork while they are found: those in its own record, then those in the extents file.
class HfsPlusForkExtents
{
public:
    HfsPlusForkExtents(const HfsPlusVolumePlace &volume, const HfsPlusForkHead &head);

    /// Takes the eight extents of a record (64 bytes) that lies at `recordOffset` of the image. An error for extents
    /// outside of the volume, for more blocks than the fork has, for too many extents, or for none at all.
    [[nodiscard]] NSError add(const std::uint8_t *eightExtents, std::uint64_t recordOffset);

    /// Blocks found so far: where the next record of extents begins.
    [[nodiscard]] std::uint32_t blocksFound() const { return m_blocksFound; }
    [[nodiscard]] bool isComplete() const { return m_blocksFound == m_head.blockCount; }

    /// The extents, cut to the length of the fork. To be called once it is complete; fails when its blocks are too few
    /// for its length.
    [[nodiscard]] NSError finish(std::uint64_t recordOffset, std::vector<VolumeExtent> *extents);

private:
    const HfsPlusVolumePlace m_volume;
    const HfsPlusForkHead m_head;
    std::uint32_t m_blocksFound = 0;
    std::vector<VolumeExtent> m_extents;
};

} // namespace Tessaron
