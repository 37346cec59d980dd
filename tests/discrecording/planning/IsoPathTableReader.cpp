#include "tests/discrecording/planning/IsoImageReader.h"

#include <QHash>

#include <algorithm>
#include <map>

namespace Tessaron::Testing
{

namespace
{

struct PathTableRecord {
    QByteArray identifier;
    std::uint32_t block = 0;
    std::size_t parent = 0; ///< number, beginning with 1
    std::size_t level = 1;
};

std::vector<PathTableRecord> recordsOf(std::span<const std::uint8_t> table, bool isBigEndian)
{
    std::vector<PathTableRecord> records;
    for (std::size_t at = 0; at + 8 <= table.size();) {
        const std::size_t size = table[at];
        if (size == 0 || at + 8 + size > table.size())
            return {};
        PathTableRecord record;
        for (std::size_t index = 0; index < 4; ++index)
            record.block |= static_cast<std::uint32_t>(table[at + 2 + index]) << 8 * (isBigEndian ? 3 - index : index);
        record.parent = isBigEndian ? static_cast<std::size_t>(table[at + 6] << 8 | table[at + 7])
                                    : static_cast<std::size_t>(table[at + 7] << 8 | table[at + 6]);
        record.identifier = QByteArray(reinterpret_cast<const char *>(&table[at + 8]), static_cast<qsizetype>(size));
        records.push_back(record);
        at += 8 + size + size % 2;
    }
    return records;
}

/// Every folder of a hierarchy by its block: the block of its parent and its identifier.
using Folders = std::map<std::uint32_t, std::pair<std::uint32_t, QByteArray>>;

void collectFolders(const IsoObject &folder, Folders &into)
{
    for (const auto &child : folder.children) {
        if (!child->isFolder)
            continue;
        into[child->extents[0].block] = {folder.extents[0].block, child->identifier};
        collectFolders(*child, into);
    }
}

} // namespace

void IsoImageReader::readPathTable(IsoVolume &volume)
{
    const QString what = QStringLiteral("path table of type %1").arg(volume.type);
    takeExtent(volume.littleEndianTable, volume.pathTableSize, false, what);
    takeExtent(volume.bigEndianTable, volume.pathTableSize, false, what);
    std::vector<PathTableRecord> records = recordsOf(block(volume.littleEndianTable, volume.pathTableSize), false);
    const std::vector<PathTableRecord> others = recordsOf(block(volume.bigEndianTable, volume.pathTableSize), true);
    const auto areSame = [](const PathTableRecord &one, const PathTableRecord &other) {
        return one.identifier == other.identifier && one.block == other.block && one.parent == other.parent;
    };
    if (records.empty() || !std::equal(records.begin(), records.end(), others.begin(), others.end(), areSame)) {
        problem(what + QStringLiteral(": the two tables differ"));
        return;
    }
    volume.pathTableFolders = records.size();
    Folders folders;
    collectFolders(volume.root, folders);
    if (records[0].block != volume.root.extents[0].block || records[0].parent != 1
        || records[0].identifier != QByteArray(1, '\0'))
        problem(what + QStringLiteral(": the root is wrong"));
    for (std::size_t index = 1; index < records.size(); ++index) {
        PathTableRecord &record = records[index];
        if (record.parent > index || record.parent == 0) {
            problem(what + QStringLiteral(": a parent that comes later"));
            return;
        }
        record.level = records[record.parent - 1].level + 1;
        const auto folder = folders.find(record.block);
        if (folder == folders.end() || folder->second.second != record.identifier
            || folder->second.first != records[record.parent - 1].block)
            problem(what + QStringLiteral(": no such folder: ")
                    + QString::fromLatin1(record.identifier.toPercentEncoding()));
        const PathTableRecord &before = records[index - 1];
        const auto key = [](const PathTableRecord &entry) {
            return std::tuple(entry.level, entry.parent, entry.identifier);
        };
        if (index > 1 && !(key(before) < key(record)))
            problem(what + QStringLiteral(": wrong order"));
        folders.erase(record.block);
    }
    // Only folders whose parents have no number of 16 bits may be missing.
    if (!folders.empty() && records.size() < largestParentNumber)
        problem(what + QStringLiteral(": %1 folders are missing").arg(folders.size()));
}

} // namespace Tessaron::Testing
