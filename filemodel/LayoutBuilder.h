#pragma once

#include <functional>
#include <memory>
#include <unordered_set>
#include <vector>

namespace Tessaron
{

class DRFSObject;
class DRFolder;
class KRFileHierarchyItem;
struct FSRef;
struct LayoutSource;

/// Builds the objects of a layout from a tree of items, as the files are named on the disk at that time. Works with a
/// stack of its own, so that the depth of a tree is limited by memory alone. What it makes refers to nothing of the
/// items. Used on the worker of a layout creation.
class LayoutBuilder
{
public:
    struct Hooks {
        /// Asked of the topmost item only: before it starts, after each of its direct children, and at its end. A child
        /// that has begun is completed.
        std::function<bool(const KRFileHierarchyItem &)> isCancelled;
        /// Asked at every item; true gives up everything.
        std::function<bool()> isAbandoned;
        /// The amount of a file, in units of 1,048,576 bytes or 0.0001 for one of less than 10,240 bytes.
        std::function<void(double)> willAddFile;
        /// A folder is in the layout without its icon or its Finder flags, since they could not be read.
        std::function<void(const FSRef &, int errnoValue)> noteUnreadable;
        std::function<void()> didAddFile;
    };

    explicit LayoutBuilder(Hooks hooks);

    /// The object for the item, with everything below it; null when it cannot be made or building was cancelled. It is
    /// added to the folder when one is given.
    [[nodiscard]] std::shared_ptr<DRFSObject> build(KRFileHierarchyItem &item, DRFolder *addToFolder) const;

private:
    struct OpenFolder;

    void enter(KRFileHierarchyItem &item, std::vector<OpenFolder> &stack,
               std::unordered_set<const KRFileHierarchyItem *> &open) const;
    static std::shared_ptr<DRFolder> leave(std::vector<OpenFolder> &stack, DRFolder *addToFolder);
    std::shared_ptr<DRFSObject> makeFile(KRFileHierarchyItem &item, LayoutSource &source, DRFolder *addToFolder) const;

    const Hooks m_hooks;
};

} // namespace Tessaron
