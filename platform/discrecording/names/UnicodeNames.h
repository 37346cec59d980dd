#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tessaron
{

/// What the filesystems with Unicode names have in common.

/// The name as UTF-16: each character for which `isRefused` holds, and each byte that is not UTF-8, becomes "_".
[[nodiscard]] std::u16string unicodeName(std::string_view rawName, bool (*isRefused)(char32_t));

/// Cuts the name to `limit` units: before its extension, where a file has a sensible one, and never inside a surrogate
/// pair.
[[nodiscard]] std::u16string nameCutTo(std::u16string name, std::size_t limit, bool isFolder);

/// True for the two names that every folder has already, and for none at all.
[[nodiscard]] bool isEmptyOrDots(std::u16string_view name);

} // namespace Tessaron
