#include "platform/discrecording/names/UniqueNames.h"

#include "platform/discrecording/names/HfsPlusNameRules.h"
#include "platform/discrecording/names/Iso9660NameRules.h"

#include <chrono>
#include <gtest/gtest.h>
#include <set>

using namespace Tessaron;

namespace
{

std::vector<std::string> uniqueFileNames(const std::vector<std::string> &names, const NameLimits &limits)
{
    std::vector<SiblingName<char>> siblings;
    siblings.reserve(names.size());
    for (const std::string &name : names)
        siblings.push_back({name, false});
    makeNamesUnique<char>(siblings, limits);
    std::vector<std::string> result;
    result.reserve(siblings.size());
    for (const auto &sibling : siblings)
        result.push_back(sibling.name);
    return result;
}

/// Fails the test unless all are different and within the limits of 8.3.
void expectDistinctLevelOneNames(const std::vector<SiblingName<char>> &siblings)
{
    std::set<std::string> distinct;
    for (const auto &sibling : siblings) {
        const std::size_t dot = sibling.name.find('.');
        const std::size_t extension = dot == std::string::npos ? 0 : sibling.name.size() - dot - 1;
        ASSERT_LE(std::min(dot, sibling.name.size()), 8u) << sibling.name;
        ASSERT_LE(extension, 3u) << sibling.name;
        ASSERT_TRUE(distinct.insert(sibling.name).second) << sibling.name;
    }
}

} // namespace

TEST(UniqueNames, makeNamesUnique_numbersTheLater_andKeepsTheFirst)
{
    EXPECT_EQ(uniqueFileNames({"README.TXT", "A", "README.TXT", "README.TXT", "A"}, iso9660LevelOneLimits),
              (std::vector<std::string>{"README.TXT", "A", "README_1.TXT", "README_2.TXT", "A_1"}));
}

TEST(UniqueNames, makeNamesUnique_cutsTheStem_whereTheNumberNeedsRoom)
{
    EXPECT_EQ(uniqueFileNames({"LONGNAME.TXT", "LONGNAME.TXT"}, iso9660LevelOneLimits).back(), "LONGNA_1.TXT");
    const std::string longest(30, 'X');
    EXPECT_EQ(uniqueFileNames({longest, longest}, iso9660LevelTwoLimits).back(), std::string(28, 'X') + "_1");
    const std::string withExtension = std::string(26, 'X') + ".FLAC";
    EXPECT_EQ(uniqueFileNames({withExtension, withExtension}, iso9660LevelTwoLimits).back(),
              std::string(24, 'X') + "_1.FLAC");
}

TEST(UniqueNames, makeNamesUnique_skipsNamesThatAreTaken_alsoByLaterSiblings)
{
    EXPECT_EQ(uniqueFileNames({"A.B", "A.B", "A_1.B", "A.B"}, iso9660LevelOneLimits),
              (std::vector<std::string>{"A.B", "A_2.B", "A_1.B", "A_3.B"}));
}

TEST(UniqueNames, makeNamesUnique_treatsAFolderLikeAFileOfItsName)
{
    std::vector<SiblingName<char>> siblings{
        {"SRC", false}, {"SRC", true}, {std::string(31, 'D'), true}, {std::string(31, 'D'), true}};
    EXPECT_EQ(makeNamesUnique<char>(siblings, iso9660LevelTwoLimits), 2u);
    EXPECT_EQ(siblings[1].name, "SRC_1");
    EXPECT_EQ(siblings[3].name, std::string(29, 'D') + "_1");
}

TEST(UniqueNames, makeNamesUnique_keepsSurrogatePairsWhole)
{
    std::u16string name;
    while (name.size() < 102)
        name += u"\xD83D\xDE00";
    std::vector<SiblingName<char16_t>> siblings{{name, false}, {name, false}};
    makeNamesUnique<char16_t>(siblings, {101, 101, 101});
    EXPECT_EQ(siblings[1].name, name.substr(0, 98) + u"_1");
}

