#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tessaron
{

/// The text in d-characters (A to Z, 0 to 9, "_"; ECMA-119 7.4.1): ASCII letters become upper case, each other
/// character one "_"; at most `limit` characters. Empty for an empty text.
[[nodiscard]] std::string dCharacters(std::string_view text, std::size_t limit);

/// The same in a-characters, which are also the blank and ! " % & ' ( ) * + , - . / : ; < = > ?
[[nodiscard]] std::string aCharacters(std::string_view text, std::size_t limit);

/// The text in UTF-16, without the characters that Joliet refuses, at most `limit` units.
[[nodiscard]] std::u16string jolietCharacters(std::string_view text, std::size_t limit);

} // namespace Tessaron
