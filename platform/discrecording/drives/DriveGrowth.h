#pragma once

#include <cstdint>

namespace Tessaron
{

/// How something is added to a disc that is overwritten, or to a file, neither of which has sessions: it goes behind
/// what is kept, with addresses that count from the disc's begin, and then its volume descriptors take the place of
/// those at the disc's begin, by which systems find a filesystem.
struct DriveGrowth {
    /// A session of such discs begins, and ends, at a whole one: what drives write at once, and more than that.
    static constexpr std::uint64_t alignment = 32; // blocks

    std::uint64_t firstBlock = 0; ///< of what is added; a multiple of `alignment`
    bool endsUDF = false; ///< there is a UDF filesystem, which would go on showing what was there before alone
};

} // namespace Tessaron
