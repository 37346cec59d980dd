#pragma once

// The bodies of UniqueNames.h, which alone includes this file.

#include "platform/discrecording/names/Utf8Names.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Tessaron
{

template <typename Unit>
std::size_t startOfExtension(std::basic_string_view<Unit> name)
{
    const std::size_t dot = name.rfind(Unit('.'));
    const std::size_t nameStart = name.find_first_not_of(Unit('.'));
    const bool isExtension = dot != name.npos && nameStart != name.npos && dot > nameStart && dot + 1 < name.size()
        && name.size() - dot - 1 <= longestSensibleExtension;
    return isExtension ? dot : name.size();
}

template <typename Unit>
std::size_t lengthWithoutSplitPair(std::basic_string_view<Unit> text, std::size_t limit)
{
    if (text.size() <= limit)
        return text.size();
    if constexpr (sizeof(Unit) == 2) {
        if (limit > 0 && text[limit - 1] >= 0xD800 && text[limit - 1] <= 0xDBFF)
            return limit - 1;
    }
    return limit;
}

namespace Detail
{

/// Hands out the numbers of numbered names. All names that end up with the same stem, extension and number of digits
/// share one counter, the same in the eyes of `KeyOf`; so no number is tried twice, and a folder full of collisions
/// stays linear.
template <typename Unit, typename KeyOf>
class NumberedNames
{
public:
    using String = std::basic_string<Unit>;

    NumberedNames(const NameLimits &limits, const KeyOf &keyOf)
        : m_limits(limits)
        , m_keyOf(keyOf)
    {
    }

    /// The next numbered form of the name; each is given once.
    String next(const SiblingName<Unit> &sibling)
    {
        const std::basic_string_view<Unit> name = sibling.name;
        const std::size_t dot = sibling.isFolder ? name.size() : startOfExtension(name);
        const std::basic_string_view<Unit> extension = name.substr(dot);
        const std::size_t room =
            sibling.isFolder ? m_limits.folder : std::min(m_limits.stem, m_limits.file - extension.size());
        std::uint64_t first = 1;
        for (std::size_t digits = 1;; ++digits, first *= 10) {
            const std::size_t cut = lengthWithoutSplitPair(name.substr(0, dot), room > digits ? room - digits - 1 : 0);
            const String stem(name.substr(0, cut));
            String key(m_keyOf(stem));
            key.append(1, Unit('/')).append(m_keyOf(String(extension))).append(1, Unit('0' + digits));
            const auto counter = m_counters.try_emplace(std::move(key), first).first;
            if (counter->second < first * 10)
                return String(stem).append(1, Unit('_')).append(text(counter->second++)).append(extension);
        }
    }

private:
    static String text(std::uint64_t number)
    {
        char digits[20];
        const char *const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        return String(static_cast<const char *>(digits), end);
    }

    const NameLimits m_limits;
    const KeyOf &m_keyOf;
    std::unordered_map<String, std::uint64_t> m_counters;
};

} // namespace Detail

template <typename Unit, typename KeyOf>
std::size_t makeNamesUnique(std::span<SiblingName<Unit>> siblings, const NameLimits &limits, const KeyOf &keyOf,
                            const std::stop_token &cancellation)
{
    constexpr std::size_t namesPerCheck = 1024;
    using Key = decltype(keyOf(siblings.front().name));
    // Keys may be views: the name of a sibling changes only before its key is taken.
    std::unordered_set<Key> taken;
    taken.reserve(siblings.size());
    std::vector<std::size_t> duplicates;
    for (std::size_t index = 0; index < siblings.size(); ++index) {
        if (!taken.insert(keyOf(siblings[index].name)).second)
            duplicates.push_back(index);
    }
    Detail::NumberedNames<Unit, KeyOf> numbered(limits, keyOf);
    for (std::size_t done = 0; done < duplicates.size(); ++done) {
        if (done % namesPerCheck == 0 && cancellation.stop_requested())
            break;
        const std::size_t index = duplicates[done];
        const SiblingName<Unit> original = siblings[index];
        do {
            siblings[index].name = numbered.next(original);
        } while (!taken.insert(keyOf(siblings[index].name)).second);
    }
    return duplicates.size();
}

} // namespace Tessaron
