#include "platform/dvdplayback/player/Subpicture.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <cmath>

namespace Tessaron
{

namespace
{

constexpr std::size_t sizeOfLength = 2;
constexpr std::int64_t ticksInMillisecond = 90;
constexpr std::uint32_t noEnd = 0xffffffff;
constexpr std::uint8_t fullCover = 15;
constexpr int planeWidth = 720;
constexpr int mostHalfLines = 288; ///< of a picture that has only half of the standard's lines

struct SubtitleHolder {
    AVSubtitle subtitle{};
    SubtitleHolder() = default;
    ~SubtitleHolder() { avsubtitle_free(&subtitle); }
    SubtitleHolder(const SubtitleHolder &) = delete;
    SubtitleHolder &operator=(const SubtitleHolder &) = delete;
};

/// Red, green, blue of a colour of the table (ITU-R BT.601, studio range).
std::array<int, 3> redGreenBlue(std::uint32_t entry)
{
    const double y = 1.164 * (int(entry >> 16 & 0xff) - 16);
    const double cr = int(entry >> 8 & 0xff) - 128;
    const double cb = int(entry & 0xff) - 128;
    const auto clipped = [](double value) { return std::clamp(int(std::lround(value)), 0, 255); };
    return {clipped(y + 1.596 * cr), clipped(y - 0.813 * cr - 0.392 * cb), clipped(y + 2.017 * cb)};
}

void blend(std::uint8_t *pixel, const std::array<int, 3> &colour, int cover)
{
    for (std::size_t channel = 0; channel < colour.size(); ++channel) {
        std::uint8_t &value = pixel[2 - channel]; // blue comes first in memory
        value = std::uint8_t((value * (fullCover - cover) + colour[channel] * cover) / fullCover);
    }
}

bool contains(const PictureArea &area, int x, int y)
{
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

} // namespace

SubpictureColours coloursOfButton(std::uint32_t packed)
{
    SubpictureColours colours;
    for (std::size_t value = 0; value < colours.colour.size(); ++value) {
        colours.cover[value] = std::uint8_t(packed >> (4 * value) & 0x0f);
        colours.colour[value] = std::uint8_t(packed >> (16 + 4 * value) & 0x0f);
    }
    return colours;
}

std::unique_ptr<SubpictureDecoder> SubpictureDecoder::create()
{
    std::unique_ptr<SubpictureDecoder> decoder(new SubpictureDecoder);
    const AVCodec *const codec = avcodec_find_decoder(AV_CODEC_ID_DVD_SUBTITLE);
    decoder->m_context.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!decoder->m_context)
        return nullptr;
    AVDictionary *options = nullptr;
    // Each colour is its own number, so that the numbers can be read from what is decoded.
    av_dict_set(&options, "palette",
                "000000,000001,000002,000003,000004,000005,000006,000007,"
                "000008,000009,00000a,00000b,00000c,00000d,00000e,00000f",
                0);
    const int opened = avcodec_open2(decoder->m_context.get(), codec, &options);
    av_dict_free(&options);
    return opened == 0 ? std::move(decoder) : nullptr;
}

std::optional<Subpicture> SubpictureDecoder::add(std::span<const std::uint8_t> bytes, bool isBegin)
{
    // One that was not completed is lost.
    if (isBegin)
        m_bytes.clear();
    else if (m_bytes.empty())
        return std::nullopt;
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    if (m_bytes.size() < sizeOfLength)
        return std::nullopt;
    const std::size_t length = loadBigEndian<std::uint16_t>(m_bytes.data());
    if (m_bytes.size() < length)
        return std::nullopt;
    m_bytes.resize(length);
    std::optional<Subpicture> subpicture = decode();
    m_bytes.clear();
    return subpicture;
}

std::optional<Subpicture> SubpictureDecoder::decode()
{
    const DecoderPacket packet(av_packet_alloc());
    SubtitleHolder holder;
    if (!packet || m_bytes.empty() || av_new_packet(packet.get(), int(m_bytes.size())) != 0)
        return std::nullopt;
    std::copy(m_bytes.begin(), m_bytes.end(), packet->data);
    int isComplete = 0;
    const AVSubtitle &decoded = holder.subtitle;
    if (avcodec_decode_subtitle2(m_context.get(), &holder.subtitle, &isComplete, packet.get()) < 0 || isComplete == 0
        || decoded.num_rects < 1 || !decoded.rects[0]->data[0] || !decoded.rects[0]->data[1])
        return std::nullopt;
    const AVSubtitleRect &rect = *decoded.rects[0];
    if (rect.w <= 0 || rect.h <= 0 || rect.nb_colors < 4)
        return std::nullopt;
    Subpicture subpicture;
    subpicture.area = {rect.x, rect.y, rect.x + rect.w, rect.y + rect.h};
    subpicture.values.reserve(std::size_t(rect.w) * std::size_t(rect.h));
    for (int line = 0; line < rect.h; ++line) {
        const std::uint8_t *const values = rect.data[0] + std::ptrdiff_t(line) * rect.linesize[0];
        std::transform(values, values + rect.w, std::back_inserter(subpicture.values),
                       [](std::uint8_t value) { return std::uint8_t(value & 3); });
    }
    for (std::size_t value = 0; value < 4; ++value) {
        const auto entry = loadLittleEndian<std::uint32_t>(rect.data[1] + 4 * value);
        subpicture.colours.colour[value] = std::uint8_t(entry & 0x0f);
        subpicture.colours.cover[value] = std::uint8_t(entry >> 28);
    }
    subpicture.isForced = (rect.flags & AV_SUBTITLE_FLAG_FORCED) != 0;
    subpicture.start = std::int64_t(decoded.start_display_time) * ticksInMillisecond;
    if (decoded.end_display_time != noEnd && decoded.end_display_time > decoded.start_display_time)
        subpicture.end = std::int64_t(decoded.end_display_time) * ticksInMillisecond;
    return subpicture;
}

void layOver(const Subpicture &subpicture, const ColourTable &table, const std::optional<ButtonColours> &button,
             std::uint8_t *pixels, std::size_t stride, int width, int height)
{
    std::array<std::array<int, 3>, 16> colours;
    std::transform(table.begin(), table.end(), colours.begin(), redGreenBlue);
    const PictureArea &area = subpicture.area;
    const int lineLength = area.right - area.left;
    const int planeHeight = height <= mostHalfLines ? 2 * height : height;
    const bool isPlane = width == planeWidth && height == planeHeight;
    const auto firstWithin = [](int place, int size, int planeSize) {
        return std::clamp((place * size + planeSize - 1) / planeSize, 0, size);
    };
    const int left = firstWithin(std::max(area.left, 0), width, planeWidth);
    const int right = firstWithin(area.right, width, planeWidth);
    const int bottom = firstWithin(area.bottom, height, planeHeight);
    for (int line = firstWithin(std::max(area.top, 0), height, planeHeight); line < bottom; ++line) {
        const int y = line * planeHeight / height;
        const std::uint8_t *const values = subpicture.values.data() + std::ptrdiff_t(y - area.top) * lineLength;
        for (int column = left; column < right; ++column) {
            const int x = isPlane ? column : column * planeWidth / width;
            const std::uint8_t value = values[x - area.left];
            const bool isButton = button && contains(button->area, x, y);
            const SubpictureColours &used = isButton ? button->colours : subpicture.colours;
            if (const int cover = used.cover[value]; cover > 0)
                blend(pixels + std::size_t(line) * stride + std::size_t(column) * 4, colours[used.colour[value]],
                      cover);
        }
    }
}

} // namespace Tessaron
