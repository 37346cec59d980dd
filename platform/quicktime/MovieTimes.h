#pragma once

#include <algorithm>
#include <cstdint>

namespace Tessaron
{

/// A time in another scale, rounded to the nearest value. Neither is negative, and scales are positive.
[[nodiscard]] inline std::int64_t rescaledTime(std::int64_t time, std::int64_t toScale, std::int64_t fromScale)
{
    __extension__ using Product = __int128;
    const Product result = (Product(time) * toScale + fromScale / 2) / fromScale;
    return std::int64_t(std::min<Product>(result, INT64_MAX));
}

} // namespace Tessaron
