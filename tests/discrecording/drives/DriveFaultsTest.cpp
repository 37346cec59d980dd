#include "platform/discrecording/drives/DriveFaults.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

using Severity = DriveMessageSeverity;

DriveMessage message(const char *text, std::uint32_t code = 0x0002011D, Severity severity = Severity::Fatal,
                     int errnoValue = 0)
{
    return {code, severity, QString::fromUtf8(text), errnoValue};
}

DriveFault faultOfText(const char *text)
{
    return driveFault({message(text)});
}

TEST(DriveFaults, sense_isReadFromTheText)
{
    const std::optional<DriveSense> sense =
        message("SCSI error on write(16,16): [3 0C 09] Medium error. Loss of streaming.").sense();
    ASSERT_TRUE(sense);
    EXPECT_EQ(*sense, (DriveSense{3, 0x0C, 0x09}));
    EXPECT_FALSE(message("Burn run failed").sense());
    EXPECT_FALSE(message("[now 12 34]").sense());
}

TEST(DriveFaults, fault_isNamedByTheDrivesOwnReason)
{
    EXPECT_EQ(faultOfText("write error: [3 0C 00] Write error"), DriveFault::WriteFailed);
    EXPECT_EQ(faultOfText("write error: [3 0C 09] Loss of streaming"), DriveFault::Underrun);
    EXPECT_EQ(faultOfText("[3 73 03] Power calibration error"), DriveFault::Calibration);
    EXPECT_EQ(faultOfText("[3 73 01] Power calibration area almost full"), DriveFault::CalibrationAreaFull);
    EXPECT_EQ(faultOfText("[3 72 00] Session fixation error"), DriveFault::CloseFailed);
    EXPECT_EQ(faultOfText("[2 3A 01] Medium not present"), DriveFault::NoDisc);
    EXPECT_EQ(faultOfText("[5 64 00] Illegal mode for this track"), DriveFault::WrongDisc);
    EXPECT_EQ(faultOfText("[6 29 00] Power on, reset"), DriveFault::Reset);
    EXPECT_EQ(faultOfText("[7 27 00] Write protected"), DriveFault::WriteProtected);
    EXPECT_EQ(faultOfText("[4 08 03] Logical unit communication failure"), DriveFault::Hardware);
    EXPECT_EQ(faultOfText("[5 21 00] Logical block address out of range"), DriveFault::Full);
    EXPECT_EQ(faultOfText("something else"), DriveFault::Unknown);
}

TEST(DriveFaults, fault_isNamedByTheLibrarysNumber_whereNoDriveHasSpoken)
{
    EXPECT_EQ(driveFault({message("busy", 0x00020001, Severity::Sorry)}), DriveFault::Busy);
    EXPECT_EQ(driveFault({message("cannot open", 0x00020005, Severity::Failure, EACCES)}), DriveFault::NotPermitted);
    EXPECT_EQ(driveFault({message("cannot open", 0x00020005, Severity::Failure, EBUSY)}), DriveFault::Busy);
    EXPECT_EQ(driveFault({message("gone", 0x000201A6)}), DriveFault::Gone);
    EXPECT_EQ(driveFault({message("no space", 0x00020148, Severity::Sorry, ENOSPC)}), DriveFault::Full);
}

TEST(DriveFaults, fault_isTheFirstGraveOne_thatSaysSomething)
{
    EXPECT_EQ(driveFault({message("note [3 73 03]", 1, Severity::Note), message("it failed", 2),
                          message("[3 0C 00]", 3), message("closing: [3 72 00]", 4)}),
              DriveFault::WriteFailed);
    EXPECT_EQ(driveFault({}), DriveFault::Unknown);
}

TEST(DriveFaults, error_saysWhatHappened_inTheDrivesWords_andWhatToDo)
{
    const NSError error = driveError(DriveFault::Calibration, {message("it failed"), message("[3 73 03] Calibration")},
                                     QStringLiteral("the drive “/dev/sr0”"));
    EXPECT_EQ(error.localizedDescription(),
              QStringLiteral("the drive “/dev/sr0” cannot set its laser for this disc ([3 73 03] Calibration)"));
    EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("another speed")));
    EXPECT_EQ(error.userInfo().value(DriveFaultKey), QStringLiteral("calibration"));
}

TEST(DriveFaults, everyFaultAndCondition_hasANameAndAText)
{
    for (int fault = 0; fault <= int(DriveFault::Gone); ++fault)
        EXPECT_FALSE(nameOfDriveFault(DriveFault(fault)).isEmpty());
    EXPECT_EQ(nameOfDriveFault(DriveFault::Gone), QStringLiteral("gone"));
    EXPECT_EQ(nameOfDriveFault(DriveFault::CloseFailed), QStringLiteral("close-error"));
    for (int condition = 0; condition <= int(DiscCondition::Unknown); ++condition) {
        EXPECT_FALSE(nameOfDiscCondition(DiscCondition(condition)).isEmpty());
        EXPECT_TRUE(textOfDiscCondition(DiscCondition(condition), DiscFamily::CDR).endsWith(u'.'));
    }
}

DiscDescription discIn(DiscState state, std::uint32_t damage = 0)
{
    DiscDescription disc;
    disc.state = state;
    disc.damage = damage;
    return disc;
}

TEST(DriveFaults, condition_isUnchanged_whereNothingReachedTheDisc)
{
    const DiscDescription closed = discIn(DiscState::Closed);
    EXPECT_EQ(conditionAfter({}, DiscFamily::CDR, &closed), DiscCondition::Unchanged);
    EXPECT_EQ(conditionAfter({.hasBegun = true, .isSimulated = true}, DiscFamily::CDR, &closed),
              DiscCondition::Unchanged);
    const DiscDescription blank = discIn(DiscState::Blank);
    EXPECT_EQ(conditionAfter({.hasBegun = true}, DiscFamily::CDR, &blank), DiscCondition::Unchanged);
}

TEST(DriveFaults, condition_dependsOnTheKindOfDisc_andOnWhatTheDriveSaysAfterwards)
{
    const InterruptedWriting begun{.hasBegun = true};
    const DiscDescription closed = discIn(DiscState::Closed);
    const DiscDescription appendable = discIn(DiscState::Appendable);
    const DiscDescription damaged = discIn(DiscState::Appendable, 3);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::CDR, &closed), DiscCondition::Spoiled);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::CDR, &appendable), DiscCondition::Appendable);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::CDR, &damaged), DiscCondition::Spoiled);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::CDRW, &damaged), DiscCondition::NeedsBlanking);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::Overwritable, &closed), DiscCondition::Overwritable);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::File, nullptr), DiscCondition::Overwritable);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::DVDPlusR, nullptr), DiscCondition::Unknown);
    const InterruptedWriting appended{.hasBegun = true, .hadSessions = true};
    EXPECT_EQ(conditionAfter(appended, DiscFamily::DVDPlusR, &damaged), DiscCondition::OnlyKept);
    EXPECT_EQ(conditionAfter(appended, DiscFamily::CDRW, &damaged), DiscCondition::OnlyKept);
    EXPECT_EQ(conditionAfter(appended, DiscFamily::DVDPlusR, &appendable), DiscCondition::Appendable);
    const DiscDescription takenOut = discIn(DiscState::NoDisc);
    EXPECT_EQ(conditionAfter(begun, DiscFamily::CDRW, &takenOut), DiscCondition::Unknown);
    EXPECT_EQ(conditionAfter({.hasBegun = true, .isWholeDataWritten = true}, DiscFamily::BDR, &appendable),
              DiscCondition::WrittenNotClosed);
}

} // namespace

} // namespace Tessaron
