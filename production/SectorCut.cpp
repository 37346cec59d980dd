#include "production/SectorCut.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t nowhere = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t pieceSize = 48 * std::size_t(2448); // bytes; one system call for each piece

} // namespace

std::uint64_t readCutSectors(NSFileHandle &handle, const SectorCut &cut, char *buffer, std::uint32_t length)
{
    std::array<char, pieceSize> piece;
    std::memset(buffer, 0, length);
    const std::size_t sectorSize = cut.sectorSize();
    std::uint64_t keptBytes = 0;
    for (std::size_t sectors = length / cut.kept; sectors > 0;) {
        const std::size_t inPiece = std::min(sectors, piece.size() / sectorSize);
        const std::uint64_t begin = handle.offsetInFile();
        const std::size_t got = handle.readInto(piece.data(), inPiece * sectorSize);
        handle.seekToFileOffset(begin > nowhere - inPiece * sectorSize ? nowhere : begin + inPiece * sectorSize);
        for (std::size_t at = cut.skipped; at < got; at += sectorSize) {
            const std::size_t kept = std::min<std::size_t>(cut.kept, got - at);
            std::memcpy(buffer + keptBytes, piece.data() + at, kept);
            keptBytes += kept;
        }
        sectors -= inPiece;
    }
    return keptBytes;
}

void seekToSector(NSFileHandle &handle, std::int64_t origin, std::uint32_t sectorSize, std::uint32_t sector)
{
    const std::uint64_t distance = std::uint64_t(sectorSize) * sector;
    const std::uint64_t place = std::uint64_t(origin) + distance; // counted modulo 2^64
    const bool isNegative = origin < 0 && std::uint64_t(-(origin + 1)) >= distance;
    const bool isTooFar =
        (origin >= 0 && place < distance) || place > std::uint64_t(std::numeric_limits<std::int64_t>::max());
    handle.seekToFileOffset(isNegative || isTooFar ? nowhere : place);
}

} // namespace Tessaron
