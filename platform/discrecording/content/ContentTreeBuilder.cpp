#include "platform/discrecording/content/ContentTreeBuilder.h"

#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/discrecording/content/SourceInspector.h"
#include "platform/discrecording/content/UsableBaseNames.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"

#include <QDateTime>
#include <QVariant>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <sys/stat.h>
#include <unordered_set>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t foldersPerCheck = 64;
constexpr std::uint32_t listingBatchSize = 256;

std::string_view view(QByteArrayView bytes)
{
    return {bytes.data(), static_cast<std::size_t>(bytes.size())};
}

std::optional<FileTime> dateProperty(const DRFSObject &object, const QString &key)
{
    const QDateTime date = object.propertyForKey(key, DRISO9660).toDateTime();
    if (!date.isValid())
        return std::nullopt;
    const qint64 milliseconds = date.toMSecsSinceEpoch();
    const qint64 part = ((milliseconds % 1000) + 1000) % 1000;
    return FileTime{(milliseconds - part) / 1000, static_cast<std::uint32_t>(part * 1'000'000)};
}

} // namespace

ContentTreeBuilder::ContentTreeBuilder(const PlanProgress &progress, FileTime volumeTime,
                                       std::optional<std::int64_t> latestTime, unsigned int threadCount)
    : m_progress(progress)
    , m_threadCount(std::max(threadCount, 1u))
    , m_tree(std::make_unique<ContentTree>())
{
    m_tree->volumeTime = volumeTime;
    m_tree->latestTime = latestTime;
}

std::unique_ptr<ContentTree> ContentTreeBuilder::build(const DRFolder &root, StorageIssues &issues)
{
    addRoot(root);
    for (std::uint32_t count = 0; !m_pending.empty(); ++count) {
        if (count % foldersPerCheck == 0 && m_progress.isCancelled())
            return nullptr;
        const PendingFolder next = m_pending.front();
        m_pending.pop_front();
        if (next.virtualFolder)
            addVirtualChildren(next.node, *next.virtualFolder);
        else
            addListedChildren(next.node, issues);
        if (next.node == 0 && m_relocatesDeepFolders)
            addRelocationFolder();
    }
    m_progress.tell(0.15);
    if (!inspect(issues))
        return nullptr;
    settleRelocationFolder();
    numberFolders();
    findSharedContents(*m_tree);
    m_progress.tell(0.6);
    return std::move(m_tree);
}

void ContentTreeBuilder::addRoot(const DRFolder &root)
{
    Candidate candidate;
    candidate.baseName = nameOf(root);
    candidate.name = candidate.baseName;
    // The root's name is the volume's, which may be any text; but it is kept like a file's name and must not be longer.
    if (candidate.name.size() > longestBaseName)
        candidate.name = m_tree->texts.store(usableBaseName(candidate.name));
    candidate.object = &root;
    candidate.mask = root.effectiveFilesystemMask();
    addObject(0, candidate);
}

std::string_view ContentTreeBuilder::nameOf(const DRFSObject &object)
{
    const std::string_view sourceName = view(nameOfFSRef(object.sourceRef()));
    if (!object.hasExplicitBaseName())
        return sourceName;
    const QByteArray given = object.baseNameBytes();
    const std::string_view name = view(given);
    return name == sourceName ? sourceName : m_tree->texts.store(name);
}

void ContentTreeBuilder::addVirtualChildren(NodeIndex parent, const DRFolder &folder)
{
    const auto &children = folder.children();
    std::vector<Candidate> candidates;
    candidates.reserve(children.size());
    const DRFilesystemMask inherited = folder.effectiveFilesystemMask();
    for (const auto &child : children) {
        Candidate candidate;
        candidate.baseName = nameOf(*child);
        candidate.name = candidate.baseName;
        candidate.object = child.get();
        candidate.mask = child->explicitFilesystemMask() ? child->explicitFilesystemMask() : inherited;
        candidate.order = static_cast<std::uint32_t>(candidates.size());
        candidates.push_back(candidate);
    }
    makeNamesUsable(candidates);
    m_tree->nodes[parent].setChildren(m_tree->nodes.size(), static_cast<std::uint32_t>(candidates.size()));
    for (const Candidate &candidate : candidates)
        addObject(parent, candidate);
}

