#include "platform/quicktime/QTMovie.h"

#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t someSamples = 100003;

std::uint32_t code(const char (&text)[5])
{
    return std::uint32_t(std::uint8_t(text[0])) << 24 | std::uint32_t(std::uint8_t(text[1])) << 16
        | std::uint32_t(std::uint8_t(text[2])) << 8 | std::uint8_t(text[3]);
}

Samples decoded(const QByteArray &path)
{
    const auto decoder = CDAudioDecoder::openFile(path);
    EXPECT_TRUE(decoder) << qPrintable(decoder.error().localizedDescription());
    QByteArray bytes;
    std::vector<char> buffer(400000);
    while (decoder) {
        const Result<std::size_t> got = (*decoder)->read(buffer.data(), buffer.size() / 4);
        EXPECT_TRUE(got);
        if (!got || *got == 0)
            break;
        bytes.append(buffer.data(), qsizetype(*got) * 4);
    }
    EXPECT_TRUE(!decoder || (*decoder)->damage().isEmpty()) << path.constData();
    return samplesOf(bytes);
}

Samples part(const Samples &whole, std::size_t begin, std::size_t count)
{
    return Samples(whole.begin() + std::ptrdiff_t(2 * begin), whole.begin() + std::ptrdiff_t(2 * (begin + count)));
}

class Movie : public testing::Test
{
protected:
    QByteArray convert(const QByteArray &name, const QByteArray &options = {}) const
    {
        tree.makeFile("source.wav", waveFile(source));
        ffmpeg("-i " + tree.path("source.wav") + ' ' + options + ' ' + tree.path(name));
        return tree.path(name);
    }
    /// The null error, or what went wrong on the way.
    NSError writeMovie(const QTMovie &movie, const QByteArray &path) const
    {
        Result<MovieStorageHandle> storage = CreateMovieStorage(path);
        if (!storage)
            return storage.error();
        const NSError written = AddMovieToStorage(movie, **storage);
        const NSError closed = CloseMovieStorage(*std::move(storage));
        return written ? written : closed;
    }
    QByteArray copySegment(const QByteArray &path, std::int64_t begin, std::int64_t length) const
    {
        const auto movie = QTMovie::movieByOpeningFileSync(path);
        const auto copy = QTMovie::newMovie();
        EXPECT_TRUE(movie);
        EXPECT_FALSE(InsertMovieSegment(*movie, *copy, begin, length));
        QByteArray target = tree.path("segment.mov");
        const NSError error = writeMovie(*copy, target);
        EXPECT_FALSE(error) << qPrintable(error.localizedDescription());
        return target;
    }

    const Samples source = noise(someSamples);
    const TemporaryTree tree;
};

QByteArray codecOf(const QByteArray &path)
{
    return outputOfProgram(
               "ffprobe",
               {"-v", "error", "-select_streams", "a", "-show_entries", "stream=codec_name", "-of", "csv=p=0", path})
        .trimmed();
}

} // namespace

TEST_F(Movie, opening_givesTheDurationOfSoundInItsSamples)
{
    for (const char *name : {"a.wav", "a.flac", "a.mp3", "a.ogg", "a.aiff"}) {
        NSError error(NSOSStatusErrorDomain, 1);
        const auto movie = QTMovie::movieByOpeningFileSync(convert(name), &error);
        ASSERT_TRUE(movie) << name;
        EXPECT_FALSE(error);
        EXPECT_EQ(movie->duration(), (QTTime{someSamples, 44100})) << name;
        ASSERT_EQ(movie->tracks().size(), 1u);
        EXPECT_EQ(movie->tracks()[0].mediaType, "soun");
        EXPECT_EQ(movie->tracks()[0].sound->sampleRate, 44100u);
        EXPECT_EQ(movie->tracks()[0].sound->numChannels, 2);
    }
}

TEST_F(Movie, opening_takesThePathFromItsAttributes)
{
    const QByteArray path = tree.makeFile("na\xefve.wav", waveFile(source)); // not UTF-8
    const QString text = tree.pathText("na\xefve.wav");
    const auto movie =
        QTMovie::initWithAttributes({{QTMovieFileNameAttribute, text}, {QTMovieOpenAsyncOKAttribute, false}});
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->path(), path);
}

