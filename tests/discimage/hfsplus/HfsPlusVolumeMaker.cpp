#include "tests/discimage/hfsplus/HfsPlusVolumeMaker.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint32_t nodeSize = 8192;
constexpr std::uint32_t treeBytes = 2 * nodeSize; // header node and leaf
constexpr std::uint32_t headBytes = 4096; // of the volume, the header included

void put(QByteArray *bytes, qsizetype at, std::uint64_t value, std::size_t size)
{
    for (std::size_t index = 0; index < size; ++index)
        (*bytes)[at + qsizetype(index)] = char(value >> (8 * (size - 1 - index)));
}

void putExtents(QByteArray *bytes, qsizetype at, const HfsPlusExtents &extents)
{
    for (const auto &[start, count] : extents) {
        put(bytes, at, start, 4);
        put(bytes, at + 4, count, 4);
        at += 8;
    }
}

void putFork(QByteArray *bytes, qsizetype at, std::uint64_t length, std::uint32_t blocks, const HfsPlusExtents &extents)
{
    put(bytes, at, length, 8);
    put(bytes, at + 12, blocks, 4);
    putExtents(bytes, at + 16, extents);
}

QByteArray nameBytes(const std::u16string &name)
{
    QByteArray bytes(2, '\0');
    put(&bytes, 0, name.size(), 2);
    for (const char16_t unit : name)
        bytes += QByteArray(1, char(unit >> 8)) + char(unit & 0xFF);
    return bytes;
}

} // namespace

std::uint32_t HfsPlusVolumeMaker::firstFreeBlock() const
{
    return (headBytes + 2 * treeBytes) / m_blockSize;
}

QByteArray HfsPlusVolumeMaker::catalogKey(std::uint32_t parent, const std::u16string &name)
{
    QByteArray key(6, '\0');
    put(&key, 2, parent, 4);
    key += nameBytes(name);
    put(&key, 0, std::uint64_t(key.size() - 2), 2);
    return key;
}

QByteArray HfsPlusVolumeMaker::folderRecord(std::uint32_t id, std::uint32_t childCount)
{
    QByteArray record(88, '\0');
    put(&record, 0, 1, 2);
    put(&record, 4, childCount, 4);
    put(&record, 8, id, 4);
    put(&record, 12, 1000, 4);
    put(&record, 42, 040755, 2);
    return record;
}

QByteArray HfsPlusVolumeMaker::threadRecord(bool isFolder, std::uint32_t parent, const std::u16string &name)
{
    QByteArray record(8, '\0');
    put(&record, 0, isFolder ? 3 : 4, 2);
    put(&record, 4, parent, 4);
    return record + nameBytes(name);
}

void HfsPlusVolumeMaker::addFolder(std::uint32_t parent, const std::u16string &name, std::uint32_t id,
                                   std::uint32_t childCount)
{
    m_catalog.push_back({catalogKey(parent, name), folderRecord(id, childCount)});
}

void HfsPlusVolumeMaker::addFolderThread(std::uint32_t id, std::uint32_t parent, const std::u16string &name)
{
    m_catalog.push_back({catalogKey(id, {}), threadRecord(true, parent, name)});
}

void HfsPlusVolumeMaker::addFileThread(std::uint32_t id, std::uint32_t parent, const std::u16string &name)
{
    m_catalog.push_back({catalogKey(id, {}), threadRecord(false, parent, name)});
}

void HfsPlusVolumeMaker::addFile(std::uint32_t parent, const std::u16string &name, const File &file)
{
    QByteArray record(248, '\0');
    put(&record, 0, 2, 2);
    put(&record, 8, file.id, 4);
    put(&record, 12, file.created, 4);
    put(&record, 42, file.mode, 2);
    put(&record, 44, file.special, 4);
    record.replace(48, 8, file.typeAndCreator);
    putFork(&record, 88, file.length, file.blocks, file.extents);
    m_catalog.push_back({catalogKey(parent, name), record});
}

