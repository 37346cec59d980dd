#include "platform/discrecording/drives/DriveFaults.h"

#include "platform/discrecording/burn/BurnErrors.h"

#include <array>
#include <cerrno>

namespace Tessaron
{

const QString DriveFaultKey = QStringLiteral("DriveFault");
const QString DiscConditionKey = QStringLiteral("DiscCondition");

namespace
{

/// libburn's numbers of messages, by which it says what no sense of a drive does.
namespace LibBurnMessage
{
constexpr std::uint32_t driveIsBusy = 0x00020001;
constexpr std::uint32_t driveIsAbsent = 0x0002000B;
constexpr std::uint32_t cannotOpen = 0x00020005;
constexpr std::uint32_t closeTrackFailed = 0x0002017E;
constexpr std::uint32_t closeSessionFailed = 0x0002017F;
constexpr std::uint32_t beyondCapacity = 0x0002012D;
constexpr std::uint32_t fileWriteFailed = 0x00020148;
constexpr std::uint32_t driveIsGone = 0x000201A6;
} // namespace LibBurnMessage

/// Sense keys (SPC-3 table 27).
namespace SenseKey
{
constexpr std::uint8_t notReady = 0x2;
constexpr std::uint8_t hardwareError = 0x4;
constexpr std::uint8_t dataProtect = 0x7;
} // namespace SenseKey

/// Additional sense codes (MMC-5 annex F).
DriveFault faultOfSense(const DriveSense &sense)
{
    switch (sense.code) {
    case 0x0C: // write error; with qualifier 09, loss of streaming
        return sense.qualifier == 0x09 ? DriveFault::Underrun : DriveFault::WriteFailed;
    case 0x21: // block address out of range
    case 0x63: // end of the user area
        return DriveFault::Full;
    case 0x27: // write protected
        return DriveFault::WriteProtected;
    case 0x29: // reset
    case 0x28: // the disc may have been changed
        return DriveFault::Reset;
    case 0x30: // incompatible disc
    case 0x64: // wrong mode for this track
        return DriveFault::WrongDisc;
    case 0x3A: // no disc
        return DriveFault::NoDisc;
    case 0x72: // session fixation
        return DriveFault::CloseFailed;
    case 0x73: // calibration
        return sense.qualifier == 0x01 || sense.qualifier == 0x02 ? DriveFault::CalibrationAreaFull
                                                                  : DriveFault::Calibration;
    default:
        break;
    }
    if (sense.key == SenseKey::hardwareError)
        return DriveFault::Hardware;
    if (sense.key == SenseKey::dataProtect)
        return DriveFault::WriteProtected;
    return DriveFault::Unknown;
}

DriveFault faultOfMessage(const DriveMessage &message)
{
    switch (message.code) {
    case LibBurnMessage::driveIsBusy:
        return DriveFault::Busy;
    case LibBurnMessage::driveIsAbsent:
        return DriveFault::Absent;
    case LibBurnMessage::closeTrackFailed:
    case LibBurnMessage::closeSessionFailed:
        return DriveFault::CloseFailed;
    case LibBurnMessage::beyondCapacity:
        return DriveFault::Full;
    case LibBurnMessage::fileWriteFailed:
        return message.errnoValue == ENOSPC || message.errnoValue == EDQUOT || message.errnoValue == EFBIG
            ? DriveFault::Full
            : DriveFault::WriteFailed;
    case LibBurnMessage::driveIsGone:
        return DriveFault::Gone;
    case LibBurnMessage::cannotOpen:
        if (message.errnoValue == EBUSY)
            return DriveFault::Busy;
        if (message.errnoValue == EACCES || message.errnoValue == EPERM || message.errnoValue == EROFS)
            return DriveFault::NotPermitted;
        return DriveFault::Absent;
    default:
        break;
    }
    const std::optional<DriveSense> sense = message.sense();
    return sense ? faultOfSense(*sense) : DriveFault::Unknown;
}

struct FaultTexts {
    const char *name;
    const char *what; ///< "%1" stands for the drive
    const char *advice;
};

const FaultTexts &textsOf(DriveFault fault)
{
    static constexpr std::array<FaultTexts, 19> texts{{
        {"unknown", "writing with %1 failed", "Try another disc, or a slower speed."},
        {"busy", "%1 is in use", "Unmount the disc and close the programs that use the drive, then try again."},
        {"absent", "%1 does not answer", "Look whether it is connected; 'tessaron drives' lists the drives."},
        {"not-permitted", "%1 may not be opened for writing",
         "Become a member of the group that owns the drive (mostly \"cdrom\"), or work at the computer itself."},
        {"no-disc", "there is no disc in %1", "Put one in."},
        {"wrong-disc", "%1 cannot write this disc in this way",
         "Take another kind of disc. One that was blanked quickly may be written after a full blanking."},
        {"refused", "the order cannot be written with %1", ""},
        {"calibration", "%1 cannot set its laser for this disc",
         "Clean the disc, take one of another maker, or try another speed."},
        {"calibration-area-full", "the disc in %1 has no room left to try the laser", "Take another disc."},
        {"underrun", "the data came too slowly for %1",
         "Close other programs, copy the sources to a fast disk, or burn at a slower speed."},
        {"write-error", "%1 could not write a part of the disc", "Try a slower speed, or a disc of another maker."},
        {"close-error", "%1 could not end what was written", "Look whether the disc can be read elsewhere."},
        {"write-protected", "the disc in %1 is write-protected", "Take another disc, or open its lock."},
        {"full", "there is no more room on the disc in %1", "Take a larger disc, or put less onto it."},
        {"reset", "%1 was reset, or its disc changed, while it was in use",
         "Look at its cable and its power, then try again."},
        {"stalled", "%1 has taken no data for too long", "Look at its cable and its power, then try again."},
        {"no-answer", "%1 has not answered for too long",
         "Look at its cable and its power, switch it off and on, then try again."},
        {"hardware", "%1 says that it is broken", "Switch it off and on, then try another disc."},
        {"gone", "%1 is gone", "Look at its cable and its power, and connect it again."},
    }};
    return texts[std::size_t(fault)];
}

} // namespace

DriveFault driveFault(const std::vector<DriveMessage> &messages)
{
    for (const DriveMessage &message : messages) {
        if (message.severity < DriveMessageSeverity::Sorry)
            continue;
        if (const DriveFault fault = faultOfMessage(message); fault != DriveFault::Unknown)
            return fault;
    }
    return DriveFault::Unknown;
}

QString nameOfDriveFault(DriveFault fault)
{
    return QLatin1String(textsOf(fault).name);
}

QString nameOfDiscCondition(DiscCondition condition)
{
    switch (condition) {
    case DiscCondition::Unchanged:
        return QStringLiteral("unchanged");
    case DiscCondition::Written:
        return QStringLiteral("written");
    case DiscCondition::WrittenNotClosed:
        return QStringLiteral("written-not-closed");
    case DiscCondition::Appendable:
        return QStringLiteral("appendable");
    case DiscCondition::OnlyKept:
        return QStringLiteral("only-kept");
    case DiscCondition::Overwritable:
        return QStringLiteral("overwritable");
    case DiscCondition::NeedsBlanking:
        return QStringLiteral("needs-blanking");
    case DiscCondition::Spoiled:
        return QStringLiteral("spoiled");
    case DiscCondition::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

QString textOfDiscCondition(DiscCondition condition, DiscFamily family)
{
    const bool isFile = family == DiscFamily::File;
    switch (condition) {
    case DiscCondition::Unchanged:
        return isFile ? QStringLiteral("Nothing was written.") : QStringLiteral("The disc is as it was.");
    case DiscCondition::Written:
        return QStringLiteral("The disc is written.");
    case DiscCondition::WrittenNotClosed:
        return QStringLiteral("The data are on the disc, but it is not closed: not every drive will read it.");
    case DiscCondition::Appendable:
        return QStringLiteral("What the disc held before can be read as before, and more can be added to it.");
    case DiscCondition::OnlyKept:
        return isRewritable(family)
            ? QStringLiteral("What the disc held before can be read as before. Nothing more can be written to it until "
                             "it is blanked in full.")
            : QStringLiteral("What the disc held before can be read as before, but nothing more can be written to it.");
    case DiscCondition::Overwritable:
        return isFile ? QStringLiteral("What is in the file is not whole and is of no use.")
                      : QStringLiteral("The disc's contents are not whole; it can be written anew at once.");
    case DiscCondition::NeedsBlanking:
        return QStringLiteral("The disc's contents are not whole; blank it in full, then it can be written anew.");
    case DiscCondition::Spoiled:
        return QStringLiteral("The disc cannot be used any more.");
    case DiscCondition::Unknown:
        break;
    }
    return QStringLiteral("What the disc is worth is not known: put it in again and look with 'tessaron drives'.");
}

NSError driveError(DriveFault fault, const std::vector<DriveMessage> &messages, const QString &drive)
{
    const FaultTexts &texts = textsOf(fault);
    QString description = QLatin1String(texts.what);
    description = description.arg(drive);
    // The first grave message that is about this fault says it in the drive's words; later ones repeat it.
    for (const DriveMessage &message : messages) {
        if (message.severity < DriveMessageSeverity::Sorry
            || (fault != DriveFault::Unknown && fault != DriveFault::Refused && faultOfMessage(message) != fault))
            continue;
        description += QStringLiteral(" (%1)").arg(message.text.simplified());
        break;
    }
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, description}, {DriveFaultKey, nameOfDriveFault(fault)}};
    if (*texts.advice != 0)
        userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, QString(QLatin1String(texts.advice)));
    const OSStatus status = fault == DriveFault::Full ? dskFulErr
        : fault == DriveFault::Busy                   ? fBsyErr
        : fault == DriveFault::NotPermitted           ? permErr
        : fault == DriveFault::WriteProtected         ? wPrErr
        : fault == DriveFault::Absent                 ? fnfErr
                                                      : ioErr;
    return NSError(NSOSStatusErrorDomain, status, userInfo);
}

