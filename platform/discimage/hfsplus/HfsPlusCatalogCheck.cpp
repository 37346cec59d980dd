#include "platform/discimage/hfsplus/HfsPlusCatalogCheck.h"

#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <string_view>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

namespace Field = HfsPlusItemField;
namespace Key = HfsPlusCatalogKeyField;

constexpr std::uint32_t rootParentId = 1;
constexpr std::uint32_t rootId = 2;
constexpr std::uint32_t firstUserId = 16;
constexpr std::uint16_t threadExistsFlag = 2;
constexpr std::uint16_t knownFlags = 0x00FF; // later systems added some

QString structure()
{
    return QStringLiteral("catalog");
}

std::uint64_t hashOf(std::uint32_t parentId, HfsPlusBytes name, bool isFolder)
{
    std::uint64_t hash = 0xCBF29CE484222325u ^ parentId ^ (isFolder ? 1ull << 63 : 0); // FNV-1a
    for (const std::uint8_t byte : name)
        hash = (hash ^ byte) * 0x100000001B3u;
    return hash;
}

/// The number in the name of a file with several names; 0 when it is another name.
std::uint32_t linkedFileNumber(HfsPlusBytes name)
{
    constexpr char prefix[] = "iNode";
    constexpr std::size_t prefixLength = sizeof prefix - 1;
    if (name.size() <= 2 * prefixLength || name.size() > 2 * (prefixLength + 10))
        return 0;
    std::uint64_t number = 0;
    for (std::size_t index = 0; index < name.size() / 2; ++index) {
        const auto unit = loadBigEndian<std::uint16_t>(&name[2 * index]);
        if (index < prefixLength ? unit != prefix[index] : unit < '0' || unit > '9')
            return 0;
        if (index >= prefixLength)
            number = number * 10 + (unit - '0');
    }
    return std::uint32_t(number);
}

/// The folder with the files that hard links lead to; its name begins with four NULs.
bool isPrivateFolder(HfsPlusBytes name)
{
    constexpr std::u16string_view expected{u"\0\0\0\0HFS+ Private Data", 21};
    if (name.size() != 2 * expected.size())
        return false;
    for (std::size_t index = 0; index < expected.size(); ++index) {
        if (loadBigEndian<std::uint16_t>(&name[2 * index]) != expected[index])
            return false;
    }
    return true;
}

std::uint32_t countOf(const std::unordered_map<std::uint32_t, std::uint32_t> &counts, std::uint32_t key)
{
    const auto found = counts.find(key);
    return found == counts.end() ? 0 : found->second;
}

} // namespace

void HfsPlusCatalogCheck::damaged(std::uint64_t offset, const QString &message) const
{
    m_problems.damaged(offset, structure(), message);
}

void HfsPlusCatalogCheck::take(HfsPlusBytes key, HfsPlusBytes data, std::uint64_t offset)
{
    const std::uint32_t parentId = hfsPlusParentId(key);
    const HfsPlusBytes name = hfsPlusKeyName(key);
    if (key.size() != Key::name + name.size()
        || loadBigEndian<std::uint16_t>(&key[Key::nameLength]) * std::size_t(2) != name.size())
        damaged(offset, QStringLiteral("a key and the name in it are not of the same length"));
    if (parentId != m_parent) {
        endFolder();
        m_parent = parentId;
        m_hasThread = false;
        m_parentIsFolder = false;
        m_childCount = 0;
    }
    if (data.size() < 2)
        return damaged(offset, QStringLiteral("a record is too short"));
    const auto type = loadBigEndian<std::uint16_t>(data.data());
    if (type == HfsPlusFolderThreadRecord || type == HfsPlusFileThreadRecord) {
        if (!name.empty())
            return damaged(offset, QStringLiteral("a thread has a name in its key"));
        return takeThread(parentId, data, offset);
    }
    if (name.empty())
        return damaged(offset, QStringLiteral("an object has no name"));
    if (parentId != rootParentId && (!m_hasThread || !m_parentIsFolder))
        damaged(offset, QStringLiteral("an object lies in something that is not a folder"));
    ++m_childCount;
    takeObject(parentId, name, data, offset);
}

