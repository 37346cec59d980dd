#include "fuzz/FuzzTarget.h"

#include "platform/dvdplayback/player/EncryptionCheck.h"
#include "platform/dvdplayback/player/PacketSplitter.h"

/// Sectors of a disc, as its contents could have them.
int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    using namespace Tessaron;
    const std::span<const std::uint8_t> sector(bytes, size);
    std::size_t told = 0;
    splitSector(sector, [&](const ElementaryPiece &piece) {
        require(piece.bytes.data() >= bytes && piece.bytes.data() + piece.bytes.size() <= bytes + size,
                "a piece lies in the sector");
        require(!piece.presentation || (*piece.presentation >= 0 && *piece.presentation < (std::int64_t(1) << 33)),
                "a time has 33 bits");
        told += piece.bytes.size();
    });
    require(told <= size, "no byte is told twice");
    static_cast<void>(isScrambledSector(sector));
    return 0;
}