/// Orders the candidates by name. A candidate gets another name when its own cannot be a file's, or when a sibling
/// before it has that name in a filesystem that both are in.
void ContentTreeBuilder::makeNamesUsable(std::vector<Candidate> &candidates)
{
    for (Candidate &candidate : candidates) {
        if (!isUsableBaseName(candidate.name))
            candidate.name = m_tree->texts.store(usableBaseName(candidate.name));
    }
    const auto precedes = [](const Candidate &one, const Candidate &other) {
        return one.name != other.name ? one.name < other.name : one.order < other.order;
    };
    std::sort(candidates.begin(), candidates.end(), precedes);
    const auto haveOneName = [](const Candidate &one, const Candidate &other) { return one.name == other.name; };
    if (std::adjacent_find(candidates.begin(), candidates.end(), haveOneName) == candidates.end())
        return;

    std::unordered_set<std::string_view> taken;
    for (const Candidate &candidate : candidates)
        taken.insert(candidate.name);
    std::string_view previous;
    DRFilesystemMask previousMask = 0;
    unsigned int number = 0;
    for (Candidate &candidate : candidates) {
        if (&candidate == &candidates.front() || candidate.name != previous) {
            previous = candidate.name;
            previousMask = candidate.mask;
            number = 0;
        } else if ((candidate.mask & previousMask) == 0) {
            previousMask |= candidate.mask;
        } else {
            std::string name;
            do
                name = numberedBaseName(previous, ++number);
            while (taken.contains(name));
            candidate.name = m_tree->texts.store(name);
            taken.insert(candidate.name);
        }
    }
    std::sort(candidates.begin(), candidates.end(), precedes);
}

void ContentTreeBuilder::addObject(NodeIndex parent, const Candidate &candidate)
{
    const NodeIndex node = m_tree->nodes.size();
    const DRFSObject &object = *candidate.object;
    ContentNode content;
    content.name = candidate.name.data();
    content.nameLength = static_cast<std::uint8_t>(candidate.name.size());
    content.parent = parent;
    content.kind = object.isFolder() ? ContentKind::Folder : ContentKind::File;
    content.masks = static_cast<std::uint8_t>(candidate.mask & DRFilesystemInclusionMaskAll);
    if (!object.isFolder())
        content.setContentsOwner(node);
    content.mode = object.isFolder() ? S_IFDIR | 0755 : S_IFREG | 0644;
    if (candidate.name != candidate.baseName) {
        content.flags |= ContentNode::NameIsChanged;
        m_tree->changedNames.emplace_back(node, candidate.baseName);
    }
    if (object.sourceRef().node != 0)
        setSource(content, object.sourceRef());
    const DRFile *const file = object.isFolder() ? nullptr : static_cast<const DRFile *>(&object);
    if (const DRRecordedObject *const recorded = file ? file->recordedObject() : nullptr) {
        takeRecorded(content, *recorded);
    } else if (file && file->isVirtual()) {
        const QByteArray contents = file->virtualContents();
        content.setFileSize(static_cast<std::uint64_t>(contents.size()));
        content.flags |= ContentNode::HasContentsInMemory;
        m_tree->contentsInMemory.emplace_back(node, contents);
    }
    applyProperties(node, content, object);
    m_tree->nodes.append(content);
    if (!object.isFolder())
        return;
    m_pending.push_back({node, object.isVirtual() ? static_cast<const DRFolder *>(&object) : nullptr});
}

