#include "imaging/verification/NameRules.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

// A row reads best in this order.
struct NameCase { // NOLINT(clang-analyzer-optin.performance.Padding)
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
        {VolumeKind::Joliet, "name_", "name.", true}, // some writers replace a dot at the end, others keep it
        {VolumeKind::Joliet, "name.", "name.", true},
        {VolumeKind::Joliet, "name__1", "name ", true},
        {VolumeKind::Joliet, "name", "name.", false},
        {VolumeKind::UDF, "name_", "name.", false},
        {VolumeKind::UDF, "bad_.txt", "bad\xff.txt", true},
        {VolumeKind::UDF, "what_", "what?", false}, // UDF holds a question mark
        {VolumeKind::HFSPlus, "readme_1", "readme", true},
        {VolumeKind::HFSPlus, "a_", "a?", false},
        {VolumeKind::HFSPlus, "_", "\xe2\x80\x8c\xef\xbb\xbf", true}, // nothing that the catalog compares
        {VolumeKind::HFSPlus, "u\xcc\x88_", "\xc3\xbc\xff", true},
        {VolumeKind::ISO9660, "README.TXT", "readme.txt", true},
        {VolumeKind::ISO9660, "CONF_D", "conf.d", true}, // a folder
        {VolumeKind::ISO9660, "CONF_D_2", "conf.d", true},
        {VolumeKind::ISO9660, "CONF_E", "conf.d", false},
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
        EXPECT_EQ(mayBeNameOf(one.kind, ComparableName(one.kind, one.recorded), ComparableName(one.kind, one.source)),
                  one.mayBe)
            << int(one.kind) << ' ' << one.recorded << ' ' << one.source;
}

TEST(NameRules, formOfName_isTheSame_forTheSourceAndItsRecordedName)
{
    EXPECT_EQ(formOfName(VolumeKind::Joliet, "a?b\xff.txt"), QStringLiteral("a_b_.txt"));
    EXPECT_EQ(formOfName(VolumeKind::Joliet, "a_b_.txt"), QStringLiteral("a_b_.txt"));
    EXPECT_EQ(formOfName(VolumeKind::Joliet, "smile \xf0\x9f\x98\x80"), QString::fromUtf8("smile \xf0\x9f\x98\x80"));
    EXPECT_EQ(formOfName(VolumeKind::UDF, "what?"), QStringLiteral("what?"));
    EXPECT_EQ(formOfName(VolumeKind::HFSPlus, "\xc3\xbc"), QString::fromUtf8("u\xcc\x88"));
    EXPECT_EQ(formOfName(VolumeKind::ISO9660, "my file.tar.gz"), formOfName(VolumeKind::ISO9660, "MY_FILE_TAR.GZ"));
}

TEST(NameRules, formsWithoutNumber_areThoseBeforeAndAtTheExtension)
{
    using Forms = std::vector<QString>;
    EXPECT_EQ(formsWithoutNumber(QStringLiteral("readme_12.txt")), Forms({QStringLiteral("readme.txt")}));
    EXPECT_EQ(formsWithoutNumber(QStringLiteral("conf.d_1")), Forms({QStringLiteral("conf.d")}));
    EXPECT_EQ(formsWithoutNumber(QStringLiteral("readme12")), Forms());
    EXPECT_EQ(formsWithoutNumber(QStringLiteral("readme_0")), Forms());
}

TEST(NameRules, longNames_areCutOnlyAsFarAsNeeded)
{
    const auto mayBe = [](VolumeKind kind, const std::string &recorded, const std::string &source) {
        return mayBeNameOf(kind, ComparableName(kind, recorded), ComparableName(kind, source));
    };
    const std::string name(150, 'n');
    EXPECT_TRUE(mayBe(VolumeKind::Joliet, name.substr(0, 99) + ".txt", name + ".txt"));
    EXPECT_TRUE(mayBe(VolumeKind::Joliet, name.substr(0, 97) + "_1.txt", name + ".txt"));
    EXPECT_TRUE(
        mayBe(VolumeKind::Joliet, name.substr(0, 102) + "_", name.substr(0, 102) + ". a longer name than that"));
    EXPECT_FALSE(mayBe(VolumeKind::Joliet, name.substr(0, 20) + ".txt", name + ".txt"));
    // Cut to 103 units, it seems to have an extension, which its number comes before.
    const std::string longExtension = name.substr(0, 92) + "." + std::string(20, 'e');
    EXPECT_TRUE(mayBe(VolumeKind::Joliet, name.substr(0, 90) + "_1." + std::string(10, 'e'), longExtension));
    EXPECT_FALSE(mayBe(VolumeKind::Joliet, name.substr(0, 90) + "_1." + std::string(10, 'f'), longExtension));
    const std::string dots = name.substr(0, 101) + "..." + name;
    EXPECT_TRUE(mayBe(VolumeKind::Joliet, name.substr(0, 99) + "_1._", dots));
    EXPECT_FALSE(mayBe(VolumeKind::HFSPlus, name.substr(0, 99) + ".txt", name + ".txt"));
}

} // namespace

} // namespace Tessaron
