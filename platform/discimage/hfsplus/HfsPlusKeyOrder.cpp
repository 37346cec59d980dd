#include "platform/discimage/hfsplus/HfsPlusKeyOrder.h"

#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"
#include "platform/discimage/hfsplus/HfsPlusNameOrder.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/foundation/ByteOrder.h"

#include <tuple>

namespace Tessaron
{

namespace
{

/// What a catalog says whose names are ordered with regard to case, on HFSX volumes.
constexpr std::uint8_t binaryCompareType = 0xBC;

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
            namespace Field = HfsPlusExtentsKeyField;
            return std::tuple(loadBigEndian<std::uint32_t>(&key[Field::fileId]), key[Field::fork],
                              loadBigEndian<std::uint32_t>(&key[Field::firstBlock]));
        };
        return compareNumbers(rank(one), rank(other));
    };
}

} // namespace Tessaron
