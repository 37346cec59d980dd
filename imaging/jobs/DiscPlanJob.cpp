#include "imaging/jobs/DataDisc.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/LayoutWriting.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/MainThread.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/DiscPlanJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>

namespace Tessaron
{

class DiscPlanJob::Work final : public DiscJobWork
{
public:
    explicit Work(DiscPlanOrder planOrder)
        : order(std::move(planOrder))
    {
    }

    void begin() override;
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    [[nodiscard]] KRFileHierarchyItemLayoutTarget target();
    void layoutMade(const std::shared_ptr<DRFolder> &folder);
    [[nodiscard]] std::shared_ptr<DRTrack> trackOf(const std::shared_ptr<DRFolder> &folder) const;
    [[nodiscard]] NSError plan(const std::shared_ptr<DRTrack> &track, const std::stop_token &stop);
    void endWith(const NSError &error);

    const DiscPlanOrder order;
    DiscPlanResult result; ///< the worker's while it runs
    bool isLaidOut = false;
    const std::shared_ptr<const void> life = std::make_shared<int>(); ///< its end silences the layout's callbacks
};

void DiscPlanJob::Work::begin()
{
    NSError error = errorOfEnvironment();
    if (!error && !order.tree)
        error = discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is nothing to plan"));
    if (error) {
        endWith(error);
        return;
    }
    if (!order.tree->createDRLayoutAsyncNotifyProgressToTarget(target()))
        layoutMade(nullptr);
}

KRFileHierarchyItemLayoutTarget DiscPlanJob::Work::target()
{
    KRFileHierarchyItemLayoutTarget heard;
    heard.context = life;
    heard.KRFileHierarchyItemDRLayoutCreationProgress = [](KRFileHierarchyItem &, float) {};
    heard.KRFileHierarchyItemDRLayoutCreationFinished = [this](KRFileHierarchyItem &,
                                                               const std::shared_ptr<DRFSObject> &root) {
        layoutMade(std::dynamic_pointer_cast<DRFolder>(root));
    };
    heard.KRFileHierarchyItemDRLayoutCreationDidCancel = [this](KRFileHierarchyItem &) {
        endWith(discJobCancellation());
    };
    return heard;
}

void DiscPlanJob::Work::layoutMade(const std::shared_ptr<DRFolder> &folder)
{
    isLaidOut = true;
    if (isCancelled() || !folder) {
        endWith(
            cancellationOr(discJobError(DiscJobErrorCode::Layout, QStringLiteral("the disc's layout cannot be made"))));
        return;
    }
    result.unreadable = order.tree->unreadableFolders();
    runInBackground([this, track = trackOf(folder)](const std::stop_token &stop) { return plan(track, stop); },
                    [this](const NSError &error) { endWith(cancellationOr(error)); });
}

std::shared_ptr<DRTrack> DiscPlanJob::Work::trackOf(const std::shared_ptr<DRFolder> &folder) const
{
    folder->setBaseName(isDvdVideo(*order.tree) ? dvdName(order.volumeName) : order.volumeName);
    folder->setExplicitFilesystemMask(DRFilesystemMask(order.filesystems.toInt()));
    if (order.relocatesDeepFolders)
        folder->setProperty(true, DRRelocatesDeepFolders, DRISO9660);
    return DRTrack::trackForRootFolder(folder);
}

NSError DiscPlanJob::Work::plan(const std::shared_ptr<DRTrack> &track, const std::stop_token &stop)
{
    const Result<BurnPlan> planned = planBurn(track, nullptr, stop, [](double) {});
    if (!planned)
        return jobErrorOfBurn(planned.error());
    result.bytes = planned->bytes;
    result.files = planned->files;
    result.folders = planned->folders;
    result.report = planned->report;
    return {};
}

void DiscPlanJob::Work::stop()
{
    if (order.tree && !isLaidOut)
        order.tree->cancelDRLayoutCreationNotifyTarget(target());
}

void DiscPlanJob::Work::endWith(const NSError &error)
{
    result.error = error;
    end(error);
}

DiscJobProgress DiscPlanJob::Work::progress() const
{
    DiscJobProgress progress;
    progress.phase = DiscJobPhase::Planning;
    return progress;
}

DiscPlanJob::DiscPlanJob(DiscPlanOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

DiscPlanJob::~DiscPlanJob() = default;

const DiscPlanResult &DiscPlanJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void DiscPlanJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
