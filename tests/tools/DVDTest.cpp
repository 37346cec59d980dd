#include "tests/dvdplayback/DiscFixture.h"
#include "tests/tools/ChildProcess.h"
#include "tests/tools/ImageFixture.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <csignal>

namespace Tessaron::Testing
{

namespace
{

class DVDCommand : public DiscTest
{
};

TEST_F(DVDCommand, json_tellsTitlesChaptersStreamsAndMenus)
{
    const ChildResult result = runTessaron({"dvd", "--json", disc()});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.isEmpty()) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("done"));
    EXPECT_EQ(object[QStringLiteral("identity")].toString().size(), 16);
    EXPECT_EQ(object[QStringLiteral("regions")].toArray(), QJsonArray({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_FALSE(object[QStringLiteral("encrypted")].toBool(true));
    EXPECT_EQ(object[QStringLiteral("menus")].toArray().size(), 5);
    const QJsonArray titles = object[QStringLiteral("titles")].toArray();
    ASSERT_EQ(titles.size(), 2);
    const QJsonObject first = titles[0].toObject(), second = titles[1].toObject();
    EXPECT_EQ(first[QStringLiteral("aspect")].toString(), QStringLiteral("4:3"));
    EXPECT_EQ(first[QStringLiteral("chapters")].toArray().size(), 4);
    EXPECT_EQ(first[QStringLiteral("chapters")][0][QStringLiteral("start")].toInt(-1), 0);
    EXPECT_EQ(first[QStringLiteral("audio")][1][QStringLiteral("format")].toString(), QStringLiteral("lpcm"));
    EXPECT_EQ(first[QStringLiteral("audio")][1][QStringLiteral("language")].toString(), QStringLiteral("fr"));
    EXPECT_EQ(first[QStringLiteral("subtitles")][0][QStringLiteral("language")].toString(), QStringLiteral("en"));
    EXPECT_EQ(second[QStringLiteral("angles")].toInt(), 3);
    EXPECT_EQ(second[QStringLiteral("aspect")].toString(), QStringLiteral("16:9"));
    EXPECT_FALSE(first[QStringLiteral("letterbox")].toBool(true));
    EXPECT_FALSE(first[QStringLiteral("panAndScan")].toBool(true));
    EXPECT_TRUE(second[QStringLiteral("letterbox")].toBool(false));
    EXPECT_FALSE(second[QStringLiteral("panAndScan")].toBool(true));
}

TEST_F(DVDCommand, json_tellsTitlesThatMayBePannedOnly)
{
    const ChildResult result = runTessaron({"dvd", "--json", disc("film")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonValue title = jsonOf(result.output)[QStringLiteral("titles")][0];
    EXPECT_FALSE(title[QStringLiteral("letterbox")].toBool(true));
    EXPECT_TRUE(title[QStringLiteral("panAndScan")].toBool(false));
}

TEST_F(DVDCommand, text_hasALineForEachThing)
{
    const ChildResult result = runTessaron({"dvd", disc("pal")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    for (const char *const line :
         {": 2 titles, all regions, by DVDAuthor ", "\n 1  0:00:08.000, 4 chapters, 1 angle, PAL 720x576 4:3\n",
          "\n 2  0:00:04.000, 2 chapters, 3 angles, PAL 720x576 16:9\n", "\n    sound ac3, 2 channels, 48 kHz, en\n",
          "\n    subtitles en\n", "\n    chapter  2 at 0:00:02.000, 0:00:02.000 long\n",
          "\ntitle menu of the disc, en\n", "\nroot menu of title set 2, en\n"})
        EXPECT_TRUE(result.output.contains(line)) << line << result.output.constData();
}

TEST_F(DVDCommand, damage_isToldAndMakesTheReportIncomplete)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.IFO");
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.BUP");
    const ChildResult result = runTessaron({"dvd", "--json", copy});
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.startsWith("tessaron: title 2: VTS_02_0.IFO and its copy cannot be read"))
        << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
}

TEST_F(DVDCommand, filesThatAreNotAsPlayersNeedThem_areTold)
{
    const QByteArray copy = copyOfDisc();
    const auto problems = [&copy](int expectedStatus = 3) {
        const ChildResult result = runTessaron({"dvd", "--json", copy});
        EXPECT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
        QStringList lines;
        for (const auto &each : jsonOf(result.output)[QStringLiteral("problems")].toArray())
            lines << each[QStringLiteral("file")].toString() + u' ' + each[QStringLiteral("message")].toString();
        return lines;
    };
    EXPECT_EQ(problems(0), QStringList());
    patch("VTS_01_0.BUP", 0x100, 'x');
    EXPECT_EQ(problems(),
              QStringList{QStringLiteral("VTS_01_0.BUP differs from VTS_01_0.IFO, whose backup it is to be")});
    // The contents are a block short, and there is a file that does not belong on a DVD.
    const QByteArray video = m_tree.contents("disc/VIDEO_TS/VTS_01_1.VOB");
    m_tree.makeFile("disc/VIDEO_TS/VTS_01_1.VOB", video.chopped(2048));
    m_tree.makeFile("disc/VIDEO_TS/notes.txt", "x");
    QStringList lines = problems();
    EXPECT_EQ(lines.size(), 3) << lines.join(u'\n').toStdString();
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("VTS_01_0.IFO says that the VOB files of its set have ")));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral("; 2048 of them are not there"))) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].startsWith(QStringLiteral("notes.txt is not a file of a video DVD")));
    // Half a block, and a part beyond a gibibyte.
    m_tree.makeFile("disc/VIDEO_TS/VTS_01_1.VOB", video.chopped(1000));
    m_tree.makeSparseFile("disc/VIDEO_TS/VTS_01_2.VOB", (qint64(1) << 30) + 2048);
    lines = problems();
    EXPECT_TRUE(lines.join(u'\n').contains(QStringLiteral("which are not whole blocks")))
        << lines.join(u'\n').toStdString();
    EXPECT_TRUE(lines.join(u'\n').contains(QStringLiteral("VTS_01_2.VOB is longer than a gibibyte")));
    EXPECT_TRUE(lines.join(u'\n').contains(QStringLiteral(" more")));
}

