#include "platform/discrecording/hfsplus/HfsPlusCatalog.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"
#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/image/ImageLayout.h"
#include "platform/foundation/ByteOrder.h"

#include <charconv>
#include <cstring>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

enum RecordType : std::uint16_t {
    FolderRecord = 1,
    FileRecord = 2,
    FolderThreadRecord = 3,
    FileThreadRecord = 4,
};

constexpr std::size_t emptyKeySize = 8;
constexpr std::size_t emptyThreadSize = 10;
constexpr std::size_t folderRecordSize = 88;
constexpr std::size_t fileRecordSize = 248;

// Fields of keys, counted from 0 (HFS Plus Volume Format, "Catalog File Key").
namespace Key
{
constexpr std::size_t length = 0;
constexpr std::size_t parentId = 2;
constexpr std::size_t name = 6;
} // namespace Key

// Fields of threads ("Catalog Thread Records").
namespace Thread
{
constexpr std::size_t type = 0;
constexpr std::size_t parentId = 4;
constexpr std::size_t name = 8;
} // namespace Thread

// Fields of folder and file records ("Catalog Folder Records", "Catalog File Records").
namespace Field
{
constexpr std::size_t type = 0;
constexpr std::size_t flags = 2;
constexpr std::size_t valence = 4;
constexpr std::size_t id = 8;
constexpr std::size_t createDate = 12;
constexpr std::size_t contentDate = 16;
constexpr std::size_t attributeDate = 20;
constexpr std::size_t accessDate = 24;
constexpr std::size_t userId = 32;
constexpr std::size_t groupId = 36;
constexpr std::size_t mode = 42;
constexpr std::size_t special = 44;
constexpr std::size_t finderInfo = 48;
constexpr std::size_t finderFlags = 56;
constexpr std::size_t finderVertical = 58; // where the Finder shows the folder in its parent's window
constexpr std::size_t finderHorizontal = 60;
constexpr std::size_t dataFork = 88;
constexpr std::size_t resourceFork = 168;
} // namespace Field

constexpr std::uint16_t threadExistsFlag = 2;

// What makes the hidden folder of files with several names and the links to these ("Hard Links").
constexpr std::u16string_view privateFolderName{u"\0\0\0\0HFS+ Private Data", 21};
constexpr std::string_view linkedFilePrefix = "iNode";
constexpr std::uint16_t nameLocked = 1u << 12; // Finder flags
constexpr std::uint16_t hasBeenInitialised = 1u << 8;
constexpr std::uint16_t farAway = 22460; ///< coordinates at which no window shows the folder

std::size_t digitCount(std::uint32_t number)
{
    std::size_t digits = 1;
    for (; number >= 10; number /= 10)
        ++digits;
    return digits;
}

/// Eight letters, four for each.
void storeTypeAndCreator(std::uint8_t *record, const char (&text)[9])
{
    std::memcpy(record + Field::finderInfo, text, sizeof text - 1);
}

} // namespace

HfsPlusCatalog::HfsPlusCatalog(const HfsPlusTree &tree, const HfsPlusForks &forks)
    : m_tree(tree)
    , m_forks(forks)
{
}

BTreePosition HfsPlusCatalog::first() const
{
    return {HfsPlusRootParentId, 1};
}

HfsPlusCatalog::Target HfsPlusCatalog::targetWithId(std::uint32_t id) const
{
    if (id == HfsPlusRootId)
        return {TargetKind::Node, 0};
    if (id < m_tree.privateFolderId())
        return {TargetKind::Node, id - HfsPlusFirstOwnId + 1};
    if (id == m_tree.privateFolderId())
        return {TargetKind::PrivateFolder, 0};
    return {TargetKind::LinkedFile, id - m_tree.firstLinkedId()};
}

