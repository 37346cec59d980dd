#include "tests/dvdplayback/PlayingFixture.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDVideoFrames.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace Tessaron::Testing
{

bool isAbout(QRgb pixel, QRgb colour)
{
    constexpr int tolerance = 12;
    return std::abs(qRed(pixel) - qRed(colour)) <= tolerance && std::abs(qGreen(pixel) - qGreen(colour)) <= tolerance
        && std::abs(qBlue(pixel) - qBlue(colour)) <= tolerance;
}

Playing::Playing()
{
    EXPECT_EQ(DVDInitialize(), noErr);
    const std::array<std::uint32_t, 7> codes = {7, 24, 11, 2, 1, 20, 12};
    std::uint32_t identifier = 0;
    EXPECT_EQ(DVDRegisterEventCallBack(hearEvent, codes.data(), codes.size(), this, &identifier), noErr);
    EXPECT_EQ(DVDSetTimeEventRate(100), noErr);
    const DVDRect bounds = {0, 0, 480, 720};
    EXPECT_EQ(DVDSetVideoBounds(&bounds), noErr);
    setDVDFrameHearer([this] {
        const std::lock_guard lock(m_mutex);
        ++m_frames;
        m_changed.notify_all();
    });
}

Playing::~Playing()
{
    setDVDFrameHearer({});
    DVDDispose();
}

void Playing::open(const QByteArray &path)
{
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr);
    ASSERT_EQ(DVDOpenMediaFile(&ref), noErr);
}

void Playing::openAndPlay(std::uint16_t title, std::uint16_t chapter)
{
    open(disc());
    ASSERT_EQ(DVDSetChapter(title, chapter), noErr);
}

bool Playing::waitUntil(const std::function<bool()> &condition, std::chrono::seconds atMost)
{
    const auto end = std::chrono::steady_clock::now() + atMost;
    while (!condition()) {
        std::unique_lock lock(m_mutex);
        if (std::chrono::steady_clock::now() >= end)
            return false;
        m_changed.wait_for(lock, std::chrono::milliseconds(20));
    }
    return true;
}

bool Playing::isSeen(QRgb colour, int x, int y)
{
    static_cast<void>(takeDVDFrame(&m_picture));
    return !m_picture.isNull() && isAbout(m_picture.pixel(x, y), colour);
}

bool Playing::waitForColour(QRgb colour)
{
    return waitUntil([&] { return isSeen(colour); });
}

bool Playing::waitForState(std::uint32_t wanted)
{
    return waitUntil([&] { return state() == wanted; });
}

bool Playing::stepToColour(QRgb colour, int mostSteps)
{
    bool isThere = isSeen(colour);
    for (int step = 0; step < mostSteps && !isThere; ++step) {
        EXPECT_EQ(DVDStepFrame(), noErr);
        isThere = isSeen(colour);
    }
    return isThere;
}

std::vector<Event> Playing::events(std::uint32_t code)
{
    const std::lock_guard lock(m_mutex);
    std::vector<Event> wanted;
    std::copy_if(m_events.begin(), m_events.end(), std::back_inserter(wanted),
                 [code](const Event &event) { return event.code == code; });
    return wanted;
}

int Playing::frames()
{
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

void Playing::hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference)
{
    auto *const test = static_cast<Playing *>(reference);
    const std::lock_guard lock(test->m_mutex);
    test->m_events.push_back({code, value1, value2});
    test->m_changed.notify_all();
}

} // namespace Tessaron::Testing
