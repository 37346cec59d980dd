#include "platform/coreservices/NodeTable.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Tessaron
{

namespace
{

/// Bytes around a name: its length before it, a NUL behind it.
constexpr std::size_t nameOverhead = sizeof(std::uint16_t) + 1;

__extension__ using Product = unsigned __int128;

std::uint64_t mixed(std::uint64_t one, std::uint64_t other)
{
    const Product product = Product(one) * other;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Differs from process to process, so that a folder whose names all collide cannot be made.
std::uint64_t hashSeed()
{
    static const std::uint64_t seed = QRandomGenerator::system()->generate64() | 1;
    return seed;
}

/// Names are short: eight bytes at a time through one multiplication each, three times as fast as qHashBits() here.
std::uint32_t hashOf(std::uint32_t parent, std::string_view name)
{
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15u;
    const std::uint64_t seed = hashSeed();
    std::uint64_t hash = mixed(parent ^ spread, seed ^ name.size());
    const char *at = name.data();
    std::size_t left = name.size();
    std::uint64_t word = 0;
    for (; left >= sizeof word; at += sizeof word, left -= sizeof word) {
        std::memcpy(&word, at, sizeof word);
        hash = mixed(hash ^ word, seed);
    }
    word = 0;
    std::memcpy(&word, at, left);
    hash = mixed(hash ^ word, seed ^ spread);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

std::uint64_t slotFor(std::uint32_t hash, std::uint32_t node)
{
    return (std::uint64_t(hash) << 32) | node;
}

/// Spreads a 32-bit hash over any number of slots without a division.
std::size_t firstSlot(std::uint32_t hash, std::size_t slots)
{
    return std::size_t((std::uint64_t(hash) * slots) >> 32);
}

/// Storage at `index`, made of zeroed pages by the first thread that needs it. Chunks live as long as the process.
template <typename Item>
Item *chunkAt(std::atomic<Item *> *chunks, std::size_t index, std::size_t items)
{
    Item *chunk = chunks[index].load(std::memory_order_acquire);
    if (chunk)
        return chunk;
    auto *const fresh = static_cast<Item *>(std::calloc(items, sizeof(Item)));
    if (!fresh)
        return nullptr;
    if (chunks[index].compare_exchange_strong(chunk, fresh, std::memory_order_acq_rel))
        return fresh;
    std::free(fresh);
    return chunk;
}

} // namespace

NodeTable &NodeTable::shared()
{
    static NodeTable *const table = new NodeTable; // never deleted: references may be used until the very end
    return *table;
}

NodeTable::NodeTable()
    : m_chunks(std::make_unique<std::atomic<Node *>[]>(chunkCount))
    , m_nameChunks(std::make_unique<std::atomic<char *>[]>(nameChunkCount))
{
    Shard &shard = shardOf(none);
    const std::lock_guard lock(shard.mutex);
    internLocked(shard, none, "/");
}

NodeTable::Node *NodeTable::nodeAt(std::uint32_t node) const
{
    if (node == none || node >= m_count.load(std::memory_order_relaxed))
        return nullptr;
    Node *const chunk = m_chunks[node / nodesPerChunk].load(std::memory_order_acquire);
    return chunk ? chunk + node % nodesPerChunk : nullptr;
}

char *NodeTable::nameAt(std::uint32_t offset) const
{
    return m_nameChunks[offset / nameChunkBytes].load(std::memory_order_acquire) + offset % nameChunkBytes;
}

NodeTable::Shard &NodeTable::shardOf(std::uint32_t parent)
{
    return m_shards[(parent * 0x9E3779B1u) >> 26];
}

std::uint32_t NodeTable::intern(std::uint32_t parent, std::string_view name)
{
    std::uint32_t node = none;
    intern(parent, &name, 1, &node);
    return node;
}

void NodeTable::intern(std::uint32_t parent, const std::string_view *names, std::size_t count, std::uint32_t *nodes)
{
    if (!nodeAt(parent)) {
        std::fill_n(nodes, count, none);
        return;
    }
    Shard &shard = shardOf(parent);
    const std::lock_guard lock(shard.mutex);
    for (std::size_t index = 0; index < count; ++index)
        nodes[index] = internLocked(shard, parent, names[index]);
}

std::uint32_t NodeTable::internLocked(Shard &shard, std::uint32_t parent, std::string_view name)
{
    if (name.empty() || name.size() > longestName)
        return none;
    if (shard.used * 5 >= shard.slots.size() * 4)
        growIndex(shard);
    const std::uint32_t hash = hashOf(parent, name);
    std::size_t at = firstSlot(hash, shard.slots.size());
    for (; shard.slots[at] != 0; at = at + 1 < shard.slots.size() ? at + 1 : 0) {
        if (shard.slots[at] >> 32 != hash)
            continue;
        const auto node = static_cast<std::uint32_t>(shard.slots[at]);
        if (nodeAt(node)->parent == parent && nameOf(node) == name)
            return node;
    }
    const std::uint32_t node = makeNode(shard, parent, name);
    if (node != none) {
        shard.slots[at] = slotFor(hash, node);
        ++shard.used;
    }
    return node;
}

std::uint32_t NodeTable::makeNode(Shard &shard, std::uint32_t parent, std::string_view name)
{
    if (!reserveName(shard, name.size() + nameOverhead))
        return none;
    std::uint32_t number = m_count.load(std::memory_order_relaxed);
    do {
        if (number == UINT32_MAX)
            return none;
    } while (!m_count.compare_exchange_weak(number, number + 1, std::memory_order_relaxed));
    Node *const chunk = chunkAt(m_chunks.get(), number / nodesPerChunk, nodesPerChunk);
    if (!chunk)
        return none;

    char *const to = nameAt(shard.nameOffset);
    const auto length = static_cast<std::uint16_t>(name.size());
    std::memcpy(to, &length, sizeof length);
    std::memcpy(to + sizeof length, name.data(), name.size());
    to[sizeof length + name.size()] = '\0';

    Node &node = chunk[number % nodesPerChunk];
    node.parent = parent;
    node.nameOffset = shard.nameOffset;
    shard.nameOffset += static_cast<std::uint32_t>(name.size() + nameOverhead);
    return number;
}

/// Shards take pieces of the name storage, so that they do not wait for each other at every name.
bool NodeTable::reserveName(Shard &shard, std::size_t bytes)
{
    if (shard.nameEnd - shard.nameOffset >= bytes)
        return true;
    constexpr std::uint32_t pieces = std::uint32_t(std::uint64_t(nameChunkBytes) * nameChunkCount / namePieceBytes);
    std::uint32_t piece = m_namePieces.load(std::memory_order_relaxed);
    do {
        if (piece == pieces)
            return false;
    } while (!m_namePieces.compare_exchange_weak(piece, piece + 1, std::memory_order_relaxed));
    // The last piece is given up for its end would not fit in 32 bits.
    if (piece == pieces - 1 || !chunkAt(m_nameChunks.get(), piece / (nameChunkBytes / namePieceBytes), nameChunkBytes))
        return false;
    shard.nameOffset = piece * namePieceBytes;
    shard.nameEnd = shard.nameOffset + namePieceBytes;
    return true;
}

/// Grows by half: with a load between 0.53 and 0.8 an entry costs 10 to 15 bytes.
void NodeTable::growIndex(Shard &shard)
{
    std::vector<std::uint64_t> bigger(std::max<std::size_t>(16, shard.slots.size() + shard.slots.size() / 2));
    for (const std::uint64_t slot : shard.slots) {
        if (slot == 0)
            continue;
        std::size_t at = firstSlot(static_cast<std::uint32_t>(slot >> 32), bigger.size());
        while (bigger[at] != 0)
            at = at + 1 < bigger.size() ? at + 1 : 0;
        bigger[at] = slot;
    }
    shard.slots.swap(bigger);
}

std::uint32_t NodeTable::parentOf(std::uint32_t node) const
{
    const Node *const at = nodeAt(node);
    return at ? at->parent : none;
}

std::string_view NodeTable::nameOf(std::uint32_t node) const
{
    const Node *const at = nodeAt(node);
    if (!at)
        return {};
    const char *const from = nameAt(at->nameOffset);
    std::uint16_t length = 0;
    std::memcpy(&length, from, sizeof length);
    return {from + sizeof length, length};
}

std::uint32_t NodeTable::noteOf(std::uint32_t node) const
{
    const Node *const at = nodeAt(node);
    return at ? at->note.load(std::memory_order_acquire) : 0;
}

void NodeTable::setNoteOf(std::uint32_t node, std::uint32_t note)
{
    if (Node *const at = nodeAt(node))
        at->note.store(note, std::memory_order_release);
}

} // namespace Tessaron
