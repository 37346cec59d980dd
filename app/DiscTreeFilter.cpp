#include "app/DiscTreeFilter.h"

namespace Tessaron::Desktop
{

/// A hundred thousand names take some ten milliseconds.
void DiscTreeFilter::find(DiscNode &root)
{
    m_matches.clear();
    m_rows.clear();
    if (!isOn())
        return;
    std::vector<DiscNode *> waiting = {&root};
    while (!waiting.empty()) {
        DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (node->parent && node->name.contains(m_text, Qt::CaseInsensitive)) {
            m_rows.insert(node, std::uint32_t(m_matches.size()));
            m_matches.push_back(node);
        }
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            waiting.push_back(child->get());
    }
}

std::optional<std::uint32_t> DiscTreeFilter::rowOf(const DiscNode &node) const
{
    const auto found = m_rows.constFind(&node);
    return found == m_rows.cend() ? std::nullopt : std::optional(*found);
}

} // namespace Tessaron::Desktop
