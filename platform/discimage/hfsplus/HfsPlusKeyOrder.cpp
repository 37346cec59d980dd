#include "platform/discimage/hfsplus/HfsPlusKeyOrder.h"

#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"
#include "platform/discimage/hfsplus/HfsPlusNameOrder.h"
#include "platform/foundation/ByteOrder.h"

#include <tuple>

namespace Tessaron
{

namespace
{

/// What a catalog says whose names are ordered with regard to case, on HFSX volumes.
constexpr std::uint8_t binaryCompareType = 0xBC;

// Of a key of the extents file ("Extents Overflow File Key"), without the length.
constexpr std::size_t forkField = 0;
constexpr std::size_t fileField = 2;
constexpr std::size_t firstBlockField = 6;

int compareNumbers(const auto &one, const auto &other)
{
    return one < other ? -1 : other < one ? 1 : 0;
}

} // namespace

HfsPlusBTreeWalker::Order hfsPlusCatalogOrder(bool isHfsx, std::uint8_t compareType)
{
    const auto compareNames = isHfsx && compareType == binaryCompareType ? compareHfsxNames : compareHfsPlusNames;
    return [compareNames](HfsPlusBytes one, HfsPlusBytes other) {
        const int order = compareNumbers(hfsPlusParentId(one), hfsPlusParentId(other));
        return order != 0 ? order : compareNames(hfsPlusKeyName(one), hfsPlusKeyName(other));
    };
}

HfsPlusBTreeWalker::Order hfsPlusExtentsOrder()
{
    return [](HfsPlusBytes one, HfsPlusBytes other) {
        const auto rank = [](HfsPlusBytes key) {
            return std::tuple(loadBigEndian<std::uint32_t>(&key[fileField]), key[forkField],
                              loadBigEndian<std::uint32_t>(&key[firstBlockField]));
        };
        return compareNumbers(rank(one), rank(other));
    };
}

} // namespace Tessaron
