#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/ErrorTexts.h>

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

/// A system without a Finder.
class ErrorHelpers : public ::testing::Test
{
protected:
    void SetUp() override { NSBundle::setSystemRoot(m_emptySystem.path()); }

private:
    const QTemporaryDir m_emptySystem;
};

const QString takenText =
    QStringLiteral("The operation could not be completed because there is already an item with that name.");

} // namespace

TEST_F(ErrorHelpers, _finderBundle_isNull_withoutAFinder)
{
    EXPECT_EQ(_finderBundle(), nullptr);
}

TEST_F(ErrorHelpers, _finderBundle_staysNull_whereTheFinderComesLater)
{
    EXPECT_EQ(_finderBundle(), nullptr);
    ASSERT_TRUE(QDir(NSBundle::systemRoot()).mkpath(QStringLiteral("System/Library/CoreServices/Finder.app")));
    EXPECT_EQ(_finderBundle(), nullptr);
}

TEST_F(ErrorHelpers, getFailureReason_isNull_forAnotherDomain)
{
    EXPECT_TRUE(getFailureReason(NSError(NSCocoaErrorDomain, -48)).isNull());
    EXPECT_TRUE(getFailureReason(NSError(NSPOSIXErrorDomain, 2)).isNull());
    EXPECT_TRUE(getFailureReason(NSError()).isNull());
}

TEST_F(ErrorHelpers, getFailureReason_namesTheCode_withoutAFinder)
{
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -36)), QStringLiteral("OSStatus error (-36)"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -48)), QStringLiteral("OSStatus error (-48)"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, 0xFFFFFFDC)), QStringLiteral("OSStatus error (-36)"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, -5000)), QStringLiteral("OSStatus error (-5000)"));
    EXPECT_EQ(getFailureReason(NSError(NSOSStatusErrorDomain, 0x80020066)),
              QStringLiteral("OSStatus error (-2147352474)"));
}

TEST_F(ErrorHelpers, filenameAlreadyExistsErrorForName_describesTheRename_andSuggestsTheCause)
{
    const NSError error = filenameAlreadyExistsErrorForName(QStringLiteral("a.txt"));
    EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(error.code(), -48);
    EXPECT_EQ(error.userInfo().size(), 2);
    EXPECT_EQ(error.userInfo().value(NSLocalizedDescriptionKey).toString(),
              QStringLiteral("The item cannot be renamed."));
    EXPECT_EQ(error.userInfo().value(NSLocalizedRecoverySuggestionErrorKey).toString(), takenText);
}

TEST_F(ErrorHelpers, thereIsAlreadyAnItemWithThatNameError_describesTheCause_andSuggestsTheRename)
{
    const NSError error = thereIsAlreadyAnItemWithThatNameError();
    EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(error.code(), -48);
    EXPECT_EQ(error.userInfo().size(), 2);
    EXPECT_EQ(error.userInfo().value(NSLocalizedDescriptionKey).toString(), takenText);
    EXPECT_EQ(error.userInfo().value(NSLocalizedRecoverySuggestionErrorKey).toString(),
              QStringLiteral("Rename the item and try again."));
}

TEST_F(ErrorHelpers, unkownError_hasACodeAndNoText)
{
    const NSError error = unkownError();
    EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(error.code(), -4960);
    EXPECT_TRUE(error.userInfo().isEmpty());
}

} // namespace Tessaron
