#include "platform/discrecording/iso9660/VolumeDescriptorSet.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/iso9660/VolumeDescriptor.h"

#include <algorithm>

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

void VolumeDescriptorSet::didPlaceFiles(const ImageFacts &image)
{
    m_image = image;
}

void VolumeDescriptorSet::fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const
{
    const Entry &entry = m_entries[index];
    if (entry.writer)
        entry.writer->fillDescriptor(entry.index, descriptor);
    else
        storeVolumeDescriptorSetTerminator(descriptor);
}

/// All of it but the record stays as it is.
void VolumeDescriptorSet::fillSystemArea(std::uint32_t firstBlockOfPart, std::span<std::uint8_t> out) const
{
    const std::size_t begin = std::size_t{firstBlockOfPart} * logicalBlockSize;
    if (contentsRecordOffset < begin || contentsRecordOffset - begin >= out.size())
        return;
    const auto record = contentsRecord(m_image);
    std::copy(record.begin(), record.end(), out.begin() + std::ptrdiff_t(contentsRecordOffset - begin));
}

void VolumeDescriptorSet::fillRegion(std::uint32_t tag, std::uint32_t firstBlockOfPart,
                                     std::span<std::uint8_t> out) const
{
    if (tag == 0) {
        fillSystemArea(firstBlockOfPart, out);
        return;
    }
    for (std::size_t block = 0; block * logicalBlockSize < out.size(); ++block)
        fillDescriptor(firstBlockOfPart + static_cast<std::uint32_t>(block),
                       out.subspan(block * logicalBlockSize, logicalBlockSize));
}

} // namespace Tessaron
