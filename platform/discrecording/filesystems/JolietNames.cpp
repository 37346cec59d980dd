#include "platform/discrecording/filesystems/JolietNames.h"

#include "platform/discrecording/filesystems/UniqueNames.h"
#include "platform/discrecording/filesystems/Utf8Names.h"

namespace Tessaron
{

namespace
{

constexpr bool isAllowed(char32_t codePoint)
{
    switch (codePoint) {
    case U'*':
    case U'/':
    case U':':
    case U';':
    case U'?':
    case U'\\':
    case U'\xFFFD':
        return false;
    default:
        return codePoint >= 0x20;
    }
}

std::u16string allowedUnits(std::string_view rawName)
{
    std::u16string result;
    result.reserve(rawName.size());
    for (std::size_t at = 0; at < rawName.size();) {
        const NameCharacter character = nameCharacterAt(rawName, at);
        at += character.byteCount;
        if (!isAllowed(character.codePoint)) {
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

} // namespace

std::u16string jolietName(std::string_view rawName, bool isFolder)
{
    std::u16string name = allowedUnits(rawName);
    // Every folder has "." and ".." already.
    if (name.empty() || name == u"." || name == u"..")
        return std::u16string(std::max<std::size_t>(name.size(), 1), u'_');
    if (name.size() <= jolietNameLimit)
        return name;
    const std::size_t extensionStart = isFolder ? name.size() : startOfExtension<char16_t>(name);
    const std::u16string extension = name.substr(extensionStart);
    name.resize(lengthWithoutSplitPair<char16_t>(name, jolietNameLimit - extension.size()));
    return name + extension;
}

std::u16string jolietVolumeName(std::string_view rawName)
{
    std::u16string name = allowedUnits(rawName);
    name.resize(lengthWithoutSplitPair<char16_t>(name, jolietVolumeNameLimit));
    return name;
}

} // namespace Tessaron
