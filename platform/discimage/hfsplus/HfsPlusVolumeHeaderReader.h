#pragma once

#include "platform/discimage/hfsplus/HfsPlusForkExtents.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/NSError.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The header of an HFS+ volume that was found in an image.
struct HfsPlusHeader {
    static constexpr std::size_t size = 512;

    HfsPlusVolumePlace place;
    std::uint64_t containerLength = 0; ///< bytes of the partition, wrapper or image that the volume may fill
    bool isHfsx = false; ///< names may be ordered with regard to case
    bool hasJournal = false;
    std::uint32_t modified = 0; ///< seconds since 1904, UTC
    std::array<std::uint8_t, size> bytes{};

    [[nodiscard]] std::uint64_t offset() const; ///< in the image
    /// The trees of an image of this system (docs/damage.md); absent when the volume is another system's, or this is
    /// damaged.
    [[nodiscard]] std::optional<std::uint8_t> treesOfImage() const;
    [[nodiscard]] bool isOfThisSystem() const { return treesOfImage().has_value(); }
};

/// Looks for an HFS+ volume: embedded in an HFS wrapper at the beginning of the image or of an Apple partition, or
/// without one ("HFS Wrapper", "Volume Header"). No value for an image without one; the error is set when it should
/// have one, or when another way than the one taken leads to something that is not a volume.
[[nodiscard]] std::optional<HfsPlusHeader> findHfsPlusHeader(const DiscImageSource &source, NSError *error);

/// Compares the copy of the header at the end of the volume: the null error when the two agree in what hardly
/// ever changes: version, size and number of blocks, and the places of the volume's own files.
[[nodiscard]] NSError checkHfsPlusHeaderCopy(const DiscImageSource &source, const HfsPlusHeader &header);

} // namespace Tessaron
