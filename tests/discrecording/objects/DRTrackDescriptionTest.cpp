#include "platform/discrecording/objects/DRTrackDescription.h"

#include "platform/discrecording/objects/DRFolder.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

struct Pairing {
    quint32 blockSize;
    int trackMode;
    int dataForm;
    int blockType;
    int sessionFormat;
    TrackKind kind;
};

QVariantMap propertiesOf(const Pairing &pairing)
{
    return {{DRBlockSizeKey, pairing.blockSize}, {DRTrackLengthKey, quint64(300)},
            {DRTrackModeKey, pairing.trackMode}, {DRDataFormKey, pairing.dataForm},
            {DRBlockTypeKey, pairing.blockType}, {DRSessionFormatKey, pairing.sessionFormat}};
}

QVariantMap with(QVariantMap properties, const QString &key, const QVariant &value)
{
    properties.insert(key, value);
    return properties;
}

class SilentProducer final : public DRTrackProducer
{
public:
    std::uint32_t produceDataForTrack(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                      std::uint32_t *) override
    {
        return 0;
    }
};

QVariantMap plain()
{
    return {{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, quint64(10)}};
}

} // namespace

TEST(DRTrackDescription, everyPairingOfNumbers_comesBackAsItWas)
{
    const Pairing pairings[] = {
        {2048, 4, 16, 8, 0, TrackKind::Mode1},          {2352, 4, 17, 8, 0, TrackKind::Mode1},
        {2336, 4, 48, 9, 32, TrackKind::Mode2Formless}, {2332, 4, 33, 12, 32, TrackKind::Mode2Mixed},
        {2352, 4, 33, 12, 32, TrackKind::Mode2Mixed},   {2048, 4, 32, 10, 32, TrackKind::Mode2Form1},
        {2324, 4, 32, 12, 32, TrackKind::Mode2Form2},   {2352, 0, 0, 0, 0, TrackKind::Audio},
        {2336, 4, 32, 13, 16, TrackKind::Mode2Mixed},   {2352, 4, 33, 12, 16, TrackKind::Mode2Mixed},
        {2048, 5, 16, 8, 0, TrackKind::Mode1}, // for a DVD
        {2352, 4, 32, 10, 32, TrackKind::Mode2Form1}, // a size that its numbers contradict
        {700, 99, -1, 77, 12, TrackKind::Unstated},
    };
    for (const Pairing &pairing : pairings) {
        const Result<DiscTrack> track = discTrackOfProperties(propertiesOf(pairing));
        ASSERT_TRUE(track);
        EXPECT_EQ(track->kind, pairing.kind) << pairing.blockSize << ", " << pairing.blockType;
        EXPECT_EQ(propertiesOfDiscTrack(*track), propertiesOf(pairing));
    }
}

TEST(DRTrackDescription, allOtherProperties_comeBackAsTheyWere)
{
    QVariantMap properties{{DRBlockSizeKey, 2352u},
                           {DRTrackLengthKey, quint64(12)},
                           {DRPreGapLengthKey, 150u},
                           {DRPostGapLengthKey, 2u},
                           {DRIndexPointsKey, QVariantList{3u, 7u}},
                           {DRSerialCopyManagementStateKey, DRSCMSCopyrightProtectedOriginal},
                           {DRAudioPreEmphasisKey, true},
                           {DRAudioFourChannelKey, true},
                           {QStringLiteral("a program's own"), 5}};
    const Result<DiscTrack> track = discTrackOfProperties(properties);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->pregap, (TrackGap{150, false}));
    EXPECT_EQ(track->postgap, (TrackGap{2, true}));
    EXPECT_EQ(track->indexPoints, (std::vector<std::uint64_t>{3, 7}));
    EXPECT_EQ(track->copyState, CopyState::ProtectedOriginal);
    EXPECT_EQ(track->kind, TrackKind::Unstated);
    EXPECT_EQ(propertiesOfDiscTrack(*track, properties), properties);
    // A track without them takes them away.
    EXPECT_EQ(propertiesOfDiscTrack(*discTrackOfProperties(plain()), properties),
              with(plain(), QStringLiteral("a program's own"), 5));
}

TEST(DRTrackDescription, propertiesOfDiscTrack_statesTheUsualNumbers_whenNoneAreStated)
{
    DiscTrack track;
    track.length = 5;
    const QVariantMap properties = propertiesOfDiscTrack(track);
    EXPECT_EQ(properties.value(DRTrackModeKey), QVariant(4));
    EXPECT_EQ(properties.value(DRDataFormKey), QVariant(16));
    EXPECT_EQ(properties.value(DRBlockTypeKey), QVariant(8));
    EXPECT_EQ(properties.value(DRSessionFormatKey), QVariant(0));
}

TEST(DRTrackDescription, statedBlocks_areAsStated_soundOrNot)
{
    const StatedBlocks nothing = statedBlocks({});
    EXPECT_TRUE(!nothing.size && !nothing.type && !nothing.length);
    EXPECT_EQ(nothing.bytes(), 0u);
    const StatedBlocks odd = statedBlocks({{DRBlockSizeKey, 70000u}, {DRBlockTypeKey, 99}, {DRTrackLengthKey, 3}});
    EXPECT_EQ(odd.size, 70000u);
    EXPECT_EQ(odd.type, 99);
    EXPECT_EQ(odd.length, 3u);
    EXPECT_EQ(odd.bytes(), 210000u);
    EXPECT_FALSE(statedBlocks({{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, quint64(1) << 53}}).bytes());
    EXPECT_EQ(statedBlocks({{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, (quint64(1) << 53) - 1}}).bytes(),
              0xFFFFFFFFFFFFF800u);
}

