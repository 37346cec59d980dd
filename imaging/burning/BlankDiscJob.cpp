#include "imaging/burning/ChosenDrive.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/LayoutWriting.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include <TessaronClasses/BlankDiscJob.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <mutex>

namespace Tessaron
{

class BlankDiscJob::Work final : public DiscJobWork
{
public:
    explicit Work(BlankDiscOrder blankOrder)
        : order(std::move(blankOrder))
    {
    }

    void begin() override
    {
        runInBackground([this](const std::stop_token &stop) { return blank(stop); },
                        [this](const NSError &error) {
                            result.error = error;
                            result.fault = error.userInfo().value(DriveFaultKey).toString();
                            result.condition = error.userInfo().value(DiscConditionKey).toString();
                            end(error);
                        });
    }

    [[nodiscard]] DiscJobProgress progress() const override;
    [[nodiscard]] NSError blank(const std::stop_token &stop);

    const BlankDiscOrder order;
    BlankDiscResult result; ///< the worker's until the job has ended
    mutable std::mutex mutex;
    std::shared_ptr<DRDevice> device; ///< guarded by `mutex` where the main thread asks it
};

/// A drive that blanks a disc tells only the share that it has done, so that share is shown in place of bytes.
DiscJobProgress BlankDiscJob::Work::progress() const
{
    constexpr std::uint64_t whole = 0x10000;
    DiscJobProgress now;
    const std::lock_guard lock(mutex);
    if (!device || device->activity().stage == DriveStage::Idle)
        return now;
    now.phase = DiscJobPhase::Writing;
    now.bytesTotal = whole;
    now.bytesDone = device->activity().done;
    return now;
}

NSError BlankDiscJob::Work::blank(const std::stop_token &stop)
{
    Result<std::shared_ptr<DRDevice>> opened = openChosenDrive(order.drive, false);
    if (!opened)
        return opened.error();
    const std::shared_ptr<DRDevice> drive = *std::move(opened);
    result.before = drive->disc();
    result.driveName = drive->name();
    if (stop.stop_requested())
        return discJobCancellation();
    {
        const std::lock_guard lock(mutex);
        device = drive;
    }
    const NSError error =
        order.blanking == DiscBlanking::Format ? drive->format() : drive->blank(order.blanking == DiscBlanking::Full);
    result.after = drive->disc();
    result.notes = releaseDrive(*drive, order.ejects);
    const std::lock_guard lock(mutex);
    device.reset();
    return jobErrorOfBurn(error);
}

BlankDiscJob::BlankDiscJob(BlankDiscOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

BlankDiscJob::~BlankDiscJob() = default;

const BlankDiscResult &BlankDiscJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void BlankDiscJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
