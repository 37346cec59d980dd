#include "platform/discrecording/burn/BurnPlan.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/planning/DiscImagePlan.h"

#include <limits>
#include <numeric>

namespace Tessaron
{

namespace
{

class JoinedStorageReport final : public DRStorageReport
{
public:
    explicit JoinedStorageReport(std::vector<std::shared_ptr<const DRStorageReport>> reports)
        : m_reports(std::move(reports))
    {
    }

    [[nodiscard]] std::size_t count() const override
    {
        return sum([](const DRStorageReport &report) { return report.count(); });
    }
    [[nodiscard]] DRStorageReportItem item(std::size_t index) const override
    {
        for (const auto &report : m_reports) {
            if (index < report->count())
                return report->item(index);
            index -= report->count();
        }
        return {};
    }
    [[nodiscard]] std::size_t lostCount() const override
    {
        return sum([](const DRStorageReport &report) { return report.lostCount(); });
    }
    [[nodiscard]] std::size_t count(DRDiscTree tree, DRStorageReportItem::Kind kind) const override
    {
        return sum([=](const DRStorageReport &report) { return report.count(tree, kind); });
    }

private:
    template <typename Count>
    [[nodiscard]] std::size_t sum(const Count &countIn) const
    {
        return std::accumulate(m_reports.begin(), m_reports.end(), std::size_t(0),
                               [&](std::size_t soFar, const auto &report) { return soFar + countIn(*report); });
    }

    const std::vector<std::shared_ptr<const DRStorageReport>> m_reports;
};

/// The masks of a track's objects alone decide which filesystems it has.
PlanOptions trackOptions()
{
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskAll;
    return options;
}

NSError layoutError(const QString &description)
{
    return burnError(paramErr, description);
}

/// What can be said of the layout without looking at any file; fills in the tracks.
NSError checkTracks(const DRLayout &layout, std::vector<PlannedTrack> *tracks)
{
    const DRTrackArray all = tracksOfLayout(layout);
    if (all.empty() || isNullLayout(layout))
        return layoutError(QStringLiteral("There is nothing to write: the layout has no track."));
    NSError error;
    for (const std::shared_ptr<DRTrack> &track : all) {
        if (!track)
            return layoutError(QStringLiteral("A track of the layout is missing."));
        PlannedTrack planned;
        planned.track = track;
        if (track->producer())
            planned.extent = extentOfProducerTrack(*track, &error);
        else if (!track->rootFolder())
            error = layoutError(QStringLiteral("A track has neither a folder nor a producer."));
        if (error)
            return error;
        tracks->push_back(std::move(planned));
    }
    return {};
}

} // namespace

std::uint64_t PlannedTrack::blocks() const
{
    return image ? image->blockCount() : extent.blocks();
}

std::uint64_t PlannedTrack::bytes() const
{
    return image ? std::uint64_t(image->blockCount()) * logicalBlockSize : extent.bytes();
}

BurnPlan planBurn(const DRLayout &layout, const std::stop_token &cancellation,
                  const std::function<void(double)> &progress, NSError *error)
{
    BurnPlan plan;
    *error = checkTracks(layout, &plan.tracks);
    std::vector<std::shared_ptr<const DRStorageReport>> reports;
    const double trackCount = double(plan.tracks.size());
    std::uint64_t blocks = 0;
    for (std::size_t index = 0; index < plan.tracks.size() && !*error; ++index) {
        PlannedTrack &planned = plan.tracks[index];
        if (planned.track->rootFolder()) {
            const auto trackProgress = [&](double part) { progress((double(index) + part) / trackCount); };
            DiscImagePlan image =
                planDiscImage(planned.track->rootFolder(), trackOptions(), cancellation, trackProgress, error);
            if (!image.image)
                return plan;
            planned.image = std::move(image.image);
            planned.track.reset(); // the image does not need the tree, which may be big
            reports.push_back(std::move(image.report));
            plan.files += image.fileCount;
            plan.folders += image.folderCount;
        }
        plan.bytes += planned.bytes();
        blocks += planned.blocks();
    }
    if (!*error && blocks > std::numeric_limits<std::uint32_t>::max())
        *error = layoutError(QStringLiteral("The layout's %1 blocks are more than any disc has.").arg(blocks));
    plan.report = joinReports(std::move(reports));
    return plan;
}

std::shared_ptr<const DRStorageReport> joinReports(std::vector<std::shared_ptr<const DRStorageReport>> reports)
{
    if (reports.size() == 1)
        return reports.front();
    return std::make_shared<JoinedStorageReport>(std::move(reports));
}

} // namespace Tessaron
