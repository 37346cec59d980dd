#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// The process-wide table of places: each node is a pair of a parent node and a name, kept once and for ever. A path is
/// a chain of nodes up to the root folder, so that a million files of one folder share the text of its path.
///
/// Nodes and names never move once made: reading one needs no lock. Adding locks one of 64 shards, chosen by parent.
/// A name costs its bytes and 15, its share of the index about 12.
class NodeTable
{
public:
    /// No place.
    static constexpr std::uint32_t none = 0;
    /// The root folder; its name is "/".
    static constexpr std::uint32_t root = 1;
    /// Longest name in bytes that the table takes; file systems stop at 255, some in user space above it.
    static constexpr std::size_t longestName = 4096;

    /// The one table. It outlives every other object of the process.
    static NodeTable &shared();

    /// The node of `name` below `parent`, made when it is new; `none` when the table is full, or when the parent is
    /// unknown or the name is empty or too long. Thread-safe.
    std::uint32_t intern(std::uint32_t parent, std::string_view name);
    /// The same for `count` names of one parent with one locking.
    void intern(std::uint32_t parent, const std::string_view *names, std::size_t count, std::uint32_t *nodes);

    /// The node above; `none` for the root folder and for a number without a node.
    [[nodiscard]] std::uint32_t parentOf(std::uint32_t node) const;
    /// The name, followed by a NUL, in storage that lives as long as the process. Empty for a number without a node.
    [[nodiscard]] std::string_view nameOf(std::uint32_t node) const;

    /// A word that the table keeps for its user with each node; zero at first. See FilePlaces.
    [[nodiscard]] std::uint32_t noteOf(std::uint32_t node) const;
    void setNoteOf(std::uint32_t node, std::uint32_t note);

    /// Number of nodes made so far.
    [[nodiscard]] std::uint32_t count() const { return m_count.load(std::memory_order_relaxed) - 1; }

private:
    struct Node {
        std::uint32_t parent;
        std::uint32_t nameOffset; ///< of a 16-bit length, the bytes and a NUL
        std::atomic<std::uint32_t> note;
    };

    /// An open-addressing index of the nodes whose parents fall into this shard; each slot holds hash and node number,
    /// so that probing and growing seldom look at a node.
    struct alignas(64) Shard {
        std::mutex mutex; ///< guards the members below
        std::vector<std::uint64_t> slots;
        std::size_t used = 0;
        std::uint32_t nameOffset = 0; ///< next free byte of this shard's piece of the name storage
        std::uint32_t nameEnd = 0;
    };

    static constexpr std::uint32_t shardCount = 64;
    static constexpr std::uint32_t nodesPerChunk = 1u << 16;
    static constexpr std::uint32_t chunkCount = 1u << 16;
    static constexpr std::uint32_t nameChunkBytes = 1u << 20;
    static constexpr std::uint32_t nameChunkCount = 1u << 12;
    static constexpr std::uint32_t namePieceBytes = 1u << 14;

    NodeTable();

    [[nodiscard]] Node *nodeAt(std::uint32_t node) const;
    [[nodiscard]] char *nameAt(std::uint32_t offset) const;
    [[nodiscard]] Shard &shardOf(std::uint32_t parent);
    std::uint32_t internLocked(Shard &shard, std::uint32_t parent, std::string_view name);
    std::uint32_t makeNode(Shard &shard, std::uint32_t parent, std::string_view name);
    [[nodiscard]] bool reserveName(Shard &shard, std::size_t bytes);
    static void growIndex(Shard &shard);

    std::array<Shard, shardCount> m_shards;
    std::unique_ptr<std::atomic<Node *>[]> m_chunks;
    std::unique_ptr<std::atomic<char *>[]> m_nameChunks;
    std::atomic<std::uint32_t> m_count = 1; ///< number zero has no node
    std::atomic<std::uint32_t> m_namePieces = 0; ///< pieces of the name storage handed to shards
};

} // namespace Tessaron
