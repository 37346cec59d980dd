#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"

#include <deque>
#include <memory>
#include <string_view>
#include <vector>

namespace Tessaron
{

class DRFile;
class DRFolder;
class DRFSObject;
struct DRRecordedObject;

/// Makes the flat tree of a disc: walks the layout, lists the real folders in it, looks at every source, and finds the
/// files whose contents are the same. On one thread but for looking at sources.
class ContentTreeBuilder
{
public:
    /// `volumeTime` is the time of objects that have no source; `threadCount` threads look at sources.
    ContentTreeBuilder(const PlanProgress &progress, FileTime volumeTime, std::optional<std::int64_t> latestTime,
                       unsigned int threadCount);

    /// Gives the tree a relocation folder when ISO 9660 needs one. To be called before build().
    void relocateDeepFolders() { m_relocatesDeepFolders = true; }

    /// Null when cancelled. What could not be taken along is added to `issues`; which tree it concerns is filled in
    /// later.
    [[nodiscard]] std::unique_ptr<ContentTree> build(const DRFolder &root, StorageIssues &issues);

private:
    /// A folder whose children are still to be added.
    struct PendingFolder {
        NodeIndex node = 0;
        const DRFolder *virtualFolder = nullptr; ///< null for one whose children are listed from disk
    };
    /// A child of a virtual folder before it has a place.
    struct Candidate {
        std::string_view baseName;
        std::string_view name; ///< on the disc
        const DRFSObject *object = nullptr;
        DRFilesystemMask mask = 0;
        std::uint32_t order = 0;
    };

    void addRoot(const DRFolder &root);
    void addVirtualChildren(NodeIndex parent, const DRFolder &folder);
    void addListedChildren(NodeIndex parent, StorageIssues &issues);
    /// Lists a folder from disk; not to its end when cancelled.
    OSStatus listFolder(const FSRef &ref, std::vector<ContentNode> &children);
    /// Remembers the name of a listed object that had to be cut.
    void noteLongName(NodeIndex node, ContentNode &content);
    void addObject(NodeIndex parent, const Candidate &candidate);
    void takeRecorded(ContentNode &content, const DRRecordedObject &recorded);
    void applyProperties(NodeIndex node, ContentNode &content, const DRFSObject &object);
    void setSource(ContentNode &content, const FSRef &ref);
    std::string_view nameOf(const DRFSObject &object);
    void makeNamesUsable(std::vector<Candidate> &candidates);
    /// Finds or makes the folder of the root to which deep ones can be moved.
    void addRelocationFolder();
    /// Takes it away again when no folder is that deep.
    void settleRelocationFolder();
    [[nodiscard]] bool hasDeepFolder() const;
    void numberFolders();
    /// False when cancelled.
    bool inspect(StorageIssues &issues);

    const PlanProgress &m_progress;
    const unsigned int m_threadCount;
    bool m_relocatesDeepFolders = false;
    std::unique_ptr<ContentTree> m_tree;
    std::deque<PendingFolder> m_pending;
    std::vector<std::pair<NodeIndex, std::uint16_t>> m_modes; ///< set by properties, which take precedence
    std::vector<std::pair<NodeIndex, std::uint32_t>> m_users;
    std::vector<std::pair<NodeIndex, std::uint32_t>> m_groups;
};

/// Lets each folder be in every filesystem that holds something below it. `contentMask` becomes the filesystems that
/// hold anything but the root.
void completeFilesystemMasks(ContentTree &tree, DRFilesystemMask *contentMask);

/// Finds the files whose contents are the same file on disk (hard links, or one file added twice), so that they are
/// stored once.
void findSharedContents(ContentTree &tree);

} // namespace Tessaron
