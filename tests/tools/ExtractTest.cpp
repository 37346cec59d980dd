#include "platform/disctracks/SectorCoding.h"
#include "tests/tools/ImageFixture.h"

#include <QDir>
#include <QJsonArray>
#include <QtEndian>

#include <csignal>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype sector = 2352;
constexpr qsizetype headSize = 44;

QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    std::uint32_t state = 7;
    for (char &byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = char(state >> 24);
    }
    return bytes;
}

QByteArray swapped(QByteArray samples)
{
    for (qsizetype at = 0; at + 1 < samples.size(); at += 2)
        std::swap(samples[at], samples[at + 1]);
    return samples;
}

class Extract : public ImageTest
{
protected:
    /// Extracts into "out/taken…" and returns what the command says as JSON.
    QJsonObject extract(const QByteArray &track, const QByteArray &output, const QByteArray &image,
                        int expectedStatus = 0) const
    {
        const ChildResult result =
            runTessaron({"extract", "-q", "--json", "--track", track, "-o", m_tree.path(output), m_tree.path(image)});
        EXPECT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
        return jsonOf(result.output);
    }
    void makeCue(const QByteArray &mode, const QByteArray &image) const
    {
        m_tree.makeFile("out/disc.bin", image);
        m_tree.makeFile("out/disc.cue", "FILE \"disc.bin\" BINARY\n TRACK 01 " + mode + "\n  INDEX 01 00:00:00\n");
    }
    /// Sound files of the kinds that their names say, in "out", with these samples of a CD.
    void makeSounds(const QList<std::pair<QByteArray, QByteArray>> &sounds) const
    {
        for (const auto &[name, samples] : sounds) {
            m_tree.makeFile("out/raw", samples);
            outputOf("ffmpeg",
                     {"-v", "error", "-y", "-f", "s16le", "-ar", "44100", "-ac", "2", "-i", m_tree.path("out/raw"),
                      m_tree.path("out/" + name)});
        }
        m_tree.remove("out/raw");
    }
    /// The samples of a WAVE file with the plain head.
    [[nodiscard]] QByteArray soundOf(const QByteArray &name) const
    {
        const QByteArray wave = m_tree.contents(name);
        EXPECT_EQ(wave.mid(36, 4), "data") << name.constData();
        return wave.mid(headSize, wave.size() < headSize ? 0 : qFromLittleEndian<quint32>(wave.constData() + 40));
    }
    /// What comes out of an image that is one track of data.
    QByteArray taken(const QByteArray &mode, const QByteArray &image, int expectedStatus = 0) const
    {
        makeCue(mode, image);
        extract("1", "out/taken.iso", "out/disc.cue", expectedStatus);
        return m_tree.contents("out/taken.iso");
    }
};

/// Whole sectors around user data, and parts of them.
QByteArray rawSectors(TrackKind kind, const QByteArray &userData, qsizetype userSize, qsizetype offset)
{
    QByteArray sectors;
    for (qsizetype at = 0; at < userData.size(); at += userSize) {
        QByteArray whole(sector, '\0');
        whole.replace(offset, userSize, userData.mid(at, userSize));
        auto *const bytes = reinterpret_cast<std::uint8_t *>(whole.data());
        const BlockAddress address(at / userSize);
        if (kind == TrackKind::Mode1)
            completeMode1Sector(bytes, address);
        else if (kind == TrackKind::Mode2Form1)
            completeForm1Sector(bytes, address, {});
        else
            completeForm2Sector(bytes, address, {});
        sectors += whole;
    }
    return sectors;
}

QByteArray partsOf(const QByteArray &sectors, qsizetype offset, qsizetype length, const QByteArray &behind = {})
{
    QByteArray parts;
    for (qsizetype at = 0; at < sectors.size(); at += sector)
        parts += sectors.mid(at + offset, length) + behind;
    return parts;
}

