#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tessaron
{

/// Longest name in UTF-16 units. The Joliet text says 64; 103 is what still fits into a directory record of every
/// reader and is in common use.
inline constexpr std::size_t jolietNameLimit = 103;
/// Longest volume name in UTF-16 units: half of the 32 bytes of ECMA-119 8.4.7.
inline constexpr std::size_t jolietVolumeNameLimit = 16;

/// The name of a file or folder in a Joliet tree, in UTF-16 in the machine's byte order; without the version ";1" of a
/// file identifier, which the writer of the directory record adds. Never empty.
///
/// Characters that Joliet refuses (U+0000 to U+001F, * / : ; ? \) and bytes that are not UTF-8 become "_" each;
/// characters beyond U+FFFF become two units. A name above jolietNameLimit is cut, before the extension where a file
/// has a sensible one and never between two surrogates. A dot or a blank at its end becomes "_": the system that Joliet
/// was made for takes it off before it looks for a name, and so never finds one that ends so.
[[nodiscard]] std::u16string jolietName(std::string_view rawName, bool isFolder);

/// Equal for names that readers of Joliet take for the same one, whatever their case. It folds more than any single
/// reader does, unit by unit: two names too many told apart are better than one file that cannot be opened.
[[nodiscard]] std::u16string jolietNameKey(const std::u16string &name);
/// The same for one unit.
[[nodiscard]] char16_t jolietKeyUnit(char16_t unit);

/// The name of the volume by the rules of jolietName(), but for its end; empty when the raw name is.
[[nodiscard]] std::u16string jolietVolumeName(std::string_view rawName);

} // namespace Tessaron
