#pragma once

#include <TessaronClasses/KRFileHierarchyItem.h>

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron::Desktop
{

/// What an object of the disc is made from.
enum class DiscNodeKind : std::uint8_t {
    File,
    Folder, ///< of a disk; its content on the disc is that of the tree
    VirtualFolder, ///< made here
    SymbolicLink,
    Other, ///< a device, a pipe, a socket
};

/// A row of the disc's tree: an item of the framework, and beside it all that a view asks for, so that showing it never
/// asks the system for anything. A parent owns its children; `children` and the items' own lists always hold the same
/// in the same order. On the main thread, once describedTree() has handed it over.
///
/// With its item and reference about half a kilobyte; a million files are a million of these.
struct DiscNode {
    /// What a project knew of a file that is missing: kept for the next saving, and shown.
    struct LostSource {
        QByteArray path;
        QByteArray alias;
    };

    DiscNode() = default;
    /// Frees trees of any depth.
    ~DiscNode();
    DiscNode(const DiscNode &) = delete;
    DiscNode &operator=(const DiscNode &) = delete;

    std::shared_ptr<KRFileHierarchyItem> item; ///< never null
    DiscNode *parent = nullptr; ///< null for the root and for what has been taken out
    std::vector<std::unique_ptr<DiscNode>> children;
    std::shared_ptr<const LostSource> lost; ///< null unless it is missing since a project was opened
    QString name; ///< on the disc
    std::uint64_t size = 0; ///< bytes of a file's contents
    std::uint64_t totalBytes = 0; ///< of all contents below and here, in whole blocks of the disc
    std::int64_t modified = 0; ///< seconds since 1970
    std::uint32_t objects = 1; ///< this one and all below
    std::uint32_t row = 0; ///< place among the parent's children
    DiscNodeKind kind = DiscNodeKind::File;
    bool isMissing = false; ///< nothing is at its place any more
    bool isUnreadable = false; ///< the user may not read it
    bool hasUndecodableName = false; ///< the name holds bytes that are not text

    [[nodiscard]] bool isFolder() const { return kind == DiscNodeKind::Folder || kind == DiscNodeKind::VirtualFolder; }
    /// True for `other` itself and for what lies below it.
    [[nodiscard]] bool isInside(const DiscNode &other) const;
    /// The child of this very name, or null. Takes time for each child.
    [[nodiscard]] DiscNode *child(const QString &wanted) const;
    /// From the disc's root, such as "/folder/file"; "/" for the root.
    [[nodiscard]] QString discPath() const;
    /// Where its file is or was, as last known; empty for a folder made here. Does not touch the disk.
    [[nodiscard]] QByteArray sourcePath() const;
    /// The name as people may see it.
    [[nodiscard]] QString shownName() const;
};

/// Nodes for a tree of items, which it takes over: looks at each file once. Touches the disk, so it is not for the main
/// thread. `looked` counts the objects looked at. Null after a stop.
[[nodiscard]] std::unique_ptr<DiscNode> describedTree(const std::shared_ptr<KRFileHierarchyItem> &root,
                                                      const std::stop_token &stop, std::atomic<std::uint64_t> *looked);

/// The name that an item has on the disc. Does not touch the disk.
[[nodiscard]] QString nameOnDisc(const KRFileHierarchyItem &item);

/// Fills in what the disk says of the node's own file, anew. Touches the disk.
void describeNode(DiscNode &node);

/// Adds up what the whole tree takes, anew, and numbers its rows.
void addUpTree(DiscNode &root);

/// A folder that exists on the disc alone.
[[nodiscard]] std::unique_ptr<DiscNode> virtualFolderNode(const QString &name);

/// A tree of the same files, names and options for a job of its own: the disc may be changed meanwhile. The names on
/// the disc are exactly those of the nodes. Does not touch the disk.
[[nodiscard]] std::shared_ptr<KRFileHierarchyItem> copyForJob(const DiscNode &root);

/// Bytes in whole blocks of a disc.
[[nodiscard]] constexpr std::uint64_t wholeBlocks(std::uint64_t bytes)
{
    constexpr std::uint64_t blockSize = 2048;
    return (bytes + blockSize - 1) / blockSize * blockSize;
}

/// What a disc with these contents takes, filesystems included, to a few per cent; exact values come with the image.
[[nodiscard]] std::uint64_t estimatedDiscSize(const DiscNode &root);

/// A name that none of `taken` is: the name itself, or with " 2", " 3" … in front of its extension.
template <typename IsTaken>
[[nodiscard]] QString freeName(const QString &name, const IsTaken &isTaken)
{
    if (!isTaken(name))
        return name;
    const qsizetype dot = name.lastIndexOf(u'.');
    const qsizetype end = dot > 0 ? dot : name.size();
    for (int number = 2;; ++number) {
        const QString candidate = name.left(end) + u' ' + QString::number(number) + name.mid(end);
        if (!isTaken(candidate))
            return candidate;
    }
}

} // namespace Tessaron::Desktop
