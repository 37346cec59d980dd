#include "platform/discrecording/iso9660/DescriptorText.h"

#include "platform/discrecording/names/UniqueNames.h"
#include "platform/discrecording/names/Utf8Names.h"

namespace Tessaron
{

namespace
{

bool isDCharacter(char32_t character)
{
    return (character >= U'A' && character <= U'Z') || (character >= U'0' && character <= U'9') || character == U'_';
}

std::string allowedCharacters(std::string_view text, std::size_t limit, std::string_view further)
{
    std::string result;
    for (std::size_t at = 0; at < text.size() && result.size() < limit;) {
        const NameCharacter character = nameCharacterAt(text, at);
        at += character.byteCount;
        char32_t value = character.codePoint;
        if (value >= U'a' && value <= U'z')
            value = value - U'a' + U'A';
        const bool isAllowed =
            isDCharacter(value) || (value < 0x80 && further.find(static_cast<char>(value)) != further.npos);
        result += isAllowed ? static_cast<char>(value) : '_';
    }
    return result;
}

} // namespace

std::string dCharacters(std::string_view text, std::size_t limit)
{
    return allowedCharacters(text, limit, {});
}

std::string aCharacters(std::string_view text, std::size_t limit)
{
    return allowedCharacters(text, limit, " !\"%&'()*+,-./:;<=>?");
}

std::u16string jolietCharacters(std::string_view text, std::size_t limit)
{
    std::u16string result;
    for (std::size_t at = 0; at < text.size();) {
        const NameCharacter character = nameCharacterAt(text, at);
        at += character.byteCount;
        const char32_t value = character.codePoint;
        const bool isRefused =
            value < 0x20 || value == 0xFFFD || std::u32string_view(U"*/:;?\\").find(value) != std::u32string_view::npos;
        if (isRefused) {
            result += u'_';
        } else if (value < 0x10000) {
            result += static_cast<char16_t>(value);
        } else {
            result += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            result += static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
        }
    }
    result.resize(lengthWithoutSplitPair<char16_t>(result, limit));
    return result;
}

} // namespace Tessaron
