#include "tests/discrecording/hfsplus/HfsPlusImageReader.h"

#include <QChar>

#include <algorithm>
#include <sys/stat.h>
#include <tuple>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
constexpr std::int64_t epochDistance = 2'082'844'800;

std::u16string unitsOf(Bytes bytes, std::size_t at)
{
    std::u16string units;
    const std::size_t count = big16(bytes, at);
    for (std::size_t index = 0; index < count && at + 4 + 2 * index <= bytes.size(); ++index)
        units += static_cast<char16_t>(big16(bytes, at + 2 + 2 * index));
    return units;
}

bool decomposes(char16_t unit)
{
    return QChar::decompositionTag(unit) == QChar::Canonical && QChar::unicodeVersion(unit) <= QChar::Unicode_3_2;
}

bool isExcepted(char16_t unit)
{
    return (unit >= 0x2000 && unit < 0x3000) || (unit >= 0xF900 && unit < 0xFB00) || QChar::isSurrogate(unit);
}

char16_t foldedUnit(char16_t unit)
{
    if (unit == 0)
        return 0xFFFF;
    if ((unit >= 0x200C && unit <= 0x200F) || (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x206A && unit <= 0x206F)
        || unit == 0xFEFF)
        return 0;
    if (unit >= 0x10A0 && unit <= 0x10C5) // Georgian got other small letters later
        return static_cast<char16_t>(unit + 0x30);
    constexpr unsigned int pages[] = {0x00, 0x01, 0x03, 0x04, 0x05, 0x21, 0xFF};
    if (std::ranges::find(pages, unit / 256u) == std::end(pages) || decomposes(unit))
        return unit;
    if (unit == 0x01A6) // YR had no small letter in Unicode 2
        return unit;
    const char16_t small = static_cast<char16_t>(QChar::toLower(char32_t(unit)));
    const auto isOld = [](char16_t letter) { return QChar::unicodeVersion(letter) <= QChar::Unicode_2_0; };
    // The letters from U+04D0 on were still without cases when the table was made.
    const bool isCyrillicExtension = unit >= 0x04D0 && unit <= 0x04FF;
    return isOld(unit) && isOld(small) && !isCyrillicExtension ? small : unit;
}

bool catalogPrecedes(Bytes one, Bytes other)
{
    if (big32(one, 0) != big32(other, 0))
        return big32(one, 0) < big32(other, 0);
    return HfsPlusImageReader::folded(unitsOf(one, 4)) < HfsPlusImageReader::folded(unitsOf(other, 4));
}

bool extentsPrecede(Bytes one, Bytes other)
{
    const auto rank = [](Bytes key) { return std::tuple(big32(key, 2), key[0], big32(key, 6)); };
    return rank(one) < rank(other);
}

} // namespace

const HfsObject *HfsObject::child(const QString &wanted) const
{
    for (const auto &candidate : children) {
        if (candidate->name == wanted)
            return candidate.get();
    }
    return nullptr;
}

std::uint16_t HfsObject::finderFlags() const
{
    return static_cast<std::uint16_t>(static_cast<std::uint8_t>(finderInfo[8]) << 8
                                      | static_cast<std::uint8_t>(finderInfo[9]));
}

std::u16string HfsPlusImageReader::folded(std::u16string_view name)
{
    std::u16string result;
    for (const char16_t unit : name) {
        if (const char16_t counting = foldedUnit(unit))
            result += counting;
    }
    return result;
}

HfsPlusImageReader::HfsPlusImageReader(const QString &path)
    : m_file(path)
    , m_root(std::make_unique<HfsObject>())
{
    if (!m_file.open(QIODevice::ReadOnly) || m_file.size() < 32768) {
        problem(QStringLiteral("the image cannot be read or is too short"));
        return;
    }
    const uchar *const start = m_file.map(0, m_file.size());
    m_bytes = {start, static_cast<std::size_t>(m_file.size())};
    readPartitionMap();
    readHeader();
    if (!m_problems.isEmpty())
        return;
    readTrees();
    readBadBlocks();
    readCatalog();
    checkFolder(*m_root);
    checkLinkCounts();
    checkBitmap();
}

void HfsPlusImageReader::problem(const QString &text)
{
    if (m_problems.size() < 100)
        m_problems.append(text);
}

