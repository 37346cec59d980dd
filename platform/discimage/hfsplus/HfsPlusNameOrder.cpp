#include "platform/discimage/hfsplus/HfsPlusNameOrder.h"

#include "platform/foundation/ByteOrder.h"

#include <QChar>

#include <algorithm>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::size_t unitSize = 2;

bool isIgnored(char16_t unit)
{
    return (unit >= 0x200C && unit <= 0x200F) || (unit >= 0x202A && unit <= 0x202E)
        || (unit >= 0x206A && unit <= 0x206F) || unit == 0xFEFF;
}

/// Scripts that had two cases when the order was fixed: Latin, Greek, Cyrillic and Armenian, Roman numerals, full-width
/// Latin; not what was added to Cyrillic then, nor the letters in circles.
bool isOfCasedScript(char16_t unit)
{
    const bool isLateCyrillic = unit >= 0x04D0 && unit <= 0x04FF;
    return !isLateCyrillic
        && (unit < 0x0200 || (unit >= 0x0300 && unit < 0x0600) || (unit >= 0x2100 && unit < 0x2200) || unit >= 0xFF00);
}

/// The unit that counts for another one in a comparison; 0 for what does not count. It follows from what Unicode knew
/// at version 2: letters that decompose are left out, since names are stored decomposed.
char16_t countingUnit(char16_t unit)
{
    if (unit == 0)
        return 0xFFFF; // so that names that the volume keeps for itself come last
    if (isIgnored(unit))
        return 0;
    constexpr char16_t georgianDistance = 0x30; // Georgian got other small letters later
    if (unit >= 0x10A0 && unit <= 0x10C5)
        return static_cast<char16_t>(unit + georgianDistance);
    constexpr char16_t yr = 0x01A6; // a capital without a small letter then
    if (!isOfCasedScript(unit) || unit == yr || QChar::decompositionTag(unit) == QChar::Canonical)
        return unit;
    const char32_t small = QChar::toLower(char32_t(unit));
    const auto isOld = [](char32_t letter) { return QChar::unicodeVersion(letter) <= QChar::Unicode_2_0; };
    return small <= 0xFFFF && isOld(unit) && isOld(small) ? static_cast<char16_t>(small) : unit;
}

std::vector<char16_t> makeTable()
{
    std::vector<char16_t> table(0x10000);
    for (std::uint32_t unit = 0; unit < table.size(); ++unit)
        table[unit] = countingUnit(static_cast<char16_t>(unit));
    return table;
}

/// Gives the units of a name that count, one by one, and 0 for ever behind the last.
class CountingUnits
{
public:
    explicit CountingUnits(std::span<const std::uint8_t> name)
        : m_name(name)
    {
    }

    char16_t next()
    {
        static const std::vector<char16_t> table = makeTable();
        for (; m_at + unitSize <= m_name.size(); m_at += unitSize) {
            if (const char16_t unit = table[loadBigEndian<std::uint16_t>(&m_name[m_at])]) {
                m_at += unitSize;
                return unit;
            }
        }
        return 0;
    }

private:
    const std::span<const std::uint8_t> m_name;
    std::size_t m_at = 0;
};

} // namespace

int compareHfsPlusNames(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other)
{
    CountingUnits ones(one);
    CountingUnits others(other);
    for (;;) {
        const char16_t first = ones.next();
        const char16_t second = others.next();
        if (first != second)
            return first < second ? -1 : 1;
        if (first == 0)
            return 0;
    }
}

int compareHfsxNames(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other)
{
    // Big-endian units are ordered like their bytes.
    if (std::ranges::lexicographical_compare(one, other))
        return -1;
    return std::ranges::equal(one, other) ? 0 : 1;
}

} // namespace Tessaron
