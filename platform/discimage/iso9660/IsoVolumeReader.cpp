#include "platform/discimage/iso9660/IsoVolumeReader.h"

#include "platform/discimage/iso9660/IsoDirectory.h"
#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/iso9660/RockRidgeEntry.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

QByteArray bytesOf(std::span<const std::uint8_t> span)
{
    return {reinterpret_cast<const char *>(span.data()), qsizetype(span.size())};
}

/// A plain identifier without its version, and without the dot that ends a name that has no extension (ECMA-119 7.5.1).
QByteArray plainName(QByteArray identifier, bool isFolder)
{
    if (isFolder)
        return identifier;
    const qsizetype version = identifier.lastIndexOf(';');
    if (version >= 0)
        identifier.truncate(version);
    if (identifier.size() > 1 && identifier.endsWith('.'))
        identifier.chop(1);
    return identifier;
}

QByteArray jolietName(std::span<const std::uint8_t> identifier)
{
    QString name = textFromBigEndianUnits(identifier.data(), identifier.size());
    // No version belongs there, but some writers add one; systems do not show it.
    if (name.size() > 2 && name.endsWith(QStringLiteral(";1")))
        name.chop(2);
    return fileSystemRepresentation(name);
}

VolumeObjectKind kindOfMode(std::uint32_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return VolumeObjectKind::Folder;
    case S_IFLNK:
        return VolumeObjectKind::SymbolicLink;
    case S_IFIFO:
    case S_IFSOCK:
    case S_IFCHR:
    case S_IFBLK:
        return VolumeObjectKind::Other;
    default:
        return VolumeObjectKind::File;
    }
}

/// Turns the records of one directory into objects.
class Lister
{
public:
    Lister(const DiscImageSource &source, const DiscVolumeFacts &facts, std::size_t skippedBytes)
        : m_source(source)
        , m_facts(facts)
        , m_skippedBytes(skippedBytes)
    {
    }

    NSError list(const VolumeObject &folder, const VolumeVisitor &visitor)
    {
        IsoDirectory directory(m_source, m_source.offsetOnDisc(folder.location * m_facts.blockSize),
                               folder.listingLength);
        IsoRecord record;
        NSError error;
        while (directory.next(&record, &error)) {
            if (record.isSpecial() || (record.flags & IsoRecord::associatedFlag) != 0)
                continue;
            if (m_isOpen)
                error = addSection(record);
            else
                error = openObject(record);
            if (error)
                return error;
            m_isOpen = record.hasMoreSections();
            if (!m_isOpen && !m_isLeftOut && !visitor(m_object))
                return {};
        }
        if (!error && m_isOpen)
            return discImageError(DiscImageErrorCode::Damaged, m_object.recordOffset,
                                  QStringLiteral("The last section of a file is missing"));
        return error;
    }

private:
    NSError openObject(const IsoRecord &record)
    {
        m_object = {};
        m_isLeftOut = false;
        m_identifier = bytesOf(record.identifier);
        m_object.recordOffset = record.offset;
        m_object.kind = record.isFolder() ? VolumeObjectKind::Folder : VolumeObjectKind::File;
        m_object.name = m_facts.kind == VolumeKind::Joliet ? jolietName(record.identifier)
                                                           : plainName(m_identifier, record.isFolder());
        m_object.modified = volumeTimeFromRecordingDate(&record.bytes[IsoRecordField::date]);
        std::uint32_t folderBlock = record.block;
        std::uint32_t folderLength = record.length;
        if (m_facts.kind == VolumeKind::RockRidge) {
            RockRidgeEntry entry;
            const std::size_t skipped = std::min(m_skippedBytes, record.systemUse.size());
            if (NSError error = readRockRidgeEntry(m_source, m_facts.blockSize, record.systemUse.subspan(skipped),
                                                   record.systemUseOffset + skipped, &entry))
                return error;
            applyRockRidge(entry);
            if (entry.childBlock) {
                folderBlock = *entry.childBlock;
                if (NSError error = readRelocated(folderBlock, &folderLength))
                    return error;
            }
        }
        if (m_object.kind == VolumeObjectKind::Folder) {
            m_object.location = folderBlock;
            m_object.listingLength = folderLength;
            return {};
        }
        return addSection(record);
    }

    void applyRockRidge(const RockRidgeEntry &entry)
    {
        m_isLeftOut = entry.isRelocated;
        if (entry.hasName)
            m_object.name = entry.name;
        if (entry.mode) {
            m_object.mode = entry.mode;
            m_object.kind = kindOfMode(*entry.mode);
        }
        m_object.userId = entry.userId;
        m_object.groupId = entry.groupId;
        m_object.deviceNumber = entry.deviceNumber;
        if (entry.childBlock)
            m_object.kind = VolumeObjectKind::Folder;
        if (entry.modified)
            m_object.modified = entry.modified;
        if (m_object.kind == VolumeObjectKind::SymbolicLink)
            m_object.linkTarget = entry.linkTarget;
        m_object.identity = entry.serialNumber;
    }

