#include "platform/discrecording/content/SourceInspector.h"

#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/discrecording/content/SourceFolder.h"
#include "platform/discrecording/content/WorkerFailures.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

ContentKind contentKindOfMode(std::uint32_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return ContentKind::Folder;
    case S_IFLNK:
        return ContentKind::SymbolicLink;
    case S_IFIFO:
        return ContentKind::Fifo;
    case S_IFSOCK:
        return ContentKind::Socket;
    case S_IFCHR:
        return ContentKind::CharacterDevice;
    case S_IFBLK:
        return ContentKind::BlockDevice;
    default:
        return ContentKind::File;
    }
}

namespace
{

/// True when the permissions alone say that everybody may read.
bool isReadableByAll(std::uint32_t mode, bool isFolder)
{
    const std::uint32_t wanted = isFolder ? 0555u : 0444u;
    return (mode & wanted) == wanted;
}

/// True when the error says that nothing is there.
bool isAbsence(int errnoValue)
{
    return errnoValue == ENOENT || errnoValue == ENOTDIR || errnoValue == ELOOP || errnoValue == ESTALE;
}

/// What one thread found that does not fit into the nodes themselves.
struct Findings {
    StorageIssues issues;
    std::vector<std::pair<NodeIndex, QByteArray>> linkTargets;
};

/// Looks at sources one after another. Each thread has one; they share the tree, and each works on nodes of its own.
class Inspector
{
public:
    Inspector(ContentTree &tree, std::mutex &devicesMutex)
        : m_tree(tree)
        , m_devicesMutex(devicesMutex)
    {
    }

    void inspect(NodeIndex node)
    {
        ContentNode &content = m_tree.nodes[node];
        content.flags &= static_cast<std::uint8_t>(~ContentNode::NeedsInspection);
        const FoundSource found = lookUp(content);
        const StorageReason notReadable =
            content.isFolder() ? StorageReason::FolderNotReadable : StorageReason::FileNotReadable;
        if (found.error != 0) {
            leaveOut(node, isAbsence(found.error) ? StorageReason::Vanished : notReadable);
            return;
        }
        const ContentKind kind = contentKindOfMode(found.status.stx_mode);
        if (content.isFolder() != (kind == ContentKind::Folder)) {
            leaveOut(node, content.isFolder() ? StorageReason::Vanished : StorageReason::BecameFolder);
            return;
        }
        // The writers open it by the name that it has now; another file may have the old one.
        if (found.folder < 0)
            content.sourceNode = FilePlaces::shared().currentNode(found.ref);
        take(content, found.status);
        if (kind == ContentKind::SymbolicLink)
            readLink(node, found.ref);
        else if (!isReadable(content, found))
            leaveOut(node, notReadable);
    }

    Findings findings;

private:
    struct FoundSource {
        int error = 0; ///< `errno` value
        int folder = -1; ///< the open folder in which it lies under its reference's name; -1 when it lies elsewhere
        FSRef ref; ///< without the device while that was not needed
        struct statx status = {};
    };

    /// Where the reference leads is asked first, through the folder there, which costs no path. When another file lies
    /// there by now, the source is looked for: it may have been renamed.
    FoundSource lookUp(const ContentNode &content)
    {
        constexpr unsigned int mask = STATX_BASIC_STATS | STATX_BTIME;
        FoundSource found;
        found.ref.inode = content.inode;
        found.ref.setBirthTime(content.birthTime());
        found.ref.node = content.sourceNode;
        const int folder = m_folder.descriptorFor(found.ref);
        const bool isSomething =
            folder >= 0 && statBelow(folder, nameOfFSRef(found.ref).data(), mask, &found.status) == 0;
        if (isSomething && hasSameIdentity(found.ref, found.status)) {
            found.folder = folder;
            return found;
        }
        {
            // Only here, for other threads may be adding to the table of devices.
            const std::scoped_lock lock(m_devicesMutex);
            found.ref.device = m_tree.devices[content.device];
        }
        if (isSomething && isFileAtItsPlace(found.ref, found.status))
            found.folder = folder;
        else
            found.error = statFSRef(found.ref, mask, &found.status);
        return found;
    }

    void take(ContentNode &content, const struct statx &status)
    {
        if (!content.isFolder())
            content.kind = contentKindOfMode(status.stx_mode);
        if (content.kind == ContentKind::File)
            content.setFileSize(status.stx_size);
        else if (content.isDevice())
            content.setDeviceNumber(makedev(status.stx_rdev_major, status.stx_rdev_minor));
        content.setModificationTime(FileTime::from(status.stx_mtime));
        content.setChangeTime(FileTime::from(status.stx_ctime));
        if (status.stx_ino != content.inode) {
            // Another file has taken the place since the layout was made, as editors do when they save: it is meant.
            content.inode = status.stx_ino;
            const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
            content.setBirthTime(hasBirth ? FileTime::from(status.stx_btime) : FileTime{});
        }
        content.mode = static_cast<std::uint16_t>(status.stx_mode);
        content.userId = status.stx_uid;
        content.groupId = status.stx_gid;
        const std::uint64_t device = makedev(status.stx_dev_major, status.stx_dev_minor);
        if (content.device == m_deviceNumber && device == m_device)
            return;
        const std::scoped_lock lock(m_devicesMutex);
        content.device = deviceNumber(m_tree.devices, device);
        m_deviceNumber = content.device;
        m_device = device;
    }

