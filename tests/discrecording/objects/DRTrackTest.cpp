#include "platform/discrecording/objects/DRTrack.h"

#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/objects/DRMSF.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

class SilentProducer : public DRTrackProducer
{
public:
    std::uint32_t produceDataForTrack(DRTrack *, char *, std::uint32_t length, std::uint64_t, std::uint32_t,
                                      std::uint32_t *) override
    {
        return length;
    }
};

} // namespace

TEST(DRTrack, trackForRootFolder_describesADataTrack)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("disc"));
    const auto track = DRTrack::trackForRootFolder(root);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->rootFolder(), root);
    EXPECT_FALSE(track->producer());
    const QVariantMap properties = track->properties();
    EXPECT_EQ(properties.size(), 5);
    EXPECT_EQ(properties.value(DRBlockSizeKey).toUInt(), 2048u);
    EXPECT_EQ(properties.value(DRBlockTypeKey).toInt(), 8);
    EXPECT_EQ(properties.value(DRDataFormKey).toInt(), 16);
    EXPECT_EQ(properties.value(DRTrackModeKey).toInt(), 4);
    EXPECT_EQ(properties.value(DRSessionFormatKey), QVariant(0));
    EXPECT_FALSE(DRTrack::trackForRootFolder(nullptr));
}

TEST(DRTrack, trackWithProducer_keepsTheProducerAlive)
{
    auto producer = std::make_shared<SilentProducer>();
    const std::weak_ptr<SilentProducer> watched = producer;
    const auto track = DRTrack::trackWithProducer(producer);
    producer.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_FALSE(track->rootFolder());
    EXPECT_TRUE(track->properties().isEmpty());
    track->setProperties({{DRTrackLengthKey, 300}});
    EXPECT_EQ(track->properties().value(DRTrackLengthKey).toInt(), 300);
    EXPECT_FALSE(DRTrack::trackWithProducer(nullptr));
}

TEST(DRTrackProducer, defaults_giveASilentPregap)
{
    SilentProducer producer;
    std::array<char, 64> buffer;
    buffer.fill('x');
    EXPECT_TRUE(producer.prepareTrack(nullptr, nullptr, {}));
    EXPECT_EQ(producer.producePreGapForTrack(nullptr, buffer.data(), 60, 0, 2352, nullptr), 60u);
    EXPECT_TRUE(std::all_of(buffer.begin(), buffer.begin() + 60, [](char byte) { return byte == 0; }));
    EXPECT_EQ(buffer[60], 'x');
    producer.cleanupTrackAfterBurn(nullptr);
}

TEST(DRLayout, tracksOfLayout_listsAllSessions)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("disc"));
    const auto one = DRTrack::trackForRootFolder(root);
    const auto two = DRTrack::trackForRootFolder(root);
    EXPECT_TRUE(isNullLayout({}));
    EXPECT_TRUE(isNullLayout(std::shared_ptr<DRTrack>()));
    EXPECT_FALSE(isNullLayout(one));
    EXPECT_FALSE(isNullLayout(DRTrackArray()));
    EXPECT_TRUE(tracksOfLayout({}).empty());
    EXPECT_EQ(tracksOfLayout(one), (DRTrackArray{one}));
    EXPECT_EQ(tracksOfLayout(DRTrackArray{one, nullptr}), (DRTrackArray{one, nullptr}));
    EXPECT_EQ(tracksOfLayout(std::vector<DRTrackArray>{{one}, {}, {two, one}}), (DRTrackArray{one, two, one}));
}

TEST(DRMSF, description_showsMinutesSecondsAndFrames)
{
    const DRMSF position = DRMSF::msfWithFrames(4653);
    EXPECT_EQ(position.minutes(), 1u);
    EXPECT_EQ(position.seconds(), 2u);
    EXPECT_EQ(position.frames(), 3u);
    EXPECT_EQ(position.description(), QStringLiteral("01:02:03"));
    EXPECT_EQ(DRMSF::msfWithFrames(0).description(), QStringLiteral("00:00:00"));
    EXPECT_EQ(DRMSF::msfWithFrames(75u * 60 * 123 + 74).description(), QStringLiteral("123:00:74"));
    EXPECT_LT(DRMSF::msfWithFrames(74), DRMSF::msfWithFrames(75));
}
