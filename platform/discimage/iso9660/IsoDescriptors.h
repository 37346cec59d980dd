#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// A primary or supplementary volume descriptor (ECMA-119 8.4, 8.5) as far as reading needs it.
struct IsoDescriptor {
    DiscVolumeFacts facts; ///< of kind ISO9660 or Joliet
    std::uint64_t offset = 0; ///< of the descriptor in the image
    std::uint32_t rootBlock = 0;
    std::uint32_t rootLength = 0; ///< bytes
    std::optional<VolumeTime> rootTime;
    /// True for a primary volume of ours that is empty because the files are in the Joliet tree alone.
    bool isStandIn = false;
};

/// The descriptors of an image that matter here; each is absent when the image has none.
struct IsoDescriptorSet {
    std::optional<IsoDescriptor> primary;
    std::optional<IsoDescriptor> joliet;
    bool isBootable = false; ///< there is a boot record of El Torito
};

/// Looks at the blocks from 16 on. An error means that there are descriptors, but a damaged one among them; the set
/// holds the others.
[[nodiscard]] NSError readIsoDescriptors(const DiscImageSource &source, IsoDescriptorSet *set);

/// Text recorded as UTF-16 in big-endian order. Joliet knows UCS-2 only; surrogate pairs are taken all the same.
[[nodiscard]] QString textFromBigEndianUnits(const std::uint8_t *bytes, std::size_t length);

} // namespace Tessaron
