#include "platform/discrecording/objects/DRFolder.h"
#include <TessaronClasses/DRLayoutCanBeExported.h>

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

std::shared_ptr<DRTrack> trackWith(const QVariantMap &properties)
{
    auto track = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    track->setProperties(properties);
    return track;
}

std::shared_ptr<DRTrack> trackOf(quint32 blockSize, int blockType)
{
    return trackWith({{DRBlockSizeKey, blockSize}, {DRBlockTypeKey, blockType}});
}

struct Row {
    DRLayout layout;
    bool iso;
    bool bin;
    bool vant;
};

} // namespace

TEST(DRLayoutCanBeExported, dependsOnBlocksAndFormat)
{
    const auto data = trackOf(2048, 8);
    const auto audio = trackOf(2352, 0);
    const Row rows[] = {
        {{}, false, false, false},
        {std::shared_ptr<DRTrack>(), false, false, false},
        {data, true, true, true},
        {audio, false, true, true},
        {trackOf(2336, 9), false, false, true},
        {trackOf(2336, 8), false, false, true},
        {trackOf(2336, 10), false, true, true},
        {trackOf(2448, 0), false, false, true},
        {DRTrackArray{data, data}, true, true, true},
        {DRTrackArray{data, audio}, false, false, true},
        {DRTrackArray{}, false, false, true},
        {DRTrackArray{data, nullptr}, false, false, true},
        {DRTrackArray{trackOf(2336, 10), trackOf(2336, 9)}, false, false, true},
        {std::vector<DRTrackArray>{{data}, {data, data}}, true, true, true},
        {std::vector<DRTrackArray>{{data}, {audio}}, false, false, true},
        {std::vector<DRTrackArray>{{audio, audio}, {}}, false, true, true},
        {trackWith({}), false, false, true},
        {trackWith({{DRBlockSizeKey, 2048}}), false, false, true},
        {trackWith({{DRBlockTypeKey, 8}}), false, false, true},
    };
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        EXPECT_EQ(DRLayoutCanBeExported(rows[index].layout, TessaronDiscImageFormatISO), rows[index].iso) << index;
        EXPECT_EQ(DRLayoutCanBeExported(rows[index].layout, TessaronDiscImageFormatBIN), rows[index].bin) << index;
        EXPECT_EQ(DRLayoutCanBeExported(rows[index].layout, TessaronDiscImageFormatVANT), rows[index].vant) << index;
        for (const TessaronDiscImageFormat other : {0, 1, 4, 8, 16, 64, 128, 512, 34})
            EXPECT_FALSE(DRLayoutCanBeExported(rows[index].layout, other)) << index << ' ' << other;
    }
}
