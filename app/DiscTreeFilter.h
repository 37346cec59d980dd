#pragma once

#include "app/DiscNode.h"
#include "app/DiscRowLook.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron::Desktop
{

/// Which objects someone wants to see.
enum class DiscSubset : std::uint8_t {
    All,
    Renamed, ///< some filesystem calls them otherwise, or has them otherwise
    Troubled, ///< missing, not readable, or in no filesystem as they stand
    Repeated, ///< files that are on the disc more than once
};

/// The objects of a tree whose names hold a text, and of a kind, in one list.
class DiscTreeFilter
{
public:
    [[nodiscard]] const QString &text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }
    [[nodiscard]] DiscSubset subset() const { return m_subset; }
    void setSubset(DiscSubset subset) { m_subset = subset; }
    [[nodiscard]] bool isOn() const { return !m_text.isEmpty() || m_subset != DiscSubset::All; }

    /// Looks through the tree; has to be called after each change of it or of the text.
    void find(DiscNode &root, const DiscMarks &marks);
    [[nodiscard]] const std::vector<DiscNode *> &matches() const { return m_matches; }
    /// The place of a node among the matches; absent for what does not match.
    [[nodiscard]] std::optional<std::uint32_t> rowOf(const DiscNode &node) const;

private:
    [[nodiscard]] bool isWanted(const DiscNode &node, const DiscMarks &marks) const;
    void keepRepeated();

    QString m_text;
    DiscSubset m_subset = DiscSubset::All;
    std::vector<DiscNode *> m_matches;
    QHash<const DiscNode *, std::uint32_t> m_rows;
};

} // namespace Tessaron::Desktop
