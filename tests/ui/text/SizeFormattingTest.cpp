#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/SizeFormatting.h>

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

class SizeFormatting : public testing::Test
{
protected:
    void SetUp() override { NSBundle::frameworkBundle()->setPreferredLanguages({QStringLiteral("en")}); }
};

std::string sizeText(std::uint64_t bytes)
{
    return sizeFormatForNumber(bytes).toStdString();
}

std::string shortText(unsigned long long bytes)
{
    return sizeFormatForUnsignedLongLong(&bytes).toStdString();
}

std::string komogoText(std::uint64_t bytes)
{
    return komogo(bytes).toStdString();
}

} // namespace

TEST_F(SizeFormatting, sizeFormatForNumber_changesUnitsAtDecimalThresholds)
{
    EXPECT_TRUE(sizeFormatForNumber(std::nullopt).isNull());
    EXPECT_EQ(sizeText(0), "0.00 Bytes");
    EXPECT_EQ(sizeText(999), "999.00 Bytes");
    EXPECT_EQ(sizeText(1000), "0.98 kB");
    EXPECT_EQ(sizeText(999'999), "976.56 kB");
    EXPECT_EQ(sizeText(1'000'000), "0.95 MB");
    EXPECT_EQ(sizeText(999'999'999), "953.67 MB");
    EXPECT_EQ(sizeText(1'000'000'000), "0.93 GB");
    EXPECT_EQ(sizeText(4'294'967'295), "4.00 GB");
    EXPECT_EQ(sizeText(4'294'967'296), "4.00 GB");
    EXPECT_EQ(sizeText(5'000'000'000), "4.66 GB");
    EXPECT_EQ(sizeText(~std::uint64_t(0)), "17179869184.00 GB");
}

TEST_F(SizeFormatting, sizeFormatForUnsignedLongLong_hasOneDecimal)
{
    EXPECT_TRUE(sizeFormatForUnsignedLongLong(nullptr).isNull());
    EXPECT_EQ(shortText(1024), "1.0 kB");
    EXPECT_EQ(shortText(999), "999.0 Bytes");
    EXPECT_EQ(shortText(5'000'000'000), "4.7 GB");
}

TEST_F(SizeFormatting, komogo_dropsTheLastDigits)
{
    EXPECT_EQ(komogoText(0), "0 Bytes");
    EXPECT_EQ(komogoText(999), "999 Bytes");
    EXPECT_EQ(komogoText(1000), "1.0 kB");
    EXPECT_EQ(komogoText(1500), "1.5 kB");
    EXPECT_EQ(komogoText(1599), "1.5 kB");
    EXPECT_EQ(komogoText(1'023'900), "999.9 kB");
    EXPECT_EQ(komogoText(1'024'000), "1.0 MB");
    EXPECT_EQ(komogoText(5'000'000'000), "4.7 GB");
}

TEST_F(SizeFormatting, time_padsMinutesAndSeconds)
{
    EXPECT_EQ(Tessaron::time(0), QStringLiteral("0:00:00"));
    EXPECT_EQ(Tessaron::time(59), QStringLiteral("0:00:59"));
    EXPECT_EQ(Tessaron::time(3725), QStringLiteral("1:02:05"));
    EXPECT_EQ(Tessaron::time(360'000), QStringLiteral("100:00:00"));
    EXPECT_EQ(Tessaron::time(-3725), QStringLiteral("-1:-2:-5")) << "truncated toward zero, piece by piece";
}

TEST_F(SizeFormatting, units_areTranslated)
{
    NSBundle::frameworkBundle()->setPreferredLanguages({QStringLiteral("de")});
    EXPECT_EQ(sizeText(12), "12.00 Byte");
    EXPECT_EQ(komogoText(12), "12 Byte");
}

TEST_F(SizeFormatting, numbers_roundATieToTheEvenDigit)
{
    EXPECT_EQ(sizeText(1152), "1.12 kB");
    EXPECT_EQ(sizeText(1408), "1.38 kB");
    EXPECT_EQ(shortText(1280), "1.2 kB");
    EXPECT_EQ(shortText(1792), "1.8 kB");
    EXPECT_EQ(komogoText(6400), "6.2 kB");
    EXPECT_EQ(komogoText(32000), "31.2 kB");
}

TEST_F(SizeFormatting, sizeFormatForNumber_countsInSinglePrecision)
{
    // In double precision it would be 1048576.04.
    EXPECT_EQ(sizeText((std::uint64_t(1) << 50) + (std::uint64_t(40) << 20)), "1048576.00 GB");
}

TEST_F(SizeFormatting, komogo_changesToGigabytesAtThousandMegabytes)
{
    EXPECT_EQ(komogoText(1'048'575'999), "1000.0 MB");
    EXPECT_EQ(komogoText(1'048'576'000), "1.0 GB");
}
