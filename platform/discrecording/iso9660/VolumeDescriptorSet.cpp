#include "platform/discrecording/iso9660/VolumeDescriptorSet.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/iso9660/VolumeDescriptor.h"

namespace Tessaron
{

VolumeDescriptorSet::VolumeDescriptorSet(const std::vector<const FilesystemWriter *> &writers)
{
    for (const FilesystemWriter *const writer : writers) {
        for (std::uint32_t index = 0; index < writer->volumeDescriptorCount(); ++index)
            m_entries.push_back({writer, index});
    }
    if (!m_entries.empty())
        m_entries.push_back({});
    for (const FilesystemWriter *const writer : writers) {
        for (std::uint32_t index = 0; index < writer->extendedDescriptorCount(); ++index)
            m_entries.push_back({writer, writer->volumeDescriptorCount() + index});
    }
}

bool VolumeDescriptorSet::prepare(const PlanProgress &, StorageIssues &)
{
    return true;
}

void VolumeDescriptorSet::placeFixed(ImageLayout &layout)
{
    // The 16 blocks before are the system's (6.2.1).
    layout.reserve(0, firstBlock, this, 0);
    if (m_entries.empty())
        return;
    layout.reserve(firstBlock, m_entries.size(), this, 1);
}

void VolumeDescriptorSet::place(ImageLayout &) { }

void VolumeDescriptorSet::didPlaceFiles(std::uint32_t) { }

void VolumeDescriptorSet::fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const
{
    const Entry &entry = m_entries[index];
    if (entry.writer)
        entry.writer->fillDescriptor(entry.index, descriptor);
    else
        storeVolumeDescriptorSetTerminator(descriptor);
}

void VolumeDescriptorSet::fillRegion(std::uint32_t tag, std::uint32_t firstBlockOfPart,
                                     std::span<std::uint8_t> out) const
{
    if (tag == 0)
        return; // the system area stays as it is
    for (std::size_t block = 0; block * logicalBlockSize < out.size(); ++block)
        fillDescriptor(firstBlockOfPart + static_cast<std::uint32_t>(block),
                       out.subspan(block * logicalBlockSize, logicalBlockSize));
}

} // namespace Tessaron
