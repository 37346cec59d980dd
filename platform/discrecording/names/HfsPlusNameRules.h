#pragma once

#include <string>
#include <string_view>

namespace Tessaron
{

/// The name of a file or folder in an HFS+ tree, as its catalog stores it: canonically decomposed UTF-16, at most 255
/// units, ":" stored as "/" because the volume format separates folders with ":". Never empty. A longer name is cut
/// before its extension; NUL, U+FFFF, "/" and bytes that are not UTF-8 become "_", as does a name of nothing but
/// characters that comparisons ignore.
[[nodiscard]] std::u16string hfsPlusName(std::string_view rawName, bool isFolder);

/// Equal for names that the catalog takes for the same one, whatever their case.
[[nodiscard]] std::u16string hfsPlusNameKey(const std::u16string &name);

} // namespace Tessaron
