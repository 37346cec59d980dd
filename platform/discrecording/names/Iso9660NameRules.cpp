#include "platform/discrecording/names/Iso9660NameRules.h"

#include "platform/discrecording/names/Utf8Names.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Tessaron
{

namespace
{

constexpr std::array<char, 128> makeDCharacterTable()
{
    std::array<char, 128> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const char character = static_cast<char>(byte);
        const bool isLower = character >= 'a' && character <= 'z';
        const bool isAllowed = (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
        table[byte] = isLower ? static_cast<char>(character - 'a' + 'A') : isAllowed ? character : '_';
    }
    return table;
}
constexpr std::array<char, 128> dCharacters = makeDCharacterTable();

/// Appends up to `limit` characters of the raw name as d-characters.
void appendDCharacters(std::string &result, std::string_view rawName, std::size_t limit)
{
    for (std::size_t at = 0, count = 0; at < rawName.size() && count < limit; ++count) {
        const auto byte = static_cast<unsigned char>(rawName[at]);
        if (byte < 0x80) {
            result += dCharacters[byte];
            ++at;
        } else {
            result += '_';
            at += nameCharacterAt(rawName, at).byteCount;
        }
    }
}

std::size_t characterCount(std::string_view rawName)
{
    std::size_t count = 0;
    for (std::size_t at = 0; at < rawName.size(); ++count)
        at += nameCharacterAt(rawName, at).byteCount;
    return count;
}

/// Where the dot is that separates name and extension; npos when there is no extension.
std::size_t separatorOf(std::string_view rawName)
{
    const std::size_t dot = rawName.rfind('.');
    const std::size_t nameStart = rawName.find_first_not_of('.');
    if (dot == std::string_view::npos || nameStart == std::string_view::npos || dot < nameStart)
        return std::string_view::npos;
    // No sensible extension has more bytes than this; counting the characters of longer ones is not needed.
    if (rawName.size() - dot - 1 > longestSensibleExtension * 4)
        return std::string_view::npos;
    return characterCount(rawName.substr(dot + 1)) > longestSensibleExtension ? std::string_view::npos : dot;
}

} // namespace

std::string iso9660FileName(std::string_view rawName, Iso9660Level level)
{
    const std::size_t separator = separatorOf(rawName);
    const std::string_view stem = rawName.substr(0, separator);
    std::string extension;
    if (separator != std::string_view::npos)
        appendDCharacters(extension, rawName.substr(separator + 1),
                          level == Iso9660Level::One ? 3 : longestSensibleExtension);

    std::string result;
    appendDCharacters(result, stem, level == Iso9660Level::One ? 8 : 30 - extension.size());
    if (!extension.empty())
        result.append(1, '.').append(extension);
    return result.empty() ? std::string("_") : result;
}

std::string iso9660FolderName(std::string_view rawName, Iso9660Level level)
{
    std::string result;
    appendDCharacters(result, rawName, level == Iso9660Level::One ? 8 : 31);
    return result.empty() ? std::string("_") : result;
}

} // namespace Tessaron