/// Files with one place on the disc are found to share their contents by that, as those of the machine are by theirs.
void ContentTreeBuilder::takeRecorded(ContentNode &content, const DRRecordedObject &recorded)
{
    constexpr std::uint64_t deviceOfDisc = UINT64_MAX; // that no file of the machine is on
    m_tree->hasObjectsOnDisc = true;
    content.flags |= ContentNode::LiesOnDisc;
    content.kind = contentKindOfMode(recorded.mode);
    content.mode = static_cast<std::uint16_t>(recorded.mode);
    content.userId = recorded.userId;
    content.groupId = recorded.groupId;
    content.setModificationTime(recorded.modification.value_or(m_tree->volumeTime));
    content.setChangeTime(content.modificationTime());
    if (content.isFile()) {
        content.setFileSize(recorded.size);
        content.setExtentStart(recorded.size > 0 ? recorded.firstBlock : 0);
        content.inode = recorded.firstBlock;
        content.device = deviceNumber(m_tree->devices, deviceOfDisc);
    } else if (content.kind == ContentKind::SymbolicLink) {
        const QByteArray &target = recorded.linkTarget;
        content.setLinkTargetLength(static_cast<std::uint64_t>(target.size()));
        content.setLinkTargetNumber(static_cast<std::uint32_t>(m_tree->linkTargets.size()));
        m_tree->linkTargets.push_back(m_tree->texts.store(view(target)));
    } else if (content.isDevice()) {
        content.setDeviceNumber(recorded.deviceNumber);
    }
}

void ContentTreeBuilder::setSource(ContentNode &content, const FSRef &ref)
{
    content.sourceNode = ref.node;
    content.inode = ref.inode;
    content.setBirthTime(ref.birthTime());
    content.device = deviceNumber(m_tree->devices, ref.device);
    content.flags |= ContentNode::NeedsInspection;
}

void ContentTreeBuilder::applyProperties(NodeIndex node, ContentNode &content, const DRFSObject &object)
{
    if (object.propertiesForFilesystem(DRISO9660).isEmpty() && object.propertiesForFilesystem(DRJoliet).isEmpty()
        && object.propertiesForFilesystem(DRUDF).isEmpty() && object.propertiesForFilesystem(DRHFSPlus).isEmpty())
        return;
    constexpr DRFilesystem filesystems[] = {DRISO9660, DRJoliet, DRUDF, DRHFSPlus};
    for (std::size_t index = 0; index < std::size(filesystems); ++index) {
        if (object.propertyForKey(DRInvisible, filesystems[index]).toBool())
            content.hideIn(DRFilesystemMask{1} << index);
    }
    if (const QVariant mode = object.propertyForKey(DRPosixFileMode, DRISO9660); mode.isValid())
        m_modes.emplace_back(node, static_cast<std::uint16_t>(mode.toUInt() & 07777u));
    if (const QVariant user = object.propertyForKey(DRPosixUID, DRISO9660); user.isValid())
        m_users.emplace_back(node, user.toUInt());
    if (const QVariant group = object.propertyForKey(DRPosixGID, DRISO9660); group.isValid())
        m_groups.emplace_back(node, group.toUInt());

    ContentDates dates{node, dateProperty(object, DRContentModificationDate), dateProperty(object, DRAccessDate),
                       dateProperty(object, DRAttributeModificationDate), dateProperty(object, DRCreationDate)};
    if (dates.modification || dates.access || dates.attributeModification || dates.creation) {
        content.flags |= ContentNode::HasDates;
        m_tree->dates.push_back(dates);
    }
    ContentFinderFlags finder{node, std::nullopt, object.propertyForKey(DRMacFinderHideExtension, DRHFSPlus).toBool()};
    if (const QVariant flags = object.propertyForKey(DRMacFinderFlags, DRHFSPlus); flags.isValid())
        finder.flags = static_cast<std::uint16_t>(flags.toInt());
    if (finder.flags || finder.hidesExtension)
        m_tree->finderFlags.push_back(finder);
}

