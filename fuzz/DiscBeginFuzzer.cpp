#include "fuzz/FuzzTarget.h"

#include "platform/discrecording/drives/DiscBegin.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace
{

using namespace Tessaron;

constexpr std::size_t blockSize = 2048;
constexpr std::size_t firstDescriptor = 16;
constexpr std::size_t headSize = 8; ///< bytes of the input for a block: how it begins

using Disc = std::vector<std::uint8_t>;

/// A begin of a disc whose blocks begin as the input says, each 8 bytes of it a block from 16 on; what is behind them
/// is not zero, and another thing in each disc.
Disc discOf(const std::uint8_t *bytes, std::size_t size, std::uint8_t fill)
{
    Disc disc(blocksOfDiscBegin * blockSize, fill);
    for (std::size_t block = firstDescriptor; block < blocksOfDiscBegin; ++block) {
        const std::size_t at = (block - firstDescriptor) * headSize;
        if (at + headSize <= size)
            std::copy_n(bytes + at, headSize, disc.begin() + std::ptrdiff_t(block * blockSize));
    }
    return disc;
}

bool isSame(const Disc &disc, std::size_t block, const Disc &other)
{
    const auto begin = disc.begin() + std::ptrdiff_t(block * blockSize);
    return std::equal(begin, begin + blockSize, other.begin() + std::ptrdiff_t(block * blockSize));
}

bool isZero(const Disc &disc, std::size_t block)
{
    const auto begin = disc.begin() + std::ptrdiff_t(block * blockSize);
    return std::all_of(begin, begin + blockSize, [](std::uint8_t byte) { return byte == 0; });
}

bool isIso(const Disc &disc, std::size_t block)
{
    return std::string_view(reinterpret_cast<const char *>(&disc[block * blockSize + 1]), 5) == "CD001";
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const std::size_t half = std::min(size, (blocksOfDiscBegin - firstDescriptor) * headSize);
    const Disc now = discOf(bytes, half, 'n');
    const Disc added = discOf(bytes + half, size - half, 'a');
    const Disc grown = grownDiscBegin(now, added);
    if (grown.empty())
        return 0;
    require(grown.size() == now.size(), "it is as long as before");
    std::size_t block = 0;
    while (block < blocksOfDiscBegin && isSame(grown, block, added))
        ++block;
    require(block > firstDescriptor, "it begins as what was added");
    require(isIso(added, block - 1) && added[(block - 1) * blockSize] == 255,
            "with all descriptors, up to the last one");
    for (; block < blocksOfDiscBegin; ++block)
        require(isZero(grown, block) || isSame(grown, block, now), "what is behind stays, or is taken away");
    for (std::size_t old = firstDescriptor; old < blocksOfDiscBegin && isIso(now, old); ++old)
        require(isZero(grown, old) || isSame(grown, old, added), "no descriptor of before is left in its row");
    return 0;
}
