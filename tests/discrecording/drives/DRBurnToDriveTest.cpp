#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/drives/DRDevice.h"
#include "tests/discrecording/burn/TestProducer.h"
#include "tests/fakedrive/FakeDisc.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint64_t blocks = 3000;
constexpr qsizetype blockSize = 2048;
constexpr qsizetype sectorSize = 2352; // in the file of the fake drive's disc

/// The producers of tracks give a drive what they give any other device.
class DRBurnToDrive : public testing::Test
{
protected:
    DRBurnToDrive()
    {
        m_tree.makeFolder("drive");
        qputenv("TESSARON_FAKE_DRIVE", m_tree.path("drive"));
        FakeDisc blank;
        blank.profile = FakeProfile::CDR;
        blank.capacity = 359'849;
        blank.save(m_tree.path("drive").toStdString());
    }

    [[nodiscard]] FakeDisc disc() const { return FakeDisc::load(m_tree.path("drive").toStdString()); }
    [[nodiscard]] QByteArray userData() const
    {
        const QByteArray sectors = m_tree.contents("drive/sectors");
        QByteArray data;
        for (qsizetype at = 0; at < sectors.size(); at += sectorSize)
            data += sectors.mid(at, blockSize);
        return data;
    }
    /// Burns a track of the producer to the end; the error that it ends with.
    static NSError burn(const std::shared_ptr<TestProducer> &producer, const std::shared_ptr<DRDevice> &device)
    {
        const std::shared_ptr<DRBurn> burn = DRBurn::burnForDevice(device);
        burn->writeLayout(trackOfProducer(producer, blocks));
        burn->waitUntilFinished();
        return burn->error();
    }

    const TemporaryTree m_tree;
};

TEST_F(DRBurnToDrive, trackOfAProducer_isOnTheDisc)
{
    const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("/dev/sr0", false);
    ASSERT_TRUE(device) << device.error().localizedDescription().toStdString();
    const auto producer = std::make_shared<TestProducer>();
    const NSError error = burn(producer, *device);
    EXPECT_FALSE(error) << error.localizedDescription().toStdString();
    EXPECT_EQ((*device)->conditionAfterBurn(), QStringLiteral("written"));
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
    EXPECT_TRUE(userData() == TestProducer::pattern(qsizetype(blocks) * blockSize));
    EXPECT_EQ(producer->calls, QStringLiteral("prepare data cleanup").split(u' '));
}

TEST_F(DRBurnToDrive, producerThatEndsEarly_isAFailure_andNothingIsFilledUpWithZeros)
{
    const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("/dev/sr0", false);
    ASSERT_TRUE(device) << device.error().localizedDescription().toStdString();
    const auto producer = std::make_shared<TestProducer>();
    producer->endsAfter = (blocks - 1) * blockSize;
    EXPECT_TRUE(burn(producer, *device));
    EXPECT_NE((*device)->conditionAfterBurn(), QStringLiteral("written"));
    EXPECT_NE(disc().status, FakeDisc::Status::Complete);
}

} // namespace

} // namespace Tessaron::Testing
