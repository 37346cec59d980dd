#include "platform/dvdplayback/player/PlaybackRows.h"

#include <cstdlib>
#include <utility>

namespace Tessaron
{

namespace
{

/// What is decoded ahead of what is seen.
constexpr std::size_t picturesAhead = 4;
/// Times that are further off, 90 kHz, are mistakes.
constexpr std::int64_t mostOffTime = 90'000;

} // namespace

bool PlaybackRows::open()
{
    if (!m_video)
        m_video = VideoDecoder::create();
    return m_video != nullptr;
}

void PlaybackRows::forget()
{
    m_read.clear();
    m_bytesRead = 0;
    m_readTo.reset();
    m_items.clear();
    m_pictures = 0;
    m_nextPicture.reset();
    m_isBarred = false;
    m_video->forget();
    m_deinterlacer.forget();
}

void PlaybackRows::addVideo(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time)
{
    m_read.emplace_back(VideoBytes{{bytes.begin(), bytes.end()}, time});
    m_bytesRead += bytes.size();
    if (time)
        m_readTo = time;
}

void PlaybackRows::add(Item item)
{
    m_read.emplace_back(std::in_place_type<Item>, std::move(item));
}

void PlaybackRows::addBar(Item item)
{
    addBreak();
    add(std::move(item));
    m_isBarred = true;
}

void PlaybackRows::addBreak()
{
    m_read.emplace_back(Break());
}

bool PlaybackRows::canDecode() const
{
    return !m_read.empty() && m_pictures < picturesAhead;
}

bool PlaybackRows::isShortOfPictures() const
{
    return m_read.empty() && m_pictures < picturesAhead;
}

void PlaybackRows::decode(std::int64_t unitBegin)
{
    const auto taker = [this, unitBegin](VideoPicture picture) { takePicture(std::move(picture), unitBegin); };
    const auto visitor = [this, &taker](VideoPicture picture) { m_deinterlacer.add(std::move(picture), taker); };
    while (canDecode()) {
        ReadItem front = std::move(m_read.front());
        m_read.pop_front();
        if (const auto *const video = std::get_if<VideoBytes>(&front)) {
            m_bytesRead -= video->bytes.size();
            m_video->add(video->bytes, video->time, visitor);
        } else if (std::holds_alternative<Break>(front)) {
            m_video->drain(visitor);
            m_deinterlacer.drain(taker);
        } else {
            m_items.push_back(std::move(std::get<Item>(front)));
        }
    }
}

void PlaybackRows::takePicture(VideoPicture picture, std::int64_t unitBegin)
{
    const std::int64_t expected = m_nextPicture.value_or(unitBegin);
    if (!picture.time || std::abs(*picture.time - expected) > mostOffTime)
        picture.time = expected;
    m_nextPicture = *picture.time + picture.duration;
    m_items.emplace_back(std::move(picture));
    ++m_pictures;
}

void PlaybackRows::removeFront()
{
    if (std::holds_alternative<VideoPicture>(m_items.front()))
        --m_pictures;
    m_items.pop_front();
}

} // namespace Tessaron
