#include "tests/quicktime/Atoms.h"
#include "tests/quicktime/Sounds.h"
#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

class Info : public ImageTest
{
protected:
    /// Five texts and a cover, as programs that keep music write them.
    [[nodiscard]] static QByteArray song(const QByteArray &cover)
    {
        const auto value = [](std::uint32_t type, const QByteArray &bytes) {
            return atom("data", bigEndian32(type) + bigEndian32(0) + bytes);
        };
        const QByteArray items = atom("\251nam", value(1, "Title")) + atom("\251ART", value(1, "Artist \xff"))
            + atom("\251alb", value(1, "Album")) + atom("\251aut", value(1, "Authors"))
            + atom("\251day", value(1, "1999")) + atom("covr", value(14, cover));
        return atom("ftyp", "M4A ")
            + movieAtom(plainSoundTrack() + atom("udta", atom("meta", bigEndian32(0) + atom("ilst", items))));
    }
    [[nodiscard]] static QJsonObject fileOf(const QJsonObject &object, qsizetype index)
    {
        return object[QStringLiteral("files")].toArray().at(index).toObject();
    }
};

} // namespace

TEST_F(Info, table_tellsTracksTextsAndCover)
{
    const QByteArray path = m_tree.makeFile("song.m4a", song("\x89PNG picture"));
    const ChildResult result = runTessaron({"info", path});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output.startsWith(path + ": MP4, 0:01.00\n")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("  1  sound  twos  44100 Hz, 2 channels, 16 bits  0:01.00  "))
        << result.output.constData();
    EXPECT_TRUE(result.output.contains("\n  title   Title\n")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("\n  artist  Artist \\xff\n")) << "no bytes that no terminal knows";
    EXPECT_TRUE(result.output.contains("\n  cover   png, ")) << result.output.constData();
}

TEST_F(Info, json_tellsEverything)
{
    const QByteArray path = m_tree.makeFile("song.m4a", song("\x89PNG picture"));
    const ChildResult result = runTessaron({"info", "--json", path});
    EXPECT_EQ(result.exitStatus, 0);
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("command")].toString(), QStringLiteral("info"));
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("done"));
    EXPECT_TRUE(object[QStringLiteral("error")].isNull());
    const QJsonObject file = fileOf(object, 0);
    EXPECT_EQ(file[QStringLiteral("path")].toString().toUtf8(), path);
    EXPECT_EQ(file[QStringLiteral("timeScale")].toInt(), 1000);
    EXPECT_EQ(file[QStringLiteral("seconds")].toDouble(), 1.0);
    const QJsonValue track = file[QStringLiteral("tracks")][0];
    EXPECT_EQ(track[QStringLiteral("code")].toString(), QStringLiteral("twos"));
    EXPECT_EQ(track[QStringLiteral("codeNumber")].toInteger(), 0x74776f73);
    EXPECT_EQ(track[QStringLiteral("bytes")].toInteger(), 176400);
    EXPECT_EQ(track[QStringLiteral("sampleRate")].toInteger(), 44100);
    EXPECT_EQ(track[QStringLiteral("descriptionSize")].toInteger(), 36);
    const QJsonValue artist = file[QStringLiteral("metadata")][1];
    EXPECT_EQ(artist[QStringLiteral("key")].toString(), QStringLiteral("©ART"));
    EXPECT_EQ(artist[QStringLiteral("valueBytes")].toString(), QStringLiteral("Artist%20%FF"));
    EXPECT_EQ(file[QStringLiteral("cover")][QStringLiteral("bytes")].toInteger(), 12);
}

