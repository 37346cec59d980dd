#include "platform/discrecording/burn/ProducerTrackWriter.h"

#include "platform/discrecording/burn/CallbackSink.h"
#include "platform/discrecording/burn/DRBurn.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/discrecording/burn/TestProducer.h"

#include <gtest/gtest.h>
#include <new>

namespace Tessaron::Testing
{

namespace
{

class ProducerTrackWriterTest : public testing::Test
{
protected:
    NSError write(const std::shared_ptr<DRTrack> &track)
    {
        const Result<DiscTrack> described = describeProducerTrack(*track);
        if (!described)
            return described.error();
        CallbackSink sink(consumer);
        BlockStream stream(sink, cancellation.get_token());
        return ProducerTrackWriter(track, *described, nullptr).write(stream);
    }
    [[nodiscard]] QStringList wholeLife() const
    {
        return {QStringLiteral("prepare"), QStringLiteral("data"), QStringLiteral("cleanup")};
    }

    const std::shared_ptr<TestProducer> producer = std::make_shared<TestProducer>();
    MemoryConsumer consumer;
    std::stop_source cancellation;
};

QString descriptionError(const QVariantMap &properties)
{
    const std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(std::make_shared<TestProducer>());
    track->setProperties(properties);
    const NSError error = describeProducerTrack(*track).error();
    EXPECT_EQ(error.code(), paramErr);
    return error.localizedDescription();
}

} // namespace

TEST_F(ProducerTrackWriterTest, description_isReadFromTheProperties)
{
    const Result<DiscTrack> track = describeProducerTrack(*trackOfProducer(producer, 12, 2352, 150));
    ASSERT_TRUE(track);
    EXPECT_EQ(track->blockSize, 2352u);
    EXPECT_EQ(track->length, 12u);
    EXPECT_EQ(track->pregap, (TrackGap{150, true}));
    EXPECT_EQ(track->storedBytes(), 162u * 2352);
}

TEST_F(ProducerTrackWriterTest, description_isAnError_whenSomethingIsMissingOrMakesNoSense)
{
    const QVariantMap good{{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, quint64(5)}};
    const auto with = [&](const QString &key, const QVariant &value) {
        QVariantMap changed = good;
        changed.insert(key, value);
        return descriptionError(changed);
    };
    EXPECT_TRUE(descriptionError({}).contains(DRBlockSizeKey));
    EXPECT_TRUE(with(DRBlockSizeKey, 0u).contains(DRBlockSizeKey));
    EXPECT_TRUE(with(DRBlockSizeKey, 70000u).contains(DRBlockSizeKey));
    EXPECT_TRUE(with(DRBlockSizeKey, -2048).contains(DRBlockSizeKey));
    EXPECT_TRUE(descriptionError({{DRBlockSizeKey, 2048u}}).contains(DRTrackLengthKey));
    EXPECT_TRUE(with(DRTrackLengthKey, 0).contains(DRTrackLengthKey));
    EXPECT_TRUE(with(DRTrackLengthKey, QStringLiteral("many")).contains(DRTrackLengthKey));
    EXPECT_TRUE(with(DRTrackLengthKey, quint64(1) << 32).contains(QStringLiteral("longer than any disc")));
    EXPECT_TRUE(with(DRPreGapLengthKey, -1).contains(DRPreGapLengthKey));
}

TEST_F(ProducerTrackWriterTest, write_asksForPregapThenData_andCleansUp)
{
    EXPECT_TRUE(write(trackOfProducer(producer, 1000, 2352, 150)).isNull());
    EXPECT_TRUE(consumer.bytes
                == QByteArray(qsizetype{150} * 2352, '\0') + TestProducer::pattern(qsizetype{1000} * 2352));
    EXPECT_EQ(producer->calls,
              (QStringList{QStringLiteral("prepare"), QStringLiteral("pregap"), QStringLiteral("data"),
                           QStringLiteral("cleanup")}));
    EXPECT_EQ(consumer.addresses.value(1), 150u);
}

TEST_F(ProducerTrackWriterTest, write_consumesWholeBlocks_fromAProducerThatGivesLittle)
{
    producer->mostAtOnce = 777;
    EXPECT_TRUE(write(trackOfProducer(producer, 20)).isNull());
    EXPECT_TRUE(consumer.bytes == TestProducer::pattern(qsizetype{20} * 2048));
    EXPECT_EQ(consumer.addresses, QList<std::uint32_t>{0});
}

TEST_F(ProducerTrackWriterTest, write_goesOn_whenTheProducerHasNothingForAMoment)
{
    producer->mostAtOnce = 5000;
    producer->nothingTimes = 3;
    EXPECT_TRUE(write(trackOfProducer(producer, 20)).isNull());
    EXPECT_TRUE(consumer.bytes == TestProducer::pattern(qsizetype{20} * 2048));
}

TEST_F(ProducerTrackWriterTest, write_fails_whenTheProducerRunsDry)
{
    producer->endsAfter = 3000;
    const NSError error = write(trackOfProducer(producer, 20));
    EXPECT_EQ(error.code(), eofErr);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("ended too early, at block 1 ")));
    EXPECT_EQ(producer->calls, wholeLife());
}

