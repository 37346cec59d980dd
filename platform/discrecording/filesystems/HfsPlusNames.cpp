#include "platform/discrecording/filesystems/HfsPlusNames.h"

#include "platform/discrecording/filesystems/UnicodeNames.h"

#include <QString>

#include <algorithm>

namespace Tessaron
{

std::u16string hfsPlusName(std::string_view rawName, bool isFolder)
{
    const std::u16string composed = unicodeName(rawName, [](char32_t codePoint) { return codePoint == 0; });
    if (composed.empty())
        return u"_";
    std::u16string name = QString::fromStdU16String(composed).normalized(QString::NormalizationForm_D).toStdU16String();
    std::ranges::replace(name, u'/', u'_');
    std::ranges::replace(name, u':', u'/');
    return nameCutTo(name, 255, isFolder);
}

std::u16string hfsPlusNameKey(const std::u16string &name)
{
    return QString::fromStdU16String(name).toCaseFolded().toStdU16String();
}

} // namespace Tessaron
