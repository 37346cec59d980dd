#include "platform/discimage/FirstBlock.h"

#include "platform/discimage/ContentsRecordReader.h"
#include "platform/discimage/iso9660/IsoDescriptors.h"
#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sectorSize = 2048;

/// Whether the bytes begin with the record that a directory has of itself (ECMA-119 6.8.2.2), at the block.
bool isOwnRecord(const std::uint8_t *bytes, std::uint32_t block)
{
    constexpr std::uint8_t shortestRecord = 34;
    return bytes[IsoRecordField::length] >= shortestRecord && bytes[IsoRecordField::identifierLength] == 1
        && bytes[IsoRecordField::identifier] == 0
        && loadLittleEndian<std::uint32_t>(&bytes[IsoRecordField::block]) == block
        && loadBigEndian<std::uint32_t>(&bytes[IsoRecordField::block + sizeof(std::uint32_t)]) == block;
}

/// Looks for the directory that says that it lies at the root's block of the disc, first where it is if the source is
/// right, then from the descriptors on.
std::optional<std::uint32_t> firstBlockByRoot(const DiscImageSource &source)
{
    IsoDescriptorSet set;
    (void)readIsoDescriptors(source, &set);
    if (!set.primary || set.primary->facts.blockSize != sectorSize)
        return std::nullopt;
    const std::uint32_t root = set.primary->rootBlock;
    std::array<std::uint8_t, IsoRecordField::identifier + 1> head;
    const std::uint64_t usual = source.offsetOnDisc(root * sectorSize);
    if (source.contains(usual, head.size()) && !source.read(usual, head.data(), head.size())
        && isOwnRecord(head.data(), root))
        return source.firstBlock();
    // Path tables and other descriptors lie in front of it, hardly ever more than these megabytes.
    constexpr std::uint64_t searched = std::uint64_t{8} << 20;
    constexpr std::uint64_t start = 16 * sectorSize;
    const std::uint64_t end = std::min(source.length(), start + searched) / sectorSize * sectorSize;
    if (end <= start)
        return std::nullopt;
    std::vector<std::uint8_t> bytes(std::size_t(end - start));
    if (source.read(start, bytes.data(), bytes.size()))
        return std::nullopt;
    for (std::size_t at = 0; at < bytes.size(); at += sectorSize) {
        const std::uint64_t block = (start + at) / sectorSize;
        if (block <= root && isOwnRecord(&bytes[at], root))
            return std::uint32_t(root - block);
    }
    return std::nullopt;
}

/// An anchor says which block of the disc it is (ECMA-167 3/7.2.8).
std::optional<std::uint32_t> firstBlockByAnchor(const DiscImageSource &source)
{
    constexpr std::uint64_t anchorBlock = 256;
    std::array<std::uint8_t, 512> bytes;
    if (!source.contains(anchorBlock * sectorSize, bytes.size())
        || source.read(anchorBlock * sectorSize, bytes.data(), bytes.size())
        || checkUdfDescriptor(bytes, UdfDescriptorKind::Anchor, std::nullopt, anchorBlock * sectorSize))
        return std::nullopt;
    const auto place = loadLittleEndian<std::uint32_t>(&bytes[UdfTagField::place]);
    return place >= anchorBlock ? std::optional(std::uint32_t(place - anchorBlock)) : std::nullopt;
}

} // namespace

std::uint32_t firstBlockOfImage(const DiscImageSource &source)
{
    if (const std::optional<std::uint32_t> found = firstBlockByRoot(source))
        return *found;
    if (const std::optional<ContentsRecord> record = contentsRecordAt(source, ContentsRecord::systemAreaPlace))
        return record->firstBlock;
    return firstBlockByAnchor(source).value_or(source.firstBlock());
}

} // namespace Tessaron
