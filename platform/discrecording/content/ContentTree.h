#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/content/ChunkedArray.h"
#include "platform/discrecording/content/FileContents.h"
#include "platform/discrecording/content/TextArena.h"
#include "platform/discrecording/objects/DRFilesystems.h"
#include "platform/foundation/FileTime.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// Number of an object in a ContentTree; 0 is the root.
using NodeIndex = std::uint32_t;

enum class ContentKind : std::uint8_t {
    Folder,
    File,
    SymbolicLink,
    Fifo,
    Socket,
    CharacterDevice,
    BlockDevice,
    Absent, ///< left out of the disc; it stays in the tree so that the report can name it
};

/// The times that an object gets on the disc.
struct ObjectTimes {
    FileTime modification;
    FileTime access;
    FileTime attributeModification;
    FileTime creation;
};

/// One object of a disc. A million of these are held at once, so members are packed, and what only few objects have
/// lies in tables of ContentTree. Facts about the source are those of the time when the disc was planned.
struct ContentNode {
    enum Flag : std::uint8_t {
        NameIsChanged = 1, ///< its name on the disc is not its base name; ContentTree::baseName() knows the latter
        HasDates = 2, ///< dates were set for it
        HasContentsInMemory = 4,
        SharesContents = 8, ///< several objects have the same contents
        NeedsInspection = 16, ///< its source has still to be looked at; only while the tree is built
        HasUserId = 32, ///< an owner was set for it
        HasGroupId = 64, ///< a group was set for it
        LiesOnDisc = 128, ///< an earlier session has it: its extent counts from the disc's begin and is not written
    };

    const char *name = nullptr; ///< its name on the disc, bytes, not terminated
    std::uint64_t inode = 0;
    std::uint32_t sourceNode = 0; ///< FSRef::node of its source; 0 for an object without one
    NodeIndex parent = 0;
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::uint16_t mode = 0; ///< `st_mode`
    std::uint16_t device = 0; ///< number of its source's device
    ContentKind kind = ContentKind::Absent;
    std::uint8_t nameLength = 0;
    std::uint8_t masks = 0; ///< low half: the filesystems that hold it; high half: those in which it is hidden
    std::uint8_t flags = 0;

    [[nodiscard]] std::string_view nameView() const { return {name, nameLength}; }
    static constexpr unsigned int hiddenShift = 4; ///< of the high half of `masks`
    [[nodiscard]] DRFilesystemMask filesystems() const { return masks & DRFilesystemInclusionMaskAll; }
    [[nodiscard]] DRFilesystemMask hiddenIn() const { return masks >> hiddenShift; }
    void hideIn(DRFilesystemMask filesystem) { masks = static_cast<std::uint8_t>(masks | filesystem << hiddenShift); }
    [[nodiscard]] bool isFolder() const { return kind == ContentKind::Folder; }
    [[nodiscard]] bool isFile() const { return kind == ContentKind::File; }
    [[nodiscard]] bool isDevice() const
    {
        return kind == ContentKind::CharacterDevice || kind == ContentKind::BlockDevice;
    }
    [[nodiscard]] bool has(Flag flag) const { return (flags & flag) != 0; }

    [[nodiscard]] FileTime modificationTime() const { return {m_modificationSeconds, m_modificationNanoseconds}; }
    [[nodiscard]] FileTime changeTime() const { return {m_changeSeconds, m_changeNanoseconds}; }
    /// When it was created; zero where that is not known.
    [[nodiscard]] FileTime birthTime() const { return {m_birthSeconds, m_birthNanoseconds}; }
    void setModificationTime(FileTime time);
    void setChangeTime(FileTime time);
    void setBirthTime(FileTime time);

    // The operations below share three members, which mean something else for each kind of object: ask only for those
    // of the object's own kind.

    /// File: its length in bytes.
    [[nodiscard]] std::uint64_t fileSize() const { return m_size; }
    void setFileSize(std::uint64_t bytes) { m_size = bytes; }
    /// File: the file whose contents it has, mostly itself.
    [[nodiscard]] NodeIndex contentsOwner() const { return m_link; }
    void setContentsOwner(NodeIndex file) { m_link = file; }
    /// File whose contents are its own: the first block of its extent, 0 until it has one. It counts from the image's
    /// begin, unless the file LiesOnDisc.
    [[nodiscard]] std::uint32_t extentStart() const { return m_extent; }
    void setExtentStart(std::uint32_t block) { m_extent = block; }
    [[nodiscard]] bool hasExtent() const { return m_extent != 0; }
    /// True for a file with blocks of its own on the disc.
    [[nodiscard]] bool ownsExtent(NodeIndex itself) const { return isFile() && m_size > 0 && m_link == itself; }

    /// Folder: its number among the folders.
    [[nodiscard]] std::uint32_t folderNumber() const { return static_cast<std::uint32_t>(m_size); }
    void setFolderNumber(std::uint32_t number) { m_size = number; }
    /// Folder: its first child, the others follow; one behind the last; how many there are.
    [[nodiscard]] NodeIndex firstChild() const { return m_link; }
    [[nodiscard]] NodeIndex endChild() const { return m_link + m_extent; }
    [[nodiscard]] std::uint32_t childCount() const { return m_extent; }
    void setChildren(NodeIndex first, std::uint32_t count);

    /// Symbolic link: the length of its target in bytes, and the number of the target in the tree.
    [[nodiscard]] std::uint64_t linkTargetLength() const { return m_size; }
    [[nodiscard]] std::uint32_t linkTargetNumber() const { return m_link; }
    void setLinkTargetLength(std::uint64_t bytes) { m_size = bytes; }
    void setLinkTargetNumber(std::uint32_t number) { m_link = number; }