HfsPlusCatalog::Target HfsPlusCatalog::targetAt(BTreePosition position) const
{
    if (position.group == HfsPlusRootParentId)
        return {TargetKind::Node, 0};
    const Target owner = targetWithId(position.group);
    if (position.item == 0)
        return owner;
    const std::uint32_t child = position.item - 1;
    if (owner.kind == TargetKind::PrivateFolder)
        return {TargetKind::LinkedFile, child};
    if (child == m_tree.childCount(owner.index))
        return {TargetKind::PrivateFolder, 0}; // its name is the last of the root's
    return {TargetKind::Node, m_tree.child(owner.index, child)};
}

bool HfsPlusCatalog::isFolder(Target target) const
{
    return target.kind == TargetKind::PrivateFolder
        || (target.kind == TargetKind::Node && m_tree.tree().nodes[target.index].isFolder());
}

std::uint32_t HfsPlusCatalog::itemCount(std::uint32_t id) const
{
    const Target owner = targetWithId(id);
    if (owner.kind == TargetKind::PrivateFolder)
        return 1 + m_tree.linkedFileCount();
    if (!isFolder(owner))
        return 1;
    return 1 + m_tree.childCount(owner.index) + (id == HfsPlusRootId && m_tree.hasPrivateFolder() ? 1 : 0);
}

bool HfsPlusCatalog::advance(BTreePosition *position) const
{
    if (position->group == HfsPlusRootParentId) {
        *position = {HfsPlusRootId, 0};
        return true;
    }
    if (++position->item < itemCount(position->group))
        return true;
    std::uint32_t id = position->group == HfsPlusRootId ? std::uint32_t{HfsPlusFirstOwnId} : position->group + 1;
    while (id < m_tree.privateFolderId() && !m_tree.holds(id - HfsPlusFirstOwnId + 1))
        ++id;
    if (id > m_tree.privateFolderId() && id < m_tree.firstLinkedId())
        id = m_tree.firstLinkedId();
    *position = {id, 0};
    return id < m_tree.nextId();
}

std::uint32_t HfsPlusCatalog::parentIdOf(Target target) const
{
    switch (target.kind) {
    case TargetKind::Node:
        return target.index == 0 ? std::uint32_t{HfsPlusRootParentId}
                                 : HfsPlusTree::idOf(m_tree.tree().nodes[target.index].parent);
    case TargetKind::PrivateFolder:
        return HfsPlusRootId;
    case TargetKind::LinkedFile:
        break;
    }
    return m_tree.privateFolderId();
}

std::size_t HfsPlusCatalog::nameLengthOf(Target target) const
{
    switch (target.kind) {
    case TargetKind::Node:
        return m_tree.nameLength(target.index);
    case TargetKind::PrivateFolder:
        return privateFolderName.size();
    case TargetKind::LinkedFile:
        break;
    }
    return linkedFilePrefix.size() + digitCount(m_tree.firstLinkedId());
}

void HfsPlusCatalog::nameOf(Target target, HfsPlusName *name) const
{
    switch (target.kind) {
    case TargetKind::Node:
        m_tree.names().nameOf(target.index, name);
        return;
    case TargetKind::PrivateFolder:
        name->assign(privateFolderName);
        return;
    case TargetKind::LinkedFile:
        break;
    }
    char digits[10];
    const char *const end = std::to_chars(digits, digits + sizeof digits, m_tree.firstLinkedId() + target.index).ptr;
    name->clear();
    for (const char character : linkedFilePrefix)
        name->append(static_cast<char16_t>(character));
    for (const char *at = digits; at != end; ++at)
        name->append(static_cast<char16_t>(*at));
}

std::size_t HfsPlusCatalog::keySize(BTreePosition position) const
{
    return emptyKeySize + (position.item == 0 ? 0 : 2 * nameLengthOf(targetAt(position)));
}

std::size_t HfsPlusCatalog::recordSize(BTreePosition position) const
{
    const Target target = targetAt(position);
    const std::size_t nameSize = 2 * nameLengthOf(target);
    if (position.item == 0)
        return emptyKeySize + emptyThreadSize + nameSize;
    return emptyKeySize + nameSize + (isFolder(target) ? folderRecordSize : fileRecordSize);
}