TEST_F(Extract, data_isTheUserDataAlone_whateverSectorsHoldIt)
{
    const QByteArray data = noise(qsizetype(500) * 2048);
    const QByteArray mode1 = rawSectors(TrackKind::Mode1, data, 2048, 16);
    const QByteArray form1 = rawSectors(TrackKind::Mode2Form1, data, 2048, 24);
    const QByteArray form2Data = noise(qsizetype(500) * 2324);
    const QByteArray form2 = rawSectors(TrackKind::Mode2Form2, form2Data, 2324, 24);
    const QByteArray subchannel(96, 'S');
    EXPECT_TRUE(taken("MODE1/2048", data) == data);
    EXPECT_TRUE(taken("MODE1/2352", mode1) == data);
    EXPECT_TRUE(taken("MODE1/2448", partsOf(mode1, 0, sector, subchannel)) == data);
    EXPECT_TRUE(taken("MODE2/2048", data) == data);
    EXPECT_TRUE(taken("MODE2/2352", form1) == data);
    EXPECT_TRUE(taken("MODE2/2448", partsOf(form1, 0, sector, subchannel)) == data);
    EXPECT_TRUE(taken("MODE2/2336", partsOf(form1, 16, 2336)) == data);
    EXPECT_TRUE(taken("MODE2/2332", partsOf(form1, 16, 2332)) == data);
    EXPECT_TRUE(taken("MODE2/2324", form2Data) == form2Data);
    EXPECT_TRUE(taken("MODE2/2352", form2, 3) == partsOf(form2, 24, 2048)) << "form 2 holds more, which is told";
}

TEST_F(Extract, audio_isAWaveFile_thatOthersRead)
{
    const QByteArray sound = noise(1000 * sector);
    m_tree.makeFile("out/album.bin", "some" + sound);
    m_tree.makeFile("out/big.bin", swapped(sound));
    m_tree.makeFile("out/album.toc",
                    "CD_DA\nTRACK AUDIO\nFILE \"album.bin\" SWAP #4 0 00:05:00\nTRACK AUDIO\nFILE \"big.bin\" 00:05:00 "
                    "00:08:00\nSTART 00:01:00\n");
    const QJsonObject object = extract("all", "out/tracks", "out/album.toc");
    ASSERT_EQ(object[QStringLiteral("tracks")].toArray().size(), 2);
    const QByteArray first = m_tree.contents("out/tracks/track01.wav");
    const QByteArray second = m_tree.contents("out/tracks/track02.wav");
    EXPECT_TRUE(first.mid(headSize) == sound.first(375 * sector));
    EXPECT_TRUE(second.mid(headSize) == sound.mid(450 * sector, 525 * sector));
    const QJsonValue told = object[QStringLiteral("tracks")][1];
    EXPECT_EQ(told[QStringLiteral("pregapLeftOut")].toInteger(), 75);
    EXPECT_EQ(told[QStringLiteral("bytes")].toInteger(), second.size());
    EXPECT_EQ(told[QStringLiteral("path")].toString().toUtf8(), m_tree.path("out/tracks/track02.wav"));
    EXPECT_TRUE(outputOf("sox", {m_tree.path("out/tracks/track01.wav"), "-t", "raw", "-"})
                == sound.first(375 * sector));
    const QByteArray facts = outputOf("soxi", {m_tree.path("out/tracks/track02.wav")});
    EXPECT_TRUE(facts.contains("= 308700 samples")) << facts.constData();
    EXPECT_TRUE(facts.contains("44100") && facts.contains("16-bit")) << facts.constData();
}

TEST_F(Extract, preEmphasis_isTold_sinceTheFileCannotSayIt)
{
    m_tree.makeFile("out/album.bin", noise(200 * sector));
    m_tree.makeFile("out/album.cue",
                    "FILE album.bin BINARY\n TRACK 01 AUDIO\n  FLAGS PRE\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                    "  INDEX 01 00:01:00\n");
    const QJsonArray tracks = extract("all", "out/tracks", "out/album.cue")[QStringLiteral("tracks")].toArray();
    ASSERT_EQ(tracks.size(), 2);
    EXPECT_TRUE(tracks[0][QStringLiteral("preEmphasis")].toBool());
    EXPECT_FALSE(tracks[1][QStringLiteral("preEmphasis")].toBool());
    const ChildResult result =
        runTessaron({"extract", "--track", "all", "-o", m_tree.path("out/others"), m_tree.path("out/album.cue")});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors.count("with pre-emphasis"), 1) << result.errors.constData();
}

