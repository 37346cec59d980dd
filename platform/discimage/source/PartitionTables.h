#pragma once

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace Tessaron
{

class DiscImageSource;

enum class PartitionScheme : std::uint8_t {
    Apple, ///< the partition map of Macs, a block for each entry
    MBR, ///< the four entries in the first sector of PCs
    GPT, ///< the table of UEFI
};

/// An entry of a partition map.
struct DiscImagePartition {
    QString name; ///< empty in an MBR, which has no names
    QString type; ///< such as "Apple_HFS"; for MBR two hexadecimal digits with "0x", for GPT the GUID
    std::uint64_t offset = 0; ///< bytes, in the image
    std::uint64_t length = 0; ///< bytes
    PartitionScheme scheme = PartitionScheme::Apple;

    friend bool operator==(const DiscImagePartition &, const DiscImagePartition &) = default;
};

/// Something wrong in a partition map.
struct PartitionTableProblem {
    std::uint64_t offset = 0; ///< in the image, bytes
    bool isRemains = false; ///< the map itself cannot be found any more
    QString structure; ///< "Apple partition map", "GPT" …
    QString message; ///< a sentence without the full stop
};

/// All entries of the maps in an image: Apple's first, then those of a GPT, then those of an MBR that do more than
/// announce a GPT. A damaged GPT is read from its backup. `problem`, which may be null, is told what is wrong: copies
/// and checksums that disagree, entries beyond the end of the image, maps whose beginning is missing.
[[nodiscard]] std::vector<DiscImagePartition>
readPartitionTables(const DiscImageSource &source, const std::function<void(const PartitionTableProblem &)> &problem);

/// True when the entry says that it holds an HFS+ volume.
[[nodiscard]] TESSARON_EXPORT bool isHfsPlusPartition(const DiscImagePartition &partition);

/// "Apple partition map", "MBR", "GPT".
[[nodiscard]] TESSARON_EXPORT QString partitionSchemeName(PartitionScheme scheme);

} // namespace Tessaron
