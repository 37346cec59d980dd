// What receivers are told of files that other programs have made, field by field against what others read in them.

#include "tests/quicktime/OtherReaders.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// How a file is made, and what cannot be seen from outside.
struct Fixture {
    const char *name;
    /// "ffmpeg" and its options behind the inputs, a sound and moving pictures or a cover, or another program with all
    /// its words, in which "IN", "JPEG", "PNG" and "OUT" stand for files.
    const char *command;
    bool hasSizes; ///< the file tells the bytes of its tracks without being read to its end
    bool hasArtwork = false; ///< within reach

    [[nodiscard]] bool isQuickTime() const
    {
        const std::string text = name;
        return text.ends_with(".mov") || text.ends_with(".mp4") || text.ends_with(".m4a");
    }
    [[nodiscard]] bool isFragmented() const { return std::string(name).starts_with("fragments"); }
};

void PrintTo(const Fixture &fixture, std::ostream *to)
{
    *to << fixture.name;
}

constexpr Fixture fixtures[] = {
    {"twos.mov", "ffmpeg -map 0 -c:a pcm_s16be", true},
    {"sowt.mov", "ffmpeg -map 0 -c:a pcm_s16le", true},
    {"raw.mov", "ffmpeg -map 0 -c:a pcm_u8", true},
    {"in24.mov", "ffmpeg -map 0 -c:a pcm_s24be", true},
    {"two.mov", "ffmpeg -map 0:a -map 0:a -c:a:0 pcm_s16le -c:a:1 pcm_s24le -ac:a:1 1", true},
    {"film.mov", "ffmpeg -map 0 -map 1 -c:v mpeg4 -c:a pcm_s16be", true},
    {"film.mp4", "ffmpeg -map 0 -map 1 -c:v libx264 -c:a aac", true},
    {"fragments.mp4", "ffmpeg -map 0 -map 1 -c:v libx264 -g 10 -c:a aac -movflags frag_keyframe+empty_moov", true},
    {"plain.m4a", "ffmpeg -map 0 -c:a aac", true},
    {"inside.m4a", "ffmpeg -map 0 -map 1 -c:a alac -c:v copy -disposition:v attached_pic -movflags faststart", true,
     true},
    {"beyond.m4a", "ffmpeg -map 0 -map 1 -c:a alac -c:v copy -disposition:v attached_pic", true, false},
    {"tagged.mp3",
     "lame --quiet -V 4 --tt Title --ta Artist --tl Album --ty 1999 --ti PNG --id3v2-only --id3v2-utf16 IN OUT", true,
     true},
    {"tagged.flac",
     "flac -s --picture=JPEG -T TITLE=Title -T ARTIST=Artist -T ALBUM=Album -T DATE=1999 -T AUTHOR=Author -o OUT IN",
     true, true},
    {"song.aiff", "sox IN OUT", true},
    {"song.wav", "ffmpeg -map 0 -c:a pcm_s16le", true},
    {"song.ogg", "sox IN OUT", false},
    {"song.opus", "ffmpeg -map 0 -c:a libopus", false},
    {"song.wma", "ffmpeg -map 0 -c:a wmav2", false},
    {"film.wmv", "ffmpeg -map 0 -map 1 -c:v wmv2 -c:a wmav2", false},
    {"UPPER.WMV", "ffmpeg -map 0 -map 1 -c:v wmv2 -c:a wmav2 -f asf", false},
    {"film.avi", "ffmpeg -map 0 -map 1 -c:v mpeg4 -c:a libmp3lame", true},
    {"film.mkv", "ffmpeg -map 0 -map 1 -c:v libx264 -c:a libvorbis", false},
};

class MovieInfoFacts : public testing::Test
{
protected:
    class Listener final : public KRMovieInfoReceiver
    {
    public:
        void KRMovieInfoDidGetInfo(const QVariantMap &info) override { result = info; }
        QVariantMap result;
    };

    static constexpr std::size_t samples = 100003; ///< a bit more than two seconds
    static constexpr const char *moving = "-f lavfi -i testsrc=size=64x48:rate=25:duration=2";

    /// A red picture; its path.
    [[nodiscard]] QByteArray cover(const char *extension) const
    {
        QByteArray path = tree.path(QByteArray("red.") + extension);
        ffmpeg("-f lavfi -i color=red:size=120x120,format=rgb24 -frames:v 1 " + path);
        return path;
    }

