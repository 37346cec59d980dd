#include "platform/foundation/NSError.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace Tessaron;

TEST(NSError, defaultMade_isNoFailure)
{
    const NSError error;
    EXPECT_TRUE(error.isNull());
    EXPECT_FALSE(error);
    EXPECT_EQ(error.localizedDescription(), QString());
}

TEST(NSError, errorWithErrno_carriesStatusReasonAndPath)
{
    const NSError error = NSError::errorWithErrno(ENOSPC, QStringLiteral("/some/file"));
    EXPECT_TRUE(error);
    EXPECT_EQ(error.domain(), NSOSStatusErrorDomain);
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_EQ(error.filePath(), QStringLiteral("/some/file"));
    EXPECT_EQ(error.localizedFailureReason(), QStringLiteral("No space left on device"));
}

TEST(NSError, localizedDescription_fallsBackToTheReasonThenToDomainAndCode)
{
    const NSError described(NSOSStatusErrorDomain, -48,
                            {{NSLocalizedDescriptionKey, QStringLiteral("what")},
                             {NSLocalizedFailureReasonErrorKey, QStringLiteral("why")}});
    EXPECT_EQ(described.localizedDescription(), QStringLiteral("what"));
    const NSError reasoned(NSOSStatusErrorDomain, -48, {{NSLocalizedFailureReasonErrorKey, QStringLiteral("why")}});
    EXPECT_EQ(reasoned.localizedDescription(), QStringLiteral("why"));
    EXPECT_EQ(NSError(NSOSStatusErrorDomain, -48).localizedDescription(),
              QStringLiteral("NSOSStatusErrorDomain error -48"));
}

TEST(NSError, equality_comparesDomainCodeAndUserInformation)
{
    EXPECT_EQ(NSError(NSOSStatusErrorDomain, -48), NSError(NSOSStatusErrorDomain, -48));
    EXPECT_NE(NSError(NSOSStatusErrorDomain, -48), NSError(NSOSStatusErrorDomain, -43));
    EXPECT_NE(NSError(NSOSStatusErrorDomain, -48), NSError(NSCocoaErrorDomain, -48));
    EXPECT_NE(NSError(NSOSStatusErrorDomain, -48),
              NSError(NSOSStatusErrorDomain, -48, {{NSFilePathErrorKey, QStringLiteral("/a")}}));
}

TEST(NSError, statusForErrno_mapsWhatHasACounterpart)
{
    EXPECT_EQ(statusForErrno(0), noErr);
    EXPECT_EQ(statusForErrno(ENOENT), fnfErr);
    EXPECT_EQ(statusForErrno(EACCES), afpAccessDenied);
    EXPECT_EQ(statusForErrno(EEXIST), dupFNErr);
    EXPECT_EQ(statusForErrno(EIO), ioErr);
    EXPECT_EQ(statusForErrno(EL2HLT), ioErr);
}
