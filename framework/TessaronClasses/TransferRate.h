#pragma once

#include "platform/foundation/Export.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace Tessaron
{

/// How fast bytes go and how long the rest will take, from what the last few seconds have shown: an average from the
/// beginning would still count the fast start out of the cache when the disk has long become the limit.
class TESSARON_EXPORT TransferRate
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// What has been done by `now`, in bytes from the beginning; neither may go back.
    void add(Time now, std::uint64_t bytesDone);

    /// Bytes a second; empty until a quarter of a second has been seen.
    [[nodiscard]] std::optional<double> bytesPerSecond() const;

    /// How long the rest of `bytesTotal` will take; empty while the rate is unknown or zero.
    [[nodiscard]] std::optional<std::chrono::seconds> remaining(std::uint64_t bytesTotal) const;

private:
    struct Sample {
        Time time;
        std::uint64_t bytes;
    };
    std::deque<Sample> m_samples;
};

} // namespace Tessaron
