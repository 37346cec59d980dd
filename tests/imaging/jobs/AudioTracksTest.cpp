#include "tests/imaging/jobs/JobRun.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/AudioTracks.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t bytesPerFrame = 2352;
constexpr std::size_t samplesPerFrame = 588;

/// Three tracks in one file, of 20 seconds, and a fourth in a file of its own.
class AudioTracksTest : public testing::Test
{
protected:
    AudioTracksTest()
    {
        tree.makeFile("long.wav", waveFile(noise(1500 * samplesPerFrame)));
        tree.makeFile("last.wav", waveFile(noise(600 * samplesPerFrame)));
        tree.makeFile("disc.cue",
                      "CATALOG 4006408061205\n"
                      "PERFORMER \"The Gulls\"\n"
                      "TITLE \"Summer\"\n"
                      "FILE \"long.wav\" WAVE\n"
                      "  TRACK 01 AUDIO\n"
                      "    TITLE \"First\"\n"
                      "    ISRC DEA628900001\n"
                      "    INDEX 01 00:00:00\n"
                      "  TRACK 02 AUDIO\n"
                      "    TITLE \"Second\"\n"
                      "    FLAGS DCP\n"
                      "    INDEX 00 00:06:00\n"
                      "    INDEX 01 00:07:00\n"
                      "    INDEX 02 00:08:00\n"
                      "  TRACK 03 AUDIO\n"
                      "    PREGAP 00:02:00\n"
                      "    INDEX 01 00:14:00\n"
                      "FILE \"last.wav\" WAVE\n"
                      "  TRACK 04 AUDIO\n"
                      "    INDEX 01 00:00:00\n");
    }

    [[nodiscard]] AudioTracks tracksAt(const QByteArray &name) const
    {
        Result<AudioTracks> tracks = audioTracksAt(tree.path(name));
        EXPECT_TRUE(tracks) << tracks.error().localizedDescription().toStdString();
        return tracks ? *std::move(tracks) : AudioTracks();
    }

    [[nodiscard]] AudioImageResult make(AudioImageOrder order, const QByteArray &name)
    {
        order.output = tree.path(name);
        order.hasCDText = true;
        AudioImageJob job(std::move(order));
        return JobRun<AudioImageJob, AudioImageResult>(job).result;
    }

    [[nodiscard]] QByteArray framesOf(const QByteArray &name, std::size_t first, std::size_t count) const
    {
        return tree.contents(name).mid(qsizetype(first) * qsizetype(bytesPerFrame),
                                       qsizetype(count) * qsizetype(bytesPerFrame));
    }
    [[nodiscard]] QByteArray soundOf(const QByteArray &name) const
    {
        return tree.contents(name).right(name == "long.wav" ? 1500 * bytesPerFrame : 600 * bytesPerFrame);
    }

    const TemporaryTree tree;
};

} // namespace

TEST_F(AudioTracksTest, sheet_standsForItsTracks_partByPart)
{
    const AudioTracks found = tracksAt("disc.cue");
    const QByteArray file = tree.path("long.wav");
    ASSERT_EQ(found.tracks.size(), 4u);
    EXPECT_EQ(found.tracks[0].sound, (std::vector<AudioPart>{{file, 0, 450}}));
    EXPECT_EQ(found.tracks[0].isrc, "DEA628900001");
    EXPECT_EQ(found.tracks[1].pregap, (std::vector<AudioPart>{{file, 450, 75}}));
    EXPECT_EQ(found.tracks[1].sound, (std::vector<AudioPart>{{file, 525, 525}}));
    EXPECT_EQ(found.tracks[1].indexPoints, std::vector<std::uint64_t>{75});
    EXPECT_EQ(found.tracks[1].copyState, CopyState::CopyrightFree);
    EXPECT_EQ(found.tracks[2].gap, 150u);
    EXPECT_EQ(found.tracks[2].sound, (std::vector<AudioPart>{{file, 1050, 0}}));
    EXPECT_FALSE(found.tracks[2].hasOwnFile);
    EXPECT_EQ(found.tracks[3].sound, (std::vector<AudioPart>{{tree.path("last.wav"), 0, 0}}));
    EXPECT_TRUE(found.tracks[3].hasOwnFile);
    EXPECT_EQ(found.texts.at(CDTextBlock::english).at(CDTextKind::Performer), QStringLiteral("The Gulls"));
    EXPECT_EQ(found.tracks[1].texts.at(CDTextBlock::english).at(CDTextKind::Title), QStringLiteral("Second"));
    EXPECT_EQ(found.mediaCatalogNumber, "4006408061205");
}

