#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/TreeSplitter.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscPlanJob.h>
#include <TessaronClasses/DiscSplitJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>

#include <algorithm>
#include <atomic>

namespace Tessaron
{

namespace
{

/// How often the discs are made smaller until all of them fit; twice is rarely needed.
constexpr int mostAttempts = 8;

} // namespace

class DiscSplitJob::Work final : public DiscJobWork
{
public:
    explicit Work(DiscSplitOrder splitOrder)
        : order(std::move(splitOrder))
    {
    }

    void begin() override;
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] NSError share(const std::stop_token &stop);
    void planNext();
    void planned(const DiscPlanResult &plan);
    void judge();
    void endWith(const NSError &error);

    const DiscSplitOrder order;
    DiscSplitResult result; ///< the worker's while it runs
    std::unique_ptr<TreeSplitter> splitter;
    std::uint64_t budget = 0; ///< what a disc may take by what was measured
    int attempts = 0;
    std::size_t plannedDiscs = 0;
    std::unique_ptr<DiscPlanJob> planning; ///< null while no disc is planned
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Scanning;
};

void DiscSplitJob::Work::begin()
{
    if (!order.tree || order.capacity == 0) {
        endWith(discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is nothing to share out")));
        return;
    }
    budget = order.capacity;
    splitter = std::make_unique<TreeSplitter>(order.tree, order.filesystems);
    runInBackground(
        [this](const std::stop_token &stop) { return splitter->measure(stop) ? share(stop) : discJobCancellation(); },
        [this](const NSError &error) {
            if (const NSError failure = cancellationOr(error))
                endWith(failure);
            else
                planNext();
        });
}

NSError DiscSplitJob::Work::share(const std::stop_token &)
{
    ++attempts;
    plannedDiscs = 0;
    result.tooLarge.clear();
    result.discs = splitter->discsOf(budget, &result.tooLarge);
    if (result.discs.empty() && result.tooLarge.empty())
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is nothing to share out"));
    for (std::size_t disc = 0; disc < result.discs.size(); ++disc)
        result.discs[disc].volumeName = result.discs.size() == 1
            ? order.volumeName
            : QStringLiteral("%1 %2").arg(order.volumeName).arg(disc + 1).trimmed();
    phase = DiscJobPhase::Planning;
    return {};
}

/// The exact size of each disc comes with its plan.
void DiscSplitJob::Work::planNext()
{
    if (plannedDiscs == result.discs.size()) {
        judge();
        return;
    }
    DiscPlanOrder planOrder;
    planOrder.tree = result.discs[plannedDiscs].tree;
    planOrder.volumeName = result.discs[plannedDiscs].volumeName;
    planOrder.filesystems = order.filesystems;
    planOrder.relocatesDeepFolders = order.relocatesDeepFolders;
    planning = std::make_unique<DiscPlanJob>(std::move(planOrder));
    QObject::connect(planning.get(), &DiscPlanJob::finished, planning.get(), [this](const DiscPlanResult &plan) {
        planning.release()->deleteLater(); // which has the result until then
        planned(plan);
    });
    planning->start();
}

void DiscSplitJob::Work::planned(const DiscPlanResult &plan)
{
    if (const NSError failure = cancellationOr(plan.error)) {
        endWith(failure);
        return;
    }
    DiscShare &disc = result.discs[plannedDiscs++];
    disc.bytes = plan.bytes;
    disc.files = plan.files;
    disc.folders = plan.folders;
    planNext();
}

/// Where a disc is too large after all, they are shared out anew, with less on each.
void DiscSplitJob::Work::judge()
{
    std::uint64_t largest = 0;
    for (const DiscShare &disc : result.discs)
        largest = std::max(largest, disc.bytes);
    if (largest <= order.capacity) {
        endWith({});
        return;
    }
    const std::uint64_t excess = largest - order.capacity + order.capacity / 1000;
    if (attempts == mostAttempts || excess >= budget) {
        endWith(discJobError(DiscJobErrorCode::Layout,
                             QStringLiteral("discs of %1 bytes are too small for these files").arg(order.capacity),
                             QStringLiteral("Choose larger discs.")));
        return;
    }
    budget -= excess;
    runInBackground([this](const std::stop_token &stop) { return share(stop); },
                    [this](const NSError &error) {
                        if (const NSError failure = cancellationOr(error))
                            endWith(failure);
                        else
                            planNext();
                    });
}

void DiscSplitJob::Work::stop()
{
    if (planning)
        planning->cancel();
}

void DiscSplitJob::Work::endWith(const NSError &error)
{
    result.error = error;
    if (error)
        result.discs.clear();
    end(error);
}

DiscJobProgress DiscSplitJob::Work::progress() const
{
    DiscJobProgress progress;
    progress.phase = phase;
    return progress;
}

DiscSplitJob::DiscSplitJob(DiscSplitOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

DiscSplitJob::~DiscSplitJob() = default;

const DiscSplitResult &DiscSplitJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void DiscSplitJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
