#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>

namespace Tessaron
{

/// The name of one of the objects that lie in one folder.
template <typename Unit>
struct SiblingName {
    std::basic_string<Unit> name; ///< legal and short enough already
    bool isFolder = false;
};

/// How long names may be, in units of the filesystem's names.
struct NameLimits {
    std::size_t stem = 0; ///< a file's name before the dot of its extension
    std::size_t file = 0; ///< a file's name as a whole, the dot included
    std::size_t folder = 0; ///< a folder's name; folders have no extension
};
inline constexpr NameLimits iso9660LevelOneLimits{8, 12, 8};
inline constexpr NameLimits iso9660LevelTwoLimits{30, 31, 31};
inline constexpr NameLimits jolietLimits{103, 103, 103};
/// What fits whatever the characters are; a name below U+0100 could be twice as long.
inline constexpr NameLimits udfLimits{127, 127, 127};
inline constexpr NameLimits hfsPlusLimits{255, 255, 255};

/// Compares names as they stand.
template <typename Unit>
struct ExactName {
    std::basic_string_view<Unit> operator()(const std::basic_string<Unit> &name) const { return name; }
};

/// Makes the names of one folder different from each other.
///
/// The first that has a name keeps it, whatever comes before or after; each further one gets, in order, the first free
/// name of the form "stem_1.ext", "stem_2.ext" …, its stem cut so that the limits hold. The result depends on the names
/// and their order alone. Two names are the same when `KeyOf` gives equal keys for them; the key of a text must be
/// those of its parts in a row. Returns how many names were changed. Once `cancellation` is requested the names are
/// worth nothing.
///
/// Time grows linearly with the number of names, also when all of them collide: 100,000 take about 0.1 s.
template <typename Unit, typename KeyOf = ExactName<Unit>>
std::size_t makeNamesUnique(std::span<SiblingName<Unit>> siblings, const NameLimits &limits, const KeyOf &keyOf = {},
                            const std::stop_token &cancellation = {});

/// Where the extension of a file name begins, its dot included; the name's size when it has none that is
/// sensible (Utf8Names.h). Leading dots begin no extension.
template <typename Unit>
[[nodiscard]] std::size_t startOfExtension(std::basic_string_view<Unit> name);

/// The greatest length up to `limit` at which the text can be cut without parting a surrogate pair.
template <typename Unit>
[[nodiscard]] std::size_t lengthWithoutSplitPair(std::basic_string_view<Unit> text, std::size_t limit);

} // namespace Tessaron

#include "platform/discrecording/names/UniqueNamesImplementation.h"