TEST_F(AudioTracksTest, list_standsForItsFiles)
{
    tree.makeFile("list.m3u", "#EXTM3U\nlast.wav\nlong.wav\n");
    const AudioTracks found = tracksAt("list.m3u");
    ASSERT_EQ(found.tracks.size(), 2u);
    EXPECT_EQ(found.tracks[0].sound, (std::vector<AudioPart>{{tree.path("last.wav"), 0, 0}}));
    EXPECT_TRUE(found.tracks[0].hasOwnFile);
}

TEST_F(AudioTracksTest, sheet_isRefused_whereAFileIsMissing)
{
    tree.remove("last.wav");
    const Result<AudioTracks> found = audioTracksAt(tree.path("disc.cue"));
    ASSERT_FALSE(found);
    EXPECT_TRUE(isDiscJobError(found.error(), DiscJobErrorCode::Source));
    EXPECT_TRUE(found.error().localizedDescription().contains(QStringLiteral("last.wav")));
}

TEST_F(AudioTracksTest, image_ofTheTracksOfASheet_isThatOfTheSheet)
{
    AudioImageOrder ofSheet;
    tree.makeFolder("one");
    tree.makeFolder("two");
    ofSheet.sources = {tree.path("disc.cue")};
    const AudioImageResult expected = make(ofSheet, "one/disc.bin");
    ASSERT_FALSE(expected.error) << expected.error.localizedDescription().toStdString();
    const QByteArray image = tree.contents("one/disc.bin");
    const QByteArray sheet = tree.contents("one/disc.cue");

    AudioTracks tracks = tracksAt("disc.cue");
    AudioImageOrder order;
    order.tracks = tracks.tracks;
    order.texts = tracks.texts;
    order.mediaCatalogNumber = tracks.mediaCatalogNumber;
    const AudioImageResult made = make(order, "two/disc.bin");
    ASSERT_FALSE(made.error) << made.error.localizedDescription().toStdString();
    EXPECT_EQ(made.frames, expected.frames);
    EXPECT_TRUE(tree.contents("two/disc.bin") == image);
    EXPECT_EQ(tree.contents("two/disc.cue"), sheet);
}

TEST_F(AudioTracksTest, tracks_inAnotherOrder_haveTheSoundOfTheirParts)
{
    const QByteArray file = tree.path("long.wav");
    AudioImageOrder order;
    AudioTrackOrder late;
    late.sound = {{file, 1000, 400}};
    AudioTrackOrder early;
    early.gap = 75;
    early.sound = {{file, 100, 350}};
    AudioTrackOrder twice;
    twice.sound = {{file, 100, 350}};
    order.tracks = {late, early, twice};
    const AudioImageResult made = make(order, "mixed.bin");
    ASSERT_FALSE(made.error) << made.error.localizedDescription().toStdString();
    const QByteArray sound = soundOf("long.wav");
    const auto part = [&sound](qsizetype first, qsizetype count) {
        return sound.mid(first * qsizetype(bytesPerFrame), count * qsizetype(bytesPerFrame));
    };
    EXPECT_TRUE(framesOf("mixed.bin", 0, 400) == part(1000, 400));
    EXPECT_TRUE(framesOf("mixed.bin", 400, 75) == QByteArray(75 * bytesPerFrame, 0));
    EXPECT_TRUE(framesOf("mixed.bin", 475, 350) == part(100, 350));
    EXPECT_TRUE(framesOf("mixed.bin", 825, 350) == part(100, 350));
    EXPECT_EQ(made.frames, 1175u);
}

TEST_F(AudioTracksTest, tracks_areRefused_whereTheirFileIsShorter_orTheirCodesAreWrong)
{
    AudioTrackOrder track;
    track.sound = {{tree.path("last.wav"), 500, 200}};
    AudioImageOrder order;
    order.tracks = {track};
    const AudioImageResult tooShort = make(order, "a.bin");
    EXPECT_TRUE(isDiscJobError(tooShort.error, DiscJobErrorCode::Source));
    EXPECT_TRUE(tooShort.error.localizedDescription().contains(QStringLiteral("00:08:00")))
        << tooShort.error.localizedDescription().toStdString();
    order.tracks[0].sound = {{tree.path("last.wav"), 0, 0}};
    order.tracks[0].isrc = "nonsense";
    EXPECT_TRUE(isDiscJobError(make(order, "a.bin").error, DiscJobErrorCode::InvalidOrder));
    order.tracks[0].isrc.clear();
    order.mediaCatalogNumber = "12";
    EXPECT_TRUE(isDiscJobError(make(order, "a.bin").error, DiscJobErrorCode::InvalidOrder));
    order.mediaCatalogNumber.clear();
    order.tracks.push_back({});
    EXPECT_TRUE(isDiscJobError(make(order, "a.bin").error, DiscJobErrorCode::InvalidOrder));
    EXPECT_FALSE(tree.exists("a.bin"));
}