TEST_F(ProducerTrackWriterTest, write_fails_whenTheProducerGivesMoreThanAsked)
{
    producer->tooMuch = 1;
    EXPECT_EQ(write(trackOfProducer(producer, 20)).code(), paramErr);
    EXPECT_EQ(producer->calls, wholeLife());
}

TEST_F(ProducerTrackWriterTest, write_failsWithoutCleanup_whenPreparingFails)
{
    producer->canPrepare = false;
    EXPECT_EQ(write(trackOfProducer(producer, 20)).code(), ioErr);
    EXPECT_EQ(producer->calls, QStringList{QStringLiteral("prepare")});
}

TEST_F(ProducerTrackWriterTest, write_fails_whenPreparingChangesTheSize)
{
    producer->onPrepare = [](DRTrack &track) {
        QVariantMap properties = track.properties();
        properties.insert(DRTrackLengthKey, quint64(21));
        track.setProperties(properties);
    };
    EXPECT_EQ(write(trackOfProducer(producer, 20)).code(), paramErr);
    EXPECT_EQ(producer->calls, (QStringList{QStringLiteral("prepare"), QStringLiteral("cleanup")}));
}

TEST_F(ProducerTrackWriterTest, write_cleansUp_whenTheProducerGetsNoMemory)
{
    producer->beforeData = [](std::uint64_t) { throw std::bad_alloc(); };
    EXPECT_THROW((void)write(trackOfProducer(producer, 20)), std::bad_alloc);
    EXPECT_EQ(producer->calls, wholeLife());
}

TEST_F(ProducerTrackWriterTest, write_goesOn_whenPreparingChangesOnlyWhatARecorderIsTold)
{
    producer->onPrepare = [](DRTrack &track) {
        QVariantMap properties = track.properties();
        properties.insert(DRTrackModeKey, 5);
        track.setProperties(properties);
    };
    EXPECT_TRUE(write(trackOfProducer(producer, 20)).isNull());
}

TEST_F(ProducerTrackWriterTest, write_givesThePostgapAsTheProducerHasIt)
{
    const std::shared_ptr<DRTrack> track = trackOfProducer(producer, 20);
    QVariantMap properties = track->properties();
    properties.insert(DRPostGapLengthKey, 5u);
    track->setProperties(properties);
    EXPECT_EQ(describeProducerTrack(*track)->storedBytes(), 20u * 2048);
    EXPECT_TRUE(write(track).isNull());
    EXPECT_TRUE(consumer.bytes == TestProducer::pattern(qsizetype{20} * 2048));
}

TEST_F(ProducerTrackWriterTest, write_cleansUp_whenTheConsumerFails)
{
    consumer.failingBlock = 700;
    EXPECT_EQ(write(trackOfProducer(producer, 2000)).code(), -36);
    EXPECT_EQ(producer->calls, wholeLife());
}

TEST_F(ProducerTrackWriterTest, write_endsCancelled_whileTheProducerHasNothing)
{
    producer->mostAtOnce = 2048;
    producer->nothingTimes = 1;
    producer->beforeData = [this](std::uint64_t position) {
        if (position > 0)
            cancellation.request_stop();
    };
    EXPECT_EQ(write(trackOfProducer(producer, 20)).code(), kDRUserCanceledErr);
    EXPECT_EQ(producer->calls, wholeLife());
}

} // namespace Tessaron::Testing