    /// Its path.
    QByteArray make(const Fixture &fixture) const
    {
        const QByteArray sound = tree.makeFile("in.wav", waveFile(noise(samples)));
        const QByteArray command = fixture.command;
        QByteArray path = tree.path(fixture.name);
        QList<QByteArray> words = command.split(' ');
        const QByteArray program = words.takeFirst();
        if (program == "ffmpeg") {
            const QByteArray other = command.contains("attached_pic") ? "-i " + cover("jpg")
                : command.contains("-map 1")                          ? QByteArray(moving)
                                                                      : QByteArray();
            const QByteArray texts = " -metadata title=Title -metadata artist=Artist -metadata album=Album "
                                     "-metadata date=1999 -metadata author=Author ";
            ffmpeg("-i " + sound + ' ' + other + ' ' + words.join(' ') + texts + path);
            return path;
        }
        for (QByteArray &word : words) {
            word.replace("OUT", path);
            if (word.contains("PNG"))
                word.replace("PNG", cover("png"));
            if (word.contains("JPEG"))
                word.replace("JPEG", cover("jpg"));
            if (word == "IN")
                word = sound;
        }
        outputOfProgram(program.constData(), words);
        return path;
    }
    static QVariantMap infoOn(const QByteArray &path)
    {
        const auto listener = std::make_shared<Listener>();
        KRMovieInfo::sharedInstance()->getInfoForMovieAtPath(QString::fromUtf8(path), listener);
        EXPECT_TRUE(runEventLoopUntil([&] { return !listener->result.isEmpty(); }));
        EXPECT_FALSE(listener->result.contains(QStringLiteral("error")));
        return listener->result;
    }
    static QList<QVariantMap> tracksOfType(const QVariantMap &result, const QString &type)
    {
        QList<QVariantMap> tracks;
        for (const QVariant &track : result.value(fZelTracksInfoKey).toList()) {
            if (track.toMap().value(kZelTrackInfoType) == type)
                tracks << track.toMap();
        }
        return tracks;
    }
    static double secondsOf(const QVariantMap &track)
    {
        return track.value(kZelTrackInfoDuration).toDouble() / track.value(kZelTrackInfoTimeScale).toDouble();
    }

    const TemporaryTree tree;
};

class MovieInfoFactsOfFile : public MovieInfoFacts, public testing::WithParamInterface<Fixture>
{
protected:
    void compareWithStream(const QVariantMap &track, const QJsonValue &stream) const
    {
        EXPECT_EQ(track.value(kZelTrackInfoTimeScale).toLongLong(), movie.value(kZelMovieTimeScale).toLongLong());
        const double duration = member(stream, "duration").toDouble();
        EXPECT_NEAR(secondsOf(track), duration > 0 ? duration : double(samples) / 44100, 0.1);
        EXPECT_EQ(track.contains(kZelTrackInfoSize), fixture.hasSizes);
        if (fixture.hasSizes) {
            EXPECT_EQ(track.value(kZelTrackInfoSize).toULongLong(), probedSize(path, member(stream, "index").toUtf8()));
        }
        EXPECT_EQ(track.value(kZelTrackInfoFourCC).toString().size(), 4);
    }
    void compareSound(const QVariantMap &track, const QJsonValue &stream) const
    {
        compareWithStream(track, stream);
        EXPECT_EQ(track.value(kZelAudioInfoSampleRate).toString(), member(stream, "sample_rate"));
        EXPECT_EQ(track.value(kZelAudioInfoChannelCount).toString(), member(stream, "channels"));
        // Codecs that lose something have no number of bits; 16 stands for them.
        const int raw = member(stream, "bits_per_raw_sample").toInt(),
                  coded = member(stream, "bits_per_sample").toInt();
        const int bits = raw > 0 ? raw : coded;
        EXPECT_EQ(track.value(kZelAudioInfoSampleSize).toInt(), bits > 0 ? bits : 16);
        if (fixture.isQuickTime()) {
            EXPECT_EQ(track.value(kZelTrackInfoFourCC).toString(), member(stream, "codec_tag_string"));
        } else {
            EXPECT_EQ(track.value(QStringLiteral("desc size")).toInt(), 36) << "the plain one";
        }
    }
    void comparePictures(const QVariantMap &track, const QJsonValue &stream) const
    {
        compareWithStream(track, stream);
        EXPECT_EQ(track.value(fZelVideoInfoWidth).toString(), member(stream, "width"));
        EXPECT_EQ(track.value(fZelVideoInfoHeight).toString(), member(stream, "height"));
        EXPECT_EQ(track.value(kZelVideoInfoFrameCount).toInt(), 1);
        EXPECT_EQ(track.value(kZelVideoInfoDepth).toInt(), 24);
        QString code = track.value(kZelTrackInfoFourCC).toString();
        if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN)
            std::reverse(code.begin(), code.end());
        std::uint32_t number = 0;
        for (const QChar character : code)
            number = number << 8 | std::uint32_t(character.unicode());
        EXPECT_EQ(track.value(kZelTrackInfoFourCCNum).toULongLong(), number);
        if (fixture.isQuickTime()) {
            EXPECT_EQ(code, member(stream, "codec_tag_string"));
        } else {
            EXPECT_EQ(track.value(kZelVideoInfoName).toString(), member(stream, "codec_long_name"));
        }
    }
    void compareWithListed(const QVariantMap &track, const ListedTrack &listed) const
    {
        if (!fixture.isFragmented()) {
            EXPECT_EQ(track.value(kZelTrackInfoDuration).toLongLong(), listed.duration);
        }
        if (track.value(kZelTrackInfoType) == kZelTrackTypeAudio) {
            EXPECT_EQ(track.value(kZelTrackInfoFourCC).toString(), listed.code);
            EXPECT_EQ(track.value(QStringLiteral("desc size")).toLongLong(), listed.descriptionSize);
            EXPECT_EQ(track.value(kZelAudioInfoSampleRate).toInt(), listed.number("Sample rate", "samplerate"));
            // In version 1 the field for bits says 16 whatever there is.
            const bool isVersion1 = listed.number("Version") == 1;
            EXPECT_EQ(track.value(kZelAudioInfoSampleSize).toInt(),
                      isVersion1 ? listed.number("Bytes per packet") * 8
                                 : listed.number("Sample size", "samplesize (16)"));
            EXPECT_EQ(track.value(kZelAudioInfoChannelCount).toInt(),
                      listed.number("Number of channels", "channelcount (2)"));
            return;
        }
        EXPECT_EQ(track.value(fZelVideoInfoWidth).toInt(), listed.number("Width"));
        EXPECT_EQ(track.value(fZelVideoInfoHeight).toInt(), listed.number("Height"));
        EXPECT_EQ(track.value(kZelVideoInfoFrameCount).toInt(), listed.number("Frame count"));
        EXPECT_EQ(track.value(kZelVideoInfoDepth).toInt(), listed.number("Depth"));
        EXPECT_EQ(track.value(kZelVideoInfoName).toString(), listed.fields.value(QStringLiteral("Compressor name")));
    }

    void compareWithFfprobe() const;
    void compareWithMediaInfo() const;
    void compareTexts() const;
    void checkArtwork() const;

    const Fixture fixture = GetParam();
    const QByteArray path = make(fixture);
    const QVariantMap result = infoOn(path);
    const QVariantMap movie = result.value(kZelMovieInfoKey).toMap();
    const QVariantMap metadata = result.value(kZelMovieMetadataKey).toMap();
};

