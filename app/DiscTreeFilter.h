#pragma once

#include "app/DiscNode.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron::Desktop
{

/// The objects of a tree whose names hold a text, in one list.
class DiscTreeFilter
{
public:
    [[nodiscard]] const QString &text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }
    [[nodiscard]] bool isOn() const { return !m_text.isEmpty(); }

    /// Looks through the tree; has to be called after each change of it or of the text.
    void find(DiscNode &root);
    [[nodiscard]] const std::vector<DiscNode *> &matches() const { return m_matches; }
    /// The place of a node among the matches; absent for what does not match.
    [[nodiscard]] std::optional<std::uint32_t> rowOf(const DiscNode &node) const;

private:
    QString m_text;
    std::vector<DiscNode *> m_matches;
    QHash<const DiscNode *, std::uint32_t> m_rows;
};

} // namespace Tessaron::Desktop
