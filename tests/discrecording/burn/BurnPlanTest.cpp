#include "platform/discrecording/burn/BurnPlan.h"

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/discrecording/burn/TestProducer.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

class ListReport final : public DRStorageReport
{
public:
    explicit ListReport(const QStringList &paths, std::size_t lost)
        : m_paths(paths)
        , m_lost(lost)
    {
    }
    [[nodiscard]] std::size_t count() const override { return std::size_t(m_paths.size()); }
    [[nodiscard]] DRStorageReportItem item(std::size_t index) const override
    {
        DRStorageReportItem item;
        item.path = m_paths.at(qsizetype(index));
        return item;
    }
    [[nodiscard]] std::size_t lostCount() const override { return m_lost; }
    [[nodiscard]] std::size_t count(DRDiscTree tree, DRStorageReportItem::Kind kind) const override
    {
        return tree == DRDiscTree::ISO9660 && kind == DRStorageReportItem::Kind::Renamed ? count() : 0;
    }

private:
    const QStringList m_paths;
    const std::size_t m_lost;
};

Result<BurnPlan> planLayout(const DRLayout &layout)
{
    return planBurn(layout, nullptr, {}, [](double) {});
}

NSError planError(const DRLayout &layout)
{
    return planLayout(layout).error();
}

NSError writePlan(const BurnPlan &plan, BlockSink &sink)
{
    return writeDisc(plan, sink, {}, {});
}

/// Three tracks in two sessions.
std::vector<DRTrackArray> twoSessions(const std::shared_ptr<TestProducer> &producer)
{
    return {{trackOfProducer(producer, 5), trackOfProducer(producer, 7, 2352, 2)}, {trackOfProducer(producer, 1)}};
}

} // namespace

TEST(BurnPlan, plan_fails_whenThereIsNothingToWrite)
{
    const QString nothing = QStringLiteral("There is nothing to write: the layout has no track.");
    EXPECT_EQ(planError(DRLayout()).localizedDescription(), nothing);
    EXPECT_EQ(planError(std::shared_ptr<DRTrack>()).localizedDescription(), nothing);
    EXPECT_EQ(planError(DRTrackArray()).localizedDescription(), nothing);
    EXPECT_EQ(planError(std::vector<DRTrackArray>{{}, {}}).localizedDescription(), nothing);
    EXPECT_EQ(planError(DRLayout()).code(), paramErr);
}

TEST(BurnPlan, plan_fails_whenATrackIsMissingOrSaysNoSize)
{
    const auto producer = std::make_shared<TestProducer>();
    const std::shared_ptr<DRTrack> good = trackOfProducer(producer, 5);
    EXPECT_EQ(planError(DRTrackArray{good, nullptr}).localizedDescription(),
              QStringLiteral("A track of the layout is missing."));
    EXPECT_EQ(planError(DRTrackArray{good, DRTrack::trackWithProducer(producer)}).code(), paramErr);
    EXPECT_EQ(producer->calls, QStringList()) << "no producer is asked for anything";
}

TEST(BurnPlan, plan_fails_whenTheTracksTogetherAreLongerThanBlockNumbersReach)
{
    const std::shared_ptr<DRTrack> huge = trackOfProducer(std::make_shared<TestProducer>(), 0xFFFFFFF0u);
    EXPECT_TRUE(planError(huge).isNull());
    EXPECT_EQ(planError(DRTrackArray{huge, huge}).code(), paramErr);
}

TEST(BurnPlan, plan_sumsAllTracksOfAllSessions)
{
    const Result<BurnPlan> plan = planLayout(twoSessions(std::make_shared<TestProducer>()));
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->writers.size(), 3u);
    EXPECT_EQ(plan->bytes, 5u * 2048 + 9 * 2352 + 2048);
    ASSERT_TRUE(plan->report);
    EXPECT_EQ(plan->report->count(), 0u);
}

TEST(BurnPlan, contents_keepTheSessions_andNumberTheTracksThroughAll)
{
    const Result<BurnPlan> plan = planLayout(twoSessions(std::make_shared<TestProducer>()));
    ASSERT_TRUE(plan);
    const TableOfContents &contents = plan->contents;
    EXPECT_TRUE(contents.check().isNull());
    ASSERT_EQ(contents.sessions.size(), 2u);
    EXPECT_EQ(contents.sessions[0].tracks.size(), 2u);
    EXPECT_EQ(contents.sessions[1].firstBlock, BlockAddress(14));
    EXPECT_EQ(contents.sessions[1].tracks.at(0).number, 3u);
    EXPECT_EQ(contents.firstBlockOfTrack(2), BlockAddress(7));
}

