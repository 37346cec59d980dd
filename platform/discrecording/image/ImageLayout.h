#pragma once

#include "platform/discrecording/image/BlockImage.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

class FilesystemWriter;

/// Blocks of an image that one writer fills.
struct BlockRegion {
    std::uint64_t start = 0;
    std::uint64_t count = 0;
    const FilesystemWriter *owner = nullptr;
    std::uint32_t tag = 0; ///< the owner's own name for the region
};

/// A run of blocks.
struct BlockRun {
    std::uint64_t start = 0;
    std::uint64_t count = 0;

    friend bool operator==(const BlockRun &, const BlockRun &) = default;
};

/// Gives every block of an image its address: some must lie at fixed places, some at the end, all else follows in the
/// order in which it is asked for. Addresses are 64 bits wide here so that an image that is too big is noticed at the
/// end, once.
class ImageLayout
{
public:
    /// Takes blocks at a fixed address. Several writers may take the same blocks when each writes other bytes of them.
    /// To be called before the first allocate().
    void reserve(std::uint64_t start, std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag);
    /// Takes the next free blocks in a row and returns the first one. A count of 0 takes none and returns the next free
    /// block.
    std::uint64_t allocate(std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag);
    /// The same for an extent of file contents, which belongs to no writer.
    std::uint64_t allocateExtent(std::uint64_t count);
    /// Lets what follows begin at `block`; blocks between stay unused. Ignored when that place is already past.
    void leaveUnusedUpTo(std::uint64_t block);
    /// The last blocks of the image. Several writers' tails overlap, each ends with the image.
    void reserveTail(std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag);

    /// Fixes the size: everything so far, `padding` blocks, the tail, rounded up to whole units of 32 KiB. Nothing can
    /// be placed afterwards.
    void finish(std::uint64_t padding);

    [[nodiscard]] std::uint64_t blockCount() const { return m_blockCount; }
    /// All regions, ordered by address.
    [[nodiscard]] const std::vector<BlockRegion> &regions() const { return m_regions; }
    /// The runs that were not taken, in no order; complete after finish().
    [[nodiscard]] const std::vector<BlockRun> &unusedRuns() const { return m_unused; }
    /// How many blocks the longest tail has.
    [[nodiscard]] std::uint64_t tailBlocks() const;

private:
    /// Moves `m_next` so that `count` blocks there touch no fixed one.
    void skipFixedBlocks(std::uint64_t count);

    std::vector<BlockRegion> m_regions;
    std::vector<BlockRegion> m_fixed; ///< ordered by address
    std::vector<BlockRegion> m_tails;
    std::vector<BlockRun> m_unused;
    std::uint64_t m_next = 0;
    std::uint64_t m_blockCount = 0;
};

/// How many blocks the bytes take.
[[nodiscard]] constexpr std::uint64_t blocksForBytes(std::uint64_t bytes)
{
    return bytes / logicalBlockSize + (bytes % logicalBlockSize != 0 ? 1 : 0);
}

} // namespace Tessaron