OSStatus ContentTreeBuilder::listFolder(const FSRef &ref, std::vector<ContentNode> &children)
{
    OSStatus status = noErr;
    const std::shared_ptr<FSIterator> iterator = FSOpenIterator(ref, &status);
    std::vector<FSBulkEntry> batch(listingBatchSize);
    while (iterator && status == noErr) {
        std::uint32_t actual = 0;
        status = FSGetCatalogInfoBulk(*iterator, listingBatchSize, &actual,
                                      kFSCatInfoDataSizes | kFSCatInfoDates | kFSCatInfoPermissions, batch.data());
        for (std::uint32_t index = 0; index < actual; ++index) {
            const FSBulkEntry &entry = batch[index];
            ContentNode content;
            content.name = nameOfFSRef(entry.ref).data();
            // Only file systems in user space have longer names; these are cut.
            content.nameLength =
                static_cast<std::uint8_t>(std::min<std::size_t>(view(nameOfFSRef(entry.ref)).size(), longestBaseName));
            setSource(content, entry.ref);
            if (takeCatalogInfo(content, entry.info))
                content.flags &= static_cast<std::uint8_t>(~ContentNode::NeedsInspection);
            children.push_back(content);
        }
        if (m_progress.isCancelled())
            return noErr;
    }
    return status == errFSNoMoreItems ? OSStatus{noErr} : status;
}

void ContentTreeBuilder::addListedChildren(NodeIndex parent, StorageIssues &issues)
{
    std::vector<ContentNode> children;
    if (const OSStatus status = listFolder(m_tree->sourceRef(parent), children); status != noErr) {
        m_tree->nodes[parent].kind = ContentKind::Absent;
        const StorageReason reason = status == fnfErr ? StorageReason::Vanished : StorageReason::FolderNotReadable;
        issues.push_back({parent, DRDiscTree::ISO9660, DRStorageReportItem::Kind::Refused, reason, false});
        return;
    }
    std::sort(children.begin(), children.end(),
              [](const ContentNode &one, const ContentNode &other) { return one.nameView() < other.nameView(); });
    m_tree->nodes[parent].setChildren(m_tree->nodes.size(), static_cast<std::uint32_t>(children.size()));
    for (ContentNode &content : children) {
        const NodeIndex node = m_tree->nodes.size();
        content.parent = parent;
        content.masks = static_cast<std::uint8_t>(m_tree->nodes[parent].filesystems());
        if (!content.isFolder())
            content.setContentsOwner(node);
        noteLongName(node, content);
        m_tree->nodes.append(content);
        if (content.isFolder())
            m_pending.push_back({node, nullptr});
    }
}

void ContentTreeBuilder::noteLongName(NodeIndex node, ContentNode &content)
{
    FSRef place;
    place.node = content.sourceNode;
    const std::string_view name = view(nameOfFSRef(place));
    if (name.size() == content.nameLength)
        return;
    content.flags |= ContentNode::NameIsChanged;
    m_tree->changedNames.emplace_back(node, name);
}

void ContentTreeBuilder::addRelocationFolder()
{
    // Readers know it by one of these names.
    constexpr std::array<std::string_view, 2> names{"rr_moved", ".rr_moved"};
    std::array<NodeIndex, 2> holders{};
    ContentNode &root = m_tree->nodes[0];
    for (NodeIndex node = root.firstChild(); node < root.endChild(); ++node) {
        for (std::size_t index = 0; index < names.size(); ++index) {
            if (m_tree->nodes[node].nameView() == names[index])
                holders[index] = node;
        }
    }
    const auto isFolder = [&](NodeIndex node) { return node != 0 && m_tree->nodes[node].isFolder(); };
    if (isFolder(holders[0]) || isFolder(holders[1])) {
        // With both there, readers could take the wrong one.
        if (!isFolder(holders[0]) || !isFolder(holders[1]))
            m_tree->relocationFolder = isFolder(holders[0]) ? holders[0] : holders[1];
        return;
    }
    if (root.kind == ContentKind::Absent || (holders[0] != 0 && holders[1] != 0))
        return;
    const std::string_view name = holders[0] == 0 ? names[0] : names[1];
    ContentNode folder;
    folder.name = name.data();
    folder.nameLength = static_cast<std::uint8_t>(name.size());
    folder.kind = ContentKind::Folder;
    folder.masks = DRFilesystemInclusionMaskISO9660;
    folder.mode = S_IFDIR | 0755;
    // It can follow the root's other children, since these have no children of their own yet.
    m_tree->relocationFolder = m_tree->nodes.size();
    m_tree->hidesRelocationFolder = true;
    root.setChildren(root.childCount() == 0 ? m_tree->relocationFolder : root.firstChild(), root.childCount() + 1);
    m_tree->nodes.append(folder);
}

