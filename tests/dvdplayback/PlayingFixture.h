#pragma once

#include "tests/dvdplayback/SessionFixture.h"

#include <QImage>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace Tessaron::Testing
{

// The colours of the disc (make-disc).
inline constexpr QRgb titleMenu = 0x404040, rootMenu1 = 0x206060, rootMenu2 = 0x602060;
inline constexpr std::array<QRgb, 4> chapters = {0xa00000, 0x008000, 0x0000c0, 0x806000};
inline constexpr std::array<QRgb, 3> angles = {0x007070, 0x700070, 0x905000};

/// True for about the same colour: that of a decoded picture is never exact.
[[nodiscard]] bool isAbout(QRgb pixel, QRgb colour);

struct Event {
    std::uint32_t code = 0, value1 = 0, value2 = 0;
};

/// A session that plays, what it tells, and the picture that is seen.
class Playing : public SessionFixture
{
protected:
    Playing();
    ~Playing() override;

    static void open(const QByteArray &path);
    static void openAndPlay(std::uint16_t title, std::uint16_t chapter);

    /// Waits until the condition holds; tested whenever something is seen or told.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &condition,
                                 std::chrono::seconds atMost = std::chrono::seconds(20));
    /// Takes the newest picture; true when the place, outside of buttons, has about that colour.
    [[nodiscard]] bool isSeen(QRgb colour, int x = 60, int y = 60);
    [[nodiscard]] bool waitForColour(QRgb colour);
    [[nodiscard]] bool waitForState(std::uint32_t wanted);
    /// Shows the next picture again and again, paused, until one has that colour.
    [[nodiscard]] bool stepToColour(QRgb colour, int mostSteps);
    [[nodiscard]] std::vector<Event> events(std::uint32_t code);
    [[nodiscard]] int frames();

    QImage m_picture;

private:
    static void hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference);

    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    std::vector<Event> m_events;
    int m_frames = 0;
};

} // namespace Tessaron::Testing
