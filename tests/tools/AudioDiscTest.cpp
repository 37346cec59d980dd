#include "tests/tools/AudioFixture.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <cmath>
#include <filesystem>

// Discs of sound that are more than a file after the other: cue sheets as the source, tracks of data in front,
// loudness, streams. What is made is read by programs that others wrote.

namespace Tessaron::Testing
{

namespace
{

class AudioDisc : public Audio
{
protected:
    /// The whole recording in one file of any format.
    void makeWhole(const QByteArray &name) const
    {
        m_tree.makeFile("whole.wav", waveFile(recording));
        if (name != "whole.wav")
            ffmpeg("-i " + m_tree.path("whole.wav") + ' ' + m_tree.path(name));
    }
    void makeSheet(const QByteArray &text) const { m_tree.makeFile("album.cue", text); }
    [[nodiscard]] QByteArray inFolder(const QByteArray &program, const QList<QByteArray> &words) const
    {
        return outputOf(program, words, m_tree.path("out"));
    }
    void makeInTwoLanguages(const QByteArray &name) const
    {
        ffmpeg("-i " + m_tree.path("1.wav") + " -c:a flac -metadata title=One -metadata title-ger=Eins "
               + m_tree.path(name));
    }
    /// "Integrated loudness" of a file, by ffmpeg.
    [[nodiscard]] double loudnessOf(const QByteArray &path) const
    {
        ChildSettings settings;
        settings.program = "ffmpeg";
        settings.arguments = {"-nostdin", "-hide_banner", "-i", path, "-af", "ebur128=peak=true", "-f", "null", "-"};
        const QString told = QString::fromUtf8(runChild(settings).errors);
        return lastNumber(told, QStringLiteral("I: +(-?[0-9.]+) LUFS"));
    }
    [[nodiscard]] static double lastNumber(const QString &text, const QString &pattern)
    {
        QRegularExpressionMatchIterator matches = QRegularExpression(pattern).globalMatch(text);
        double number = std::nan("");
        while (matches.hasNext())
            number = matches.next().captured(1).toDouble();
        return number;
    }
};

TEST_F(AudioDisc, sheetOfOneFile_givesItsTracks_toTheSample)
{
    for (const QByteArray name : {"whole.wav", "whole.flac"}) {
        makeWhole(name);
        makeSheet("REM GENRE none\nCATALOG 4012345678901\nPERFORMER \"Someone\"\nTITLE \"Album\"\nFILE \"" + name
                  + "\" WAVE\n TRACK 01 AUDIO\n  TITLE \"First\"\n  ISRC DEABC1234567\n  INDEX 01 00:00:00\n"
                    " TRACK 02 AUDIO\n  TITLE \"Second\"\n  FLAGS DCP\n  INDEX 00 00:04:00\n  INDEX 01 00:04:30\n"
                    "  INDEX 02 00:06:00\n");
        make({"--cd-text"}, {"album.cue"});
        EXPECT_EQ(bin(), wholeFrames(bytesOf(recording))) << name.constData();
        EXPECT_EQ(cue(),
                  "CATALOG 4012345678901\r\nTITLE \"Album\"\r\nPERFORMER \"Someone\"\r\nFILE \"album.bin\" BINARY\r\n"
                  "  TRACK 01 AUDIO\r\n    TITLE \"First\"\r\n    ISRC DEABC1234567\r\n    INDEX 01 00:00:00\r\n"
                  "  TRACK 02 AUDIO\r\n    TITLE \"Second\"\r\n    FLAGS DCP\r\n    INDEX 00 00:04:00\r\n"
                  "    INDEX 01 00:04:30\r\n    INDEX 02 00:06:00\r\n");
    }
}

TEST_F(AudioDisc, sheetOfManyFiles_joinsWhatWasCut)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("2.wav") + ' ' + m_tree.path("2.flac"));
    makeSheet("FILE \"1.wav\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n  INDEX 00 00:03:00\n"
              "FILE \"2.flac\" WAVE\n  INDEX 01 00:00:00\nFILE \"3.wav\" WAVE\n TRACK 03 AUDIO\n  INDEX 01 00:00:00\n");
    make({}, {"album.cue"});
    EXPECT_EQ(bin(), wholeFrames(bytesOf(recording)));
    EXPECT_TRUE(cue().contains("  TRACK 02 AUDIO\r\n    INDEX 00 00:03:00\r\n    INDEX 01 00:04:01\r\n"))
        << cue().constData();
    EXPECT_TRUE(cue().contains("  TRACK 03 AUDIO\r\n    INDEX 01 00:09:01\r\n")) << cue().constData();
}

