#include "platform/coreservices/AliasRecord.h"

#include <gtest/gtest.h>
#include <random>

namespace Tessaron
{

namespace
{

AliasRecord sample()
{
    AliasRecord record;
    record.isFolder = true;
    record.volumeIdentifier = 0x0123456789ABCDEFu;
    record.inode = 77;
    record.birthTime = {-5, 999999999};
    record.volumeType = "ext4";
    record.pathInVolume = "/home/caf\xE9";
    record.path = "/mnt/home/caf\xE9";
    record.handle = QByteArray("\0\0\0\1abcdefgh", 12);
    return record;
}

} // namespace

TEST(AliasRecord, data_givesTheRecordBack)
{
    const std::optional<AliasRecord> record = aliasRecordFromData(aliasDataFromRecord(sample()));
    ASSERT_TRUE(record);
    EXPECT_EQ(*record, sample());
}

TEST(AliasRecord, data_isLaidOutAsDescribed)
{
    const QByteArray data = aliasDataFromRecord(sample());
    EXPECT_EQ(data.first(4), "TsAl");
    EXPECT_EQ(data.mid(4, 4), QByteArray("\0\1\0\1", 4));
    EXPECT_EQ(data.mid(8, 4).toHex().toInt(nullptr, 16), data.size());
    EXPECT_EQ(data.mid(20, 16), QByteArray::fromHex("0123456789abcdef000000000000004d"));
}

TEST(AliasRecord, data_isRefused_whenItIsCutAnywhere)
{
    const QByteArray data = aliasDataFromRecord(sample());
    for (qsizetype length = 0; length < data.size(); ++length) {
        EXPECT_FALSE(aliasRecordFromData(data.first(length)));
        EXPECT_FALSE(aliasRecordFromData(data.first(length), AliasChecksum::Ignored));
    }
    EXPECT_FALSE(aliasRecordFromData(data + 'x'));
}

TEST(AliasRecord, data_isRefused_whenAnyByteIsChanged)
{
    const QByteArray data = aliasDataFromRecord(sample());
    for (qsizetype at = 0; at < data.size(); ++at) {
        QByteArray damaged = data;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x20);
        // Only the flags, in front of what is summed up, may change unnoticed.
        if (at == 6 || at == 7)
            continue;
        EXPECT_FALSE(aliasRecordFromData(damaged)) << at;
    }
}

TEST(AliasRecord, hostileBytes_areNeverMoreThanRefused)
{
    std::mt19937 random(20240229);
    const QByteArray data = aliasDataFromRecord(sample());
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray mutated = data;
        const int changes = 1 + static_cast<int>(random() % 8);
        for (int change = 0; change < changes; ++change)
            mutated[static_cast<qsizetype>(random() % static_cast<unsigned>(mutated.size()))] =
                static_cast<char>(random());
        if (random() % 4 == 0)
            mutated.truncate(static_cast<qsizetype>(random() % static_cast<unsigned>(mutated.size() + 1)));
        const std::optional<AliasRecord> record = aliasRecordFromData(mutated, AliasChecksum::Ignored);
        if (record) {
            ++accepted;
            EXPECT_TRUE(record->path.startsWith('/') && record->pathInVolume.startsWith('/'));
            EXPECT_LE(record->path.size() + record->handle.size(), mutated.size());
        }
    }
    EXPECT_GT(accepted, 0);
}

TEST(AliasRecord, aPathThatNoSystemCallTakes_isRefused)
{
    AliasRecord record = sample();
    record.path = "relative";
    EXPECT_FALSE(aliasRecordFromData(aliasDataFromRecord(record)));
    record.path = QByteArray("/a\0b", 4);
    EXPECT_FALSE(aliasRecordFromData(aliasDataFromRecord(record)));
}

} // namespace Tessaron
