#pragma once

#include "platform/discrecording/hfsplus/BTree.h"
#include "platform/discrecording/hfsplus/HfsPlusBlockUse.h"
#include "platform/discrecording/hfsplus/HfsPlusCatalog.h"
#include "platform/discrecording/hfsplus/HfsPlusForks.h"
#include "platform/discrecording/hfsplus/HfsPlusTree.h"
#include "platform/discrecording/hfsplus/HfsPlusVolumeHeader.h"
#include "platform/discrecording/hfsplus/HfsWrapper.h"
#include "platform/discrecording/image/FilesystemWriter.h"

#include <memory>

namespace Tessaron
{

/// Which ways to the volume an image gets.
enum class HfsPlusAccess : std::uint8_t {
    /// An Apple partition map, and a wrapper for systems that look at the first bytes of a device alone: for an image
    /// that holds nothing but HFS+.
    WrapperAndMap,
    /// The map alone, in units of 512 bytes as long as these can count the image. libblkid looks for a wrapper as it
    /// does for every filesystem that begins at a fixed place; of a device with two of them it says nothing but
    /// "ambivalent", and mount(8) and desktops then mount neither. Linux finds the map by itself when it looks for
    /// HFS+.
    MapAlone,
};

/// Writes an HFS+ volume over nearly the whole image, and the ways to it (docs/hfsplus.md). The volume accounts for the
/// blocks of the other writers, so it must be told to place after them.
class HfsPlusWriter final : public FilesystemWriter
{
public:
    HfsPlusWriter(std::shared_ptr<const ContentTree> tree, HfsPlusAccess access);

    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues) override;
    [[nodiscard]] std::vector<NamedTree> trees() const override;
    void fillDescriptor(std::uint32_t, std::span<std::uint8_t>) const override { }
    void placeFixed(ImageLayout &layout) override;
    void place(ImageLayout &layout) override;
    void placeLast(ImageLayout &layout, std::uint64_t padding) override;
    void didPlaceFiles(const ImageFacts &image) override;
    void fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const override;
    [[nodiscard]] NSError produceRegion(std::uint32_t tag, std::uint32_t firstBlock,
                                        std::span<std::uint8_t> out) const override;

private:
    enum Region : std::uint32_t {
        SystemArea, ///< of the image: partition map, wrapper and volume header
        Catalog,
        LinkTargets,
        ResourceForks,
        Extents,
        Allocation,
        Filler, ///< makes the volume whole units of its wrapper
        LastVolumeBlock,
        LastImageBlock,
    };

    /// The blocks of the layout that are not the volume's.
    [[nodiscard]] std::vector<BlockRun> foreignRuns(const ImageLayout &layout) const;
    /// Takes blocks up to the end of the volume.
    void placeEnd(ImageLayout &layout, std::uint64_t unit);
    [[nodiscard]] bool hasWrapper() const { return m_access == HfsPlusAccess::WrapperAndMap; }
    void storeWrapper(std::uint8_t *to) const;
    void fillSystemArea(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;
    [[nodiscard]] std::uint64_t volumeId() const;

    const std::shared_ptr<const ContentTree> m_content;
    HfsPlusTree m_tree;
    HfsPlusForks m_forks;
    HfsPlusCatalog m_catalogRecords;
    BTree m_catalog;
    HfsPlusBlockUse m_blockUse;
    BTree m_extents;
    HfsPlusVolumeFacts m_facts;
    std::vector<BlockRun> m_fillers;
    const HfsPlusAccess m_access;
    std::uint64_t m_wrapperUnit = 1; ///< blocks
    std::uint32_t m_imageBlocks = 0;
};

} // namespace Tessaron
