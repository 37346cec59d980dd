#include "platform/discrecording/content/UsableBaseNames.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace std::string_literals;

TEST(UsableBaseNames, usableBaseName_keepsNamesThatAreFine)
{
    for (const std::string &name : {"a"s, "..."s, ".hidden"s, "a b\n"s, "caf\xE9"s, std::string(255, 'x'), " "s})
        EXPECT_EQ(usableBaseName(name), name);
}

TEST(UsableBaseNames, usableBaseName_replacesWhatNoFileCanHave)
{
    EXPECT_EQ(usableBaseName(""), "_");
    EXPECT_EQ(usableBaseName("."), "_");
    EXPECT_EQ(usableBaseName(".."), "__");
    EXPECT_EQ(usableBaseName("AC/DC"), "AC_DC");
    EXPECT_EQ(usableBaseName("a\0b"s), "a_b");
}

TEST(UsableBaseNames, usableBaseName_cutsBeforeTheExtension_notWithinACharacter)
{
    EXPECT_EQ(usableBaseName(std::string(300, 'x') + ".tiff"), std::string(250, 'x') + ".tiff");
    std::string umlauts;
    for (int count = 0; count < 200; ++count)
        umlauts += "\xC3\xA4";
    EXPECT_EQ(usableBaseName(umlauts).size(), 254u);
    EXPECT_EQ(usableBaseName(umlauts + "b.txt").size(), 254u);
    EXPECT_EQ(usableBaseName(std::string(400, '\x80')).size(), 252u) << "bytes that are no UTF-8: three steps back";
}

TEST(UsableBaseNames, numberedBaseName_keepsTheExtensionAndTheLimit)
{
    EXPECT_EQ(numberedBaseName("photo.jpeg", 1), "photo_1.jpeg");
    EXPECT_EQ(numberedBaseName(".profile", 2), ".profile_2");
    EXPECT_EQ(numberedBaseName("folder", 12), "folder_12");
    EXPECT_EQ(numberedBaseName(std::string(255, 'x'), 12), std::string(252, 'x') + "_12");
}
