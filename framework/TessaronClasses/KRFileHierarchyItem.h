#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include <TessaronClasses/UnreadableFolder.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <vector>

namespace Tessaron
{

class DRFSObject;
class DRFolder;
class KRFileHierarchyItem;
class KRFileReference;

/// The callbacks of a layout creation. Every callback comes on the main thread, the last one when the worker has ended;
/// none comes once `context` is gone. The item is alive during the call, also when the callback drops the last pointer
/// to it.
///
/// A record without any callback stands for no target.
struct KRFileHierarchyItemLayoutTarget {
    CallbackContext context;
    /// After each file that was put into the layout. The progress lies between 0 and 1, but does not reach 1: it is the
    /// amount done in units of 1,048,576 bytes divided by the total in bytes.
    std::function<void(KRFileHierarchyItem &, float)> KRFileHierarchyItemDRLayoutCreationProgress;
    /// Once, at the end of a run that was not cancelled, with the root: a DRFolder, or a DRFile where the item is a
    /// file; null when nothing could be made, and when memory ran out (see KRFileHierarchyItem::unreadableFolders()).
    /// The target shares ownership of it and may keep it; it refers to nothing of the item tree.
    std::function<void(KRFileHierarchyItem &, const std::shared_ptr<DRFSObject> &)>
        KRFileHierarchyItemDRLayoutCreationFinished;
    /// Once, at the end of a cancelled run.
    std::function<void(KRFileHierarchyItem &)> KRFileHierarchyItemDRLayoutCreationDidCancel;
};

/// One node of the tree of files that is to become a disc: a file reference and the children in display order. A node
/// for a file simply has no children. A parent owns its children; the link back is weak.
///
/// Not thread-safe. A tree belongs to one thread at a time; while a layout is being created from it, it must not be
/// changed. A million files are a million nodes: what only the root of a running layout creation needs is kept apart.
class TESSARON_EXPORT KRFileHierarchyItem : public std::enable_shared_from_this<KRFileHierarchyItem>
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    using Items = std::vector<std::shared_ptr<KRFileHierarchyItem>>;
    class Walk;

    /// A node around the reference (null gives a node without one) with no children.
    [[nodiscard]] static std::shared_ptr<KRFileHierarchyItem>
    initWithFileReference(std::shared_ptr<KRFileReference> reference);
    /// The same.
    [[nodiscard]] static std::shared_ptr<KRFileHierarchyItem>
    fileHierarchyItemWithFileReference(std::shared_ptr<KRFileReference> reference);

    /// For the factories only.
    KRFileHierarchyItem(ConstructionKey, std::shared_ptr<KRFileReference> reference);
    /// Cancels a running layout creation and waits for its worker; no callback follows. Frees trees of any depth.
    ~KRFileHierarchyItem();
    KRFileHierarchyItem(const KRFileHierarchyItem &) = delete;
    KRFileHierarchyItem &operator=(const KRFileHierarchyItem &) = delete;

    /// The node's file; may be null.
    [[nodiscard]] const std::shared_ptr<KRFileReference> &fileReference() const { return m_fileReference; }
    void setFileReference(std::shared_ptr<KRFileReference> reference);

    /// The item that this one was last added to; null for a root and once that item is gone. Removing a child does not
    /// clear its link.
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> parent() const { return m_parent.lock(); }
    void setParent(const std::shared_ptr<KRFileHierarchyItem> &parent) { m_parent = parent; }

    /// The children themselves, not a copy: changes made here change the tree. Code that adds a child here must also
    /// set its parent.
    [[nodiscard]] Items &items() { return m_items; }
    [[nodiscard]] const Items &items() const { return m_items; }
    [[nodiscard]] std::size_t numberOfItems() const { return m_items.size(); }

    /// The children for a loop that notices when children are added, removed or exchanged under it: taking the next
    /// child, or the end of the loop, then raises std::logic_error. All children that were there at its start stay
    /// alive until the loop's end.
    [[nodiscard]] Walk walk() const;

    /// Sets the child's parent to this item and appends it. Ignored for null and for an item that is this one or holds
    /// it; insertItem() ignores the same.
    void addItem(const std::shared_ptr<KRFileHierarchyItem> &item);
    /// Sets the child's parent and inserts it. A negative index counts as 0, one beyond the count as the count.
    void insertItem(const std::shared_ptr<KRFileHierarchyItem> &item, std::int64_t atIndex);
    /// A negative index counts as 0; one greater than the count is ignored. An index that is the count itself, and so
    /// names no child, raises std::out_of_range.
    void removeItemAtIndex(std::int64_t index);
    /// Removes every occurrence of the child.
    void removeItem(const std::shared_ptr<KRFileHierarchyItem> &item);

