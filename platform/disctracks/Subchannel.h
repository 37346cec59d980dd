#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The check of subchannel Q and of CD-TEXT's packs (IEC 60908 17.5.1: polynomial x^16+x^12+x^5+1, inverted). It is
/// stored big-endian.
[[nodiscard]] TESSARON_EXPORT std::uint16_t subchannelChecksum(const std::uint8_t *bytes, std::size_t length);

/// One sector's part of subchannel Q, its checksum at the end.
using SubchannelQ = std::array<std::uint8_t, 12>;

/// The four bits that stand in front of everything in subchannel Q.
struct SubchannelControl {
    static constexpr std::uint8_t preEmphasis = 1;
    static constexpr std::uint8_t copyPermitted = 2;
    static constexpr std::uint8_t data = 4;
    static constexpr std::uint8_t fourChannels = 8;
};

/// Where the head is (mode 1): most sectors say this.
struct SubchannelPosition {
    std::uint8_t control = 0; ///< bits of SubchannelControl
    std::uint8_t track = 1; ///< 1 to 99; 0xAA in the lead-out
    std::uint8_t index = 1; ///< 0 in a pregap
    std::int64_t relativeFrames = 0; ///< from index 1; counts down to 0 in a pregap
    BlockAddress address;

    friend bool operator==(const SubchannelPosition &, const SubchannelPosition &) = default;
};

[[nodiscard]] TESSARON_EXPORT SubchannelQ subchannelQ(const SubchannelPosition &position);
/// The disc's catalogue number, 13 digits (mode 2); `frame` is the frame part of the sector's address. No value for any
/// other text.
[[nodiscard]] TESSARON_EXPORT std::optional<SubchannelQ>
subchannelQOfCatalogNumber(std::uint8_t control, QByteArrayView digits, std::int64_t frame);
/// The track's ISRC, 12 characters (mode 3). No value for any other text.
[[nodiscard]] TESSARON_EXPORT std::optional<SubchannelQ> subchannelQOfIsrc(std::uint8_t control, QByteArrayView isrc,
                                                                           std::int64_t frame);

/// True when the checksum at its end is right.
[[nodiscard]] TESSARON_EXPORT bool isSound(const SubchannelQ &channel);
/// What a part of mode 1 says; no value for another mode, a wrong checksum, or bytes that are not decimal digits.
[[nodiscard]] TESSARON_EXPORT std::optional<SubchannelPosition> positionOfSubchannelQ(const SubchannelQ &channel);
/// The 13 digits of a part of mode 2; empty for anything else.
[[nodiscard]] TESSARON_EXPORT QByteArray catalogNumberOfSubchannelQ(const SubchannelQ &channel);
/// The 12 characters of a part of mode 3; empty for anything else.
[[nodiscard]] TESSARON_EXPORT QByteArray isrcOfSubchannelQ(const SubchannelQ &channel);

/// True for 12 characters of an ISRC (ISO 3901): two letters of a country, three letters or digits of a registrant, two
/// digits of a year, five digits.
[[nodiscard]] TESSARON_EXPORT bool isIsrc(QByteArrayView text);
/// True for 13 digits.
[[nodiscard]] TESSARON_EXPORT bool isCatalogNumber(QByteArrayView text);

inline constexpr std::size_t subchannelSize = 96; ///< bytes of a sector's subchannels P to W

/// From eight channels of 12 bytes each, P first, to the order in which a drive has them: byte i holds bit i of every
/// channel, P in the highest bit. `raw` must not be `channels`.
TESSARON_EXPORT void interleaveSubchannels(const std::uint8_t *channels, std::uint8_t *raw);
/// The way back.
TESSARON_EXPORT void deinterleaveSubchannels(const std::uint8_t *raw, std::uint8_t *channels);

} // namespace Tessaron
