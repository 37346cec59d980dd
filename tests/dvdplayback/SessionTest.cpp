#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "tests/dvdplayback/DiscFixture.h"
#include "tests/support/RunProgram.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <semaphore>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::seconds;

struct Event {
    std::uint32_t code = 0, value1 = 0, value2 = 0;
};

/// What callbacks have told; from any thread.
class Hearer
{
public:
    static void hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference)
    {
        auto *const hearer = static_cast<Hearer *>(reference);
        const std::lock_guard lock(hearer->m_mutex);
        hearer->m_events.push_back({code, value1, value2});
        hearer->m_changed.notify_all();
    }
    static void hearFatalError(OSStatus error, void *reference)
    {
        auto *const hearer = static_cast<Hearer *>(reference);
        const std::lock_guard lock(hearer->m_mutex);
        hearer->m_fatal.push_back(error);
        hearer->m_changed.notify_all();
    }
    [[nodiscard]] bool waitForFatalError()
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, seconds(20), [this] { return !m_fatal.empty(); });
    }
    [[nodiscard]] std::vector<Event> events()
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }
    [[nodiscard]] std::vector<OSStatus> fatalErrors()
    {
        const std::lock_guard lock(m_mutex);
        return m_fatal;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Event> m_events;
    std::vector<OSStatus> m_fatal;
};

class DVDSessionTest : public DiscTest
{
protected:
    ~DVDSessionTest() override
    {
        DVDSession::instance().setDriveRegion(std::nullopt);
        DVDDispose();
    }
    [[nodiscard]] static FSRef refOf(const QByteArray &path)
    {
        FSRef ref;
        EXPECT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr) << path.constData();
        return ref;
    }
    [[nodiscard]] static OSStatus open(const QByteArray &path)
    {
        const FSRef ref = refOf(path);
        return DVDOpenMediaFile(&ref);
    }
    [[nodiscard]] static bool hasMedia()
    {
        bool hasMedia = false;
        EXPECT_EQ(DVDHasMedia(&hasMedia), noErr);
        return hasMedia;
    }
};

/// Another process of the user that has a session: it holds the same lock until release().
class OtherSession
{
public:
    explicit OtherSession(const QByteArray &lock)
    {
        std::array<int, 2> answer = {-1, -1}, order = {-1, -1};
        EXPECT_EQ(::pipe2(answer.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(order.data(), O_CLOEXEC), 0);
        const UniqueDescriptor answerRead(answer[0]), orderRead(order[0]);
        UniqueDescriptor answerWrite(answer[1]);
        m_order.reset(order[1]);
        m_process.emplace("flock", QList<QByteArray>{lock, "sh", "-c", "echo held; exec cat"},
                          ProgramEnds{orderRead.get(), answerWrite.get()});
        answerWrite.reset();
        std::array<char, 4> held = {};
        EXPECT_EQ(::read(answerRead.get(), held.data(), held.size()), 4) << "it is there when it has said so";
    }
    void release()
    {
        m_order.reset();
        EXPECT_EQ(m_process->finish().status, 0);
    }

private:
    UniqueDescriptor m_order;
    std::optional<RunningProgram> m_process;
};

TEST_F(DVDSessionTest, initialize_isRefused_whileASessionIsHeldHere)
{
    EXPECT_EQ(DVDInitialize(), noErr);
    EXPECT_EQ(DVDInitialize(), -70002);
    EXPECT_EQ(DVDDispose(), noErr);
    EXPECT_EQ(DVDInitialize(), noErr);
}

TEST_F(DVDSessionTest, initialize_isRefused_whileAnotherProcessHoldsASession)
{
    OtherSession other(m_tree.path("runtime/tessaron-dvd.lock"));
    EXPECT_EQ(DVDInitialize(), -70002);
    other.release();
    EXPECT_EQ(DVDInitialize(), noErr);
}

TEST_F(DVDSessionTest, otherProcess_isKeptOut_whileASessionIsHeldHere)
{
    ASSERT_EQ(DVDInitialize(), noErr);
    const auto attempt = [this] {
        return runProgram("flock", {"-n", m_tree.path("runtime/tessaron-dvd.lock"), "true"}).status;
    };
    EXPECT_NE(attempt(), 0);
    ASSERT_EQ(DVDDispose(), noErr);
    EXPECT_EQ(attempt(), 0);
}

TEST_F(DVDSessionTest, calls_areRefused_withoutASessionAndWithoutMedia)
{
    bool flag = false;
    std::uint16_t number = 0;
    const std::array calls = {DVDPlay, DVDPause, DVDStop, DVDPreviousChapter, DVDNextChapter, DVDReturnToTitle};
    for (auto *const call : calls)
        EXPECT_EQ(call(), kDVDErrorUninitializedLib);
    EXPECT_EQ(DVDHasMedia(&flag), kDVDErrorUninitializedLib);
    EXPECT_EQ(DVDCloseMediaFile(), kDVDErrorUninitializedLib);
    EXPECT_EQ(DVDDispose(), kDVDErrorUninitializedLib);
    ASSERT_EQ(DVDInitialize(), noErr);
    for (auto *const call : calls)
        EXPECT_EQ(call(), kDVDErrorNoValidMedia);
    EXPECT_EQ(DVDHasMedia(&flag), noErr);
    EXPECT_FALSE(flag);
    EXPECT_EQ(DVDGetNumAngles(&number), kDVDErrorNoValidMedia);
    EXPECT_EQ(DVDCloseMediaFile(), kDVDErrorNoValidMedia);
}

TEST_F(DVDSessionTest, isValidMediaRef_tellsDiscsFromFolders)
{
    ASSERT_EQ(DVDInitialize(), noErr);
    const FSRef good = refOf(disc()), folder = refOf(m_tree.makeFolder("empty"));
    bool isValid = false;
    EXPECT_EQ(DVDIsValidMediaRef(&good, &isValid), noErr);
    EXPECT_TRUE(isValid);
    EXPECT_EQ(DVDIsValidMediaRef(&folder, &isValid), noErr);
    EXPECT_FALSE(isValid);
}

TEST_F(DVDSessionTest, media_canBeOpenedAndClosedAgainAndAgain)
{
    ASSERT_EQ(DVDInitialize(), noErr);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(open(disc()), noErr);
        EXPECT_TRUE(hasMedia());
        EXPECT_EQ(open(disc("pal")), noErr);
        EXPECT_TRUE(hasMedia());
        EXPECT_EQ(DVDCloseMediaFile(), noErr);
        EXPECT_FALSE(hasMedia());
    }
    EXPECT_EQ(open(m_tree.makeFolder("empty")), kDVDErrorNoValidMedia);
    EXPECT_FALSE(hasMedia());
}

