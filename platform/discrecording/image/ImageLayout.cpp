#include "platform/discrecording/image/ImageLayout.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// An image is whole units of 32 KiB: what a DVD writes at once.
constexpr std::uint64_t blocksPerUnit = 16;

bool startsBefore(const BlockRegion &one, const BlockRegion &other)
{
    return one.start < other.start;
}

} // namespace

void ImageLayout::reserve(std::uint64_t start, std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag)
{
    const BlockRegion region{start, count, owner, tag};
    m_regions.push_back(region);
    m_fixed.insert(std::upper_bound(m_fixed.begin(), m_fixed.end(), region, startsBefore), region);
}

void ImageLayout::skipFixedBlocks(std::uint64_t count)
{
    for (const BlockRegion &fixed : m_fixed) {
        if (fixed.start < m_next + std::max<std::uint64_t>(count, 1) && m_next < fixed.start + fixed.count) {
            leaveUnusedUpTo(fixed.start);
            m_next = fixed.start + fixed.count;
        }
    }
}

void ImageLayout::leaveUnusedUpTo(std::uint64_t block)
{
    if (block <= m_next)
        return;
    m_unused.push_back({m_next, block - m_next});
    m_next = block;
}

std::uint64_t ImageLayout::tailBlocks() const
{
    std::uint64_t tail = 0;
    for (const BlockRegion &region : m_tails)
        tail = std::max(tail, region.count);
    return tail;
}

std::uint64_t ImageLayout::allocateExtent(std::uint64_t count)
{
    skipFixedBlocks(count);
    const std::uint64_t start = m_next;
    m_next += count;
    return start;
}

std::uint64_t ImageLayout::allocate(std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag)
{
    const std::uint64_t start = allocateExtent(count);
    if (count > 0)
        m_regions.push_back({start, count, owner, tag});
    return start;
}

void ImageLayout::reserveTail(std::uint64_t count, const FilesystemWriter *owner, std::uint32_t tag)
{
    m_tails.push_back({0, count, owner, tag});
}

void ImageLayout::finish(std::uint64_t padding)
{
    const std::uint64_t tail = tailBlocks();
    for (const BlockRegion &fixed : m_fixed) {
        leaveUnusedUpTo(fixed.start);
        m_next = std::max(m_next, fixed.start + fixed.count);
    }
    m_blockCount = (m_next + padding + tail + blocksPerUnit - 1) / blocksPerUnit * blocksPerUnit;
    leaveUnusedUpTo(m_blockCount - tail);
    for (BlockRegion region : m_tails) {
        region.start = m_blockCount - region.count;
        m_regions.push_back(region);
    }
    std::stable_sort(m_regions.begin(), m_regions.end(), startsBefore);
}

} // namespace Tessaron
