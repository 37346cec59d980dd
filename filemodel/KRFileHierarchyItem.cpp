#include "filemodel/DesiredDiscName.h"
#include "filemodel/LayoutCreation.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace Tessaron
{

namespace
{

bool isVisible(const KRFileHierarchyItem &item)
{
    return !item.fileReference() || !item.fileReference()->isInvisible();
}

/// True when the links from `node` upwards come to `item`. Links that are out of date may run in a circle: one walker
/// goes at twice the other's pace and meets it there.
bool linksLeadTo(const KRFileHierarchyItem &item, const KRFileHierarchyItem &node)
{
    auto slow = node.parent();
    for (auto fast = slow; fast; slow = slow->parent()) {
        for (int step = 0; step < 2 && fast; ++step) {
            if (fast.get() == &item)
                return true;
            fast = fast->parent();
        }
        if (fast && fast == slow)
            return false;
    }
    return false;
}

/// True when `item` is the node itself or one of those that really hold it; a link to a parent that has given the node
/// up does not count.
bool isWithin(const KRFileHierarchyItem &item, const KRFileHierarchyItem &node)
{
    if (&item == &node)
        return true;
    if (item.items().empty() || !linksLeadTo(item, node))
        return false;
    const KRFileHierarchyItem *child = &node;
    for (auto parent = node.parent(); parent; child = parent.get(), parent = parent->parent()) {
        const auto isChild = [child](const std::shared_ptr<KRFileHierarchyItem> &other) {
            return other.get() == child;
        };
        if (std::ranges::none_of(parent->items(), isChild))
            return false;
        if (parent.get() == &item)
            return true;
    }
    return false;
}

} // namespace

// A million files are a million of these; with the reference count it is 96 bytes.
static_assert(sizeof(KRFileHierarchyItem) <= 80);

std::shared_ptr<KRFileHierarchyItem>
KRFileHierarchyItem::initWithFileReference(std::shared_ptr<KRFileReference> reference)
{
    return std::make_shared<KRFileHierarchyItem>(ConstructionKey(), std::move(reference));
}

std::shared_ptr<KRFileHierarchyItem>
KRFileHierarchyItem::fileHierarchyItemWithFileReference(std::shared_ptr<KRFileReference> reference)
{
    return initWithFileReference(std::move(reference));
}

KRFileHierarchyItem::KRFileHierarchyItem(ConstructionKey, std::shared_ptr<KRFileReference> reference)
    : m_fileReference(std::move(reference))
{
}

KRFileHierarchyItem::~KRFileHierarchyItem()
{
    if (m_creation)
        m_creation->abandon();
    // Items that free their children would need stack for each level of depth; so children without another owner give
    // up theirs here first.
    Items orphans = std::move(m_items);
    while (!orphans.empty()) {
        const std::shared_ptr<KRFileHierarchyItem> item = std::move(orphans.back());
        orphans.pop_back();
        if (item.use_count() == 1 && !item->m_creation) {
            std::ranges::move(item->m_items, std::back_inserter(orphans));
            item->m_items.clear();
        }
    }
}

void KRFileHierarchyItem::setFileReference(std::shared_ptr<KRFileReference> reference)
{
    m_fileReference = std::move(reference);
}

void KRFileHierarchyItem::addItem(const std::shared_ptr<KRFileHierarchyItem> &item)
{
    if (!item || isWithin(*item, *this))
        return;
    item->m_parent = weak_from_this();
    m_items.push_back(item);
}

void KRFileHierarchyItem::insertItem(const std::shared_ptr<KRFileHierarchyItem> &item, std::int64_t atIndex)
{
    if (!item || isWithin(*item, *this))
        return;
    item->m_parent = weak_from_this();
    const auto index = std::clamp<std::int64_t>(atIndex, 0, std::ssize(m_items));
    m_items.insert(m_items.begin() + index, item);
}

void KRFileHierarchyItem::removeItemAtIndex(std::int64_t index)
{
    index = std::max<std::int64_t>(index, 0);
    if (index > std::ssize(m_items))
        return;
    if (index == std::ssize(m_items))
        throw std::out_of_range("no child at this index of a file hierarchy item");
    m_items.erase(m_items.begin() + index);
}

void KRFileHierarchyItem::removeItem(const std::shared_ptr<KRFileHierarchyItem> &item)
{
    if (!item)
        return;
    // The caller's pointer may be one of those removed.
    const std::shared_ptr<KRFileHierarchyItem> removed = item; // NOLINT(performance-unnecessary-copy-initialization)
    std::erase(m_items, removed);
}

std::size_t KRFileHierarchyItem::numberOfVisibleItems() const
{
    std::size_t count = 0;
    for (const auto &item : walk())
        count += item && isVisible(*item) ? 1 : 0;
    return count;
}

KRFileHierarchyItem::Items KRFileHierarchyItem::visibleItems() const
{
    Items result;
    for (const auto &item : walk()) {
        if (item && isVisible(*item))
            result.push_back(item);
    }
    return result;
}

std::shared_ptr<KRFileHierarchyItem> KRFileHierarchyItem::childWithDesiredName(const QString &name) const
{
    if (name.isNull())
        return nullptr;
    for (const auto &item : walk()) {
        KRFileReference *const reference = item ? item->m_fileReference.get() : nullptr;
        if (!reference)
            continue;
        QString discName = desiredDiscNameOrNull(*reference);
        if (discName.isNull())
            discName = reference->name();
        if (discName.isNull())
            discName = reference->displayName();
        if (!discName.isNull() && discName == name)
            return item;
    }
    return nullptr;
}

std::uint64_t KRFileHierarchyItem::contentsPhysicalSize() const
{
    struct OpenItem {
        const KRFileHierarchyItem *item;
        std::uint64_t size;
        std::size_t nextChild = 0;
    };
    const auto ownSize = [](const KRFileHierarchyItem &item) {
        return item.m_fileReference ? item.m_fileReference->physicalSize() : 0;
    };
    // Of items with children, so that one that lies in many places is walked once; 0 while it is being walked, so that
    // one that holds itself, made so through items(), comes to an end.
    std::unordered_map<const KRFileHierarchyItem *, std::uint64_t> sizes{{this, 0}};
    std::vector<OpenItem> open{{this, ownSize(*this)}};
    for (;;) {
        OpenItem &top = open.back();
        if (top.nextChild == top.item->m_items.size()) {
            const std::uint64_t size = top.size;
            sizes[top.item] = size;
            open.pop_back();
            if (open.empty())
                return size;
            open.back().size += size;
            continue;
        }
        const KRFileHierarchyItem *const child = top.item->m_items[top.nextChild++].get();
        if (!child)
            continue;
        if (child->m_items.empty()) {
            top.size += ownSize(*child);
        } else if (const auto [known, isNew] = sizes.try_emplace(child, 0); !isNew) {
            top.size += known->second;
        } else {
            open.push_back({child, ownSize(*child)});
        }
    }
}

} // namespace Tessaron
