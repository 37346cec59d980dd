#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvd/LoggedLines.h"
#include "tests/dvdplayback/PlayingFixture.h"
#include "tests/support/RunProgram.h"

#include <QFile>

#include <array>
#include <random>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

TEST_F(Playing, imageOfRawSectors_isPlayed)
{
    open(rawImageOf(imageOfDisc(disc())));
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_TRUE(waitForColour(chapters[2]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
}

/// A device that is not mounted: the disc is read by its UDF.
TEST_F(Playing, device_isPlayed)
{
    const LoopDevice device(imageOfDisc(disc()));
    if (device.path().isEmpty())
        GTEST_SKIP() << "no block device can be made here";
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(device.path(), &ref, nullptr), noErr);
    ASSERT_EQ(DVDOpenMediaVolume(&ref), noErr);
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
    EXPECT_EQ(DVDGoToMenu(1), noErr);
    EXPECT_TRUE(waitForColour(rootMenu1));
    EXPECT_EQ(DVDCloseMediaVolume(), noErr);
}

TEST_F(Playing, encryptedDisc_isRefused_withACodeOfItsOwn)
{
    const QByteArray copy = copyOfDisc();
    QByteArray contents = m_tree.contents("disc/VIDEO_TS/VTS_01_1.VOB");
    constexpr qsizetype sector = 2048, kindOfPacket = 17, control = 20;
    for (qsizetype at = 0; at + sector <= contents.size(); at += sector) {
        if (contents[at + kindOfPacket] == '\xe0')
            contents[at + control] = char(contents[at + control] | 0x10);
    }
    m_tree.makeFile("disc/VIDEO_TS/VTS_01_1.VOB", contents);
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(copy, &ref, nullptr), noErr);
    EXPECT_EQ(DVDOpenMediaFile(&ref), kDVDErrorEncryptedMedia);
    bool isPlaying = true;
    EXPECT_EQ(DVDIsPlaying(&isPlaying), kDVDErrorNoValidMedia);
}

TEST_F(Playing, missingContents_endInANamedError)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_01_1.VOB");
    open(copy);
    const LoggedLines log;
    EXPECT_EQ(DVDSetChapter(1, 1), kDVDErrorDamagedMedia);
    EXPECT_TRUE(waitUntil([&] { return !events(kDVDEventError).empty(); }));
    EXPECT_EQ(OSStatus(events(kDVDEventError).front().value1), kDVDErrorDamagedMedia);
    EXPECT_TRUE(log.lines().contains(
        QStringLiteral("DVD playback: the contents of title set 1 are missing or cannot be opened")))
        << log.lines().join(u'\n').toStdString();
    bool hasMedia = true;
    EXPECT_EQ(DVDHasMedia(&hasMedia), noErr);
    EXPECT_FALSE(hasMedia);
    EXPECT_EQ(DVDPlay(), kDVDErrorNoValidMedia);
    open(copy);
    ASSERT_EQ(DVDSetChapter(2, 1), noErr) << "the other title is there";
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(events(kDVDEventError).size(), 1U);
}

TEST_F(Playing, contentsThatEndEarly_endInANamedErrorOrGoOn)
{
    const QByteArray copy = copyOfDisc();
    const QByteArray contents = m_tree.contents("disc/VIDEO_TS/VTS_01_1.VOB");
    m_tree.makeFile("disc/VIDEO_TS/VTS_01_1.VOB", contents.first(contents.size() / 2 / 2048 * 2048));
    open(copy);
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
    EXPECT_TRUE(waitUntil([&] {
        bool isOnMenu = false;
        return !events(kDVDEventError).empty() || (DVDIsOnMenu(&isOnMenu) == noErr && isOnMenu);
    }));
    for (const Event &error : events(kDVDEventError))
        EXPECT_EQ(OSStatus(error.value1), kDVDErrorDamagedMedia);
}

