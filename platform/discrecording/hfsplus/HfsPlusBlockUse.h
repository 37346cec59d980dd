#pragma once

#include "platform/discrecording/hfsplus/BTreeRecords.h"
#include "platform/discrecording/image/ImageLayout.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

/// Which of its blocks the volume has in use. Blocks that belong to another filesystem of the disc are given to the
/// file of bad blocks, as a volume does with blocks that it must never touch. So each used block has an owner in the
/// volume, and a check that makes a bitmap from the files gets the one that is recorded. Constant after set().
class HfsPlusBlockUse final : public BTreeRecords
{
public:
    /// How many blocks the bitmap of a volume of `volumeBlocks` blocks takes.
    [[nodiscard]] static std::uint64_t bitmapBlocks(std::uint64_t volumeBlocks);
    static constexpr std::uint16_t longestKey = 10;

    /// Sets the size of the volume, and the runs in it that are foreign and those that are free. All runs are given in
    /// blocks of the image and in any order, and what lies outside of the volume is ignored; foreign ones may overlap
    /// and touch. The volume's first and last block are the headers' and always its own.
    void set(std::uint64_t volumeBlocks, std::vector<BlockRun> foreign, std::vector<BlockRun> unused);

    [[nodiscard]] std::uint32_t unusedBlocks() const;
    [[nodiscard]] std::uint32_t firstUnusedBlock() const;
    [[nodiscard]] bool hasForeignBlocks() const { return !m_foreign.empty(); }

    /// Fills blocks of the bitmap from `firstBlock` of it on. `out` holds zeros.
    void fillBitmap(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;

    // The records of the extents overflow file: eight runs each.
    [[nodiscard]] bool isEmpty() const override { return m_foreign.empty(); }
    [[nodiscard]] BTreePosition first() const override { return {}; }
    [[nodiscard]] bool advance(BTreePosition *position) const override;
    [[nodiscard]] std::size_t keySize(BTreePosition position) const override;
    [[nodiscard]] std::size_t recordSize(BTreePosition position) const override;
    void storeKey(BTreePosition position, std::uint8_t *to) const override;
    void storeRecord(BTreePosition position, std::uint8_t *to) const override;

private:
    /// A run and how many foreign blocks lie before it.
    struct ForeignRun {
        std::uint32_t start = 0;
        std::uint32_t count = 0;
        std::uint32_t before = 0;
    };

    std::vector<ForeignRun> m_foreign; ///< ordered, with gaps between them
    std::vector<BlockRun> m_unused; ///< ordered
    std::uint64_t m_volumeBlocks = 0;
};

} // namespace Tessaron