TEST_F(DVDSessionTest, openMedia_knowsTheDisc)
{
    ASSERT_EQ(DVDInitialize(), noErr);
    ASSERT_EQ(open(disc()), noErr);
    std::array<std::uint8_t, 8> identity{};
    ASSERT_EQ(DVDGetMediaUniqueID(identity.data()), noErr);
    DVDDescription description;
    ASSERT_EQ(DVDCopyDescription(&description), noErr);
    EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(identity.data()), 8), description.identity);
    EXPECT_EQ(description.titles.size(), 2U);
    std::uint32_t discMask = 0xff, driveMask = 0xff;
    std::int16_t changesLeft = -1;
    EXPECT_EQ(DVDGetDiscRegionCode(&discMask), noErr);
    EXPECT_EQ(discMask, 0U);
    EXPECT_EQ(DVDGetDriveRegionCode(&driveMask, &changesLeft), kDVDErrorMissingDrive);
    EXPECT_EQ(driveMask, 0xffU);
    EXPECT_EQ(changesLeft, -1);
}

TEST_F(DVDSessionTest, openMedia_isRefused_whenRegionsExcludeEachOther)
{
    constexpr qint64 placeOfRegions = 0x23;
    const QByteArray copy = copyOfDisc();
    patchTable("VIDEO_TS", placeOfRegions, '\xfe'); // for region 1 only
    ASSERT_EQ(DVDInitialize(), noErr);
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0xfd, 4}); // set to region 2
    EXPECT_EQ(open(copy), -70024);
    EXPECT_FALSE(hasMedia());
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0xfe, 3});
    EXPECT_EQ(open(copy), noErr);
    std::uint32_t mask = 0;
    std::int16_t changesLeft = 0;
    EXPECT_EQ(DVDGetDriveRegionCode(&mask, &changesLeft), noErr);
    EXPECT_EQ(mask, 0xfeU);
    EXPECT_EQ(changesLeft, 3);
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0xff, 5}); // never set
    EXPECT_EQ(open(copy), -70024);
}

TEST_F(DVDSessionTest, helperThatDies_isAnErrorEvent_andTheCallerLives)
{
    Hearer hearer;
    const std::array<std::uint32_t, 1> codes = {kDVDEventError};
    std::uint32_t identifier = 0;
    ASSERT_EQ(DVDInitialize(), noErr);
    ASSERT_EQ(DVDRegisterEventCallBack(Hearer::hearEvent, codes.data(), 1, &hearer, &identifier), noErr);
    EXPECT_NE(identifier, 0U);
    ASSERT_EQ(DVDSetFatalErrorCallBack(Hearer::hearFatalError, &hearer), noErr);
    ASSERT_EQ(open(disc()), noErr);
    ASSERT_EQ(::kill(DVDSession::instance().helperProcess(), SIGSEGV), 0);
    ASSERT_TRUE(hearer.waitForFatalError());
    EXPECT_EQ(hearer.fatalErrors(), std::vector<OSStatus>{kDVDErrorDamagedMedia});
    ASSERT_EQ(hearer.events().size(), 1U);
    EXPECT_EQ(hearer.events()[0].code, 24U);
    EXPECT_EQ(OSStatus(hearer.events()[0].value1), kDVDErrorDamagedMedia);
    EXPECT_FALSE(hasMedia());
    EXPECT_EQ(DVDPlay(), kDVDErrorNoValidMedia);
    EXPECT_EQ(DVDCloseMediaFile(), noErr);
    EXPECT_EQ(open(disc()), noErr);
}

