#pragma once

#include "platform/discrecording/image/FilesystemWriter.h"
#include "platform/discrecording/iso9660/VolumeDescriptor.h"
#include "platform/discrecording/udf/UdfDirectories.h"
#include "platform/discrecording/udf/UdfFileEntry.h"
#include "platform/discrecording/udf/UdfHierarchy.h"
#include "platform/discrecording/udf/UdfVolume.h"

#include <memory>

namespace Tessaron
{

/// Writes UDF 1.02 (ECMA-167, second edition, as OSTA UDF 1.02 narrows it): a volume that is read only, alone in the
/// image or beside the other filesystems, over the same extents of files. See docs/udf.md.
class UdfWriter final : public FilesystemWriter
{
public:
    /// The image begins at `firstBlock` of its disc.
    UdfWriter(std::shared_ptr<const ContentTree> tree, const VolumeTexts &texts, std::uint32_t firstBlock);

    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues) override;
    [[nodiscard]] std::vector<NamedTree> trees() const override;
    [[nodiscard]] std::uint32_t extendedDescriptorCount() const override { return udfRecognitionCount; }
    void fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const override;
    void placeFixed(ImageLayout &layout) override;
    void place(ImageLayout &layout) override;
    void didPlaceFiles(const ImageFacts &image) override;
    void fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const override;

private:
    enum Region : std::uint32_t {
        VolumeStructures,
        Tail,
        FileSet,
        FileEntries,
        AllocationExtents,
        Directories,
    };

    /// Sixteen hexadecimal digits: the time, and a number made of what the disc holds.
    [[nodiscard]] std::u16string volumeSetPrefix() const;
    void fillBlock(Region region, std::uint32_t block, std::span<std::uint8_t> out) const;

    const VolumeTexts m_texts;
    UdfHierarchy m_hierarchy;
    UdfVolumeFacts m_facts;
    UdfPlaces m_places;
    UdfFileEntry m_entries{m_hierarchy, m_places};
    UdfDirectories m_directories{m_hierarchy, m_places};
};

} // namespace Tessaron
