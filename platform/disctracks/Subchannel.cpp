#include "platform/disctracks/Subchannel.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint8_t positionMode = 1;
constexpr std::uint8_t catalogMode = 2;
constexpr std::uint8_t isrcMode = 3;
constexpr std::uint8_t leadOut = 0xAA;

namespace QField
{
constexpr std::size_t controlAndMode = 0;
constexpr std::size_t track = 1; // of mode 1, as the next ones
constexpr std::size_t index = 2;
constexpr std::size_t relativeTime = 3;
constexpr std::size_t absoluteTime = 7;
constexpr std::size_t frame = 9; // of modes 2 and 3
constexpr std::size_t checksum = 10;
} // namespace QField

constexpr std::size_t isrcSize = 12;
constexpr std::size_t isrcLetters = 5; // coded in six bits each, the rest in four
constexpr std::size_t catalogSize = 13;

constexpr std::array<std::uint16_t, 256> makeTable()
{
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t value = byte << 8;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 0x8000) ? value << 1 ^ 0x1021 : value << 1;
        table[byte] = std::uint16_t(value);
    }
    return table;
}

constexpr std::uint8_t bcd(std::int64_t number)
{
    return std::uint8_t(number / 10 % 10 << 4 | number % 10);
}

/// The number of two decimal digits; -1 when either is not a decimal digit.
constexpr int fromBcd(std::uint8_t byte)
{
    return (byte >> 4) < 10 && (byte & 15) < 10 ? (byte >> 4) * 10 + (byte & 15) : -1;
}

void putTime(const MSF &time, std::uint8_t *to)
{
    to[0] = bcd(time.minutes);
    to[1] = bcd(time.seconds);
    to[2] = bcd(time.frames);
}

std::optional<MSF> timeAt(const std::uint8_t *from)
{
    const MSF time{fromBcd(from[0]), fromBcd(from[1]), fromBcd(from[2])};
    return time.minutes >= 0 && time.isRegular() ? std::optional(time) : std::nullopt;
}

/// Puts control, mode and checksum to what is there.
void finish(std::uint8_t control, std::uint8_t mode, SubchannelQ *channel)
{
    (*channel)[QField::controlAndMode] = std::uint8_t((control & 15) << 4 | mode);
    storeBigEndian<std::uint16_t>(&(*channel)[QField::checksum], subchannelChecksum(channel->data(), QField::checksum));
}

bool isOfMode(const SubchannelQ &channel, std::uint8_t mode)
{
    return (channel[QField::controlAndMode] & 15) == mode && isSound(channel);
}

constexpr bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}
constexpr bool isUpperLetter(char character)
{
    return character >= 'A' && character <= 'Z';
}

/// Puts and takes numbers of a few bits one behind the other, the highest bit first.
class BitWriter
{
public:
    explicit BitWriter(std::uint8_t *to)
        : m_to(to)
    {
    }
    void put(unsigned int value, unsigned int bits)
    {
        for (unsigned int bit = bits; bit-- > 0; ++m_position)
            m_to[m_position / 8] |= std::uint8_t((value >> bit & 1) << (7 - m_position % 8));
    }

private:
    std::uint8_t *const m_to;
    std::size_t m_position = 0;
};

class BitReader
{
public:
    explicit BitReader(const std::uint8_t *from)
        : m_from(from)
    {
    }
    unsigned int take(unsigned int bits)
    {
        unsigned int value = 0;
        for (; bits > 0; --bits, ++m_position)
            value = value << 1 | (m_from[m_position / 8] >> (7 - m_position % 8) & 1u);
        return value;
    }

private:
    const std::uint8_t *const m_from;
    std::size_t m_position = 0;
};

/// ISRC letters: digits as they are, "A" is 17.
constexpr unsigned int sixBitsOf(char character)
{
    return unsigned(character - '0');
}

} // namespace

std::uint16_t subchannelChecksum(const std::uint8_t *bytes, std::size_t length)
{
    static constexpr std::array<std::uint16_t, 256> table = makeTable();
    std::uint16_t value = 0;
    for (std::size_t index = 0; index < length; ++index)
        value = std::uint16_t(value << 8 ^ table[(value >> 8 ^ bytes[index]) & 0xFF]);
    return std::uint16_t(~value);
}

SubchannelQ subchannelQ(const SubchannelPosition &position)
{
    SubchannelQ channel{};
    channel[QField::track] = position.track == leadOut ? leadOut : bcd(position.track);
    channel[QField::index] = bcd(position.index);
    putTime(MSF::ofFrames(std::max<std::int64_t>(position.relativeFrames, 0)), &channel[QField::relativeTime]);
    putTime(position.address.msf(), &channel[QField::absoluteTime]);
    finish(position.control, positionMode, &channel);
    return channel;
}