TEST_F(AudioDisc, sheetOfFilesThatWereCompressedSince_findsThem_andSaysSo)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("1.wav") + ' ' + m_tree.path("1.flac"));
    std::filesystem::remove(m_tree.path("1.wav").toStdString());
    makeSheet("FILE \"1.wav\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n"
              "FILE \"2.wav\" WAVE\n TRACK 02 AUDIO\n  INDEX 01 00:00:00\n");
    const ChildResult result = run({"--json"}, {"album.cue"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(bin(), wholeFrames(bytesOf(partOf(recording, 0, oneLength + otherLength))));
    EXPECT_EQ(result.errors.count("“1.wav” is not there; “1.flac” was taken in its place."), 1)
        << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("notes")].toArray().size(), 1);
    m_tree.makeFile("1.ape", "another one");
    const ChildResult unclear = run({}, {"album.cue"});
    EXPECT_EQ(unclear.exitStatus, 1);
    EXPECT_TRUE(unclear.errors.contains("“1.ape” or “1.flac” could be meant")) << unclear.errors.constData();
}

TEST_F(AudioDisc, sheetWithGapsThatNoFileHolds_getsSilence)
{
    makeAlbum();
    makeSheet("FILE 1.wav WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\nFILE 2.wav WAVE\n TRACK 02 AUDIO\n"
              "  PREGAP 00:01:00\n  INDEX 01 00:00:00\n  POSTGAP 00:00:10\n");
    make({}, {"album.cue"});
    EXPECT_EQ(bin(),
              wholeFrames(bytesOf(partOf(recording, 0, oneLength))) + zeros(75 * frameSize)
                  + wholeFrames(bytesOf(partOf(recording, oneLength, otherLength))) + zeros(10 * frameSize));
    EXPECT_TRUE(cue().contains("    INDEX 00 00:04:01\r\n    INDEX 01 00:05:01\r\n")) << cue().constData();
}

TEST_F(AudioDisc, sheetAmongFiles_keepsItsOwnGaps)
{
    makeAlbum();
    makeSheet("FILE 2.wav WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n  INDEX 01 00:02:00\n");
    make({"--gap", "1"}, {"1.wav", "album.cue"});
    EXPECT_EQ(bin(),
              wholeFrames(bytesOf(partOf(recording, 0, oneLength))) + zeros(75 * frameSize)
                  + wholeFrames(bytesOf(partOf(recording, oneLength, otherLength))));
    EXPECT_EQ(cue().count("INDEX 00"), 1) << cue().constData();
    EXPECT_EQ(cue().count("TRACK"), 3) << cue().constData();
}

TEST_F(AudioDisc, sheetThatCannotBeUsed_isNamedWithItsLine)
{
    makeAlbum();
    struct Row {
        const char *sheet;
        const char *says;
    };
    for (const Row &row : {Row{"FILE missing.wav WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n", "Line 1"},
                           Row{"FILE 1.wav WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:99\n", "Line 3"},
                           Row{"FILE 1.wav WAVE\n TRACK 01 AUDIO\n  INDEX 01 01:00:00\n", "Line 3"},
                           Row{"FILE 1.wav BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n", "Line 1"},
                           Row{"FILE 1.wav WAVE\n TRACK 01 MODE1/2352\n  INDEX 01 00:00:00\n", "track 1 holds data"},
                           Row{"no sheet\n", "not a cue sheet"}}) {
        makeSheet(row.sheet);
        const ChildResult result = run({}, {"album.cue"});
        expectNothing(result, 1, row.says);
        EXPECT_TRUE(result.errors.contains("album.cue")) << result.errors.constData();
    }
    expectNothing(run({}, {"none.cue"}), 1, "none.cue");
    m_tree.makeFile("disc.toc", "CD_DA\nTRACK AUDIO\nFILE \"1.wav\" 0\n");
    expectNothing(run({}, {"disc.toc"}), 1, "is a .toc file, which describes a disc and is not sound");
    expectNothing(run({}, {"disc.toc"}), 1, "Take its tracks out");
}

