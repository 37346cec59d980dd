#include "platform/discrecording/names/UdfNameRules.h"

#include "platform/discrecording/names/UnicodeNames.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// Cuts a name to the number of bytes that its characters may take in compressed Unicode (UDF 2.1.1).
std::u16string cutToBytes(const std::u16string &name, std::size_t bytes, bool isFolder)
{
    const bool isNarrow = std::ranges::all_of(name, [](char16_t unit) { return unit < 0x100; });
    return nameCutTo(name, isNarrow ? bytes : bytes / 2, isFolder);
}

/// Byte order marks are not characters of CS0 (UDF 2.1.1).
bool isNoCharacter(char32_t codePoint)
{
    return codePoint == 0 || codePoint == 0xFEFF || codePoint == 0xFFFE;
}

} // namespace

std::u16string udfName(std::string_view rawName, bool isFolder)
{
    const std::u16string name =
        unicodeName(rawName, [](char32_t codePoint) { return isNoCharacter(codePoint) || codePoint == U'/'; });
    if (isEmptyOrDots(name))
        return std::u16string(std::max<std::size_t>(name.size(), 1), u'_');
    return cutToBytes(name, 254, isFolder);
}

std::u16string udfVolumeName(std::string_view rawName)
{
    return cutToBytes(unicodeName(rawName, isNoCharacter), 126, true);
}

} // namespace Tessaron