void HfsPlusImageReader::readPartitionMap()
{
    const std::uint64_t blocks = m_bytes.size() / blockSize;
    const std::uint64_t unit = big16(m_bytes, 2);
    if (m_bytes.size() % blockSize != 0 || big16(m_bytes, 0) != 0x4552 || (unit != 512 && unit != blockSize)
        || big32(m_bytes, 4) != blocks * blockSize / unit) {
        problem(QStringLiteral("the driver descriptor is wrong"));
        return;
    }
    m_mapUnit = static_cast<std::uint32_t>(unit);
    std::vector<std::pair<std::uint64_t, std::uint64_t>> partitions; // begin and end
    for (std::uint32_t entry = 1; entry <= 2; ++entry) {
        const Bytes bytes = m_bytes.subspan(entry * unit, unit);
        const char *const type = reinterpret_cast<const char *>(bytes.data()) + 48;
        if (big16(bytes, 0) != 0x504D || big32(bytes, 4) != 2 || big32(bytes, 80) != 0
            || big32(bytes, 84) != big32(bytes, 12))
            problem(QStringLiteral("entry %1 of the partition map is none").arg(entry));
        const std::uint64_t begin = big32(bytes, 8);
        partitions.emplace_back(begin, begin + big32(bytes, 12));
        if (qstrcmp(type, "Apple_HFS") == 0)
            m_volume = m_bytes.subspan(std::min<std::uint64_t>(begin * unit, m_bytes.size()),
                                       std::min<std::uint64_t>(big32(bytes, 12) * unit, m_bytes.size() - begin * unit));
        else if (qstrcmp(type, "Apple_partition_map") != 0 || begin != 1)
            problem(QStringLiteral("the partition map does not know itself"));
    }
    if (partitions[0].second > partitions[1].first || partitions[1].second > m_bytes.size() / unit)
        problem(QStringLiteral("partitions overlap or leave the image"));
    readWrapper();
}

void HfsPlusImageReader::readWrapper()
{
    const Bytes wrapper = m_bytes.subspan(1024, 162);
    // In its place lies the map's second entry where that counts in small units.
    m_hasWrapper = m_mapUnit != 512 && std::ranges::any_of(wrapper, [](std::uint8_t byte) { return byte != 0; });
    if (!m_hasWrapper)
        return;
    const std::uint64_t unit = big32(wrapper, 20);
    if (unit % 512 != 0)
        problem(QStringLiteral("the wrapper's unit is not whole sectors"));
    const std::uint64_t start = big16(wrapper, 28) * std::uint64_t{512} + big16(wrapper, 126) * unit;
    if (big16(wrapper, 0) != 0x4244 || (big16(wrapper, 10) & 0x8200u) != 0x8200 || big16(wrapper, 124) != 0x482B)
        problem(QStringLiteral("the wrapper does not say that a volume is embedded"));
    if (big16(wrapper, 18) < big16(wrapper, 126) + big16(wrapper, 128))
        problem(QStringLiteral("the wrapper's units are wrong"));
    if (start != static_cast<std::uint64_t>(m_volume.data() - m_bytes.data())
        || big16(wrapper, 128) * unit != m_volume.size())
        problem(QStringLiteral("the wrapper knows another volume than the partition map"));
    if (!std::ranges::equal(wrapper, m_bytes.subspan(m_bytes.size() - 1024, 162)))
        problem(QStringLiteral("the copy of the wrapper differs"));
}

HfsFork HfsPlusImageReader::readFork(Bytes at, const QString &what)
{
    HfsFork fork;
    fork.length = big64(at, 0);
    fork.blockCount = big32(at, 12);
    std::uint64_t sum = 0;
    bool hasEnded = false;
    for (std::size_t index = 0; index < 8; ++index) {
        const std::uint32_t first = big32(at, 16 + 8 * index);
        const std::uint32_t count = big32(at, 20 + 8 * index);
        if (count == 0) {
            hasEnded = true;
            if (first != 0)
                problem(what + QStringLiteral(" has an extent of nothing"));
            continue;
        }
        if (hasEnded)
            problem(what + QStringLiteral(" has a gap in its extents"));
        fork.extents.emplace_back(first, count);
        sum += count;
    }
    if (sum != fork.blockCount || (fork.length + blockSize - 1) / blockSize != fork.blockCount)
        problem(what + QStringLiteral(" has another length than its extents"));
    for (const auto &[first, count] : fork.extents)
        takeBlocks(first, count, what);
    return fork;
}

