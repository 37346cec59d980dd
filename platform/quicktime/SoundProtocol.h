#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron::SoundProtocol
{

// How CDSound has DummyRedbook decode for it. The program is started as "DummyRedbook --serve VERSION" with a socket of
// whole messages (SOCK_SEQPACKET) as standard input and memory that both have mapped as standard output. Sound lies in
// slots of that memory, everything else behind them. One request is answered after the other, in their order; Fill
// may be asked for again before the last one is answered, for another slot. The program ends with the socket.

/// Goes up with every change of what is in this file, and of what lies in the memory.
inline constexpr const char *version = "1";

inline constexpr const char *serveOption = "--serve";

/// Big enough that waking the other side costs nothing beside the decoding, small enough to stay in a processor's
/// cache.
inline constexpr std::size_t slotSize = std::size_t(128) * 1024;
inline constexpr std::size_t slotCount = 2;
inline constexpr std::size_t recordsOffset = slotSize * slotCount;
/// For paths, tags, errors and damage, as QDataStream writes them.
inline constexpr std::size_t recordsSize = std::size_t(256) * 1024;
inline constexpr std::size_t memorySize = recordsOffset + recordsSize;

enum class Kind : std::uint32_t {
    Open, ///< a record: path, form, gain, whether the exact length is needed; the answer's record: length and tags
    Fill, ///< decodes into the slot as much as it holds; the answer's value is the number of bytes, 0 at the end
    TellDamage, ///< the answer's record: places and their number
    Done, ///< an answer
    Failed, ///< an answer; its record is the error
};

struct Message {
    Kind kind = Kind::Open;
    std::uint32_t slot = 0; ///< of Fill and its answer
    std::uint64_t value = 0; ///< bytes of the record, or of sound
    std::uint64_t damagedPlaces = 0; ///< in an answer to Fill: found so far
};

} // namespace Tessaron::SoundProtocol
