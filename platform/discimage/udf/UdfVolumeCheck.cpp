#include "platform/discimage/udf/UdfVolumeCheck.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfDescriptors.h"
#include "platform/discimage/udf/UdfEntryReader.h"
#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/discimage/udf/UdfVolumeSpaceCheck.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace Tessaron
{

namespace
{

constexpr std::size_t descriptorSize = 512;

namespace Integrity = UdfIntegrityField;
namespace IntegrityUse = UdfIntegrityUseField;
namespace Identifier = UdfIdentifierField;
namespace Entry = UdfEntryField;

constexpr std::uint32_t closedIntegrity = 1;
enum Characteristic : std::uint8_t { IsFolder = 2, IsDeleted = 4, IsParent = 8 }; // 4/14.4.3
constexpr std::uint16_t embeddedContents = 3;

QString entryName()
{
    return QStringLiteral("file entry");
}
QString identifierName()
{
    return QStringLiteral("file identifier");
}
QString integrityName()
{
    return QStringLiteral("integrity descriptor");
}

class FileCheck
{
public:
    FileCheck(const DiscImageSource &source, const UdfVolumeStructure &structure, const UdfVolumeCounts &counts,
              const VolumeProblems &problems)
        : m_source(source)
        , m_structure(structure)
        , m_counts(counts)
        , m_problems(problems)
        , m_entry(structure.facts.blockSize)
    {
    }

    void run()
    {
        if (!checkFileSet())
            return;
        // A folder's own folders are looked at behind it: no depth costs any stack.
        for (std::size_t index = 0; index < m_folders.size() && !m_problems.isStopped(); ++index) {
            const Folder folder = m_folders[index]; // a copy: the list grows meanwhile
            checkFolder(folder);
        }
        if (m_problems.isStopped())
            return;
        checkLinkCounts();
        checkUniqueIds();
        checkIntegrity();
        checkMetadataCopies();
    }

private:
    struct Folder {
        UdfBlockAddress address;
        UdfBlockAddress parent;
        VolumeObject object; ///< with its extents
    };
    /// What leads to an entry and what it says itself.
    struct Links {
        std::uint32_t stated = 0;
        std::uint32_t found = 0;
        std::uint64_t uniqueId = 0;
        bool isFolder = false;
    };

    [[nodiscard]] bool checkFileSet()
    {
        const std::optional<std::uint64_t> offset = m_structure.offsetOf(m_structure.fileSet);
        std::array<std::uint8_t, descriptorSize> bytes;
        const QString structure = QStringLiteral("file set descriptor");
        if (!offset || m_source.read(*offset, bytes.data(), bytes.size())) {
            m_problems.damaged(offset.value_or(0), structure, QStringLiteral("it lies outside of its partition"));
            return false;
        }
        if (const NSError error =
                checkUdfDescriptor(bytes, UdfDescriptorKind::FileSet, m_structure.fileSet.block, *offset)) {
            m_problems.error(structure, error);
            return false;
        }
        checkCoverage(bytes, descriptorSize - 32, *offset, structure); // the last bytes are reserved
        checkTerminator({m_structure.fileSet.block + 1, m_structure.fileSet.partition}, structure);
        const UdfBlockAddress root = {loadLittleEndian<std::uint32_t>(&bytes[UdfFileSetField::rootBlock]),
                                      loadLittleEndian<std::uint16_t>(&bytes[UdfFileSetField::rootPartition])};
        VolumeObject object;
        if (!readEntry(root, &object))
            return false;
        if (object.kind != VolumeObjectKind::Folder) {
            m_problems.damaged(object.recordOffset, entryName(), QStringLiteral("the root is not a folder"));
            return false;
        }
        m_folders.push_back({root, root, std::move(object)});
        return true;
    }

    /// A terminator, or nothing, stands behind the file set.
    void checkTerminator(const UdfBlockAddress &address, const QString &structure) const
    {
        const std::optional<std::uint64_t> offset = m_structure.offsetOf(address);
        std::array<std::uint8_t, descriptorSize> bytes;
        if (!offset || m_source.read(*offset, bytes.data(), bytes.size()))
            return;
        const UdfDescriptorKind kind = udfDescriptorKind(bytes);
        const bool isAnother = !checkUdfDescriptor(bytes, kind, address.block, *offset);
        const bool isEmpty = std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
        // What does not look like a descriptor at all is a block of a file.
        const bool looksLikeOne =
            loadLittleEndian<std::uint32_t>(&bytes[UdfTagField::place]) == address.block && address.block != 0;
        if (!isEmpty && !isAnother && looksLikeOne)
            m_problems.unnoticed(*offset, structure, QStringLiteral("the descriptor that ends it is damaged"));
    }

    void checkCoverage(std::span<const std::uint8_t> bytes, std::size_t used, std::uint64_t offset,
                       const QString &structure) const
    {
        if (UdfTagField::size + loadLittleEndian<std::uint16_t>(&bytes[UdfTagField::covered]) < used)
            m_problems.unnoticed(offset + UdfTagField::covered, structure,
                                 QStringLiteral("its checksum does not cover all of it"));
    }

    /// Reads an entry into m_entry, and the object that a reader makes of it; told when that fails.
    [[nodiscard]] bool readEntry(const UdfBlockAddress &address, VolumeObject *object)
    {
        if (const NSError error = readUdfEntry(m_source, m_structure, address, object)) {
            m_problems.error(entryName(), error);
            return false;
        }
        return !m_source.read(object->recordOffset, m_entry.data(), m_entry.size());
    }

    /// Looks at the entry in m_entry, once for each.
    Links checkEntry(const VolumeObject &object)
    {
        const UdfEntryForm &fields = udfEntryForm(m_entry);
        const std::uint64_t offset = object.recordOffset;
        const std::size_t used = fields.headSize + loadLittleEndian<std::uint32_t>(&m_entry[fields.attributesLength])
            + loadLittleEndian<std::uint32_t>(&m_entry[fields.allocationLength]);
        checkCoverage(m_entry, used, offset, entryName());
        checkBlocks(object, fields);
        Links links;
        links.stated = loadLittleEndian<std::uint16_t>(&m_entry[Entry::linkCount]);
        links.uniqueId = loadLittleEndian<std::uint64_t>(&m_entry[fields.uniqueId]);
        links.isFolder = object.kind == VolumeObjectKind::Folder;
        if (object.kind == VolumeObjectKind::Folder)
            ++m_folderCount;
        else
            ++m_fileCount;
        return links;
    }

    void checkBlocks(const VolumeObject &object, const UdfEntryForm &fields) const
    {
        const std::uint64_t recorded = loadLittleEndian<std::uint64_t>(&m_entry[fields.blocksRecorded]);
        const auto allocation = loadLittleEndian<std::uint16_t>(&m_entry[Entry::icbFlags]) & Entry::allocationMask;
        std::uint64_t needed = 0;
        if (allocation != embeddedContents) {
            for (const VolumeExtent &extent : object.extents)
                needed += extent.isHole ? 0 : (extent.length + m_entry.size() - 1) / m_entry.size();
        }
        if (object.kind != VolumeObjectKind::SymbolicLink && needed > recorded)
            m_problems.unnoticed(
                object.recordOffset + fields.blocksRecorded, entryName(),
                QStringLiteral("it has %1, but says %2").arg(counted(needed, "block", "blocks")).arg(recorded));
        for (const VolumeExtent &extent : object.extents) {
            if (!extent.isHole && !m_source.contains(extent.offset, extent.length))
                m_problems.truncated(object.recordOffset, entryName(),
                                     QStringLiteral("its contents lie beyond the end of the image"));
        }
    }

    void checkFolder(const Folder &folder)
    {
        if (m_folders.size() == 1) {
            VolumeObject root;
            if (readEntry(folder.address, &root))
                m_links.insert_or_assign(keyOf(folder.address), checkEntry(root));
        }
        m_listed += folder.object.listingLength;
        if (m_listed > m_source.length())
            return m_problems.damaged(folder.object.recordOffset, entryName(),
                                      QStringLiteral("the folders take more bytes together than the image has"));
        const std::uint64_t length = folder.object.listingLength;
        constexpr std::uint64_t windowSize = 1'048'576; // several identifiers of the greatest size
        std::vector<std::uint8_t> window;
        std::uint64_t windowStart = 0;
        std::uint64_t at = 0;
        bool hasParent = false;
        while (at < length && !m_problems.isStopped()) {
            const std::uint64_t windowEnd = windowStart + window.size();
            if (windowEnd < length && at + Identifier::greatestSize > windowEnd) {
                windowStart = at;
                window.resize(std::size_t(std::min(windowSize, length - at)));
                if (const NSError error = readContents(folder.object, at, window))
                    return m_problems.error(entryName(), error);
            }
            const std::span<const std::uint8_t> rest = std::span(window).subspan(std::size_t(at - windowStart));
            const std::uint64_t offset = placeOf(folder.object, at);
            const std::size_t size = identifierSize(rest);
            if (size == 0 || size > rest.size())
                return m_problems.damaged(offset, identifierName(), QStringLiteral("a folder ends within one"));
            if (!checkIdentifier(rest.first(size), offset, folder, &hasParent))
                return;
            at += size;
        }
        if (!hasParent)
            m_problems.damaged(folder.object.recordOffset, identifierName(),
                               QStringLiteral("a folder does not lead to its parent"));
    }

    [[nodiscard]] NSError readContents(const VolumeObject &object, std::uint64_t position,
                                       std::span<std::uint8_t> to) const
    {
        for (const VolumeExtent &extent : object.extents) {
            if (position >= extent.length) {
                position -= extent.length;
                continue;
            }
            const auto part = std::size_t(std::min<std::uint64_t>(to.size(), extent.length - position));
            if (extent.isHole)
                std::fill_n(to.begin(), part, std::uint8_t(0));
            else if (NSError error = m_source.read(extent.offset + position, to.data(), part))
                return error;
            to = to.subspan(part);
            position = 0;
        }
        return {};
    }

    static std::uint64_t placeOf(const VolumeObject &object, std::uint64_t position)
    {
        for (const VolumeExtent &extent : object.extents) {
            if (position < extent.length)
                return extent.offset + position;
            position -= extent.length;
        }
        return object.recordOffset;
    }

    static std::size_t identifierSize(std::span<const std::uint8_t> bytes)
    {
        if (bytes.size() < Identifier::headSize)
            return 0;
        return (Identifier::headSize + loadLittleEndian<std::uint16_t>(&bytes[Identifier::useLength])
                + bytes[Identifier::nameLength] + 3)
            / 4 * 4;
    }

    [[nodiscard]] static std::uint64_t keyOf(const UdfBlockAddress &address)
    {
        return std::uint64_t(address.partition) << 32 | address.block;
    }

    /// False when the rest of the folder makes no sense.
    [[nodiscard]] bool checkIdentifier(std::span<const std::uint8_t> bytes, std::uint64_t offset, const Folder &folder,
                                       bool *hasParent)
    {
        if (const NSError error = checkUdfDescriptor(bytes, UdfDescriptorKind::FileIdentifier, std::nullopt, offset)) {
            m_problems.error(identifierName(), error);
            return false;
        }
        checkCoverage(bytes, bytes.size() - 3, offset, identifierName());
        const auto place = loadLittleEndian<std::uint32_t>(&bytes[UdfTagField::place]);
        const std::optional<std::uint64_t> stated = m_structure.offsetOf({place, folder.address.partition});
        if (!stated || offset < *stated || offset - *stated >= m_entry.size())
            m_problems.unnoticed(offset + UdfTagField::place, identifierName(),
                                 QStringLiteral("it says that it belongs elsewhere"));
        const UdfBlockAddress address = {loadLittleEndian<std::uint32_t>(&bytes[Identifier::block]),
                                         loadLittleEndian<std::uint16_t>(&bytes[Identifier::partition])};
        const std::uint8_t characteristics = bytes[Identifier::characteristics];
        if ((characteristics & IsDeleted) != 0)
            return true;
        if ((characteristics & IsParent) != 0) {
            *hasParent = true;
            if (!(address == folder.parent))
                m_problems.damaged(offset + Identifier::block, identifierName(),
                                   QStringLiteral("it does not lead to the folder's parent"));
            ++m_links[keyOf(address)].found;
            return true;
        }
        checkObject(address, bytes, offset, folder);
        return true;
    }

    void checkObject(const UdfBlockAddress &address, std::span<const std::uint8_t> bytes, std::uint64_t offset,
                     const Folder &folder)
    {
        const std::uint64_t key = keyOf(address);
        const bool isKnown = m_links.contains(key);
        if (!isKnown) {
            VolumeObject object;
            object.recordOffset = offset;
            if (!readEntry(address, &object))
                return;
            const Links links = checkEntry(object);
            m_links.insert_or_assign(key, links);
            if (links.isFolder)
                m_folders.push_back({address, folder.address, std::move(object)});
        }
        Links &links = m_links[key];
        ++links.found;
        m_nameCount += links.isFolder ? 0 : 1;
        if (links.isFolder != ((bytes[Identifier::characteristics] & IsFolder) != 0))
            m_problems.damaged(offset + Identifier::characteristics, identifierName(),
                               QStringLiteral("it does not agree with its file entry on whether it is a folder"));
        if (isKnown && links.isFolder)
            m_problems.damaged(offset + Identifier::block, identifierName(),
                               QStringLiteral("it leads to a folder that is listed elsewhere"));
        const auto uniqueId = loadLittleEndian<std::uint32_t>(&bytes[Identifier::uniqueId]);
        if (uniqueId != 0 && !isKnown && uniqueId != std::uint32_t(links.uniqueId))
            m_problems.unnoticed(offset + Identifier::uniqueId, identifierName(),
                                 QStringLiteral("it states another unique number than its file entry"));
    }

    void checkLinkCounts() const
    {
        for (const auto &[key, links] : m_links) {
            if (links.stated != links.found)
                m_problems.unnoticed(m_structure.offsetOf({std::uint32_t(key), std::uint16_t(key >> 32)}).value_or(0)
                                         + Entry::linkCount,
                                     entryName(),
                                     QStringLiteral("it says that it has %1, but has %2")
                                         .arg(counted(links.stated, "name", "names"))
                                         .arg(links.found));
        }
    }

    void checkUniqueIds()
    {
        std::vector<std::uint64_t> numbers;
        numbers.reserve(m_links.size());
        for (const auto &[key, links] : m_links) {
            if (links.uniqueId != 0)
                numbers.push_back(links.uniqueId);
        }
        std::sort(numbers.begin(), numbers.end());
        m_greatestUniqueId = numbers.empty() ? 0 : numbers.back();
        const auto twice = std::adjacent_find(numbers.begin(), numbers.end());
        if (twice != numbers.end())
            m_problems.unnoticed(m_folders.front().object.recordOffset, entryName(),
                                 QStringLiteral("two of them have the unique number %1").arg(*twice));
    }

    /// The last descriptor of the extent counts.
    void checkIntegrity() const
    {
        const std::uint32_t blockSize = m_structure.facts.blockSize;
        std::vector<std::uint8_t> bytes(blockSize);
        std::vector<std::uint8_t> last;
        std::uint64_t lastOffset = 0;
        UdfVolumeExtent extent = m_structure.integrity;
        std::uint32_t number = 0;
        // A descriptor may lead to another extent, where they go on. No sound volume has a thousand of them.
        for (int left = 1000; left > 0 && extent.length / blockSize > number; --left) {
            const std::uint32_t block = extent.block + number++;
            const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(block) * blockSize);
            if (m_source.read(offset, bytes.data(), bytes.size())) {
                m_problems.truncated(offset, integrityName(), QStringLiteral("it lies beyond the end of the image"));
                return;
            }
            const UdfDescriptorKind kind = udfDescriptorKind(bytes);
            if (std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; }))
                break;
            const bool isLast = kind == UdfDescriptorKind::Terminator;
            if (const NSError error =
                    checkUdfDescriptor(bytes, isLast ? kind : UdfDescriptorKind::Integrity, block, offset)) {
                m_problems.error(integrityName(), error);
                break;
            }
            if (isLast)
                break;
            last = bytes;
            lastOffset = offset;
            const UdfVolumeExtent next = {
                loadLittleEndian<std::uint32_t>(&bytes[Integrity::nextExtent + UdfExtentField::length]),
                loadLittleEndian<std::uint32_t>(&bytes[Integrity::nextExtent + UdfExtentField::block])};
            if (next.length != 0) {
                extent = next;
                number = 0;
            }
        }
        if (last.empty())
            m_problems.damaged(m_source.offsetOnDisc(std::uint64_t(m_structure.integrity.block) * blockSize),
                               integrityName(), QStringLiteral("it is missing"));
        else
            compareIntegrity(last, lastOffset);
    }

    void compareIntegrity(std::span<const std::uint8_t> bytes, std::uint64_t offset) const
    {
        const std::size_t count = loadLittleEndian<std::uint32_t>(&bytes[Integrity::partitionCount]);
        const std::size_t useLength = loadLittleEndian<std::uint32_t>(&bytes[Integrity::useLength]);
        const std::size_t use = Integrity::tables + 2 * sizeof(std::uint32_t) * count;
        if (count != m_structure.partitions.size() || use > bytes.size() || useLength > bytes.size() - use)
            return m_problems.unnoticed(offset + Integrity::partitionCount, integrityName(),
                                        QStringLiteral("it does not have the partitions of the volume"));
        checkCoverage(bytes, use + useLength, offset, integrityName());
        if (loadLittleEndian<std::uint32_t>(&bytes[Integrity::type]) != closedIntegrity)
            m_problems.unnoticed(offset + Integrity::type, integrityName(),
                                 QStringLiteral("the volume was left open by what wrote it last"));
        for (std::size_t index = 0; index < count; ++index)
            comparePartition(bytes, index, count, offset);
        if (useLength >= IntegrityUse::countsEnd) {
            // A file with several names counts once for some writers, once for each name for others.
            const auto files = loadLittleEndian<std::uint32_t>(&bytes[use + IntegrityUse::fileCount]);
            if (files != m_nameCount)
                compareCount(files, m_fileCount, offset + use + IntegrityUse::fileCount, "files");
            compareCount(loadLittleEndian<std::uint32_t>(&bytes[use + IntegrityUse::folderCount]), m_folderCount,
                         offset + use + IntegrityUse::folderCount, "folders");
        }
        const auto next = loadLittleEndian<std::uint64_t>(&bytes[Integrity::nextUniqueId]);
        if (next <= m_greatestUniqueId)
            m_problems.unnoticed(offset + Integrity::nextUniqueId, integrityName(),
                                 QStringLiteral("the next unique number, %1, is in use").arg(next));
    }

    void comparePartition(std::span<const std::uint8_t> bytes, std::size_t index, std::size_t count,
                          std::uint64_t offset) const
    {
        constexpr std::uint32_t unknown = 0xFFFFFFFF;
        const auto freeBlocks =
            loadLittleEndian<std::uint32_t>(&bytes[Integrity::tables + sizeof(std::uint32_t) * index]);
        const std::size_t at = Integrity::tables + sizeof(std::uint32_t) * (count + index);
        const auto size = loadLittleEndian<std::uint32_t>(&bytes[at]);
        const std::uint64_t blocks = m_structure.partitions[index].length / m_structure.facts.blockSize;
        if (size != unknown && size != blocks)
            m_problems.unnoticed(offset + at, integrityName(),
                                 QStringLiteral("it says that a partition has %1, but it has %2")
                                     .arg(counted(size, "block", "blocks"))
                                     .arg(blocks));
        if (freeBlocks != unknown && freeBlocks > blocks)
            m_problems.unnoticed(offset + Integrity::tables + sizeof(std::uint32_t) * index, integrityName(),
                                 QStringLiteral("more blocks are free than there are"));
    }

    void compareCount(std::uint32_t stated, std::uint64_t found, std::uint64_t offset, const char *what) const
    {
        if (stated != found)
            m_problems.unnoticed(offset, integrityName(),
                                 QStringLiteral("it says that there are %1 %2, but there are %3")
                                     .arg(stated)
                                     .arg(QLatin1String(what))
                                     .arg(found));
    }

    /// Of a metadata partition, both file entries have to be whole and to have the same size.
    void checkMetadataCopies() const
    {
        for (const UdfVolumeStructure::Partition &partition : m_structure.partitions) {
            if (!partition.metadataFile)
                continue;
            for (std::size_t index = 0; index < m_counts.partitionNumbers.size(); ++index) {
                if (m_counts.partitionNumbers[index] == partition.number)
                    checkMetadataCopy(partition);
            }
        }
    }

    void checkMetadataCopy(const UdfVolumeStructure::Partition &partition) const
    {
        const auto outer = std::find_if(m_structure.partitions.begin(), m_structure.partitions.end(),
                                        [&](const UdfVolumeStructure::Partition &one) {
                                            return one.number == partition.number && !one.metadataFile;
                                        });
        if (outer == m_structure.partitions.end())
            return;
        const auto index = std::uint16_t(outer - m_structure.partitions.begin());
        for (const std::uint32_t block : {*partition.metadataFile, *partition.metadataMirror}) {
            VolumeObject file;
            const NSError error = readUdfEntry(m_source, m_structure, {block, index}, &file);
            if (error)
                m_problems.error(QStringLiteral("metadata file"), error);
            else if (file.size != partition.length)
                m_problems.damaged(file.recordOffset, QStringLiteral("metadata file"),
                                   QStringLiteral("it and its copy are not of the same size"));
        }
    }

    const DiscImageSource &m_source;
    const UdfVolumeStructure &m_structure;
    const UdfVolumeCounts &m_counts;
    const VolumeProblems &m_problems;
    std::vector<std::uint8_t> m_entry; ///< the block of the file entry that was read last
    std::vector<Folder> m_folders; ///< in the order in which they are listed
    std::unordered_map<std::uint64_t, Links> m_links; ///< by address
    std::uint64_t m_listed = 0; ///< bytes of the folders so far
    std::uint64_t m_fileCount = 0;
    std::uint64_t m_nameCount = 0; ///< of the files
    std::uint64_t m_folderCount = 0;
    std::uint64_t m_greatestUniqueId = 0;
};

} // namespace

void checkUdfVolume(const std::shared_ptr<const DiscImageSource> &source, VolumeProblemReport &report)
{
    const VolumeProblems problems(report, VolumeKind::UDF);
    const std::optional<UdfVolumeCounts> counts = checkUdfVolumeSpace(*source, problems);
    if (!counts || counts->blockSize == 0 || report.isStopped())
        return;
    bool isThere = false;
    UdfVolumeStructure structure;
    const NSError error = readUdfVolumeStructure(*source, &isThere, &structure);
    if (error)
        return problems.error(QStringLiteral("volume descriptors"), error);
    if (isThere)
        FileCheck(*source, structure, *counts, problems).run();
}

} // namespace Tessaron