void HfsPlusImageReader::takeBlocks(std::uint32_t first, std::uint32_t count, const QString &what)
{
    if (std::uint64_t{first} + count > m_totalBlocks) {
        problem(what + QStringLiteral(" leaves the volume"));
        return;
    }
    for (std::uint64_t block = first; block < std::uint64_t{first} + count; ++block) {
        if (m_taken[block] != 0) {
            problem(what + QStringLiteral(" has block %1, which is taken").arg(block));
            return;
        }
        m_taken[block] = 1;
    }
}

Bytes HfsPlusImageReader::bytesOf(const HfsFork &fork)
{
    if (fork.extents.size() != 1 || (std::uint64_t{fork.extents[0].first} * blockSize + fork.length) > m_volume.size())
        return {};
    return m_volume.subspan(std::uint64_t{fork.extents[0].first} * blockSize, fork.length);
}

QByteArray HfsPlusImageReader::contents(const HfsFork &fork) const
{
    QByteArray result;
    for (const auto &[first, count] : fork.extents)
        result.append(reinterpret_cast<const char *>(m_volume.data()) + std::uint64_t{first} * blockSize,
                      static_cast<qsizetype>(count) * static_cast<qsizetype>(blockSize));
    result.truncate(static_cast<qsizetype>(fork.length));
    return result;
}

void HfsPlusImageReader::readHeader()
{
    if (m_volume.size() < 4 * blockSize) {
        problem(QStringLiteral("there is no volume"));
        return;
    }
    m_header = m_volume.subspan(1024, 512);
    if (!std::ranges::all_of(m_volume.first(1024), [](std::uint8_t byte) { return byte == 0; }))
        problem(QStringLiteral("something lies before the volume header"));
    if (big16(m_header, 0) != 0x482B || big16(m_header, 2) != 4) {
        problem(QStringLiteral("there is no volume header"));
        return;
    }
    if (!std::ranges::equal(m_header, m_volume.subspan(m_volume.size() - 1024, 512)))
        problem(QStringLiteral("the alternate volume header differs"));
    m_totalBlocks = big32(m_header, 44);
    if (big32(m_header, 40) != blockSize || std::uint64_t{m_totalBlocks} * blockSize != m_volume.size())
        problem(QStringLiteral("the volume is not its partition"));
    if ((attributes() & 0x100u) == 0 || (attributes() & 0x2800u) != 0)
        problem(QStringLiteral("the volume was not unmounted, or has a journal"));
    m_taken.assign(m_totalBlocks, 0);
    if (!m_taken.empty())
        m_taken.front() = m_taken.back() = 1; // the two headers
}

void HfsPlusImageReader::readTrees()
{
    m_allocationFile = readFork(m_header.subspan(112, 80), QStringLiteral("the allocation file"));
    const HfsFork extentsFile = readFork(m_header.subspan(192, 80), QStringLiteral("the extents file"));
    const HfsFork catalogFile = readFork(m_header.subspan(272, 80), QStringLiteral("the catalog file"));
    for (const std::size_t at : {352u, 432u}) {
        if (readFork(m_header.subspan(at, 80), QStringLiteral("an optional file")).length != 0)
            problem(QStringLiteral("there is an attributes or startup file"));
    }
    m_extents = std::make_unique<HfsPlusBTreeReader>(bytesOf(extentsFile), QStringLiteral("extents"), extentsPrecede);
    m_catalog = std::make_unique<HfsPlusBTreeReader>(bytesOf(catalogFile), QStringLiteral("catalog"), catalogPrecedes);
    m_problems += m_extents->problems();
    m_problems += m_catalog->problems();
    if (m_extents->attributes() != 2 || m_extents->longestKey() != 10 || m_catalog->attributes() != 6
        || m_catalog->longestKey() != 516)
        problem(QStringLiteral("a tree has the attributes of another one"));
}

void HfsPlusImageReader::readBadBlocks()
{
    std::uint32_t before = 0;
    for (const HfsPlusBTreeReader::Record &record : m_extents->records()) {
        if (big16(record.key, 0) != 0 || big32(record.key, 2) != 5 || big32(record.key, 6) != before)
            problem(QStringLiteral("an extents record is not the next one of the bad blocks"));
        if (record.data.size() != 64)
            problem(QStringLiteral("an extents record has a wrong size"));
        for (std::size_t index = 0; index < 8; ++index) {
            const std::uint32_t count = big32(record.data, 8 * index + 4);
            takeBlocks(big32(record.data, 8 * index), count, QStringLiteral("the bad block file"));
            before += count;
        }
    }
    if (m_extents->records().empty() != ((attributes() & 0x200u) == 0))
        problem(QStringLiteral("the volume does not know whether it has bad blocks"));
}