TEST_F(Movie, opening_readsTheHeaderOfAMovie)
{
    const QByteArray path = tree.path("a.mov");
    ffmpeg("-f lavfi -i testsrc=size=64x48:rate=25:duration=2 -f lavfi -i sine=duration=2:sample_rate=48000 -c:v mpeg4 "
           "-c:a aac "
           "-ac 1 "
           + path);
    const auto movie = QTMovie::movieByOpeningFileSync(path);
    ASSERT_TRUE(movie);
    EXPECT_EQ(movie->duration().timeScale, 1000);
    EXPECT_NEAR(double(movie->duration().timeValue), 2000, 30);
    ASSERT_EQ(movie->tracks().size(), 2u);
    const QTTrack &video = movie->tracks()[0];
    EXPECT_EQ(video.mediaType, "vide");
    ASSERT_TRUE(video.image);
    EXPECT_EQ(video.image->codecType, code("mp4v"));
    EXPECT_EQ(video.image->width, 64);
    EXPECT_EQ(video.image->height, 48);
    EXPECT_FALSE(video.image->name.isEmpty());
    EXPECT_EQ(video.duration, 2000);
    const QTTrack &audio = movie->tracks()[1];
    EXPECT_EQ(audio.mediaType, "soun");
    ASSERT_TRUE(audio.sound);
    EXPECT_EQ(audio.sound->dataFormat, code("mp4a"));
    EXPECT_EQ(audio.sound->sampleRate, 48000u);
    EXPECT_EQ(audio.sound->numChannels, 1);
    // The size that stands in front of the description in the file.
    const QByteArray file = tree.contents("a.mov");
    const qsizetype at = file.indexOf("mp4a");
    EXPECT_EQ(audio.sound->descSize, file.mid(at - 4, 4).toHex().toLongLong(nullptr, 16));
}

TEST_F(Movie, dataSize_isThatOfTheSamples)
{
    for (const char *name : {"a.wav", "a.mov"}) {
        const auto movie = QTMovie::movieByOpeningFileSync(convert(name, "-c:a pcm_s16le"));
        ASSERT_TRUE(movie);
        const Result<std::uint64_t> size = movie->dataSizeOfTrack(0);
        ASSERT_TRUE(size);
        EXPECT_EQ(*size, someSamples * 4) << name;
        EXPECT_FALSE(movie->dataSizeOfTrack(1));
    }
}

TEST_F(Movie, opening_failsWithAReason)
{
    for (const QByteArray &path :
         {tree.path("missing"), tree.path(), tree.makeFile("empty.mov"), tree.makeFile("a.mov", "text"),
          tree.makeFifo("pipe"), QByteArray("/dev/zero"), QByteArray()}) {
        NSError error;
        EXPECT_FALSE(QTMovie::movieByOpeningFileSync(path, &error));
        EXPECT_TRUE(error) << path.constData();
        EXPECT_FALSE(error.localizedFailureReason().isEmpty());
    }
    std::stop_source stop;
    stop.request_stop();
    NSError error;
    EXPECT_FALSE(QTMovie::movieByOpeningFileSync(convert("a.mp3"), &error, stop.get_token()));
    EXPECT_EQ(error.code(), userCanceledErr);
}

