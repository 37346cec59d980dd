#include "tests/tools/AudioFixture.h"

#include <QJsonArray>

#include <csignal>

// `tessaron audio` from outside: what it makes is read by programs that others wrote, and held against the sources.

namespace Tessaron::Testing
{

namespace
{

TEST_F(Audio, album_isOneRecordingAgain_toTheSample)
{
    makeAlbum();
    make({}, {"1.wav", "2.wav", "3.wav"});
    EXPECT_EQ(outNames(), Names({"album.bin", "album.cue"}));
    EXPECT_EQ(bin(), wholeFrames(bytesOf(recording)));
    EXPECT_EQ(cue(),
              "FILE \"album.bin\" BINARY\r\n"
              "  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n"
              "  TRACK 02 AUDIO\r\n    INDEX 01 00:04:01\r\n"
              "  TRACK 03 AUDIO\r\n    INDEX 01 00:09:01\r\n");
}

TEST_F(Audio, tracksBeginWithTheirFirstSample_withoutGapless)
{
    makeAlbum();
    make({"--no-gapless"}, {"1.wav", "2.wav", "3.wav"});
    EXPECT_EQ(bin(),
              wholeFrames(bytesOf(partOf(recording, 0, oneLength)))
                  + wholeFrames(bytesOf(partOf(recording, oneLength, otherLength)))
                  + wholeFrames(bytesOf(partOf(recording, oneLength + otherLength, thirdLength))));
}

TEST_F(Audio, gap_isSilenceInFrontOfEachTrackButTheFirst)
{
    makeAlbum();
    make({"--gap", "2"}, {"1.wav", "2.wav"});
    EXPECT_EQ(bin(),
              wholeFrames(bytesOf(partOf(recording, 0, oneLength))) + zeros(150 * frameSize)
                  + wholeFrames(bytesOf(partOf(recording, oneLength, otherLength))));
    EXPECT_TRUE(cue().contains("  TRACK 02 AUDIO\r\n    INDEX 00 00:04:01\r\n    INDEX 01 00:06:01\r\n"))
        << cue().constData();
    make({"--gap=0.5"}, {"1.wav", "2.wav"});
    EXPECT_TRUE(cue().contains("    INDEX 00 00:04:01\r\n    INDEX 01 00:04:39\r\n")) << cue().constData();
}

TEST_F(Audio, otherPrograms_findTheTracks)
{
    makeAlbum();
    make({"--no-gapless"}, {"1.wav", "2.wav", "3.wav"});
    const QByteArray folder = m_tree.path("out");
    outputOf("bchunk", {"-w", "album.bin", "album.cue", "track"}, folder);
    const QByteArray first = m_tree.contents("out/track01.wav"), third = m_tree.contents("out/track03.wav");
    EXPECT_EQ(first.mid(44), wholeFrames(bytesOf(partOf(recording, 0, oneLength))));
    EXPECT_EQ(third.mid(44), wholeFrames(bytesOf(partOf(recording, oneLength + otherLength, thirdLength))));
    EXPECT_EQ(outputOf("ffprobe",
                       {"-v", "error", "-show_entries", "stream=codec_name,sample_rate,channels", "-of", "csv=p=0",
                        m_tree.path("out/track02.wav")}),
              "pcm_s16le,44100,2\n");
    const QByteArray info = outputOf("cd-info", {"--no-header", "--no-device-info", "--cue-file=album.cue"}, folder);
    EXPECT_EQ(info.count(" audio "), 3) << info.constData();
    EXPECT_TRUE(info.contains("00:06:01")) << "track 2, two seconds counted that no image holds\n" << info.constData();
    const QByteArray toc = outputOf("cdrdao", {"show-toc", "album.cue"}, folder);
    EXPECT_EQ(toc.count("Mode AUDIO"), 3) << toc.constData();
}

TEST_F(Audio, losslessFiles_comeOutBitForBit_andOthersAsFFmpegDecodesThem)
{
    m_tree.makeFile("a.wav", waveFile(partOf(recording, 0, oneLength)));
    for (const char *name : {"a.flac", "a.m4a"}) {
        ffmpeg("-i " + m_tree.path("a.wav") + (QByteArray(name).endsWith("m4a") ? " -c:a alac " : " ")
               + m_tree.path(name));
        make({}, {name});
        EXPECT_EQ(bin(), wholeFrames(bytesOf(partOf(recording, 0, oneLength)))) << name;
    }
    for (const QByteArray &command : {QByteArray("-b:a 192k mp3.mp3"), QByteArray("-q:a 6 ogg.ogg"),
                                      QByteArray("-ar 48000 -c:a pcm_s24le rate.wav")}) {
        const QByteArray name = command.mid(command.lastIndexOf(' ') + 1);
        ffmpeg("-i " + m_tree.path("a.wav") + ' ' + command.left(command.lastIndexOf(' ') + 1) + m_tree.path(name));
        make({}, {name});
        const Samples expected = decodedByFFmpeg(m_tree.path(name));
        const Samples made = samplesOf(bin());
        ASSERT_EQ(made.size() / 2, std::size_t(framesUpTo(oneLength)) * samplesPerFrame) << name.constData();
        EXPECT_LE(greatestDifference(made, expected), 2) << name.constData();
    }
}

TEST_F(Audio, capacity_isRefusedWithTheSum)
{
    m_tree.makeFile("a.wav", waveFile(Samples(std::size_t(8000) * 60 * 75), 1, 8000));
    makeAlbum();
    expectNothing(run({"--capacity", "74"}, {"a.wav", "1.wav"}), 1,
                  "take 75:04:01 (minutes, seconds, frames), which is 01:04:01 more than the 74:00:00");
    expectNothing(run({"--capacity", "75"}, {"1.wav"}), 2, "use 74, 80, 90 or 99");
}

TEST_F(Audio, cdText_comesFromTheTags)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("1.wav")
           + " -metadata title=First -metadata artist=Someone -metadata album=Album -metadata ISRC=DE-ABC-12-34567 "
           + m_tree.path("1.flac"));
    ffmpeg("-i " + m_tree.path("2.wav")
           + " -metadata title=Dvo\xc5\x99\xc3\xa1k -metadata artist=\xe5\xb2\xa1\xe6\x9c\xac -metadata album=Album "
             "-metadata composer=Else "
           + m_tree.path("2.mp3"));
    const ChildResult result = run({"--cd-text"}, {"1.flac", "2.mp3"});
    EXPECT_EQ(result.exitStatus, 0) << "all is spelled";
    EXPECT_TRUE(result.errors.contains("track 2: “Dvořák” stands in the CD-TEXT as “Dvorák”"))
        << result.errors.constData();
    const QByteArray sheet = cue();
    EXPECT_TRUE(sheet.startsWith("TITLE \"Album\"\r\n")) << sheet.constData();
    for (const QByteArray line : {"    TITLE \"First\"\r\n", "    PERFORMER \"Someone\"\r\n",
                                  "    ISRC DEABC1234567\r\n", "    TITLE \"Dvor\xc3\xa1k\"\r\n"})
        EXPECT_TRUE(sheet.contains(line)) << line.constData() << sheet.constData();
    EXPECT_FALSE(sheet.contains("\xe5")) << sheet.constData();
    make({}, {"1.flac"});
    EXPECT_FALSE(cue().contains("TITLE"));
}

