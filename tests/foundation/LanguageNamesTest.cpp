#include "platform/foundation/LanguageNames.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

/// The names as a user of this language reads them.
class NamesFor
{
public:
    explicit NamesFor(QLocale::Language language) { QLocale::setDefault(QLocale(language)); }
    ~NamesFor() { QLocale::setDefault(m_before); }
    NamesFor(const NamesFor &) = delete;
    NamesFor &operator=(const NamesFor &) = delete;

private:
    const QLocale m_before;
};

} // namespace

TEST(LanguageNames, areEnglish_forUsersOfEnglish)
{
    const NamesFor users(QLocale::English);
    EXPECT_EQ(languageName("de"), QStringLiteral("German"));
    EXPECT_EQ(languageName("en"), QStringLiteral("English"));
    EXPECT_EQ(languageName("es"), QStringLiteral("Spanish"));
}

TEST(LanguageNames, areTheLanguagesOwn_forOtherUsers_withoutACountry)
{
    const NamesFor users(QLocale::German);
    EXPECT_EQ(languageName("de"), QStringLiteral("Deutsch"));
    EXPECT_EQ(languageName("en"), QStringLiteral("English"));
    EXPECT_EQ(languageName("es"), QStringLiteral("español"));
    EXPECT_EQ(languageName("zh"), QStringLiteral("中文"));
}

TEST(LanguageNames, areEmpty_forCodesOfNoLanguage)
{
    EXPECT_EQ(languageName(""), QString());
    EXPECT_EQ(languageName("q?"), QString());
}
