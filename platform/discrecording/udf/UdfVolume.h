#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/image/ContentsRecord.h"

#include <cstdint>
#include <span>
#include <string>

namespace Tessaron
{

/// The blocks at the beginning of an image, counted from there, that have fixed places by the standard, or that get the
/// same place in every image: between the volume descriptors, which begin at block 16, and the partition.
struct UdfVolumeLayout {
    static constexpr std::uint32_t firstReserved = 16;
    static constexpr std::uint32_t mainSequence = 32;
    static constexpr std::uint32_t sequenceBlocks = 16; ///< the least that is allowed (UDF 2.2.3.1)
    static constexpr std::uint32_t integritySequence = 64;
    static constexpr std::uint32_t integrityBlocks = 4;
    static constexpr std::uint32_t anchor = 256; ///< the other anchor is the last block of the image
    static constexpr std::uint32_t partition = 257;
    /// The reserve sequence and the last anchor end the image. So the reserve sequence is far from the main one, and
    /// behind everything that other filesystems have at the end: some readers, such as 7z, expect nothing but zeros
    /// between what they know and the last anchor.
    static constexpr std::uint32_t tailBlocks = sequenceBlocks + 1;
};

/// What the structures of a volume say.
struct UdfVolumeFacts {
    std::u16string volumeName;
    std::u16string volumeSet; ///< the set of volumes that it belongs to; begins with 16 digits that tell it from others
    FileTime time;
    std::uint32_t firstBlock = 0; ///< of the image on its disc: places of the volume count from the disc's begin
    std::uint32_t imageBlocks = 0;
    ImageFacts image;
    std::uint32_t fileSet = 0; ///< block of the partition
    std::uint32_t rootIcb = 0; ///< block of the partition
    std::uint64_t nextUniqueId = 0;
    std::uint32_t fileCount = 0;
    std::uint32_t folderCount = 0; ///< the root included

    /// In the image.
    [[nodiscard]] std::uint32_t reserveSequence() const { return imageBlocks - UdfVolumeLayout::tailBlocks; }
    [[nodiscard]] std::uint32_t partitionBlocks() const { return reserveSequence() - UdfVolumeLayout::partition; }
    /// The place on the disc of a block of the image.
    [[nodiscard]] std::uint32_t onDisc(std::uint32_t block) const { return firstBlock + block; }
};

/// Descriptors of the volume recognition sequence (ECMA-167 2/8.3): the beginning of those of ECMA-167, its second
/// edition, the end.
inline constexpr std::uint32_t udfRecognitionCount = 3;
/// Fills a zeroed block with the `index`-th of them.
void storeUdfRecognition(std::span<std::uint8_t> block, std::uint32_t index);

/// Writes the structure that belongs into one of the blocks from UdfVolumeLayout::firstReserved up to the partition.
/// Leaves blocks alone that belong to other writers.
void storeUdfVolumeBlock(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts);

/// Writes the structure that belongs into the `index`-th of the last UdfVolumeLayout::tailBlocks blocks of the image.
void storeUdfTailBlock(std::span<std::uint8_t> block, std::uint32_t index, const UdfVolumeFacts &facts);

/// Blocks of the sequence of file set descriptors.
inline constexpr std::uint32_t udfFileSetBlocks = 2;
/// Fills its `index`-th zeroed block: the descriptor (ECMA-167 4/14.1), then what ends the sequence.
void storeUdfFileSetBlock(std::span<std::uint8_t> block, std::uint32_t index, const UdfVolumeFacts &facts);

} // namespace Tessaron
