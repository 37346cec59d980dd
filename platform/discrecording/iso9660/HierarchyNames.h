#pragma once

#include "platform/discrecording/image/TreeDisplayNames.h"
#include "platform/discrecording/names/Iso9660NameRules.h"

#include <array>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// How the names of a directory hierarchy are made and recorded.
enum class NameCoding : std::uint8_t {
    Iso9660, ///< d-characters
    Joliet, ///< UCS-2, big-endian
};

/// A name as directory records and path tables hold it, without the end that a file's name gets (see
/// HierarchyNames::suffix()).
class RecordedName
{
public:
    [[nodiscard]] std::string_view view() const { return {m_bytes.data(), m_size}; }
    [[nodiscard]] std::size_t size() const { return m_size; }

    void assign(std::string_view bytes)
    {
        m_size = static_cast<std::uint8_t>(bytes.copy(m_bytes.data(), m_bytes.size()));
    }
    /// Stores UTF-16 as UCS-2, big-endian.
    void assign(std::u16string_view units);
    void appendUnit(char16_t unit)
    {
        m_bytes[m_size++] = static_cast<char>(unit >> 8);
        m_bytes[m_size++] = static_cast<char>(unit & 0xFF);
    }
    void clear() { m_size = 0; }

private:
    std::array<char, 208> m_bytes{};
    std::uint8_t m_size = 0;
};

/// What a name is recorded for.
enum class NameRole : std::uint8_t {
    File, ///< or anything else that is not a folder
    Folder,
    FolderElsewhere, ///< a file in the place of a folder that was relocated
};

/// The names of one folder's children while they are put in order.
class SiblingNames
{
public:
    struct Entry {
        std::uint64_t prefix = 0; ///< the first bytes, so that most comparisons look no further
        NodeIndex node = 0;
        std::uint32_t offset = 0;
        std::uint8_t size = 0;
        NameRole role = NameRole::File;
        bool isChanged = false; ///< the rules do not give the object's base name
        bool isTaken = false; ///< a sibling had the name that they give
    };

    void clear();
    void add(NodeIndex node, NameRole role, std::string_view name, bool isChanged);
    void replace(Entry &entry, std::string_view name);
    /// Orders by the bytes of the names, shorter ones first (ECMA-119 9.3; the padding it asks for is lower than any
    /// character of a name).
    void sort();
    [[nodiscard]] bool allDiffer() const;
    /// The same for names of Joliet by jolietNameKey(), in any order. False may be wrong, true is not.
    [[nodiscard]] bool allDifferWithoutCase() const;

    [[nodiscard]] std::vector<Entry> &entries() { return m_entries; }
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }
    [[nodiscard]] std::string_view nameOf(const Entry &entry) const
    {
        return std::string_view(m_bytes).substr(entry.offset, entry.size);
    }

private:
    [[nodiscard]] bool precedes(const Entry &one, const Entry &other) const;

    std::string m_bytes;
    std::vector<Entry> m_entries;
};

/// The names in one directory hierarchy. They follow from the objects' own names and are made anew whenever they are
/// needed; only those that had to give way to a sibling's are kept. A million files cost nothing here.
class HierarchyNames final : public TreeDisplayNames
{
public:
    HierarchyNames(std::shared_ptr<const ContentTree> tree, NameCoding coding, Iso9660Level level);

    /// The role of an object that is recorded where it belongs.
    [[nodiscard]] NameRole usualRole(NodeIndex node) const
    {
        return m_tree->nodes[node].isFolder() ? NameRole::Folder : NameRole::File;
    }
    /// The name of an object other than the root. Thread-safe once finish() was called.
    void nameOf(NodeIndex node, NameRole role, RecordedName *name) const;
    void nameOf(NodeIndex node, RecordedName *name) const { nameOf(node, usualRole(node), name); }
    /// The same before siblings are told apart. True when it is not the object's base name.
    bool ruledName(NodeIndex node, NameRole role, RecordedName *name) const;
    /// What follows a file's name in its identifier (ECMA-119 7.5.1); empty for folders and in Joliet.
    [[nodiscard]] std::string_view suffix(std::string_view name, NameRole role) const;

    /// Puts the names of one folder's children in order and, where any are the same, tells them apart. Once
    /// `cancellation` is requested the names are worth nothing.
    void tellApart(SiblingNames &siblings, const std::stop_token &cancellation);
    /// To be called once all names were told apart.
    void finish();

    [[nodiscard]] QString displayName(NodeIndex node) const override;
    [[nodiscard]] NameCoding coding() const { return m_coding; }
    [[nodiscard]] Iso9660Level level() const { return m_level; }

    /// The volume's name, at most 32 bytes, without padding.
    [[nodiscard]] RecordedName volumeName() const;

private:
    /// A name that the rules do not give: a sibling had it.
    struct ChangedName {
        NodeIndex node = 0;
        std::string_view name;
    };
    [[nodiscard]] const std::vector<ChangedName> &changedNames(NameRole role) const
    {
        return role == NameRole::FolderElsewhere ? m_changedPlaceholders : m_changedNames;
    }
    template <typename Unit, typename KeyOf, typename Decode>
    void tellApartAs(SiblingNames &siblings, const KeyOf &keyOf, const Decode &decode,
                     const std::stop_token &cancellation);

    const std::shared_ptr<const ContentTree> m_tree;
    const NameCoding m_coding;
    const Iso9660Level m_level;
    TextArena m_texts;
    std::vector<ChangedName> m_changedNames; ///< ordered by node
    std::vector<ChangedName> m_changedPlaceholders; ///< of folders that are elsewhere, ordered by node
};

} // namespace Tessaron
