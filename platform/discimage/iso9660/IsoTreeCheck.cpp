#include "platform/discimage/iso9660/IsoTreeCheck.h"

#include "platform/discimage/iso9660/IsoDirectory.h"
#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/iso9660/IsoPathTableCheck.h"
#include "platform/discimage/iso9660/RockRidgeCheck.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace Tessaron
{

namespace
{

namespace Field = IsoRecordField;

/// Formats and protection are those of an extended attribute record, which has to be there then (9.1.6).
constexpr std::uint8_t attributeFlags = 1u << 3 | 1u << 4;
constexpr std::uint8_t reservedFlags = 1u << 5 | 1u << 6;

QString recordName()
{
    return QStringLiteral("directory record");
}

class TreeCheck
{
public:
    TreeCheck(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor, VolumeProblemReport &report)
        : m_source(source)
        , m_descriptor(descriptor)
        , m_report(report)
        , m_problems(report, descriptor.kind)
        , m_rockRidgeProblems(report, VolumeKind::RockRidge)
    {
    }

    void run()
    {
        const auto &root = m_descriptor.rootRecord;
        Folder folder;
        folder.block = loadLittleEndian<std::uint32_t>(&root[Field::block]);
        folder.length = loadLittleEndian<std::uint32_t>(&root[Field::dataLength]);
        folder.recordOffset = m_descriptor.offset + IsoDescriptorField::rootRecord;
        std::copy_n(root.begin() + Field::date, Field::dateSize, folder.date.begin());
        checkRootRecord(root);
        m_places.push_back({folder.block, 0, isoIdentifierHash({})});
        m_folders.push_back(folder);
        m_visited.insert(folder.block);
        for (std::size_t index = 0; index < m_folders.size() && !m_report.isStopped(); ++index)
            checkFolder(index);
        if (!m_report.isStopped())
            checkIsoPathTables(m_source, m_descriptor, m_places, m_report);
    }

private:
    struct Folder {
        std::uint32_t block = 0;
        std::uint32_t length = 0;
        std::uint64_t recordOffset = 0; ///< of the record in its parent
        std::array<std::uint8_t, Field::dateSize> date{};
        std::optional<std::uint32_t> mode;
    };

    void damaged(std::uint64_t offset, const QString &message) const
    {
        m_problems.damaged(offset, recordName(), message);
    }
    void unnoticed(std::uint64_t offset, const QString &message) const
    {
        m_problems.unnoticed(offset, recordName(), message);
    }

    void checkRootRecord(const std::array<std::uint8_t, CheckedIsoDescriptor::rootRecordSize> &root)
    {
        const std::uint64_t offset = m_descriptor.offset + IsoDescriptorField::rootRecord;
        IsoRecord record;
        record.bytes = root;
        record.offset = offset;
        record.flags = root[Field::flags];
        record.identifier = std::span(root).subspan(Field::identifier, 1);
        if (root[Field::length] != CheckedIsoDescriptor::rootRecordSize || root[Field::identifierLength] != 1
            || root[Field::identifier] != 0)
            damaged(offset, QStringLiteral("the root's record has an impossible name or length"));
        if (!record.isFolder())
            damaged(offset + Field::flags, QStringLiteral("the root is not a folder"));
        checkBothEndian(record);
        checkFields(record);
    }

    /// The reader of directories looks at these two before it passes a record on; the root's record comes another way.
    void checkBothEndian(const IsoRecord &record) const
    {
        for (const std::size_t at : {Field::block, Field::dataLength}) {
            if (loadLittleEndian<std::uint32_t>(&record.bytes[at])
                != loadBigEndian<std::uint32_t>(&record.bytes[at + sizeof(std::uint32_t)]))
                damaged(record.offset + at, QStringLiteral("the two byte orders of a place or length disagree"));
        }
    }

    /// What every record has to say whatever it describes.
    void checkFields(const IsoRecord &record)
    {
        const auto number = loadLittleEndian<std::uint16_t>(&record.bytes[Field::volumeNumber]);
        if (number != loadBigEndian<std::uint16_t>(&record.bytes[Field::volumeNumber + sizeof number]))
            unnoticed(record.offset + Field::volumeNumber,
                      QStringLiteral("the two byte orders of the volume's number disagree"));
        if (record.bytes[Field::attributeLength] != 0 && !hasAttributeRecord(record))
            damaged(record.offset + Field::attributeLength,
                    QStringLiteral("it says that extended attributes lie before its extent, but there are none"));
        if ((record.flags & reservedFlags) != 0
            || (record.bytes[Field::attributeLength] == 0 && (record.flags & attributeFlags) != 0))
            damaged(record.offset + Field::flags, QStringLiteral("flags are set that have no meaning here"));
        const std::span<const std::uint8_t> date = record.bytes.subspan(Field::date, Field::dateSize);
        const bool isUnset = std::all_of(date.begin(), date.end(), [](std::uint8_t byte) { return byte == 0; });
        const auto zone = std::int8_t(date.back());
        if (!isUnset && (!volumeTimeFromRecordingDate(date.data()) || zone < -48 || zone > 56))
            damaged(record.offset + Field::date, QStringLiteral("its date makes no sense"));
        const std::size_t identifierEnd = Field::identifier + record.identifier.size();
        if (record.identifier.size() % 2 == 0 && identifierEnd < record.bytes.size()
            && record.bytes[identifierEnd] != 0)
            unnoticed(record.offset + identifierEnd, QStringLiteral("a byte that has to be zero is not"));
        const std::uint64_t blocks =
            (std::uint64_t(record.length) + m_descriptor.blockSize - 1) / m_descriptor.blockSize;
        if (record.length > 0 && record.block + blocks > m_descriptor.blockCount && !isInImage(record.block, blocks))
            damaged(record.offset + Field::block, QStringLiteral("it leads beyond the end of the volume"));
        if (record.length > 0 && isInFront(record.block) && !isInImage(record.block, blocks)
            && !std::exchange(m_hasToldInFront, true))
            m_problems.unsupported(record.offset + Field::block, recordName(),
                                   QStringLiteral("it leads to an earlier session or track, which is not read with "
                                                  "this one"));
    }

    [[nodiscard]] bool isInFront(std::uint32_t block) const
    {
        return std::uint64_t(block) * m_descriptor.blockSize < m_source.blockOnDisc(0, 1);
    }
    /// Some writers count the volume of a later session from the session's begin.
    [[nodiscard]] bool isInImage(std::uint32_t block, std::uint64_t blocks) const
    {
        return m_source.firstBlock() > 0
            && m_source.contains(m_source.offsetOnDisc(std::uint64_t(block) * m_descriptor.blockSize),
                                 blocks * m_descriptor.blockSize);
    }

    /// An extended attribute record (9.5) begins with two numbers in both byte orders, and its version is 1.
    [[nodiscard]] bool hasAttributeRecord(const IsoRecord &record) const
    {
        namespace Attribute = IsoAttributeField;
        std::array<std::uint8_t, Attribute::version + 1> attributes;
        const std::uint64_t offset = m_source.offsetOnDisc(
            std::uint64_t(record.block - record.bytes[Field::attributeLength]) * m_descriptor.blockSize);
        if (m_source.read(offset, attributes.data(), attributes.size()))
            return false;
        const auto isSoundNumber = [&attributes](std::size_t at) {
            return loadLittleEndian<std::uint16_t>(&attributes[at])
                == loadBigEndian<std::uint16_t>(&attributes[at + sizeof(std::uint16_t)]);
        };
        return isSoundNumber(Attribute::owner) && isSoundNumber(Attribute::group)
            && attributes[Attribute::version] == 1;
    }

    [[nodiscard]] std::uint64_t offsetOf(const Folder &folder) const
    {
        return m_source.offsetOnDisc(std::uint64_t(folder.block) * m_descriptor.blockSize);
    }

    void checkFolder(std::size_t index)
    {
        const Folder folder = m_folders[index];
        m_listed += folder.length;
        if (m_listed > m_source.length())
            return damaged(folder.recordOffset,
                           QStringLiteral("the folders take more bytes together than the image has"));
        IsoDirectory directory(m_source, offsetOf(folder), folder.length);
        IsoRecord record;
        NSError error;
        std::size_t count = 0;
        m_lastIdentifier.clear();
        m_isOpen = false;
        while (directory.next(&record, &error)) {
            if (m_report.isStopped())
                return;
            checkFields(record);
            if (count < 2)
                checkSpecial(record, index, count);
            else
                checkObject(record, index);
            ++count;
        }
        if (error)
            m_problems.error(recordName(), error);
        else if (count < 2)
            damaged(folder.recordOffset, QStringLiteral("the folder has no records of itself and its parent"));
        else if (m_isOpen)
            damaged(folder.recordOffset, QStringLiteral("the last section of a file is missing"));
        if (!error)
            checkRest(folder);
    }

    /// Behind the last record of a sector there are zeros: a length that became 0 hides the records behind it.
    void checkRest(const Folder &folder) const
    {
        constexpr std::size_t sectorSize = 2048; // records never cross one (ECMA-119 6.8.1.1)
        std::array<std::uint8_t, sectorSize> sector;
        const std::uint64_t start = offsetOf(folder);
        for (std::uint64_t position = 0; position < folder.length; position += sectorSize) {
            const auto part = std::size_t(std::min<std::uint64_t>(sectorSize, folder.length - position));
            if (m_source.read(start + position, sector.data(), part))
                return;
            std::size_t at = 0;
            while (at < part && sector[at] != 0)
                at += sector[at];
            for (; at < part; ++at) {
                if (sector[at] != 0)
                    return damaged(start + position + at, QStringLiteral("there is something behind the last record"));
            }
        }
    }

    /// The records of the folder itself and of its parent repeat what stands elsewhere.
    void checkSpecial(const IsoRecord &record, std::size_t index, std::size_t number)
    {
        const Folder folder = m_folders[index];
        const Folder &meant = number == 0 ? folder : m_folders[m_places[index].parent];
        const bool isRightName = record.identifier.size() == 1 && record.identifier[0] == number;
        if (!isRightName || !record.isFolder())
            return damaged(record.offset,
                           number == 0 ? QStringLiteral("the folder's record of itself is damaged")
                                       : QStringLiteral("the folder's record of its parent is damaged"));
        // Some writers do not know the length of the parent, or name the folder itself in its place.
        const bool isRightPlace = record.block == meant.block || (number == 1 && record.block == folder.block);
        if (!isRightPlace || (number == 0 && record.length != meant.length))
            damaged(record.offset + Field::block,
                    QStringLiteral("it does not lead where the folder's other records lead"));
        if (number == 0 && index != 0 && !isSameDate(record.bytes.subspan(Field::date, Field::dateSize), meant.date))
            damaged(record.offset + Field::date, QStringLiteral("its date is not that of the folder's other record"));
        checkSpecialRockRidge(record, index, number);
    }

    /// For folders of its own making a well-known writer looks at the clock for each record.
    static bool isSameDate(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other)
    {
        const std::optional<VolumeTime> time = volumeTimeFromRecordingDate(one.data());
        const std::optional<VolumeTime> otherTime = volumeTimeFromRecordingDate(other.data());
        if (!time || !otherTime)
            return std::equal(one.begin(), one.end(), other.begin(), other.end());
        return std::abs(time->seconds - otherTime->seconds) <= 1;
    }

    void checkSpecialRockRidge(const IsoRecord &record, std::size_t index, std::size_t number)
    {
        if (m_descriptor.kind == VolumeKind::Joliet)
            return;
        const bool isRootRecord = index == 0 && number == 0;
        if (isRootRecord) {
            m_use = checkRockRidgeUse(m_source, m_descriptor.blockSize, record, m_rockRidgeProblems);
            m_use.linksHaveOwnDates = m_descriptor.hasContentsRecord;
        }
        if (!m_use.isUsed)
            return;
        const RockRidgeRecordFacts facts =
            checkRockRidgeRecord(m_source, m_descriptor.blockSize, m_use, record, isRootRecord, m_rockRidgeProblems);
        const Folder &meant = number == 0 ? m_folders[index] : m_folders[m_places[index].parent];
        if (isRootRecord)
            m_folders[0].mode = facts.mode;
        else if (number == 0 && facts.mode && meant.mode && facts.mode != meant.mode)
            m_rockRidgeProblems.damaged(record.offset, entryName(),
                                        QStringLiteral("its mode is not that of the folder's other record"));
    }

    static QString entryName() { return QStringLiteral("system use entry"); }

    void checkObject(const IsoRecord &record, std::size_t index)
    {
        const std::string_view identifier(reinterpret_cast<const char *>(record.identifier.data()),
                                          record.identifier.size());
        if (m_isOpen && identifier != m_lastIdentifier)
            damaged(record.offset, QStringLiteral("a section of a file lies among those of another"));
        else if (!m_isOpen && identifier == m_lastIdentifier && (record.flags & IsoRecord::associatedFlag) == 0
                 && !m_lastIsAssociated)
            damaged(record.offset, QStringLiteral("two objects of a folder have the same name"));
        if (m_lastIsAssociated && identifier != m_lastIdentifier)
            damaged(record.offset, QStringLiteral("the record before is associated with a file that is not there"));
        m_isOpen = record.hasMoreSections();
        m_lastIsAssociated = (record.flags & IsoRecord::associatedFlag) != 0;
        m_lastIdentifier = identifier;
        checkIdentifier(record);
        std::optional<std::uint32_t> mode;
        if (m_use.isUsed) {
            const RockRidgeRecordFacts facts =
                checkRockRidgeRecord(m_source, m_descriptor.blockSize, m_use, record, false, m_rockRidgeProblems);
            mode = facts.mode;
        }
        if (record.isFolder())
            addFolder(record, index, mode);
    }

    void addFolder(const IsoRecord &record, std::size_t parent, const std::optional<std::uint32_t> &mode)
    {
        if (m_visited.contains(record.block))
            return damaged(record.offset + Field::block,
                           QStringLiteral("the folder leads to one that is listed elsewhere"));
        if (record.hasMoreSections())
            damaged(record.offset + Field::flags, QStringLiteral("a folder cannot have several sections"));
        m_visited.insert(record.block);
        Folder folder;
        folder.block = record.block;
        folder.length = record.length;
        folder.recordOffset = record.offset;
        folder.mode = mode;
        std::copy_n(record.bytes.begin() + Field::date, Field::dateSize, folder.date.begin());
        m_folders.push_back(folder);
        m_places.push_back({record.block, std::uint32_t(parent), isoIdentifierHash(record.identifier)});
    }

    void checkIdentifier(const IsoRecord &record) const
    {
        bool isFine = !record.isSpecial();
        if (m_descriptor.kind == VolumeKind::Joliet) {
            isFine = isFine && record.identifier.size() % 2 == 0;
            for (std::size_t at = 0; isFine && at < record.identifier.size(); at += 2) {
                const auto unit = loadBigEndian<std::uint16_t>(&record.identifier[at]);
                isFine = unit >= ' ' && unit != u'/' && unit != u'*' && unit != u'?' && unit != u'\\' && unit != u':';
            }
        } else {
            isFine = isFine && std::none_of(record.identifier.begin(), record.identifier.end(), [](std::uint8_t byte) {
                         return byte < ' ' || byte == 0x7F || byte == '/';
                     });
        }
        if (!isFine)
            damaged(record.offset + Field::identifier, QStringLiteral("its name has characters that are not allowed"));
    }

    const DiscImageSource &m_source;
    const CheckedIsoDescriptor &m_descriptor;
    VolumeProblemReport &m_report;
    const VolumeProblems m_problems;
    const VolumeProblems m_rockRidgeProblems;
    RockRidgeUse m_use;
    std::vector<Folder> m_folders; ///< in the order in which they are listed, the root first
    std::vector<IsoFolderPlace> m_places; ///< the same folders
    std::unordered_set<std::uint32_t> m_visited; ///< blocks of the folders
    std::uint64_t m_listed = 0; ///< bytes of the folders so far
    bool m_hasToldInFront = false; ///< that a file lies in front of the image
    // Of the folder that is being listed:
    std::string m_lastIdentifier;
    bool m_lastIsAssociated = false;
    bool m_isOpen = false; ///< further sections of a file follow
};

} // namespace

void checkIsoTree(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor, VolumeProblemReport &report)
{
    TreeCheck(source, descriptor, report).run();
}

} // namespace Tessaron