void HfsPlusCatalogCheck::takeThread(std::uint32_t id, HfsPlusBytes data, std::uint64_t offset)
{
    const std::optional<HfsPlusThread> thread = hfsPlusThread(data);
    if (!thread || data.size() != HfsPlusThreadField::name + std::size_t(thread->name.size()))
        return damaged(offset, QStringLiteral("a thread has an impossible length"));
    if (loadBigEndian<std::uint16_t>(&data[HfsPlusThreadField::reserved]) != 0)
        m_problems.unnoticed(offset, structure(), QStringLiteral("bytes that have to be zero are not"));
    m_hasThread = true;
    m_parentIsFolder = thread->isFolder;
    const HfsPlusBytes name(reinterpret_cast<const std::uint8_t *>(thread->name.constData()),
                            std::size_t(thread->name.size()));
    m_threads.push_back({id, hashOf(thread->parentId, name, thread->isFolder), offset});
}

void HfsPlusCatalogCheck::takeObject(std::uint32_t parentId, HfsPlusBytes name, HfsPlusBytes data, std::uint64_t offset)
{
    const auto type = loadBigEndian<std::uint16_t>(data.data());
    const bool isFolder = type == HfsPlusFolderRecord;
    if ((!isFolder && type != HfsPlusFileRecord) || data.size() != (isFolder ? Field::folderSize : Field::fileSize))
        return damaged(offset, QStringLiteral("a record is of an unknown type or length"));
    const std::optional<HfsPlusItem> item = hfsPlusItem(data);
    if (!item)
        return damaged(offset, QStringLiteral("a record makes no sense"));
    if (item->id < firstUserId && !(item->id == rootId && isFolder && parentId == rootParentId))
        damaged(offset, QStringLiteral("an object has an ID that belongs to the volume itself"));
    m_greatestId = std::max(m_greatestId, item->id);
    checkAttributes(isFolder, data, offset);
    m_objects.push_back({item->id, hashOf(parentId, name, isFolder), offset});
    if (!isFolder)
        return takeFile(parentId, name, data, offset);
    m_folderCount += item->id == rootId ? 0 : 1;
    if (item->id == rootId)
        m_rootCreated = item->created;
    else if (parentId == rootId && isPrivateFolder(name))
        m_privateFolderCreated = item->created;
    if (m_valences.contains(item->id))
        damaged(offset, QStringLiteral("two folders have the ID %1").arg(item->id));
    m_valences.insert_or_assign(item->id, Valence{item->childCount, offset});
}

void HfsPlusCatalogCheck::takeFile(std::uint32_t parentId, HfsPlusBytes name, HfsPlusBytes data, std::uint64_t offset)
{
    ++m_fileCount;
    const HfsPlusItem item = *hfsPlusItem(data);
    const std::uint32_t number = linkedFileNumber(name);
    if (number != 0 && parentId != rootId && !item.isHardLink())
        m_linkedFiles.insert_or_assign(number, Valence{item.special, offset});
    if (item.isHardLink()) {
        ++m_links[item.special];
        m_linkDates.push_back({item.created, offset});
    }
    checkKind(item, data, offset);
    m_fork(item.id, false, data.subspan(Field::dataFork, HfsPlusForkDataField::size), offset);
    m_fork(item.id, true, data.subspan(Field::resourceFork, HfsPlusForkDataField::size), offset);
}

/// A link has its type in its Finder information, too; pipes, sockets and devices have no contents.
void HfsPlusCatalogCheck::checkKind(const HfsPlusItem &item, HfsPlusBytes data, std::uint64_t offset) const
{
    const VolumeObjectKind kind = item.kind();
    const bool isMarkedAsLink = item.typeAndCreator == "slnkrhap";
    const bool hasContents = loadBigEndian<std::uint64_t>(&data[Field::dataFork]) != 0;
    const bool isLink = kind == VolumeObjectKind::SymbolicLink;
    if (item.mode != 0
        && (isLink != isMarkedAsLink || (kind == VolumeObjectKind::Other && hasContents) || (isLink && !hasContents)))
        damaged(offset + Field::mode, QStringLiteral("the mode of an object is not of its kind"));
}

