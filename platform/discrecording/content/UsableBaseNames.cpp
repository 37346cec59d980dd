#include "platform/discrecording/content/UsableBaseNames.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::size_t longestExtension = 16;

/// Where the extension begins, its dot included; the name's size when it has no extension of sensible length.
std::size_t extensionStart(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    return dot != name.npos && dot > 0 && name.size() - dot <= longestExtension ? dot : name.size();
}

/// Stem, tail and extension, the stem cut so that all fits.
std::string withinLimit(std::string_view stem, std::string_view tail, std::string_view extension)
{
    std::size_t room = std::min(stem.size(), longestBaseName - tail.size() - extension.size());
    const auto isContinuationByte = [&](std::size_t at) {
        return at < stem.size() && (static_cast<unsigned char>(stem[at]) & 0xC0) == 0x80;
    };
    // At most three steps back: bytes that are not UTF-8 are cut where they are.
    for (int steps = 0; steps < 3 && room > 0 && isContinuationByte(room); ++steps)
        --room;
    return std::string(stem.substr(0, room)).append(tail).append(extension);
}

} // namespace

bool isUsableBaseName(std::string_view name)
{
    return !name.empty() && name.size() <= longestBaseName && name != "." && name != ".." && name.find('/') == name.npos
        && name.find('\0') == name.npos;
}

std::string usableBaseName(std::string_view name)
{
    std::string result(name);
    std::replace(result.begin(), result.end(), '/', '_');
    std::replace(result.begin(), result.end(), '\0', '_');
    if (result.empty() || result == "." || result == "..")
        return std::string(std::max<std::size_t>(result.size(), 1), '_');
    if (result.size() <= longestBaseName)
        return result;
    const std::size_t dot = extensionStart(result);
    return withinLimit(std::string_view(result).substr(0, dot), {}, std::string_view(result).substr(dot));
}

std::string numberedBaseName(std::string_view name, unsigned int number)
{
    const std::size_t dot = extensionStart(name);
    return withinLimit(name.substr(0, dot), "_" + std::to_string(number), name.substr(dot));
}

} // namespace Tessaron
