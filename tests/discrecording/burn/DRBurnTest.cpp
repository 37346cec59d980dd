#include "platform/discrecording/burn/DRBurn.h"

#include "platform/discrecording/burn/DRNotificationCenter.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "tests/discrecording/burn/FakeBlockImage.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/discrecording/burn/TestProducer.h"
#include "tests/support/EventLoop.h"

#include <QStringList>

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace Tessaron::Testing
{

namespace
{

QStringList successfulStates()
{
    return {DRStatusStatePreparing, DRStatusStateTrackWrite, DRStatusStateDone};
}

/// One burn into memory, with all that it posts.
class BurnIntoMemory
{
public:
    BurnIntoMemory()
    {
        m_center->addObserver(this, DRBurnStatusChangedNotification, burn.get(),
                              [this](DRBurn &sender) { hear(sender); });
    }
    ~BurnIntoMemory() { m_center->removeObserver(this, DRBurnStatusChangedNotification, nullptr); }

    [[nodiscard]] bool isOver() const { return !final.isEmpty(); }
    /// Runs the event loop to the end of the burn and a little longer, for what should not come any more.
    void waitForEnd()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return isOver(); }));
        if (burn)
            burn->waitUntilFinished();
        drainEventLoop();
    }
    [[nodiscard]] QVariant error(const QString &key) const { return final.value(DRErrorStatusKey).toMap().value(key); }
    [[nodiscard]] qint32 errorCode() const { return error(DRErrorStatusErrorKey).toInt(); }

    MemoryConsumer consumer;
    std::shared_ptr<DRBurn> burn = DRBurn::burnForDevice(DRCallbackDevice::initWithConsumer(&consumer));
    QStringList states; ///< each posted state, runs of the same noted once
    int posts = 0;
    int finalPosts = 0;
    double lastPercent = 0;
    QVariantMap final;
    std::function<void(const QString &state)> onState;

private:
    void hear(DRBurn &sender)
    {
        const QVariantMap status = sender.status();
        const QString state = status.value(DRStatusStateKey).toString();
        ++posts;
        if (states.isEmpty() || states.last() != state) {
            states << state;
            lastPercent = 0;
        }
        EXPECT_GE(status.value(DRStatusPercentCompleteKey).toDouble(), lastPercent);
        lastPercent = status.value(DRStatusPercentCompleteKey).toDouble();
        if (state == DRStatusStateDone || state == DRStatusStateFailed) {
            final = status;
            ++finalPosts;
        }
        if (onState)
            onState(state);
    }

    const std::shared_ptr<DRNotificationCenter> m_center = DRNotificationCenter::currentRunLoopCenter();
};

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::size_t(std::distance(begin(entries), end(entries)));
}

} // namespace

TEST(DRBurn, burnForDevice_isNull_withoutDevice)
{
    EXPECT_EQ(DRBurn::burnForDevice(nullptr), nullptr);
    EXPECT_EQ(DRCallbackDevice::initWithConsumer(nullptr), nullptr);
}

TEST(DRBurn, status_isEmpty_beforeTheStart)
{
    const BurnIntoMemory given;
    EXPECT_EQ(given.burn->status(), QVariantMap());
    EXPECT_EQ(given.burn->storageReport(), nullptr);
    EXPECT_EQ(given.burn->amounts().bytesTotal, 0u);
    given.burn->abort();
    given.burn->waitUntilFinished();
}

TEST(DRBurn, writeLayout_postsEachStateInOrder_andTheEndOnce)
{
    BurnIntoMemory given;
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 3000));
    given.waitForEnd();
    EXPECT_EQ(given.states, successfulStates());
    EXPECT_EQ(given.finalPosts, 1);
    EXPECT_TRUE(given.consumer.bytes == TestProducer::pattern(qsizetype{3000} * 2048));
    EXPECT_EQ(given.burn->amounts().bytesWritten, 3000u * 2048);
    EXPECT_EQ(given.burn->amounts().bytesTotal, 3000u * 2048);
    ASSERT_TRUE(given.burn->storageReport());
    EXPECT_EQ(given.burn->storageReport()->count(), 0u);
}

TEST(DRBurn, writeLayout_reachesAllOfTheWriting_beforeItIsDone)
{
    BurnIntoMemory given;
    double lastWriting = 0;
    given.onState = [&](const QString &state) {
        if (state == DRStatusStateTrackWrite)
            lastWriting = given.lastPercent;
    };
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 3000));
    given.waitForEnd();
    EXPECT_EQ(lastWriting, 1.0);
}

