#include "platform/discrecording/iso9660/DirectoryRecords.h"

#include "platform/discrecording/iso9660/BothEndianFields.h"
#include "platform/discrecording/iso9660/IsoDateFields.h"
#include "platform/discrecording/iso9660/RockRidge.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// Bytes of a record before its identifier (ECMA-119 9.1).
constexpr std::size_t fixedRecordSize = 33;
/// Longest record: its length is one byte and even.
constexpr std::size_t longestRecord = 254;

// Fields of a record (ECMA-119 9.1), counted from 0.
namespace Field
{
constexpr std::size_t recordLength = 0;
constexpr std::size_t extentBlock = 2;
constexpr std::size_t dataLength = 10;
constexpr std::size_t recordingTime = 18;
constexpr std::size_t flags = 25;
constexpr std::size_t numberInSet = 28;
constexpr std::size_t identifierLength = 32;
} // namespace Field

// File flags (9.1.6).
constexpr std::uint8_t flagHidden = 0x01;
constexpr std::uint8_t flagDirectory = 0x02;
constexpr std::uint8_t flagMultiExtent = 0x80;

// Identifiers of the records for a folder itself and for its parent (7.6.2).
constexpr std::string_view selfIdentifier{"\0", 1};
constexpr std::string_view parentIdentifier{"\1", 1};

/// Where the system use field begins: identifiers of even length are padded (9.1.12).
constexpr std::size_t systemUseStart(std::size_t identifierSize)
{
    return fixedRecordSize + identifierSize + (identifierSize % 2 == 0 ? 1 : 0);
}

RockRidgeFacts factsAbout(const DirectoryHierarchy &hierarchy, NodeIndex node)
{
    const ContentTree &tree = hierarchy.tree();
    const ContentNode &content = tree.nodes[node];
    if (content.isFolder())
        return {2 + hierarchy.folderOf(node).subfolderCount, node + 1};
    const bool isOneOfSeveral =
        content.has(ContentNode::SharesContents) && tree.haveSameAttributes(node, content.contentsOwner());
    return isOneOfSeveral ? RockRidgeFacts{hierarchy.linkCount(content.contentsOwner()), content.contentsOwner() + 1}
                          : RockRidgeFacts{1, node + 1};
}

} // namespace

DirectoryRecords::DirectoryRecords(const DirectoryHierarchy &hierarchy, const HierarchyPlaces &places)
    : m_hierarchy(hierarchy)
    , m_places(&places)
    , m_names(nullptr)
{
}

DirectoryRecords::DirectoryRecords(const DirectoryHierarchy &hierarchy, const SiblingNames &names)
    : m_hierarchy(hierarchy)
    , m_places(nullptr)
    , m_names(&names)
{
}

void DirectoryRecords::begin(const HierarchyFolder &folder)
{
    m_folder = &folder;
    m_nextRole = Role::Self;
    m_next = {0, 0, folder.firstContinued};
    m_sectionCount = 0;
}

void DirectoryRecords::begin(const HierarchyFolder &folder, const DirectoryRestart &restart)
{
    m_folder = &folder;
    m_nextRole = Role::Child;
    m_next = restart;
    m_sectionCount = 0;
}

bool DirectoryRecords::next()
{
    m_place = m_next;
    if (m_nextRole != Role::Child) {
        makeSpecial(m_nextRole);
        m_nextRole = m_nextRole == Role::Self ? Role::Parent : Role::Child;
        return true;
    }
    if (m_next.position >= m_folder->childCount)
        return false;
    const NodeIndex node = m_hierarchy.child(*m_folder, m_next.position);
    if (m_sectionCount == 0)
        makeChild(node);
    m_isFirstSection = m_next.section == 0;
    setExtent(node, m_next.section);
    if (++m_next.section >= m_sectionCount) {
        m_next = {m_next.position + 1, 0, m_next.continued + (m_use.continuation().empty() ? 0u : 1u)};
        m_sectionCount = 0;
    }
    return true;
}

void DirectoryRecords::makeSpecial(Role role)
{
    const HierarchyFolder &folder = *m_folder;
    m_node = folder.node;
    m_role = NameRole::Folder;
    m_isFirstSection = true;
    m_use.clear();
    makeSystemUse(m_node, role, 1);
    const NodeIndex described = role == Role::Self ? folder.node : m_hierarchy.folders()[folder.parent].node;
    makeRecord(described, role == Role::Self ? selfIdentifier : parentIdentifier, {});
    if (!m_use.continuation().empty())
        ++m_next.continued;
    setExtent(described, 0);
}

void DirectoryRecords::makeChild(NodeIndex node)
{
    const ContentNode &content = m_hierarchy.tree().nodes[node];
    m_node = node;
    m_role = m_hierarchy.roleOf(*m_folder, node);
    m_sectionCount = content.isFile() ? fileSectionCount(content.fileSize()) : 1;
    if (m_names)
        m_name.assign(m_names->nameOf(m_names->entries()[m_next.position]));
    else
        m_hierarchy.names().nameOf(node, m_role, &m_name);
    const std::string_view suffix = m_hierarchy.names().suffix(m_name.view(), m_role);
    m_use.clear();
    makeSystemUse(node, Role::Child, m_name.size() + suffix.size());
    makeRecord(node, m_name.view(), suffix);
}

