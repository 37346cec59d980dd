#pragma once

#include "platform/discrecording/image/FilesystemWriter.h"
#include "platform/discrecording/iso9660/DirectoryHierarchy.h"
#include "platform/discrecording/iso9660/PathTable.h"
#include "platform/discrecording/iso9660/VolumeDescriptor.h"

#include <memory>

namespace Tessaron
{

/// Writes a volume descriptor, its path tables and its directories: ISO 9660, with Rock Ridge beside it when the traits
/// say so, or Joliet.
class HierarchyWriter final : public FilesystemWriter
{
public:
    HierarchyWriter(std::shared_ptr<const ContentTree> tree, const HierarchyTraits &traits, const VolumeTexts &texts);

    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues) override;
    [[nodiscard]] NSError obstacle() const override;
    [[nodiscard]] std::vector<NamedTree> trees() const override;
    [[nodiscard]] std::uint32_t volumeDescriptorCount() const override { return 1; }
    void fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const override;
    void place(ImageLayout &layout) override;
    void didPlaceFiles(const ImageFacts &image) override;
    void fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const override;

private:
    enum Region : std::uint32_t {
        LittleEndianPathTable,
        BigEndianPathTable,
        Directories,
    };

    void fillDirectories(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;
    /// Fills the blocks of one directory from `firstBlock` of it on.
    void fillDirectory(const HierarchyFolder &folder, std::uint32_t firstBlock, std::span<std::uint8_t> out) const;
    void fillContinuations(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;

    DirectoryHierarchy m_hierarchy;
    PathTable m_pathTable;
    const VolumeTexts m_texts;
    IsoVolumeFacts m_facts;
};

} // namespace Tessaron
