#include "platform/discrecording/iso9660/IsoDateFields.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

using namespace Tessaron;

namespace
{

std::array<int, 7> recordingDate(std::int64_t seconds)
{
    std::array<std::uint8_t, recordingDateSize> bytes{};
    storeRecordingDate(bytes.data(), {seconds, 0});
    std::array<int, 7> result{};
    std::copy(bytes.begin(), bytes.end(), result.begin());
    return result;
}

std::string volumeDate(FileTime time)
{
    std::array<std::uint8_t, volumeDateSize> bytes{};
    bytes.back() = 99;
    storeVolumeDate(bytes.data(), time);
    EXPECT_EQ(bytes.back(), 0);
    return {bytes.begin(), bytes.end() - 1};
}

} // namespace

TEST(IsoDateFields, storeRecordingDate_writesUtc)
{
    EXPECT_EQ(recordingDate(0), (std::array{70, 1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(recordingDate(-1), (std::array{69, 12, 31, 23, 59, 59, 0}));
    EXPECT_EQ(recordingDate(951782400 + 3661), (std::array{100, 2, 29, 1, 1, 1, 0}));
    EXPECT_EQ(recordingDate(4102444799), (std::array{199, 12, 31, 23, 59, 59, 0}));
}

TEST(IsoDateFields, storeRecordingDate_takesTheNearestTime_whenOutOfRange)
{
    EXPECT_TRUE(fitsRecordingDate({-2208988800, 0}));
    EXPECT_FALSE(fitsRecordingDate({-2208988801, 0}));
    EXPECT_EQ(recordingDate(INT64_MIN), (std::array{0, 1, 1, 0, 0, 0, 0}));
    EXPECT_TRUE(fitsRecordingDate({5869583999, 0}));
    EXPECT_FALSE(fitsRecordingDate({5869584000, 0}));
    EXPECT_EQ(recordingDate(INT64_MAX), (std::array{255, 12, 31, 23, 59, 59, 0}));
}

TEST(IsoDateFields, storeVolumeDate_writesDigits)
{
    EXPECT_EQ(volumeDate({1700000000, 120'000'000}), "2023111422132012");
    EXPECT_EQ(volumeDate({INT64_MAX, 0}), "9999123123595900");
    EXPECT_EQ(volumeDate({INT64_MIN, 0}), "0001010100000000");
}

TEST(IsoDateFields, storeNoVolumeDate_writesZeroDigits)
{
    std::array<std::uint8_t, volumeDateSize> bytes{};
    storeNoVolumeDate(bytes.data());
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), std::string(16, '0') + std::string(1, '\0'));
}
