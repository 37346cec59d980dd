#include "imaging/burning/ChosenDrive.h"
#include "imaging/jobs/DiscJobWork.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DrivesJob.h>

#include <algorithm>

namespace Tessaron
{

class DrivesJob::Work final : public DiscJobWork
{
public:
    explicit Work(DrivesOrder drivesOrder)
        : order(std::move(drivesOrder))
    {
    }

    void begin() override
    {
        runInBackground([this](const std::stop_token &stop) { return look(stop); },
                        [this](const NSError &error) {
                            result.error = error;
                            end(error);
                        });
    }

    [[nodiscard]] DiscJobProgress progress() const override { return {}; }

    [[nodiscard]] NSError look(const std::stop_token &stop);
    void open(DriveFacts *facts, const QByteArray &address) const;

    const DrivesOrder order;
    DrivesResult result; ///< the worker's until the job has ended
};

NSError DrivesJob::Work::look(const std::stop_token &stop)
{
    const std::vector<DriveDescription> known = allDrives();
    std::vector<QByteArray> addresses(order.drives.begin(), order.drives.end());
    if (order.drives.isEmpty())
        std::transform(known.begin(), known.end(), std::back_inserter(addresses),
                       [](const DriveDescription &drive) { return drive.path; });
    const bool opens = order.opensAll || !order.drives.isEmpty();
    NSError first;
    for (const QByteArray &address : addresses) {
        if (stop.stop_requested())
            return discJobCancellation();
        DriveFacts facts;
        facts.drive.path = address;
        const auto described = std::find_if(known.begin(), known.end(),
                                            [&](const DriveDescription &drive) { return drive.path == address; });
        if (described != known.end())
            facts.drive = *described;
        if (opens)
            open(&facts, address);
        if (!first)
            first = facts.error;
        result.drives.push_back(std::move(facts));
    }
    return first;
}

void DrivesJob::Work::open(DriveFacts *facts, const QByteArray &address) const
{
    const Result<std::shared_ptr<DRDevice>> opened = openChosenDrive(address, false);
    if (opened)
        facts->disc = (*opened)->disc();
    else
        facts->error = opened.error();
}

DrivesJob::DrivesJob(DrivesOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

DrivesJob::~DrivesJob() = default;

const DrivesResult &DrivesJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void DrivesJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
