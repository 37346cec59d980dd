#include "platform/discrecording/names/UnicodeNames.h"

#include "platform/discrecording/names/UniqueNames.h"
#include "platform/discrecording/names/Utf8Names.h"

namespace Tessaron
{

std::u16string unicodeName(std::string_view rawName, bool (*isRefused)(char32_t))
{
    std::u16string result;
    result.reserve(rawName.size());
    for (std::size_t at = 0; at < rawName.size();) {
        const NameCharacter character = nameCharacterAt(rawName, at);
        at += character.byteCount;
        if (character.codePoint == 0xFFFD || isRefused(character.codePoint)) {
            result += u'_';
        } else if (character.codePoint < 0x10000) {
            result += static_cast<char16_t>(character.codePoint);
        } else {
            const char32_t offset = character.codePoint - 0x10000;
            result += static_cast<char16_t>(0xD800 + (offset >> 10));
            result += static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
        }
    }
    return result;
}

std::u16string nameCutTo(std::u16string name, std::size_t limit, bool isFolder)
{
    if (name.size() <= limit)
        return name;
    const std::size_t extensionStart = isFolder ? name.size() : startOfExtension<char16_t>(name);
    const std::u16string extension = name.substr(extensionStart);
    if (extension.size() >= limit)
        name.resize(lengthWithoutSplitPair<char16_t>(name, limit));
    else
        name.replace(lengthWithoutSplitPair<char16_t>(name, limit - extension.size()), name.npos, extension);
    return name;
}

bool isEmptyOrDots(std::u16string_view name)
{
    return name.empty() || name == u"." || name == u"..";
}

} // namespace Tessaron