TEST(DRTrackDescription, propertiesOfStatedTrack_sayWhatIsStated_andKeepTheOthers)
{
    const QVariantMap others = {{DRBlockSizeKey, 2352u}, {DRTrackLengthKey, quint64(5)}, {DRBlockTypeKey, 0}};
    EXPECT_EQ(propertiesOfStatedTrack({}, others), others);
    StatedTrack stated;
    stated.blockSize = 2048;
    stated.length = 0;
    stated.pregap = 0;
    stated.indexPoints = {7, 9};
    stated.recording.dataForm = 16;
    stated.copyState = CopyState::CopyrightFree;
    stated.hasPreEmphasis = true;
    stated.hasFourChannels = true;
    const QVariantMap expected = {{DRBlockSizeKey, 2048u},
                                  {DRTrackLengthKey, quint64(0)},
                                  {DRBlockTypeKey, 0},
                                  {DRPreGapLengthKey, 0u},
                                  {DRIndexPointsKey, QVariantList{7u, 9u}},
                                  {DRDataFormKey, 16},
                                  {DRSerialCopyManagementStateKey, DRSCMSCopyrightFree},
                                  {DRAudioPreEmphasisKey, true},
                                  {DRAudioFourChannelKey, true}};
    EXPECT_EQ(propertiesOfStatedTrack(stated, others), expected);
    stated.pregap = quint64(1) << 40;
    EXPECT_EQ(propertiesOfStatedTrack(stated).value(DRPreGapLengthKey).toULongLong(), quint64(1) << 40);
}

TEST(DRTrackDescription, discTrackOfProperties_fails_whenANumberMakesNoSense)
{
    const auto failure = [](const QVariantMap &properties) {
        const Result<DiscTrack> track = discTrackOfProperties(properties);
        return track ? QString() : track.error().localizedDescription();
    };
    EXPECT_EQ(failure({}), QStringLiteral("A track says no valid block size (DRBlockSizeKey)."));
    EXPECT_FALSE(failure(with(plain(), DRBlockSizeKey, 0)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRBlockSizeKey, 65537)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRBlockSizeKey, quint64(1) << 32 | 2048)).isEmpty());
    EXPECT_EQ(failure({{DRBlockSizeKey, 2048u}}), QStringLiteral("A track says no valid length (DRTrackLengthKey)."));
    EXPECT_FALSE(failure(with(plain(), DRTrackLengthKey, -1)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRTrackLengthKey, QStringLiteral("long"))).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRPreGapLengthKey, -150)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRPreGapLengthKey, quint64(1) << 32)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRPostGapLengthKey, 11)).isEmpty());
    EXPECT_FALSE(failure(with(plain(), DRIndexPointsKey, QVariantList{QStringLiteral("x")})).isEmpty());
    EXPECT_TRUE(failure(plain()).isEmpty());
}

TEST(DRTrackDescription, tableOfContentsOfLayout_keepsSessions)
{
    const auto folder = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    const auto other = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("more")));
    other->setProperties(with(other->properties(), DRTrackLengthKey, 20));
    const Result<TableOfContents> contents =
        tableOfContentsOfLayout(std::vector<DRTrackArray>{{folder, other}, {other}});
    ASSERT_TRUE(contents);
    ASSERT_EQ(contents->sessions.size(), 2u);
    EXPECT_EQ(contents->sessions[0].tracks.size(), 2u);
    EXPECT_EQ(contents->sessions[0].tracks[0].length, 0u);
    EXPECT_EQ(contents->sessions[1].tracks[0].number, 3u);
    EXPECT_EQ(contents->sessions[1].firstBlock, BlockAddress(20));
    EXPECT_EQ(tableOfContentsOfLayout(folder)->trackCount(), 1u);
    EXPECT_EQ(tableOfContentsOfLayout(DRTrackArray{other, other})->trackCount(), 2u);
}

TEST(DRTrackDescription, tableOfContentsOfLayout_fails_whenATrackIsMissing)
{
    const auto folder = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    EXPECT_FALSE(tableOfContentsOfLayout({}));
    EXPECT_FALSE(tableOfContentsOfLayout(std::shared_ptr<DRTrack>()));
    EXPECT_FALSE(tableOfContentsOfLayout(DRTrackArray{}));
    EXPECT_FALSE(tableOfContentsOfLayout(DRTrackArray{folder, nullptr}));
}

TEST(DRTrackDescription, tableOfContentsOfLayout_leavesAnEmptySessionOut)
{
    const auto folder = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    const Result<TableOfContents> contents = tableOfContentsOfLayout(std::vector<DRTrackArray>{{}, {folder}, {}});
    ASSERT_TRUE(contents);
    EXPECT_EQ(contents->sessions.size(), 1u);
    EXPECT_EQ(contents->trackCount(), 1u);
    EXPECT_FALSE(tableOfContentsOfLayout(std::vector<DRTrackArray>{{}, {}}));
}

TEST(DRTrackDescription, putPlannedLengths_completesTheTracksOfFolders)
{
    const auto folder = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    const auto producer = DRTrack::trackWithProducer(std::make_shared<SilentProducer>());
    producer->setProperties(plain());
    TableOfContents contents = TableOfContents::withTrack(DiscTrack());
    contents.sessions[0].tracks = {DiscTrack(), DiscTrack()};
    contents.sessions[0].tracks[0].length = 17;
    contents.sessions[0].tracks[1].length = 99;
    putPlannedLengths(contents, DRTrackArray{folder, producer});
    EXPECT_EQ(discTrackOfProperties(folder->properties())->length, 17u);
    EXPECT_EQ(producer->properties(), plain()) << "a producer's track says its length itself";
}