NSError withDiscCondition(const NSError &error, DiscCondition condition, DiscFamily family)
{
    QVariantMap userInfo = error.userInfo();
    const QString suggestion = error.localizedRecoverySuggestion();
    const QString about = textOfDiscCondition(condition, family);
    userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, suggestion.isEmpty() ? about : about + u' ' + suggestion);
    userInfo.insert(DiscConditionKey, nameOfDiscCondition(condition));
    return NSError(error.domain(), error.code(), userInfo);
}

DiscCondition conditionAfter(const InterruptedWriting &writing, DiscFamily family, const DiscDescription *after)
{
    if (!writing.hasBegun || writing.isSimulated)
        return DiscCondition::Unchanged;
    if (isOverwritten(family) && writing.isOldKept)
        return family == DiscFamily::File ? DiscCondition::Unchanged : DiscCondition::Appendable;
    if (isOverwritten(family))
        return DiscCondition::Overwritable;
    if (after == nullptr || after->state == DiscState::NoDisc)
        return DiscCondition::Unknown;
    if (after->state == DiscState::Blank)
        return DiscCondition::Unchanged; // nothing has reached the disc
    if (writing.isWholeDataWritten)
        return DiscCondition::WrittenNotClosed;
    if (after->state == DiscState::Appendable && after->damage < 2)
        return DiscCondition::Appendable;
    if (writing.hadSessions)
        return DiscCondition::OnlyKept;
    if (isRewritable(family))
        return DiscCondition::NeedsBlanking;
    return DiscCondition::Spoiled;
}

} // namespace Tessaron