TEST_F(Extract, audioOfASoundFile_isItsSamples)
{
    const QByteArray sound = noise(100 * sector);
    m_tree.makeFile("out/raw", sound);
    const QList<QByteArray> raw = {
        "-t", "raw", "-r", "44100", "-e", "signed", "-b", "16", "-c", "2", m_tree.path("out/raw")};
    for (const QByteArray type : {"wav", "aiff"}) {
        outputOf("sox", raw + QList<QByteArray>{m_tree.path("out/sound." + type)});
        m_tree.makeFile("out/album.cue",
                        "FILE \"sound." + type
                            + "\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                              "  INDEX 01 00:00:40\n");
        extract("2", "out/taken.wav", "out/album.cue");
        EXPECT_TRUE(m_tree.contents("out/taken.wav").mid(headSize) == sound.mid(40 * sector)) << type.constData();
    }
    m_tree.makeFile("out/album.mp3", "no sound at all");
    m_tree.makeFile("out/album.cue",
                    "FILE \"album.mp3\" MP3\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                    "  INDEX 01 00:00:40\n");
    for (const QByteArray track : {"1", "2"}) {
        const QJsonObject refused = extract(track, "out/none.wav", "out/album.cue", 1);
        const QString message = refused[QStringLiteral("error")][QStringLiteral("message")].toString();
        EXPECT_TRUE(message.contains(track == "1" ? QStringLiteral("cannot be decoded")
                                                  : QStringLiteral("length is not known")))
            << message.toStdString();
        EXPECT_TRUE(refused[QStringLiteral("notes")][0].toString().contains(QStringLiteral("cannot be decoded")));
    }
    EXPECT_FALSE(m_tree.exists("out/none.wav"));
}

TEST_F(Extract, audioOfCompressedFiles_isDecoded_toTheSample)
{
    // Not a whole number of blocks; the second track begins in the middle of the first file.
    const QByteArray first = noise(100 * sector + 400), second = noise(60 * sector + 4).mid(0, 55 * sector + 8);
    makeSounds({{"first.flac", first}, {"second.wv", second}, {"lossy.mp3", first}});
    m_tree.makeFile("out/album.cue",
                    "FILE \"first.flac\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                    "  INDEX 00 00:00:38\n  INDEX 01 00:00:40\n"
                    "FILE \"second.wv\" WAVE\n TRACK 03 AUDIO\n  INDEX 00 00:00:00\n  INDEX 01 00:00:05\n"
                    "FILE \"lossy.mp3\" MP3\n TRACK 04 AUDIO\n  INDEX 01 00:00:00\n");
    const QJsonValue tracks = extract("all", "out/tracks", "out/album.cue")[QStringLiteral("tracks")];
    EXPECT_TRUE(soundOf("out/tracks/track01.wav") == first.first(38 * sector));
    EXPECT_TRUE(soundOf("out/tracks/track02.wav") == first.mid(40 * sector));
    EXPECT_TRUE(soundOf("out/tracks/track03.wav") == second.mid(5 * sector));
    const QByteArray lossy = outputOf(
        "ffmpeg", {"-v", "error", "-i", m_tree.path("out/lossy.mp3"), "-f", "s16le", "-ac", "2", "-ar", "44100", "-"});
    EXPECT_EQ(soundOf("out/tracks/track04.wav").size(), first.size());
    EXPECT_EQ(lossy.size(), first.size());
    EXPECT_EQ(tracks[1][QStringLiteral("blocks")].toInteger(), 60);
    EXPECT_EQ(tracks[1][QStringLiteral("bytes")].toInteger(), 60 * sector + 400 + headSize);
    EXPECT_EQ(tracks[1][QStringLiteral("pregapLeftOut")].toInteger(), 2);
    // Any order, and one alone.
    extract("2", "out/taken.wav", "out/album.cue");
    EXPECT_TRUE(soundOf("out/taken.wav") == first.mid(40 * sector));
}

TEST_F(Extract, samplesBehindTheLastBlock_areTaken_ofPlainSoundToo)
{
    const QByteArray sound = noise(10 * sector + 1000);
    for (const QByteArray type : {"wav", "aiff"}) {
        makeSounds({{"sound." + type, sound}});
        m_tree.makeFile("out/album.cue", "FILE \"sound." + type + "\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n");
        extract("1", "out/taken.wav", "out/album.cue");
        EXPECT_TRUE(soundOf("out/taken.wav") == sound) << type.constData();
        m_tree.makeFile("out/album.toc", "CD_DA\nTRACK AUDIO\nFILE \"sound.wav\" 0\n");
    }
    extract("1", "out/taken.wav", "out/album.toc");
    EXPECT_TRUE(soundOf("out/taken.wav") == sound);
}

TEST_F(Extract, flac_holdsTheSameSamples_andTagsOfTheDisc)
{
    const QByteArray sound = noise(300 * sector);
    m_tree.makeFile("out/disc.bin", sound);
    m_tree.makeFile("out/disc.cue",
                    "TITLE \"Große Welt\"\nPERFORMER \"Anna & Co\"\nFILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n"
                    "  TITLE \"Eins\"\n  PERFORMER \"Anna\"\n  SONGWRITER \"Ben\"\n  ISRC DEA620212345\n"
                    "  INDEX 01 00:00:00\n TRACK 02 AUDIO\n  TITLE \"Zwei\"\n  INDEX 01 00:02:00\n");
    extract("1", "out/one.flac", "out/disc.cue");
    const QByteArray decoded = outputOf(
        "flac",
        {"-d", "-s", "-c", "--force-raw-format", "--endian=little", "--sign=signed", m_tree.path("out/one.flac")});
    EXPECT_TRUE(decoded == sound.first(150 * sector));
    EXPECT_TRUE(outputOf("flac", {"-t", "-s", "-w", m_tree.path("out/one.flac")}).isEmpty());
    const QByteArray tags =
        outputOf("metaflac", {"--export-tags-to=-", "--no-utf8-convert", m_tree.path("out/one.flac")});
    for (const char *const tag : {"TITLE=Eins", "ARTIST=Anna", "ALBUM=Große Welt", "ALBUMARTIST=Anna & Co",
                                  "SONGWRITER=Ben", "ISRC=DEA620212345", "TRACKNUMBER=1", "TRACKTOTAL=2"})
        EXPECT_TRUE(tags.split('\n').contains(tag)) << tag << "\n" << tags.constData();
    EXPECT_EQ(outputOf("metaflac", {"--show-total-samples", m_tree.path("out/one.flac")}), "88200\n");
    const ChildResult all = runTessaron({"extract", "-q", "--track", "all", "--format", "flac", "-o",
                                         m_tree.path("out/all"), m_tree.path("out/disc.cue")});
    EXPECT_EQ(all.exitStatus, 0) << all.errors.constData();
    EXPECT_TRUE(m_tree.contents("out/all/track01.flac") == m_tree.contents("out/one.flac"));
    EXPECT_TRUE(m_tree.exists("out/all/track02.flac"));
}

TEST_F(Extract, wave_hasTheTags_behindItsSamples)
{
    const QByteArray sound = noise(20 * sector);
    m_tree.makeFile("out/disc.bin", sound);
    m_tree.makeFile("out/disc.cue",
                    "TITLE \"Große Welt\"\nFILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n  TITLE \"Eins\"\n"
                    "  PERFORMER \"Anna\"\n  INDEX 01 00:00:00\n");
    extract("1", "out/one.wav", "out/disc.cue");
    const QByteArray wave = m_tree.contents("out/one.wav");
    EXPECT_TRUE(wave.mid(headSize, sound.size()) == sound);
    EXPECT_EQ(wave.mid(headSize + sound.size(), 4), "LIST");
    EXPECT_EQ(qFromLittleEndian<quint32>(wave.constData() + 4), quint32(wave.size()) - 8);
    const QByteArray seen = outputOf(
        "ffprobe",
        {"-v", "error", "-show_entries", "format_tags:stream=duration_ts", "-of", "flat", m_tree.path("out/one.wav")});
    for (const char *const line : {"tags.title=\"Eins\"", "tags.artist=\"Anna\"", "tags.album=\"Große Welt\"",
                                   "tags.track=\"1\"", "duration_ts=11760"})
        EXPECT_TRUE(seen.contains(line)) << line << "\n" << seen.constData();
    EXPECT_TRUE(outputOf("sox", {m_tree.path("out/one.wav"), "-t", "raw", "-"}) == sound);
}

TEST_F(Extract, hiddenSound_isTakenWhereAskedFor)
{
    const QByteArray sound = noise(100 * sector);
    m_tree.makeFile("out/disc.bin", sound);
    m_tree.makeFile("out/disc.cue",
                    "FILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 00 00:00:00\n  INDEX 01 00:00:30\n"
                    " TRACK 02 AUDIO\n  INDEX 01 00:01:00\n");
    const QJsonValue told = extract("all", "out/plain", "out/disc.cue")[QStringLiteral("tracks")];
    EXPECT_FALSE(m_tree.exists("out/plain/track00.wav"));
    EXPECT_EQ(told[0][QStringLiteral("pregapLeftOut")].toInteger(), 30);
    extract("0", "out/hidden.wav", "out/disc.cue");
    EXPECT_TRUE(soundOf("out/hidden.wav") == sound.first(30 * sector));
    const ChildResult all = runTessaron({"extract", "-q", "--json", "--track", "all", "--hidden", "--no-sync", "-o",
                                         m_tree.path("out/all"), m_tree.path("out/disc.cue")});
    EXPECT_EQ(all.exitStatus, 0);
    const QJsonValue tracks = jsonOf(all.output)[QStringLiteral("tracks")];
    EXPECT_EQ(tracks[0][QStringLiteral("track")].toInteger(), 0);
    EXPECT_EQ(tracks[1][QStringLiteral("pregapLeftOut")].toInteger(), 0) << "nothing is left out now";
    EXPECT_TRUE(soundOf("out/all/track00.wav") + soundOf("out/all/track01.wav") + soundOf("out/all/track02.wav")
                == sound);
    makeCue("AUDIO", sound);
    const QJsonObject none = extract("0", "out/none.wav", "out/disc.cue", 1);
    EXPECT_TRUE(none[QStringLiteral("error")][QStringLiteral("message")].toString().contains(
        QStringLiteral("no sound in front of the first track")));
    const ChildResult without = runTessaron(
        {"extract", "--track", "all", "--hidden", "-o", m_tree.path("out/all"), m_tree.path("out/disc.cue")});
    EXPECT_EQ(without.exitStatus, 0);
    EXPECT_TRUE(without.errors.contains("There is no sound in front of the first track")) << without.errors.constData();
}

TEST_F(Extract, damageOfASound_isToldWithItsTrack)
{
    const QByteArray sound = noise(400 * sector);
    makeSounds({{"sound.flac", sound}});
    QByteArray flac = m_tree.contents("out/sound.flac");
    flac[flac.size() * 3 / 4] = char(flac[flac.size() * 3 / 4] ^ 1);
    m_tree.makeFile("out/sound.flac", flac);
    m_tree.makeFile("out/album.cue",
                    "FILE \"sound.flac\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                    "  INDEX 01 00:02:00\n TRACK 03 AUDIO\n  INDEX 01 00:05:00\n");
    const ChildResult result = runTessaron(
        {"extract", "--json", "--track", "all", "-o", m_tree.path("out/tracks"), m_tree.path("out/album.cue")});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("track 2: at ")) << result.errors.constData();
    const QJsonValue tracks = jsonOf(result.output)[QStringLiteral("tracks")];
    EXPECT_EQ(tracks[0][QStringLiteral("damagedPlaces")].toInteger(), 0);
    EXPECT_GT(tracks[1][QStringLiteral("damagedPlaces")].toInteger(), 0);
    EXPECT_EQ(tracks[2][QStringLiteral("damagedPlaces")].toInteger(), 0);
    EXPECT_TRUE(soundOf("out/tracks/track01.wav") == sound.first(150 * sector));
    EXPECT_TRUE(soundOf("out/tracks/track03.wav") == sound.mid(375 * sector));
    EXPECT_EQ(soundOf("out/tracks/track02.wav").size(), 225 * sector);
}

TEST_F(Extract, graphics_areLeftOutOfAudio)
{
    const QByteArray sound = noise(20 * sector);
    makeCue("CDG", partsOf(sound, 0, sector, QByteArray(96, 'G')));
    extract("1", "out/taken.wav", "out/disc.cue");
    EXPECT_TRUE(m_tree.contents("out/taken.wav").mid(headSize) == sound);
}

TEST_F(Extract, tracksOfVantAndPlainImages_areTakenOut)
{
    makeOrdinaryTree();
    for (const QByteArray name : {"out/disc.vant", "out/disc.iso"})
        EXPECT_EQ(runTessaron({"image", "-q", "-o", m_tree.path(name), m_tree.path("source")}).exitStatus, 0);
    const QByteArray iso = m_tree.contents("out/disc.iso");
    extract("1", "out/plain.iso", "out/disc.iso");
    EXPECT_TRUE(m_tree.contents("out/plain.iso") == iso);
    extract("1", "out/vant.iso", "out/disc.vant");
    EXPECT_EQ(runTessaron({"verify", "-q", m_tree.path("out/vant.iso"), m_tree.path("source")}).exitStatus, 0);
}

TEST_F(Extract, damagedSectors_areTold_andTakenAsTheyAre)
{
    const QByteArray data = noise(qsizetype(20) * 2048);
    QByteArray raw = rawSectors(TrackKind::Mode1, data, 2048, 16);
    raw[7 * sector + 500] = char(raw[7 * sector + 500] ^ 1);
    raw[9 * sector + 2300] = char(raw[9 * sector + 2300] ^ 1);
    makeCue("MODE1/2352", raw);
    const ChildResult result = runTessaron(
        {"extract", "--json", "--track", "1", "-o", m_tree.path("out/taken.iso"), m_tree.path("out/disc.cue")});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("track 1: 2 sectors are damaged, the first one is block 7"))
        << result.errors.constData();
    const QJsonValue track = jsonOf(result.output)[QStringLiteral("tracks")][0];
    EXPECT_EQ(track[QStringLiteral("damagedSectors")].toInteger(), 2);
    EXPECT_TRUE(track[QStringLiteral("checked")].toBool());
    EXPECT_TRUE(m_tree.contents("out/taken.iso") == partsOf(raw, 16, 2048));
}

TEST_F(Extract, failure_leavesNothing_andSaysWhy)
{
    makeCue("AUDIO", noise(10 * sector));
    const auto message = [&](const QByteArray &track, const QByteArray &output, const QByteArray &image) {
        return extract(track, output, image, 1)[QStringLiteral("error")][QStringLiteral("message")].toString();
    };
    EXPECT_TRUE(message("2", "out/x.wav", "out/disc.cue").contains(QStringLiteral("has no track 2")));
    EXPECT_TRUE(message("1", "out/none/x.wav", "out/disc.cue").contains(QStringLiteral("does not exist")));
    EXPECT_TRUE(message("1", "out/disc.bin", "out/disc.cue").contains(QStringLiteral("is what is to be read")));
    EXPECT_TRUE(message("1", "out/disc.cue", "out/disc.cue").contains(QStringLiteral("is what is to be read")));
    EXPECT_TRUE(message("all", "out/disc.bin", "out/disc.cue").contains(QStringLiteral("is not a folder")));
    EXPECT_TRUE(message("1", "out/x.wav", "out/missing.cue").contains(QStringLiteral("cannot be read")));
    const auto advice = [&](const QByteArray &output) {
        return extract("1", output, "out/disc.cue", 1)[QStringLiteral("error")][QStringLiteral("advice")].toString();
    };
    EXPECT_EQ(advice("out"), QStringLiteral("Name a file in it, or take all tracks."));
    m_tree.makeFifo("pipe");
    EXPECT_EQ(advice("pipe"), QStringLiteral("Name another file."));
    EXPECT_EQ(outNames(), (std::set<std::string>{"disc.bin", "disc.cue"}));
    m_tree.makeFile("out/disc.cue",
                    "FILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\nFILE \"s.mp3\" MP3\n"
                    " TRACK 02 AUDIO\n  INDEX 01 00:00:00\n");
    m_tree.makeFile("out/s.mp3", "x");
    EXPECT_TRUE(message("all", "out/tracks", "out/disc.cue").contains(QStringLiteral("track 2 cannot be taken out")));
    EXPECT_FALSE(m_tree.exists("out/tracks"));
}

TEST_F(Extract, namesThatSayAnotherKindOfFile_areRefused)
{
    const auto refusalOf = [this](const QList<QByteArray> &words) {
        const ChildResult result = runTessaron(QList<QByteArray>{"extract", "--track", "1"} + words
                                               + QList<QByteArray>{m_tree.path("out/disc.cue")});
        EXPECT_EQ(result.exitStatus, 2) << words.join(' ').constData() << result.errors.constData();
        EXPECT_EQ(outNames(), (std::set<std::string>{"disc.bin", "disc.cue"}));
        return result.errors;
    };
    makeCue("MODE1/2048", QByteArray(qsizetype(10) * 2048, 'd'));
    for (const char *const name : {"out/x.wav", "out/x.WAVE", "out/x.flac", "out/x.mp3"}) {
        const QByteArray errors = refusalOf({"-o", m_tree.path(name)});
        EXPECT_TRUE(errors.contains("track 1 is data")) << errors.constData();
        EXPECT_TRUE(errors.contains("Name an output that ends in .iso.")) << errors.constData();
    }
    makeCue("AUDIO", noise(10 * sector));
    for (const char *const name : {"out/x.iso", "out/x.toc", "out/x.mp3"}) {
        const QByteArray errors = refusalOf({"-o", m_tree.path(name)});
        EXPECT_TRUE(errors.contains("track 1 is sound")) << errors.constData();
        EXPECT_TRUE(errors.contains("Name an output that ends in .wav")) << errors.constData();
    }
    EXPECT_TRUE(refusalOf({"--format", "flac", "-o", m_tree.path("out/x.wav")}).contains("becomes a FLAC file"));
    EXPECT_TRUE(refusalOf({"--format", "wav", "-o", m_tree.path("out/x.flac")}).contains("becomes a WAVE file"));
    EXPECT_EQ(runTessaron({"extract", "-q", "--track", "1", "-o", m_tree.path("out/song"), m_tree.path("out/disc.cue")})
                  .exitStatus,
              0)
        << "a name that says nothing";
}

TEST_F(Extract, progressAndCancel_areThoseOfAJob)
{
    // Sparse: it takes long to read, and no room.
    m_tree.makeSparseFile("out/disc.bin", qint64(300000) * sector);
    m_tree.makeFile("out/disc.cue", "FILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n");
    ChildProcess child(tessaron({"extract", "--json", "--progress", "json", "--track", "all", "-o",
                                 m_tree.path("out/tracks"), m_tree.path("out/disc.cue")}));
    ASSERT_TRUE(child.waitUntil([&] { return child.errorsSoFar().contains("\"writing\""); }));
    child.sendSignal(SIGINT);
    const ChildResult result = child.finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("result")].toString(), QStringLiteral("cancelled"));
    EXPECT_EQ(outNames(), (std::set<std::string>{"disc.bin", "disc.cue"}));
}

TEST_F(Extract, killedProcess_leavesNoTrack)
{
    m_tree.makeSparseFile("out/disc.bin", qint64(300000) * sector);
    m_tree.makeFile("out/disc.cue",
                    "FILE \"disc.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n"
                    "  INDEX 01 30:00:00\n");
    for (const QByteArray form : {"wav", "flac"}) {
        ChildProcess child(tessaron({"extract", "--progress", "json", "--format", form, "--track", "all", "-o",
                                     m_tree.path("out/tracks"), m_tree.path("out/disc.cue")}));
        ASSERT_TRUE(child.waitUntil([&] { return child.errorsSoFar().contains("\"writing\""); }));
        const auto filesLeft = [&] {
            return QDir(m_tree.pathText("out/tracks")).entryList(QDir::Files | QDir::Hidden);
        };
        if (!filesLeft().isEmpty())
            GTEST_SKIP() << "the filesystem of the temporary folder knows no files without a name";
        child.sendSignal(SIGKILL);
        EXPECT_EQ(child.finish().signal, SIGKILL);
        EXPECT_TRUE(filesLeft().isEmpty());
    }
}

} // namespace

} // namespace Tessaron::Testing
