#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/drives/DRDevice.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/disctracks/TableOfContents.h"
#include "tests/fakedrive/FakeDisc.h"
#include "tests/support/TemporaryTree.h"

#include <chrono>
#include <gtest/gtest.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint32_t blockSize = 2048;
constexpr std::uint64_t blocksOfDisc =
    40'000; // 80 MB: more than what all buffers hold, so that data wait for the drive
constexpr int writeCommand = 0x2A;
constexpr std::chrono::milliseconds shortPatience(300);

/// A drive that goes on answering, but takes nothing any more.
class StalledDrive : public testing::Test
{
protected:
    StalledDrive()
    {
        m_tree.makeFolder("drive");
        qputenv("TESSARON_FAKE_DRIVE", m_tree.path("drive"));
    }

    void insert(FakeProfile profile, const FakeFault &fault) const
    {
        FakeDisc disc;
        disc.profile = profile;
        disc.capacity = 2'295'104;
        disc.isFormatted = disc.isOverwritable();
        disc.faults = {fault};
        disc.save(m_tree.path("drive").toStdString());
    }

    /// Writes a disc of zeros up to the end or the first error, which comes back with what the disc is worth.
    NSError write(DRDevice &device) const
    {
        DiscTrack track;
        track.length = blocksOfDisc;
        const std::stop_source neverStopped;
        const std::shared_ptr<BlockSink> sink = device.sinkForBurn(neverStopped.get_token());
        NSError error = sink->beginDisc(TableOfContents::withTrack(track));
        if (!error)
            error = sink->beginTrack(track);
        constexpr std::uint32_t piece = 512;
        const std::vector<char> zeros(std::size_t(piece) * blockSize);
        for (std::uint64_t block = 0; !error && block < blocksOfDisc; block += piece) {
            BlockBatch run;
            run.bytes = zeros.data();
            run.count = std::uint32_t(std::min<std::uint64_t>(piece, blocksOfDisc - block));
            run.blockSize = blockSize;
            error = sink->writeBlocks(run);
        }
        if (!error)
            error = sink->endTrack();
        return error ? sink->abandonDisc(error) : sink->endDisc();
    }

    const TemporaryTree m_tree;
};

TEST_F(StalledDrive, permanentReset_isToldOf_onceThePatienceIsOver)
{
    insert(FakeProfile::DVDPlusRW, {writeCommand, 40, 0, 6, 0x29, 0});
    DrivePatience patience;
    patience.atBegin = patience.later = shortPatience;
    const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("/dev/sr0", false, patience);
    ASSERT_TRUE(device) << device.error().localizedDescription().toStdString();
    const auto begin = std::chrono::steady_clock::now();
    const NSError error = write(**device);
    EXPECT_EQ(error.userInfo().value(DriveFaultKey).toString(), QStringLiteral("stalled"))
        << error.localizedDescription().toStdString();
    EXPECT_EQ((*device)->conditionAfterBurn(), QStringLiteral("overwritable"));
    EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("cable")));
    // libburn by itself repeats a command for 200 seconds, and the commands that follow for 30 each.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(150));
}

TEST_F(StalledDrive, shortPause_isNoFailure)
{
    insert(FakeProfile::DVDPlusRW, {writeCommand, 40, 5, 6, 0x29, 0});
    const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("/dev/sr0", false);
    ASSERT_TRUE(device) << device.error().localizedDescription().toStdString();
    const NSError error = write(**device);
    EXPECT_FALSE(error) << error.localizedDescription().toStdString();
    EXPECT_EQ((*device)->conditionAfterBurn(), QStringLiteral("written"));
}

} // namespace

} // namespace Tessaron::Testing
