#include "platform/coreservices/FilePlaces.h"

#include "platform/coreservices/NodeTable.h"

#include <QHash>

#include <algorithm>

namespace Tessaron
{

namespace
{

/// A node's note is the index + 1 of the folder last seen there, with this bit set once a file was found to have left
/// the node.
constexpr std::uint32_t movedAwayBit = 1u << 31;

/// Folders that moved below each other's old places could send a look-up in circles.
constexpr int mostRedirections = 64;

} // namespace

FileIdentity identityOf(const FSRef &ref)
{
    return {ref.device, ref.inode, ref.birthTime()};
}

std::size_t FilePlaces::Hash::operator()(const FileIdentity &identity) const
{
    return qHashMulti(0, identity.device, identity.inode, identity.birthTime.seconds);
}

FilePlaces &FilePlaces::shared()
{
    static FilePlaces *const places = new FilePlaces; // never deleted: references may be used until the very end
    return *places;
}

FilePlaces::FilePlaces() = default;

std::uint32_t FilePlaces::currentNode(const FSRef &ref)
{
    if (!m_hasMoves.load(std::memory_order_acquire))
        return ref.node;
    std::uint32_t node = ref.node;
    const std::lock_guard lock(m_mutex);
    if (NodeTable::shared().noteOf(node) & movedAwayBit) {
        const auto move = m_moves.find(identityOf(ref));
        if (move != m_moves.end())
            node = move->second;
    }
    return settle(node);
}

/// Follows the moves of the folders above a node. The caller holds the mutex.
std::uint32_t FilePlaces::settle(std::uint32_t node) const
{
    NodeTable &table = NodeTable::shared();
    std::vector<std::uint32_t> chain;
    for (int redirections = 0; redirections < mostRedirections; ++redirections) {
        chain.clear();
        for (std::uint32_t at = node; at > NodeTable::root; at = table.parentOf(at))
            chain.push_back(at);
        std::size_t index = chain.size();
        std::uint32_t place = NodeTable::none;
        while (index > 1 && place == NodeTable::none)
            place = newPlaceOfFolder(chain[--index]);
        if (place == NodeTable::none)
            return node;
        while (index > 0 && place != NodeTable::none)
            place = table.intern(place, table.nameOf(chain[--index]));
        if (place == NodeTable::none)
            return node;
        node = place;
    }
    return node;
}

/// Where the folder last seen at a node is now; none when it is still there. The caller holds the mutex.
std::uint32_t FilePlaces::newPlaceOfFolder(std::uint32_t node) const
{
    const std::uint32_t note = NodeTable::shared().noteOf(node);
    if (!(note & movedAwayBit) || note == movedAwayBit)
        return NodeTable::none;
    const auto move = m_moves.find(m_folders[(note & ~movedAwayBit) - 1].identity);
    return move == m_moves.end() || move->second == node ? NodeTable::none : move->second;
}

void FilePlaces::noteFolder(std::uint32_t node, const FileIdentity &identity)
{
    const std::lock_guard lock(m_mutex);
    noteFolderLocked(node, identity);
}

void FilePlaces::noteFolderLocked(std::uint32_t node, const FileIdentity &identity)
{
    NodeTable &table = NodeTable::shared();
    const std::uint32_t note = table.noteOf(node);
    const std::uint32_t latest = note & ~movedAwayBit;
    const auto move = m_moves.find(identity);
    if (move != m_moves.end())
        move->second = node;
    if (latest != 0 && m_folders[latest - 1].identity == identity)
        return;
    m_folders.push_back({identity, latest});
    table.setNoteOf(node, (note & movedAwayBit) | static_cast<std::uint32_t>(m_folders.size()));
}

bool FilePlaces::isFolderInDoubt(std::uint32_t node) const
{
    const std::uint32_t note = NodeTable::shared().noteOf(node);
    return note == 0 || (note & movedAwayBit);
}

std::vector<FileIdentity> FilePlaces::foldersAt(std::uint32_t node) const
{
    std::vector<FileIdentity> folders;
    const std::lock_guard lock(m_mutex);
    std::uint32_t at = NodeTable::shared().noteOf(node) & ~movedAwayBit;
    for (; at != 0; at = m_folders[at - 1].previous)
        folders.push_back(m_folders[at - 1].identity);
    return folders;
}

void FilePlaces::noteMove(const FileIdentity &identity, std::uint32_t from, std::uint32_t to, bool isFolder)
{
    NodeTable &table = NodeTable::shared();
    const std::lock_guard lock(m_mutex);
    // A folder is looked for where the folders above it went, so that its own move must be known there, too.
    const std::uint32_t settled = isFolder ? settle(from) : from;
    if (settled != from && settled != to && table.noteOf(settled) == 0)
        noteFolderLocked(settled, identity);
    m_moves[identity] = to;
    for (const std::uint32_t left : {from, settled}) {
        if (left != to)
            table.setNoteOf(left, table.noteOf(left) | movedAwayBit);
    }
    if (isFolder)
        noteFolderLocked(to, identity);
    m_hasMoves.store(true, std::memory_order_release);
}

void FilePlaces::noteSuccessor(const FileIdentity &identity, const FileIdentity &successor)
{
    const std::lock_guard lock(m_mutex);
    m_successors[identity] = successor;
}

bool FilePlaces::isSuccessor(const FileIdentity &identity, const FileIdentity &successor) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_successors.find(identity);
    return found != m_successors.end() && found->second == successor;
}

QByteArray pathOfNode(std::uint32_t node)
{
    const NodeTable &table = NodeTable::shared();
    if (node == NodeTable::root)
        return "/";
    if (table.nameOf(node).empty())
        return {};
    std::size_t length = 0;
    for (std::uint32_t at = node; at > NodeTable::root; at = table.parentOf(at))
        length += table.nameOf(at).size() + 1;
    QByteArray path(static_cast<qsizetype>(length), Qt::Uninitialized);
    char *end = path.data() + length;
    for (std::uint32_t at = node; at > NodeTable::root; at = table.parentOf(at)) {
        const std::string_view name = table.nameOf(at);
        end = std::copy(name.begin(), name.end(), end - name.size()) - name.size();
        *--end = '/';
    }
    return path;
}

std::uint32_t nodeOfPath(QByteArrayView path)
{
    std::uint32_t node = NodeTable::root;
    for (qsizetype start = 1; start < path.size() && node != NodeTable::none;) {
        qsizetype end = path.indexOf('/', start);
        if (end < 0)
            end = path.size();
        const QByteArrayView name = path.sliced(start, end - start);
        node = NodeTable::shared().intern(node, {name.data(), static_cast<std::size_t>(name.size())});
        start = end + 1;
    }
    return node;
}

} // namespace Tessaron