TEST(BurnPlan, contents_leaveAnEmptySessionOut)
{
    const auto producer = std::make_shared<TestProducer>();
    const Result<BurnPlan> plan = planLayout(std::vector<DRTrackArray>{{}, {trackOfProducer(producer, 1)}, {}});
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->contents.sessions.size(), 1u);
}

TEST(BurnPlan, plan_describesATrackThatIsPlanned_andTellsItsProgress)
{
    const TemporaryTree tree;
    tree.makeFile("source/file", "contents");
    const std::shared_ptr<DRTrack> data =
        DRTrack::trackForRootFolder(DRFolder::folderWithPath(tree.pathText("source")));
    std::vector<double> told;
    const Result<BurnPlan> plan = planBurn(DRTrackArray{trackOfProducer(std::make_shared<TestProducer>(), 5), data},
                                           nullptr, {}, [&](double share) { told.push_back(share); });
    ASSERT_TRUE(plan);
    const DiscTrack *const track = plan->contents.track(2);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->kind, TrackKind::Mode1);
    EXPECT_EQ(track->blockSize, 2048u);
    EXPECT_EQ(plan->bytes, (5 + track->length) * 2048);
    EXPECT_EQ(plan->files, 1u);
    ASSERT_FALSE(told.empty());
    EXPECT_GE(told.front(), 0.5);
    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_LE(told.back(), 1.0);
}

TEST(BurnPlan, plan_endsCancelled_onceAStopWasAskedFor)
{
    const TemporaryTree tree;
    std::stop_source stop;
    stop.request_stop();
    const auto track = DRTrack::trackForRootFolder(DRFolder::folderWithPath(tree.pathText()));
    EXPECT_EQ(planBurn(track, nullptr, stop.get_token(), [](double) {}).error().code(), kDRUserCanceledErr);
}

TEST(BurnPlan, writeDisc_callsTheSinkInOrder)
{
    const Result<BurnPlan> plan = planLayout(twoSessions(std::make_shared<TestProducer>()));
    ASSERT_TRUE(plan);
    ScriptedSink sink;
    EXPECT_TRUE(writePlan(*plan, sink).isNull());
    EXPECT_EQ(sink.calls.join(u';'),
              QStringLiteral("disc 3;track 1;blocks 5 at 0;end track;track 2;blocks 2 at 5;blocks 7 at 7;end track;"
                             "track 3;blocks 1 at 14;end track;end disc"));
    EXPECT_EQ(sink.disc, plan->contents);
}

TEST(BurnPlan, writeDisc_callsNothingMore_whereTheSinkFails)
{
    for (const char *const call : {"disc 3", "track 2", "blocks 7 at 7", "end track", "end disc"}) {
        const auto producer = std::make_shared<TestProducer>();
        const Result<BurnPlan> plan = planLayout(twoSessions(producer));
        ASSERT_TRUE(plan);
        ScriptedSink sink;
        sink.failingCall = QString::fromLatin1(call);
        EXPECT_EQ(writePlan(*plan, sink).code(), ioErr);
        EXPECT_EQ(sink.calls.last(), sink.failingCall);
        EXPECT_EQ(producer->calls.count(QStringLiteral("prepare")), producer->calls.count(QStringLiteral("cleanup")));
    }
}

TEST(BurnPlan, joinReports_givesTheItemsOfAll_oneAfterAnother)
{
    const auto first = std::make_shared<ListReport>(QStringList{QStringLiteral("/a"), QStringLiteral("/b")}, 1);
    const auto second = std::make_shared<ListReport>(QStringList{QStringLiteral("/c")}, 1);
    EXPECT_EQ(joinReports({first}), first);
    const std::shared_ptr<const DRStorageReport> joined = joinReports({first, second});
    ASSERT_EQ(joined->count(), 3u);
    EXPECT_EQ(joined->item(1).path, QStringLiteral("/b"));
    EXPECT_EQ(joined->item(2).path, QStringLiteral("/c"));
    EXPECT_EQ(joined->lostCount(), 2u);
    EXPECT_EQ(joined->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Renamed), 3u);
    EXPECT_EQ(joined->count(DRDiscTree::Joliet, DRStorageReportItem::Kind::Renamed), 0u);
}

} // namespace Tessaron::Testing