TEST_F(Movie, segment_isExactToTheSample)
{
    struct Row {
        const char *name;
        const char *options;
        QByteArray codec; ///< of the copy
        int tolerance; ///< dither
    };
    // Noise that a decoder makes up itself (PNS) is another one at each start; so AAC comes without.
    for (const Row &row :
         {Row{"a.wav", "-c copy", "pcm_s16le", 0}, Row{"a.aiff", "", "pcm_s16le", 0}, Row{"a.flac", "", "pcm_s16le", 0},
          Row{"alac.m4a", "-c:a alac", "alac", 0}, Row{"a.m4a", "-c:a aac -aac_pns 0", "aac", 2},
          Row{"a.mp3", "", "mp3", 2}, Row{"low.mp3", "-b:a 32k", "mp3", 2}, Row{"a.aac", "-aac_pns 0", "aac", 2},
          Row{"a.ogg", "", "pcm_f32le", 2}}) {
        const QByteArray path = convert(row.name, row.options);
        const auto movie = QTMovie::movieByOpeningFileSync(path);
        ASSERT_TRUE(movie) << row.name;
        const std::int64_t scale = movie->duration().timeScale;
        // A second in, for half a second, which every scale has exactly; then the first and the last bit.
        for (const auto &[begin, length] :
             {std::pair<std::int64_t, std::int64_t>{scale, scale / 2}, {0, scale / 10}, {scale * 2, scale}}) {
            const Samples whole = decoded(path);
            const QByteArray copy = copySegment(path, begin, length);
            const Samples result = decoded(copy);
            const std::size_t first = std::size_t(begin * 44100 / scale);
            const std::size_t count = std::min(std::size_t(length * 44100 / scale), whole.size() / 2 - first);
            ASSERT_EQ(result.size() / 2, count) << row.name << " from " << begin;
            EXPECT_LE(greatestDifference(result, part(whole, first, count)), row.tolerance)
                << row.name << " from " << begin;
            EXPECT_EQ(codecOf(copy), row.codec) << row.name;
        }
    }
}

TEST_F(Movie, segments_followEachOther)
{
    const auto one = QTMovie::movieByOpeningFileSync(convert("a.wav", "-c copy"));
    const auto other = QTMovie::movieByOpeningFileSync(convert("b.flac"));
    const auto copy = QTMovie::newMovie();
    ASSERT_FALSE(InsertMovieSegment(*one, *copy, 50000, 1001));
    ASSERT_FALSE(InsertMovieSegment(*other, *copy, 7, 2003));
    EXPECT_EQ(copy->duration(), (QTTime{3004, 44100}));
    ASSERT_FALSE(writeMovie(*copy, tree.path("both.mov")));
    Samples expected = part(source, 50000, 1001);
    const Samples second = part(source, 7, 2003);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(decoded(tree.path("both.mov")), expected);
}

TEST_F(Movie, writing_replacesWhatWasThere_andKeepsItPrivate)
{
    tree.makeFile("segment.mov", QByteArray(3000000, 'x'));
    const QByteArray path = copySegment(convert("a.wav", "-c copy"), 0, 1000);
    EXPECT_EQ(decoded(path), part(source, 0, 1000));
    EXPECT_LT(tree.contents("segment.mov").size(), 10000);
}

TEST_F(Movie, segment_isRefused_outsideOfTheMovie)
{
    const auto movie = QTMovie::movieByOpeningFileSync(convert("a.wav", "-c copy"));
    const auto copy = QTMovie::newMovie();
    for (const auto &[begin, length] :
         {std::pair<std::int64_t, std::int64_t>{-1, 10}, {0, 0}, {0, -1}, {someSamples, 1}, {INT64_MAX, INT64_MAX}})
        EXPECT_EQ(InsertMovieSegment(*movie, *copy, begin, length).code(), -2015) << begin;
    EXPECT_TRUE(writeMovie(*copy, tree.path("empty.mov"))) << "a movie of nothing";
    ASSERT_FALSE(InsertMovieSegment(*movie, *copy, 10, INT64_MAX)) << "cut at the end";
    EXPECT_EQ(copy->duration().timeValue, std::int64_t(someSamples) - 10);
}

TEST_F(Movie, writing_saysWhatTheSystemRefuses)
{
    EXPECT_TRUE(CreateMovieStorage(tree.path()).error());
    EXPECT_EQ(CreateMovieStorage(tree.path("missing/a.mov")).error().code(), fnfErr);
    EXPECT_TRUE(CreateMovieStorage(tree.makeFifo("pipe")).error());
    const auto movie = QTMovie::movieByOpeningFileSync(convert("a.wav", "-c copy"));
    const auto copy = QTMovie::newMovie();
    ASSERT_FALSE(InsertMovieSegment(*movie, *copy, 0, someSamples));
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {100000, RLIM_INFINITY};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const NSError error = writeMovie(*copy, tree.path("a.mov"));
    const rlimit endless = {RLIM_INFINITY, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &endless);
    ASSERT_TRUE(error);
    EXPECT_EQ(error.filePath(), tree.pathText("a.mov"));
}