TEST_F(DVDCommand, filesThatAreMissing_areTold_alsoWhereNothingCanBeDescribed)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_1.VOB");
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.BUP");
    const ChildResult some = runTessaron({"dvd", copy});
    EXPECT_EQ(some.exitStatus, 3);
    EXPECT_TRUE(some.errors.contains("“VTS_02_1.VOB” is missing")) << some.errors.constData();
    EXPECT_TRUE(some.errors.contains("“VTS_02_0.BUP” is missing"));
    m_tree.remove("disc/VIDEO_TS/VIDEO_TS.IFO");
    m_tree.remove("disc/VIDEO_TS/VIDEO_TS.BUP");
    const ChildResult none = runTessaron({"dvd", copy});
    EXPECT_EQ(none.exitStatus, 1);
    EXPECT_TRUE(none.errors.contains("“VIDEO_TS.IFO” is missing")) << none.errors.constData();
}

TEST_F(DVDCommand, regionsOfTheDisc_areNamed)
{
    constexpr qint64 placeOfRegions = 0x23;
    const QByteArray copy = copyOfDisc();
    patchTable("VIDEO_TS", placeOfRegions, '\xfd');
    EXPECT_TRUE(runTessaron({"dvd", copy}).output.contains(": 2 titles, region 2, "));
    patchTable("VIDEO_TS", placeOfRegions, '\xf5');
    EXPECT_TRUE(runTessaron({"dvd", copy}).output.contains(": 2 titles, regions 2 4, "));
}

TEST_F(DVDCommand, vantImage_isReadLikeTheFolder)
{
    const QByteArray image = m_tree.path("disc.vant");
    const ChildResult made =
        runTessaron({"image", "-o", image, "--format", "vant", "--filesystems", "iso9660,udf", copyOfDisc()});
    ASSERT_EQ(made.exitStatus, 0) << made.errors.constData();
    const QJsonObject folder = jsonOf(runTessaron({"dvd", "--json", disc()}).output);
    const ChildResult result = runTessaron({"dvd", "--json", image});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    for (const char *const member : {"identity", "titles", "menus", "regions"}) {
        const QString name = QString::fromLatin1(member);
        EXPECT_EQ(jsonOf(result.output)[name], folder[name]) << member;
    }
}

TEST_F(DVDCommand, lackOfDescriptors_isToldOnce_withWhatToDo)
{
    if (!runsWithoutDescriptors)
        GTEST_SKIP() << "the sanitizer looks at objects through a pipe, for which there are no descriptors here";
    runTessaronWithEverMoreDescriptors({"dvd", "--json", disc()}, [](const ChildResult &result, quint64 limit) {
        EXPECT_EQ(result.errors.count("oo many"), 1) << limit << result.errors.constData();
        EXPECT_EQ(result.errors.count("(ulimit -n)"), 1) << limit << result.errors.constData();
    });
}

