#include "platform/discimage/udf/UdfEntryReader.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <sys/stat.h>
#include <unordered_set>
#include <vector>

namespace Tessaron
{

namespace
{

// ECMA-167 4/14.6.6.
enum FileType : std::uint8_t {
    FolderType = 4,
    BlockDeviceType = 6,
    CharacterDeviceType = 7,
    FifoType = 9,
    SocketType = 10,
    LinkType = 12,
};

enum ExtentType : std::uint32_t { Recorded = 0, Continuation = 3 }; // 4/14.14.1.1, the two between are holes

constexpr std::uint64_t maximumLinkComponents = 65536; // bytes; a target of 4096 takes at most a quarter

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

std::uint32_t typeBits(std::uint8_t type)
{
    switch (type) {
    case FolderType:
        return S_IFDIR;
    case BlockDeviceType:
        return S_IFBLK;
    case CharacterDeviceType:
        return S_IFCHR;
    case FifoType:
        return S_IFIFO;
    case SocketType:
        return S_IFSOCK;
    case LinkType:
        return S_IFLNK;
    default:
        return S_IFREG;
    }
}

VolumeObjectKind kindOfType(std::uint8_t type)
{
    switch (typeBits(type)) {
    case S_IFDIR:
        return VolumeObjectKind::Folder;
    case S_IFLNK:
        return VolumeObjectKind::SymbolicLink;
    case S_IFREG:
        return VolumeObjectKind::File;
    default:
        return VolumeObjectKind::Other;
    }
}

/// Others, group and owner have five bits each (4/14.9.5), and the lower three of them are those of POSIX. The special
/// bits are flags of the ICB.
std::uint32_t modeOf(std::uint32_t permissions, std::uint16_t icbFlags)
{
    constexpr unsigned int furtherBits = 2; // of each class, beside those of POSIX
    const std::uint32_t access =
        (permissions & S_IRWXO) | (permissions >> furtherBits & S_IRWXG) | (permissions >> (2 * furtherBits) & S_IRWXU);
    const bool isSetUser = (icbFlags & UdfEntryField::setsUserId) != 0;
    const bool isSetGroup = (icbFlags & UdfEntryField::setsGroupId) != 0;
    const bool isSticky = (icbFlags & UdfEntryField::isSticky) != 0;
    return access | (isSetUser ? S_ISUID : 0u) | (isSetGroup ? S_ISGID : 0u) | (isSticky ? S_ISVTX : 0u);
}

/// Follows the allocation descriptors of one file.
class Allocation
{
public:
    Allocation(const DiscImageSource &source, const UdfVolumeStructure &structure, std::uint16_t partition,
               std::uint64_t size)
        : m_source(source)
        , m_structure(structure)
        , m_partition(partition)
        , m_left(size)
    {
    }

    /// `isLong` says which of the two kinds of allocation descriptors these are. `offset` is the place of the first in
    /// the image.
    [[nodiscard]] NSError follow(std::span<const std::uint8_t> descriptors, bool isLong, std::uint64_t offset,
                                 std::vector<VolumeExtent> *extents)
    {
        namespace Field = UdfAllocationField;
        const std::size_t step = isLong ? Field::longSize : Field::shortSize;
        std::vector<std::uint8_t> block;
        for (std::size_t at = 0; m_left > 0; at += step) {
            if (at + step > descriptors.size())
                return damaged(offset + at,
                               QStringLiteral("A file's extents end %1 early").arg(counted(m_left, "byte", "bytes")));
            const auto word = loadLittleEndian<std::uint32_t>(&descriptors[at + Field::length]);
            const std::uint32_t length = word & Field::lengthMask;
            UdfBlockAddress address = {loadLittleEndian<std::uint32_t>(&descriptors[at + Field::block]), m_partition};
            if (isLong)
                address.partition = loadLittleEndian<std::uint16_t>(&descriptors[at + Field::partition]);
            if (length == 0)
                return damaged(offset + at,
                               QStringLiteral("A file's extents end %1 early").arg(counted(m_left, "byte", "bytes")));
            if (word >> Field::typeShift == Continuation) {
                if (NSError error = enterContinuation(address, offset + at, &block))
                    return error;
                offset = *m_structure.offsetOf(address) + UdfAllocationExtentField::descriptors;
                descriptors = std::span(block).subspan(UdfAllocationExtentField::descriptors);
                at = std::size_t(0) - step; // begins at its start
                continue;
            }
            if (NSError error = add(word >> Field::typeShift, length, address, offset + at, extents))
                return error;
        }
        return {};
    }

private:
    [[nodiscard]] NSError add(std::uint32_t type, std::uint32_t length, const UdfBlockAddress &address,
                              std::uint64_t offset, std::vector<VolumeExtent> *extents)
    {
        const std::uint64_t part = std::min<std::uint64_t>(length, m_left);
        const std::optional<std::uint64_t> place = m_structure.offsetOf(address);
        const bool isHole = type != Recorded;
        if (!isHole && !place)
            return damaged(offset, QStringLiteral("An extent lies outside of its partition"));
        m_left -= part;
        if (isHole ? appendVolumeExtent({0, part, true}, extents) : m_structure.appendRuns(address, part, extents))
            return {};
        return discImageError(DiscImageErrorCode::Loop, offset, QStringLiteral("A file has too many pieces"));
    }