std::uint8_t *HfsPlusCatalog::storeName(Target target, std::uint8_t *to) const
{
    HfsPlusName name;
    nameOf(target, &name);
    storeBigEndian<std::uint16_t>(to, static_cast<std::uint16_t>(name.size()));
    to += 2;
    for (const char16_t unit : name.view()) {
        storeBigEndian<std::uint16_t>(to, unit);
        to += 2;
    }
    return to;
}

void HfsPlusCatalog::storeKey(BTreePosition position, std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Key::length, static_cast<std::uint16_t>(keySize(position) - Key::parentId));
    storeBigEndian<std::uint32_t>(to + Key::parentId, position.group);
    if (position.item > 0)
        (void)storeName(targetAt(position), to + Key::name);
}

void HfsPlusCatalog::storeRecord(BTreePosition position, std::uint8_t *to) const
{
    const Target target = targetAt(position);
    storeKey(position, to);
    to += keySize(position);
    if (position.item == 0)
        storeThread(target, to);
    else if (target.kind == TargetKind::Node)
        storeObject(target.index, to);
    else if (target.kind == TargetKind::PrivateFolder)
        storePrivateFolder(to);
    else
        storeLinkedFile(target.index, to);
}

void HfsPlusCatalog::storeThread(Target target, std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Thread::type, isFolder(target) ? FolderThreadRecord : FileThreadRecord);
    storeBigEndian<std::uint32_t>(to + Thread::parentId, parentIdOf(target));
    (void)storeName(target, to + Thread::name);
}

void HfsPlusCatalog::storeObject(NodeIndex node, std::uint8_t *to) const
{
    const HfsPlusSharedFile *const linked = m_tree.linkedFile(node);
    if (linked)
        storeLink(node, *linked, to);
    else if (m_tree.tree().nodes[node].isFolder())
        storeFolder(node, to);
    else
        storeFile(node, to);
}

void HfsPlusCatalog::storeAttributes(NodeIndex node, std::uint32_t special, std::uint8_t *to) const
{
    const ContentNode &content = m_tree.tree().nodes[node];
    const ObjectTimes times = m_tree.tree().times(node);
    storeBigEndian<std::uint32_t>(to + Field::createDate, hfsPlusDate(times.creation));
    storeBigEndian<std::uint32_t>(to + Field::contentDate, hfsPlusDate(times.modification));
    storeBigEndian<std::uint32_t>(to + Field::attributeDate, hfsPlusDate(times.attributeModification));
    storeBigEndian<std::uint32_t>(to + Field::accessDate, hfsPlusDate(times.access));
    storeBigEndian<std::uint32_t>(to + Field::userId, content.userId);
    storeBigEndian<std::uint32_t>(to + Field::groupId, content.groupId);
    storeBigEndian<std::uint16_t>(to + Field::mode, content.mode);
    storeBigEndian<std::uint32_t>(to + Field::special, special);
    const FinderInfoBytes info = m_forks.finderInfo(node);
    std::copy(info.begin(), info.end(), to + Field::finderInfo);
}

void HfsPlusCatalog::storeForks(NodeIndex node, std::uint8_t *to) const
{
    const ContentTree &tree = m_tree.tree();
    const ContentNode &content = tree.nodes[node];
    if (content.isFile()) {
        storeHfsPlusForkData(to + Field::dataFork, content.fileSize(),
                             tree.nodes[content.contentsOwner()].extentStart(), blocksForBytes(content.fileSize()));
    } else if (const HfsPlusFork *const target = m_forks.linkTargets().forkOf(node)) {
        storeHfsPlusForkData(to + Field::dataFork, target->length, m_places.linkTargets + target->firstBlock,
                             blocksForBytes(target->length));
    }
    if (const HfsPlusFork *const fork = m_forks.resourceForks().forkOf(node))
        storeHfsPlusForkData(to + Field::resourceFork, fork->length, m_places.resourceForks + fork->firstBlock,
                             blocksForBytes(fork->length));
}

