#include "app/DiscTreeOrder.h"

#include "app/DiscRowLook.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <numeric>

namespace Tessaron::Desktop
{

/// Keys of names are made once for each: a comparison by the rules of a language costs ten times as much as one of
/// keys.
std::vector<std::uint32_t> DiscTreeOrder::of(const std::vector<std::unique_ptr<DiscNode>> &nodes) const
{
    std::vector<std::uint32_t> rows(nodes.size());
    std::iota(rows.begin(), rows.end(), 0u);
    std::vector<QCollatorSortKey> keys;
    // The rules of no language know neither upper and lower case nor numbers.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    keys.reserve(nodes.size());
    for (const std::unique_ptr<DiscNode> &node : nodes)
        keys.push_back(collator.sortKey(m_column == DiscTreeModel::Kind ? m_look.kindText(*node) : node->name));
    const auto compare = [&](std::uint32_t one, std::uint32_t other) {
        const DiscNode &left = *nodes[one];
        const DiscNode &right = *nodes[other];
        if (left.isFolder() != right.isFolder())
            return left.isFolder() ? -1 : 1;
        if (m_column == DiscTreeModel::Size && left.totalBytes != right.totalBytes)
            return left.totalBytes < right.totalBytes ? -1 : 1;
        if (m_column == DiscTreeModel::Modified && left.modified != right.modified)
            return left.modified < right.modified ? -1 : 1;
        const int byKey = keys[one].compare(keys[other]);
        return byKey != 0 ? byKey : QString::compare(left.name, right.name);
    };
    const bool isAscending = m_direction == Qt::AscendingOrder;
    std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t one, std::uint32_t other) {
        return isAscending ? compare(one, other) < 0 : compare(other, one) < 0;
    });
    return rows;
}

} // namespace Tessaron::Desktop
