#pragma once

#include "platform/dvdplayback/player/DiscPlayer.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <QImage>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Tessaron::Testing
{

/// Plays a disc in a time of the test's own, in which nothing is late, with a device for sound that the test is.
class DiscInTime : public DiscTest
{
protected:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t channels = 2;

    enum class Device : std::uint8_t { Present, Absent };

    explicit DiscInTime(const QByteArray &standard = "ntsc", Device presence = Device::Present);

    struct Shown {
        Clock::time_point when;
        QRgb colour = 0; ///< of a place outside of all buttons
    };
    struct Told {
        Clock::time_point when;
        std::uint32_t elapsed = 0;
    };

    /// Goes on by a time, a millisecond after the other; the device takes sound every ten.
    void play(std::chrono::milliseconds time);
    /// When the device plays that frame of what it was given: it holds 960 frames back.
    [[nodiscard]] Clock::time_point whenHeard(std::size_t frame) const;
    /// Where in `shown` the first picture of about that colour is.
    [[nodiscard]] std::optional<std::size_t> firstShown(QRgb colour, std::size_t from = 0) const;

    const Clock::time_point begin{std::chrono::hours(5)};
    Clock::time_point now = begin;
    std::unique_ptr<SharedSound> device, sound;
    std::unique_ptr<SharedFrames> session, frames;
    std::unique_ptr<DiscFiles> files;
    std::optional<DiscPlayer> player;
    PlayerState state; ///< as it was told last
    std::vector<Shown> shown;
    std::vector<Told> timesTold;
    QByteArray heard; ///< samples, with the silence of a device that has nothing to play

private:
    void hearFrame();
};

} // namespace Tessaron::Testing
