#include "platform/discrecording/drives/DiscErasing.h"

#include "platform/discrecording/drives/BurnControl.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/drives/LibBurn.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds lookInterval(100);

constexpr std::uint32_t profileOfDVDMinusRWSequential = 0x14;
constexpr std::uint32_t profileOfDVDMinusRWOverwritable = 0x13;

// burn_disc_format()
constexpr int toLargestSize = 2 << 1;
constexpr int evenWhenFormatted = 1 << 4;
constexpr int withoutCertification = 1 << 6;

NSError refusal(const DiscDescription &disc, const QString &what, const QString &suggestion)
{
    const DriveFault fault = disc.state == DiscState::NoDisc ? DriveFault::NoDisc : DriveFault::WrongDisc;
    return NSError(NSOSStatusErrorDomain, paramErr,
                   {{NSLocalizedDescriptionKey,
                     fault == DriveFault::NoDisc ? QStringLiteral("there is no disc in the drive") : what},
                    {NSLocalizedRecoverySuggestionErrorKey,
                     fault == DriveFault::NoDisc ? QStringLiteral("Put one in.") : suggestion},
                    {DriveFaultKey, nameOfDriveFault(fault)}});
}

bool canBlank(const DiscDescription &disc)
{
    return disc.family == DiscFamily::CDRW || disc.profile == profileOfDVDMinusRWSequential
        || disc.profile == profileOfDVDMinusRWOverwritable || disc.family == DiscFamily::File;
}

NSError errorOfDisc(const DiscDescription &disc, DiscErasure erasure)
{
    const QString kind = disc.profileName.isEmpty() ? QStringLiteral("unknown") : disc.profileName;
    if (erasure == DiscErasure::Format) {
        const bool can = disc.profile == profileOfDVDMinusRWSequential || disc.family == DiscFamily::Overwritable;
        return can ? NSError()
                   : refusal(disc, QStringLiteral("a disc of this kind (%1) cannot be formatted").arg(kind),
                             QStringLiteral("Put a DVD-RW, DVD+RW, DVD-RAM or BD-RE in."));
    }
    if (canBlank(disc))
        return {};
    if (disc.family == DiscFamily::Overwritable)
        return refusal(
            disc, QStringLiteral("a disc of this kind (%1) has no blank state: it is simply overwritten").arg(kind),
            QStringLiteral("Burn to it, or format it with --format."));
    return refusal(disc, QStringLiteral("a disc of this kind (%1) cannot be blanked").arg(kind),
                   QStringLiteral("Put a CD-RW or DVD-RW in."));
}

void beginErasing(burn::burn_drive *drive, DiscErasure erasure)
{
    static_cast<void>(takeDriveMessages());
    if (erasure == DiscErasure::Format)
        burn::burn_disc_format(drive, 0, toLargestSize | evenWhenFormatted | withoutCertification);
    else
        burn::burn_disc_erase(drive, erasure == DiscErasure::Quick ? 1 : 0);
}

} // namespace

NSError eraseDisc(GrabbedDrive &drive, DiscErasure erasure, DriveActivity &activity)
{
    if (NSError error = errorOfDisc(drive.disc(), erasure))
        return error;
    if (drive.isFile()) {
        if (::ftruncate(drive.fileDescriptor(), 0) != 0)
            return NSError::errorWithErrno(errno, drive.name());
        return drive.lookAgain();
    }
    BurnControl &control = BurnControl::instance();
    std::vector<DriveMessage> messages;
    control.call([&] { beginErasing(drive.handle(), erasure); });
    bool isWell = false;
    for (bool isBusy = true; isBusy;) {
        std::this_thread::sleep_for(lookInterval);
        control.call([&] {
            burn::burn_progress progress{};
            const burn::burn_drive_status status = burn::burn_drive_get_status(drive.handle(), &progress);
            activity.stage = erasure == DiscErasure::Format ? DriveStage::Formatting : DriveStage::Blanking;
            activity.done = std::uint32_t(std::clamp(progress.sector, 0, 0x10000));
            const std::vector<DriveMessage> more = takeDriveMessages();
            messages.insert(messages.end(), more.begin(), more.end());
            isBusy = status != burn::BURN_DRIVE_IDLE;
            if (isBusy)
                return;
            isWell = burn::burn_drive_wrote_well(drive.handle()) != 0;
            if (burn::burn_disc_get_status(drive.handle()) == burn::BURN_DISC_UNGRABBED)
                drive.forget();
        });
    }
    activity.stage = DriveStage::Idle;
    const NSError error = isWell ? NSError() : driveError(driveFault(messages), messages, drive.name());
    if (!error)
        return drive.lookAgain();
    const bool isKnown = drive.isOpen() && !drive.lookAgain();
    const bool isBlank = isKnown && drive.disc().state == DiscState::Blank;
    return withDiscCondition(error,
                             !isKnown      ? DiscCondition::Unknown
                                 : isBlank ? DiscCondition::Unchanged
                                           : DiscCondition::NeedsBlanking,
                             drive.disc().family);
}

} // namespace Tessaron
