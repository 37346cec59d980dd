// What is told of files, against what other programs read in them.

#include "platform/quicktime/AtomSource.h"
#include "platform/quicktime/MovieDescription.h"
#include "tests/quicktime/OtherReaders.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t someSamples = 100003; ///< a bit more than two seconds

/// A file that ffmpeg makes of a sound and of moving pictures.
struct Row {
    const char *name;
    const char *options;
    bool hasVideo;
    bool hasSizes; ///< the file tells the bytes of its tracks without being read to its end
};

void PrintTo(const Row &row, std::ostream *to)
{
    *to << row.name;
}

constexpr Row rows[] = {
    {"twos.mov", "-c:a pcm_s16be", false, true},
    {"sowt.mov", "-c:a pcm_s16le", false, true},
    {"raw.mov", "-c:a pcm_u8", false, true},
    {"in24.mov", "-c:a pcm_s24be", false, true},
    {"lpcm.mov", "-c:a pcm_s16le -ar 96000", false, true},
    {"film.mp4", "-c:v libx264 -c:a aac", true, true},
    {"film.mov", "-c:v mpeg4 -c:a pcm_s16be", true, true},
    {"end.mp4", "-c:v mpeg4 -c:a aac -movflags faststart", true, true},
    {"fragments.mp4", "-c:v libx264 -g 10 -c:a aac -movflags frag_keyframe+empty_moov", true, true},
    {"song.m4a", "-c:a aac", false, true},
    {"lossless.m4a", "-c:a alac", false, true},
    {"film.3gp", "-s 176x144 -c:v h263 -c:a aac", true, true},
    {"song.mp3", "-c:a libmp3lame -q:a 4", false, true},
    {"song.flac", "-c:a flac", false, true},
    {"song.ogg", "-c:a libvorbis", false, false},
    {"song.opus", "-c:a libopus", false, false},
    {"song.wma", "-c:a wmav2", false, false},
    {"film.wmv", "-c:v wmv2 -c:a wmav2", true, false},
    {"UPPER.WMV", "-c:v wmv2 -c:a wmav2 -f asf", true, false},
    {"film.avi", "-c:v mpeg4 -c:a libmp3lame", true, true},
    {"film.mkv", "-c:v libx264 -c:a libvorbis", true, false},
    {"song.wav", "-c:a pcm_s16le", false, true},
    {"song.aiff", "-c:a pcm_s16be", false, true},
    {"film.mpg", "-c:v mpeg2video -c:a mp2", true, false},
};

class MovieFacts : public testing::Test
{
protected:
    QByteArray make(const Row &row) const
    {
        if (!tree.exists("source.wav"))
            tree.makeFile("source.wav", waveFile(tone(someSamples)));
        const QByteArray pictures = row.hasVideo ? "-f lavfi -i testsrc=size=64x48:rate=25:duration=2 " : "";
        ffmpeg("-i " + tree.path("source.wav") + ' ' + pictures
               + "-metadata title=Title -metadata artist=Artist -metadata album=Album -metadata date=1999 "
               + row.options + ' ' + tree.path(row.name));
        return tree.path(row.name);
    }
    static MovieDescription described(const QByteArray &path)
    {
        const Result<MovieDescription> movie = describeMovie(path);
        EXPECT_TRUE(movie) << qPrintable(movie.error().localizedDescription());
        return movie ? *movie : MovieDescription();
    }
    static std::vector<QTTrack> tracksOfKind(const MovieDescription &movie, const char *kind)
    {
        std::vector<QTTrack> tracks;
        std::copy_if(movie.tracks.begin(), movie.tracks.end(), std::back_inserter(tracks),
                     [&](const QTTrack &track) { return track.mediaType == kind; });
        return tracks;
    }

    const TemporaryTree tree;
};

double secondsOf(std::int64_t duration, const MovieDescription &movie)
{
    return double(duration) / double(movie.duration.timeScale);
}

QString codeText(std::uint32_t code)
{
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += QChar(char16_t(code >> shift & 0xff));
    return text;
}

QString valueOf(const MovieDescription &movie, const QByteArray &key)
{
    for (const MovieMetadataItem &item : movie.metadata) {
        if (item.key == key)
            return QString::fromUtf8(item.value);
    }
    return {};
}

bool isQuickTime(const QByteArray &path)
{
    return path.endsWith(".mov") || path.endsWith(".mp4") || path.endsWith(".m4a") || path.endsWith(".3gp");
}

} // namespace

