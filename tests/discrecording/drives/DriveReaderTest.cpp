#include "platform/discrecording/drives/DriveReader.h"

#include "platform/discrecording/burn/BurnErrors.h"

#include <gtest/gtest.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;

/// A disc whose every byte tells its block.
struct Disc {
    std::vector<std::uint64_t> asked;
    std::uint64_t broken = ~std::uint64_t(0);

    [[nodiscard]] DriveReader::ReadBlocks reader()
    {
        return [this](std::uint64_t first, std::uint32_t count, char *out) {
            asked.push_back(first);
            for (std::uint64_t block = first; block < first + count; ++block) {
                if (block == broken)
                    return burnError(ioErr, QStringLiteral("broken"));
                std::fill_n(out + (block - first) * blockSize, blockSize, char(block));
            }
            return NSError();
        };
    }
};

TEST(DriveReader, read_crossesRuns_andEndsWithTheLastBlock)
{
    Disc disc;
    const DriveReader reader(disc.reader(), 100, 70);
    EXPECT_EQ(reader.length(), 70 * blockSize);
    std::vector<char> out(3 * blockSize);
    ASSERT_FALSE(reader.read(31 * blockSize - 5, out.data(), out.size()));
    EXPECT_EQ(out.front(), char(130));
    EXPECT_EQ(out[5], char(131));
    EXPECT_EQ(out.back(), char(133));
    ASSERT_FALSE(reader.read(69 * blockSize, out.data(), blockSize));
    EXPECT_EQ(out.front(), char(169));
}

TEST(DriveReader, read_asksTheDriveOnce_forWhatLiesTogether)
{
    Disc disc;
    const DriveReader reader(disc.reader(), 0, 64);
    char byte = 0;
    for (std::uint64_t offset = 0; offset < 64 * blockSize; offset += 512)
        ASSERT_FALSE(reader.read(offset, &byte, 1));
    EXPECT_EQ(disc.asked, (std::vector<std::uint64_t>{0, 32}));
}

TEST(DriveReader, read_fails_whereTheDriveDoes_andTriesAgain)
{
    Disc disc;
    disc.broken = 40;
    const DriveReader reader(disc.reader(), 0, 64);
    char byte = 0;
    EXPECT_FALSE(reader.read(0, &byte, 1));
    EXPECT_TRUE(reader.read(33 * blockSize, &byte, 1));
    disc.broken = 1'000;
    EXPECT_FALSE(reader.read(33 * blockSize, &byte, 1));
}

} // namespace

} // namespace Tessaron
