#include "platform/foundation/NSBundle.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>
#include <TessaronClasses/TessaronLocalization.h>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

namespace
{

/// A main bundle and a root for the file manager's bundle, which a test fills before the first text is asked for.
class Localization : public testing::Test
{
protected:
    void SetUp() override
    {
        NSBundle::setMainBundlePath(m_tree.pathText("main"));
        NSBundle::setSystemRoot(m_tree.pathText("root"));
        NSBundle::frameworkBundle()->setPreferredLanguages({QStringLiteral("en")});
    }

    void makeMainTable(const QByteArray &table) const { m_tree.makeFile("main/Resources/Localizable.strings", table); }

    void makeFinderTable(const QByteArray &table) const
    {
        m_tree.makeFile("root/System/Library/CoreServices/Finder.app/Resources/Localizable.strings", table);
    }

private:
    TemporaryTree m_tree;
};

const QString udf = QStringLiteral("UDF");

} // namespace

TEST_F(Localization, localizedStringForFS_isNull_forNothing)
{
    EXPECT_TRUE(localizedStringForFS(udf, 0).isNull());
    EXPECT_TRUE(localizedStringForFS(QString(), 3).isNull());
}

TEST_F(Localization, localizedStringForFS_putsNumberAndNameWhereTheTranslationWantsThem)
{
    makeMainTable("\"1 %type% track\" = \"one %@ track\";\n"
                  "\"n %type% tracks\" = \"%d %@ tracks\";\n"
                  "\"UDF\" = \"Universal %d\";\n");
    EXPECT_EQ(localizedStringForFS(udf, 1), QStringLiteral("one Universal %d track"));
    EXPECT_EQ(localizedStringForFS(udf, 3), QStringLiteral("3 Universal %d tracks"));
    EXPECT_EQ(localizedStringForFS(udf, -2), QStringLiteral("-2 Universal %d tracks"));
}

TEST_F(Localization, localizedStringForFS_takesTheNameFirst_whereItStandsFirst)
{
    makeMainTable("\"n %type% tracks\" = \"%@: %d (100%%)\";\n");
    EXPECT_EQ(localizedStringForFS(udf, 12), QStringLiteral("UDF: 12 (100%)"));
}

TEST_F(Localization, localizedStringForFS_fillsPositionsIn)
{
    makeMainTable("\"1 %type% track\" = \"(%1$@)\";\n"
                  "\"n %type% tracks\" = \"%2$@ by %1$d, %1$ and %2 and 100%%\";\n");
    EXPECT_EQ(localizedStringForFS(udf, 1), QStringLiteral("(UDF)"));
    EXPECT_EQ(localizedStringForFS(udf, 7), QStringLiteral("UDF by 7, %1$ and %2 and 100%"));
}

TEST_F(Localization, localizedStringForFS_showsTheKey_withoutATranslation)
{
    EXPECT_EQ(localizedStringForFS(udf, 1), QStringLiteral("1 %type% track"));
    EXPECT_EQ(localizedStringForFS(udf, 2), QStringLiteral("n %type% tracks"));
}

TEST_F(Localization, localizedDiscImageName_isLookedUpByExtension)
{
    makeMainTable("\"disc image type iso\" = \"ISO image\";\n");
    EXPECT_EQ(localizedDiscImageNameForTessaronDiscImageFormat(TessaronDiscImageFormatISO),
              QStringLiteral("ISO image"));
    EXPECT_EQ(localizedDiscImageNameForTessaronDiscImageFormat(TessaronDiscImageFormatBIN),
              QStringLiteral("disc image type bin"));
}

TEST_F(Localization, localizedDiscImageName_looksTheFilledKeyUp_forAnUnknownFormat)
{
    EXPECT_EQ(localizedDiscImageNameForTessaronDiscImageFormat(3), QStringLiteral("disc image type (null)"));
    makeMainTable("\"disc image type (null)\" = \"Disc image\";\n");
    NSBundle::setMainBundlePath(NSBundle::mainBundle()->bundlePath());
    EXPECT_EQ(localizedDiscImageNameForTessaronDiscImageFormat(3), QStringLiteral("Disc image"));
    EXPECT_EQ(localizedDiscImageNameForTessaronDiscImageFormat(0), QStringLiteral("Disc image"));
}

TEST_F(Localization, defaults_areEnglish_withoutAnyTable)
{
    EXPECT_EQ(untitledFolderLocalizedString(), QStringLiteral("untitled folder"));
    EXPECT_EQ(untitledDiscLocalizedString(), QStringLiteral("untitled disc"));
    EXPECT_EQ(burnLocalizedString(), QStringLiteral("burn"));
}

TEST_F(Localization, finderTable_fillsInWhereTheApplicationHasNoWord)
{
    makeFinderTable("\"N2\" = \"new folder\";\n"
                    "\"BN7\" = \"Burn\";\n"
                    "\"BN20.1\" = \"<^0 ^0>\";\n"
                    "\"BN20.2\" = \"empty\";\n");
    EXPECT_EQ(untitledFolderLocalizedString(), QStringLiteral("new folder"));
    EXPECT_EQ(burnLocalizedString(), QStringLiteral("Burn"));
    EXPECT_EQ(untitledDiscLocalizedString(), QStringLiteral("<empty empty>"));
}

TEST_F(Localization, untitledDisc_isTheDefault_whereTheFinderHasHalfOfIt)
{
    makeFinderTable("\"BN20.1\" = \"<^0>\";\n");
    EXPECT_EQ(untitledDiscLocalizedString(), QStringLiteral("untitled disc"));
}

TEST_F(Localization, applicationsAndFrameworksWords_comeFirst)
{
    makeMainTable("\"toolbar burn\" = \"Write\";\n");
    makeFinderTable("\"BN7\" = \"Burn\";\n\"BN20.1\" = \"^0\";\n\"BN20.2\" = \"empty\";\n");
    NSBundle::frameworkBundle()->setPreferredLanguages({QStringLiteral("de")});
    EXPECT_EQ(burnLocalizedString(), QStringLiteral("Write"));
    EXPECT_EQ(untitledDiscLocalizedString(), QStringLiteral("Unbenannte CD"));
}

TEST_F(Localization, finderTexts_areTheirKeys_whereTheFinderLacksThem)
{
    makeFinderTable("\"X\" = \"x\";\n");
    EXPECT_EQ(untitledFolderLocalizedString(), QStringLiteral("N2"));
    EXPECT_EQ(burnLocalizedString(), QStringLiteral("BN7"));
}
