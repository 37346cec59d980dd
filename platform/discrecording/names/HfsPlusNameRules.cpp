#include "platform/discrecording/names/HfsPlusNameRules.h"

#include "platform/discrecording/names/HfsPlusCaseFolding.h"
#include "platform/discrecording/names/HfsPlusDecomposition.h"
#include "platform/discrecording/names/UnicodeNames.h"

#include <algorithm>

namespace Tessaron
{

std::u16string hfsPlusName(std::string_view rawName, bool isFolder)
{
    // U+FFFF counts as NUL in comparisons, and NUL begins the names of what the volume keeps for itself.
    const std::u16string composed =
        unicodeName(rawName, [](char32_t codePoint) { return codePoint == 0 || codePoint == 0xFFFF; });
    std::u16string name = hfsPlusDecomposed(composed);
    std::ranges::replace(name, u'/', u'_');
    std::ranges::replace(name, u':', u'/');
    name = nameCutTo(name, 255, isFolder);
    // A name of which nothing counts would be the same as the empty one, which the catalog needs itself.
    return hfsPlusFoldedName(name).empty() ? u"_" : name;
}

std::u16string hfsPlusNameKey(const std::u16string &name)
{
    return hfsPlusFoldedName(name);
}

} // namespace Tessaron