    /// Asked of root, too: file servers and containers may grant it less than everything.
    static bool isReadable(const ContentNode &content, const FoundSource &found)
    {
        const bool hasContents =
            content.isFolder() ? content.childCount() == 0 : content.isFile() && content.fileSize() > 0;
        if (!hasContents || isReadableByAll(found.status.stx_mode, content.isFolder()))
            return true;
        const int wanted = content.isFolder() ? R_OK | X_OK : R_OK;
        if (found.folder >= 0)
            return ::faccessat(found.folder, nameOfFSRef(found.ref).data(), wanted, AT_EACCESS) == 0;
        const PathAccess access(lastKnownPath(found.ref));
        return access.error() == 0 && ::faccessat(access.folder(), access.path(), wanted, AT_EACCESS) == 0;
    }

    void readLink(NodeIndex node, const FSRef &ref)
    {
        QByteArray target;
        if (readLinkTarget(ref, &target) != 0) {
            leaveOut(node, StorageReason::LinkNotReadable);
            return;
        }
        m_tree.nodes[node].setLinkTargetLength(static_cast<std::uint64_t>(target.size()));
        findings.linkTargets.emplace_back(node, target);
    }

    void leaveOut(NodeIndex node, StorageReason reason)
    {
        ContentNode &content = m_tree.nodes[node];
        if (content.isFolder() && content.childCount() > 0) {
            // What the layout puts into the folder is still there; only its times and permissions are not known.
            content.sourceNode = 0;
            return;
        }
        content.kind = ContentKind::Absent;
        findings.issues.push_back({node, DRDiscTree::ISO9660, DRStorageReportItem::Kind::Refused, reason, false});
    }

    ContentTree &m_tree;
    std::mutex &m_devicesMutex; ///< guards ContentTree::devices
    SourceFolder m_folder;
    std::uint64_t m_device = UINT64_MAX; ///< the device met last, and its number
    std::uint16_t m_deviceNumber = 0;
};

/// Puts what the threads found into the tree, in its order, so that the result does not depend on their timing.
void merge(ContentTree &tree, std::vector<Inspector> &inspectors, StorageIssues &issues)
{
    std::vector<std::pair<NodeIndex, QByteArray>> targets;
    for (Inspector &inspector : inspectors) {
        issues.insert(issues.end(), inspector.findings.issues.begin(), inspector.findings.issues.end());
        targets.insert(targets.end(), inspector.findings.linkTargets.begin(), inspector.findings.linkTargets.end());
    }
    std::stable_sort(issues.begin(), issues.end(),
                     [](const StorageIssue &one, const StorageIssue &other) { return one.node < other.node; });
    std::sort(targets.begin(), targets.end(),
              [](const auto &one, const auto &other) { return one.first < other.first; });
    for (const auto &[node, target] : targets) {
        tree.nodes[node].setLinkTargetNumber(static_cast<std::uint32_t>(tree.linkTargets.size()));
        tree.linkTargets.push_back(tree.texts.store({target.constData(), static_cast<std::size_t>(target.size())}));
    }
}

} // namespace

std::uint16_t deviceNumber(std::vector<std::uint64_t> &devices, std::uint64_t device)
{
    // It is nearly always the last one, and there are few others.
    if (!devices.empty() && devices.back() == device)
        return static_cast<std::uint16_t>(devices.size() - 1);
    const auto number = static_cast<std::size_t>(std::find(devices.begin(), devices.end(), device) - devices.begin());
    if (number == devices.size() && number <= UINT16_MAX)
        devices.push_back(device);
    return static_cast<std::uint16_t>(std::min<std::size_t>(number, UINT16_MAX));
}

bool takeCatalogInfo(ContentNode &content, const FSCatalogInfo &info)
{
    content.kind = contentKindOfMode(info.mode);
    if (content.isFile())
        content.setFileSize(info.dataLogicalSize);
    else if (content.isDevice())
        content.setDeviceNumber(info.deviceNumber);
    content.setModificationTime(info.contentModDate);
    content.setChangeTime(info.attributeModDate);
    content.mode = static_cast<std::uint16_t>(info.mode);
    content.userId = info.userId;
    content.groupId = info.groupId;
    const bool needsRead = content.isFile() && content.fileSize() > 0;
    return content.kind != ContentKind::SymbolicLink && (!needsRead || isReadableByAll(info.mode, false));
}

bool inspectSources(ContentTree &tree, const PlanProgress &progress, unsigned int threadCount, StorageIssues &issues)
{
    constexpr std::uint32_t nodesPerTurn = 512;
    const std::uint32_t count = tree.nodes.size();
    const unsigned int workers = std::min(threadCount, 1 + count / (4 * nodesPerTurn));
    std::mutex devicesMutex;
    std::vector<Inspector> inspectors;
    inspectors.reserve(workers);
    for (unsigned int worker = 0; worker < workers; ++worker)
        inspectors.emplace_back(tree, devicesMutex);

    std::atomic<std::uint32_t> next = 0;
    const auto work = [&](Inspector &inspector, bool tells) {
        for (;;) {
            const std::uint32_t begin = next.fetch_add(nodesPerTurn);
            if (begin >= count || progress.isCancelled())
                return;
            for (NodeIndex node = begin; node < std::min(begin + nodesPerTurn, count); ++node) {
                if (tree.nodes[node].has(ContentNode::NeedsInspection))
                    inspector.inspect(node);
            }
            if (tells)
                progress.tell(0.15 + 0.4 * begin / count);
        }
    };
    WorkerFailures failures;
    {
        std::vector<std::jthread> threads;
        try {
            for (unsigned int worker = 1; worker < workers; ++worker)
                threads.emplace_back([&, worker] { failures.run([&] { work(inspectors[worker], false); }); });
        } catch (const std::system_error &) {
            // The system has no more threads to give: fewer of them do the same.
        }
        failures.run([&] { work(inspectors[0], true); });
    }
    failures.rethrow();
    if (progress.isCancelled())
        return false;
    merge(tree, inspectors, issues);
    return true;
}

} // namespace Tessaron