TEST(DRBurn, writeLayout_writesTheTracksOfAllSessionsInOrder)
{
    BurnIntoMemory given;
    const auto producer = std::make_shared<TestProducer>();
    const std::vector<DRTrackArray> sessions{{trackOfProducer(producer, 5), trackOfProducer(producer, 7, 2352, 2)},
                                             {trackOfProducer(producer, 1)}};
    given.burn->writeLayout(sessions);
    given.waitForEnd();
    EXPECT_TRUE(given.consumer.bytes
                == TestProducer::pattern(qsizetype{5} * 2048) + QByteArray(qsizetype{2} * 2352, '\0')
                    + TestProducer::pattern(qsizetype{7} * 2352) + TestProducer::pattern(2048));
    EXPECT_EQ(given.consumer.addresses, (QList<std::uint32_t>{0, 5, 7, 14}));
    EXPECT_EQ(given.states, successfulStates());
}

TEST(DRBurn, writeLayout_doesNothing_whenTheBurnWasStartedBefore)
{
    BurnIntoMemory given;
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 5));
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 50));
    given.waitForEnd();
    EXPECT_EQ(given.consumer.bytes.size(), 5 * 2048);
    EXPECT_EQ(given.finalPosts, 1);
}

TEST(DRBurn, writeLayout_failsWithASentence_whenTheLayoutIsNull)
{
    BurnIntoMemory given;
    given.burn->writeLayout({});
    given.waitForEnd();
    EXPECT_EQ(given.states, (QStringList{DRStatusStatePreparing, DRStatusStateFailed}));
    EXPECT_EQ(given.errorCode(), paramErr);
    EXPECT_EQ(given.error(DRErrorStatusErrorStringKey), QStringLiteral("The layout cannot be written as it is."));
    EXPECT_EQ(given.error(DRErrorStatusErrorInfoStringKey),
              QStringLiteral("There is nothing to write: the layout has no track."));
}

TEST(DRBurn, writeLayout_fails_whenTheConsumerRefusesABlock)
{
    BurnIntoMemory given;
    given.consumer.failingBlock = 1234;
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 3000));
    given.waitForEnd();
    EXPECT_EQ(given.states, (QStringList{DRStatusStatePreparing, DRStatusStateTrackWrite, DRStatusStateFailed}));
    EXPECT_EQ(given.errorCode(), -36);
    EXPECT_FALSE(given.error(DRErrorStatusErrorInfoStringKey).toString().startsWith(QStringLiteral("0x")));
}

TEST(DRBurn, progress_isPostedFewTimes_whenManyPiecesAreWritten)
{
    BurnIntoMemory given;
    const auto producer = std::make_shared<TestProducer>();
    producer->mostAtOnce = 0xFFFFFFFF;
    DRTrackArray tracks;
    for (int track = 0; track < 2000; ++track)
        tracks.push_back(trackOfProducer(producer, 1));
    const auto begin = std::chrono::steady_clock::now();
    given.burn->writeLayout(tracks);
    given.waitForEnd();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    EXPECT_LE(given.posts, 6 + int(seconds.count() * 30));
}

TEST(DRBurn, progress_doesNotPileUp_whileTheEventLoopStands)
{
    BurnIntoMemory given;
    const auto producer = std::make_shared<TestProducer>();
    producer->beforeData = [](std::uint64_t) { std::this_thread::sleep_for(std::chrono::milliseconds(5)); };
    producer->mostAtOnce = 2048;
    given.burn->writeLayout(trackOfProducer(producer, 60));
    given.burn->waitUntilFinished();
    EXPECT_EQ(given.burn->status().value(DRStatusStateKey), DRStatusStateDone);
    EXPECT_EQ(given.posts, 0);
    drainEventLoop();
    EXPECT_EQ(given.states, successfulStates()) << "nevertheless each state is seen";
    EXPECT_LE(given.posts, 4);
}

TEST(DRBurn, abort_endsCancelled_whilePreparing)
{
    BurnIntoMemory given;
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 1 << 20));
    given.burn->abort();
    given.waitForEnd();
    EXPECT_EQ(given.states.first(), DRStatusStatePreparing);
    EXPECT_EQ(given.states.last(), DRStatusStateFailed);
    EXPECT_EQ(given.errorCode(), kDRUserCanceledErr);
}

