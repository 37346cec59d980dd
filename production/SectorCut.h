#pragma once

#include "platform/foundation/NSFileHandle.h"

#include <cstdint>

namespace Tessaron
{

/// What is kept of each sector of a file.
struct SectorCut {
    std::uint32_t skipped = 0; ///< bytes in front
    std::uint32_t kept = 0; ///< bytes; never 0
    std::uint32_t left = 0; ///< bytes behind

    [[nodiscard]] std::uint32_t sectorSize() const { return skipped + kept + left; }
};

/// Fills the buffer with the kept bytes of as many sectors as fit into it whole, from the handle's offset on, and with
/// zeros behind them and where the file has no more. Returns how many bytes were read and kept. The handle's offset is
/// behind the last sector afterwards, also beyond the end of the file. Memory does not grow with `length`.
std::uint64_t readCutSectors(NSFileHandle &handle, const SectorCut &cut, char *buffer, std::uint32_t length);

/// Goes to the sector with the number from the byte `origin` on. A place that no file has, negative or beyond 63 bits,
/// leads behind the end of every file.
void seekToSector(NSFileHandle &handle, std::int64_t origin, std::uint32_t sectorSize, std::uint32_t sector);

} // namespace Tessaron