TEST_F(DVDCommand, whatIsNoDisc_fails)
{
    const ChildResult result = runTessaron({"dvd", "--json", m_tree.makeFolder("empty")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("there is no VIDEO_TS.IFO in it")) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("failed"));
    EXPECT_EQ(object[QStringLiteral("error")][QStringLiteral("kind")].toString(), QStringLiteral("source"));
    EXPECT_EQ(object[QStringLiteral("error")][QStringLiteral("code")].toInt(), -70015);
    m_tree.makeFolder("closed");
    m_tree.setMode("closed", 0);
    m_tree.setMode("", 0755);
    ChildSettings settings = tessaron({"dvd", m_tree.path("closed")});
    settings.withoutRootRights = true;
    const ChildResult closed = runChild(settings);
    EXPECT_EQ(closed.exitStatus, 1);
    EXPECT_TRUE(closed.errors.contains("Permission denied")) << closed.errors.constData();
    EXPECT_EQ(runTessaron({"dvd"}).exitStatus, 2);
    EXPECT_EQ(runTessaron({"dvd", disc(), disc()}).exitStatus, 2);
}

class DVDPlayCommand : public DiscTest
{
protected:
    [[nodiscard]] ChildSettings playing(const QList<QByteArray> &arguments) const
    {
        ChildSettings settings = tessaron(QList<QByteArray>{"dvd", "--play"} + arguments);
        settings.environment = {"QT_QPA_PLATFORM=offscreen", "XDG_STATE_HOME=" + m_tree.path("state")};
        return settings;
    }
    /// Where discs were left.
    [[nodiscard]] QStringList places() const
    {
        return QDir(m_tree.pathText("state/tessaron/dvd")).entryList(QDir::Files);
    }
};

TEST_F(DVDPlayCommand, interruptedPlayer_hasKeptThePlace)
{
    ChildProcess player(playing({"--title", "1", "--chapter", "4", disc()}));
    EXPECT_TRUE(player.waitUntil([&] { return places().size() == 1; })) << player.errorsSoFar().constData();
    player.sendSignal(SIGINT);
    const ChildResult result = player.finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_TRUE(result.errors.isEmpty()) << result.errors.constData();
    const ChildResult described = runTessaron({"dvd", "--json", disc()});
    EXPECT_EQ(places(), QStringList{jsonOf(described.output)[QStringLiteral("identity")].toString()});
}

TEST_F(DVDPlayCommand, vantImage_isPlayed)
{
    const QByteArray image = m_tree.path("disc.vant");
    const ChildResult made =
        runTessaron({"image", "-o", image, "--format", "vant", "--filesystems", "iso9660,udf", copyOfDisc()});
    ASSERT_EQ(made.exitStatus, 0) << made.errors.constData();
    ChildProcess player(playing({"--title", "1", "--chapter", "4", image}));
    EXPECT_TRUE(player.waitUntil([&] { return places().size() == 1; })) << "it has been playing for some seconds";
    player.sendSignal(SIGTERM);
    EXPECT_EQ(player.finish().exitStatus, 130);
}

TEST_F(DVDPlayCommand, secondPlayer_isRefusedInWords)
{
    ChildProcess player(playing({"--title", "1", "--chapter", "4", disc()}));
    ASSERT_TRUE(player.waitUntil([&] { return places().size() == 1; })) << player.errorsSoFar().constData();
    const ChildResult second = runChild(playing({disc()}));
    EXPECT_EQ(second.exitStatus, 1);
    EXPECT_EQ(second.errors,
              "tessaron: “" + disc() + "” cannot be played: another program plays a DVD at the moment\n");
    player.sendSignal(SIGTERM);
    EXPECT_EQ(player.finish().exitStatus, 130);
}

TEST_F(DVDPlayCommand, whatCannotBePlayed_isSaidInWords)
{
    const QByteArray empty = m_tree.makeFolder("empty");
    ChildResult result = runChild(playing({empty}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors,
              "tessaron: “" + empty + "” cannot be played: there is no VIDEO_TS.IFO in it, nor in a folder VIDEO_TS\n");
    result = runChild(playing({m_tree.path("missing")}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.startsWith("tessaron: “" + m_tree.path("missing") + "” cannot be played: "))
        << result.errors.constData();
    result = runChild(playing({"--title", "7", disc()}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.endsWith(": the disc cannot play title 7 from chapter 1 on\n"))
        << result.errors.constData();
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_1.VOB");
    result = runChild(playing({"--title", "2", copy}));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors,
              "tessaron: “" + copy
                  + "” cannot be played: the disc cannot play title 2 from chapter 1 on: the contents of "
                    "title set 2 are missing or cannot be opened\n");
    ChildSettings settings = playing({disc()});
    settings.environment = {"QT_QPA_PLATFORM=", "DISPLAY=", "WAYLAND_DISPLAY="};
    result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.errors, "tessaron: there is no display to show a window on\n");
    settings.environment = {"QT_QPA_PLATFORM=xcb", "DISPLAY=" + m_tree.path("no-display")};
    result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1) << result.signal;
    EXPECT_TRUE(result.errors.startsWith("tessaron: no window can be shown: ")) << result.errors.constData();
    EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.constData();
}

} // namespace

} // namespace Tessaron::Testing