TEST_F(Info, covers_areWrittenUnderNamesOfTheirOwn)
{
    m_tree.makeFile("one/song.m4a", song("\x89PNG first"));
    m_tree.makeFile("two/song.m4a", song("\x89PNG second"));
    m_tree.makeFile("bare.mov", movieAtom(plainSoundTrack()));
    const ChildResult result =
        runTessaron({"info", "--json", "--artwork", m_tree.path("covers/new"), m_tree.path("one/song.m4a"),
                     m_tree.path("two/song.m4a"), m_tree.path("bare.mov")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(m_tree.contents("covers/new/song.png"), "\x89PNG first");
    EXPECT_EQ(m_tree.contents("covers/new/song-1.png"), "\x89PNG second");
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(fileOf(object, 1)[QStringLiteral("cover")][QStringLiteral("path")].toString().toUtf8(),
              m_tree.path("covers/new/song-1.png"));
    EXPECT_TRUE(fileOf(object, 2)[QStringLiteral("cover")].isNull());
}

TEST_F(Info, fileThatCannotBeRead_isNamed_andTheOthersAreTold)
{
    m_tree.makeFile("text.mp4", "just a text");
    m_tree.makeFifo("pipe.mov");
    m_tree.makeFile("good.mov", movieAtom(plainSoundTrack()));
    const QList<QByteArray> arguments = {"info", m_tree.path("text.mp4"), m_tree.path("pipe.mov"),
                                         m_tree.path("missing"), m_tree.path("good.mov")};
    const ChildResult result = runTessaron(arguments);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.output.startsWith(m_tree.path("good.mov"))) << result.output.constData();
    for (const char *const name : {"text.mp4", "pipe.mov", "missing"})
        EXPECT_TRUE(result.errors.contains(name)) << result.errors.constData();
    const ChildResult json = runTessaron(arguments + QList<QByteArray>{"--json"});
    EXPECT_EQ(json.exitStatus, 1);
    const QJsonObject object = jsonOf(json.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("failed"));
    EXPECT_EQ(object[QStringLiteral("error")][QStringLiteral("kind")].toString(), QStringLiteral("source"));
    for (qsizetype index = 0; index < 3; ++index)
        EXPECT_EQ(fileOf(object, index)[QStringLiteral("error")][QStringLiteral("kind")].toString(),
                  QStringLiteral("source"));
    EXPECT_TRUE(fileOf(object, 3)[QStringLiteral("error")].isNull());
}

TEST_F(Info, coverThatCannotBeWritten_isAFailure_andTheRestIsTold)
{
    const QByteArray path = m_tree.makeFile("song.m4a", song("\x89PNG picture"));
    const QByteArray folder = m_tree.makeFile("taken");
    const ChildResult result = runTessaron({"info", "--artwork", folder, path});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.output.contains("Title")) << result.output.constData();
    EXPECT_TRUE(result.errors.contains("the cover of")) << result.errors.constData();
}

TEST_F(Info, pictureThatIsBroken_isNoReasonToComplain)
{
    // Cut behind the header: decoders print something about it.
    const QByteArray picture = QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200000064000000640802000000ff800203"
                                                   "0000003249444154676172626167656761726261676567617262616765");
    const QByteArray path = m_tree.makeFile("a.mov", atom("free", picture) + movieAtom(plainSoundTrack()));
    const ChildResult result = runTessaron({"info", path});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(Info, folders_areWalked_andWhatIsNoMovieByNameIsLeftOut)
{
    const QByteArray movie = movieAtom(plainSoundTrack());
    m_tree.makeFile("music/b.mov", movie);
    m_tree.makeFile("music/a/one.mov", movie);
    m_tree.makeFile("music/a/caf\xE9.mov", movie);
    m_tree.makeFile("music/cover.jpg", "picture");
    m_tree.makeFile("music/a/notes.txt", "notes");
    m_tree.makeFifo("music/pipe.mov");
    m_tree.makeSymbolicLink("music/link.mov", "b.mov");
    m_tree.makeSymbolicLink("linked", "music");
    for (const char *const folder : {"music", "linked"}) {
        const QByteArray path = m_tree.path(folder);
        const ChildResult result = runTessaron({"info", path});
        EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
        EXPECT_EQ(result.errors,
                  "tessaron: looked at 3 files; left out 2 files that by their names are neither sound nor movies and "
                  "2 links and special files\n");
        EXPECT_TRUE(result.output.startsWith(path + "/b.mov: ")) << result.output.constData();
        EXPECT_LT(result.output.indexOf("\n\n" + path + "/a/caf\\xe9.mov: "),
                  result.output.indexOf("\n\n" + path + "/a/one.mov: "));
        const QJsonObject report = jsonOf(runTessaron({"info", "--json", path}).output);
        EXPECT_EQ(report[QStringLiteral("result")].toString(), QStringLiteral("done"));
        EXPECT_EQ(report[QStringLiteral("files")].toArray().size(), 3);
        EXPECT_EQ(report[QStringLiteral("leftOut")].toInteger(), 2);
        EXPECT_EQ(report[QStringLiteral("leftOutSpecial")].toInteger(), 2);
    }
}

