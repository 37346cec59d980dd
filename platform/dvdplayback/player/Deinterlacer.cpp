#include "platform/dvdplayback/player/Deinterlacer.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace Tessaron
{

namespace
{

/// Of 8192. Low frequencies are taken from the lines of the half picture itself, high ones from those of its neighbours
/// in time; where these differ too much, the lines alone have to do.
constexpr int lowNear = 4309, lowFar = 213;
constexpr int highHere = 5570, highNear = 3801, highFar = 1016;
constexpr int aloneNear = 5077, aloneFar = 981;
constexpr int shiftOfWeights = 13;
/// High frequencies have a quarter of their weights: two neighbours in time of two lines each.
constexpr int shiftOfHigh = 2;

/// The lines around one that is missing; the number says how many lines above or below it they are.
struct Surroundings {
    // Of the half picture itself.
    const std::uint8_t *above1, *below1, *above3, *below3;
    // The same of the half pictures of this parity one picture earlier and later.
    const std::uint8_t *earlierAbove1, *earlierBelow1, *laterAbove1, *laterBelow1;
    // Of the half pictures that have the missing line, before and after.
    const std::uint8_t *before, *after, *beforeAbove2, *afterAbove2, *beforeBelow2, *afterBelow2;
    const std::uint8_t *beforeAbove4, *afterAbove4, *beforeBelow4, *afterBelow4;
};

/// Without branches, so that many samples are computed at a time.
void interpolateLine(std::uint8_t *line, int width, const Surroundings &at)
{
    for (int x = 0; x < width; ++x) {
        const int above = at.above1[x], below = at.below1[x];
        const int inTime = (at.before[x] + at.after[x]) >> 1;
        const int change = std::abs(at.before[x] - at.after[x]);
        const int changeEarlier = (std::abs(at.earlierAbove1[x] - above) + std::abs(at.earlierBelow1[x] - below)) >> 1;
        const int changeLater = (std::abs(at.laterAbove1[x] - above) + std::abs(at.laterBelow1[x] - below)) >> 1;
        const int motion = std::max({change >> 1, changeEarlier, changeLater});

        // A line that stands out from those around it by as much as these do among each other may stay.
        const int bendAbove = ((at.beforeAbove2[x] + at.afterAbove2[x]) >> 1) - above;
        const int bendBelow = ((at.beforeBelow2[x] + at.afterBelow2[x]) >> 1) - below;
        const int overAbove = inTime - above, overBelow = inTime - below;
        const int highest = std::max({overBelow, overAbove, std::min(bendAbove, bendBelow)});
        const int lowest = std::min({overBelow, overAbove, std::max(bendAbove, bendBelow)});
        const int allowed = std::max({motion, lowest, -highest});

        const int high = (highHere * (at.before[x] + at.after[x])
                          - highNear * (at.beforeAbove2[x] + at.afterAbove2[x] + at.beforeBelow2[x] + at.afterBelow2[x])
                          + highFar * (at.beforeAbove4[x] + at.afterAbove4[x] + at.beforeBelow4[x] + at.afterBelow4[x]))
            >> shiftOfHigh;
        const int near = above + below, far = at.above3[x] + at.below3[x];
        const int both = (high + lowNear * near - lowFar * far) >> shiftOfWeights;
        const int alone = (aloneNear * near - aloneFar * far) >> shiftOfWeights;
        const int filtered = std::abs(above - below) > change ? both : alone;
        const int limited = std::clamp(filtered, inTime - allowed, inTime + allowed);
        line[x] = std::uint8_t(std::clamp(motion == 0 ? inTime : limited, 0, 255));
    }
}

/// A plane of three pictures that follow each other, of the same size.
struct Planes {
    std::array<const std::uint8_t *, 3> begin;
    std::array<int, 3> stride;
    int width = 0;
    int height = 0;

    /// The line nearest to that number of the same parity.
    [[nodiscard]] const std::uint8_t *line(std::size_t picture, int number) const
    {
        while (number < 0)
            number += 2;
        while (number >= height)
            number -= 2;
        return begin[picture] + std::ptrdiff_t(number) * stride[picture];
    }
};

void interpolatePlane(std::uint8_t *out, int stride, const Planes &planes, int parity, bool isFirst)
{
    constexpr std::size_t earlier = 0, here = 1, later = 2;
    // The other half of this picture is on one side in time, that of its neighbour on the other.
    const std::size_t before = isFirst ? earlier : here, after = isFirst ? here : later;
    for (int y = 0; y < planes.height; ++y) {
        std::uint8_t *const line = out + std::ptrdiff_t(y) * stride;
        if (y % 2 == parity) {
            std::memcpy(line, planes.line(here, y), std::size_t(planes.width));
            continue;
        }
        const auto at = [&](std::size_t picture, int by) { return planes.line(picture, y + by); };
        interpolateLine(line, planes.width,
                        {at(here, -1), at(here, 1), at(here, -3), at(here, 3), at(earlier, -1), at(earlier, 1),
                         at(later, -1), at(later, 1), at(before, 0), at(after, 0), at(before, -2), at(after, -2),
                         at(before, 2), at(after, 2), at(before, -4), at(after, -4), at(before, 4), at(after, 4)});
    }
}

bool isAlike(const AVFrame &one, const AVFrame &other)
{
    return one.width == other.width && one.height == other.height && one.format == other.format;
}

/// The picture as one of its half pictures shows it; null without memory.
DecodedFrame wholePicture(const AVFrame &earlier, const AVFrame &here, const AVFrame &later, bool isFirst)
{
    DecodedFrame whole(av_frame_alloc());
    if (!whole)
        return nullptr;
    whole->width = here.width;
    whole->height = here.height;
    whole->format = here.format;
    if (av_frame_get_buffer(whole.get(), 0) != 0 || av_frame_copy_props(whole.get(), &here) != 0)
        return nullptr;
    const int parity = (here.top_field_first != 0) == isFirst ? 0 : 1;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1; // half as many of both for colour
        const Planes planes = {{earlier.data[plane], here.data[plane], later.data[plane]},
                               {earlier.linesize[plane], here.linesize[plane], later.linesize[plane]},
                               (here.width + shift) >> shift,
                               (here.height + shift) >> shift};
        interpolatePlane(whole->data[plane], whole->linesize[plane], planes, parity, isFirst);
    }
    return whole;
}

} // namespace

