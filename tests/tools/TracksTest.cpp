#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype sector = 2352;

class Tracks : public ImageTest
{
protected:
    [[nodiscard]] static QJsonObject tracksOf(const QByteArray &path)
    {
        const ChildResult result = runTessaron({"tracks", "--json", path});
        EXPECT_EQ(result.exitStatus, 0) << result.output.constData() << result.errors.constData();
        return jsonOf(result.output);
    }
    /// "kind start length pregap" of each track.
    [[nodiscard]] static std::vector<std::string> linesOf(const QJsonObject &object)
    {
        std::vector<std::string> lines;
        for (const QJsonValue track : object[QStringLiteral("tracks")].toArray())
            lines.push_back(QStringLiteral("%1 %2 %3 %4")
                                .arg(track[QStringLiteral("kind")].toString())
                                .arg(track[QStringLiteral("start")].toInteger())
                                .arg(track[QStringLiteral("length")].toInteger())
                                .arg(track[QStringLiteral("pregap")].toInteger())
                                .toStdString());
        return lines;
    }
};

using Lines = std::vector<std::string>;

TEST_F(Tracks, whatIsNoImage_isRefused_inWords)
{
    const auto errorsAbout = [](const QByteArray &path) {
        const ChildResult result = runTessaron({"tracks", path});
        EXPECT_EQ(result.exitStatus, 1) << path.constData();
        EXPECT_EQ(result.output, "");
        return result.errors;
    };
    EXPECT_TRUE(errorsAbout(m_tree.makeFifo("pipe")).contains("it is neither a regular file nor a block device"));
    for (const char *const contents : {"", "text"})
        EXPECT_TRUE(
            errorsAbout(m_tree.makeFile("short", contents)).contains("has no track: it is shorter than a sector"));
}

TEST_F(Tracks, cueSheet_isListedWithTextsAndIndexes)
{
    m_tree.makeFile("out/album.bin", QByteArray(1000 * sector, 'a'));
    m_tree.makeFile(
        "out/album.cue",
        "CATALOG 1234567890123\nTITLE \"The Album\"\nPERFORMER \"Everyone\"\nBOGUS x\n"
        "FILE \"album.bin\" BINARY\n TRACK 01 AUDIO\n  TITLE \"First\"\n  PERFORMER \"Someone\"\n"
        "  ISRC DEABC2412345\n  FLAGS DCP PRE\n  INDEX 01 00:00:00\n"
        " TRACK 02 AUDIO\n  TITLE \"Second\"\n  INDEX 00 00:05:00\n  INDEX 01 00:06:00\n  INDEX 02 00:07:10\n");
    const QJsonObject object = tracksOf(m_tree.path("out/album.cue"));
    EXPECT_EQ(linesOf(object), Lines({"audio 0 375 0", "audio 450 550 75"}));
    EXPECT_TRUE(object[QStringLiteral("seconds")].isDouble()) << "as all commands tell it";
    EXPECT_EQ(object[QStringLiteral("catalogNumber")].toString(), QStringLiteral("1234567890123"));
    EXPECT_EQ(object[QStringLiteral("cdText")][0][QStringLiteral("title")].toString(), QStringLiteral("The Album"));
    EXPECT_EQ(object[QStringLiteral("notes")].toArray().size(), 1);
    const QJsonValue first = object[QStringLiteral("tracks")][0];
    const QJsonValue second = object[QStringLiteral("tracks")][1];
    EXPECT_EQ(first[QStringLiteral("isrc")].toString(), QStringLiteral("DEABC2412345"));
    EXPECT_TRUE(first[QStringLiteral("preEmphasis")].toBool() && first[QStringLiteral("copyPermitted")].toBool());
    EXPECT_EQ(first[QStringLiteral("cdText")][0][QStringLiteral("performer")].toString(), QStringLiteral("Someone"));
    EXPECT_EQ(second[QStringLiteral("cdText")][0][QStringLiteral("title")].toString(), QStringLiteral("Second"));
    EXPECT_EQ(second[QStringLiteral("indexes")].toArray(), QJsonArray({85}));
    EXPECT_TRUE(second[QStringLiteral("pregapInFile")].toBool());
    EXPECT_EQ(second[QStringLiteral("offset")].toInteger(), 450 * sector);
    EXPECT_EQ(second[QStringLiteral("file")].toString().toUtf8(), m_tree.path("out/album.bin"));

    const ChildResult text = runTessaron({"tracks", m_tree.path("out/album.cue")});
    EXPECT_EQ(text.exitStatus, 0);
    EXPECT_TRUE(text.output.contains(": 2 tracks, “The Album” by Everyone\n")) << text.output.constData();
    EXPECT_TRUE(text.output.contains(" 2  audio/2352  at 00:06:00, 00:07:25 (550 blocks), pregap 00:01:00, "
                                     "index 2 at 00:01:10  “Second”\n"))
        << text.output.constData();
    EXPECT_TRUE(text.errors.contains("Line 4 of the cue sheet: BOGUS is not known")) << text.errors.constData();
    const QJsonObject beside = tracksOf(m_tree.path("out/album.bin"));
    EXPECT_EQ(linesOf(beside).size(), 2u);
    EXPECT_EQ(beside[QStringLiteral("description")].toString().toUtf8(), m_tree.path("out/album.cue"));
}

