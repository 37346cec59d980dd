#include "platform/discrecording/hfsplus/HfsPlusBlockUse.h"

#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/hfsplus/HfsPlusTree.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t bitsPerBlock = std::uint64_t{logicalBlockSize} * 8;
constexpr std::size_t extentsPerRecord = 8;

// Fields of a key (HFS Plus Volume Format, "Extents Overflow File Key"), counted from 0. The fork is 0, the data fork.
namespace Key
{
constexpr std::size_t length = 0;
constexpr std::size_t fileId = 4;
constexpr std::size_t firstBlock = 8;
constexpr std::size_t size = 12;
} // namespace Key

bool startsBefore(const BlockRun &one, const BlockRun &other)
{
    return one.start < other.start;
}

/// Counts the runs from the volume's first block on, orders them and leaves out blocks that do not lie between the
/// volume's headers.
void toVolumeBlocks(std::vector<BlockRun> &runs, std::uint64_t volumeBlocks)
{
    const std::uint64_t first = hfsPlusVolumeStart + 1;
    const std::uint64_t end = hfsPlusVolumeStart + volumeBlocks - 1;
    for (BlockRun &run : runs) {
        const std::uint64_t from = std::max(run.start, first);
        const std::uint64_t to = std::min(run.start + run.count, end);
        run = from < to ? BlockRun{from - hfsPlusVolumeStart, to - from} : BlockRun{};
    }
    std::erase_if(runs, [](const BlockRun &run) { return run.count == 0; });
    std::sort(runs.begin(), runs.end(), startsBefore);
}

/// Sets or clears the bits from `from` up to `to`, the highest bit of a byte first.
void writeBits(std::span<std::uint8_t> bytes, std::uint64_t from, std::uint64_t to, bool value)
{
    const auto put = [&](std::uint64_t bit) {
        const auto mask = static_cast<std::uint8_t>(0x80u >> (bit % 8));
        std::uint8_t &byte = bytes[bit / 8];
        byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
    };
    for (; from < to && from % 8 != 0; ++from)
        put(from);
    const std::uint64_t wholeBytes = from < to ? (to - from) / 8 : 0;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(from / 8), wholeBytes,
                static_cast<std::uint8_t>(value ? 0xFF : 0));
    for (from += wholeBytes * 8; from < to; ++from)
        put(from);
}

} // namespace

std::uint64_t HfsPlusBlockUse::bitmapBlocks(std::uint64_t volumeBlocks)
{
    return (volumeBlocks + bitsPerBlock - 1) / bitsPerBlock;
}

void HfsPlusBlockUse::set(std::uint64_t volumeBlocks, std::vector<BlockRun> foreign, std::vector<BlockRun> unused)
{
    m_volumeBlocks = volumeBlocks;
    m_foreign.clear();
    toVolumeBlocks(foreign, volumeBlocks);
    std::uint32_t before = 0;
    std::uint64_t covered = 0;
    for (const BlockRun &run : foreign) {
        const std::uint64_t start = std::max(run.start, covered);
        const std::uint64_t end = run.start + run.count;
        if (start >= end)
            continue;
        const auto count = static_cast<std::uint32_t>(end - start);
        if (!m_foreign.empty() && covered == start)
            m_foreign.back().count += count;
        else
            m_foreign.push_back({static_cast<std::uint32_t>(start), count, before});
        before += count;
        covered = end;
    }
    m_foreign.shrink_to_fit();
    m_unused = std::move(unused);
    toVolumeBlocks(m_unused, volumeBlocks);
}

std::uint32_t HfsPlusBlockUse::unusedBlocks() const
{
    std::uint64_t count = 0;
    for (const BlockRun &run : m_unused)
        count += run.count;
    return static_cast<std::uint32_t>(count);
}

std::uint32_t HfsPlusBlockUse::firstUnusedBlock() const
{
    return m_unused.empty() ? 0 : static_cast<std::uint32_t>(m_unused.front().start);
}

void HfsPlusBlockUse::fillBitmap(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const std::uint64_t begin = firstBlock * bitsPerBlock;
    const std::uint64_t end = std::min(begin + out.size() * 8, m_volumeBlocks);
    if (begin >= end)
        return;
    writeBits(out, 0, end - begin, true);
    for (const BlockRun &run : m_unused) {
        const std::uint64_t from = std::max(run.start, begin);
        const std::uint64_t to = std::min(run.start + run.count, end);
        if (from < to)
            writeBits(out, from - begin, to - begin, false);
    }
}

bool HfsPlusBlockUse::advance(BTreePosition *position) const
{
    ++position->item;
    return position->item * extentsPerRecord < m_foreign.size();
}

std::size_t HfsPlusBlockUse::keySize(BTreePosition) const
{
    return Key::size;
}

std::size_t HfsPlusBlockUse::recordSize(BTreePosition) const
{
    return Key::size + extentsPerRecord * hfsPlusExtentSize;
}

void HfsPlusBlockUse::storeKey(BTreePosition position, std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Key::length, longestKey);
    storeBigEndian<std::uint32_t>(to + Key::fileId, HfsPlusBadBlockFileId);
    storeBigEndian<std::uint32_t>(to + Key::firstBlock, m_foreign[position.item * extentsPerRecord].before);
}

void HfsPlusBlockUse::storeRecord(BTreePosition position, std::uint8_t *to) const
{
    storeKey(position, to);
    to += Key::size;
    const std::size_t start = position.item * extentsPerRecord;
    const std::size_t end = std::min(start + extentsPerRecord, m_foreign.size());
    for (std::size_t index = start; index < end; ++index, to += hfsPlusExtentSize)
        storeHfsPlusExtent(to, m_foreign[index].start, m_foreign[index].count);
}

} // namespace Tessaron