TEST_F(Audio, cdText_thatCannotBeStored_makesTheStatus3)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("1.wav") + " -metadata title=" + QByteArray(300, 'x') + " -metadata ISRC=wrong "
           + m_tree.path("1.flac"));
    const ChildResult result = run({"--cd-text", "-q"}, {"1.flac"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("“WRONG” is not an ISRC") || result.errors.contains("“wrong” is not an ISRC"))
        << result.errors.constData();
    EXPECT_TRUE(cue().contains('"' + QByteArray(160, 'x') + '"'));
}

TEST_F(Audio, isrc_isTakenFromTheFile_beforeThatOfTags)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("1.wav") + " -metadata ISRC=DEABC1234567 " + m_tree.path("1.flac"));
    const QByteArray option = "--isrc="
        + m_tree.makeFile("c\xF6"
                          "des",
                          "FR-Z03-98-00212\r\n\r\nusx9p1234567\n\n");
    make({option, "--cd-text"}, {"1.flac", "2.wav", "3.wav"});
    EXPECT_EQ(cue().count("ISRC"), 2) << cue().constData();
    EXPECT_TRUE(cue().contains("  TRACK 01 AUDIO\r\n    ISRC FRZ039800212\r\n")) << cue().constData();
    EXPECT_TRUE(cue().contains("  TRACK 03 AUDIO\r\n    ISRC USX9P1234567\r\n")) << cue().constData();
    m_tree.remove("out/album.bin");
    m_tree.remove("out/album.cue");
    expectNothing(run({option}, {"1.wav", "2.wav"}), 2, "3 ISRCs for 2 tracks");
    expectNothing(run({"--isrc", m_tree.makeFile("bad", "DEABC123456\n")}, {"1.wav"}), 2, "is not an ISRC");
    expectNothing(run({"--isrc", m_tree.path("missing")}, {"1.wav"}), 1, "cannot be read: No such file");
    expectNothing(run({"--isrc", m_tree.makeFifo("pipe")}, {"1.wav"}), 1, "cannot be read: it is not a regular file");
}

