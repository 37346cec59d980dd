#include "platform/quicktime/decoding/CDAudioDecoder.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <sys/inotify.h>
#include <unistd.h>

// What is cut, bent, or made to lead astray.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t someSamples = 100000;

struct Decoded {
    NSError error;
    Samples samples;
    CDAudioLength announced;
    AudioDamageReport damage;
};

Decoded decoded(const QByteArray &path)
{
    Decoded result;
    const auto decoder = CDAudioDecoder::openFile(path);
    result.error = decoder.error();
    if (!decoder)
        return result;
    result.announced = (*decoder)->length();
    std::vector<char> buffer(std::size_t(1) << 18);
    for (;;) {
        const Result<std::size_t> got = (*decoder)->read(buffer.data(), buffer.size() / 4);
        result.error = got.error();
        if (!got || *got == 0)
            break;
        const Samples part = samplesOf(QByteArray(buffer.data(), qsizetype(*got * 4)));
        result.samples.insert(result.samples.end(), part.begin(), part.end());
    }
    result.damage = (*decoder)->damage();
    return result;
}

class BrokenSounds : public testing::Test
{
protected:
    QByteArray convert(const QByteArray &name, const QByteArray &options = {}) const
    {
        tree.makeFile("source.wav", waveFile(source));
        ffmpeg("-i " + tree.path("source.wav") + ' ' + options + ' ' + tree.path(name));
        return tree.contents(name);
    }

    const Samples source = noise(someSamples);
    const TemporaryTree tree;
};

/// Tells whether a file is opened while it lives.
class OpeningWatch
{
public:
    explicit OpeningWatch(const QByteArray &path)
        : m_descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        EXPECT_GE(::inotify_add_watch(m_descriptor, path.constData(), IN_OPEN), 0) << path.constData();
    }
    ~OpeningWatch() { ::close(m_descriptor); }
    OpeningWatch(const OpeningWatch &) = delete;
    OpeningWatch &operator=(const OpeningWatch &) = delete;

    [[nodiscard]] bool wasOpened() const
    {
        std::array<char, 4096> events;
        return ::read(m_descriptor, events.data(), events.size()) > 0;
    }

private:
    const int m_descriptor;
};

} // namespace

