#include "platform/discrecording/iso9660/RelocatedFolders.h"

#include <algorithm>

namespace Tessaron
{

void RelocatedFolders::find(const ContentTree &tree, DRFilesystemMask filesystem)
{
    if (tree.relocationFolder == 0)
        return;
    constexpr std::uint8_t levelInRelocationFolder = 3;
    std::vector<std::uint8_t> levels(tree.folderCount, 1); // by number of the folder
    for (NodeIndex node = 1; node < tree.nodes.size(); ++node) {
        const ContentNode &content = tree.nodes[node];
        if (!content.isFolder() || (content.filesystems() & filesystem) == 0)
            continue;
        std::uint8_t &level = levels[content.folderNumber()];
        level = static_cast<std::uint8_t>(levels[tree.nodes[content.parent].folderNumber()] + 1);
        if (level > deepestLevel) {
            m_nodes.push_back(node);
            level = levelInRelocationFolder;
        }
    }
}

bool RelocatedFolders::isAmong(NodeIndex folder) const
{
    return std::binary_search(m_nodes.begin(), m_nodes.end(), folder);
}

} // namespace Tessaron