std::unique_ptr<HfsObject> HfsPlusImageReader::readObject(Bytes key, Bytes data)
{
    auto object = std::make_unique<HfsObject>();
    object->isFolder = big16(data, 0) == 1;
    object->parentId = big32(key, 0);
    object->recordedName = unitsOf(key, 4);
    if (key.size() != 6 + 2 * object->recordedName.size())
        problem(QStringLiteral("a key has a wrong length"));
    QString text = QString::fromStdU16String(object->recordedName);
    for (const char16_t unit : object->recordedName) {
        if (decomposes(unit) && !isExcepted(unit))
            problem(QStringLiteral("the name “%1” is not decomposed").arg(text));
    }
    for (QChar &unit : text)
        unit = unit == u'/' ? u':' : unit == u':' ? u'/' : unit;
    object->name = text.normalized(QString::NormalizationForm_C);
    object->id = big32(data, 8);
    object->valence = big32(data, 4);
    const auto time = [&](std::size_t at) { return std::int64_t{big32(data, at)} - epochDistance; };
    object->creationTime = time(12);
    object->modificationTime = time(16);
    object->attributeTime = time(20);
    object->accessTime = time(24);
    object->userId = big32(data, 32);
    object->groupId = big32(data, 36);
    object->mode = big16(data, 42);
    object->special = big32(data, 44);
    object->finderInfo = QByteArray(reinterpret_cast<const char *>(data.data()) + 48, 32);
    if (data.size() != (object->isFolder ? 88u : 248u))
        problem(QStringLiteral("the record of “%1” has a wrong size").arg(object->name));
    if (object->isFolder || data.size() < 248)
        return object;
    if ((big16(data, 2) & 2u) == 0)
        problem(QStringLiteral("“%1” says that it has no thread").arg(object->name));
    object->data = readFork(data.subspan(88, 80), object->name);
    object->resource = readFork(data.subspan(168, 80), object->name + QStringLiteral(" (resources)"));
    return object;
}

void HfsPlusImageReader::readCatalog()
{
    std::map<std::uint32_t, std::vector<std::unique_ptr<HfsObject>>> byParent;
    const std::uint32_t nextId = big32(m_header, 64);
    for (const HfsPlusBTreeReader::Record &record : m_catalog->records()) {
        const std::uint16_t type = big16(record.data, 0);
        if (type == 3 || type == 4) {
            const Thread thread{type == 3, big32(record.data, 4), unitsOf(record.data, 8)};
            if (big16(record.key, 4) != 0 || record.data.size() != 10 + 2 * thread.name.size())
                problem(QStringLiteral("a thread record is malformed"));
            if (!m_threads.emplace(big32(record.key, 0), thread).second)
                problem(QStringLiteral("there are two threads for %1").arg(big32(record.key, 0)));
            continue;
        }
        if (type != 1 && type != 2) {
            problem(QStringLiteral("there is a record of type %1").arg(type));
            continue;
        }
        std::unique_ptr<HfsObject> object = readObject(record.key, record.data);
        const bool isRoot = object->id == 2;
        if (!isRoot && (object->id < 16 || object->id >= nextId))
            problem(QStringLiteral("“%1” has an ID that was not given").arg(object->name));
        if (isRoot)
            m_root = std::move(object);
        else {
            ++(object->isFolder ? m_folders : m_files);
            byParent[object->parentId].push_back(std::move(object));
        }
    }
    if (m_root->id != 2 || m_root->parentId != 1)
        problem(QStringLiteral("there is no root"));
    if (m_files != fileCount() || m_folders != folderCount())
        problem(QStringLiteral("%1 files and %2 folders where the header says %3 and %4")
                    .arg(m_files)
                    .arg(m_folders)
                    .arg(fileCount())
                    .arg(folderCount()));
    if (m_threads.size() != std::size_t{1} + m_files + m_folders)
        problem(QStringLiteral("there are more or less threads than objects"));
    attach(byParent, *m_root);
    if (!byParent.empty())
        problem(QStringLiteral("objects lie in folders that are none"));
}