/// What the next test runs under another program.
TEST_F(Playing, DISABLED_playsUntilASectorCannotBeRead)
{
    open(disc());
    const OSStatus status = DVDSetChapter(1, 1);
    EXPECT_TRUE(status == noErr || status == kDVDErrorDamagedMedia) << status;
    EXPECT_TRUE(waitUntil([&] { return !events(kDVDEventError).empty(); }));
    EXPECT_EQ(OSStatus(events(kDVDEventError).front().value1), kDVDErrorDamagedMedia);
    EXPECT_EQ(DVDPlay(), kDVDErrorNoValidMedia);
    EXPECT_EQ(DVDCloseMediaFile(), noErr);
    open(disc("pal"));
    ASSERT_EQ(DVDSetChapter(1, 1), noErr) << "another disc can be played";
    EXPECT_TRUE(waitForColour(chapters[0]));
}

TEST_F(Playing, sectorsThatCannotBeRead_areANamedError)
{
    std::array<char, 4096> program{};
    ASSERT_GT(::readlink("/proc/self/exe", program.data(), program.size() - 1), 0);
    // The sanitizer cannot look for leaks in a program that is watched.
    const ProgramRun run = runProgram(
        "strace",
        {"-f", "-qq", "-E", "LSAN_OPTIONS=detect_leaks=0", "-o", "/dev/null", "-P", disc() + "/VIDEO_TS/VTS_01_1.VOB",
         "-e", "trace=read", "-e", "inject=read:error=EIO:when=30+", program.data(), "--gtest_also_run_disabled_tests",
         "--gtest_filter=Playing.DISABLED_playsUntilASectorCannotBeRead"});
    EXPECT_EQ(run.status, 0) << run.output.constData() << run.errors.constData();
    EXPECT_TRUE(run.output.contains("[  PASSED  ] 1 test.")) << run.output.constData();
}

TEST_F(Playing, missingTitleSet_leavesTheOthersToBePlayed)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.IFO");
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.BUP");
    open(copy);
    EXPECT_EQ(DVDSetChapter(2, 1), kDVDErrorWrongParam) << "it has no chapters that are known";
    ASSERT_EQ(DVDSetChapter(1, 2), noErr);
    EXPECT_TRUE(waitForColour(chapters[1]));
}

TEST_F(Playing, pal_hasItsSizeAndStandard)
{
    open(disc("pal"));
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitForColour(angles[0]));
    EXPECT_EQ(m_picture.size(), QSize(720, 576));
    std::int16_t ratio = 0;
    std::uint16_t width = 0, height = 0;
    EXPECT_EQ(DVDGetAspectRatio(&ratio), noErr);
    EXPECT_EQ(ratio, 3);
    EXPECT_EQ(DVDGetNativeVideoSize(&width, &height), noErr);
    EXPECT_EQ(width, 720);
    EXPECT_EQ(height, 576);
    EXPECT_EQ(events(kDVDEventVideoStandard).back().value1, std::uint32_t(kDVDFormatPAL));
}

TEST_F(Playing, damagedContents_endInAnErrorOrGoOn)
{
    const QByteArray copy = copyOfDisc();
    std::mt19937 random(11);
    for (int round = 0; round < 4; ++round) {
        QFile contents(m_tree.pathText("disc/VIDEO_TS/VTS_01_1.VOB"));
        ASSERT_TRUE(contents.open(QIODevice::ReadWrite));
        for (int flip = 0; flip < 4000; ++flip) {
            contents.seek(qint64(random() % std::uint32_t(contents.size())));
            contents.putChar(char(random()));
        }
        contents.close();
        open(copy);
        const OSStatus status = DVDSetChapter(1, 1);
        if (status == noErr) {
            EXPECT_TRUE(waitUntil([&] {
                bool hasMedia = false;
                return DVDHasMedia(&hasMedia) == noErr && (!hasMedia || frames() > 30 * (round + 1));
            }));
        }
    }
    open(disc());
    ASSERT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
}

} // namespace

} // namespace Tessaron::Testing