bool ContentTreeBuilder::hasDeepFolder() const
{
    constexpr std::uint8_t deepestLevel = 8; // ECMA-119 6.8.2.1; the root is the first
    std::vector<std::uint8_t> levels(m_tree->nodes.size(), 1);
    for (NodeIndex node = 1; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        const std::uint8_t parentLevel = levels[content.parent];
        levels[node] = std::min<std::uint8_t>(parentLevel + 1, deepestLevel + 1);
        // A folder counts by its own level, any other object by that of the folder that holds it.
        const bool isInDeepFolder = (content.isFolder() ? levels[node] : parentLevel) > deepestLevel;
        if (isInDeepFolder && content.kind != ContentKind::Absent
            && (content.filesystems() & DRFilesystemInclusionMaskISO9660) != 0)
            return true;
    }
    return false;
}

void ContentTreeBuilder::settleRelocationFolder()
{
    if (m_tree->relocationFolder == 0)
        return;
    ContentNode &folder = m_tree->nodes[m_tree->relocationFolder];
    if (folder.isFolder() && hasDeepFolder()) {
        folder.masks |= DRFilesystemInclusionMaskISO9660;
        return;
    }
    if (m_tree->hidesRelocationFolder)
        folder.kind = ContentKind::Absent;
    m_tree->relocationFolder = 0;
}

/// Done last, when it is known which folders there are: writers keep tables of them in this order and search in them.
void ContentTreeBuilder::numberFolders()
{
    for (NodeIndex node = 0; node < m_tree->nodes.size(); ++node) {
        if (m_tree->nodes[node].isFolder())
            m_tree->nodes[node].setFolderNumber(m_tree->folderCount++);
    }
}

bool ContentTreeBuilder::inspect(StorageIssues &issues)
{
    if (!inspectSources(*m_tree, m_progress, m_threadCount, issues))
        return false;
    // Values that were set take precedence over the sources', so they come last; they never change an object's type.
    for (const auto &[node, mode] : m_modes)
        m_tree->nodes[node].mode = static_cast<std::uint16_t>((m_tree->nodes[node].mode & S_IFMT) | mode);
    for (const auto &[node, user] : m_users) {
        m_tree->nodes[node].userId = user;
        m_tree->nodes[node].flags |= ContentNode::HasUserId;
    }
    for (const auto &[node, group] : m_groups) {
        m_tree->nodes[node].groupId = group;
        m_tree->nodes[node].flags |= ContentNode::HasGroupId;
    }
    return true;
}

void completeFilesystemMasks(ContentTree &tree, DRFilesystemMask *contentMask)
{
    *contentMask = 0;
    for (NodeIndex node = tree.nodes.size(); node-- > 1;) {
        ContentNode &content = tree.nodes[node];
        if (content.kind == ContentKind::Absent)
            continue;
        *contentMask |= content.filesystems();
        ContentNode &parent = tree.nodes[content.parent];
        parent.masks = static_cast<std::uint8_t>(parent.masks | content.filesystems());
    }
}

} // namespace Tessaron
