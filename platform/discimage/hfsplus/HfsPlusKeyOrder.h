#pragma once

#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"

#include <cstdint>

namespace Tessaron
{

/// The order of the catalog's keys. On HFSX volumes the header of the catalog says by `compareType` whether letters of
/// either case are the same.
[[nodiscard]] HfsPlusBTreeWalker::Order hfsPlusCatalogOrder(bool isHfsx, std::uint8_t compareType);

/// The order of the keys of the extents file: file, fork, first block.
[[nodiscard]] HfsPlusBTreeWalker::Order hfsPlusExtentsOrder();

} // namespace Tessaron