TEST_F(BrokenSounds, damage_isSilenceOfTheSameLength_inFlac)
{
    QByteArray flac = convert("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 0x10);
    const Decoded result = decoded(tree.makeFile("bent.flac", flac));
    EXPECT_FALSE(result.error);
    EXPECT_FALSE(result.damage.isEmpty());
    ASSERT_EQ(result.samples.size(), source.size());
    std::size_t different = 0;
    for (std::size_t index = 0; index < source.size(); ++index)
        different += result.samples[index] != source[index] ? 1 : 0;
    EXPECT_GT(different, 0u);
    EXPECT_LE(different, 2 * 4608u) << "no more than a block is lost";
    EXPECT_NEAR(result.damage.places.front().seconds, double(someSamples) / 2 / 44100, 0.2);
}

TEST_F(BrokenSounds, damage_isTold_whereForeignBytesLieBetweenPackets)
{
    for (const char *name : {"a.mp3", "a.aac"}) {
        QByteArray file = convert(name, "-b:a 192k");
        file.insert(file.size() / 2, QByteArray(3000, 'x'));
        const Decoded result = decoded(tree.makeFile(QByteArray("bent-") + name, file));
        EXPECT_FALSE(result.error);
        EXPECT_FALSE(result.damage.isEmpty()) << name;
    }
}

TEST_F(BrokenSounds, damage_isTold_whereTheFileEndsTooEarly)
{
    for (const char *name :
         {"a.wav", "a.flac", "a.m4a", "a.mp3", "a.aiff", "a.wv", "a.tta", "a.caf", "a.ogg", "a.opus"}) {
        const bool isFast = QByteArray(name) == "a.m4a";
        const QByteArray whole = convert(name, isFast ? "-movflags +faststart" : "");
        const Decoded result = decoded(tree.makeFile(QByteArray("cut-") + name, whole.first(whole.size() * 2 / 3)));
        if (result.error)
            continue; // That is an answer, too.
        EXPECT_LT(result.samples.size(), source.size()) << name;
        // The pages of Ogg say how long it is up to them: a whole page less cannot be seen.
        const bool isSeen = !result.damage.isEmpty() || QByteArray(name).startsWith("a.o");
        EXPECT_TRUE(isSeen) << name;
    }
}

TEST_F(BrokenSounds, playlists_areNotFollowed)
{
    const QByteArray secret = tree.makeFile("secret.wav", waveFile(source));
    const QByteArray uri = "file://" + secret;
    struct Row {
        const char *name;
        QByteArray text;
    };
    const QByteArray concat = "ffconcat version 1.0\nfile 'secret.wav'\nfile '" + secret + "'\n";
    const QByteArray hls = "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n" + secret + "\n#EXT-X-ENDLIST\n";
    const QByteArray sdp = "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 5004 RTP/AVP 0\n";
    const QByteArray dash =
        "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
        "mediaPresentationDuration=\"PT2S\"><Period><AdaptationSet mimeType=\"audio/mp4\"><Representation "
        "id=\"1\" bandwidth=\"1000\"><BaseURL>"
        + uri + "</BaseURL></Representation></AdaptationSet></Period></MPD>\n";
    const QByteArray smil = "RTSPtextrtsp://127.0.0.1/" + secret;
    const QByteArray vobsub = "# VobSub index file, v7 (do not modify this line!)\nsize: 720x576\nid: en, index: 0\n"
                              "timestamp: 00:00:01:000, filepos: 000000000\n";
    const QByteArray avisynth = "WavSource(\"" + secret + "\")\n";
    tree.makeFile("vob.sub", waveFile(source));
    for (const Row &row :
         {Row{"list.ffconcat", concat},
          Row{"list.wav", concat},
          Row{"list.mp3", concat},
          Row{"list.m3u8", hls},
          Row{"hls.wav", hls},
          Row{"list.m3u", secret + '\n'},
          Row{"list.pls", "[playlist]\nFile1=" + secret + '\n'},
          Row{"a.sdp", sdp},
          Row{"sdp.wav", sdp},
          Row{"a.mpd", dash},
          Row{"mpd.mp4", dash},
          Row{"a.rm", smil},
          Row{"vob.idx", vobsub},
          Row{"a.avs", avisynth},
          Row{"a.vpy", avisynth},
          Row{"secret%d.wav", concat},
          Row{"a.asx", "<asx><entry><ref href=\"" + uri + "\"/></entry></asx>"},
          Row{"a.wpl", "<?wpl?><smil><media src=\"" + secret + "\"/></smil>"},
          Row{"a.cue", "FILE \"secret.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"},
          Row{"a.xspf", "<playlist><trackList><track><location>" + uri + "</location></track></trackList></playlist>"},
          Row{"a.txt", "file:" + secret},
          Row{"a.lavfi", "amovie=" + secret}}) {
        const QByteArray path = tree.makeFile(row.name, row.text);
        const OpeningWatch onSecret(secret);
        const OpeningWatch onSub(tree.path("vob.sub"));
        const Decoded result = decoded(path);
        EXPECT_TRUE(result.error) << row.name;
        EXPECT_TRUE(result.samples.empty()) << row.name;
        EXPECT_FALSE(onSecret.wasOpened()) << row.name;
        EXPECT_FALSE(onSub.wasOpened()) << row.name;
    }
    // The watch does see an opening.
    const OpeningWatch watch(secret);
    EXPECT_FALSE(decoded(secret).error);
    EXPECT_TRUE(watch.wasOpened());
}

TEST_F(BrokenSounds, externalDataOfQuickTime_isNotRead)
{
    // A data reference that is an alias to another file instead of "this file" (flags 1).
    QByteArray movie = convert("a.mov", "-c:a pcm_s16le");
    const qsizetype at = movie.indexOf("dref");
    ASSERT_GT(at, 0);
    const qsizetype entry = at + 4 + 8; // version, flags and count of "dref"
    EXPECT_EQ(movie.mid(entry + 4, 4), "url ");
    const QByteArray outside = tree.makeFile("outside", QByteArray(400000, 'x'));
    // The entry holds nothing behind its flags; an alias with a path needs more room than it has, so the type and the
    // flags are turned alone, which makes the library look for the file.
    movie.replace(entry + 4, 4, "alis");
    movie[entry + 11] = 0;
    const OpeningWatch watch(outside);
    const Decoded result = decoded(tree.makeFile("bent.mov", movie));
    EXPECT_FALSE(watch.wasOpened());
    EXPECT_TRUE(result.error || result.samples.size() == source.size());
}

TEST_F(BrokenSounds, hostileBytes_endInBoundedTime)
{
    const std::array names = {"a.wav", "a.flac", "a.m4a", "a.mp3", "a.ogg", "a.opus",
                              "a.wv",  "a.aiff", "a.wma", "a.mka", "a.caf"};
    std::minstd_rand random(7);
    for (const char *name : names) {
        const QByteArray whole = convert(name);
        for (int round = 0; round < 12; ++round) {
            QByteArray bent = whole;
            for (int flip = 0; flip < 1 + round * 2; ++flip) {
                // Most in the tables at both ends.
                const qsizetype near = flip % 3 == 0 ? bent.size() : std::min<qsizetype>(bent.size(), 2000);
                const qsizetype place = qsizetype(random()) % near;
                const qsizetype at = flip % 2 == 0 ? place : bent.size() - 1 - place;
                bent[at] = char(random());
            }
            if (round % 4 == 3)
                bent.truncate(qsizetype(random()) % bent.size());
            const auto start = std::chrono::steady_clock::now();
            const Decoded result = decoded(tree.makeFile("bent", bent));
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << name << ' ' << round;
            EXPECT_TRUE(!result.error || !result.error.localizedFailureReason().isEmpty());
        }
    }
}

TEST_F(BrokenSounds, hugeSparseFiles_openOrFailSoon)
{
    // A terabyte of zeros, alone and behind a good start.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(decoded(tree.makeSparseFile("zeros.mp3", qint64(1) << 40)).error);
    convert("a.mp3");
    ASSERT_EQ(::truncate(tree.path("a.mp3").constData(), off_t(1) << 40), 0);
    std::stop_source stop;
    const auto decoder = CDAudioDecoder::openFile(tree.path("a.mp3"), stop.get_token());
    EXPECT_TRUE(!decoder || (*decoder)->length().samples < std::uint64_t(44100) * 60);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}