TEST_F(DVDSessionTest, unregister_silencesTheCallBack)
{
    Hearer hearer;
    const std::array<std::uint32_t, 1> codes = {kDVDEventError};
    std::uint32_t identifier = 0;
    ASSERT_EQ(DVDInitialize(), noErr);
    ASSERT_EQ(DVDRegisterEventCallBack(Hearer::hearEvent, codes.data(), 1, &hearer, &identifier), noErr);
    ASSERT_EQ(DVDSetFatalErrorCallBack(Hearer::hearFatalError, &hearer), noErr);
    EXPECT_EQ(DVDUnregisterEventCallBack(identifier), noErr);
    EXPECT_EQ(DVDUnregisterEventCallBack(identifier), kDVDErrorWrongParam);
    ASSERT_EQ(open(disc()), noErr);
    ASSERT_EQ(::kill(DVDSession::instance().helperProcess(), SIGKILL), 0);
    ASSERT_TRUE(hearer.waitForFatalError());
    EXPECT_TRUE(hearer.events().empty());
}

/// A call back for fatal errors that takes its time.
struct SlowHearer {
    std::binary_semaphore hasBegun{0};
    std::atomic<bool> hasEnded = false;

    static void hear(OSStatus /*error*/, void *reference)
    {
        auto *const hearer = static_cast<SlowHearer *>(reference);
        hearer->hasBegun.release();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        hearer->hasEnded = true;
    }
};

TEST_F(DVDSessionTest, setFatalErrorCallBack_waitsForTheOneBefore)
{
    SlowHearer hearer;
    ASSERT_EQ(DVDInitialize(), noErr);
    ASSERT_EQ(DVDSetFatalErrorCallBack(SlowHearer::hear, &hearer), noErr);
    ASSERT_EQ(open(disc()), noErr);
    ASSERT_EQ(::kill(DVDSession::instance().helperProcess(), SIGKILL), 0);
    ASSERT_TRUE(hearer.hasBegun.try_acquire_for(seconds(20)));
    EXPECT_EQ(DVDSetFatalErrorCallBack(nullptr, nullptr), noErr);
    EXPECT_TRUE(hearer.hasEnded);
}

TEST_F(DVDSessionTest, volume_isKept_andMuted)
{
    std::uint16_t minimum = 1, volume = 1, maximum = 1;
    bool isMuted = true;
    ASSERT_EQ(DVDInitialize(), noErr);
    EXPECT_EQ(DVDGetAudioVolumeInfo(&minimum, &volume, &maximum), noErr);
    EXPECT_EQ(minimum, 0);
    EXPECT_EQ(maximum, 255);
    EXPECT_EQ(DVDSetAudioVolume(17), noErr);
    EXPECT_EQ(DVDGetAudioVolumeInfo(nullptr, &volume, nullptr), noErr);
    EXPECT_EQ(volume, 17);
    EXPECT_EQ(DVDSetAudioVolume(256), kDVDErrorWrongParam);
    EXPECT_EQ(DVDIsMuted(&isMuted), noErr);
    EXPECT_FALSE(isMuted);
    EXPECT_EQ(DVDMute(true), noErr);
    EXPECT_EQ(DVDIsMuted(&isMuted), noErr);
    EXPECT_TRUE(isMuted);
}

TEST_F(DVDSessionTest, displays_areAllSupported_fromTheFirst)
{
    bool isSupported = false;
    ASSERT_EQ(DVDInitialize(), noErr);
    for (const std::uint32_t display : {1, 3}) {
        EXPECT_EQ(DVDSwitchToDisplay(display, &isSupported), noErr);
        EXPECT_TRUE(isSupported);
        EXPECT_EQ(DVDSession::instance().settings().display, display);
    }
    EXPECT_EQ(DVDSwitchToDisplay(0, &isSupported), noErr);
    EXPECT_FALSE(isSupported) << "no screen";
    EXPECT_EQ(DVDSession::instance().settings().display, 3U);
}

TEST(DVDRegions, excludeEachOther_whenNoneIsLeft)
{
    EXPECT_FALSE(regionsExcludeEachOther(0x00, 0x00));
    EXPECT_FALSE(regionsExcludeEachOther(0xfe, 0xfe));
    EXPECT_FALSE(regionsExcludeEachOther(0x00, 0xfd));
    EXPECT_TRUE(regionsExcludeEachOther(0xfe, 0xfd));
    EXPECT_TRUE(regionsExcludeEachOther(0x00, 0xff));
}

} // namespace

} // namespace Tessaron::Testing