    /// Device: its `st_rdev`.
    [[nodiscard]] std::uint64_t deviceNumber() const { return m_size; }
    void setDeviceNumber(std::uint64_t number) { m_size = number; }

    /// Any: a number that differs where one of the above does.
    [[nodiscard]] std::uint64_t fingerprint() const { return m_size; }

private:
    std::uint64_t m_size = 0;
    std::int64_t m_modificationSeconds = 0;
    std::int64_t m_changeSeconds = 0;
    std::int64_t m_birthSeconds = 0;
    std::uint32_t m_modificationNanoseconds = 0;
    std::uint32_t m_changeNanoseconds = 0;
    std::uint32_t m_birthNanoseconds = 0;
    std::uint32_t m_link = 0;
    std::uint32_t m_extent = 0;
};
static_assert(sizeof(ContentNode) == 96);

/// Dates that were set for an object and take the place of its source's.
struct ContentDates {
    NodeIndex node = 0;
    std::optional<FileTime> modification;
    std::optional<FileTime> access;
    std::optional<FileTime> attributeModification;
    std::optional<FileTime> creation;
};

/// What a layout says of an object for the Finder, in the place of what its source says.
struct ContentFinderFlags {
    NodeIndex node = 0;
    std::optional<std::uint16_t> flags;
    bool hidesExtension = false;
};

inline void ContentNode::setModificationTime(FileTime time)
{
    m_modificationSeconds = time.seconds;
    m_modificationNanoseconds = time.nanoseconds;
}

inline void ContentNode::setChangeTime(FileTime time)
{
    m_changeSeconds = time.seconds;
    m_changeNanoseconds = time.nanoseconds;
}

inline void ContentNode::setBirthTime(FileTime time)
{
    m_birthSeconds = time.seconds;
    m_birthNanoseconds = time.nanoseconds;
}

inline void ContentNode::setChildren(NodeIndex first, std::uint32_t count)
{
    m_link = first;
    m_extent = count;
}

/// What a disc is to hold, flat: the objects of a layout and of the real folders in it. Children of a folder are
/// neighbours, ordered by the bytes of their names, so that the order in which a folder lists its files does not
/// matter. Parents come before their children. Made by ContentTreeBuilder, constant afterwards but for the extents.
class ContentTree
{
public:
    ChunkedArray<ContentNode> nodes;
    std::uint32_t folderCount = 0; ///< folders in the tree, the root counted, absent ones not
    FileTime volumeTime; ///< when the volume was made; also the time of objects without source
    std::optional<std::int64_t> latestTime; ///< no object gets a later time; set for reproducible images
    bool hasObjectsOnDisc = false; ///< some of the objects are LiesOnDisc

    /// The folder in the root that takes folders too deep for ISO 9660 (IEEE P1282 4.1.5); 0 without one.
    NodeIndex relocationFolder = 0;
    bool hidesRelocationFolder = false; ///< it was made for that alone

    TextArena texts;
    std::vector<std::uint64_t> devices; ///< `st_dev` by number
    std::vector<std::string_view> linkTargets;
    std::vector<ContentDates> dates; ///< ordered by node
    std::vector<ContentFinderFlags> finderFlags; ///< ordered by node
    std::vector<std::pair<NodeIndex, QByteArray>> contentsInMemory; ///< ordered by node
    std::vector<std::pair<NodeIndex, std::string_view>> changedNames; ///< base names, ordered by node
    std::vector<std::pair<NodeIndex, std::uint32_t>>
        sharerCounts; ///< how many objects share the contents of this one, itself counted; ordered by node

    /// The name that the layout gives the object.
    [[nodiscard]] std::string_view baseName(NodeIndex node) const;
    /// The name that it has on the disc.
    [[nodiscard]] QString discName(NodeIndex node) const;
    /// Path from the root by base names, beginning with "/".
    [[nodiscard]] QByteArray discPath(NodeIndex node) const;
    /// The reference of the object's source; the zero reference when it has none.
    [[nodiscard]] FSRef sourceRef(NodeIndex node) const;
    [[nodiscard]] FileContents fileContents(NodeIndex node) const;
    /// The block of the disc where a file's contents begin, in an image that begins at the block `image` of it.
    [[nodiscard]] std::uint64_t blockOfContents(NodeIndex file, std::uint64_t image) const
    {
        const ContentNode &owner = nodes[nodes[file].contentsOwner()];
        return owner.extentStart() + (owner.has(ContentNode::LiesOnDisc) ? 0 : image);
    }
    /// The contents of a file that the layout itself brings; empty for others.
    [[nodiscard]] QByteArray memoryContents(NodeIndex node) const;
    [[nodiscard]] std::string_view linkTarget(NodeIndex node) const
    {
        return linkTargets[nodes[node].linkTargetNumber()];
    }
    /// True when both have the same permissions, owner and times, so that they may be one object with two names.
    [[nodiscard]] bool haveSameAttributes(NodeIndex one, NodeIndex other) const;

    /// The times on the disc. The access time is the modification time unless one was set, since merely reading a tree
    /// changes the files' own. In a reproducible image the times of creation and of the last attribute change are the
    /// modification time, too: no copy of a tree keeps them. An object is never created after its last modification,
    /// unless dates were set so.
    [[nodiscard]] ObjectTimes times(NodeIndex node) const;

private:
    [[nodiscard]] FileTime noLaterThanAllowed(FileTime time) const;
};

} // namespace Tessaron
