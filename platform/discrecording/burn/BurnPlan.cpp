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
NSError checkTracks(const DRLayout &layout, DRBurn *burn, const QVariantMap &media,
                    std::vector<std::unique_ptr<TrackWriter>> *writers)
{
    const DRTrackArray tracks = tracksOfLayout(layout);
    if (tracks.empty() || isNullLayout(layout))
        return layoutError(QStringLiteral("There is nothing to write: the layout has no track."));
    for (const std::shared_ptr<DRTrack> &track : tracks) {
        Result<std::unique_ptr<TrackWriter>> writer = trackWriterFor(track, burn, media);
        if (!writer)
            return writer.error();
        writers->push_back(std::move(*writer));
    }
    return {};
}

/// How the disc begins. Block 0 is the first one of what a disc holds beyond the pregap that every CD has, unless the
/// image is to hold that as well.
BlockAddress firstBlockOfDisc(const TrackGap &pregap)
{
    return BlockAddress(pregap.isStored ? 0 : -std::int64_t(pregap.length));
}

/// Plans the tracks of one session after another, each at its place behind those in front of it.
class DiscPlanner
{
public:
    DiscPlanner(BurnPlan &plan, const std::stop_token &cancellation, const std::function<void(double)> &progress,
                BlockAddress firstBlock)
        : m_plan(plan)
        , m_cancellation(cancellation)
        , m_progress(progress)
        , m_next(firstBlock)
    {
    }

    /// An empty session of the layout is left out.
    [[nodiscard]] NSError addSession(std::size_t trackCount)
    {
        if (trackCount == 0)
            return {};
        m_plan.contents.sessions.emplace_back().firstBlock = m_next;
        for (; trackCount > 0; --trackCount) {
            if (NSError error = addTrack())
                return error;
        }
        return {};
    }

    [[nodiscard]] std::vector<std::shared_ptr<const DRStorageReport>> takeReports() { return std::move(m_reports); }

private:
    [[nodiscard]] NSError addTrack()
    {
        const std::size_t count = m_plan.writers.size();
        TrackWriter &writer = *m_plan.writers[m_index];
        if (m_index == 0) {
            m_next = m_next + firstBlockOfDisc(writer.pregap()).number();
            m_plan.contents.sessions.front().firstBlock = m_next;
        }
        const auto trackProgress = [&](double part) { m_progress((double(m_index) + part) / double(count)); };
        if (NSError error = writer.plan(m_next, m_cancellation, trackProgress))
            return error;
        ++m_index;
        return take(writer.track(), writer.facts());
    }

    [[nodiscard]] NSError take(const DiscTrack &track, const TrackFacts &facts)
    {
        constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
        m_plan.contents.sessions.back().tracks.push_back(track);
        m_blocks += track.blocksOnDisc();
        if (m_blocks > most)
            return layoutError(QStringLiteral("The layout's %1 blocks are more than any disc has.").arg(m_blocks));
        m_next = m_next + std::int64_t(track.blocksOnDisc());
        m_plan.files += facts.files;
        m_plan.folders += facts.folders;
        if (facts.report)
            m_reports.push_back(facts.report);
        return {};
    }

    BurnPlan &m_plan;
    const std::stop_token &m_cancellation;
    const std::function<void(double)> &m_progress;
    std::vector<std::shared_ptr<const DRStorageReport>> m_reports;
    std::size_t m_index = 0; ///< of the next track, through all sessions
    std::uint64_t m_blocks = 0;
    BlockAddress m_next;
};

NSError writeTrack(TrackWriter &writer, const DiscTrack &track, BlockStream &stream)
{
    NSError error = stream.beginTrack(track);
    if (!error)
        error = writer.write(stream);
    return error ? error : stream.endTrack();
}

NSError writeSessions(const BurnPlan &plan, BlockSink &sink, BlockStream &stream)
{
    if (NSError error = sink.beginDisc(plan.contents))
        return error;
    auto writer = plan.writers.begin();
    for (const DiscSession &session : plan.contents.sessions) {
        stream.beginSession(session.firstBlock);
        for (const DiscTrack &track : session.tracks) {
            if (NSError error = writeTrack(**writer++, track, stream))
                return error;
        }
    }
    return sink.endDisc();
}

} // namespace

Result<BurnPlan> planBurn(const DRLayout &layout, DRBurn *burn, const std::stop_token &cancellation,
                          const std::function<void(double)> &progress, const QVariantMap &media,
                          BlockAddress firstBlock)
{
    BurnPlan plan;
    if (NSError error = checkTracks(layout, burn, media, &plan.writers))
        return error;
    DiscPlanner planner(plan, cancellation, progress, firstBlock);
    for (const DRTrackArray &tracks : sessionsOf(layout)) {
        if (NSError error = planner.addSession(tracks.size()))
            return error;
    }
    plan.contents.numberTracks();
    if (const NSError wrong = plan.contents.check())
        return layoutError(wrong.localizedFailureReason());
    plan.bytes = plan.contents.storedBytes();
    plan.report = joinReports(planner.takeReports());
    return plan;
}

NSError writeDisc(const BurnPlan &plan, BlockSink &sink, const std::stop_token &cancellation,
                  const std::function<void(std::uint64_t bytes)> &bytesTaken)
{
    BlockStream stream(sink, cancellation, bytesTaken);
    const NSError error = writeSessions(plan, sink, stream);
    return error ? sink.abandonDisc(error) : NSError();
}

std::shared_ptr<const DRStorageReport> joinReports(std::vector<std::shared_ptr<const DRStorageReport>> reports)
{
    if (reports.size() == 1)
        return reports.front();
    return std::make_shared<JoinedStorageReport>(std::move(reports));
}

} // namespace Tessaron
