#include "platform/discrecording/names/HfsPlusCaseFolding.h"

#include <array>
#include <cstdint>

namespace Tessaron
{

namespace
{

/// Every `step`-th unit from `first` to `last` has its small letter `distance` further on.
struct Capitals {
    char16_t first;
    char16_t last;
    std::uint8_t step;
    std::uint8_t distance;
};

// Latin, Greek, Cyrillic, Armenian, Georgian, Roman numerals and full-width letters. What is missing in a row
// decomposes and cannot occur in a name, or became a letter with two cases after the table had been fixed.
constexpr Capitals capitals[] = {
    {0x0041, 0x005A, 1, 32},  {0x00C6, 0x00C6, 1, 32},  {0x00D0, 0x00D8, 8, 32},  {0x00DE, 0x00DE, 1, 32},
    {0x0110, 0x0110, 1, 1},   {0x0126, 0x0126, 1, 1},   {0x0132, 0x0132, 1, 1},   {0x013F, 0x0141, 2, 1},
    {0x014A, 0x0152, 8, 1},   {0x0166, 0x0166, 1, 1},   {0x0181, 0x0181, 1, 210}, {0x0182, 0x0184, 2, 1},
    {0x0186, 0x0186, 1, 206}, {0x0187, 0x0187, 1, 1},   {0x0189, 0x018A, 1, 205}, {0x018B, 0x018B, 1, 1},
    {0x018E, 0x018E, 1, 79},  {0x018F, 0x018F, 1, 202}, {0x0190, 0x0190, 1, 203}, {0x0191, 0x0191, 1, 1},
    {0x0193, 0x0193, 1, 205}, {0x0194, 0x0194, 1, 207}, {0x0196, 0x0196, 1, 211}, {0x0197, 0x0197, 1, 209},
    {0x0198, 0x0198, 1, 1},   {0x019C, 0x019C, 1, 211}, {0x019D, 0x019D, 1, 213}, {0x019F, 0x019F, 1, 214},
    {0x01A2, 0x01A4, 2, 1},   {0x01A7, 0x01A7, 1, 1},   {0x01A9, 0x01A9, 1, 218}, {0x01AC, 0x01AC, 1, 1},
    {0x01AE, 0x01AE, 1, 218}, {0x01B1, 0x01B2, 1, 217}, {0x01B3, 0x01B5, 2, 1},   {0x01B7, 0x01B7, 1, 219},
    {0x01B8, 0x01BC, 4, 1},   {0x01C4, 0x01CA, 3, 2},   {0x01C5, 0x01CB, 3, 1},   {0x01E4, 0x01E4, 1, 1},
    {0x01F1, 0x01F1, 1, 2},   {0x01F2, 0x01F2, 1, 1},   {0x0391, 0x03A1, 1, 32},  {0x03A3, 0x03A9, 1, 32},
    {0x03E2, 0x03EE, 2, 1},   {0x0402, 0x0402, 1, 80},  {0x0404, 0x0406, 1, 80},  {0x0408, 0x040B, 1, 80},
    {0x040F, 0x040F, 1, 80},  {0x0410, 0x0418, 1, 32},  {0x041A, 0x042F, 1, 32},  {0x0460, 0x0474, 2, 1},
    {0x0478, 0x0480, 2, 1},   {0x0490, 0x04BE, 2, 1},   {0x04C3, 0x04C7, 4, 1},   {0x04CB, 0x04CB, 1, 1},
    {0x0531, 0x0556, 1, 48},  {0x10A0, 0x10C5, 1, 48},  {0x2160, 0x216F, 1, 16},  {0xFF21, 0xFF3A, 1, 32},
};

constexpr char16_t ignored[] = {
    0x200C, 0x200D, 0x200E, 0x200F, 0x202A, 0x202B, 0x202C, 0x202D,
    0x202E, 0x206A, 0x206B, 0x206C, 0x206D, 0x206E, 0x206F, 0xFEFF,
};

constexpr std::size_t pageSize = 256;
/// Pages in which any unit folds to another one.
constexpr std::array<std::uint8_t, 10> foldingPages = {0x00, 0x01, 0x03, 0x04, 0x05, 0x10, 0x20, 0x21, 0xFE, 0xFF};

struct FoldingTable {
    std::array<std::uint8_t, pageSize>
        placeOfPage{}; ///< 1 more than the place in `pages`; 0 for a page without letters
    std::array<std::array<char16_t, pageSize>, foldingPages.size()> pages{};
};

constexpr FoldingTable makeTable()
{
    FoldingTable table;
    for (std::size_t place = 0; place < foldingPages.size(); ++place) {
        table.placeOfPage[foldingPages[place]] = static_cast<std::uint8_t>(place + 1);
        for (std::size_t low = 0; low < pageSize; ++low)
            table.pages[place][low] = static_cast<char16_t>(foldingPages[place] * pageSize + low);
    }
    const auto entry = [&table](std::uint32_t unit) -> char16_t & {
        return table.pages[table.placeOfPage[unit / pageSize] - 1u][unit % pageSize];
    };
    for (const Capitals &range : capitals) {
        for (std::uint32_t unit = range.first; unit <= range.last; unit += range.step)
            entry(unit) = static_cast<char16_t>(unit + range.distance);
    }
    for (const char16_t unit : ignored)
        entry(unit) = 0;
    entry(0) = 0xFFFF;
    return table;
}

constexpr FoldingTable table = makeTable();

} // namespace

char16_t hfsPlusFoldedUnit(char16_t unit)
{
    const std::uint8_t place = table.placeOfPage[unit / pageSize];
    return place == 0 ? unit : table.pages[place - 1u][unit % pageSize];
}

std::u16string hfsPlusFoldedName(std::u16string_view name)
{
    std::u16string folded;
    folded.reserve(name.size());
    for (const char16_t unit : name) {
        if (const char16_t counting = hfsPlusFoldedUnit(unit))
            folded += counting;
    }
    return folded;
}

} // namespace Tessaron
