#include "platform/discrecording/udf/UdfDirectories.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/udf/UdfFields.h"
#include "platform/discrecording/udf/UdfTag.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

// Fields of a file identifier (ECMA-167 4/14.4), counted from 0.
namespace Field
{
constexpr std::size_t version = 16;
constexpr std::size_t characteristics = 18;
constexpr std::size_t nameLength = 19;
constexpr std::size_t icb = 20;
constexpr std::size_t name = 38; // nothing is in the use of implementations
} // namespace Field

// File characteristics (ECMA-167 4/14.4.3).
constexpr std::uint8_t isHidden = 1;
constexpr std::uint8_t isDirectory = 2;
constexpr std::uint8_t isParent = 8;

constexpr std::size_t longestEntry = udfDirectoryEntrySize(UdfCompressedText::nameCapacity + 1);

std::uint8_t characteristicsOf(const ContentNode &content)
{
    std::uint8_t result = content.isFolder() ? isDirectory : 0;
    if ((content.hiddenIn() & DRFilesystemInclusionMaskUDF) != 0)
        result |= isHidden;
    return result;
}

/// Copies the part of `bytes`, at `at` of a directory, that falls into `out`, which begins at `begin` of it.
void copyOverlap(std::span<const std::uint8_t> bytes, std::uint64_t at, std::uint64_t begin,
                 std::span<std::uint8_t> out)
{
    const std::uint64_t from = std::max(at, begin);
    const std::uint64_t to = std::min(at + bytes.size(), begin + out.size());
    if (from < to)
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(from - at), to - from,
                    out.begin() + static_cast<std::ptrdiff_t>(from - begin));
}

} // namespace

UdfDirectories::UdfDirectories(const UdfHierarchy &hierarchy, const UdfPlaces &places)
    : m_hierarchy(hierarchy)
    , m_places(places)
{
}

void UdfDirectories::fill(std::uint32_t firstBlock, std::span<std::uint8_t> out) const
{
    const auto &folders = m_hierarchy.folders();
    const std::uint64_t begin = std::uint64_t{firstBlock} * logicalBlockSize;
    const std::uint64_t end = begin + out.size();
    auto folder =
        std::upper_bound(folders.begin(), folders.end(), firstBlock,
                         [](std::uint32_t block, const UdfFolder &candidate) { return block < candidate.firstBlock; });
    for (--folder; folder != folders.end(); ++folder) {
        const std::uint64_t start = std::uint64_t{folder->firstBlock} * logicalBlockSize;
        if (start >= end)
            return;
        const std::uint64_t from = std::max(start, begin);
        const std::uint64_t to = std::min(start + folder->size, end);
        if (from < to)
            fillDirectory(*folder, from - start, out.subspan(from - begin, to - from));
    }
}

void UdfDirectories::fillDirectory(const UdfFolder &folder, std::uint64_t begin, std::span<std::uint8_t> out) const
{
    const ContentTree &tree = m_hierarchy.tree();
    const ContentNode &content = tree.nodes[folder.node];
    const std::uint32_t firstBlock = m_places.inPartition(m_places.directories + folder.firstBlock);
    const std::uint64_t end = begin + out.size();
    std::array<std::uint8_t, longestEntry> buffer;
    std::uint64_t at = 0;
    const auto add = [&](std::uint8_t characteristics, NodeIndex target, std::string_view name) {
        const std::span<std::uint8_t> entry(buffer.data(), udfDirectoryEntrySize(name.size()));
        if (at + entry.size() > begin) {
            storeEntry(entry, characteristics, target, name,
                       firstBlock + static_cast<std::uint32_t>(at / logicalBlockSize));
            copyOverlap(entry, at, begin, out);
        }
        at += entry.size();
    };
    NodeIndex child = content.firstChild();
    const std::uint64_t restart = begin / logicalBlockSize / UdfHierarchy::blocksPerRestart;
    if (restart == 0) {
        add(isDirectory | isParent, content.parent, {});
    } else {
        const UdfRestart &place = m_hierarchy.restarts()[folder.firstRestart + restart - 1];
        child = place.child;
        at = place.offset;
    }
    UdfCompressedText name;
    for (; child < content.endChild() && at < end; ++child) {
        if (!m_hierarchy.holds(child))
            continue;
        m_hierarchy.names().nameOf(child, &name);
        add(characteristicsOf(tree.nodes[child]), child, name.view());
    }
}

void UdfDirectories::storeEntry(std::span<std::uint8_t> entry, std::uint8_t characteristics, NodeIndex target,
                                std::string_view name, std::uint32_t location) const
{
    std::fill(entry.begin(), entry.end(), std::uint8_t{0});
    storeLittleEndian<std::uint16_t>(&entry[Field::version], 1);
    entry[Field::characteristics] = characteristics;
    entry[Field::nameLength] = static_cast<std::uint8_t>(name.size());
    storeUdfLongDescriptor(&entry[Field::icb], logicalBlockSize, m_places.icb(m_hierarchy.icbOf(target)));
    std::copy(name.begin(), name.end(), entry.begin() + Field::name);
    storeUdfTag(entry, UdfTag::FileIdentifier, location);
}

} // namespace Tessaron
