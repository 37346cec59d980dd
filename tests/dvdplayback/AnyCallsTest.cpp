#include "platform/dvdplayback/DVDPlayback.h"
#include "tests/dvdplayback/PlayingFixture.h"

#include <random>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;

TEST_F(Playing, anyCallsInAnyOrder_neverHang)
{
    open(disc());
    std::mt19937 random(5); // the same calls in every run
    const auto below = [&](std::uint32_t limit) { return random() % limit; };
    const int asked = qEnvironmentVariableIntValue("TESSARON_CALLS");
    for (int call = 0; call < (asked > 0 ? asked : 1500); ++call) {
        std::int32_t button = 0;
        const DVDPoint point = {std::int16_t(below(480)), std::int16_t(below(720))};
        switch (below(17)) {
        case 0:
            DVDPlay();
            break;
        case 1:
            DVDPause();
            break;
        case 2:
            if (below(8) == 0)
                DVDStop();
            break;
        case 3:
            DVDSetChapter(std::uint16_t(below(4)), std::uint16_t(below(6)));
            break;
        case 4:
            DVDNextChapter();
            break;
        case 5:
            DVDPreviousChapter();
            break;
        case 6:
            DVDSetAngle(std::uint16_t(below(5)));
            break;
        case 7:
            DVDGoToMenu(below(7));
            break;
        case 8:
            DVDReturnToTitle();
            break;
        case 9:
            DVDDoUserNavigation(below(7));
            break;
        case 10:
            DVDDoMenuClick(&point, &button);
            break;
        case 11:
            DVDStepFrame();
            break;
        case 12:
            DVDPlaySlowly(std::int16_t(1 << below(4)));
            break;
        case 13:
            DVDSetTitleTime(below(10'000));
            break;
        case 14:
            DVDSetAudioStream(std::uint16_t(below(4)));
            break;
        case 15:
            DVDSetSubPictureStream(std::uint16_t(below(3)));
            break;
        default:
            DVDScan(std::int16_t(1 << below(6)), std::int8_t(below(2)));
        }
        if (below(20) == 0)
            std::this_thread::sleep_for(milliseconds(5));
    }
    bool hasMedia = false;
    EXPECT_EQ(DVDHasMedia(&hasMedia), noErr);
    EXPECT_TRUE(hasMedia) << "the helper has ended";
    EXPECT_TRUE(events(kDVDEventError).empty());
    EXPECT_EQ(DVDSetChapter(1, 1), noErr);
    EXPECT_TRUE(waitForColour(chapters[0]));
}

} // namespace

} // namespace Tessaron::Testing
