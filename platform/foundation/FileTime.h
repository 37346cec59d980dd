#pragma once

#include <compare>
#include <cstdint>
#include <ctime>
#include <sys/stat.h>

namespace Tessaron
{

/// A point in time as file systems keep it: whole seconds since 1970, UTC, and nanoseconds. Times before 1970 have
/// negative seconds; the nanoseconds always count forward.
struct FileTime {
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0; ///< 0 to 999,999,999

    [[nodiscard]] static constexpr FileTime from(const timespec &time)
    {
        return {time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec)};
    }
    [[nodiscard]] static constexpr FileTime from(const struct statx_timestamp &time)
    {
        return {time.tv_sec, time.tv_nsec};
    }

    /// Negative when this is the earlier one. For times that lie less than 292 years apart.
    [[nodiscard]] constexpr std::int64_t nanosecondsSince(const FileTime &earlier) const
    {
        return (seconds - earlier.seconds) * 1'000'000'000 + nanoseconds - earlier.nanoseconds;
    }

    // The check takes the zero that the compiler itself compares with for one in the source.
    friend constexpr auto operator<=>(const FileTime &, const FileTime &) = default; // NOLINT(modernize-use-nullptr)
};

} // namespace Tessaron
