#pragma once

#include "platform/discrecording/image/FilesystemWriter.h"

#include <vector>

namespace Tessaron
{

/// The descriptors from block 16 on (ECMA-119 6.7.1): those of all filesystems, with the terminator where it belongs.
/// In front of them lies the system area, in which it leaves the record of what the image holds.
class VolumeDescriptorSet final : public FilesystemWriter
{
public:
    static constexpr std::uint64_t firstBlock = 16;

    /// The writers must outlive this one.
    explicit VolumeDescriptorSet(const std::vector<const FilesystemWriter *> &writers);

    [[nodiscard]] bool prepare(const PlanProgress &progress, StorageIssues &issues) override;
    [[nodiscard]] std::vector<NamedTree> trees() const override { return {}; }
    void fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const override;
    void placeFixed(ImageLayout &layout) override;
    void place(ImageLayout &layout) override;
    void didPlaceFiles(const ImageFacts &image) override;
    void fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const override;

private:
    void fillSystemArea(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;

    /// One descriptor: the writer's `index`-th, or the terminator for a null writer.
    struct Entry {
        const FilesystemWriter *writer = nullptr;
        std::uint32_t index = 0;
    };
    std::vector<Entry> m_entries;
    ImageFacts m_image;
};

} // namespace Tessaron
