#pragma once

#include "platform/discimage/iso9660/IsoDirectory.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/discimage/volume/VolumeObject.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// What Rock Ridge says of one record, as far as other records say it, too.
struct RockRidgeRecordFacts {
    std::optional<std::uint32_t> mode;
    std::optional<std::uint32_t> userId;
    std::optional<std::uint32_t> groupId;
    std::optional<VolumeTime> modified;
    bool hasName = false;
    bool hasChildLink = false; ///< CL
};

/// Whether a volume has Rock Ridge and what each of its records must say then.
struct RockRidgeUse {
    bool isUsed = false;
    bool hasOtherExtensions = false; ///< ER names others, whose entries are unknown here
    bool hasTimes = false; ///< the root has TF
    /// The record of a link has the link's own date. Some writers give it that of what the link leads to.
    bool linksHaveOwnDates = false;
    std::size_t skippedBytes = 0; ///< of SP
};

/// Looks at the first record of the root: SP and what extensions ER names.
[[nodiscard]] RockRidgeUse checkRockRidgeUse(const DiscImageSource &source, std::uint32_t blockSize,
                                             const IsoRecord &rootRecord, const VolumeProblems &problems);

/// Looks at the system use entries of one record and of its continuation areas (SUSP 1.12, IEEE P1282): lengths,
/// versions, both byte orders, and what the record itself says.
[[nodiscard]] RockRidgeRecordFacts checkRockRidgeRecord(const DiscImageSource &source, std::uint32_t blockSize,
                                                        const RockRidgeUse &use, const IsoRecord &record,
                                                        bool isRootRecord, const VolumeProblems &problems);

} // namespace Tessaron