INSTANTIATE_TEST_SUITE_P(Made, MovieInfoFactsOfFile, testing::ValuesIn(fixtures), [](const auto &fixture) {
    std::string name = fixture.param.name;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

/// A tag of the file or of its streams, as ffprobe reads it.
QString probedTag(const QByteArray &path, const char *name)
{
    const QJsonObject all =
        QJsonDocument::fromJson(
            outputOfProgram("ffprobe", {"-v", "error", "-of", "json", "-show_format", "-show_streams", path}))
            .object();
    QJsonArray places = all[QStringLiteral("streams")].toArray();
    places.prepend(all[QStringLiteral("format")]);
    for (const QJsonValue place : std::as_const(places)) {
        const QJsonObject tags = place[QStringLiteral("tags")].toObject();
        for (auto tag = tags.begin(); tag != tags.end(); ++tag) {
            if (tag.key().compare(QString::fromUtf8(name), Qt::CaseInsensitive) == 0)
                return tag.value().toString();
        }
    }
    return {};
}

void MovieInfoFactsOfFile::compareWithFfprobe() const
{
    for (const auto &[kind, type] : {std::pair{"audio", kZelTrackTypeAudio}, std::pair{"video", kZelTrackTypeVideo}}) {
        const QJsonArray streams = probedStreams(path, kind);
        const QList<QVariantMap> tracks = tracksOfType(result, type);
        ASSERT_EQ(tracks.size(), streams.size()) << kind;
        for (qsizetype index = 0; index < tracks.size(); ++index) {
            if (type == kZelTrackTypeAudio)
                compareSound(tracks[index], streams[index]);
            else
                comparePictures(tracks[index], streams[index]);
        }
    }
    EXPECT_FALSE(tracksOfType(result, kZelTrackTypeAudio).isEmpty());
}

void MovieInfoFactsOfFile::compareWithMediaInfo() const
{
    const double seconds = movie.value(kZelMovieDuration).toDouble() / movie.value(kZelMovieTimeScale).toDouble();
    EXPECT_NEAR(seconds, member(mediaInfo(path, "General").first(), "Duration").toDouble(), 0.1);
    const QJsonArray audio = mediaInfo(path, "Audio"), video = mediaInfo(path, "Video");
    const QList<QVariantMap> sounds = tracksOfType(result, kZelTrackTypeAudio),
                             pictures = tracksOfType(result, kZelTrackTypeVideo);
    ASSERT_EQ(sounds.size(), audio.size());
    ASSERT_EQ(pictures.size(), video.size());
    for (qsizetype index = 0; index < sounds.size(); ++index) {
        EXPECT_EQ(sounds[index].value(kZelAudioInfoSampleRate).toString(), member(audio[index], "SamplingRate"));
        EXPECT_EQ(sounds[index].value(kZelAudioInfoChannelCount).toString(), member(audio[index], "Channels"));
        const QString bits = member(audio[index], "BitDepth");
        EXPECT_EQ(sounds[index].value(kZelAudioInfoSampleSize).toString(),
                  bits.isEmpty() ? QStringLiteral("16") : bits);
    }
    for (qsizetype index = 0; index < pictures.size(); ++index) {
        EXPECT_EQ(pictures[index].value(fZelVideoInfoWidth).toString(), member(video[index], "Width"));
        EXPECT_EQ(pictures[index].value(fZelVideoInfoHeight).toString(), member(video[index], "Height"));
    }
    if (!fixture.isQuickTime())
        return;
    const ListedMovie listed = listedMovie(path);
    EXPECT_EQ(movie.value(kZelMovieTimeScale).toLongLong(), listed.timeScale);
    if (!fixture.isFragmented()) {
        EXPECT_EQ(movie.value(kZelMovieDuration).toLongLong(), listed.duration);
    }
    const QVariantList tracks = result.value(fZelTracksInfoKey).toList();
    ASSERT_EQ(std::size_t(tracks.size()), listed.tracks.size());
    for (qsizetype index = 0; index < tracks.size(); ++index)
        compareWithListed(tracks[index].toMap(), listed.tracks[std::size_t(index)]);
}

void MovieInfoFactsOfFile::compareTexts() const
{
    struct Text {
        QString key;
        const char *probed;
        const char *ofMediaInfo;
    };
    const QJsonValue general = mediaInfo(path, "General").first();
    for (const Text &text :
         {Text{kZelAudioInfoTitle, "title", "Title"}, Text{kZelAudioInfoArtist, "artist", "Performer"},
          Text{kZelAudioInfoAlbum, "album", "Album"}, Text{kZelAudioInfoYear, "date", "Recorded_Date"}}) {
        // Where a QuickTime file names an author, too, ffprobe takes that for the artist.
        if (!path.endsWith(".mov") || text.key != kZelAudioInfoArtist) {
            EXPECT_EQ(metadata.value(text.key).toString(), probedTag(path, text.probed)) << qPrintable(text.key);
        }
        const QString other = member(general, text.ofMediaInfo);
        if (!other.isEmpty()) {
            EXPECT_EQ(metadata.value(text.key).toString(), other) << qPrintable(text.key);
        }
    }
    if (path.endsWith(".mov") || path.endsWith(".flac")) {
        EXPECT_EQ(metadata.value(kZelAudioInfoAuthors).toString(), QStringLiteral("Author"));
    }
    const bool holdsTexts = !path.endsWith(".aiff") && !path.endsWith(".ogg"); // as sox writes them
    EXPECT_EQ(metadata.value(kZelAudioInfoTitle).toString(), holdsTexts ? QStringLiteral("Title") : QString());
}

void MovieInfoFactsOfFile::checkArtwork() const
{
    const QVariantList artworks = metadata.value(kZelAudioInfoArtworks).toList();
    ASSERT_EQ(artworks.size(), fixture.hasArtwork ? 1 : 0);
    if (!fixture.hasArtwork)
        return;
    const auto picture = artworks.first().value<QImage>();
    EXPECT_EQ(picture.size(), QSize(80, 80));
    EXPECT_GT(qRed(picture.pixel(40, 40)), 200);
    EXPECT_LT(qGreen(picture.pixel(40, 40)), 50);
}

} // namespace

/// One test for each file, since making it takes most of the time.
TEST_P(MovieInfoFactsOfFile, isToldAsOthersReadIt)
{
    compareWithFfprobe();
    compareWithMediaInfo();
    compareTexts();
    checkArtwork();
}

TEST_F(MovieInfoFacts, textThatIsNoUtf8_isLeftOut_andTheOthersStay)
{
    const QByteArray sound = tree.makeFile("in.wav", waveFile(noise(samples)));
    for (const char *const name : {"bad.m4a", "bad.flac", "bad.ogg"}) {
        ffmpeg("-i " + sound + " -metadata title=Titl\xE9 -metadata artist=Artist " + tree.path(name));
        ASSERT_TRUE(tree.contents(name).contains("Titl\xE9")) << name;
        const QVariantMap metadata = infoOn(tree.path(name)).value(kZelMovieMetadataKey).toMap();
        EXPECT_FALSE(metadata.contains(kZelAudioInfoTitle)) << name;
        EXPECT_EQ(metadata.value(kZelAudioInfoArtist).toString(), QStringLiteral("Artist")) << name;
    }
}
