#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Tessaron
{

/// What the system use entries of one directory record say (SUSP 1.12, IEEE P1282).
struct RockRidgeEntry {
    bool hasSharingProtocol = false; ///< SP: the mark of SUSP in the root's own record
    std::size_t skippedBytes = 0; ///< from SP: how many bytes all other records have in front of their entries
    bool isRockRidge = false; ///< ER names it, or there is an entry that only Rock Ridge has
    QByteArray name;
    bool hasName = false;
    std::optional<std::uint32_t> mode;
    std::optional<std::uint32_t> userId;
    std::optional<std::uint32_t> groupId;
    std::uint64_t deviceNumber = 0; ///< PN
    std::uint32_t serialNumber = 0; ///< 0 when not recorded
    std::optional<VolumeTime> modified;
    QByteArray linkTarget;
    bool isLink = false;
    std::optional<std::uint32_t> childBlock; ///< CL: the folder that stands for this record lies here
    bool isRelocated = false; ///< RE: listed elsewhere through a CL
};

/// Reads the entries of a record's system use area and of the continuation areas that it leads to. `offset` is where
/// the area lies in the image. Damage is an error; `*entry` then has what was read before it.
[[nodiscard]] NSError readRockRidgeEntry(const DiscImageSource &source, std::uint32_t blockSize,
                                         std::span<const std::uint8_t> area, std::uint64_t offset,
                                         RockRidgeEntry *entry);

} // namespace Tessaron
