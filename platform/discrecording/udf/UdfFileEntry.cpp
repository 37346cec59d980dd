#include "platform/discrecording/udf/UdfFileEntry.h"

#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/udf/UdfFields.h"
#include "platform/discrecording/udf/UdfLinkTarget.h"
#include "platform/discrecording/udf/UdfTag.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

/// ECMA-167 4/14.6.6.
enum FileType : std::uint8_t {
    Directory = 4,
    Bytes = 5,
    BlockDevice = 6,
    CharacterDevice = 7,
    Fifo = 9,
    Socket = 10,
    SymbolicLink = 12,
};

FileType fileTypeOf(ContentKind kind)
{
    switch (kind) {
    case ContentKind::Folder:
        return Directory;
    case ContentKind::SymbolicLink:
        return SymbolicLink;
    case ContentKind::Fifo:
        return Fifo;
    case ContentKind::Socket:
        return Socket;
    case ContentKind::CharacterDevice:
        return CharacterDevice;
    case ContentKind::BlockDevice:
        return BlockDevice;
    case ContentKind::File:
    case ContentKind::Absent:
        break;
    }
    return Bytes;
}

// Flags of an ICB (ECMA-167 4/14.6.8). Descriptors of allocation are short ones, said by 0.
constexpr std::uint16_t contentsAreEmbedded = 3;
constexpr std::uint16_t setsUserId = 1u << 6;
constexpr std::uint16_t setsGroupId = 1u << 7;
constexpr std::uint16_t isSticky = 1u << 8;

constexpr std::uint32_t unsetId = 0xFFFFFFFF;

/// Five bits each for others, group and owner, of which the lower three are those of POSIX (ECMA-167 4/14.9.5). The
/// bits to change attributes and to delete stay clear: nobody can on a disc that is read only.
std::uint32_t permissionsOf(std::uint16_t mode)
{
    return (mode & 07u) | (mode & 070u) << 2 | (mode & 0700u) << 4;
}

} // namespace

UdfFileEntry::UdfFileEntry(const UdfHierarchy &hierarchy, const UdfPlaces &places)
    : m_hierarchy(hierarchy)
    , m_places(places)
{
}

void UdfFileEntry::storeIcbTag(std::uint8_t *to, const ContentNode &content) const
{
    std::uint16_t flags = content.kind == ContentKind::SymbolicLink ? contentsAreEmbedded : 0;
    flags |= (content.mode & S_ISUID) != 0 ? setsUserId : 0;
    flags |= (content.mode & S_ISGID) != 0 ? setsGroupId : 0;
    flags |= (content.mode & S_ISVTX) != 0 ? isSticky : 0;
    storeLittleEndian<std::uint16_t>(to + 4, 4); // strategy
    storeLittleEndian<std::uint16_t>(to + 8, 1); // entries at most
    to[11] = fileTypeOf(content.kind);
    storeLittleEndian<std::uint16_t>(to + 18, flags);
}

void UdfFileEntry::storeTimes(std::uint8_t *entry, NodeIndex node) const
{
    const ObjectTimes times = m_hierarchy.tree().times(node);
    storeUdfTimestamp(entry + 72, times.access);
    storeUdfTimestamp(entry + 84, times.modification);
    storeUdfTimestamp(entry + 96, times.attributeModification);
}

std::size_t UdfFileEntry::storeAttributes(std::uint8_t *to, const ContentNode &content, std::uint32_t icb) const
{
    if (!content.isDevice())
        return 0;
    // The header of the attributes (ECMA-167 4/14.10.1), without places for those of implementations and applications,
    // which therefore begin where the attributes end.
    constexpr std::size_t headerSize = 24;
    constexpr std::uint32_t deviceType = 12;
    constexpr std::uint32_t deviceSize = 24 + udfEntityIdentifierSize;
    storeLittleEndian<std::uint32_t>(to + 16, headerSize + deviceSize);
    storeLittleEndian<std::uint32_t>(to + 20, headerSize + deviceSize);
    storeUdfTag({to, headerSize}, UdfTag::ExtendedAttributeHeader, m_places.icb(icb));
    // The device (4/14.10.7), with its maker in the room for implementations (UDF 3.3.4.4).
    std::uint8_t *const device = to + headerSize;
    storeLittleEndian<std::uint32_t>(device, deviceType);
    device[4] = 1; // subtype
    storeLittleEndian<std::uint32_t>(device + 8, deviceSize);
    storeLittleEndian<std::uint32_t>(device + 12, static_cast<std::uint32_t>(udfEntityIdentifierSize));
    storeLittleEndian<std::uint32_t>(device + 16, gnu_dev_major(content.deviceNumber()));
    storeLittleEndian<std::uint32_t>(device + 20, gnu_dev_minor(content.deviceNumber()));
    storeUdfImplementation(device + 24);
    return headerSize + deviceSize;
}