TEST_F(Info, filesOfAFolder_thatAreNoMovies_areToldApartFromThoseThatCannotBeRead)
{
    m_tree.makeFile("music/a.mov", movieAtom(plainSoundTrack()));
    m_tree.makeFile("music/text.mp4", "just a text");
    const ChildResult stranger = runTessaron({"info", "--json", m_tree.path("music")});
    EXPECT_EQ(stranger.exitStatus, 3);
    EXPECT_TRUE(stranger.errors.contains("text.mp4")) << stranger.errors.constData();
    const QJsonObject report = jsonOf(stranger.output);
    EXPECT_EQ(report[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
    EXPECT_EQ(report[QStringLiteral("noMovies")].toInteger(), 1);
    EXPECT_EQ(report[QStringLiteral("failures")].toInteger(), 0);
    EXPECT_TRUE(report[QStringLiteral("error")].isNull());
    EXPECT_TRUE(fileOf(report, 1)[QStringLiteral("noMovie")].toBool());
    EXPECT_EQ(runTessaron({"info", m_tree.path("music/text.mp4")}).exitStatus, 1) << "named by itself";

    m_tree.makeFile("music/closed.mov", movieAtom(plainSoundTrack()));
    m_tree.setMode("music/closed.mov", 0);
    m_tree.setMode("", 0755);
    ChildSettings settings = tessaron({"info", "--json", m_tree.path("music")});
    settings.withoutRootRights = true;
    const ChildResult unreadable = runChild(settings);
    EXPECT_EQ(unreadable.exitStatus, 1);
    EXPECT_EQ(jsonOf(unreadable.output)[QStringLiteral("failures")].toInteger(), 1);
    EXPECT_TRUE(unreadable.errors.contains("closed.mov")) << unreadable.errors.constData();

    m_tree.remove("music/closed.mov");
    m_tree.makeFolder("music/shut");
    m_tree.setMode("music/shut", 0);
    const ChildResult shut = runChild(settings);
    m_tree.setMode("music/shut", 0755);
    EXPECT_EQ(shut.exitStatus, 3);
    EXPECT_TRUE(shut.errors.contains("shut\xE2\x80\x9D cannot be listed: Permission denied"))
        << shut.errors.constData();
    EXPECT_EQ(jsonOf(shut.output)[QStringLiteral("unreadable")].toArray().size(), 1);
}

TEST_F(Info, emptyFolder_isSaidToHoldNothing)
{
    const ChildResult result = runTessaron({"info", m_tree.makeFolder("empty")});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "tessaron: looked at 0 files\n");
}

TEST_F(Info, eachFile_isToldBeforeTheNextOneIsLookedAt)
{
    for (int index = 100; index < 400; ++index)
        m_tree.makeFile("music/" + QByteArray::number(index) + ".mov", movieAtom(plainSoundTrack()));
    ChildSettings settings = tessaron({"info", m_tree.path("music")});
    settings.outputToBrokenPipe = true;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors, "tessaron: the report cannot be written to standard output: Broken pipe\n");
    for (const char *const form : {"--json",
                                   "--artwork="
                                   "/nowhere/at/all"}) {
        settings = tessaron({"info", form, m_tree.path("music")});
        settings.standardOutput = "/dev/full";
        const ChildResult full = runChild(settings);
        EXPECT_EQ(full.exitStatus, 1) << form;
        EXPECT_EQ(full.errors, "tessaron: the report cannot be written to standard output: No space left on device\n");
    }
}

TEST_F(Info, lackOfDescriptors_isToldOnce)
{
    if (!runsWithoutDescriptors)
        GTEST_SKIP() << "the sanitizer looks at objects through a pipe, for which there are no descriptors here";
    m_tree.makeFile("music/a.mov", movieAtom(plainSoundTrack()));
    m_tree.makeFile("music/b.wav", waveFile(tone(100)));
    runTessaronWithEverMoreDescriptors(
        {"info", "--json", m_tree.path("music")}, [](const ChildResult &result, quint64 limit) {
            EXPECT_EQ(result.errors.count("oo many"), 1) << limit << result.errors.constData();
            EXPECT_TRUE(jsonOf(result.output)[QStringLiteral("result")].isString()) << limit;
        });
}

TEST_F(Info, wrongUsage_isRefused)
{
    EXPECT_EQ(runTessaron({"info"}).exitStatus, 2);
    EXPECT_EQ(runTessaron({"info", "--artwork", "", "a"}).exitStatus, 2);
    EXPECT_EQ(runTessaron({"info", "--output", "a", "b"}).exitStatus, 2);
}

TEST_F(Info, otherContainers_areDescribedByTheMediaModule)
{
    const QByteArray path = m_tree.makeFile("song.wav", waveFile(tone(44100)));
    const QJsonObject file = fileOf(jsonOf(runTessaron({"info", "--json", path}).output), 0);
    EXPECT_EQ(file[QStringLiteral("duration")].toInteger(), 44100);
    EXPECT_EQ(file[QStringLiteral("timeScale")].toInteger(), 44100);
    EXPECT_EQ(file[QStringLiteral("tracks")][0][QStringLiteral("bytes")].toInteger(), 176400);
}

} // namespace Tessaron::Testing
