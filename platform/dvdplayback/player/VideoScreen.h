#pragma once

#include "platform/dvdplayback/SharedFrames.h"
#include "platform/dvdplayback/player/PlaybackRows.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace Tessaron
{

/// What is to be seen: a picture, a subtitle or the buttons of a menu over it, and which of these is selected. Put
/// together in shared memory whenever any of it has changed. Times are those of the line (Timeline). One thread.
class VideoScreen
{
public:
    using Hearer = std::function<void(std::uint32_t number)>;

    /// The hearer is told of each picture that is whole.
    VideoScreen(SharedFrames *frames, Hearer hearer);

    void show(VideoPicture picture);
    /// Nothing is seen any more.
    void clear() { m_shown = {}; }
    /// What overlays are drawn in from now on.
    void setColours(const ColourTable &colours) { m_colours = colours; }
    void setButton(const std::optional<ButtonColours> &button);
    /// To be seen at once, with that button, as the buttons of a menu are. Must have a time.
    void lay(Overlay overlay, const std::optional<ButtonColours> &button);
    /// To be seen at its time, which it must have.
    void keep(Overlay overlay) { m_next = std::move(overlay); }
    /// Subtitles come and go at their times, between pictures, too.
    void changeOverlay(std::int64_t time);
    /// No overlay goes with the next picture.
    void dropOverlay();
    /// The same, and takes it off the present one.
    void removeOverlay();
    /// What comes next is elsewhere on the disc.
    void forget();

private:
    void begin(Overlay overlay);
    void compose();

    SharedFrames *const m_frames;
    const Hearer m_hearer;
    VideoPicture m_shown; ///< without a frame before the first one
    Scaler m_scaler;
    ColourTable m_colours{};
    std::optional<Subpicture> m_overlay;
    std::optional<std::int64_t> m_overlayUntil;
    std::optional<Overlay> m_next; ///< is not due yet
    std::optional<ButtonColours> m_button;
};

} // namespace Tessaron
