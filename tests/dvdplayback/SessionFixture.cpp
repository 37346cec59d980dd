#include "tests/dvdplayback/SessionFixture.h"

#include "platform/dvdplayback/DVDPlayback.h"

namespace Tessaron::Testing
{

std::uint32_t SessionFixture::state()
{
    std::uint32_t state = 0;
    EXPECT_EQ(DVDGetState(&state), noErr);
    return state;
}

bool SessionFixture::isOnMenu()
{
    bool isOnMenu = false;
    EXPECT_EQ(DVDIsOnMenu(&isOnMenu), noErr);
    return isOnMenu;
}

std::pair<int, int> SessionFixture::chapter()
{
    std::uint16_t title = 0, chapter = 0;
    EXPECT_EQ(DVDGetChapter(&title, &chapter), noErr);
    return {title, chapter};
}

std::uint32_t SessionFixture::elapsed()
{
    std::uint32_t elapsed = 0, length = 0;
    EXPECT_EQ(DVDGetTitleTime(&elapsed, &length), noErr);
    return elapsed;
}

} // namespace Tessaron::Testing