void HfsPlusImageReader::attach(std::map<std::uint32_t, std::vector<std::unique_ptr<HfsObject>>> &byParent,
                                HfsObject &folder)
{
    const auto found = byParent.find(folder.id);
    if (found == byParent.end())
        return;
    folder.children = std::move(found->second);
    byParent.erase(found);
    for (const auto &child : folder.children) {
        if (child->isFolder)
            attach(byParent, *child);
    }
}

void HfsPlusImageReader::checkFolder(const HfsObject &folder)
{
    if (folder.valence != folder.children.size())
        problem(QStringLiteral("“%1” has not as many children as it says").arg(folder.name));
    const auto checkThread = [this](const HfsObject &object) {
        const auto thread = m_threads.find(object.id);
        if (thread == m_threads.end() || thread->second.isFolder != object.isFolder
            || thread->second.parentId != object.parentId || thread->second.name != object.recordedName)
            problem(QStringLiteral("“%1” has not the thread that it needs").arg(object.name));
    };
    if (&folder == m_root.get())
        checkThread(folder);
    for (const auto &child : folder.children) {
        checkThread(*child);
        if (child->isFolder != ((child->mode & S_IFMT) == S_IFDIR))
            problem(QStringLiteral("the mode of “%1” does not say what it is").arg(child->name));
        if (child->isFolder)
            checkFolder(*child);
        else if (child->typeAndCreator() == "hlnkhfs+")
            checkLink(*child);
    }
}

const HfsObject *HfsPlusImageReader::privateFolder() const
{
    const std::u16string name = std::u16string(4, u'\0') + u"HFS+ Private Data";
    for (const auto &child : m_root->children) {
        if (child->recordedName == name)
            return child.get();
    }
    return nullptr;
}

const HfsObject *HfsPlusImageReader::resolved(const HfsObject &object) const
{
    if (object.typeAndCreator() != "hlnkhfs+")
        return &object;
    const HfsObject *const folder = privateFolder();
    return folder ? folder->child(QStringLiteral("iNode%1").arg(object.special)) : nullptr;
}

void HfsPlusImageReader::checkLink(const HfsObject &link)
{
    const HfsObject *const file = resolved(link);
    if (!file || file->id != link.special)
        problem(QStringLiteral("the hard link “%1” leads nowhere").arg(link.name));
    if (link.data.length != 0 || link.resource.length != 0)
        problem(QStringLiteral("the hard link “%1” has contents").arg(link.name));
    if (!privateFolder() || link.creationTime != privateFolder()->creationTime
        || link.creationTime != m_root->creationTime)
        problem(QStringLiteral("the hard link “%1” has a date that no link has").arg(link.name));
    ++m_linkCounts[link.special];
}

void HfsPlusImageReader::checkLinkCounts()
{
    const HfsObject *const folder = privateFolder();
    if (!folder)
        return;
    if ((folder->finderFlags() & 0x4000u) == 0)
        problem(QStringLiteral("the folder of linked files is visible"));
    for (const auto &file : folder->children) {
        if (m_linkCounts[file->id] != file->special || file->special < 2)
            problem(QStringLiteral("“%1” has another number of links").arg(file->name));
    }
}

void HfsPlusImageReader::checkBitmap()
{
    const Bytes bitmap = bytesOf(m_allocationFile);
    std::uint32_t unused = 0;
    for (std::uint64_t bit = 0; bit < bitmap.size() * std::uint64_t{8}; ++bit) {
        const bool isMarked = (bitmap[bit / 8] & (0x80u >> (bit % 8))) != 0;
        const bool isTaken = bit < m_totalBlocks && m_taken[bit] != 0;
        unused += bit < m_totalBlocks && !isTaken ? 1 : 0;
        if (isMarked != isTaken) {
            problem(QStringLiteral("the bitmap is wrong about block %1").arg(bit));
            return;
        }
    }
    if (bitmap.size() * std::uint64_t{8} < m_totalBlocks)
        problem(QStringLiteral("the bitmap is too short"));
    if (unused != freeBlocks())
        problem(QStringLiteral("%1 blocks are free where the header says %2").arg(unused).arg(freeBlocks()));
}

const HfsObject *HfsPlusImageReader::objectAt(const QString &path) const
{
    const HfsObject *object = m_root.get();
    for (const QString &part : path.split(u'/', Qt::SkipEmptyParts)) {
        object = object->child(part);
        if (!object)
            return nullptr;
    }
    return object;
}

} // namespace Tessaron::Testing