UdfAllocation UdfFileEntry::allocationOf(NodeIndex node) const
{
    const ContentTree &tree = m_hierarchy.tree();
    const ContentNode &content = tree.nodes[node];
    if (content.isFolder()) {
        const UdfFolder &folder = m_hierarchy.folderOf(node);
        return {m_places.inPartition(m_places.directories + folder.firstBlock), folder.size};
    }
    if (!content.isFile() || content.fileSize() == 0)
        return {};
    return {m_places.inPartition(tree.nodes[content.contentsOwner()].extentStart()), content.fileSize()};
}

std::size_t UdfFileEntry::storeAllocation(std::uint8_t *to, NodeIndex node, std::uint32_t icb) const
{
    const ContentTree &tree = m_hierarchy.tree();
    if (tree.nodes[node].kind == ContentKind::SymbolicLink) {
        const std::string components = udfLinkTarget(tree.linkTarget(node)).components;
        std::copy(components.begin(), components.end(), to);
        return components.size();
    }
    const auto &longFiles = m_hierarchy.longFiles();
    const auto found =
        std::lower_bound(longFiles.begin(), longFiles.end(), icb,
                         [](const UdfLongFile &file, std::uint32_t wanted) { return file.icb < wanted; });
    const std::uint32_t extent = found != longFiles.end() && found->icb == icb ? found->firstExtent : 0;
    return allocationOf(node).storeInEntry(to, m_places.inPartition(m_places.allocationExtents + extent));
}

void UdfFileEntry::store(std::span<std::uint8_t> block, std::uint32_t icb) const
{
    const NodeIndex node = m_hierarchy.nodeOf(icb);
    const ContentNode &content = m_hierarchy.tree().nodes[node];
    const bool hasSource = content.sourceNode != 0;
    const bool hasOwner = hasSource || content.has(ContentNode::HasUserId);
    const bool hasGroup = hasSource || content.has(ContentNode::HasGroupId);
    std::uint8_t *const entry = block.data();
    storeIcbTag(entry + 16, content);
    storeLittleEndian<std::uint32_t>(entry + 36, hasOwner ? content.userId : unsetId);
    storeLittleEndian<std::uint32_t>(entry + 40, hasGroup ? content.groupId : unsetId);
    storeLittleEndian<std::uint32_t>(entry + 44, permissionsOf(content.mode));
    storeLittleEndian<std::uint16_t>(entry + 48, m_hierarchy.linkCount(icb));
    storeTimes(entry, node);
    storeLittleEndian<std::uint32_t>(entry + 108, 1); // checkpoint
    storeUdfImplementation(entry + 128);
    storeLittleEndian<std::uint64_t>(entry + 160, icb == 0 ? 0 : firstUniqueId + icb);

    std::uint8_t *const attributes = entry + UdfAllocation::entryHeadSize;
    const std::size_t attributesSize = storeAttributes(attributes, content, icb);
    const std::size_t allocationSize = storeAllocation(attributes + attributesSize, node, icb);
    const UdfAllocation allocation = allocationOf(node);
    const bool isLink = content.kind == ContentKind::SymbolicLink;
    storeLittleEndian<std::uint64_t>(entry + 56, isLink ? allocationSize : allocation.size);
    storeLittleEndian<std::uint64_t>(entry + 64, blocksForBytes(allocation.size));
    storeLittleEndian<std::uint32_t>(entry + 168, static_cast<std::uint32_t>(attributesSize));
    storeLittleEndian<std::uint32_t>(entry + 172, static_cast<std::uint32_t>(allocationSize));
    storeUdfTag(block.first(UdfAllocation::entryHeadSize + attributesSize + allocationSize), UdfTag::FileEntry,
                m_places.icb(icb));
}

void UdfFileEntry::storeAllocationExtent(std::span<std::uint8_t> block, std::uint32_t extent) const
{
    const auto &longFiles = m_hierarchy.longFiles();
    auto file = std::upper_bound(
        longFiles.begin(), longFiles.end(), extent,
        [](std::uint32_t wanted, const UdfLongFile &candidate) { return wanted < candidate.firstExtent; });
    --file;
    allocationOf(m_hierarchy.nodeOf(file->icb))
        .storeExtent(block.data(), extent - file->firstExtent,
                     m_places.inPartition(m_places.allocationExtents + file->firstExtent));
}

} // namespace Tessaron
