#include "platform/discrecording/burn/BurnPlan.h"

#include "tests/discrecording/burn/TestProducer.h"

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

NSError planError(const DRLayout &layout)
{
    NSError error;
    (void)planBurn(
        layout, {}, [](double) {}, &error);
    return error;
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
    const auto producer = std::make_shared<TestProducer>();
    const std::vector<DRTrackArray> sessions{{trackOfProducer(producer, 5), trackOfProducer(producer, 7, 2352, 2)},
                                             {trackOfProducer(producer, 1)}};
    NSError error;
    const BurnPlan plan = planBurn(
        sessions, {}, [](double) {}, &error);
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(plan.tracks.size(), 3u);
    EXPECT_EQ(plan.bytes, 5u * 2048 + 9 * 2352 + 2048);
    ASSERT_TRUE(plan.report);
    EXPECT_EQ(plan.report->count(), 0u);
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
