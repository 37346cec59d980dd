#pragma once

#include <string>
#include <string_view>

namespace Tessaron
{

/// How the catalog of an HFS+ volume takes names for the same: without regard to case, by a table that was fixed with
/// the format (HFS Plus Volume Format, "Case-Insensitive String Comparison Algorithm"). It knows the letters of Unicode
/// 2 that have no decomposition, since names are stored decomposed.

/// The unit that counts in a comparison; 0 for one that is ignored. NUL counts as U+FFFF, so that names that begin with
/// it come last.
[[nodiscard]] char16_t hfsPlusFoldedUnit(char16_t unit);

/// All units that count: two names are the same when these are, and are ordered by them, unit by unit, the shorter
/// first.
[[nodiscard]] std::u16string hfsPlusFoldedName(std::u16string_view name);

} // namespace Tessaron