TEST_F(AudioDisc, notesOfASheet_areTold)
{
    makeAlbum();
    makeSheet("FILE 1.wav WAVE\n TRACK 01 AUDIO\n  COLOUR red\n  INDEX 01 00:00:00\n");
    const ChildResult result = run({"--json"}, {"album.cue"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.errors.contains("line 3")) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("notes")].toArray().size(), 1);
}

TEST_F(AudioDisc, data_isTrackOneOfAMixedDisc_thatOthersRead)
{
    makeAlbum();
    makeOrdinaryTree();
    make({"--data", m_tree.path("source"), "--name", "EXTRAS"}, {"1.wav", "2.wav"});
    const QByteArray sheet = cue();
    EXPECT_TRUE(sheet.contains("  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n  TRACK 02 AUDIO\r\n    INDEX 00 "))
        << sheet.constData();
    EXPECT_EQ(bin().size() % frameSize, 0);
    const QByteArray sound = wholeFrames(bytesOf(partOf(recording, 0, oneLength + otherLength)));
    EXPECT_EQ(bin().right(sound.size()), sound);
    EXPECT_EQ(bin().chopped(sound.size()).right(150 * frameSize), zeros(150 * frameSize)) << "silence behind the data";
    // The sectors of data are whole up to the last one of the postgap.
    const qsizetype dataSize = bin().size() - sound.size() - 150 * frameSize;
    const QByteArray sync = QByteArray(1, '\0') + QByteArray(10, '\xff') + QByteArray(1, '\0');
    for (qsizetype at = 0; at < dataSize; at += frameSize)
        ASSERT_EQ(bin().mid(at, 12), sync) << at / frameSize;
    EXPECT_EQ(bin().mid(dataSize - 150 * frameSize + 16, 2048), zeros(2048));

    outputOf("bchunk", {"-w", "album.bin", "album.cue", "track"}, m_tree.path("out"));
    const QByteArray listed = inFolder("isoinfo", {"-R", "-f", "-i", "track01.iso"});
    EXPECT_FALSE(listed.isEmpty());
    EXPECT_EQ(outputOf("7z", {"t", m_tree.path("out/track01.iso")}).count("Everything is Ok"), 1);
    EXPECT_EQ(m_tree.contents("out/track03.wav").mid(44), sound.right(m_tree.contents("out/track03.wav").size() - 44));
    const QByteArray info = inFolder("cd-info", {"--no-header", "--no-device-info", "--cue-file=album.cue"});
    EXPECT_EQ(info.count(" audio "), 2) << info.constData();
    EXPECT_EQ(info.count(" data "), 1) << info.constData();
    EXPECT_TRUE(info.contains("EXTRAS")) << info.constData();
    const QByteArray toc = inFolder("cdrdao", {"show-toc", "album.cue"});
    EXPECT_EQ(toc.count("Mode AUDIO"), 2) << toc.constData();
}

TEST_F(AudioDisc, data_isFoundByOurOwnCommands)
{
    makeAlbum();
    makeOrdinaryTree();
    for (const QByteArray name : {"out/album.bin", "out/album.vant"}) {
        const ChildResult made = runTessaron({"audio", "-o", m_tree.path(name), "--data", m_tree.path("source"),
                                              m_tree.path("1.wav"), m_tree.path("2.wav")});
        EXPECT_EQ(made.exitStatus, 0) << made.errors.constData();
        const ChildResult inspected = runTessaron({"inspect", m_tree.path(name)});
        EXPECT_EQ(inspected.exitStatus, 0) << inspected.errors.constData();
        const ChildResult verified = runTessaron({"verify", m_tree.path(name), m_tree.path("source")});
        EXPECT_EQ(verified.exitStatus, 0) << verified.errors.constData();
        const QJsonArray tracks =
            jsonOf(runTessaron({"tracks", "--json", m_tree.path(name)}).output)[QStringLiteral("tracks")].toArray();
        ASSERT_EQ(tracks.size(), 3) << name.constData();
        EXPECT_EQ(tracks[0].toObject()[QStringLiteral("kind")].toString(), QStringLiteral("mode1"));
        EXPECT_EQ(tracks[1].toObject()[QStringLiteral("pregap")].toInt(), 150);
        const QByteArray data = m_tree.path("out/data.iso");
        const ChildResult extracted = runTessaron({"extract", "--track", "1", "-o", data, m_tree.path(name)});
        EXPECT_EQ(extracted.exitStatus, 0) << extracted.errors.constData();
        EXPECT_EQ(runTessaron({"verify", data, m_tree.path("source")}).exitStatus, 0);
        const QByteArray wave = m_tree.path("out/2.wav");
        EXPECT_EQ(runTessaron({"extract", "--track", "3", "-o", wave, m_tree.path(name)}).exitStatus, 0);
        const QByteArray sound = wholeFrames(bytesOf(partOf(recording, 0, oneLength + otherLength)));
        EXPECT_EQ(m_tree.contents("out/2.wav").mid(44), sound.mid(framesUpTo(oneLength) * frameSize));
        m_tree.remove("out/data.iso");
        m_tree.remove("out/2.wav");
    }
}

