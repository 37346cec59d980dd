#include "platform/discrecording/burn/BurnPlan.h"

#include "platform/discrecording/burn/CallbackSink.h"
#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/foundation/ByteOrder.h"
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

/// A track of an empty folder, with these changes to its properties.
std::shared_ptr<DRTrack> trackOfFolder(const QVariantMap &changes = {})
{
    auto track = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    QVariantMap properties = track->properties();
    properties.insert(changes);
    track->setProperties(properties);
    return track;
}

/// The disc, with the part that nothing is written of in front of it left out.
QByteArray writtenBytes(const DRLayout &layout)
{
    const Result<BurnPlan> plan = planLayout(layout);
    MemoryConsumer consumer;
    CallbackSink sink(consumer);
    EXPECT_TRUE(plan && writePlan(*plan, sink).isNull());
    return consumer.bytes;
}

std::uint32_t littleEndian(const QByteArray &bytes, qsizetype offset)
{
    return loadLittleEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(bytes.constData()) + offset);
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

TEST(BurnPlan, plan_fails_whenNoDiscHasSuchTracks)
{
    const auto producer = std::make_shared<TestProducer>();
    const NSError error = planError(DRTrackArray(100, trackOfProducer(producer, 5)));
    EXPECT_EQ(error.code(), paramErr);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("99")))
        << qPrintable(error.localizedDescription());
    EXPECT_EQ(planError(trackOfFolder({{DRIndexPointsKey, QVariantList{5000u}}})).code(), paramErr);
    EXPECT_EQ(producer->calls, QStringList()) << "nothing was begun";
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

TEST(BurnPlan, plan_describesAFilesystemInTheFormThatItsPropertiesName)
{
    const Result<BurnPlan> raw = planLayout(trackOfFolder({{DRBlockSizeKey, 2352u},
                                                           {DRDataFormKey, 17},
                                                           {DRPreGapLengthKey, 150u},
                                                           {DRPostGapLengthKey, 150u},
                                                           {DRIndexPointsKey, QVariantList{20u}}}));
    ASSERT_TRUE(raw) << raw.error().localizedDescription().toStdString();
    const DiscTrack *const described = raw->contents.track(1);
    EXPECT_EQ(described->blockSize, 2352u);
    EXPECT_EQ(described->kind, TrackKind::Mode1);
    EXPECT_EQ(described->pregap, (TrackGap{150, false}));
    EXPECT_EQ(described->postgap, (TrackGap{150, true}));
    EXPECT_EQ(described->indexPoints, (std::vector<std::uint64_t>{20}));
    EXPECT_GT(described->length, 150u);
    EXPECT_EQ(raw->bytes, described->length * 2352);
    EXPECT_EQ(raw->contents.sessions.front().firstBlock, BlockAddress(-150));
    EXPECT_EQ(raw->contents.firstBlockOfTrack(1), BlockAddress(0));
}

TEST(BurnPlan, plan_fails_whenAFilesystemCannotLieInTheBlocksOfItsTrack)
{
    const auto errorOf = [](const QVariantMap &changes) { return planError(trackOfFolder(changes)); };
    for (const QVariantMap &changes : {QVariantMap{{DRBlockSizeKey, 2336u}, {DRBlockTypeKey, 9}},
                                       QVariantMap{{DRBlockSizeKey, 2352u}, {DRBlockTypeKey, 0}},
                                       QVariantMap{{DRBlockSizeKey, 512u}}, QVariantMap{{DRBlockSizeKey, 0u}}}) {
        EXPECT_EQ(errorOf(changes).code(), paramErr);
        EXPECT_TRUE(errorOf(changes).localizedDescription().contains(DRBlockSizeKey));
    }
}

TEST(BurnPlan, writeDisc_givesAFilesystemTheAddressesOfItsPlaceOnTheDisc)
{
    const auto audio = trackOfProducer(std::make_shared<TestProducer>(), 40, 2352);
    const QByteArray bytes = writtenBytes(DRTrackArray{audio, trackOfFolder({{DRPreGapLengthKey, 150u}})});
    constexpr std::uint32_t begin = 40 + 150; // the gap has blocks, though nothing stores them
    const QByteArray image = bytes.mid(qsizetype(40) * 2352);
    constexpr qsizetype rootExtentInDescriptor = 156 + 2;
    const std::uint32_t root = littleEndian(image, qsizetype{16} * 2048 + rootExtentInDescriptor);
    ASSERT_GT(root, begin);
    // The root's first record is that of itself.
    EXPECT_EQ(littleEndian(image, qsizetype(root - begin) * 2048 + 2), root);
    constexpr qsizetype mainSequence = 16;
    EXPECT_EQ(littleEndian(image, qsizetype{256} * 2048 + mainSequence + 4), begin + 32);
}

TEST(BurnPlan, writeDisc_codesSectorsForTheirPlaceOnTheDisc)
{
    const auto audio = trackOfProducer(std::make_shared<TestProducer>(), 40, 2352);
    const QByteArray bytes = writtenBytes(
        DRTrackArray{audio, trackOfFolder({{DRBlockSizeKey, 2352u}, {DRDataFormKey, 17}, {DRPreGapLengthKey, 150u}})});
    ASSERT_EQ(bytes.size() % 2352, 0);
    for (qsizetype block = 40; block < bytes.size() / 2352; ++block) {
        const auto *const sector = reinterpret_cast<const std::uint8_t *>(bytes.constData()) + block * 2352;
        ASSERT_FALSE(checkSector(sector, TrackKind::Mode1, BlockAddress(block + 150)));
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