void HfsPlusCatalog::storeFolder(NodeIndex node, std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Field::type, FolderRecord);
    const std::uint32_t id = HfsPlusTree::idOf(node);
    storeBigEndian<std::uint32_t>(to + Field::valence, itemCount(id) - 1);
    storeBigEndian<std::uint32_t>(to + Field::id, id);
    storeAttributes(node, 0, to);
    // Readers know links by their creation date, which must be that of the root and of the hidden folder.
    if (node == 0)
        storeBigEndian<std::uint32_t>(to + Field::createDate, hfsPlusDate(m_tree.tree().volumeTime));
}

void HfsPlusCatalog::storeFile(NodeIndex node, std::uint8_t *to) const
{
    const ContentNode &content = m_tree.tree().nodes[node];
    storeBigEndian<std::uint16_t>(to + Field::type, FileRecord);
    storeBigEndian<std::uint16_t>(to + Field::flags, threadExistsFlag);
    storeBigEndian<std::uint32_t>(to + Field::id, HfsPlusTree::idOf(node));
    std::uint32_t special = 1;
    if (content.isDevice())
        special = major(content.deviceNumber()) << 24 | minor(content.deviceNumber());
    storeAttributes(node, special, to);
    storeForks(node, to);
    if (content.kind == ContentKind::SymbolicLink)
        storeTypeAndCreator(to, "slnkrhap");
}

void HfsPlusCatalog::storeLink(NodeIndex node, const HfsPlusSharedFile &file, std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Field::type, FileRecord);
    storeBigEndian<std::uint16_t>(to + Field::flags, threadExistsFlag);
    storeBigEndian<std::uint32_t>(to + Field::id, HfsPlusTree::idOf(node));
    storeAttributes(file.firstName, m_tree.firstLinkedId() + file.number, to);
    storeBigEndian<std::uint32_t>(to + Field::createDate, hfsPlusDate(m_tree.tree().volumeTime));
    std::fill_n(to + Field::finderInfo, sizeof(FinderInfoBytes), std::uint8_t{0});
    storeTypeAndCreator(to, "hlnkhfs+");
    storeBigEndian<std::uint16_t>(to + Field::finderFlags, hasBeenInitialised);
}

void HfsPlusCatalog::storePrivateFolder(std::uint8_t *to) const
{
    storeBigEndian<std::uint16_t>(to + Field::type, FolderRecord);
    storeBigEndian<std::uint32_t>(to + Field::valence, m_tree.linkedFileCount());
    storeBigEndian<std::uint32_t>(to + Field::id, m_tree.privateFolderId());
    const std::uint32_t date = hfsPlusDate(m_tree.tree().volumeTime);
    for (const std::size_t place : {Field::createDate, Field::contentDate, Field::attributeDate, Field::accessDate})
        storeBigEndian<std::uint32_t>(to + place, date);
    storeBigEndian<std::uint16_t>(to + Field::mode, S_IFDIR | 0700);
    storeBigEndian<std::uint16_t>(to + Field::finderFlags, kFinderIsInvisible | nameLocked);
    storeBigEndian<std::uint16_t>(to + Field::finderVertical, farAway);
    storeBigEndian<std::uint16_t>(to + Field::finderHorizontal, farAway);
}

void HfsPlusCatalog::storeLinkedFile(std::uint32_t number, std::uint8_t *to) const
{
    const HfsPlusSharedFile &file = m_tree.linkedFileByNumber(number);
    storeBigEndian<std::uint16_t>(to + Field::type, FileRecord);
    storeBigEndian<std::uint16_t>(to + Field::flags, threadExistsFlag);
    storeBigEndian<std::uint32_t>(to + Field::id, m_tree.firstLinkedId() + number);
    storeAttributes(file.firstName, file.nameCount, to);
    storeForks(file.firstName, to);
}

} // namespace Tessaron