void DirectoryRecords::makeSystemUse(NodeIndex node, Role role, std::size_t identifierSize)
{
    if (!m_hierarchy.traits().hasRockRidge) {
        m_use.divide(0);
        return;
    }
    const ContentTree &tree = m_hierarchy.tree();
    const bool isRootItself = role == Role::Self && node == 0;
    const NodeIndex described = role == Role::Parent ? tree.nodes[node].parent : node;
    if (isRootItself)
        addSharingProtocolIndicator(m_use);
    // Link counts are known once all folders are; they change no size.
    const RockRidgeFacts facts = m_places ? factsAbout(m_hierarchy, described) : RockRidgeFacts();
    addRockRidgeAttributes(m_use, tree, described, m_places ? &facts : nullptr);
    if (role == Role::Child)
        addRockRidgeName(m_use, tree, node);
    addRelocation(node, role);
    if (isRootItself)
        addRockRidgeReference(m_use);
    m_use.divide(longestRecord - systemUseStart(identifierSize));
    if (m_places && m_folder && !m_use.continuation().empty()) {
        const HierarchyContinuation &place = m_hierarchy.continuations()[m_next.continued];
        m_use.setContinuationPlace({m_places->directories + place.block, place.offset});
    }
}

void DirectoryRecords::addRelocation(NodeIndex node, Role role)
{
    if (role == Role::Child && m_role == NameRole::FolderElsewhere)
        addChildLink(m_use, directoryOf(node));
    else if (role == Role::Child && (m_hierarchy.isRelocated(node) || m_hierarchy.isHiddenByRockRidge(node)))
        addRelocatedMark(m_use);
    else if (role == Role::Parent && m_hierarchy.isRelocated(node))
        addParentLink(m_use, directoryOf(m_hierarchy.tree().nodes[node].parent));
}

std::uint32_t DirectoryRecords::directoryOf(NodeIndex folder) const
{
    if (!m_places)
        return 0;
    return static_cast<std::uint32_t>(m_places->directories + m_hierarchy.folderOf(folder).firstBlock);
}

void DirectoryRecords::makeRecord(NodeIndex node, std::string_view identifier, std::string_view suffix)
{
    const ContentNode &content = m_hierarchy.tree().nodes[node];
    const std::size_t identifierSize = identifier.size() + suffix.size();
    const std::size_t useStart = systemUseStart(identifierSize);
    const std::span<const std::uint8_t> use = m_use.inRecord();
    m_recordSize = useStart + use.size() + (useStart + use.size()) % 2;
    m_record.fill(0);
    m_record[Field::recordLength] = static_cast<std::uint8_t>(m_recordSize);
    if (m_places)
        storeRecordingDate(&m_record[Field::recordingTime], m_hierarchy.tree().times(node).modification);
    const bool isHidden = (content.hiddenIn() & m_hierarchy.traits().filesystem) != 0;
    m_record[Field::flags] =
        static_cast<std::uint8_t>((isHidden ? flagHidden : 0) | (m_role == NameRole::Folder ? flagDirectory : 0));
    storeBothEndian16(&m_record[Field::numberInSet], 1);
    m_record[Field::identifierLength] = static_cast<std::uint8_t>(identifierSize);
    const auto end = std::copy(identifier.begin(), identifier.end(), m_record.begin() + fixedRecordSize);
    std::copy(suffix.begin(), suffix.end(), end);
    std::copy(use.begin(), use.end(), m_record.begin() + static_cast<std::ptrdiff_t>(useStart));
}

void DirectoryRecords::setExtent(NodeIndex node, std::uint32_t section)
{
    if (!m_places)
        return;
    const ContentTree &tree = m_hierarchy.tree();
    const ContentNode &content = tree.nodes[node];
    std::uint64_t block = 0;
    std::uint64_t size = 0;
    if (m_role == NameRole::Folder) {
        const HierarchyFolder &folder = m_hierarchy.folderOf(node);
        block = m_places->directories + folder.firstBlock;
        size = std::uint64_t{folder.blockCount} * logicalBlockSize;
    } else if (content.isFile() && content.fileSize() > 0) {
        const std::uint64_t offset = section * fileSectionSize;
        block = tree.blockOfContents(node, m_places->image) + offset / logicalBlockSize;
        size = std::min(content.fileSize() - offset, fileSectionSize);
        const bool isLast = offset + size >= content.fileSize();
        m_record[Field::flags] =
            static_cast<std::uint8_t>((m_record[Field::flags] & ~flagMultiExtent) | (isLast ? 0 : flagMultiExtent));
    }
    storeBothEndian(&m_record[Field::extentBlock], static_cast<std::uint32_t>(block));
    storeBothEndian(&m_record[Field::dataLength], static_cast<std::uint32_t>(size));
}

std::span<const std::uint8_t> DirectoryRecords::continuationOf(const HierarchyContinuation &continuation)
{
    const NodeIndex node = continuation.node;
    m_folder = nullptr;
    m_use.clear();
    m_role = continuation.role;
    if (node == 0) {
        makeSystemUse(0, Role::Self, 1);
    } else {
        m_hierarchy.names().nameOf(node, m_role, &m_name);
        makeSystemUse(node, Role::Child, m_name.size() + m_hierarchy.names().suffix(m_name.view(), m_role).size());
    }
    m_use.setContinuationPlace({m_places->directories + continuation.block, continuation.offset});
    return m_use.continuation();
}

void storeRootRecord(std::uint8_t *to, const DirectoryHierarchy &hierarchy, const HierarchyPlaces &places)
{
    const HierarchyFolder &root = hierarchy.folders().front();
    std::fill_n(to, rootRecordSize, std::uint8_t{0});
    to[Field::recordLength] = rootRecordSize;
    storeBothEndian(to + Field::extentBlock, static_cast<std::uint32_t>(places.directories + root.firstBlock));
    storeBothEndian(to + Field::dataLength, root.blockCount * logicalBlockSize);
    storeRecordingDate(to + Field::recordingTime, hierarchy.tree().times(root.node).modification);
    to[Field::flags] = flagDirectory;
    storeBothEndian16(to + Field::numberInSet, 1);
    to[Field::identifierLength] = 1;
}

} // namespace Tessaron
