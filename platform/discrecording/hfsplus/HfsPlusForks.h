#pragma once

#include "platform/coreservices/ForkAttributes.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/hfsplus/HfsPlusTree.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

/// A fork whose bytes the volume stores itself: no other filesystem of the disc has them.
struct HfsPlusFork {
    NodeIndex node = 0;
    std::uint32_t firstBlock = 0; ///< within the region of its kind
    std::uint32_t length = 0; ///< bytes
};

/// Forks of one kind, one behind the other in blocks of their own.
class HfsPlusForkList
{
public:
    /// Nodes must come in ascending order.
    void add(NodeIndex node, std::uint32_t length);
    /// Null when the object has no such fork.
    [[nodiscard]] const HfsPlusFork *forkOf(NodeIndex node) const;
    [[nodiscard]] std::uint32_t blockCount() const { return m_blockCount; }
    /// The forks that have any of the blocks.
    [[nodiscard]] std::span<const HfsPlusFork> forksIn(std::uint32_t firstBlock, std::uint32_t endBlock) const;
    void finish() { m_forks.shrink_to_fit(); }

private:
    std::vector<HfsPlusFork> m_forks;
    std::uint32_t m_blockCount = 0;
};

/// What the volume says of objects beyond what every filesystem says: Finder information, resource forks, and the
/// targets of symbolic links, which are contents here. Constant after gather().
class HfsPlusForks
{
public:
    /// The tree must outlive this.
    explicit HfsPlusForks(const HfsPlusTree &tree);

    /// Looks at the sources of the objects that the tree holds, without opening a file. False when cancelled.
    [[nodiscard]] bool gather(const PlanProgress &progress);

    [[nodiscard]] const HfsPlusForkList &linkTargets() const { return m_linkTargets; }
    [[nodiscard]] const HfsPlusForkList &resourceForks() const { return m_resourceForks; }

    /// The source's Finder information with the flags that the layout sets.
    [[nodiscard]] FinderInfoBytes finderInfo(NodeIndex node) const;

    /// Fills blocks of the link targets from `firstBlock` on. `out` holds zeros.
    void fillLinkTargets(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;
    /// The same for resource forks, which are read from disk; an error names a file whose fork was changed.
    [[nodiscard]] NSError fillResourceForks(std::uint32_t firstBlock, std::span<std::uint8_t> out) const;

private:
    void look(NodeIndex node, class SourceFolder &folder);

    const HfsPlusTree &m_tree;
    std::vector<bool> m_keepsAttributes; ///< by number of the source's device
    int m_vainLists = 0; ///< lists of attributes without Finder information or a resource fork
    std::vector<std::pair<NodeIndex, FinderInfoBytes>> m_finderInfo; ///< ordered by node; what is all zero is left out
    HfsPlusForkList m_linkTargets;
    HfsPlusForkList m_resourceForks;
};

} // namespace Tessaron