TEST_F(Tracks, descriptionsOfOtherPrograms_areListed)
{
    m_tree.makeFile("out/disc.img", QByteArray(1000 * sector, 'a'));
    m_tree.makeFile(
        "out/disc.ccd",
        "[CloneCD]\nVersion=3\n[Entry 0]\nSession=1\nPoint=0xa2\nPLBA=1000\n[Entry 1]\nSession=1\nPoint=1\n"
        "Control=4\nPLBA=0\n[Entry 2]\nSession=1\nPoint=2\nControl=0\nPLBA=600\n[TRACK 1]\nMODE=1\n[TRACK 2]\n"
        "MODE=0\nINDEX 0=450\nINDEX 1=600\n");
    const Lines both = {"mode1 0 450 0", "audio 600 400 150"};
    EXPECT_EQ(linesOf(tracksOf(m_tree.path("out/disc.ccd"))), both);
    EXPECT_EQ(linesOf(tracksOf(m_tree.path("out/disc.img"))), both);
    m_tree.makeFile("out/disc.toc", "CD_DA\nTRACK AUDIO\nPREGAP 00:02:00\nFILE \"disc.img\" 0 00:10:00\n");
    EXPECT_EQ(linesOf(tracksOf(m_tree.path("out/disc.toc"))), Lines({"audio 150 750 150"}));
}

TEST_F(Tracks, imagesWithoutADescription_areTracks_too)
{
    makeOrdinaryTree();
    for (const QByteArray name : {"out/disc.vant", "out/disc.iso"}) {
        EXPECT_EQ(runTessaron({"image", "-q", "-o", m_tree.path(name), m_tree.path("source")}).exitStatus, 0);
        const QJsonObject object = tracksOf(m_tree.path(name));
        EXPECT_EQ(object[QStringLiteral("described")].toBool(), name.endsWith("vant"));
        ASSERT_EQ(linesOf(object).size(), 1u);
        EXPECT_EQ(object[QStringLiteral("tracks")][0][QStringLiteral("kind")].toString(), QStringLiteral("mode1"));
    }
    const QJsonObject iso = tracksOf(m_tree.path("out/disc.iso"));
    EXPECT_EQ(iso[QStringLiteral("tracks")][0][QStringLiteral("length")].toInteger(),
              m_tree.contents("out/disc.iso").size() / 2048);
    const ChildResult text = runTessaron({"tracks", m_tree.path("out/disc.iso")});
    EXPECT_TRUE(text.output.contains("described by nothing: taken for data")) << text.output.constData();
}

TEST_F(Tracks, compressedSounds_areAsLongAsTheirSamples)
{
    outputOf(
        "sox",
        {"-r", "44100", "-n", "-b", "16", "-c", "2", m_tree.path("out/a.flac"), "synth", "176401s", "sine", "440"});
    m_tree.makeFile("out/b.mp3", "no sound");
    m_tree.makeFile("out/album.cue",
                    "FILE \"a.flac\" WAVE\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n TRACK 02 AUDIO\n  INDEX 01 00:02:00\n"
                    "FILE \"b.mp3\" MP3\n TRACK 03 AUDIO\n  INDEX 01 00:00:00\n");
    const QJsonObject object = tracksOf(m_tree.path("out/album.cue"));
    EXPECT_EQ(linesOf(object), Lines({"audio 0 150 0", "audio 150 150 0", "audio 300 0 0"}));
    EXPECT_TRUE(object[QStringLiteral("tracks")][2][QStringLiteral("length")].isNull());
    const QJsonArray notes = object[QStringLiteral("notes")].toArray();
    ASSERT_EQ(notes.size(), 2);
    EXPECT_TRUE(notes[0].toString().contains(QStringLiteral("b.mp3” cannot be decoded")))
        << notes[0].toString().toStdString();
    EXPECT_TRUE(notes[1].toString().contains(QStringLiteral("ends with 4 bytes")));
}

TEST_F(Tracks, failure_namesTheLine)
{
    m_tree.makeFile("out/bad.cue", "FILE \"missing.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n");
    const ChildResult result = runTessaron({"tracks", "--json", m_tree.path("out/bad.cue")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("Line 1 of the cue sheet")) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("failed"));
    EXPECT_EQ(object[QStringLiteral("error")][QStringLiteral("kind")].toString(), QStringLiteral("source"));
    EXPECT_EQ(runTessaron({"tracks", m_tree.path("out/nothing")}).exitStatus, 1);
    EXPECT_EQ(runTessaron({"tracks"}).exitStatus, 2);
}

} // namespace

} // namespace Tessaron::Testing
