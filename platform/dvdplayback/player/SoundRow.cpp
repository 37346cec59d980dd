#include "platform/dvdplayback/player/SoundRow.h"

#include <algorithm>
#include <utility>

namespace Tessaron
{

SoundRow::SoundRow(PlaybackClock *clock)
    : m_clock(clock)
{
}

void SoundRow::add(const SoundStream &stream, std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time)
{
    m_sound.push_back({stream, {bytes.begin(), bytes.end()}, time});
}

void SoundRow::dropBefore(std::int64_t time)
{
    // Bytes without a time go with those in front of them.
    const auto last = std::find_if(m_sound.rbegin(), m_sound.rend(),
                                   [time](const SoundBytes &bytes) { return bytes.time && *bytes.time <= time; });
    if (last == m_sound.rend() || std::next(last) == m_sound.rend())
        return;
    m_sound.erase(m_sound.begin(), std::next(last).base());
    if (m_decoder)
        m_decoder->forget();
}

void SoundRow::forget()
{
    m_sound.clear();
    m_decoder.reset();
}

void SoundRow::decode(PlaybackClock::Clock::time_point now, std::int64_t mostAhead, bool isLast)
{
    if (!m_clock->takesSound(now)) {
        if (!m_clock->isWaitingForDevice(now))
            m_sound.clear();
        return;
    }
    const auto visitor = [this](DecodedSound piece) { m_clock->add(std::move(piece)); };
    while (!m_sound.empty() && m_clock->soundAhead(now) < mostAhead) {
        const SoundBytes bytes = std::move(m_sound.front());
        m_sound.pop_front();
        if (!m_decoder || bytes.stream != m_streamOfDecoder) {
            if (m_decoder)
                m_decoder->drain(visitor);
            m_decoder = SoundDecoder::create(bytes.stream.kind, m_clock->form());
            m_streamOfDecoder = bytes.stream;
        }
        if (m_decoder)
            m_decoder->add(bytes.bytes, bytes.time, visitor);
    }
    // The last frame of a stream is complete when nothing follows.
    if (isLast && m_sound.empty() && m_decoder) {
        m_decoder->drain(visitor);
        m_decoder.reset();
    }
}

} // namespace Tessaron