TEST_F(Audio, shortTracks_areMadeAndTold)
{
    m_tree.makeFile("a.wav", waveFile(noise(4 * 44100 - 588)));
    const ChildResult result = run({}, {"a.wav"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.errors.contains("track 1 is shorter than four seconds")) << result.errors.constData();
    EXPECT_EQ(bin().size(), 299 * frameSize);
    m_tree.makeFile("b.wav", waveFile(noise(std::size_t(4) * 44100)));
    EXPECT_FALSE(run({}, {"b.wav"}).errors.contains("shorter"));
}

TEST_F(Audio, list_standsForItsFiles)
{
    makeAlbum();
    m_tree.makeFolder("lists");
    m_tree.makeFile("lists/album.m3u8",
                    "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:4,First\r\n../1.wav\r\n\r\n" + m_tree.path("2.wav") + "\r\n");
    make({}, {"lists/album.m3u8", "3.wav"});
    EXPECT_EQ(bin(), wholeFrames(bytesOf(recording)));
    m_tree.makeFile("web.m3u", "http://example.org/a.mp3\n");
    m_tree.remove("out/album.bin");
    m_tree.remove("out/album.cue");
    expectNothing(run({}, {"web.m3u"}), 1, "names the address");
    m_tree.makeFile("loop.m3u", "loop.m3u\n");
    expectNothing(run({}, {"loop.m3u"}), 1, "names another list");
    expectNothing(run({}, {"missing.m3u"}), 1, "cannot be read");
    m_tree.makeFile("empty.m3u", "#EXTM3U\n");
    expectNothing(run({}, {"empty.m3u"}), 2, "no file to make a track of");
}

TEST_F(Audio, damage_isNamed_andMakesTheStatus3)
{
    makeAlbum();
    ffmpeg("-i " + m_tree.path("1.wav") + ' ' + m_tree.path("1.flac"));
    QByteArray flac = m_tree.contents("1.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    m_tree.makeFile("bent.flac", flac);
    const ChildResult result = run({"--json"}, {"bent.flac", "2.wav"});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("bent.flac, at ")) << result.errors.constData();
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
    const QJsonArray tracks = report[QStringLiteral("tracks")].toArray();
    ASSERT_EQ(tracks.size(), 2);
    EXPECT_GE(tracks[0].toObject()[QStringLiteral("damagedPlaces")].toInt(), 1);
    EXPECT_EQ(tracks[1].toObject()[QStringLiteral("damagedPlaces")].toInt(), 0);
    EXPECT_EQ(bin().size(), framesUpTo(oneLength + otherLength) * frameSize) << "the other track is in its place";
}

TEST_F(Audio, json_tellsTheTracks)
{
    makeAlbum();
    const ChildResult result = run({"--json", "--gap", "1"}, {"1.wav", "2.wav"});
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[QStringLiteral("command")].toString(), QStringLiteral("audio"));
    EXPECT_EQ(report[QStringLiteral("result")].toString(), QStringLiteral("done"));
    EXPECT_EQ(report[QStringLiteral("bytes")].toInteger(), bin().size());
    EXPECT_EQ(report[QStringLiteral("frames")].toInteger(), bin().size() / frameSize);
    const QJsonObject second = report[QStringLiteral("tracks")].toArray().at(1).toObject();
    EXPECT_EQ(second[QStringLiteral("samples")].toInteger(), qint64(otherLength));
    EXPECT_EQ(second[QStringLiteral("pregapFrames")].toInteger(), 75);
    EXPECT_EQ(second[QStringLiteral("firstFrame")].toInteger(), framesUpTo(oneLength) + 75);
    EXPECT_EQ(second[QStringLiteral("frames")].toInteger(), framesUpTo(otherLength));
}

