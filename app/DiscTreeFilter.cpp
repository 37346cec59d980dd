#include "app/DiscTreeFilter.h"

#include <algorithm>
#include <utility>

namespace Tessaron::Desktop
{

bool DiscTreeFilter::isWanted(const DiscNode &node, const DiscMarks &marks) const
{
    if (!node.parent || !node.name.contains(m_text, Qt::CaseInsensitive))
        return false;
    const auto mark = marks.constFind(&node);
    const DiscMark::Severity severity = mark == marks.cend() ? DiscMark::Severity::Told : mark->severity;
    switch (m_subset) {
    case DiscSubset::All:
        break;
    case DiscSubset::Renamed:
        return severity == DiscMark::Severity::Changed;
    case DiscSubset::Troubled:
        return node.isMissing || node.isUnreadable || severity == DiscMark::Severity::Lost;
    case DiscSubset::Repeated:
        return node.kind == DiscNodeKind::File && !node.isMissing;
    }
    return true;
}

/// What comes from the same file stands together.
void DiscTreeFilter::keepRepeated()
{
    std::vector<std::pair<QByteArray, DiscNode *>> sources;
    sources.reserve(m_matches.size());
    for (DiscNode *const node : m_matches)
        sources.emplace_back(node->sourcePath(), node);
    std::stable_sort(sources.begin(), sources.end(),
                     [](const auto &one, const auto &other) { return one.first < other.first; });
    m_matches.clear();
    for (std::size_t place = 0; place < sources.size(); ++place) {
        const bool isLikeBefore = place > 0 && sources[place - 1].first == sources[place].first;
        const bool isLikeNext = place + 1 < sources.size() && sources[place + 1].first == sources[place].first;
        if (isLikeBefore || isLikeNext)
            m_matches.push_back(sources[place].second);
    }
}

/// A hundred thousand names take some ten milliseconds.
void DiscTreeFilter::find(DiscNode &root, const DiscMarks &marks)
{
    m_matches.clear();
    m_rows.clear();
    if (!isOn())
        return;
    std::vector<DiscNode *> waiting = {&root};
    while (!waiting.empty()) {
        DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (isWanted(*node, marks))
            m_matches.push_back(node);
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            waiting.push_back(child->get());
    }
    if (m_subset == DiscSubset::Repeated)
        keepRepeated();
    for (std::size_t row = 0; row < m_matches.size(); ++row)
        m_rows.insert(m_matches[row], std::uint32_t(row));
}

std::optional<std::uint32_t> DiscTreeFilter::rowOf(const DiscNode &node) const
{
    const auto found = m_rows.constFind(&node);
    return found == m_rows.cend() ? std::nullopt : std::optional(*found);
}

} // namespace Tessaron::Desktop