void HfsPlusCatalogCheck::checkAttributes(bool isFolder, HfsPlusBytes data, std::uint64_t offset) const
{
    const auto flags = loadBigEndian<std::uint16_t>(&data[Field::flags]);
    if ((flags & ~knownFlags) != 0)
        m_problems.unnoticed(offset + Field::flags, structure(), QStringLiteral("a record has unknown flags"));
    if (!isFolder && (flags & threadExistsFlag) == 0)
        m_problems.unnoticed(offset + Field::flags, structure(), QStringLiteral("a file says that it has no thread"));
    if (!isFolder && loadBigEndian<std::uint32_t>(&data[Field::childCount]) != 0)
        m_problems.unnoticed(offset + Field::childCount, structure(),
                             QStringLiteral("bytes that have to be zero are not"));
    const std::uint32_t type = loadBigEndian<std::uint16_t>(&data[Field::mode]) & S_IFMT;
    const bool isKnown =
        type == S_IFREG || type == S_IFLNK || type == S_IFIFO || type == S_IFSOCK || type == S_IFCHR || type == S_IFBLK;
    if (loadBigEndian<std::uint16_t>(&data[Field::mode]) != 0 && (isFolder ? type != S_IFDIR : !isKnown))
        damaged(offset + Field::mode, QStringLiteral("the mode of an object is not of its kind"));
}

void HfsPlusCatalogCheck::endFolder()
{
    if (m_childCount > 0)
        m_found[m_parent] += m_childCount;
}

void HfsPlusCatalogCheck::finish()
{
    endFolder();
    compareThreads();
    for (const auto &[id, folder] : m_valences) {
        const std::uint32_t found = countOf(m_found, id);
        if (found != folder.count)
            damaged(folder.offset,
                    QStringLiteral("a folder says that it has %1, but has %2")
                        .arg(counted(folder.count, "object", "objects"))
                        .arg(found));
    }
    if (countOf(m_found, rootParentId) != 1)
        damaged(0, QStringLiteral("there is not one root"));
    compareLinks();
}

/// The threads come in the order of their IDs; the objects are brought into it.
void HfsPlusCatalogCheck::compareThreads()
{
    std::sort(m_objects.begin(), m_objects.end(), [](const Mark &one, const Mark &other) { return one.id < other.id; });
    auto thread = m_threads.begin();
    for (auto object = m_objects.begin(); object != m_objects.end(); ++object) {
        if (m_problems.isStopped())
            return;
        if (object != m_objects.begin() && (object - 1)->id == object->id) {
            damaged(object->offset, QStringLiteral("two objects have the ID %1").arg(object->id));
            continue;
        }
        for (; thread != m_threads.end() && thread->id < object->id; ++thread)
            damaged(thread->offset, QStringLiteral("a thread leads to no object"));
        if (thread == m_threads.end() || thread->id != object->id) {
            damaged(object->offset, QStringLiteral("an object has no thread"));
            continue;
        }
        if (thread->hash != object->hash)
            damaged(thread->offset,
                    QStringLiteral("a thread does not name the parent, the name and the kind of its object"));
        ++thread;
    }
    for (; thread != m_threads.end(); ++thread)
        damaged(thread->offset, QStringLiteral("a thread leads to no object"));
}

void HfsPlusCatalogCheck::compareLinks() const
{
    for (const auto &[number, file] : m_linkedFiles) {
        const std::uint32_t found = countOf(m_links, number);
        if (found != file.count)
            m_problems.unnoticed(file.offset, structure(),
                                 QStringLiteral("a file says that it has %1, but has %2")
                                     .arg(counted(file.count, "name", "names"))
                                     .arg(found));
    }
    for (const Link &link : m_linkDates) {
        if (m_isOfThisSystem && m_privateFolderCreated && link.created != *m_privateFolderCreated
            && link.created != m_rootCreated)
            damaged(link.offset, QStringLiteral("a hard link has another date of creation than all hard links have"));
    }
    for (const auto &[number, count] : m_links) {
        if (!m_linkedFiles.empty() && !m_linkedFiles.contains(number))
            damaged(0, QStringLiteral("a hard link leads to file %1, which does not exist").arg(number));
    }
}

} // namespace Tessaron
