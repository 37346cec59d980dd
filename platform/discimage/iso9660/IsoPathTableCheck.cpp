#include "platform/discimage/iso9660/IsoPathTableCheck.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <limits>
#include <unordered_map>

namespace Tessaron
{

namespace
{

namespace Field = IsoPathTableField;

/// No table can number more folders than its records can name as parents.
constexpr std::size_t maximumParents = std::numeric_limits<std::uint16_t>::max();

class TableCheck
{
public:
    TableCheck(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor,
               const std::vector<IsoFolderPlace> &folders, VolumeProblemReport &report)
        : m_source(source)
        , m_descriptor(descriptor)
        , m_folders(folders)
        , m_problems(report, descriptor.kind)
    {
        m_indexOfBlock.reserve(folders.size());
        for (std::size_t index = 0; index < folders.size(); ++index)
            m_indexOfBlock.insert_or_assign(folders[index].block, std::uint32_t(index));
    }

    void run()
    {
        check(m_descriptor.littleEndianTables[0], false);
        check(m_descriptor.bigEndianTables[0], true);
        if (m_descriptor.littleEndianTables[1] != 0)
            check(m_descriptor.littleEndianTables[1], false);
        if (m_descriptor.bigEndianTables[1] != 0)
            check(m_descriptor.bigEndianTables[1], true);
    }

private:
    [[nodiscard]] static QString structure() { return QStringLiteral("path table"); }

    void check(std::uint32_t block, bool isBigEndian)
    {
        const std::uint64_t offset = m_source.offsetOnDisc(std::uint64_t(block) * m_descriptor.blockSize);
        std::vector<std::uint8_t> table;
        if (block == 0 || !m_source.contains(offset, m_descriptor.pathTableLength))
            return m_problems.damaged(m_descriptor.offset, structure(),
                                      QStringLiteral("it lies beyond the end of the image"));
        constexpr std::uint64_t longestRecord = Field::identifier + 256;
        if (m_descriptor.pathTableLength > m_folders.size() * longestRecord)
            return m_problems.damaged(m_descriptor.offset, structure(),
                                      QStringLiteral("it is longer than the folders could make it"));
        table.resize(m_descriptor.pathTableLength);
        if (const NSError error = m_source.read(offset, table.data(), table.size()))
            return m_problems.error(structure(), error);
        m_indexOfNumber.clear();
        m_isSeen.assign(m_folders.size(), false);
        std::size_t at = 0;
        while (at + Field::identifier <= table.size()) {
            const std::size_t length = table[at + Field::identifierLength];
            const std::size_t next = at + Field::identifier + length + length % 2;
            if (length == 0 || next > table.size())
                break;
            if (!checkRecord(std::span(table).subspan(at, next - at), offset + at, isBigEndian))
                return; // one is told; what is behind it would be wrong for the same reason
            at = next;
        }
        if (at != table.size())
            m_problems.damaged(offset + at, structure(), QStringLiteral("its last record does not end with it"));
        else if (m_indexOfNumber.size() != m_folders.size())
            m_problems.damaged(offset, structure(),
                               QStringLiteral("it has %1 in place of %2")
                                   .arg(counted(m_indexOfNumber.size(), "folder", "folders"))
                                   .arg(m_folders.size()));
    }

    bool checkRecord(std::span<const std::uint8_t> record, std::uint64_t offset, bool isBigEndian)
    {
        const std::uint32_t block = isBigEndian ? loadBigEndian<std::uint32_t>(&record[Field::block])
                                                : loadLittleEndian<std::uint32_t>(&record[Field::block]);
        const std::uint16_t parent = isBigEndian ? loadBigEndian<std::uint16_t>(&record[Field::parent])
                                                 : loadLittleEndian<std::uint16_t>(&record[Field::parent]);
        const auto found = m_indexOfBlock.find(block + record[Field::attributeLength]);
        const auto wrong = [&](std::size_t field, const QString &message) {
            m_problems.damaged(offset + field, structure(), message);
            return false;
        };
        if (found == m_indexOfBlock.end())
            return wrong(Field::block, QStringLiteral("a record leads to no folder of the tree"));
        const std::uint32_t index = found->second;
        if (m_isSeen[index])
            return wrong(Field::block, QStringLiteral("two records lead to one folder"));
        m_isSeen[index] = true;
        const std::size_t length = record[Field::identifierLength];
        const auto identifier = record.subspan(Field::identifier, length);
        const bool isRoot = m_indexOfNumber.empty();
        const bool isRightName = isRoot ? length == 1 && identifier[0] == 0
                                        : isoIdentifierHash(identifier) == m_folders[index].identifierHash;
        if (!isRightName)
            return wrong(Field::identifier, QStringLiteral("a record does not have the name of its folder"));
        if (length % 2 == 1 && record.back() != 0)
            m_problems.unnoticed(offset + Field::identifier + length, structure(),
                                 QStringLiteral("a byte that has to be zero is not"));
        // The field has 16 bits: past 65,535 folders no number in it can be right, and writers differ.
        const std::uint32_t wanted = m_folders[index].parent;
        if (isRoot ? parent != 1 : !isParent(parent, wanted))
            return wrong(Field::parent, QStringLiteral("a record names another parent than its folder has"));
        m_indexOfNumber.push_back(index);
        return true;
    }

    [[nodiscard]] bool isParent(std::uint16_t number, std::uint32_t wanted) const
    {
        if (number != 0 && number <= m_indexOfNumber.size() && m_indexOfNumber[number - 1] == wanted)
            return true;
        return m_folders.size() > maximumParents && m_indexOfNumber.size() > maximumParents;
    }

    const DiscImageSource &m_source;
    const CheckedIsoDescriptor &m_descriptor;
    const std::vector<IsoFolderPlace> &m_folders;
    const VolumeProblems m_problems;
    std::unordered_map<std::uint32_t, std::uint32_t> m_indexOfBlock;
    std::vector<std::uint32_t> m_indexOfNumber; ///< of the folders of the table so far; the first is number 1
    std::vector<bool> m_isSeen;
};

} // namespace

std::uint64_t isoIdentifierHash(std::span<const std::uint8_t> identifier)
{
    std::uint64_t hash = 0xCBF29CE484222325u; // FNV-1a
    for (const std::uint8_t byte : identifier)
        hash = (hash ^ byte) * 0x100000001B3u;
    return hash;
}

void checkIsoPathTables(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor,
                        const std::vector<IsoFolderPlace> &folders, VolumeProblemReport &report)
{
    TableCheck(source, descriptor, folders, report).run();
}

} // namespace Tessaron