void Deinterlacer::add(VideoPicture picture, const Visitor &visitor)
{
    if (m_waiting)
        giveWaiting(*picture.frame, visitor);
    constexpr int fewestLines = 4;
    const AVFrame &frame = *picture.frame;
    if (frame.interlaced_frame != 0 && frame.format == AV_PIX_FMT_YUV420P && frame.height >= 2 * fewestLines) {
        m_waiting = std::move(picture);
        return;
    }
    m_previous.reset(av_frame_clone(&frame));
    visitor(std::move(picture));
}

void Deinterlacer::drain(const Visitor &visitor)
{
    if (!m_waiting)
        return;
    const DecodedFrame last(av_frame_clone(m_waiting->frame.get()));
    if (last)
        giveWaiting(*last, visitor);
    forget();
}

void Deinterlacer::forget()
{
    m_waiting.reset();
    m_previous.reset();
}

void Deinterlacer::giveWaiting(const AVFrame &next, const Visitor &visitor)
{
    VideoPicture picture = std::move(*m_waiting);
    m_waiting.reset();
    const AVFrame &here = *picture.frame;
    const AVFrame &earlier = m_previous && isAlike(*m_previous, here) ? *m_previous : here;
    const AVFrame &later = isAlike(next, here) ? next : here;
    // A third half picture of a longer one is its first once more: the first picture stays for that time.
    const std::int64_t second = picture.duration / 2;
    VideoPicture first, other;
    first.frame = wholePicture(earlier, here, later, true);
    other.frame = wholePicture(earlier, here, later, false);
    first.time = picture.time;
    first.duration = picture.duration - second;
    other.duration = second;
    if (picture.time)
        other.time = *picture.time + first.duration;
    m_previous = std::move(picture.frame);
    if (first.frame && other.frame) {
        visitor(std::move(first));
        visitor(std::move(other));
    }
}

} // namespace Tessaron
