#include "platform/discrecording/objects/DRFolder.h"
#include "tests/disctracks/vant/VANTSamples.h"
#include <TessaronClasses/VANTHeader.h>

#include <gtest/gtest.h>
#include <limits>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

QVariantMap changed(const std::shared_ptr<DRTrack> &track, const QString &key, const QVariant &value)
{
    QVariantMap properties = track->properties();
    properties.insert(key, value);
    return properties;
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

// The format is a promise to programs of other times: these bytes are written down, not computed.
TEST(VANTHeader, headerForDRLayout_givesTheDocumentedBytes_forOneDataTrack)
{
    const QByteArray expected = hex("53455353 00000008  00000001 00000001") // SESS: number 1, one track
        + hex("5452414B 00000038") // TRAK
        + hex("00000001 000000F0") // number, flags: the four numbers below are stated
        + hex("0000000000000000 0000000000000005") // start, length
        + hex("00000800 00000004 00000010 00000008 00000000") // block size, mode, form, block type, session format
        + hex("00000000 00000000 00000000") // pregap, postgap, index points
        + hex("0000000000000050 0000000000002800") // length of the records and of the data
        + hex("0001 0000 00000028 00000000"); // version 1.0, size of the tail, reserved
    const QByteArray header = VANTHeaderForDRLayout(dataTrack(5));
    ASSERT_EQ(header.size(), expected.size() + 12);
    EXPECT_EQ(header.first(expected.size()).toHex(), expected.toHex());
    EXPECT_EQ(header.last(8), QByteArray("VANT\r\n\x1A\n", 8));
}

TEST(VANTHeader, headerForDRLayout_isTheSame_eachTime)
{
    EXPECT_EQ(VANTHeaderForDRLayout(audioTrack(7)), VANTHeaderForDRLayout(audioTrack(7)));
}

TEST(VANTHeader, headerForDRLayout_isNull_whenThereIsNoTrack)
{
    EXPECT_TRUE(VANTHeaderForDRLayout(DRLayout()).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(std::shared_ptr<DRTrack>()).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(DRTrackArray()).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(DRTrackArray{nullptr}).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(std::vector<DRTrackArray>()).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(std::vector<DRTrackArray>{{}, {}}).isNull());
}

TEST(VANTHeader, headerForDRLayout_leavesAnEmptySessionOut)
{
    EXPECT_EQ(VANTHeaderForDRLayout(std::vector<DRTrackArray>{{dataTrack(1)}, {}}),
              VANTHeaderForDRLayout(std::vector<DRTrackArray>{{dataTrack(1)}}));
}

TEST(VANTHeader, headerForDRLayout_isNull_whenATrackLacksItsSize)
{
    EXPECT_TRUE(VANTHeaderForDRLayout(trackWith({})).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(trackWith({{DRBlockSizeKey, 2048u}})).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(trackWith({{DRTrackLengthKey, quint64(1)}})).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(trackWith(changed(dataTrack(1), DRBlockSizeKey, 0u))).isNull());
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("unplanned"));
    EXPECT_TRUE(VANTHeaderForDRLayout(DRTrack::trackForRootFolder(folder)).isNull());
}

TEST(VANTHeader, headerForDRLayout_isNull_whenSizesExceed64Bits)
{
    constexpr quint64 most = std::numeric_limits<quint64>::max();
    EXPECT_TRUE(VANTHeaderForDRLayout(dataTrack(most / 2048 + 1)).isNull());
    EXPECT_FALSE(VANTHeaderForDRLayout(dataTrack(most / 2048)).isNull());
    EXPECT_TRUE(VANTHeaderForDRLayout(DRTrackArray{dataTrack(most / 2048), dataTrack(1)}).isNull());
}

TEST(VANTHeader, headerForDRLayout_isNull_whenThePostgapIsLongerThanTheTrack)
{
    EXPECT_TRUE(VANTHeaderForDRLayout(trackWith(changed(dataTrack(3), DRPostGapLengthKey, 4u))).isNull());
}

TEST(VANTHeader, headerForDRLayout_isNull_whenTheTrailerWouldBeTooLong)
{
    const QByteArray block(qsizetype{16} * 1024 * 1024, 'x');
    EXPECT_TRUE(VANTHeaderForDRLayout(dataTrack(1), {block}).isNull());
    EXPECT_FALSE(VANTHeaderForDRLayout(dataTrack(1), {block.first(block.size() - 200)}).isNull());
}
