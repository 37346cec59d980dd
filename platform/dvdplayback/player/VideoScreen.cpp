#include "platform/dvdplayback/player/VideoScreen.h"

#include <algorithm>
#include <utility>

namespace Tessaron
{

VideoScreen::VideoScreen(SharedFrames *frames, Hearer hearer)
    : m_frames(frames)
    , m_hearer(std::move(hearer))
{
}

void VideoScreen::show(VideoPicture picture)
{
    m_shown = std::move(picture);
    compose();
}

void VideoScreen::setButton(const std::optional<ButtonColours> &button)
{
    if (std::exchange(m_button, button) != button && m_overlay)
        compose();
}

void VideoScreen::lay(Overlay overlay, const std::optional<ButtonColours> &button)
{
    overlay.subpicture.start = std::min<std::int64_t>(overlay.subpicture.start, 0);
    begin(std::move(overlay));
    m_button = button;
    compose();
}

void VideoScreen::begin(Overlay overlay)
{
    m_overlay = std::move(overlay.subpicture);
    m_overlayUntil = m_overlay->end ? std::optional(overlay.time.value_or(0) + *m_overlay->end) : std::nullopt;
    m_next.reset();
}

void VideoScreen::changeOverlay(std::int64_t time)
{
    bool isChanged = false;
    if (m_overlay && m_overlayUntil && time >= *m_overlayUntil) {
        m_overlay.reset();
        isChanged = true;
    }
    if (m_next && time >= m_next->time.value_or(0) + m_next->subpicture.start) {
        begin(*std::exchange(m_next, std::nullopt));
        isChanged = true;
    }
    if (isChanged)
        compose();
}

void VideoScreen::dropOverlay()
{
    m_overlay.reset();
    m_next.reset();
}

void VideoScreen::removeOverlay()
{
    if (!m_overlay)
        return;
    dropOverlay();
    compose();
}

void VideoScreen::forget()
{
    dropOverlay();
    m_button.reset();
}

void VideoScreen::compose()
{
    const AVFrame *const frame = m_shown.frame.get();
    if (!frame || frame->width < 1 || frame->height < 1 || frame->width > int(mostFrameWidth)
        || frame->height > int(mostFrameHeight))
        return;
    constexpr int stride = int(mostFrameWidth) * 4;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), frame->width, frame->height, AVPixelFormat(frame->format),
                                        frame->width, frame->height, AV_PIX_FMT_BGRA, SWS_FAST_BILINEAR, nullptr,
                                        nullptr, nullptr));
    if (!m_scaler)
        return;
    std::uint8_t *const pixels = m_frames->pixelsToFill();
    std::uint8_t *const planes[4] = {pixels, nullptr, nullptr, nullptr};
    const int strides[4] = {stride, 0, 0, 0};
    sws_scale(m_scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    if (m_overlay)
        layOver(*m_overlay, m_colours, m_button, pixels, stride, frame->width, frame->height);
    m_hearer(m_frames->publish(std::uint32_t(frame->width), std::uint32_t(frame->height)));
}

} // namespace Tessaron
