#include "platform/discrecording/drives/DRDevice.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/foundation/OSStatus.h"
#include "tests/fakedrive/FakeDisc.h"
#include "tests/support/TemporaryTree.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint32_t blockSize = 2048;
constexpr qsizetype blocksOnDisc = 400;
constexpr std::chrono::milliseconds shortPatience(300);

/// Operation codes (MMC-5 6).
constexpr int modeSense = 0x5A;
constexpr int blankDisc = 0xA1;

/// A drive that leaves a question without an answer, or a command without an end.
class SilentDrive : public testing::Test
{
protected:
    SilentDrive()
    {
        m_tree.makeFolder("drive");
        qputenv("TESSARON_FAKE_DRIVE", m_tree.path("drive"));
    }

    void insert(FakeProfile profile, const std::vector<FakeFault> &faults = {}) const
    {
        FakeDisc disc;
        disc.profile = profile;
        disc.capacity = profile == FakeProfile::CDRW ? 359'849 : 2'295'104;
        disc.isFormatted = disc.isOverwritable();
        disc.faults = faults;
        disc.save(m_tree.path("drive").toStdString());
    }

    /// From now on the drive does not come to an end with the command of this code, in hexadecimal digits.
    void hold(const QByteArray &code) const { m_tree.makeFile("drive/hold-" + code); }
    void letGoOn(const QByteArray &code) const { m_tree.remove("drive/hold-" + code); }

    static Result<std::shared_ptr<DRDevice>> openWithPatience(std::chrono::milliseconds atOpening)
    {
        DrivePatience patience;
        patience.atOpening = atOpening;
        patience.atQuestion = patience.atErasing = patience.atQuickErasing = shortPatience;
        return DRDevice::open("/dev/sr0", false, patience);
    }

    static Result<std::shared_ptr<DRDevice>> openWithShortPatience() { return openWithPatience(shortPatience); }
    /// The patience is short for what comes after it.
    static std::shared_ptr<DRDevice> opened()
    {
        const Result<std::shared_ptr<DRDevice>> device = openWithPatience(std::chrono::minutes(1));
        EXPECT_TRUE(device) << device.error().localizedDescription().toStdString();
        return device ? *device : nullptr;
    }

    static void expectNoAnswer(const NSError &error)
    {
        EXPECT_EQ(error.userInfo().value(DriveFaultKey).toString(), QStringLiteral("no-answer"));
        EXPECT_EQ(error.localizedDescription(),
                  QStringLiteral("the drive \u201C/dev/sr0\u201D has not answered for too long"));
        EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("cable")));
    }

    static void expectOpensAgain()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        for (;;) {
            const Result<std::shared_ptr<DRDevice>> device = DRDevice::open("/dev/sr0", false);
            if (device)
                return;
            EXPECT_EQ(device.error().code(), fBsyErr) << device.error().localizedDescription().toStdString();
            ASSERT_LT(std::chrono::steady_clock::now(), end) << "the drive was not let go of";
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

    const TemporaryTree m_tree;
};

TEST_F(SilentDrive, thatDoesNotTellWhatItIs_isGivenUp_andLetGoOnceItAnswers)
{
    insert(FakeProfile::DVDPlusRW);
    hold("46");
    const Result<std::shared_ptr<DRDevice>> device = openWithShortPatience();
    ASSERT_FALSE(device);
    expectNoAnswer(device.error());
    const Result<std::shared_ptr<DRDevice>> next = openWithShortPatience();
    ASSERT_FALSE(next);
    EXPECT_EQ(next.error().code(), fBsyErr);
    EXPECT_EQ(next.error().localizedDescription(),
              QStringLiteral("a drive that this program was using has not answered yet"));
    letGoOn("46");
    expectOpensAgain();
}

TEST_F(SilentDrive, thatIsResetAtEveryQuestion_isGivenUp)
{
    insert(FakeProfile::DVDPlusRW, {{modeSense, 0, 15, 6, 0x29, 0}});
    const Result<std::shared_ptr<DRDevice>> device = openWithShortPatience();
    ASSERT_FALSE(device);
    expectNoAnswer(device.error());
    expectOpensAgain();
}

TEST_F(SilentDrive, thatDoesNotEndAReading_isGivenUp_andNothingIsReadLater)
{
    insert(FakeProfile::DVDPlusRW);
    m_tree.makeFile("drive/sectors", QByteArray(blocksOnDisc * 2352, 's'));
    const std::shared_ptr<DRDevice> device = opened();
    ASSERT_NE(device, nullptr);
    std::array<char, blockSize> block{};
    const auto source = device->readBack(0, blocksOnDisc); // which looks at its begin and its end
    hold("28");
    const NSError error = source->read(std::uint64_t(blocksOnDisc / 2) * blockSize, block.data(), block.size());
    letGoOn("28");
    expectNoAnswer(error);
    EXPECT_TRUE(source->read(std::uint64_t(blocksOnDisc / 4) * blockSize, block.data(), block.size()))
        << "it is not open any more";
    expectOpensAgain();
    EXPECT_EQ(block, (std::array<char, blockSize>{})) << "what comes later is not written into the caller's memory";
}

TEST_F(SilentDrive, thatDoesNotLetItselfBeLetGoOf_isGivenUp)
{
    insert(FakeProfile::DVDPlusRW);
    const std::shared_ptr<DRDevice> device = opened();
    ASSERT_NE(device, nullptr);
    hold("1e");
    expectNoAnswer(device->lookAgain());
    EXPECT_FALSE(device->release(false)) << "it is not open any more";
    letGoOn("1e");
    expectOpensAgain();
}

TEST_F(SilentDrive, thatDoesNotEndBlanking_isGivenUp_andNobodyKnowsWhatTheDiscIsWorth)
{
    insert(FakeProfile::CDRW);
    const std::shared_ptr<DRDevice> device = opened();
    ASSERT_NE(device, nullptr);
    hold("a1");
    const NSError error = device->blank(false);
    expectNoAnswer(error);
    EXPECT_EQ(error.userInfo().value(DiscConditionKey).toString(), QStringLiteral("unknown"));
    const Result<std::shared_ptr<DRDevice>> next = openWithShortPatience();
    EXPECT_FALSE(next);
    EXPECT_EQ(next.error().code(), fBsyErr);
    letGoOn("a1");
    expectOpensAgain();
}

TEST_F(SilentDrive, thatIsResetWhileItBlanks_isGivenUp)
{
    insert(FakeProfile::CDRW, {{blankDisc, 0, 15, 6, 0x29, 0}});
    const std::shared_ptr<DRDevice> device = opened();
    ASSERT_NE(device, nullptr);
    expectNoAnswer(device->blank(true));
    expectOpensAgain();
}

TEST_F(SilentDrive, doesNotKeepTheProgramFromEnding)
{
    insert(FakeProfile::DVDPlusRW);
    hold("46");
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            constexpr int givenUp = 7;
            std::exit(openWithShortPatience() ? EXIT_SUCCESS : givenUp);
        },
        testing::ExitedWithCode(7), "");
}

} // namespace

} // namespace Tessaron::Testing
