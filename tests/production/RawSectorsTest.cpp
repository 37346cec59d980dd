#include "tests/production/RawSectors.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

bool isSound(TrackKind kind, const QByteArray &sector)
{
    switch (kind) {
    case TrackKind::Mode1:
        return isSoundMode1(sector);
    case TrackKind::Mode2Form1:
        return isSoundForm1(sector);
    default:
        return isSoundForm2(sector);
    }
}

} // namespace

TEST(RawSectors, checksumsAndParity_areThoseOfTheStandard)
{
    for (const TrackKind kind : {TrackKind::Mode1, TrackKind::Mode2Form1, TrackKind::Mode2Form2}) {
        const QByteArray sectors = rawSectorsAround(kind, userDataOf(kind, 5), BlockAddress(4499));
        ASSERT_EQ(sectors.size(), 5 * 2352);
        for (int number = 0; number < 5; ++number) {
            const QByteArray sector = sectors.mid(qsizetype(number) * 2352, 2352);
            EXPECT_TRUE(hasHeader(sector, BlockAddress(4499 + number), kind == TrackKind::Mode1 ? 1 : 2));
            EXPECT_TRUE(isSound(kind, sector)) << int(kind);
            for (const qsizetype place : {500, 2065, 2100, 2300}) {
                QByteArray damaged = sector;
                damaged[place] = char(damaged[place] ^ 4);
                EXPECT_FALSE(isSound(kind, damaged)) << "the check sees every byte; " << place;
            }
        }
    }
}

TEST(RawSectors, formlessSectors_haveTheirHeaderAlone)
{
    const QByteArray data = userDataOf(TrackKind::Mode2Formless, 1);
    const QByteArray sector = rawSectorsAround(TrackKind::Mode2Formless, data, BlockAddress(0));
    EXPECT_TRUE(hasHeader(sector, BlockAddress(0), 2));
    EXPECT_EQ(sector.mid(16), data);
}
