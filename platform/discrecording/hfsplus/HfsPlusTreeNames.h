#pragma once

#include "platform/discrecording/image/TreeDisplayNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// A name as the catalog holds it, in place.
class HfsPlusName
{
public:
    static constexpr std::size_t limit = 255;

    [[nodiscard]] std::u16string_view view() const { return {m_units.data(), m_size}; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    void clear() { m_size = 0; }
    void assign(std::u16string_view units) { m_size = static_cast<std::uint8_t>(units.copy(m_units.data(), limit)); }
    void append(char16_t unit) { m_units[m_size++] = unit; }

private:
    std::array<char16_t, limit> m_units{};
    std::uint8_t m_size = 0;
};

/// The names of one folder's children while they are put into the catalog's order.
class HfsPlusSiblings
{
public:
    struct Entry {
        std::uint64_t prefix = 0; ///< the first four folded units, so that most comparisons look no further
        NodeIndex node = 0;
        std::uint32_t offset = 0; ///< of the folded name
        std::uint8_t size = 0; ///< of the folded name
        std::uint8_t nameSize = 0;
        bool isChanged = false; ///< the rules do not give the object's base name
        bool isTaken = false; ///< a sibling had the name that they give
    };

    void clear();
    void add(NodeIndex node, std::u16string_view name, bool isChanged);
    void replace(Entry &entry, std::u16string_view name);
    void sort();
    [[nodiscard]] bool allDiffer() const;

    [[nodiscard]] std::vector<Entry> &entries() { return m_entries; }
    [[nodiscard]] const std::vector<Entry> &entries() const { return m_entries; }

private:
    [[nodiscard]] Entry makeEntry(NodeIndex node, std::u16string_view name, bool isChanged);
    [[nodiscard]] std::u16string_view foldedOf(const Entry &entry) const
    {
        return std::u16string_view(m_folded).substr(entry.offset, entry.size);
    }

    std::u16string m_folded;
    std::vector<Entry> m_entries;
};

/// The names in the HFS+ tree of a disc. They follow from the objects' own names and are made anew whenever they are
/// needed; only those that had to give way to a sibling's are kept.
class HfsPlusTreeNames final : public TreeDisplayNames
{
public:
    explicit HfsPlusTreeNames(std::shared_ptr<const ContentTree> tree);

    /// The name of an object; the root's is the volume's. Thread-safe once finish() was called.
    void nameOf(NodeIndex node, HfsPlusName *name) const;
    /// The same before siblings are told apart. True when it is not the object's base name.
    bool ruledName(NodeIndex node, HfsPlusName *name) const;

    /// Puts the children of one folder in order and, where any names are the same, tells them apart. Once
    /// `cancellation` is requested the names are worth nothing.
    void tellApart(HfsPlusSiblings &siblings, const std::stop_token &cancellation);
    /// To be called once all names were told apart.
    void finish();

    /// As POSIX programs see the name: composed, ":" and "/" in their own places.
    [[nodiscard]] QString displayName(NodeIndex node) const override;

private:
    struct ChangedName {
        NodeIndex node = 0;
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
    };

    const std::shared_ptr<const ContentTree> m_tree;
    std::u16string m_changedTexts;
    std::vector<ChangedName> m_changedNames; ///< ordered by node
};

} // namespace Tessaron
