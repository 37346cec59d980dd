#pragma once

#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace Tessaron
{

/// Reads all of a B-tree file of an HFS+ volume, level by level, and holds its nodes against one another and against
/// its header (HFS Plus Volume Format, "B-Trees"): counts, levels, links in both directions, order of the keys, the
/// keys of the index, the map of nodes. Memory is in proportion to the nodes.
class HfsPlusTreeCheck
{
public:
    struct Traits {
        std::vector<VolumeExtent> extents; ///< of the file, in order
        std::size_t shortestKey = 0; ///< bytes, without the length
        /// Chosen by the kind of comparison that the header names.
        std::function<HfsPlusBTreeWalker::Order(std::uint8_t compareType)> orderFor;
        /// Told each record of the leaves in order: key without its length, data, and the place in the image.
        std::function<void(HfsPlusBytes key, HfsPlusBytes data, std::uint64_t offset)> record;
        QString name; ///< of the structure in messages: "catalog"
    };

    HfsPlusTreeCheck(const DiscImageSource &source, Traits traits, const VolumeProblems &problems);

    /// False when the tree could not be read to its end.
    [[nodiscard]] bool run();

private:
    struct Header {
        std::uint16_t depth = 0;
        std::uint32_t root = 0;
        std::uint32_t leafRecords = 0;
        std::uint32_t firstLeaf = 0;
        std::uint32_t lastLeaf = 0;
        std::uint32_t nodeSize = 0;
        std::uint16_t longestKey = 0;
        std::uint32_t nodeCount = 0;
        std::uint32_t freeNodes = 0;
        std::uint8_t compareType = 0;
        std::uint32_t attributes = 0;
    };
    /// A node as the level above knows it.
    struct Expected {
        std::uint32_t number = 0;
        std::uint64_t keyHash = 0; ///< of its first key; 0 for the root
    };

    [[nodiscard]] bool readBytes(std::uint64_t at, std::uint8_t *to, std::size_t length) const;
    [[nodiscard]] std::size_t extentAt(std::uint64_t at) const;
    [[nodiscard]] std::uint64_t imageOffset(std::uint64_t at) const;
    [[nodiscard]] bool readHeader();
    [[nodiscard]] bool checkHeader() const;
    /// Looks at the nodes of a level, whose numbers are known, and collects those of the next.
    [[nodiscard]] bool checkLevel(std::uint16_t height, const std::vector<Expected> &nodes,
                                  std::vector<Expected> *below);
    [[nodiscard]] bool checkNodeHead(std::uint16_t height, const std::vector<Expected> &nodes, std::size_t index);
    [[nodiscard]] bool checkRecords(std::uint16_t height, const Expected &expected, std::vector<Expected> *below);
    [[nodiscard]] bool splitRecord(std::size_t index, bool isLeaf, HfsPlusBytes *key, HfsPlusBytes *data) const;
    void checkMap();
    [[nodiscard]] bool takeNode(std::uint32_t number);
    void damaged(std::uint64_t offset, const QString &message) const;
    void unnoticed(std::uint64_t offset, const QString &message) const;
    [[nodiscard]] std::uint64_t nodeOffset() const { return imageOffset(std::uint64_t(m_number) * m_header.nodeSize); }

    const DiscImageSource &m_source;
    const Traits m_traits;
    const VolumeProblems &m_problems;
    HfsPlusBTreeWalker::Order m_order;
    Header m_header;
    std::vector<std::uint64_t> m_starts; ///< of the extents, in the file
    std::uint64_t m_fileLength = 0; ///< bytes
    std::vector<std::uint8_t> m_headerNode;
    std::vector<std::uint8_t> m_node; ///< the one that is looked at
    std::uint32_t m_number = 0; ///< its number
    std::vector<std::uint8_t> m_lastKey; ///< of its level
    std::vector<bool> m_isUsed; ///< by number of the node
    std::uint64_t m_leafRecords = 0;
};

} // namespace Tessaron
