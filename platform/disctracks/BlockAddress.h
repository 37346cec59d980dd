#pragma once

#include "platform/foundation/Export.h"

#include <QByteArrayView>
#include <QString>

#include <compare>
#include <cstdint>
#include <optional>

namespace Tessaron
{

/// A length or a place on a CD in minutes, seconds and frames. A frame is a block: 75 of them are a second. A value;
/// the numbers may exceed 59 and 74, as they do in what people write.
struct TESSARON_EXPORT MSF {
    static constexpr std::int64_t framesPerSecond = 75;
    static constexpr std::int64_t framesPerMinute = 60 * framesPerSecond;

    std::int64_t minutes = 0;
    std::int64_t seconds = 0;
    std::int64_t frames = 0;

    /// The same length with seconds below 60 and frames below 75. `frames` must not be negative.
    [[nodiscard]] static constexpr MSF ofFrames(std::int64_t frames)
    {
        return {frames / framesPerMinute, frames / framesPerSecond % 60, frames % framesPerSecond};
    }
    /// Reads "minutes:seconds:frames": three decimal numbers of up to nine digits each with one colon between two of
    /// them and nothing else. There is no upper limit to seconds and frames; see isRegular().
    [[nodiscard]] static std::optional<MSF> fromText(QByteArrayView text);

    [[nodiscard]] constexpr std::int64_t totalFrames() const
    {
        return minutes * framesPerMinute + seconds * framesPerSecond + frames;
    }
    /// True when seconds and frames stay below a minute and a second.
    [[nodiscard]] constexpr bool isRegular() const
    {
        return minutes >= 0 && seconds >= 0 && seconds < 60 && frames >= 0 && frames < framesPerSecond;
    }
    /// "MM:SS:FF", two digits each at least.
    [[nodiscard]] QString text() const;

    friend constexpr bool operator==(const MSF &, const MSF &) = default;
};

/// The number of a block on a disc. Block 0 is where a filesystem's addresses begin; on a CD it is at 00:02:00, and the
/// lead-in has negative numbers. Unlike a count of blocks, two of them cannot be added.
class TESSARON_EXPORT BlockAddress
{
public:
    constexpr BlockAddress() = default;
    constexpr explicit BlockAddress(std::int64_t number)
        : m_number(number)
    {
    }

    /// The block at a place on a CD. From 90 minutes on the place lies in the lead-in (MMC, "LBA to MSF translation").
    [[nodiscard]] static constexpr BlockAddress atMSF(const MSF &place)
    {
        return BlockAddress(place.totalFrames() - (place.minutes >= 90 ? framesOfWrap : framesBeforeFirst));
    }

    [[nodiscard]] constexpr std::int64_t number() const { return m_number; }
    /// The place of the block on a CD. Defined from block -45150 to 404849; a CD has no others.
    [[nodiscard]] constexpr MSF msf() const
    {
        return MSF::ofFrames(m_number + (m_number < -framesBeforeFirst ? framesOfWrap : framesBeforeFirst));
    }

    friend constexpr BlockAddress operator+(BlockAddress address, std::int64_t blocks)
    {
        return BlockAddress(address.m_number + blocks);
    }
    friend constexpr BlockAddress operator-(BlockAddress address, std::int64_t blocks)
    {
        return BlockAddress(address.m_number - blocks);
    }
    /// How many blocks lie from `from` (included) to `to` (not included).
    friend constexpr std::int64_t operator-(BlockAddress to, BlockAddress from) { return to.m_number - from.m_number; }
    // The check takes the zero that the compiler itself compares with for one in the source.
    friend constexpr auto operator<=>(BlockAddress, BlockAddress) = default; // NOLINT(modernize-use-nullptr)

private:
    static constexpr std::int64_t framesBeforeFirst = 150;
    static constexpr std::int64_t framesOfWrap = 450150;

    std::int64_t m_number = 0;
};

} // namespace Tessaron