void HfsPlusVolumeMaker::addExtents(std::uint32_t fileId, std::uint32_t startBlock, const HfsPlusExtents &extents)
{
    QByteArray key(12, '\0');
    put(&key, 0, 10, 2);
    put(&key, 4, fileId, 4);
    put(&key, 8, startBlock, 4);
    QByteArray record(64, '\0');
    putExtents(&record, 0, extents);
    m_extents.push_back({key, record});
}

QByteArray HfsPlusVolumeMaker::tree(const std::vector<Record> &records, std::uint16_t longestKey,
                                    std::uint32_t attributes) const
{
    QByteArray bytes(treeBytes, '\0');
    bytes[8] = 1; // header node
    put(&bytes, 10, 3, 2);
    const bool isEmpty = records.empty();
    put(&bytes, 14, isEmpty ? 0 : 1, 2);
    for (const qsizetype place : {16, 24, 28}) // root, first and last leaf
        put(&bytes, place, isEmpty ? 0 : 1, 4);
    put(&bytes, 20, records.size(), 4);
    put(&bytes, 32, nodeSize, 2);
    put(&bytes, 34, longestKey, 2);
    put(&bytes, 36, 2, 4);
    put(&bytes, 40, isEmpty ? 1 : 0, 4);
    bytes[51] = isCaseSensitive ? '\xBC' : '\xCF';
    put(&bytes, 52, attributes, 4);
    qsizetype at = nodeSize;
    if (isEmpty)
        return bytes;
    bytes[at + 8] = '\xFF';
    bytes[at + 9] = 1;
    put(&bytes, at + 10, records.size(), 2);
    qsizetype used = 14;
    qsizetype table = treeBytes - 2;
    for (const Record &record : records) {
        put(&bytes, table, std::uint64_t(used), 2);
        table -= 2;
        bytes.replace(at + used, record.key.size() + record.data.size(), record.key + record.data);
        used += record.key.size() + record.data.size();
    }
    put(&bytes, table, std::uint64_t(used), 2);
    return bytes;
}

QByteArray HfsPlusVolumeMaker::image() const
{
    QByteArray bytes;
    for (std::uint32_t block = 0; block < blockCount; ++block)
        bytes += QByteArray(qsizetype(m_blockSize), block < firstFreeBlock() ? '\0' : char(block));
    std::vector<Record> catalog{{catalogKey(1, u"Made"), folderRecord(2, m_rootChildren)},
                                {catalogKey(2, {}), threadRecord(true, 1, u"Made")}};
    catalog.insert(catalog.end(), m_catalog.begin(), m_catalog.end());

    const std::uint32_t treeBlocks = treeBytes / m_blockSize;
    const std::uint32_t headBlocks = headBytes / m_blockSize;
    HfsPlusExtents catalogExtents{{headBlocks + treeBlocks, treeBlocks}};
    if (hasCatalogInTwoPieces)
        catalogExtents = {{headBlocks + treeBlocks, treeBlocks / 2}, {headBlocks + treeBlocks + 50, treeBlocks / 2}};
    bytes.replace(headBytes, treeBytes, tree(m_extents, 10, 2));
    const QByteArray catalogTree = tree(catalog, 516, 6);
    qsizetype taken = 0;
    for (const auto &[start, count] : catalogExtents) {
        const qsizetype length = qsizetype(count) * m_blockSize;
        bytes.replace(qsizetype(start) * m_blockSize, length, catalogTree.mid(taken, length));
        taken += length;
    }

    QByteArray header(512, '\0');
    put(&header, 0, isHfsx ? 0x4858 : 0x482B, 2);
    put(&header, 2, isHfsx ? 5 : 4, 2);
    put(&header, 4, 0x100 | (hasJournal ? 0x2000 : 0), 4);
    put(&header, 40, m_blockSize, 4);
    put(&header, 44, blockCount, 4);
    putFork(&header, 192, treeBytes, treeBlocks, {{headBlocks, treeBlocks}});
    putFork(&header, 272, treeBytes, treeBlocks, catalogExtents);
    bytes.replace(1024, header.size(), header);
    bytes.replace(bytes.size() - 1024, header.size(), header);
    return bytes;
}

} // namespace Tessaron::Testing