std::optional<SubchannelQ> subchannelQOfCatalogNumber(std::uint8_t control, QByteArrayView digits, std::int64_t frame)
{
    if (!isCatalogNumber(digits))
        return std::nullopt;
    SubchannelQ channel{};
    BitWriter writer(&channel[1]);
    for (const char digit : digits)
        writer.put(unsigned(digit - '0'), 4);
    channel[QField::frame] = bcd(frame);
    finish(control, catalogMode, &channel);
    return channel;
}

std::optional<SubchannelQ> subchannelQOfIsrc(std::uint8_t control, QByteArrayView isrc, std::int64_t frame)
{
    if (!isIsrc(isrc))
        return std::nullopt;
    SubchannelQ channel{};
    BitWriter writer(&channel[1]);
    for (std::size_t index = 0; index < isrcLetters; ++index)
        writer.put(sixBitsOf(isrc[qsizetype(index)]), 6);
    writer.put(0, 2);
    for (std::size_t index = isrcLetters; index < isrcSize; ++index)
        writer.put(unsigned(isrc[qsizetype(index)] - '0'), 4);
    channel[QField::frame] = bcd(frame);
    finish(control, isrcMode, &channel);
    return channel;
}

bool isSound(const SubchannelQ &channel)
{
    return loadBigEndian<std::uint16_t>(&channel[QField::checksum])
        == subchannelChecksum(channel.data(), QField::checksum);
}

std::optional<SubchannelPosition> positionOfSubchannelQ(const SubchannelQ &channel)
{
    if (!isOfMode(channel, positionMode))
        return std::nullopt;
    const std::uint8_t trackByte = channel[QField::track];
    const int track = trackByte == leadOut ? leadOut : fromBcd(trackByte);
    const int index = fromBcd(channel[QField::index]);
    const std::optional<MSF> relative = timeAt(&channel[QField::relativeTime]);
    const std::optional<MSF> absolute = timeAt(&channel[QField::absoluteTime]);
    if (track < 0 || index < 0 || !relative || !absolute)
        return std::nullopt;
    return SubchannelPosition{std::uint8_t(channel[QField::controlAndMode] >> 4), std::uint8_t(track),
                              std::uint8_t(index), relative->totalFrames(), BlockAddress::atMSF(*absolute)};
}

QByteArray catalogNumberOfSubchannelQ(const SubchannelQ &channel)
{
    if (!isOfMode(channel, catalogMode))
        return {};
    QByteArray digits;
    BitReader reader(&channel[1]);
    for (std::size_t index = 0; index < catalogSize; ++index)
        digits.append(char('0' + reader.take(4)));
    return isCatalogNumber(digits) ? digits : QByteArray();
}

QByteArray isrcOfSubchannelQ(const SubchannelQ &channel)
{
    if (!isOfMode(channel, isrcMode))
        return {};
    QByteArray isrc;
    BitReader reader(&channel[1]);
    for (std::size_t index = 0; index < isrcLetters; ++index)
        isrc.append(char('0' + reader.take(6)));
    (void)reader.take(2);
    for (std::size_t index = isrcLetters; index < isrcSize; ++index)
        isrc.append(char('0' + reader.take(4)));
    return isIsrc(isrc) ? isrc : QByteArray();
}

bool isIsrc(QByteArrayView text)
{
    return text.size() == qsizetype(isrcSize) && isUpperLetter(text[0]) && isUpperLetter(text[1])
        && std::all_of(text.begin() + 2, text.begin() + 5,
                       [](char character) { return isUpperLetter(character) || isDigit(character); })
        && std::all_of(text.begin() + 5, text.end(), isDigit);
}

bool isCatalogNumber(QByteArrayView text)
{
    return text.size() == qsizetype(catalogSize) && std::all_of(text.begin(), text.end(), isDigit);
}

void interleaveSubchannels(const std::uint8_t *channels, std::uint8_t *raw)
{
    constexpr std::size_t channelSize = subchannelSize / 8;
    std::fill_n(raw, subchannelSize, std::uint8_t(0));
    for (std::size_t channel = 0; channel < 8; ++channel) {
        for (std::size_t bit = 0; bit < subchannelSize; ++bit) {
            const unsigned int value = channels[channel * channelSize + bit / 8] >> (7 - bit % 8) & 1u;
            raw[bit] |= std::uint8_t(value << (7 - channel));
        }
    }
}

void deinterleaveSubchannels(const std::uint8_t *raw, std::uint8_t *channels)
{
    constexpr std::size_t channelSize = subchannelSize / 8;
    std::fill_n(channels, subchannelSize, std::uint8_t(0));
    for (std::size_t channel = 0; channel < 8; ++channel) {
        for (std::size_t bit = 0; bit < subchannelSize; ++bit) {
            const unsigned int value = raw[bit] >> (7 - channel) & 1u;
            channels[channel * channelSize + bit / 8] |= std::uint8_t(value << (7 - bit % 8));
        }
    }
}

} // namespace Tessaron