    /// A folder that was moved up: its own first record says how long it is (P1282 4.1.5).
    NSError readRelocated(std::uint32_t block, std::uint32_t *length) const
    {
        const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(block) * m_facts.blockSize);
        IsoDirectory directory(m_source, offset, m_facts.blockSize);
        IsoRecord own;
        NSError error;
        if (directory.next(&own, &error)) {
            *length = own.length;
            return {};
        }
        return error
            ? error
            : discImageError(DiscImageErrorCode::Damaged, offset, QStringLiteral("A relocated folder is empty"));
    }

    NSError addSection(const IsoRecord &record)
    {
        if (bytesOf(record.identifier) != m_identifier)
            return discImageError(DiscImageErrorCode::Damaged, record.offset,
                                  QStringLiteral("A section of a file lies among those of another"));
        if (m_object.kind != VolumeObjectKind::File)
            return {};
        // A file without bytes lies nowhere.
        const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(record.block) * m_facts.blockSize);
        m_object.size += record.length;
        if (appendVolumeExtent({offset, record.length, false}, &m_object.extents))
            return {};
        return discImageError(DiscImageErrorCode::Loop, record.offset, QStringLiteral("A file has too many pieces"));
    }

    const DiscImageSource &m_source;
    const DiscVolumeFacts &m_facts;
    const std::size_t m_skippedBytes;
    VolumeObject m_object;
    QByteArray m_identifier; ///< of m_object
    bool m_isOpen = false; ///< further sections of m_object follow
    bool m_isLeftOut = false;
};

} // namespace

IsoVolumeReader::IsoVolumeReader(std::shared_ptr<const DiscImageSource> source, const IsoDescriptor &descriptor)
    : VolumeReader(std::move(source))
    , m_descriptor(descriptor)
{
    m_facts = descriptor.facts;
}

VolumeReaderResult IsoVolumeReader::open(const std::shared_ptr<const DiscImageSource> &source, VolumeKind kind)
{
    IsoDescriptorSet set;
    const NSError error = readIsoDescriptors(*source, &set);
    const std::optional<IsoDescriptor> &descriptor = kind == VolumeKind::Joliet ? set.joliet : set.primary;
    const bool isWanted = descriptor && !descriptor->isStandIn;
    if (!isWanted) // a damaged one is told once, as the primary one
        return {nullptr, kind == VolumeKind::ISO9660 ? error : NSError()};
    std::unique_ptr<IsoVolumeReader> reader(new IsoVolumeReader(source, *descriptor));
    if (kind != VolumeKind::RockRidge)
        return {std::move(reader), {}};
    bool isThere = false;
    const NSError rockRidgeError = reader->findRockRidge(&isThere);
    if (!isThere)
        return {nullptr, rockRidgeError};
    reader->m_facts.kind = VolumeKind::RockRidge;
    return {std::move(reader), rockRidgeError};
}

/// The first record of the root begins with SP where SUSP is in use, and names the extensions.
NSError IsoVolumeReader::findRockRidge(bool *isThere)
{
    IsoDirectory directory(source(), source().offsetOnDisc(std::uint64_t(m_descriptor.rootBlock) * m_facts.blockSize),
                           m_descriptor.rootLength);
    IsoRecord own;
    NSError error;
    if (!directory.next(&own, &error))
        return {}; // the plain view tells the error
    RockRidgeEntry entry;
    const bool hasProtocol = own.systemUse.size() >= SharingProtocolField::size
        && std::memcmp(&own.systemUse[SystemUseField::signature], "SP", 2) == 0;
    if (!hasProtocol)
        return {};
    error = readRockRidgeEntry(source(), m_facts.blockSize, own.systemUse, own.systemUseOffset, &entry);
    *isThere = entry.hasSharingProtocol && entry.isRockRidge;
    m_skippedBytes = entry.skippedBytes;
    return error;
}

VolumeObject IsoVolumeReader::root() const
{
    VolumeObject root;
    root.kind = VolumeObjectKind::Folder;
    root.modified = m_descriptor.rootTime;
    root.recordOffset = m_descriptor.offset;
    root.location = m_descriptor.rootBlock;
    root.listingLength = m_descriptor.rootLength;
    return root;
}

NSError IsoVolumeReader::listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const
{
    return Lister(source(), m_facts, m_skippedBytes).list(folder, visitor);
}

} // namespace Tessaron
