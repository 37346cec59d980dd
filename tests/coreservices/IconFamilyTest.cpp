#include "platform/coreservices/IconFamily.h"

#include "platform/coreservices/GenericIcons.h"
#include "platform/coreservices/IconFamilyFormat.h"

#include <gtest/gtest.h>
#include <random>

namespace Tessaron
{

namespace
{

std::vector<QImage> drawings()
{
    std::vector<QImage> images;
    for (const int side : {16, 32, 48, 128, 256})
        images.push_back(drawnIcon(false, side));
    return images;
}

QByteArray encoded(const QByteArray &channel)
{
    QByteArray data;
    appendRunLengthCoded(data, channel);
    return data;
}

} // namespace

TEST(IconFamily, runLengthCoding_writesRunsAndLiterals)
{
    EXPECT_EQ(encoded("aaaa"),
              QByteArray("\x81"
                         "a"));
    EXPECT_EQ(encoded("ab"),
              QByteArray("\x01"
                         "ab"));
    EXPECT_EQ(encoded("aabbbb"),
              QByteArray("\x01"
                         "aa"
                         "\x81"
                         "b"));
    EXPECT_EQ(encoded(QByteArray(131, 'a')),
              QByteArray("\xFF"
                         "a"
                         "\0a",
                         4));
}

TEST(IconFamily, runLengthCoding_givesEveryChannelBack)
{
    std::mt19937 random(1);
    for (int round = 0; round < 500; ++round) {
        QByteArray channel;
        while (channel.size() < 1024)
            channel.append(1 + qsizetype(random() % (round % 2 ? 200 : 3)), static_cast<char>(random() % 4));
        channel.truncate(1024);
        const QByteArray data = encoded(channel);
        QByteArrayView rest(data);
        QByteArray decoded;
        ASSERT_TRUE(takeRunLengthCoded(rest, 1024, decoded));
        EXPECT_EQ(decoded, channel);
        EXPECT_TRUE(rest.isEmpty());
    }
}

TEST(IconFamily, runLengthCoding_refusesRunsBeyondTheChannel)
{
    QByteArray decoded;
    QByteArrayView tooLong("\x82"
                           "a",
                           2);
    EXPECT_FALSE(takeRunLengthCoded(tooLong, 4, decoded));
    QByteArrayView cut("\x03"
                       "ab",
                       3);
    EXPECT_FALSE(takeRunLengthCoded(cut, 4, decoded));
    QByteArrayView none;
    EXPECT_FALSE(takeRunLengthCoded(none, 4, decoded));
}

TEST(IconFamily, family_holdsWhatTheSelectorsName)
{
    const QByteArray small = iconFamilyFromImages(drawings(), kSelectorSmall32Bit | kSelectorSmall8BitMask);
    EXPECT_EQ(small.first(4), "icns");
    EXPECT_EQ(small.mid(4, 4).toHex().toInt(nullptr, 16), small.size());
    EXPECT_EQ(small.mid(8, 4), "is32");
    EXPECT_TRUE(small.contains("s8mk"));
    EXPECT_FALSE(small.contains("il32"));
    const QByteArray large = iconFamilyFromImages(drawings(), kSelectorAllLargeData);
    EXPECT_EQ(large.mid(8, 4), "il32");
    const QByteArray all = iconFamilyFromImages(drawings(), kSelectorAllAvailableData);
    for (const char *const type : {"is32", "s8mk", "il32", "l8mk", "ih32", "h8mk", "it32", "t8mk", "ic07", "ic08"})
        EXPECT_TRUE(all.contains(type)) << type;
    EXPECT_TRUE(iconFamilyFromImages({}, kSelectorAllAvailableData).isEmpty());
    EXPECT_TRUE(iconFamilyFromImages(drawings(), 0).isEmpty());
}

TEST(IconFamily, pictures_comeBackAsTheyWere)
{
    for (const QImage &drawing : drawings()) {
        const QByteArray family = iconFamilyFromImages({drawing}, kSelectorAllAvailableData);
        const std::vector<QImage> images = imagesFromIconFamily(family);
        ASSERT_FALSE(images.empty());
        for (const QImage &image : images)
            EXPECT_EQ(image.convertToFormat(QImage::Format_ARGB32), drawing) << drawing.width();
    }
}

TEST(IconFamily, imageFromIconFamily_choosesTheBestSize)
{
    const QByteArray family = iconFamilyFromImages(drawings(), kSelectorAllAvailableData);
    EXPECT_EQ(imageFromIconFamily(family, 16).width(), 16);
    EXPECT_EQ(imageFromIconFamily(family, 20).width(), 32);
    EXPECT_EQ(imageFromIconFamily(family, 0).width(), 256);
    EXPECT_EQ(imageFromIconFamily(family, 1000).width(), 256);
}

TEST(IconFamily, hostileBytes_giveNoPictureButNoHarm)
{
    const QByteArray family = iconFamilyFromImages(
        drawings(), kSelectorSmall32Bit | kSelectorSmall8BitMask | kSelectorAllLargeData | kSelectorThumbnail);
    std::mt19937 random(5);
    for (int round = 0; round < 3000; ++round) {
        QByteArray mutated = family.first(qsizetype(random() % static_cast<unsigned>(family.size() + 1)));
        for (int change = 0; change < 5 && !mutated.isEmpty(); ++change)
            mutated[static_cast<qsizetype>(random() % static_cast<unsigned>(mutated.size()))] =
                static_cast<char>(random());
        for (const QImage &image : imagesFromIconFamily(mutated))
            EXPECT_LE(image.width(), 1024);
    }
    EXPECT_TRUE(imageFromIconFamily("icns", 16).isNull());
    EXPECT_TRUE(imageFromIconFamily(QByteArrayView(), 16).isNull());
}

} // namespace Tessaron
