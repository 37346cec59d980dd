#include "platform/discrecording/drives/RecordingPlan.h"

#include "platform/discrecording/drives/DriveFaults.h"

#include <gtest/gtest.h>

namespace Tessaron
{

namespace
{

DiscDescription blankDisc(std::uint32_t profile, std::uint64_t blocks = 100'000)
{
    DiscDescription disc;
    disc.state = DiscState::Blank;
    disc.profile = profile;
    disc.profileName = QStringLiteral("disc");
    disc.family = discFamily(profile);
    disc.freeBlocks = blocks;
    disc.canAppendLater = true;
    disc.canSimulate = true;
    return disc;
}

DiscTrack dataTrack(std::uint64_t blocks, std::uint32_t blockSize = 2048)
{
    DiscTrack track;
    track.kind = TrackKind::Mode1;
    track.blockSize = blockSize;
    track.length = blocks;
    return track;
}

DiscTrack soundTrack(std::uint64_t blocks)
{
    DiscTrack track;
    track.kind = TrackKind::Audio;
    track.blockSize = 2352;
    track.length = blocks;
    return track;
}

TableOfContents contentsOf(std::vector<DiscTrack> tracks)
{
    TableOfContents contents;
    contents.sessions.emplace_back().tracks = std::move(tracks);
    contents.numberTracks();
    return contents;
}

QString faultOf(const Result<RecordingPlan> &plan)
{
    return plan ? QString() : plan.error().userInfo().value(DriveFaultKey).toString();
}

constexpr std::uint32_t cdr = 0x09;
constexpr std::uint32_t cdrw = 0x0A;
constexpr std::uint32_t dvdMinusR = 0x11;
constexpr std::uint32_t dvdPlusR = 0x1B;
constexpr std::uint32_t pressed = 0x10;

TEST(RecordingPlan, data_goesOntoEveryKindOfDisc)
{
    for (const std::uint32_t profile :
         {0x09, 0x0A, 0x11, 0x12, 0x13, 0x14, 0x15, 0x1A, 0x1B, 0x2B, 0x41, 0x43, 0xFFFF}) {
        const Result<RecordingPlan> plan = planRecording(contentsOf({dataTrack(1'000)}), blankDisc(profile), {});
        ASSERT_TRUE(plan) << profile;
        ASSERT_EQ(plan->sessions.size(), 1u);
        EXPECT_EQ(plan->sessions.front().mode, RecordingMode::AtOnce) << profile;
        EXPECT_EQ(plan->blocksOnDisc, 1'000u) << profile;
        EXPECT_TRUE(plan->lost.isEmpty());
    }
}

TEST(RecordingPlan, rawSectors_givenToTheDrive_areTheirUserData)
{
    const Result<RecordingPlan> plan = planRecording(contentsOf({dataTrack(400, 2352)}), blankDisc(cdr), {});
    ASSERT_TRUE(plan);
    const RecordedTrack &track = plan->sessions.front().tracks.front();
    EXPECT_EQ(track.blockSize, 2048u);
    EXPECT_EQ(track.keptFrom, 16u);
    EXPECT_EQ(track.blocks, 400u);
}

TEST(RecordingPlan, modeTwo_isRefused)
{
    DiscTrack track = dataTrack(400, 2352);
    track.kind = TrackKind::Mode2Form1;
    EXPECT_EQ(faultOf(planRecording(contentsOf({track}), blankDisc(cdr), {})), QStringLiteral("wrong-disc"));
}

TEST(RecordingPlan, size_isRefused_byTheFirstBlockTooMany)
{
    EXPECT_TRUE(planRecording(contentsOf({dataTrack(5'000)}), blankDisc(dvdPlusR, 5'000), {}));
    const Result<RecordingPlan> plan = planRecording(contentsOf({dataTrack(5'001)}), blankDisc(dvdPlusR, 5'000), {});
    EXPECT_EQ(faultOf(plan), QStringLiteral("full"));
    EXPECT_EQ(plan.error().code(), dskFulErr);
}

TEST(RecordingPlan, soundOnly_isWrittenAtOnce_withGapsTextsAndCodes)
{
    DiscTrack first = soundTrack(3'000);
    first.pregap = {150, false};
    DiscTrack second = soundTrack(4'000);
    second.pregap = {75, true};
    second.indexPoints = {1'000};
    second.isrc = "DEABC2400001";
    TableOfContents contents = contentsOf({first, second});
    contents.mediaCatalogNumber = "4012345678901";
    CDTextBlock texts;
    texts.texts[CDTextKind::Title] = {QStringLiteral("Album"), QStringLiteral("One"), QStringLiteral("Two")};
    contents.cdText.blocks.push_back(texts);
    const Result<RecordingPlan> plan = planRecording(contents, blankDisc(cdr), {});
    ASSERT_TRUE(plan);
    const RecordedSession &session = plan->sessions.front();
    EXPECT_EQ(session.mode, RecordingMode::AtOnce);
    EXPECT_EQ(session.mediaCatalogNumber, contents.mediaCatalogNumber);
    EXPECT_EQ(session.cdTextPacks.size() % 18, 0);
    EXPECT_FALSE(session.cdTextPacks.isEmpty());
    EXPECT_EQ(session.tracks[0].madePregap, 150u);
    EXPECT_TRUE(session.tracks[1].hasIndex0);
    EXPECT_EQ(session.tracks[1].indexPoints, (std::vector<std::uint64_t>{0, 75, 1'075}));
    EXPECT_EQ(session.tracks[1].blocks, 4'075u);
    EXPECT_EQ(plan->blocksOnDisc, 3'000u + 4'075u);
    EXPECT_TRUE(plan->lost.isEmpty());
}

TEST(RecordingPlan, mixedTracks_areWrittenOneByOne_andWhatIsLostIsSaid)
{
    DiscTrack sound = soundTrack(4'000);
    sound.isrc = "DEABC2400001";
    sound.indexPoints = {1'000};
    const Result<RecordingPlan> plan = planRecording(contentsOf({dataTrack(1'000), sound}), blankDisc(cdr), {});
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->sessions.front().mode, RecordingMode::TrackByTrack);
    EXPECT_TRUE(plan->sessions.front().tracks[1].indexPoints.empty());
    EXPECT_EQ(plan->blocksOnDisc, 1'000u + 152 + 4'000 + 152);
    EXPECT_EQ(plan->lost,
              QStringList({QStringLiteral("the ISRC of track 2 is left out"),
                           QStringLiteral("the index points of track 2 are left out"),
                           QStringLiteral("track 2 begins behind a gap of two seconds")}));
}

TEST(RecordingPlan, sessionsOfOneImage_followEachOther_withTheRoomBetweenThem)
{
    TableOfContents contents;
    contents.sessions.emplace_back().tracks = {soundTrack(3'000)};
    contents.sessions.emplace_back().tracks = {dataTrack(1'000)};
    contents.numberTracks();
    const Result<RecordingPlan> plan = planRecording(contents, blankDisc(cdr), {});
    ASSERT_TRUE(plan);
    ASSERT_EQ(plan->sessions.size(), 2u);
    EXPECT_TRUE(plan->sessions[0].leavesOpen);
    EXPECT_EQ(plan->sessions[0].mode, RecordingMode::AtOnce);
    EXPECT_FALSE(plan->sessions[1].leavesOpen);
    EXPECT_EQ(plan->sessions[1].mode, RecordingMode::TrackByTrack);
    EXPECT_EQ(plan->blocksOnDisc, 3'000u + 11'400 + 1'000 + 152);
    EXPECT_EQ(plan->lost.size(), 1) << "where the data of the second session begin";
}

TEST(RecordingPlan, sound_isRefused_onAnythingButACD)
{
    for (const std::uint32_t profile : {dvdMinusR, dvdPlusR, std::uint32_t(0xFFFF)})
        EXPECT_EQ(faultOf(planRecording(contentsOf({soundTrack(3'000)}), blankDisc(profile), {})),
                  QStringLiteral("wrong-disc"));
    EXPECT_EQ(faultOf(planRecording(contentsOf({dataTrack(300), dataTrack(300)}), blankDisc(dvdPlusR), {})),
              QStringLiteral("wrong-disc"));
}

TEST(RecordingPlan, stateOfTheDisc_isAnsweredWithWhatToDo)
{
    const TableOfContents contents = contentsOf({dataTrack(1'000)});
    DiscDescription disc = blankDisc(cdrw);
    disc.state = DiscState::NoDisc;
    EXPECT_EQ(faultOf(planRecording(contents, disc, {})), QStringLiteral("no-disc"));
    disc.state = DiscState::Closed;
    EXPECT_TRUE(
        planRecording(contents, disc, {}).error().localizedRecoverySuggestion().contains(QStringLiteral("blank")));
    disc = blankDisc(cdr);
    disc.state = DiscState::Closed;
    EXPECT_TRUE(
        planRecording(contents, disc, {}).error().localizedRecoverySuggestion().contains(QStringLiteral("empty disc")));
    EXPECT_EQ(faultOf(planRecording(contents, blankDisc(pressed), {})), QStringLiteral("wrong-disc"));
}

TEST(RecordingPlan, appendableDisc_getsSound_onlyWhenItIsToStayOpen)
{
    const TableOfContents sound = contentsOf({soundTrack(1'000)});
    const RecordingOptions open{.leavesOpen = true};
    DiscDescription disc = blankDisc(cdr);
    disc.state = DiscState::Appendable;
    EXPECT_FALSE(planRecording(sound, disc, {}));
    const Result<RecordingPlan> plan = planRecording(sound, disc, open);
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->sessions.front().mode, RecordingMode::TrackByTrack);
    disc.damage = 3;
    EXPECT_FALSE(planRecording(sound, disc, open));
}

TEST(RecordingPlan, appendableDisc_getsData_onlyThatWereMadeForTheirPlace)
{
    const RecordingOptions open{.leavesOpen = true};
    DiscDescription disc = blankDisc(dvdPlusR);
    disc.state = DiscState::Appendable;
    disc.nextBlock = 11'702;
    TableOfContents data = contentsOf({dataTrack(1'000)});
    EXPECT_EQ(faultOf(planRecording(data, disc, open)), QStringLiteral("wrong-disc"));
    data.sessions.front().firstBlock = BlockAddress(11'702);
    EXPECT_TRUE(planRecording(data, disc, open));
    EXPECT_FALSE(planRecording(data, disc, {}));
    disc.nextBlock.reset(); // the drive does not say where it would write
    EXPECT_FALSE(planRecording(data, disc, open));
}

TEST(RecordingPlan, whatIsTooLarge_isRefused_withHowMuchItIs_alsoWhenItIsAskedForByName)
{
    const DiscDescription disc = blankDisc(cdr, 1'000);
    for (const bool overburns : {false, true}) {
        const Result<RecordingPlan> plan =
            planRecording(contentsOf({dataTrack(1'500)}), disc, {.overburns = overburns});
        ASSERT_FALSE(plan);
        EXPECT_EQ(faultOf(plan), QStringLiteral("full"));
        EXPECT_TRUE(plan.error().localizedDescription().contains(QStringLiteral("500 blocks) too much")))
            << plan.error().localizedDescription().toStdString();
        EXPECT_EQ(plan.error().localizedRecoverySuggestion().contains(QStringLiteral("libburn")), overburns);
    }
}

TEST(RecordingPlan, whatIsOverwritten_grows_atTheGivenPlaceOnly)
{
    TableOfContents data = contentsOf({dataTrack(1'000)});
    const RecordingOptions fresh{.leavesOpen = true};
    const RecordingOptions grown{.leavesOpen = true, .growth = DriveGrowth{640, false}};
    for (const std::uint32_t profile : {0x1A, 0x12, 0x43, 0xFFFF}) {
        const DiscDescription disc = blankDisc(profile, 1'700);
        const Result<RecordingPlan> first = planRecording(data, disc, fresh);
        ASSERT_TRUE(first) << profile;
        EXPECT_FALSE(first->sessions.front().leavesOpen); // there are none
        EXPECT_FALSE(first->sessions.front().firstBlock);
        EXPECT_EQ(faultOf(planRecording(data, disc, grown)), QStringLiteral("wrong-disc")) << profile;
        data.sessions.front().firstBlock = BlockAddress(640);
        const Result<RecordingPlan> added = planRecording(data, disc, grown);
        ASSERT_TRUE(added) << profile;
        EXPECT_EQ(added->sessions.front().firstBlock, 640u);
        EXPECT_EQ(added->blocksOnDisc, 1'640u);
        EXPECT_EQ(faultOf(planRecording(data, blankDisc(profile, 1'639), grown)), QStringLiteral("full")) << profile;
        data.sessions.front().firstBlock = BlockAddress();
    }
}

TEST(RecordingPlan, openDisc_isRefused_whereThereIsOneSessionOnly)
{
    const TableOfContents data = contentsOf({dataTrack(1'000)});
    const RecordingOptions open{.leavesOpen = true};
    EXPECT_TRUE(planRecording(data, blankDisc(dvdPlusR), open));
    DiscDescription disc = blankDisc(0x15);
    disc.canAppendLater = false;
    EXPECT_FALSE(planRecording(data, disc, open));
}

TEST(RecordingPlan, simulation_isRefused_whereTheDiscHasNone)
{
    DiscDescription disc = blankDisc(dvdPlusR);
    disc.canSimulate = false;
    EXPECT_FALSE(planRecording(contentsOf({dataTrack(1'000)}), disc, {.isSimulated = true}));
}

} // namespace

} // namespace Tessaron
