#pragma once

#include "platform/discimage/source/DiscImageSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Tessaron
{

/// What an image of this system says of itself (docs/damage.md).
struct ContentsRecord {
    static constexpr std::size_t size = 40; ///< bytes on the disc
    static constexpr std::uint64_t systemAreaPlace = 30'720; ///< in the image: in the last block of the system area

    std::uint8_t trees = 0; ///< that the image was made with, bit 1 << VolumeKind
    std::uint32_t blocks = 0;
    std::uint32_t firstBlock = 0; ///< of the image on its disc
    std::int64_t seconds = 0; ///< the date of the volume, since 1970

    friend bool operator==(const ContentsRecord &, const ContentsRecord &) = default;
};

/// Absent when the bytes are not a whole record.
[[nodiscard]] std::optional<ContentsRecord> contentsRecordIn(std::span<const std::uint8_t, ContentsRecord::size> bytes);
[[nodiscard]] std::optional<ContentsRecord> contentsRecordAt(const DiscImageSource &source, std::uint64_t offset);

} // namespace Tessaron
