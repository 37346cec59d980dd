#include "platform/discrecording/burn/DRBurn.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/BurnJob.h"

#include <mutex>
#include <system_error>
#include <thread>

namespace Tessaron
{

const QString DRStatusStateKey = QStringLiteral("DRStatusStateKey");
const QString DRStatusPercentCompleteKey = QStringLiteral("DRStatusPercentCompleteKey");
const QString DRErrorStatusKey = QStringLiteral("DRErrorStatusKey");
const QString DRErrorStatusErrorKey = QStringLiteral("DRErrorStatusErrorKey");
const QString DRErrorStatusErrorStringKey = QStringLiteral("DRErrorStatusErrorStringKey");
const QString DRErrorStatusErrorInfoStringKey = QStringLiteral("DRErrorStatusErrorInfoStringKey");

const QString DRStatusStatePreparing = QStringLiteral("DRStatusStatePreparing");
const QString DRStatusStateTrackWrite = QStringLiteral("DRStatusStateTrackWrite");
const QString DRStatusStateDone = QStringLiteral("DRStatusStateDone");
const QString DRStatusStateFailed = QStringLiteral("DRStatusStateFailed");

const QString DRBurnStatusChangedNotification = QStringLiteral("DRBurnStatusChangedNotification");

class DRBurn::Private
{
public:
    std::shared_ptr<BurnDevice> device;
    std::weak_ptr<DRBurn> self;
    std::thread thread; ///< belongs to the thread that made the burn

    mutable std::mutex mutex; ///< guards what follows; both null until the burn is started, then never changed
    std::shared_ptr<BurnStatus> status;
    std::shared_ptr<BurnJob> job;
};

DRBurn::DRBurn()
    : d(std::make_unique<Private>())
{
}

DRBurn::~DRBurn()
{
    abort();
    // A consumer or producer may have held the last reference: its thread cannot wait for itself.
    if (d->thread.get_id() == std::this_thread::get_id())
        d->thread.detach();
    else
        waitUntilFinished();
}

std::shared_ptr<DRBurn> DRBurn::burnForDevice(const std::shared_ptr<BurnDevice> &device)
{
    if (!device)
        return nullptr;
    std::shared_ptr<DRBurn> burn(new DRBurn);
    burn->d->device = device;
    burn->d->self = burn;
    return burn;
}

void DRBurn::writeLayout(const DRLayout &layout)
{
    std::shared_ptr<BurnJob> job;
    std::shared_ptr<BurnStatus> status;
    {
        const std::lock_guard lock(d->mutex);
        if (d->job)
            return;
        status = std::make_shared<BurnStatus>(DRNotificationCenter::currentRunLoopCenter(), d->self);
        job = std::make_shared<BurnJob>(this, d->device, layout, status);
        d->status = status;
        d->job = job;
    }
    try {
        d->thread = std::thread([job] { job->run(); });
    } catch (const std::system_error &) {
        status->finish(burnError(memFullErr,
                                 QStringLiteral("The system allows no further thread to write the disc with."),
                                 QStringLiteral("Close other programs and try again.")));
    }
}

void DRBurn::abort()
{
    const std::lock_guard lock(d->mutex);
    if (d->job)
        d->job->cancel();
}

void DRBurn::waitUntilFinished()
{
    if (d->thread.joinable())
        d->thread.join();
}

QVariantMap DRBurn::status() const
{
    const std::lock_guard lock(d->mutex);
    return d->status ? d->status->status() : QVariantMap();
}

DRBurnAmounts DRBurn::amounts() const
{
    const std::lock_guard lock(d->mutex);
    return d->status ? d->status->amounts() : DRBurnAmounts();
}

NSError DRBurn::error() const
{
    const std::lock_guard lock(d->mutex);
    return d->status ? d->status->error() : NSError();
}

std::shared_ptr<const DRStorageReport> DRBurn::storageReport() const
{
    const std::lock_guard lock(d->mutex);
    return d->job ? d->job->storageReport() : nullptr;
}

std::shared_ptr<const TableOfContents> DRBurn::tableOfContents() const
{
    const std::lock_guard lock(d->mutex);
    return d->job ? d->job->tableOfContents() : nullptr;
}

} // namespace Tessaron
