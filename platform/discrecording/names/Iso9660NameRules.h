#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tessaron
{

/// How long names in an ISO 9660 tree may be (ECMA-119 10.1 to 10.3). Levels two and three differ in the number of file
/// sections only.
enum class Iso9660Level : std::uint8_t {
    One = 1, ///< files 8.3, folders 8
    Two = 2, ///< files 30 characters and a dot, folders 31
    Three = 3, ///< as level two
};

/// The name of a file in an ISO 9660 tree: d-characters (A to Z, 0 to 9, "_") and at most one dot, which separates name
/// and extension. Never empty.
///
/// The raw name is UTF-8 or any other bytes. ASCII letters become upper case; each other character (or byte that is
/// not UTF-8) that is not a d-character becomes one "_". The extension is what follows the last dot, unless
/// it is longer than longestSensibleExtension; leading dots belong to the name. Level one cuts it to 3 characters, the
/// other levels keep it and cut the name before it.
///
/// "README" stays "README": the dot and the version ";1" that a file identifier ends with even then (ECMA-119
/// 7.5.1) are added when the directory record is written. The name counts as if the dot were there.
[[nodiscard]] std::string iso9660FileName(std::string_view rawName, Iso9660Level level);

/// The name of a folder: d-characters only, 8 or 31 of them at most, never empty (ECMA-119 7.6).
[[nodiscard]] std::string iso9660FolderName(std::string_view rawName, Iso9660Level level);

} // namespace Tessaron