    [[nodiscard]] NSError enterContinuation(const UdfBlockAddress &address, std::uint64_t offset,
                                            std::vector<std::uint8_t> *block)
    {
        const std::optional<std::uint64_t> place = m_structure.offsetOf(address);
        if (!place)
            return damaged(offset, QStringLiteral("Extents go on outside of their partition"));
        if (m_visited.contains(*place))
            return discImageError(DiscImageErrorCode::Loop, *place,
                                  QStringLiteral("The list of a file's extents leads back to itself"));
        m_visited.insert(*place);
        block->resize(m_structure.facts.blockSize);
        if (NSError error = m_source.read(*place, block->data(), block->size()))
            return error;
        if (NSError error = checkUdfDescriptor(*block, UdfDescriptorKind::AllocationExtent, address.block, *place))
            return error;
        const std::size_t length =
            loadLittleEndian<std::uint32_t>(block->data() + UdfAllocationExtentField::descriptorsLength);
        if (length > block->size() - UdfAllocationExtentField::descriptors)
            return damaged(*place + UdfAllocationExtentField::descriptorsLength,
                           QStringLiteral("A list of extents does not fit into its block"));
        block->resize(UdfAllocationExtentField::descriptors + length);
        return {};
    }

    const DiscImageSource &m_source;
    const UdfVolumeStructure &m_structure;
    const std::uint16_t m_partition;
    std::uint64_t m_left; ///< bytes that have no place yet
    std::unordered_set<std::uint64_t> m_visited;
};

/// Path components (4/14.16) as a path; false when they make no sense.
bool readLinkTarget(std::span<const std::uint8_t> components, QByteArray *target)
{
    enum ComponentType : std::uint8_t { OtherRoot = 1, Root = 2, Parent = 3, Current = 4, Name = 5 };
    namespace Field = UdfPathComponentField;
    for (std::size_t at = 0; at < components.size();) {
        if (at + Field::name > components.size()
            || at + Field::name + components[at + Field::nameLength] > components.size())
            return false;
        const std::size_t nameLength = components[at + Field::nameLength];
        if (!target->isEmpty() && !target->endsWith('/'))
            *target += '/';
        const std::optional<QString> name = udfText(components.subspan(at + Field::name, nameLength));
        switch (components[at + Field::type]) {
        case OtherRoot:
        case Root:
            *target = "/";
            break;
        case Parent:
            *target += "..";
            break;
        case Current:
            *target += '.';
            break;
        case Name:
            if (!name)
                return false;
            *target += fileSystemRepresentation(*name);
            break;
        default:
            return false;
        }
        at += Field::name + nameLength;
    }
    return true;
}

/// A symbolic link's contents are its target.
NSError resolveLink(const DiscImageSource &source, std::uint64_t offset, VolumeObject *object)
{
    if (object->size > maximumLinkComponents)
        return damaged(offset,
                       QStringLiteral("A link target of %1 is impossible").arg(counted(object->size, "byte", "bytes")));
    std::vector<std::uint8_t> components;
    for (const VolumeExtent &extent : object->extents) {
        const std::size_t start = components.size();
        components.resize(start + std::size_t(extent.length));
        if (extent.isHole)
            continue;
        if (NSError error = source.read(extent.offset, &components[start], std::size_t(extent.length)))
            return error;
    }
    object->extents.clear();
    object->size = 0;
    if (!readLinkTarget(components, &object->linkTarget))
        return damaged(offset, QStringLiteral("A link target makes no sense"));
    return {};
}

NSError readExtents(const DiscImageSource &source, const UdfVolumeStructure &structure, std::uint16_t partition,
                    std::span<const std::uint8_t> bytes, const UdfEntryForm &entryForm, std::uint64_t offset,
                    VolumeObject *object)
{
    const std::size_t attributes = loadLittleEndian<std::uint32_t>(&bytes[entryForm.attributesLength]);
    const std::size_t allocation = loadLittleEndian<std::uint32_t>(&bytes[entryForm.allocationLength]);
    const std::size_t room = bytes.size() - entryForm.headSize;
    if (attributes > room || allocation > room - attributes)
        return damaged(offset + entryForm.attributesLength, QStringLiteral("A file entry does not fit into its block"));
    const std::size_t start = entryForm.headSize + attributes;
    enum Form : std::uint8_t { Short = 0, Long = 1, Embedded = 3 };
    const int form = bytes[UdfEntryField::icbFlags] & UdfEntryField::allocationMask;
    if (form == Embedded) {
        if (object->size > allocation)
            return damaged(offset + UdfEntryField::informationLength,
                           QStringLiteral("The contents do not fit into their file entry"));
        (void)appendVolumeExtent({offset + start, object->size, false}, &object->extents);
        return {};
    }
    if (form != Short && form != Long)
        return discImageError(DiscImageErrorCode::Unsupported, offset + UdfEntryField::icbFlags,
                              QStringLiteral("Extended allocation descriptors are not read"));
    return Allocation(source, structure, partition, object->size)
        .follow(bytes.subspan(start, allocation), form == Long, offset + start, &object->extents);
}

} // namespace

NSError readUdfEntry(const DiscImageSource &source, const UdfVolumeStructure &structure, const UdfBlockAddress &address,
                     VolumeObject *object)
{
    const std::optional<std::uint64_t> offset = structure.offsetOf(address);
    if (!offset)
        return damaged(object->recordOffset, QStringLiteral("A file entry lies outside of its partition"));
    std::vector<std::uint8_t> bytes(structure.facts.blockSize);
    if (NSError error = source.read(*offset, bytes.data(), bytes.size()))
        return error;
    const UdfEntryForm &form = udfEntryForm(bytes);
    if (NSError error = checkUdfDescriptor(bytes, form.kind, address.block, *offset))
        return error;
    const std::uint8_t type = bytes[UdfEntryField::icbType];
    object->recordOffset = *offset;
    object->kind = kindOfType(type);
    object->size = loadLittleEndian<std::uint64_t>(&bytes[UdfEntryField::informationLength]);
    object->modified = udfTime(&bytes[form.modificationTime]);
    object->mode = typeBits(type)
        | modeOf(loadLittleEndian<std::uint32_t>(&bytes[UdfEntryField::permissions]),
                 loadLittleEndian<std::uint16_t>(&bytes[UdfEntryField::icbFlags]));
    object->identity = *offset;
    object->extents.clear();
    object->linkTarget.clear();
    if (NSError error = readExtents(source, structure, address.partition, bytes, form, *offset, object))
        return error;
    if (object->kind == VolumeObjectKind::SymbolicLink)
        return resolveLink(source, *offset, object);
    if (object->kind == VolumeObjectKind::Folder) {
        object->location = *offset;
        object->listingLength = object->size;
    }
    if (object->kind != VolumeObjectKind::File)
        object->size = 0;
    return {};
}

} // namespace Tessaron