namespace
{

class MovieFactsOfFile : public MovieFacts, public testing::WithParamInterface<Row>
{
protected:
    void compareTrack(const QTTrack &track, const QJsonValue &stream) const
    {
        const double duration = member(stream, "duration").toDouble();
        EXPECT_NEAR(secondsOf(track.duration, movie), duration > 0 ? duration : 2.27, 0.3);
        const std::uint32_t code = track.sound ? track.sound->dataFormat : track.image->codecType;
        if (isQuickTime(path)) {
            EXPECT_EQ(codeText(code), member(stream, "codec_tag_string"));
        }
        EXPECT_EQ(track.dataSize.has_value(), GetParam().hasSizes);
        if (track.dataSize) {
            EXPECT_EQ(*track.dataSize, probedSize(path, member(stream, "index").toUtf8()));
        }
        if (track.sound)
            compareSound(*track.sound, stream);
        else
            comparePictures(*track.image, stream);
    }
    static void compareSound(const QTSoundDescription &sound, const QJsonValue &stream)
    {
        EXPECT_EQ(QString::number(sound.sampleRate), member(stream, "sample_rate"));
        EXPECT_EQ(QString::number(sound.numChannels), member(stream, "channels"));
        const int bits = member(stream, "bits_per_sample").toInt();
        if (bits > 0) {
            EXPECT_EQ(sound.sampleSize, bits);
        }
    }
    static void comparePictures(const QTImageDescription &image, const QJsonValue &stream)
    {
        EXPECT_EQ(QString::number(image.width), member(stream, "width"));
        EXPECT_EQ(QString::number(image.height), member(stream, "height"));
        EXPECT_EQ(image.frameCount, 1);
        EXPECT_EQ(image.depth, 24);
    }

    const QByteArray path = make(GetParam());
    const MovieDescription movie = described(path);
};

} // namespace

TEST_P(MovieFactsOfFile, agreeWithFfprobe)
{
    for (const auto &[kind, type] : {std::pair{"audio", "soun"}, std::pair{"video", "vide"}}) {
        const QJsonArray streams = probedStreams(path, kind);
        const std::vector<QTTrack> tracks = tracksOfKind(movie, type);
        ASSERT_EQ(tracks.size(), std::size_t(streams.size())) << kind;
        for (std::size_t index = 0; index < tracks.size(); ++index)
            compareTrack(tracks[index], streams[qsizetype(index)]);
    }
}

TEST_P(MovieFactsOfFile, agreeWithMediaInfo)
{
    const QJsonValue general = mediaInfo(path, "General").first();
    EXPECT_NEAR(secondsOf(movie.duration.timeValue, movie), member(general, "Duration").toDouble(), 0.15);
    const QJsonArray audio = mediaInfo(path, "Audio"), video = mediaInfo(path, "Video");
    const std::vector<QTTrack> sounds = tracksOfKind(movie, "soun"), pictures = tracksOfKind(movie, "vide");
    ASSERT_FALSE(sounds.empty());
    ASSERT_EQ(sounds.size(), std::size_t(audio.size()));
    ASSERT_EQ(pictures.size(), std::size_t(video.size()));
    EXPECT_EQ(QString::number(sounds[0].sound->sampleRate), member(audio[0], "SamplingRate"));
    EXPECT_EQ(QString::number(sounds[0].sound->numChannels), member(audio[0], "Channels"));
    if (isQuickTime(path) && sounds[0].dataSize) {
        // Where an edit list leaves the encoder's start out, it tells the rest and all.
        const QString all = member(audio[0], "Source_StreamSize"), size = member(audio[0], "StreamSize");
        EXPECT_EQ(QString::number(*sounds[0].dataSize), all.isEmpty() ? size : all);
    }
    if (!pictures.empty()) {
        EXPECT_EQ(QString::number(pictures[0].image->width), member(video[0], "Width"));
        EXPECT_EQ(QString::number(pictures[0].image->height), member(video[0], "Height"));
    }
    struct Text {
        const char *name;
        const char *key;
        const char *keyOfPhones;
    };
    for (const Text &text : {Text{"Title", "\251nam", "titl"}, Text{"Performer", "\251ART", "perf"},
                             Text{"Album", "\251alb", "albm"}, Text{"Recorded_Date", "\251day", "yrrc"}}) {
        // Not every container holds all of them.
        const QString other = member(general, text.name);
        if (!other.isEmpty()) {
            EXPECT_EQ(valueOf(movie, path.endsWith(".3gp") ? text.keyOfPhones : text.key), other) << text.name;
        }
    }
    if (path.endsWith(".m4a") || path.endsWith(".mp3") || path.endsWith(".flac")) {
        EXPECT_EQ(valueOf(movie, "\251nam"), QStringLiteral("Title"));
    }
}

