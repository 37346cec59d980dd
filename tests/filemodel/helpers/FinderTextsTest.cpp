#include "platform/foundation/NSBundle.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/ErrorTexts.h>

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

/// A system with a Finder, installed before its first use and for the whole process.
class FinderTexts : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_system = new Testing::TemporaryTree;
        s_system->makeFile("System/Library/CoreServices/Finder.app/Resources/Localizable.strings",
                           "\"NE21\" = \"The name is taken.\";\n"
                           "\"NE22\" = \"Choose another.\";\n"
                           "\"NE23\" = \"You may not.\";\n"
                           "\"RN33\" = \"^0 stays, for ^0 is ^0.\";\n");
        // Paths below "/System/" are looked up below this folder, with or without that first part.
        s_system->makeSymbolicLink("Library", "System/Library");
        NSBundle::setSystemRoot(s_system->pathText());
    }
    static void TearDownTestSuite()
    {
        delete s_system;
        s_system = nullptr;
    }

private:
    static inline Testing::TemporaryTree *s_system = nullptr;
};

} // namespace

TEST_F(FinderTexts, _finderBundle_isTheSameEveryTime)
{
    ASSERT_NE(_finderBundle(), nullptr);
    EXPECT_EQ(_finderBundle(), _finderBundle());
}

TEST_F(FinderTexts, _finderBundle_isLookedUpAgain_whereTheSystemLiesElsewhere)
{
    const QString before = NSBundle::systemRoot();
    const Testing::TemporaryTree empty;
    NSBundle::setSystemRoot(empty.pathText());
    EXPECT_EQ(_finderBundle(), nullptr);
    NSBundle::setSystemRoot(before);
    EXPECT_NE(_finderBundle(), nullptr);
}

TEST_F(FinderTexts, getFailureReason_usesTheFindersWords_forTwoCodes)
{
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -48)), QStringLiteral("The name is taken."));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -5000)), QStringLiteral("You may not."));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -36)), QStringLiteral("OSStatus error (-36)"));
}

TEST_F(FinderTexts, theItemCannotBeRenamed_putsTheNameAtEveryPlace)
{
    EXPECT_EQ(theItemCannotBeRenamedLocalizedString(QStringLiteral("x^0")),
              QStringLiteral("x^0 stays, for x^0 is x^0."));
    EXPECT_EQ(theItemCannotBeRenamedLocalizedString(QString()), QStringLiteral(" stays, for  is ."));
}

TEST_F(FinderTexts, texts_areTheirKeys_whereTheFinderLacksThem)
{
    const QString before = NSBundle::systemRoot();
    const Testing::TemporaryTree other;
    other.makeFolder("System/Library/CoreServices/Finder.app");
    NSBundle::setSystemRoot(other.pathText());
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -48)), QStringLiteral("NE21"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -5000)), QStringLiteral("NE23"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -36)), QStringLiteral("OSStatus error (-36)"));
    EXPECT_EQ(anItemWithTheSameNameAlreadyExistsLocalizedString(), QStringLiteral("NE21"));
    EXPECT_EQ(renameTheItemLocalizedString(), QStringLiteral("NE22"));
    EXPECT_EQ(theItemCannotBeRenamedLocalizedString(QStringLiteral("x")), QStringLiteral("RN33"));
    NSBundle::setSystemRoot(before);
}

TEST_F(FinderTexts, errors_exchangeTheirTexts)
{
    const NSError named = filenameAlreadyExistsErrorForName(QStringLiteral("a"));
    EXPECT_EQ(named.localizedDescription(), QStringLiteral("a stays, for a is a."));
    EXPECT_EQ(named.localizedRecoverySuggestion(), QStringLiteral("The name is taken."));
    const NSError unnamed = thereIsAlreadyAnItemWithThatNameError();
    EXPECT_EQ(unnamed.localizedDescription(), QStringLiteral("The name is taken."));
    EXPECT_EQ(unnamed.localizedRecoverySuggestion(), QStringLiteral("Choose another."));
}

} // namespace Tessaron
