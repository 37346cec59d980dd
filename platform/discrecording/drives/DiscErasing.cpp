#include "platform/discrecording/drives/DiscErasing.h"

#include "platform/discrecording/drives/BurnControl.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/drives/LibBurn.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>
#include <unistd.h>
#include <utility>

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

struct ErasingEnd {
    bool isWell = false;
    std::vector<DriveMessage> messages;
};

/// No value when the drive has not got on for so long.
std::optional<ErasingEnd> waitForEnd(GrabbedDrive &drive, std::chrono::milliseconds patience, DriveActivity &activity)
{
    ErasingEnd end;
    auto lastStep = std::chrono::steady_clock::now();
    for (int before = 0;;) {
        std::this_thread::sleep_for(lookInterval);
        burn::burn_progress progress{};
        const bool isBusy = BurnControl::instance().call([&] {
            const burn::burn_drive_status status = burn::burn_drive_get_status(drive.handle(), &progress);
            const std::vector<DriveMessage> more = takeDriveMessages();
            end.messages.insert(end.messages.end(), more.begin(), more.end());
            if (status != burn::BURN_DRIVE_IDLE)
                return true;
            end.isWell = burn::burn_drive_wrote_well(drive.handle()) != 0;
            if (burn::burn_disc_get_status(drive.handle()) == burn::BURN_DISC_UNGRABBED)
                drive.forget();
            return false;
        });
        if (!isBusy)
            return end;
        activity.done = std::uint32_t(std::clamp(progress.sector, 0, 0x10000));
        const auto now = std::chrono::steady_clock::now();
        if (std::exchange(before, progress.sector) != progress.sector)
            lastStep = now;
        else if (now - lastStep >= patience)
            return std::nullopt;
    }
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
    activity.stage = erasure == DiscErasure::Format ? DriveStage::Formatting : DriveStage::Blanking;
    BurnControl::instance().call([&] { beginErasing(drive.handle(), erasure); });
    const std::optional<ErasingEnd> end = waitForEnd(
        drive, erasure == DiscErasure::Quick ? drive.patience().atQuickErasing : drive.patience().atErasing, activity);
    activity.stage = DriveStage::Idle;
    if (!end) {
        drive.giveUpBusy();
        return withDiscCondition(driveError(DriveFault::NoAnswer, {}, drive.name()), DiscCondition::Unknown,
                                 drive.disc().family);
    }
    if (end->isWell)
        return drive.lookAgain();
    const NSError error = driveError(driveFault(end->messages), end->messages, drive.name());
    const bool isKnown = drive.isOpen() && !drive.lookAgain();
    const bool isBlank = isKnown && drive.disc().state == DiscState::Blank;
    return withDiscCondition(error,
                             !isKnown      ? DiscCondition::Unknown
                                 : isBlank ? DiscCondition::Unchanged
                                           : DiscCondition::NeedsBlanking,
                             drive.disc().family);
}

} // namespace Tessaron