TEST(DRBurn, abort_endsCancelled_atTheFirstBlockAndInTheMiddle)
{
    for (const std::uint64_t position : {std::uint64_t(0), std::uint64_t(20) << 20}) {
        BurnIntoMemory given;
        const auto producer = std::make_shared<TestProducer>();
        producer->beforeData = [&](std::uint64_t at) {
            if (at >= position)
                given.burn->abort();
        };
        given.burn->writeLayout(trackOfProducer(producer, 1 << 20));
        given.waitForEnd();
        EXPECT_EQ(given.states, (QStringList{DRStatusStatePreparing, DRStatusStateTrackWrite, DRStatusStateFailed}));
        EXPECT_EQ(given.errorCode(), kDRUserCanceledErr);
        EXPECT_EQ(given.finalPosts, 1);
        EXPECT_EQ(given.consumer.bytes.size(), qsizetype(position));
        EXPECT_EQ(producer->calls.last(), QStringLiteral("cleanup"));
    }
}

TEST(DRBurn, abort_changesNothing_afterTheEnd)
{
    BurnIntoMemory given;
    given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 5));
    given.waitForEnd();
    given.burn->abort();
    drainEventLoop();
    EXPECT_EQ(given.burn->status().value(DRStatusStateKey), DRStatusStateDone);
    EXPECT_EQ(given.finalPosts, 1);
}

TEST(DRBurn, aHandler_mayLetGoOfTheBurn_inEveryState)
{
    for (const QString &state : successfulStates()) {
        BurnIntoMemory given;
        const std::weak_ptr<DRBurn> watched = given.burn;
        given.onState = [&](const QString &posted) {
            if (posted == state)
                given.burn.reset();
        };
        given.burn->writeLayout(trackOfProducer(std::make_shared<TestProducer>(), 20000));
        EXPECT_TRUE(runEventLoopUntil([&] { return watched.expired(); }));
        EXPECT_EQ(given.states.last(), state) << "nothing follows";
    }
}

TEST(DRBurn, destruction_abortsAndPostsNothingMore)
{
    BurnIntoMemory given;
    const auto producer = std::make_shared<TestProducer>();
    std::atomic<bool> isWriting = false;
    producer->beforeData = [&](std::uint64_t) { isWriting = true; };
    given.burn->writeLayout(trackOfProducer(producer, 1 << 20));
    while (!isWriting)
        std::this_thread::yield();
    given.burn.reset();
    EXPECT_EQ(producer->calls.last(), QStringLiteral("cleanup")) << "its thread has ended";
    drainEventLoop();
    EXPECT_EQ(given.posts, 0);
}

TEST(DRBurn, destruction_byItsOwnThread_doesNotHang)
{
    BurnIntoMemory given;
    const std::weak_ptr<DRBurn> watched = given.burn;
    const auto producer = std::make_shared<TestProducer>();
    Gate start;
    producer->beforeData = [&](std::uint64_t at) {
        if (at > 0)
            return;
        start.pass();
        given.burn.reset();
    };
    given.burn->writeLayout(trackOfProducer(producer, 1 << 20));
    start.open();
    EXPECT_TRUE(runEventLoopUntil([&] { return watched.expired() && producer.use_count() == 1; }));
}

TEST(DRBurn, twoBurns_runAtOnce)
{
    BurnIntoMemory first;
    BurnIntoMemory second;
    const auto ofFirst = std::make_shared<TestProducer>();
    const auto ofSecond = std::make_shared<TestProducer>();
    Gate firstIsWriting;
    Gate secondIsWriting;
    ofFirst->beforeData = [&](std::uint64_t) {
        firstIsWriting.open();
        secondIsWriting.pass();
    };
    ofSecond->beforeData = [&](std::uint64_t) {
        secondIsWriting.open();
        firstIsWriting.pass();
    };
    first.burn->writeLayout(trackOfProducer(ofFirst, 3000));
    second.burn->writeLayout(trackOfProducer(ofSecond, 3000));
    first.waitForEnd();
    second.waitForEnd();
    EXPECT_EQ(first.states, successfulStates());
    EXPECT_EQ(second.states, successfulStates());
    EXPECT_TRUE(first.consumer.bytes == second.consumer.bytes);
}

TEST(DRBurn, manyBurnsInARow_leakNothing)
{
    const auto producer = std::make_shared<TestProducer>();
    const std::shared_ptr<DRTrack> track = trackOfProducer(producer, 10);
    const auto runOne = [&](bool isAborted) {
        BurnIntoMemory given;
        given.burn->writeLayout(track);
        if (isAborted)
            given.burn->abort();
        given.waitForEnd();
    };
    runOne(false);
    const std::size_t before = openDescriptors();
    for (int round = 0; round < 100; ++round)
        runOne(round % 3 == 0);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(track.use_count(), 1);
}

} // namespace Tessaron::Testing
