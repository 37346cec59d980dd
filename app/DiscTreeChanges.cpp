#include "app/DiscTreeChanges.h"

#include <QSet>

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

void numberFrom(DiscNode &parent, std::size_t first)
{
    for (std::size_t row = first; row < parent.children.size(); ++row)
        parent.children[row]->row = std::uint32_t(row);
}

void addToTotals(DiscNode *from, std::uint64_t bytes, std::uint32_t objects)
{
    for (DiscNode *node = from; node; node = node->parent) {
        node->totalBytes += bytes;
        node->objects += objects;
    }
}

void takeFromTotals(DiscNode *from, std::uint64_t bytes, std::uint32_t objects)
{
    for (DiscNode *node = from; node; node = node->parent) {
        node->totalBytes -= bytes;
        node->objects -= objects;
    }
}

} // namespace

std::vector<RowRun> runsOf(const std::vector<DiscNode *> &nodesInOrder)
{
    std::vector<RowRun> runs;
    for (const DiscNode *const node : nodesInOrder) {
        if (!runs.empty() && runs.back().last + 1 == node->row)
            ++runs.back().last;
        else
            runs.push_back({node->row, node->row});
    }
    return runs;
}

void appendNodes(DiscNode &parent, std::vector<std::unique_ptr<DiscNode>> nodes)
{
    const std::size_t first = parent.children.size();
    std::uint64_t bytes = 0;
    std::uint32_t objects = 0;
    for (std::unique_ptr<DiscNode> &node : nodes) {
        node->parent = &parent;
        bytes += node->totalBytes;
        objects += node->objects;
        parent.item->addItem(node->item);
        parent.children.push_back(std::move(node));
    }
    numberFrom(parent, first);
    addToTotals(&parent, bytes, objects);
}

void takeRun(DiscNode &parent, const RowRun &run, std::vector<std::unique_ptr<DiscNode>> *taken)
{
    const auto begin = parent.children.begin() + run.first;
    const auto end = parent.children.begin() + run.last + 1;
    std::uint64_t bytes = 0;
    std::uint32_t objects = 0;
    for (auto node = begin; node != end; ++node) {
        bytes += (*node)->totalBytes;
        objects += (*node)->objects;
        (*node)->parent = nullptr;
        taken->push_back(std::move(*node));
    }
    parent.children.erase(begin, end);
    KRFileHierarchyItem::Items &items = parent.item->items();
    items.erase(items.begin() + run.first, items.begin() + run.last + 1);
    numberFrom(parent, run.first);
    takeFromTotals(&parent, bytes, objects);
}

void takeScattered(DiscNode &parent, const std::vector<DiscNode *> &nodes,
                   std::vector<std::unique_ptr<DiscNode>> *taken)
{
    const QSet<const DiscNode *> leaving(nodes.begin(), nodes.end());
    std::vector<std::unique_ptr<DiscNode>> staying;
    KRFileHierarchyItem::Items stayingItems;
    for (std::unique_ptr<DiscNode> &child : parent.children) {
        if (!leaving.contains(child.get())) {
            stayingItems.push_back(child->item);
            staying.push_back(std::move(child));
            continue;
        }
        takeFromTotals(&parent, child->totalBytes, child->objects);
        child->parent = nullptr;
        taken->push_back(std::move(child));
    }
    parent.children = std::move(staying);
    parent.item->items() = std::move(stayingItems);
    numberFrom(parent, 0);
}

void applyOrder(DiscNode &parent, const std::vector<std::uint32_t> &order)
{
    if (std::is_sorted(order.begin(), order.end()))
        return;
    std::vector<std::unique_ptr<DiscNode>> sorted;
    sorted.reserve(order.size());
    for (const std::uint32_t row : order)
        sorted.push_back(std::move(parent.children[row]));
    parent.children = std::move(sorted);
    KRFileHierarchyItem::Items &items = parent.item->items();
    for (std::size_t row = 0; row < items.size(); ++row)
        items[row] = parent.children[row]->item;
    numberFrom(parent, 0);
}

} // namespace Tessaron::Desktop