TEST_F(Audio, vant_describesTheTracks)
{
    makeAlbum();
    const ChildResult made =
        runTessaron({"audio", "-o", m_tree.path("out/album.vant"), m_tree.path("1.wav"), m_tree.path("2.wav")});
    EXPECT_EQ(made.exitStatus, 0) << made.errors.constData();
    EXPECT_EQ(outNames(), Names({"album.vant"}));
    const QByteArray sound = wholeFrames(bytesOf(partOf(recording, 0, oneLength + otherLength)));
    EXPECT_EQ(m_tree.contents("out/album.vant").left(sound.size()), sound);
    const QByteArray told = runTessaron({"inspect", m_tree.path("out/album.vant")}).output;
    EXPECT_TRUE(told.contains("audio") && told.contains('2')) << told.constData();
}

TEST_F(Audio, failure_leavesNothing_andSaysWhy)
{
    makeAlbum();
    m_tree.makeFile("text.flac", "text");
    m_tree.makeFile("short.wav", waveFile(noise(587)));
    expectNothing(run({}, {"1.wav", "missing.wav"}), 1, "missing.wav");
    expectNothing(run({}, {"1.wav", "text.flac"}), 1, "text.flac");
    expectNothing(run({}, {"1.wav", "short.wav"}), 1, "587 samples");
    m_tree.makeFifo("pipe.wav");
    m_tree.makeFolder("folder");
    expectNothing(run({}, {"pipe.wav"}), 1, "Copy what it delivers into a file first.");
    expectNothing(run({}, {"folder"}), 1, "Name the files in it, or a list of them.");
    expectNothing(runTessaron({"audio", "-o", m_tree.path("out/a.iso"), m_tree.path("1.wav")}), 2, ".vant");
    expectNothing(runTessaron({"audio", "-o", m_tree.path("out/a.bin")}), 2, "no FILE");
    expectNothing(run({"--gap", "x"}, {"1.wav"}), 2, "not a number of seconds");
    QList<QByteArray> hundred;
    for (int file = 0; file < 100; ++file)
        hundred << "1.wav";
    expectNothing(run({}, hundred), 2, "99 tracks at most");
    const ChildResult itself =
        runTessaron({"audio", "-o", m_tree.makeFile("out/1.bin", waveFile(noise(1000))), m_tree.path("out/1.bin")});
    EXPECT_EQ(itself.exitStatus, 1);
    EXPECT_TRUE(itself.errors.contains("would replace the source")) << itself.errors.constData();
}

TEST_F(Audio, signal_leavesThePlaceAsItWas)
{
    m_tree.makeFile("long.wav", waveFile(noise(std::size_t(8000) * 60 * 20, 1), 1, 8000));
    m_tree.makeFile("out/album.bin", "older image");
    ChildProcess process(tessaron(arguments({"--progress", "json"}, {"long.wav"})));
    ASSERT_TRUE(process.waitUntil([&] { return process.errorsSoFar().contains("writing"); }))
        << process.errorsSoFar().constData();
    process.sendSignal(SIGTERM);
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
    EXPECT_EQ(outNames(), Names({"album.bin"}));
    EXPECT_EQ(m_tree.contents("out/album.bin"), "older image");
}

} // namespace

} // namespace Tessaron::Testing
