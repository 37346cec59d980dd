#include "platform/discrecording/names/JolietNameRules.h"

#include "platform/discrecording/names/UnicodeNames.h"

#include <QChar>

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
    std::u16string result = nameCutTo(name, jolietNameLimit, isFolder);
    if (result.back() == u'.' || result.back() == u' ')
        result.back() = u'_';
    return result;
}

char16_t jolietKeyUnit(char16_t unit)
{
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
    // Some compare capital letters, some small ones; each way has letters that only it takes for the same.
    return QChar::toCaseFolded(QChar::toUpper(char32_t{unit})) & 0xFFFF;
}

std::u16string jolietNameKey(const std::u16string &name)
{
    std::u16string key(name);
    std::ranges::transform(key, key.begin(), jolietKeyUnit);
    return key;
}

std::u16string jolietVolumeName(std::string_view rawName)
{
    return nameCutTo(unicodeName(rawName, isRefused), jolietVolumeNameLimit, true);
}

} // namespace Tessaron
