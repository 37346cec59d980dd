#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tessaron
{

/// Longest name of an object on a disc in bytes, as POSIX systems have it.
inline constexpr std::size_t longestBaseName = 255;

/// True for a name that a file can have as it is.
[[nodiscard]] bool isUsableBaseName(std::string_view name);

/// A name that any file could have, made from a base name that a program chose: "/" and NUL become "_", and so do an
/// empty name and each dot of "." and ".."; a name longer than 255 bytes is cut before its extension, not within a
/// UTF-8 character. A name that is fine stays as it is.
[[nodiscard]] std::string usableBaseName(std::string_view name);

/// The `number`-th variant of a name that a sibling has taken: "stem_1.ext"; at most 255 bytes.
[[nodiscard]] std::string numberedBaseName(std::string_view name, unsigned int number);

} // namespace Tessaron
