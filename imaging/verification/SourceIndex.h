#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discimage/volume/VolumeObject.h"
#include <TessaronClasses/DiscSources.h>

#include <QByteArray>

#include <cstdint>
#include <stop_token>
#include <string_view>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

using SourceNumber = std::uint32_t;
inline constexpr SourceNumber noSource = UINT32_MAX;

/// What is known of one object of the sources without opening it. About 80 bytes with a short name.
struct SourceObject {
    std::uint64_t size = 0; ///< of a file
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modificationSeconds = 0; ///< apart from the nanoseconds, since that saves 8 bytes an object
    std::uint32_t modificationNanoseconds = 0;
    SourceNumber parent = noSource;
    SourceNumber firstChild = 0; ///< children follow each other in the byte order of their names
    std::uint32_t childCount = 0;
    std::uint32_t nameOffset = 0;
    std::uint16_t nameLength = 0;
    VolumeObjectKind kind = VolumeObjectKind::File;
    /// Bit 1 << VolumeKind for each volume that has it; set from the beginning for those that are not to have it.
    std::uint8_t seenIn = 0;

    static constexpr std::uint32_t noTime = UINT32_MAX; ///< in place of nanoseconds: a folder that is on no disk
    [[nodiscard]] bool hasTime() const { return modificationNanoseconds != noTime; }
    [[nodiscard]] FileTime modificationTime() const { return {modificationSeconds, modificationNanoseconds}; }
};

/// Something of the sources that cannot be listed or looked at.
struct SourceFailure {
    QByteArray path;
    QString reason;
};

/// Everything below the sources as it belongs on a disc, by folders; number 0 is the disc's root. Its names and facts
/// are those of the time it was made.
class SourceIndex
{
public:
    /// Lists the sources as `tessaron image` arranges them. Ends early when a stop is requested.
    SourceIndex(const std::vector<DiscSource> &sources, const std::stop_token &stop);
    /// Takes what is below the root as the user arranged it, and looks at each file. Ends early when a stop is
    /// requested.
    SourceIndex(const KRFileHierarchyItem &root, const std::stop_token &stop);

    [[nodiscard]] std::size_t count() const { return m_objects.size(); }
    [[nodiscard]] const SourceObject &operator[](SourceNumber number) const { return m_objects[number]; }
    [[nodiscard]] SourceObject &operator[](SourceNumber number) { return m_objects[number]; }
    [[nodiscard]] std::string_view name(SourceNumber number) const;
    /// The child of exactly this name, or noSource.
    [[nodiscard]] SourceNumber child(SourceNumber folder, std::string_view name) const;
    /// Path on the disc, from the root: "/folder/file".
    [[nodiscard]] QByteArray discPath(SourceNumber number) const;
    /// Opens a source for reading, however long its path is; -1 with `errno` set when it cannot be opened.
    [[nodiscard]] int open(SourceNumber number, int flags) const;
    /// Target of a symbolic link; null when it cannot be read.
    [[nodiscard]] QByteArray linkTarget(SourceNumber number) const;

    /// True once a source could not be listed or opened since the system had no descriptor left: what was found, or not
    /// found, says nothing then.
    [[nodiscard]] bool lacksDescriptors() const { return m_lacksDescriptors; }
    [[nodiscard]] const std::vector<SourceFailure> &failures() const { return m_failures; }
    [[nodiscard]] std::uint64_t fileCount() const { return m_fileCount; } ///< everything but folders
    [[nodiscard]] std::uint64_t folderCount() const { return m_folderCount; } ///< without the root
    [[nodiscard]] std::uint64_t byteCount() const { return m_byteCount; } ///< of all files, each name counted

private:
    struct Entry;
    class RecentFolders;
    void addSources(const std::vector<DiscSource> &sources);
    [[nodiscard]] Entry entryFor(const KRFileHierarchyItem &item, const FSRef &ref);
    void listFolder(SourceNumber folder, RecentFolders &recent);
    /// Opens a folder for listing, from the one above where that is open still; -1 with `errno` set on failure.
    [[nodiscard]] int openFolder(SourceNumber folder, const RecentFolders &recent) const;
    [[nodiscard]] int openByPath(SourceNumber number, int flags) const;
    void addChildren(SourceNumber folder, std::vector<Entry> &entries);
    void fail(SourceNumber number, int errnoValue);
    /// The path on disk: that of the source as it was given, and the names below it.
    [[nodiscard]] QByteArray diskPath(SourceNumber number) const;

    std::vector<SourceObject> m_objects;
    std::vector<char> m_names;
    std::vector<QByteArray> m_tops; ///< paths on disk of the root's children, or of the root alone
    std::vector<FSRef> m_refs; ///< of a tree: what each object is made from, the zero reference for a virtual folder
    bool m_rootIsOnlySource = false;
    std::vector<SourceFailure> m_failures;
    mutable bool m_lacksDescriptors = false;
    std::uint64_t m_fileCount = 0;
    std::uint64_t m_folderCount = 0;
    std::uint64_t m_byteCount = 0;
};

} // namespace Tessaron