TEST_F(AudioDisc, data_countsForTheCapacity)
{
    m_tree.makeFile("a.wav", waveFile(Samples(std::size_t(8000) * 60 * 73), 1, 8000));
    makeOrdinaryTree();
    makeBigFile("source/big", 160'000'000);
    expectNothing(run({"--capacity", "74", "--data", m_tree.path("source")}, {"a.wav"}), 1, "more than the 74:00:00");
}

TEST_F(AudioDisc, data_isTold_withWhatItLoses)
{
    makeAlbum();
    makeOrdinaryTree();
    const ChildResult result = run({"--json", "--data", m_tree.path("source")}, {"1.wav"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject data = jsonOf(result.output)[QStringLiteral("data")].toObject();
    EXPECT_EQ(data[QStringLiteral("volumeName")].toString(), QStringLiteral("source"));
    EXPECT_GT(data[QStringLiteral("files")].toInt(), 0);
    EXPECT_EQ(data[QStringLiteral("bytes")].toInteger() % frameSize, 0);
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("tracks")].toArray()[0].toObject()[QStringLiteral("track")].toInt(),
              2);
    const ChildResult named = run({"--name", QByteArray(300, 'x'), "--data", m_tree.path("source")}, {"1.wav"});
    EXPECT_EQ(named.exitStatus, 3);
    EXPECT_TRUE(named.errors.contains("volume")) << named.errors.constData();
}

TEST_F(AudioDisc, name_needsData)
{
    makeAlbum();
    expectNothing(run({"--name", "X"}, {"1.wav"}), 2, "--data, which was not given");
}

TEST_F(AudioDisc, data_mustBeAFolder)
{
    makeAlbum();
    expectNothing(run({"--data", m_tree.path("2.wav")}, {"1.wav"}), 1, "is not a folder");
    expectNothing(run({"--data", m_tree.path("missing")}, {"1.wav"}), 1, "missing");
}

