#include "platform/discrecording/content/ContentTreeBuilder.h"

#include <algorithm>
#include <bit>
#include <map>

namespace Tessaron
{

namespace
{

/// Spreads the bits of a number (the finalizer of a multiplicative hash): inodes of one folder are neighbours.
std::uint64_t mixed(std::uint64_t value)
{
    value ^= value >> 32;
    value *= 0x9E3779B97F4A7C15u;
    return value ^ (value >> 29);
}

bool isStoredFile(const ContentNode &content)
{
    const bool isEmptyOnDisc = content.has(ContentNode::LiesOnDisc) && content.fileSize() == 0; // which lies nowhere
    return content.isFile() && !content.has(ContentNode::HasContentsInMemory) && !isEmptyOnDisc;
}

} // namespace

void findSharedContents(ContentTree &tree)
{
    const std::uint32_t count = tree.nodes.size();
    // Open addressing with node numbers alone: 0, the root, is not a file and marks a free place.
    std::vector<NodeIndex> table(std::bit_ceil(std::max<std::uint64_t>(count, 8) * 3 / 2), 0);
    const std::size_t mask = table.size() - 1;
    std::map<NodeIndex, std::uint32_t> sharers;
    for (NodeIndex node = 1; node < count; ++node) {
        ContentNode &content = tree.nodes[node];
        if (!isStoredFile(content))
            continue;
        std::size_t place = mixed(content.inode ^ (std::uint64_t{content.device} << 48u)) & mask;
        for (; table[place] != 0; place = (place + 1) & mask) {
            ContentNode &other = tree.nodes[table[place]];
            // One that changed while the sources were looked at is two files: writing notices which of them is true.
            if (other.inode != content.inode || other.device != content.device
                || other.fileSize() != content.fileSize())
                continue;
            content.setContentsOwner(table[place]);
            content.flags |= ContentNode::SharesContents;
            other.flags |= ContentNode::SharesContents;
            ++sharers.try_emplace(table[place], 1).first->second;
            break;
        }
        if (table[place] == 0)
            table[place] = node;
    }
    tree.sharerCounts.assign(sharers.begin(), sharers.end());
}

} // namespace Tessaron
