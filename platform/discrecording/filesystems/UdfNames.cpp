#include "platform/discrecording/filesystems/UdfNames.h"

#include "platform/discrecording/filesystems/UnicodeNames.h"

#include <algorithm>

namespace Tessaron
{

std::u16string udfName(std::string_view rawName, bool isFolder)
{
    const std::u16string name =
        unicodeName(rawName, [](char32_t codePoint) { return codePoint == 0 || codePoint == U'/'; });
    if (isEmptyOrDots(name))
        return std::u16string(std::max<std::size_t>(name.size(), 1), u'_');
    const bool fitsBytes = std::ranges::all_of(name, [](char16_t unit) { return unit < 0x100; });
    return nameCutTo(name, fitsBytes ? 254 : 127, isFolder);
}

} // namespace Tessaron