    /// Counts the children that the file manager does not hide; a child without a file reference counts, too.
    [[nodiscard]] std::size_t numberOfVisibleItems() const;
    /// A new array of those children, in order.
    [[nodiscard]] Items visibleItems() const;

    /// The first child whose name on the disc is exactly `name` (case matters), or null. A child's disc name is its
    /// desired name with the extension appended where it is hidden, else its name, else its display name. Children
    /// without a reference are skipped. Ask here before adding or renaming, to refuse a name that is taken.
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> childWithDesiredName(const QString &name) const;

    /// Size of the whole subtree as it lies on disk: allocated bytes of all forks of all files. Folders count 0.
    [[nodiscard]] std::uint64_t contentsPhysicalSize() const;

    /// Starts building a layout of this subtree on a worker thread. False, and nothing started, when a creation is
    /// already running on this item, or the target lacks one of the progress and finished callbacks or its context is
    /// gone. On the main thread.
    [[nodiscard]] bool createDRLayoutAsyncNotifyProgressToTarget(const KRFileHierarchyItemLayoutTarget &target);

    /// Asks the running creation to stop and sends further callbacks to `target`. True when a worker was there to be
    /// cancelled. The direct child of this item that is being built is completed first; a creation that had just ended
    /// still reports that it finished. On the main thread.
    bool cancelDRLayoutCreationNotifyTarget(const KRFileHierarchyItemLayoutTarget &target);

    /// What the last layout creation on this item could not read, in the order met: folders that are in the layout
    /// without their icon or Finder flags; when memory ran out, this item alone with ENOMEM. For the final callbacks
    /// and after them, until the next creation starts; empty while one runs. On the main thread.
    [[nodiscard]] std::vector<UnreadableFolder> unreadableFolders() const;

private:
    struct LayoutCreation; ///< the state of a running creation and the results of the last one

    [[nodiscard]] bool isCreatingLayout() const;
    void _beginLayoutCreationOnThread();
    std::shared_ptr<DRFSObject> _createDRLayoutForItem(KRFileHierarchyItem *item, DRFolder *addToFolder,
                                                       KRFileHierarchyItem &masterOfAll);
    void _increaseCurrentDRSizeBy(double amount);
    [[nodiscard]] float _drprogressPercent() const;
    void _notifyTargetOfProgress(float progress);
    void _notifyTargetWeAreFinished(const std::shared_ptr<DRFSObject> &root);
    void _notifyTargetWeCanceled();
    std::shared_ptr<const KRFileHierarchyItemLayoutTarget> endLayoutCreation();

    std::shared_ptr<KRFileReference> m_fileReference;
    Items m_items;
    std::weak_ptr<KRFileHierarchyItem> m_parent;
    std::unique_ptr<LayoutCreation> m_creation;
};

/// A loop over the children of one item; see KRFileHierarchyItem::walk(). Must not outlive the item.
class KRFileHierarchyItem::Walk
{
public:
    class Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::shared_ptr<KRFileHierarchyItem>;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type *;
        using reference = const value_type &;

        Iterator(const Walk &walk, std::size_t index)
            : m_walk(&walk)
            , m_index(index)
        {
        }

        reference operator*() const
        {
            m_walk->throwIfChangedAt(m_index);
            return m_walk->m_atStart[m_index];
        }
        Iterator &operator++()
        {
            m_walk->throwIfChangedAt(m_index);
            if (++m_index == m_walk->m_atStart.size())
                m_walk->throwIfChanged();
            return *this;
        }
        friend bool operator==(const Iterator &one, const Iterator &other) { return one.m_index == other.m_index; }

    private:
        const Walk *m_walk;
        std::size_t m_index;
    };

    explicit Walk(const Items &items)
        : m_items(items)
        , m_atStart(items)
    {
    }
    [[nodiscard]] Iterator begin() const { return Iterator(*this, 0); }
    [[nodiscard]] Iterator end() const { return Iterator(*this, m_atStart.size()); }

private:
    void throwIfChangedAt(std::size_t index) const
    {
        if (m_items.size() != m_atStart.size() || m_items[index] != m_atStart[index])
            throw std::logic_error("the children of a file hierarchy item were changed during a walk");
    }
    void throwIfChanged() const
    {
        for (std::size_t index = 0; index < m_atStart.size(); ++index)
            throwIfChangedAt(index);
    }

    const Items &m_items;
    const Items m_atStart; ///< held, or a child that is freed could leave its address to the one that replaces it
};

inline KRFileHierarchyItem::Walk KRFileHierarchyItem::walk() const
{
    return Walk(m_items);
}

} // namespace Tessaron