INSTANTIATE_TEST_SUITE_P(Made, MovieFactsOfFile, testing::ValuesIn(rows), [](const auto &row) {
    std::string name = row.param.name;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

TEST_F(MovieFacts, twoTracksOfSound_areTwoTracks)
{
    tree.makeFile("source.wav", waveFile(tone(someSamples)));
    for (const char *const name : {"two.mov", "two.mkv"}) {
        ffmpeg("-i " + tree.path("source.wav") + " -map 0:a -map 0:a -c:a:0 pcm_s16le -c:a:1 pcm_s24le -ac:a:1 1 "
               + tree.path(name));
        const MovieDescription movie = described(tree.path(name));
        ASSERT_EQ(movie.tracks.size(), 2u) << name;
        EXPECT_EQ(movie.tracks[0].sound->numChannels, 2) << name;
        EXPECT_EQ(movie.tracks[1].sound->numChannels, 1) << name;
        EXPECT_EQ(movie.tracks[1].sound->sampleSize, 24) << name;
    }
}

TEST_F(MovieFacts, cover_isTheFileThatWasPutIn_andNoTrack)
{
    ffmpeg("-f lavfi -i testsrc=size=120x90 -frames:v 1 " + tree.path("cover.png"));
    ffmpeg("-f lavfi -i testsrc=size=120x90 -frames:v 1 " + tree.path("cover.jpg"));
    tree.makeFile("source.wav", waveFile(tone(someSamples)));
    for (const char *const name : {"song.m4a", "song.mp3", "song.flac"}) {
        for (const char *const extension : {"png", "jpg"}) {
            const QByteArray cover = tree.path(QByteArray("cover.") + extension);
            ffmpeg("-i " + tree.path("source.wav") + " -i " + cover
                   + " -map 0:a -map 1:v -c:v copy -disposition:v attached_pic " + tree.path(name));
            const MovieDescription movie = described(tree.path(name));
            EXPECT_EQ(tracksOfKind(movie, "vide").size(), 0u) << name;
            ASSERT_TRUE(movie.cover) << name;
            EXPECT_EQ(movie.cover->extension, extension) << name;
            EXPECT_EQ(pictureOfCover(tree.path(name), *movie.cover).valueOr(QByteArray()),
                      tree.contents(QByteArray("cover.") + extension))
                << name;
        }
    }
}

TEST_F(MovieFacts, truncatedFile_isDescribed_whenItsTablesAreThere)
{
    const QByteArray path = make({"film.mp4", "-c:v mpeg4 -c:a aac -movflags faststart", true, true});
    const MovieDescription whole = described(path);
    const QByteArray bytes = tree.contents("film.mp4");
    const MovieDescription cut = described(tree.makeFile("cut.mp4", bytes.first(bytes.size() * 3 / 4)));
    EXPECT_EQ(cut.duration, whole.duration);
    EXPECT_EQ(cut.tracks.size(), whole.tracks.size());
    const NSError error = describeMovie(tree.makeFile("tables.mp4", bytes.first(200))).error();
    EXPECT_TRUE(error);
    EXPECT_FALSE(error.localizedFailureReason().isEmpty());
}

TEST_F(MovieFacts, size_isThatOfAllPackets_whateverComesBehindThem)
{
    for (const Row &row : {Row{"song.mp3", "-c:a libmp3lame -b:a 128k -write_id3v1 1", false, true},
                           Row{"cbr.mp3", "-c:a libmp3lame -b:a 128k -write_xing 0 -id3v2_version 0", false, true},
                           Row{"song.aac", "-c:a aac", false, true}, Row{"song.ac3", "-c:a ac3", false, true}}) {
        const QByteArray path = make(row);
        const MovieDescription movie = described(path);
        ASSERT_EQ(movie.tracks.size(), 1u) << row.name;
        EXPECT_EQ(movie.tracks[0].dataSize.value_or(0), probedSize(path, "0")) << row.name;
    }
    const QByteArray song = tree.contents("song.mp3");
    const QByteArray footer =
        "APETAGEX" + QByteArray("\xd0\x07\0\0\x40\0\0\0\0\0\0\0\0\0\0\0", 16) + QByteArray(8, '\0');
    const QByteArray items(32, 'i');
    const QByteArray tagged = tree.makeFile("ape.mp3", song.first(song.size() - 128) + items + footer + song.last(128));
    EXPECT_EQ(described(tagged).tracks.at(0).dataSize, described(tree.path("song.mp3")).tracks.at(0).dataSize);
}
