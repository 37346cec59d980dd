#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <vector>

namespace Tessaron
{

/// The folders that lie too deep for ECMA-119 (6.8.2.1) where they belong. They are recorded in the relocation folder
/// of the root, and a record in their place leads there (IEEE P1282 4.1.5). Constant after find().
class RelocatedFolders
{
public:
    /// Levels that the standard allows; the root is the first one.
    static constexpr std::uint32_t deepestLevel = 8;

    /// Finds those of the filesystem; none when the tree has no relocation folder.
    void find(const ContentTree &tree, DRFilesystemMask filesystem);

    [[nodiscard]] bool contains(NodeIndex folder) const { return !m_nodes.empty() && isAmong(folder); }
    /// In the order of the tree.
    [[nodiscard]] const std::vector<NodeIndex> &nodes() const { return m_nodes; }

private:
    [[nodiscard]] bool isAmong(NodeIndex folder) const;

    std::vector<NodeIndex> m_nodes;
};

} // namespace Tessaron
