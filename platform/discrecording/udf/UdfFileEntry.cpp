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

// Fields of a file entry (ECMA-167 4/14.9), counted from 0.
namespace Entry
{
constexpr std::size_t icbTag = udfTagSize;
constexpr std::size_t userId = 36;
constexpr std::size_t groupId = 40;
constexpr std::size_t permissions = 44;
constexpr std::size_t linkCount = 48;
constexpr std::size_t informationLength = 56;
constexpr std::size_t blocksRecorded = 64;
constexpr std::size_t accessTime = 72;
constexpr std::size_t modificationTime = 84;
constexpr std::size_t attributeTime = 96;
constexpr std::size_t checkpoint = 108;
constexpr std::size_t implementation = 128;
constexpr std::size_t uniqueId = 160;
constexpr std::size_t attributesLength = 168;
constexpr std::size_t allocationLength = 172;
} // namespace Entry

// The tag of an ICB (4/14.6).
namespace IcbTag
{
constexpr std::size_t strategy = 4;
constexpr std::size_t greatestEntryCount = 8;
constexpr std::size_t fileType = 11;
constexpr std::size_t flags = 18;
} // namespace IcbTag

// The header of extended attributes (4/14.10.1).
namespace AttributeHeader
{
constexpr std::size_t implementationAttributes = 16;
constexpr std::size_t applicationAttributes = 20;
constexpr std::size_t size = 24;
} // namespace AttributeHeader

// The attribute that describes a device (4/14.10.7), counted from its own start.
namespace Device
{
constexpr std::size_t type = 0;
constexpr std::size_t subtype = 4;
constexpr std::size_t length = 8;
constexpr std::size_t useLength = 12;
constexpr std::size_t majorNumber = 16;
constexpr std::size_t minorNumber = 20;
constexpr std::size_t implementation = 24;
constexpr std::size_t size = implementation + udfEntityIdentifierSize;
} // namespace Device

// Flags of an ICB (ECMA-167 4/14.6.8). 0 in the lowest bits stands for short allocation descriptors.
constexpr std::uint16_t contentsAreEmbedded = 3;
constexpr std::uint16_t setsUserId = 1u << 6;
constexpr std::uint16_t setsGroupId = 1u << 7;
constexpr std::uint16_t isSticky = 1u << 8;

constexpr std::uint32_t unsetId = 0xFFFFFFFF;

/// Five bits each for others, group and owner; the lower three of them are those of POSIX (ECMA-167 4/14.9.5). The bits
/// to change attributes and to delete stay clear: on a disc that is read only, neither is possible.
std::uint32_t permissionsOf(std::uint16_t mode)
{
    constexpr unsigned int furtherBits = 2; // of each class, beside those of POSIX
    const std::uint32_t bits = mode;
    return (bits & S_IRWXO) | (bits & S_IRWXG) << furtherBits | (bits & S_IRWXU) << (2 * furtherBits);
}

} // namespace

UdfFileEntry::UdfFileEntry(const UdfHierarchy &hierarchy, const UdfPlaces &places)
    : m_hierarchy(hierarchy)
    , m_places(places)
{
}

void UdfFileEntry::storeIcbTag(std::uint8_t *to, const ContentNode &content) const
{
    constexpr std::uint16_t onlyOneEntry = 4; // a strategy (4/A.5)
    std::uint16_t flags = content.kind == ContentKind::SymbolicLink ? contentsAreEmbedded : 0;
    flags |= (content.mode & S_ISUID) != 0 ? setsUserId : 0;
    flags |= (content.mode & S_ISGID) != 0 ? setsGroupId : 0;
    flags |= (content.mode & S_ISVTX) != 0 ? isSticky : 0;
    storeLittleEndian<std::uint16_t>(to + IcbTag::strategy, onlyOneEntry);
    storeLittleEndian<std::uint16_t>(to + IcbTag::greatestEntryCount, 1);
    to[IcbTag::fileType] = fileTypeOf(content.kind);
    storeLittleEndian<std::uint16_t>(to + IcbTag::flags, flags);
}

void UdfFileEntry::storeTimes(std::uint8_t *entry, NodeIndex node) const
{
    const ObjectTimes times = m_hierarchy.tree().times(node);
    storeUdfTimestamp(entry + Entry::accessTime, times.access);
    storeUdfTimestamp(entry + Entry::modificationTime, times.modification);
    storeUdfTimestamp(entry + Entry::attributeTime, times.attributeModification);
}

std::size_t UdfFileEntry::storeAttributes(std::uint8_t *to, const ContentNode &content, std::uint32_t icb) const
{
    if (!content.isDevice())
        return 0;
    constexpr std::uint32_t deviceType = 12;
    constexpr std::size_t size = AttributeHeader::size + Device::size;
    // There are no attributes of implementations or applications, so both begin where the attributes end.
    storeLittleEndian<std::uint32_t>(to + AttributeHeader::implementationAttributes, size);
    storeLittleEndian<std::uint32_t>(to + AttributeHeader::applicationAttributes, size);
    storeUdfTag({to, AttributeHeader::size}, UdfTag::ExtendedAttributeHeader, m_places.icb(icb));
    // The device names its maker in the room for implementations (UDF 3.3.4.4).
    std::uint8_t *const device = to + AttributeHeader::size;
    storeLittleEndian<std::uint32_t>(device + Device::type, deviceType);
    device[Device::subtype] = 1;
    storeLittleEndian<std::uint32_t>(device + Device::length, Device::size);
    storeLittleEndian<std::uint32_t>(device + Device::useLength, udfEntityIdentifierSize);
    storeLittleEndian<std::uint32_t>(device + Device::majorNumber, gnu_dev_major(content.deviceNumber()));
    storeLittleEndian<std::uint32_t>(device + Device::minorNumber, gnu_dev_minor(content.deviceNumber()));
    storeUdfImplementation(device + Device::implementation);
    return size;
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
    storeIcbTag(entry + Entry::icbTag, content);
    storeLittleEndian<std::uint32_t>(entry + Entry::userId, hasOwner ? content.userId : unsetId);
    storeLittleEndian<std::uint32_t>(entry + Entry::groupId, hasGroup ? content.groupId : unsetId);
    storeLittleEndian<std::uint32_t>(entry + Entry::permissions, permissionsOf(content.mode));
    storeLittleEndian<std::uint16_t>(entry + Entry::linkCount, m_hierarchy.linkCount(icb));
    storeTimes(entry, node);
    storeLittleEndian<std::uint32_t>(entry + Entry::checkpoint, 1);
    storeUdfImplementation(entry + Entry::implementation);
    storeLittleEndian<std::uint64_t>(entry + Entry::uniqueId, icb == 0 ? 0 : firstUniqueId + icb);

    std::uint8_t *const attributes = entry + UdfAllocation::entryHeadSize;
    const std::size_t attributesSize = storeAttributes(attributes, content, icb);
    const std::size_t allocationSize = storeAllocation(attributes + attributesSize, node, icb);
    const UdfAllocation allocation = allocationOf(node);
    const bool isLink = content.kind == ContentKind::SymbolicLink;
    storeLittleEndian<std::uint64_t>(entry + Entry::informationLength, isLink ? allocationSize : allocation.size);
    storeLittleEndian<std::uint64_t>(entry + Entry::blocksRecorded, blocksForBytes(allocation.size));
    storeLittleEndian<std::uint32_t>(entry + Entry::attributesLength, static_cast<std::uint32_t>(attributesSize));
    storeLittleEndian<std::uint32_t>(entry + Entry::allocationLength, static_cast<std::uint32_t>(allocationSize));
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
