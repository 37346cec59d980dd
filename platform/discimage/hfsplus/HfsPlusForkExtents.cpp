#include "platform/discimage/hfsplus/HfsPlusForkExtents.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

namespace Extent = HfsPlusExtentField;

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

} // namespace

HfsPlusForkHead hfsPlusForkHead(const std::uint8_t *from)
{
    return {loadBigEndian<std::uint64_t>(from + HfsPlusForkDataField::length),
            loadBigEndian<std::uint32_t>(from + HfsPlusForkDataField::blockCount)};
}

HfsPlusForkExtents::HfsPlusForkExtents(const HfsPlusVolumePlace &volume, const HfsPlusForkHead &head)
    : m_volume(volume)
    , m_head(head)
{
}

NSError HfsPlusForkExtents::add(const std::uint8_t *eightExtents, std::uint64_t recordOffset)
{
    const std::uint32_t before = m_blocksFound;
    for (std::size_t index = 0; index < Extent::perRecord && !isComplete(); ++index) {
        const std::uint32_t start = loadBigEndian<std::uint32_t>(eightExtents + index * Extent::size + Extent::start);
        const std::uint32_t count = loadBigEndian<std::uint32_t>(eightExtents + index * Extent::size + Extent::count);
        if (count == 0)
            break;
        if (start > m_volume.blockCount || count > m_volume.blockCount - start)
            return damaged(recordOffset, QStringLiteral("An extent lies outside of the volume"));
        if (count > m_head.blockCount - m_blocksFound)
            return damaged(recordOffset, QStringLiteral("The extents have more blocks than their fork"));
        m_blocksFound += count;
        const std::uint64_t blockSize = m_volume.blockSize;
        if (!appendVolumeExtent({m_volume.offset + start * blockSize, count * blockSize}, &m_extents))
            return damaged(recordOffset, QStringLiteral("A fork is in too many pieces"));
    }
    if (m_blocksFound == before && !isComplete())
        return damaged(recordOffset, QStringLiteral("A fork has fewer blocks than it says"));
    return {};
}

NSError HfsPlusForkExtents::finish(std::uint64_t recordOffset, std::vector<VolumeExtent> *extents)
{
    std::uint64_t left = m_head.length;
    for (VolumeExtent &extent : m_extents) {
        extent.length = std::min(extent.length, left);
        left -= extent.length;
    }
    if (left > 0)
        return damaged(recordOffset, QStringLiteral("A fork is longer than its blocks"));
    std::erase_if(m_extents, [](const VolumeExtent &extent) { return extent.length == 0; });
    *extents = std::move(m_extents);
    return {};
}

} // namespace Tessaron
