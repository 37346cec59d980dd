#include "platform/quicktime/SoundRecords.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

AudioDamageReport damageOfTwoPlaces()
{
    AudioDamageReport damage;
    damage.add(1.5, QStringLiteral("a packet could not be decoded"));
    damage.add(70, QStringLiteral("Übergang fehlt"));
    return damage;
}

TEST(SoundRecords, damage_isReadAsItWasWritten)
{
    AudioDamageReport written = damageOfTwoPlaces();
    written.count = 5000;
    AudioDamageReport read;
    ASSERT_TRUE(SoundProtocol::readDamage(SoundProtocol::recordOfDamage(written), &read));
    EXPECT_EQ(read.count, 5000U);
    ASSERT_EQ(read.places.size(), 2U);
    EXPECT_EQ(read.places[0].seconds, 1.5);
    EXPECT_EQ(read.places[1].what, QStringLiteral("Übergang fehlt"));
}

TEST(SoundRecords, damage_isRefused_whenItTellsOfMorePlacesThanItHolds)
{
    const QByteArray record = SoundProtocol::recordOfDamage(damageOfTwoPlaces());
    for (const quint32 count : {3U, 100U, 101U, 0x80000000U, 0xFFFFFFFFU}) {
        QByteArray broken = record;
        qToBigEndian(count, broken.data() + sizeof(quint64));
        AudioDamageReport read;
        EXPECT_FALSE(SoundProtocol::readDamage(broken, &read)) << count;
        EXPECT_TRUE(read.isEmpty()) << count;
    }
}

TEST(SoundRecords, damage_isRefused_whenItIsCutShort)
{
    const QByteArray record = SoundProtocol::recordOfDamage(damageOfTwoPlaces());
    for (qsizetype size = 0; size < record.size(); ++size) {
        AudioDamageReport read;
        EXPECT_FALSE(SoundProtocol::readDamage(record.left(size), &read)) << size;
    }
}

} // namespace

} // namespace Tessaron
