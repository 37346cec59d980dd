#include "platform/discrecording/burn/BurnPlan.h"

#include "platform/discrecording/burn/BurnErrors.h"

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

NSError layoutError(const QString &description)
{
    return burnError(paramErr, description);
}

std::vector<DRTrackArray> sessionsOf(const DRLayout &layout)
{
    if (const auto *const sessions = std::get_if<std::vector<DRTrackArray>>(&layout))
        return *sessions;
    return {tracksOfLayout(layout)};
}

/// What can be said of the layout without looking at any file: makes the writers.
NSError checkTracks(const DRLayout &layout, DRBurn *burn, std::vector<std::unique_ptr<TrackWriter>> *writers)
{
    const DRTrackArray tracks = tracksOfLayout(layout);
    if (tracks.empty() || isNullLayout(layout))
        return layoutError(QStringLiteral("There is nothing to write: the layout has no track."));
    for (const std::shared_ptr<DRTrack> &track : tracks) {
        Result<std::unique_ptr<TrackWriter>> writer = trackWriterFor(track, burn);
        if (!writer)
            return writer.error();
        writers->push_back(std::move(*writer));
    }
    return {};
}

/// The disc's description, when all tracks are planned. An empty session of the layout is left out.
TableOfContents describeDisc(const DRLayout &layout, const std::vector<std::unique_ptr<TrackWriter>> &writers)
{
    TableOfContents contents;
    auto writer = writers.begin();
    for (const DRTrackArray &tracks : sessionsOf(layout)) {
        DiscSession session;
        for (std::size_t count = tracks.size(); count > 0; --count)
            session.tracks.push_back((*writer++)->track());
        if (!session.tracks.empty())
            contents.sessions.push_back(std::move(session));
    }
    contents.numberTracks();
    contents.joinSessions();
    return contents;
}

std::uint64_t blocksOf(const TableOfContents &contents)
{
    std::uint64_t blocks = 0;
    for (const DiscSession &session : contents.sessions)
        blocks += session.blocksOnDisc();
    return blocks;
}

NSError writeTrack(TrackWriter &writer, const DiscTrack &track, BlockSink &sink, BlockStream &stream)
{
    NSError error = sink.beginTrack(track);
    if (!error)
        error = writer.write(stream);
    return error ? error : sink.endTrack();
}

} // namespace

Result<BurnPlan> planBurn(const DRLayout &layout, DRBurn *burn, const std::stop_token &cancellation,
                          const std::function<void(double)> &progress)
{
    BurnPlan plan;
    if (NSError error = checkTracks(layout, burn, &plan.writers))
        return error;
    std::vector<std::shared_ptr<const DRStorageReport>> reports;
    for (std::size_t index = 0; index < plan.writers.size(); ++index) {
        TrackWriter &writer = *plan.writers[index];
        const auto trackProgress = [&](double part) { progress((double(index) + part) / double(plan.writers.size())); };
        if (NSError error = writer.plan(cancellation, trackProgress))
            return error;
        const TrackFacts facts = writer.facts();
        plan.files += facts.files;
        plan.folders += facts.folders;
        if (facts.report)
            reports.push_back(facts.report);
    }
    plan.contents = describeDisc(layout, plan.writers);
    if (const std::uint64_t blocks = blocksOf(plan.contents); blocks > std::numeric_limits<std::uint32_t>::max())
        return layoutError(QStringLiteral("The layout's %1 blocks are more than any disc has.").arg(blocks));
    plan.bytes = plan.contents.storedBytes();
    plan.report = joinReports(std::move(reports));
    return plan;
}

NSError writeDisc(const BurnPlan &plan, BlockSink &sink, const std::stop_token &cancellation,
                  const std::function<void(std::uint64_t bytes)> &bytesTaken)
{
    BlockStream stream(sink, cancellation, bytesTaken);
    if (NSError error = sink.beginDisc(plan.contents))
        return error;
    auto writer = plan.writers.begin();
    for (const DiscSession &session : plan.contents.sessions) {
        stream.beginSession(session.firstBlock);
        for (const DiscTrack &track : session.tracks) {
            if (NSError error = writeTrack(**writer++, track, sink, stream))
                return error;
        }
    }
    return sink.endDisc();
}

std::shared_ptr<const DRStorageReport> joinReports(std::vector<std::shared_ptr<const DRStorageReport>> reports)
{
    if (reports.size() == 1)
        return reports.front();
    return std::make_shared<JoinedStorageReport>(std::move(reports));
}

} // namespace Tessaron
