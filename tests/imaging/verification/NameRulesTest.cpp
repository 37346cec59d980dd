#include "imaging/verification/NameRules.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

struct NameCase {
    VolumeKind kind;
    const char *recorded;
    const char *source;
    bool mayBe;
};

TEST(NameRules, mayBeNameOf_acceptsWhatTheFilesystemHadToChange_andNothingElse)
{
    const NameCase cases[] = {
        {VolumeKind::RockRidge, "a_", "a?", false}, // keeps every name
        {VolumeKind::Joliet, "a_.txt", "a?.txt", true},
        {VolumeKind::Joliet, "a__1.txt", "a?.txt", true},
        {VolumeKind::Joliet, "readme_1", "readme", true},
        {VolumeKind::Joliet, "readme_x", "readme", false},
        {VolumeKind::Joliet, "reedme", "readme", false},
        {VolumeKind::Joliet, "r_adme", "readme", false}, // nothing in it needs to be replaced
        {VolumeKind::Joliet, "b_.txt", "a?.txt", false},
        {VolumeKind::Joliet, "a_.txd", "a?.txt", false},
        {VolumeKind::UDF, "bad_.txt", "bad\xff.txt", true},
        {VolumeKind::UDF, "what_", "what?", false}, // UDF holds a question mark
        {VolumeKind::HFSPlus, "readme_1", "readme", true},
        {VolumeKind::HFSPlus, "a_", "a?", false},
        {VolumeKind::ISO9660, "README.TXT", "readme.txt", true},
        {VolumeKind::ISO9660, "README.TXT", "reedme.txt", false},
        {VolumeKind::ISO9660, "FILE3", "file1", false},
        {VolumeKind::ISO9660, "FILE1_2", "file1", true},
        {VolumeKind::ISO9660, "GR__E.TXT",
         "Gr\xc3\xbc\xc3\x9f"
         "e.txt",
         true},
        {VolumeKind::ISO9660, "TWO_WORDS.TXT", "two words.txt", true},
        {VolumeKind::ISO9660, "OTHER_WORDS.TXT", "two words.txt", false},
    };
    for (const NameCase &one : cases)
        EXPECT_EQ(mayBeNameOf(one.kind, one.recorded, one.source), one.mayBe)
            << int(one.kind) << ' ' << one.recorded << ' ' << one.source;
}

TEST(NameRules, nameKey_isTheSame_forTheSourceAndItsRecordedName)
{
    EXPECT_EQ(nameKey(VolumeKind::Joliet, "a?b\xff.txt"), "a_b_.txt");
    EXPECT_EQ(nameKey(VolumeKind::Joliet, "a_b_.txt"), "a_b_.txt");
    EXPECT_EQ(nameKey(VolumeKind::Joliet, "smile \xf0\x9f\x98\x80"), "smile \xf0\x9f\x98\x80");
    EXPECT_EQ(nameKey(VolumeKind::Joliet, std::string(150, 'n') + ".txt"), QByteArray(99, 'n') + ".txt");
    EXPECT_EQ(nameKey(VolumeKind::HFSPlus, "u\xcc\x88"), "\xc3\xbc");
    EXPECT_EQ(nameKey(VolumeKind::ISO9660, "my file.tar.gz"), nameKey(VolumeKind::ISO9660, "MY_FILE_TAR.GZ"));
    EXPECT_EQ(nameWithoutNumber("readme_12.txt"), "readme.txt");
    EXPECT_EQ(nameWithoutNumber("_12.txt"), "_12.txt");
    EXPECT_EQ(nameWithoutNumber("readme12"), "readme12");
}

TEST(NameRules, mustChangeName_knowsWhatEachFilesystemHolds)
{
    EXPECT_FALSE(mustChangeName(VolumeKind::Joliet,
                                "Gr\xc3\xbc\xc3\x9f"
                                "e.txt"));
    EXPECT_TRUE(mustChangeName(VolumeKind::Joliet, "what?"));
    EXPECT_TRUE(mustChangeName(VolumeKind::Joliet, std::string(104, 'n')));
    EXPECT_FALSE(mustChangeName(VolumeKind::UDF, "what?"));
    EXPECT_FALSE(mustChangeName(VolumeKind::UDF, std::string(254, 'n')));
    EXPECT_TRUE(mustChangeName(VolumeKind::UDF, std::string(255, 'n')));
    EXPECT_TRUE(mustChangeName(VolumeKind::HFSPlus, "\xff"));
    EXPECT_FALSE(mustChangeName(VolumeKind::RockRidge, "\xff"));
}

} // namespace

} // namespace Tessaron
