#include "platform/discrecording/names/JolietNameRules.h"

#include "platform/discrecording/names/UnicodeNames.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

bool isRefused(char32_t codePoint)
{
    switch (codePoint) {
    case U'*':
    case U'/':
    case U':':
    case U';':
    case U'?':
    case U'\\':
        return true;
    default:
        return codePoint < 0x20;
    }
}

} // namespace

std::u16string jolietName(std::string_view rawName, bool isFolder)
{
    const std::u16string name = unicodeName(rawName, isRefused);
    if (isEmptyOrDots(name))
        return std::u16string(std::max<std::size_t>(name.size(), 1), u'_');
    return nameCutTo(name, jolietNameLimit, isFolder);
}

std::u16string jolietVolumeName(std::string_view rawName)
{
    return nameCutTo(unicodeName(rawName, isRefused), jolietVolumeNameLimit, true);
}

} // namespace Tessaron
