#pragma once

#include "platform/discimage/iso9660/IsoDescriptorCheck.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tessaron
{

/// A folder as the directories have it.
struct IsoFolderPlace {
    std::uint32_t block = 0;
    std::uint32_t parent = 0; ///< index of its parent among the folders; the root's is its own
    std::uint64_t identifierHash = 0; ///< of isoIdentifierHash()
};

[[nodiscard]] std::uint64_t isoIdentifierHash(std::span<const std::uint8_t> identifier);

/// Holds the path tables in both byte orders, and their copies where there are some (ECMA-119 6.9, 9.4), against the
/// folders that were found, the root first.
void checkIsoPathTables(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor,
                        const std::vector<IsoFolderPlace> &folders, VolumeProblemReport &report);

} // namespace Tessaron
