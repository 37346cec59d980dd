#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// The location of a range that is not there.
inline constexpr std::uint64_t NSNotFound = 0x7FFFFFFF;

/// Bytes of some data.
struct NSRange {
    std::uint64_t location = NSNotFound;
    std::uint64_t length = 0;

    friend bool operator==(const NSRange &, const NSRange &) = default;
};

/// Where the pattern first stands in the data; a range that is not found when it does not, is empty, or is longer than
/// the data. A pattern that ends where the data ends is not found either. Thread-safe.
[[nodiscard]] TESSARON_EXPORT NSRange rangeOfData(const QByteArray &data, const QByteArray &pattern);

} // namespace Tessaron