TEST(UniqueNames, makeNamesUnique_tellsNamesApartByTheirKeys)
{
    std::vector<SiblingName<char16_t>> exact{{u"Readme", false}, {u"README", false}};
    auto folded = exact;
    EXPECT_EQ(makeNamesUnique<char16_t>(exact, jolietLimits), 0u);
    makeNamesUnique<char16_t>(std::span(folded), hfsPlusLimits, hfsPlusNameKey);
    EXPECT_EQ(folded[1].name, u"README_1");
}

TEST(UniqueNames, makeNamesUnique_isLinear_whenAHundredThousandNamesCollide)
{
    constexpr std::size_t count = 100'000;
    const auto start = std::chrono::steady_clock::now();
    // The same name for all; then pairs of names that share what is left of them once a number is appended.
    std::vector<SiblingName<char>> same(count, {"SAMENAME.TXT", false});
    makeNamesUnique<char>(same, iso9660LevelOneLimits);
    std::vector<SiblingName<char>> pairs;
    for (std::size_t index = 0; index < count; ++index) {
        std::string tail = std::to_string(index / 2);
        tail.insert(0, 5 - tail.size(), '0');
        pairs.push_back({"ABC" + tail, false});
    }
    makeNamesUnique<char>(pairs, iso9660LevelOneLimits);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    std::printf("2 x 100,000 colliding names: %.0f ms\n", std::chrono::duration<double, std::milli>(elapsed).count());
    expectDistinctLevelOneNames(same);
    expectDistinctLevelOneNames(pairs);
    EXPECT_LT(elapsed, std::chrono::seconds(10)); // quadratic time would take minutes
}

TEST(UniqueNames, mangling_isFast_forAHundredThousandNames)
{
    const auto start = std::chrono::steady_clock::now();
    std::size_t length = 0;
    for (int index = 0; index < 100'000; ++index)
        length += iso9660FileName("document number " + std::to_string(index) + ".txt", Iso9660Level::Two).size();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    std::printf("100,000 names: %.1f ms\n", std::chrono::duration<double, std::milli>(elapsed).count());
    EXPECT_EQ(length, 100'000u * 20 + (10u * 1 + 90 * 2 + 900 * 3 + 9'000 * 4 + 90'000 * 5));
    EXPECT_LT(elapsed, std::chrono::seconds(5));
}

TEST(UniqueNames, makeNamesUnique_takesLinearTime_whenNamesDifferInCaseAlone)
{
    constexpr std::size_t count = 1u << 15;
    std::vector<SiblingName<char16_t>> siblings;
    for (std::size_t number = 0; number < count; ++number) {
        std::u16string name = u"abcdefghijklmno.txt";
        for (std::size_t letter = 0; letter < 15; ++letter) {
            if ((number >> letter & 1) != 0)
                name[letter] = static_cast<char16_t>(name[letter] - u'a' + u'A');
        }
        siblings.push_back({name, false});
    }
    std::size_t keysMade = 0;
    const auto keyOf = [&](const std::u16string &name) {
        ++keysMade;
        return hfsPlusNameKey(name);
    };
    EXPECT_EQ(makeNamesUnique<char16_t>(std::span(siblings), hfsPlusLimits, keyOf), count - 1);
    EXPECT_LT(keysMade, 12 * count) << "some keys for each name, not one for each pair of names";
    std::set<std::u16string> keys;
    for (const auto &sibling : siblings)
        EXPECT_TRUE(keys.insert(hfsPlusNameKey(sibling.name)).second);
    EXPECT_EQ(siblings[1].name, u"Abcdefghijklmno_1.txt");
    EXPECT_EQ(siblings[2].name, u"aBcdefghijklmno_2.txt");
}

TEST(UniqueNames, makeNamesUnique_stops_whenCancelled)
{
    std::vector<SiblingName<char>> siblings(5'000, SiblingName<char>{"SAME", false});
    std::stop_source stopper;
    stopper.request_stop();
    (void)makeNamesUnique<char>(std::span(siblings), iso9660LevelTwoLimits, {}, stopper.get_token());
    EXPECT_EQ(siblings.back().name, "SAME");
}
