#include "platform/discrecording/names/Iso9660NameRules.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace std::string_literals;

namespace
{

struct Row {
    std::string raw;
    std::string levelOne;
    std::string levelTwo;
};

} // namespace

TEST(Iso9660Names, iso9660FileName_mapsAndCuts)
{
    const Row rows[] = {
        {"readme.txt", "README.TXT", "README.TXT"},
        {"README", "README", "README"},
        {"README.", "README", "README"},
        {"longfilename.html", "LONGFILE.HTM", "LONGFILENAME.HTML"},
        {"a.b.c", "A_B.C", "A_B.C"},
        {".bashrc", "_BASHRC", "_BASHRC"},
        {".config.json", "_CONFIG.JSO", "_CONFIG.JSON"},
        {"...", "___", "___"},
        {".", "_", "_"},
        {"", "_", "_"},
        {"..x", "__X", "__X"},
        {"my file-1.txt", "MY_FILE_.TXT", "MY_FILE_1.TXT"},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80.txt", "___.TXT", "___.TXT"}, // ä, €, an emoji: one "_" each
        {"bad\xFF\xC3.bin", "BAD__.BIN", "BAD__.BIN"}, // a byte that is not UTF-8 is a character
        {"a\x01\x7F.b", "A__.B", "A__.B"},
        {std::string(200, 'x'), "XXXXXXXX", std::string(30, 'X')},
        {std::string(200, 'x') + ".flac", "XXXXXXXX.FLA", std::string(26, 'X') + ".FLAC"},
        {"Mr. Smith goes to Washington", "MR__SMIT", "MR__SMITH_GOES_TO_WASHINGTON"},
        {"x.abcdefghijklmno", "X.ABC", "X.ABCDEFGHIJKLMNO"},
        {std::string(100, 'y') + ".abcdefghijklmno", "YYYYYYYY.ABC", std::string(15, 'Y') + ".ABCDEFGHIJKLMNO"},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(iso9660FileName(row.raw, Iso9660Level::One), row.levelOne) << row.raw;
        EXPECT_EQ(iso9660FileName(row.raw, Iso9660Level::Two), row.levelTwo) << row.raw;
        EXPECT_EQ(iso9660FileName(row.raw, Iso9660Level::Three), row.levelTwo) << row.raw;
    }
}

TEST(Iso9660Names, iso9660FolderName_hasNoDotAndIsCut)
{
    const Row rows[] = {
        {"Photos.2024", "PHOTOS_2", "PHOTOS_2024"},
        {"", "_", "_"},
        {"..", "__", "__"},
        {std::string(40, 'z'), "ZZZZZZZZ", std::string(31, 'Z')},
        {"\xC3\x9C"
         "bung",
         "_BUNG", "_BUNG"},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(iso9660FolderName(row.raw, Iso9660Level::One), row.levelOne) << row.raw;
        EXPECT_EQ(iso9660FolderName(row.raw, Iso9660Level::Two), row.levelTwo) << row.raw;
    }
}

TEST(Iso9660Names, iso9660FileName_isLegal_forEveryByteAndPair)
{
    const auto isLegal = [](const std::string &name, std::size_t stem, std::size_t extension) {
        const std::size_t dot = name.find('.');
        const std::string first = name.substr(0, dot);
        const std::string second = dot == std::string::npos ? "" : name.substr(dot + 1);
        const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
        return !first.empty() && first.size() <= stem && second.size() <= extension
            && first.find_first_not_of(allowed) == std::string::npos
            && second.find_first_not_of(allowed) == std::string::npos && (dot == std::string::npos || !second.empty());
    };
    for (int one = 0; one < 256; ++one) {
        for (int two = 0; two < 256; ++two) {
            const std::string raw{static_cast<char>(one), static_cast<char>(two)};
            ASSERT_TRUE(isLegal(iso9660FileName(raw, Iso9660Level::One), 8, 3)) << one << ' ' << two;
            ASSERT_TRUE(isLegal(iso9660FileName("a." + raw, Iso9660Level::One), 8, 3)) << one << ' ' << two;
            ASSERT_TRUE(isLegal(iso9660FolderName(raw, Iso9660Level::Two), 31, 0)) << one << ' ' << two;
        }
    }
}
