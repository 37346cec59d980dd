#pragma once

#include "platform/discrecording/iso9660/DirectoryHierarchy.h"

#include <array>
#include <cstdint>
#include <span>

namespace Tessaron
{

/// Where the parts of a hierarchy lie on the disc.
struct HierarchyPlaces {
    std::uint64_t image = 0; ///< first block of the image
    std::uint64_t directories = 0; ///< first block of the directories with their continuation areas
};

/// Makes the directory records of one folder after another (ECMA-119 9.1), in the order in which they are recorded. The
/// same code measures directories and writes them, so that both always agree. Used by one thread.
class DirectoryRecords
{
public:
    DirectoryRecords(const DirectoryHierarchy &hierarchy, const HierarchyPlaces &places);
    /// While the hierarchy is made: records of one folder that have their true sizes, but neither addresses nor
    /// attributes. `names` are those of its children in the order of the records.
    DirectoryRecords(const DirectoryHierarchy &hierarchy, const SiblingNames &names);

    /// Goes to the first record of a folder, ".".
    void begin(const HierarchyFolder &folder);
    /// Goes to where a block begins.
    void begin(const HierarchyFolder &folder, const DirectoryRestart &restart);

    /// Makes the next record; false at the folder's end.
    [[nodiscard]] bool next();
    [[nodiscard]] std::span<const std::uint8_t> record() const { return {m_record.data(), m_recordSize}; }

    /// The bytes that the record has in a continuation area, empty when it has none. A file's sections share one: it is
    /// new with isFirstSection() only.
    [[nodiscard]] std::span<const std::uint8_t> continuation() const { return m_use.continuation(); }
    [[nodiscard]] bool isFirstSection() const { return m_isFirstSection; }
    /// The object that has the record: the folder itself for "." and "..".
    [[nodiscard]] NodeIndex node() const { return m_node; }
    /// What the record is of: a folder, a file, a file in the place of a folder.
    [[nodiscard]] NameRole role() const { return m_role; }
    /// Where to begin to get the record again.
    [[nodiscard]] DirectoryRestart place() const { return m_place; }

    /// Makes the continuation area of one record: that of an object, or of "." of the root for node 0.
    [[nodiscard]] std::span<const std::uint8_t> continuationOf(const HierarchyContinuation &continuation);

private:
    enum class Role : std::uint8_t {
        Self,
        Parent,
        Child,
    };

    void makeSpecial(Role role);
    void makeChild(NodeIndex node);
    void makeSystemUse(NodeIndex node, Role role, std::size_t identifierSize);
    /// Adds the entries that lead from a relocated folder to where it belongs, and back; `node` as for makeSystemUse().
    void addRelocation(NodeIndex node, Role role);
    void makeRecord(NodeIndex node, std::string_view identifier, std::string_view suffix);
    /// The first block of a folder's directory; 0 while measuring.
    [[nodiscard]] std::uint32_t directoryOf(NodeIndex folder) const;
    void setExtent(NodeIndex node, std::uint32_t section);

    const DirectoryHierarchy &m_hierarchy;
    const HierarchyPlaces *const m_places; ///< null while measuring
    const SiblingNames *const m_names; ///< null unless measuring
    const HierarchyFolder *m_folder = nullptr;
    Role m_nextRole = Role::Self;
    DirectoryRestart m_next; ///< of the record that comes next
    DirectoryRestart m_place; ///< of the present one
    std::uint64_t m_sectionCount = 1; ///< of the present child
    NodeIndex m_node = 0;
    NameRole m_role = NameRole::Folder;
    bool m_isFirstSection = true;
    RecordedName m_name;
    SystemUse m_use;
    std::array<std::uint8_t, 256> m_record{};
    std::size_t m_recordSize = 0;
};

/// Bytes of the root's record in a volume descriptor (ECMA-119 8.4.18).
inline constexpr std::size_t rootRecordSize = 34;
/// Writes the root's record.
void storeRootRecord(std::uint8_t *to, const DirectoryHierarchy &hierarchy, const HierarchyPlaces &places);

} // namespace Tessaron