TEST_F(AudioDisc, normalize_givesAllFilesOneGain)
{
    m_tree.makeFile("soft.wav", waveFile(tone(std::size_t(6) * 44100, 2, 44100, 0.02)));
    m_tree.makeFile("loud.wav", waveFile(tone(std::size_t(6) * 44100, 2, 44100, 0.08)));
    const ChildResult result = run({"--normalize", "--json"}, {"soft.wav", "loud.wav"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    m_tree.makeFile("made.wav", waveFile(samplesOf(bin())));
    EXPECT_NEAR(loudnessOf(m_tree.path("made.wav")), -18, 0.2);
    const QJsonArray tracks = jsonOf(result.output)[QStringLiteral("tracks")].toArray();
    const auto of = [&](int track, const char *key) {
        return tracks[track].toObject()[QString::fromLatin1(key)].toDouble();
    };
    EXPECT_EQ(of(0, "gain"), of(1, "gain"));
    EXPECT_NEAR(of(1, "loudness") - of(0, "loudness"), 12.04, 0.2);
    EXPECT_NEAR(of(0, "loudness"), loudnessOf(m_tree.path("soft.wav")), 0.15);
    const Samples made = samplesOf(bin()), soft = tone(std::size_t(6) * 44100, 2, 44100, 0.02);
    const double factor = std::pow(10, of(0, "gain") / 20);
    for (std::size_t index = 0; index < soft.size(); index += 97)
        ASSERT_NEAR(made[index], soft[index] * factor, 2 + std::abs(soft[index]) * 0.002) << index;
}

TEST_F(AudioDisc, normalizeEach_makesFilesEquallyLoud_butNeverLouderThanTheirPeaksAllow)
{
    m_tree.makeFile("soft.wav", waveFile(tone(std::size_t(6) * 44100, 2, 44100, 0.02)));
    m_tree.makeFile("loud.wav", waveFile(tone(std::size_t(6) * 44100, 2, 44100, 0.9)));
    Samples peaky = tone(std::size_t(6) * 44100, 2, 44100, 0.01);
    for (std::size_t index = 100'000; index < 100'020; ++index)
        peaky[index] = 30'000;
    m_tree.makeFile("peaky.wav", waveFile(peaky));
    m_tree.makeFile("silent.wav", waveFile(Samples(std::size_t(12) * 44100)));
    const ChildResult result =
        run({"--normalize-each", "--no-gapless", "-v"}, {"soft.wav", "loud.wav", "peaky.wav", "silent.wav"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("LUFS") && result.errors.contains(", silent")) << result.errors.constData();
    const Samples made = samplesOf(bin());
    const std::size_t length = std::size_t(6) * 88200;
    const auto part = [&](std::size_t track) {
        return Samples(made.begin() + std::ptrdiff_t(track * length),
                       made.begin() + std::ptrdiff_t((track + 1) * length));
    };
    for (const std::size_t track : {0, 1}) {
        m_tree.makeFile("part.wav", waveFile(part(track)));
        EXPECT_NEAR(loudnessOf(m_tree.path("part.wav")), -18, 0.2) << track;
    }
    const Samples third = part(2);
    EXPECT_LE(*std::max_element(third.begin(), third.end()), int(32768 * std::pow(10, -1.0 / 20)) + 2);
    EXPECT_EQ(part(3), Samples(length)) << "silence stays silent";
}

TEST_F(AudioDisc, stream_getsTheSameImageAsAFile)
{
    makeAlbum();
    makeOrdinaryTree();
    for (const QByteArray options : {"", "--gap 1", "--data $D/source", "--normalize"}) {
        ChildSettings settings;
        settings.program = "bash";
        settings.environment = {"T=" + tessaron({}).program, "D=" + m_tree.path(), "SOURCE_DATE_EPOCH=1000000000"};
        settings.arguments = {"-c",
                              "set -e -o pipefail; cd $D; F='1.wav 2.wav 3.wav'; O=\"" + options
                                  + "\"; $T audio -q -o out/file.vant $O $F; $T audio -q -o - $O $F | cat >out/pipe;"
                                    " $T audio -q -o - $O $F >out/plain; mkfifo out/fifo;"
                                    " cat out/fifo >out/fromfifo & $T audio -q --format vant -o out/fifo $O $F; wait;"
                                    " cmp out/file.vant out/pipe; cmp out/file.vant out/plain;"
                                    " cmp out/file.vant out/fromfifo; rm out/fifo"};
        const ChildResult result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 0) << options.constData() << result.errors.constData();
    }
}

TEST_F(AudioDisc, stream_isRefusedForBin_andForASecondOutput)
{
    makeAlbum();
    const QByteArray file = m_tree.path("1.wav");
    const ChildResult bin = runTessaron({"audio", "--format", "bin", "-o", "-", file});
    EXPECT_EQ(bin.exitStatus, 2);
    EXPECT_TRUE(bin.errors.contains("cannot go into a stream")) << bin.errors.constData();
    const ChildResult json = runTessaron({"audio", "--json", "-o", "-", file});
    EXPECT_EQ(json.exitStatus, 2);
    EXPECT_EQ(runTessaron({"audio", "--format", "iso", "-o", m_tree.path("out/a"), file}).exitStatus, 2);
}

TEST_F(AudioDisc, textsInAllLanguages_areKept_inBothFormats)
{
    makeAlbum();
    makeInTwoLanguages("1.flac");
    for (const char *const image : {"out/album.vant", "out/album.bin"}) {
        const ChildResult made = runTessaron({"audio", "--cd-text", "-o", m_tree.path(image), m_tree.path("1.flac")});
        EXPECT_EQ(made.exitStatus, 0) << made.errors.constData();
        const QJsonObject told = jsonOf(runTessaron({"tracks", "--json", m_tree.path(image)}).output);
        EXPECT_EQ(told[QStringLiteral("notes")].toArray(), QJsonArray()) << image;
        const QJsonArray texts =
            told[QStringLiteral("tracks")].toArray()[0].toObject()[QStringLiteral("cdText")].toArray();
        ASSERT_EQ(texts.size(), 2) << image;
        EXPECT_EQ(texts[0].toObject()[QStringLiteral("title")].toString(), QStringLiteral("One"));
        EXPECT_EQ(texts[1].toObject()[QStringLiteral("title")].toString(), QStringLiteral("Eins"));
        EXPECT_EQ(texts[1].toObject()[QStringLiteral("language")].toInt(), 8);
    }
}

TEST_F(AudioDisc, textsInAllLanguages_areReadByOtherPrograms)
{
    makeAlbum();
    makeInTwoLanguages("1.flac");
    const ChildResult made = run({"--cd-text", "--json"}, {"1.flac"});
    EXPECT_EQ(made.exitStatus, 0) << made.errors.constData();
    EXPECT_EQ(jsonOf(made.output)[QStringLiteral("cdTextFile")].toString(), m_tree.pathText("out/album.cdt"));
    const QByteArray info = inFolder("cd-info", {"--no-header", "--no-device-info", "--cue-file=album.cue"});
    EXPECT_TRUE(info.contains("TITLE: One") && info.contains("TITLE: Eins")) << info.constData();
    const QByteArray toc = inFolder("cdrdao", {"show-toc", "album.cue"});
    EXPECT_TRUE(toc.contains("Mode AUDIO")) << toc.constData();
}

TEST_F(AudioDisc, fileOfTexts_replacesNoSource_andNothingButAFile)
{
    makeAlbum();
    makeInTwoLanguages("1.flac");
    EXPECT_EQ(run({"--cd-text"}, {"1.flac"}).exitStatus, 0);
    // The new image would have its texts where those of its source lie.
    m_tree.makeFile("out/other.cue",
                    "CDTEXTFILE \"album.cdt\"\nFILE \"../1.flac\" WAVE\nTRACK 01 AUDIO\nINDEX 01 0:0:0\n");
    const QByteArray before = m_tree.contents("out/album.cdt");
    const ChildResult onSource = run({"--cd-text"}, {"out/other.cue"});
    EXPECT_EQ(onSource.exitStatus, 1);
    EXPECT_TRUE(onSource.errors.contains("would replace the source")) << onSource.errors.constData();
    EXPECT_EQ(m_tree.contents("out/album.cdt"), before);
    m_tree.remove("out/album.cdt");
    m_tree.makeFolder("out/album.cdt");
    const ChildResult onFolder = run({"--cd-text"}, {"1.flac"});
    EXPECT_EQ(onFolder.exitStatus, 1);
    EXPECT_TRUE(onFolder.errors.contains("not a regular file")) << onFolder.errors.constData();
    EXPECT_EQ(run({}, {"1.flac"}).exitStatus, 0) << "without CD-TEXT there is no such file";
}

TEST_F(AudioDisc, crashOfADecoder_namesTheFile_andLeavesNothing)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("2.wav") + ' ' + m_tree.path("2.flac"));
    ChildSettings settings;
    settings.program = "strace";
    settings.arguments = {"-f",
                          "-qq",
                          "-o",
                          "/dev/null",
                          "-P",
                          m_tree.path("2.flac"),
                          "-e",
                          "inject=pread64:signal=ABRT:when=4",
                          tessaron({}).program};
    settings.arguments += arguments({}, {"1.wav", "2.flac", "3.wav"});
    const ChildResult result = runChild(settings);
    expectNothing(result, 1, "2.flac");
    EXPECT_TRUE(result.errors.contains("has crashed (Aborted)")) << result.errors.constData();
}

} // namespace

} // namespace Tessaron::Testing
