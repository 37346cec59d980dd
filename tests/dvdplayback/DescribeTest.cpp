#include "platform/dvdplayback/DVDDescription.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/DiscDescriber.h"
#include "platform/dvdplayback/player/EncryptionCheck.h"
#include "tests/dvdplayback/DiscFixture.h"
#include "tests/support/RunProgram.h"

#include <QFile>
#include <QRegularExpression>

#include <chrono>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

using std::chrono::milliseconds;

/// The title's time is that of the disc's tables, whose NTSC frames are counted as 30 a second.
constexpr auto chapterLength = milliseconds(2167);

class DescribeDVD : public DiscTest
{
protected:
    [[nodiscard]] static DVDDescription described(const QByteArray &path)
    {
        const Result<DVDDescription> disc = describeDVD(path, {});
        EXPECT_TRUE(disc) << disc.error().localizedDescription().toStdString();
        return disc ? *disc : DVDDescription();
    }
    static void expectFailure(const QByteArray &path, OSStatus status, const char *words)
    {
        const NSError error = describeDVD(path, {}).error();
        EXPECT_EQ(error.domain(), DVDErrorDomain);
        EXPECT_EQ(error.code(), status) << error.localizedDescription().toStdString();
        EXPECT_TRUE(error.localizedDescription().contains(QString::fromUtf8(words)))
            << error.localizedDescription().toStdString();
    }
};

TEST_F(DescribeDVD, titles_areThoseOfTheDisc)
{
    const DVDDescription disc = described(DiscTest::disc());
    ASSERT_EQ(disc.titles.size(), 2U);
    const DVDTitle &first = disc.titles[0];
    EXPECT_EQ(first.number, 1);
    EXPECT_EQ(first.titleSet, 1);
    EXPECT_EQ(first.angles, 1);
    EXPECT_EQ(first.video, (DVDVideoFacts{DVDVideoStandard::NTSC, false, 720, 480, false, false}));
    ASSERT_EQ(first.chapters.size(), 4U);
    milliseconds start{0};
    for (const DVDChapter &chapter : first.chapters) {
        EXPECT_EQ(chapter.start, start);
        EXPECT_NEAR(double(chapter.length.count()), double(chapterLength.count()), 34) << "a frame";
        start += chapter.length;
    }
    EXPECT_EQ(first.length, start);
    ASSERT_EQ(first.audio.size(), 2U);
    EXPECT_EQ(first.audio[0], (DVDAudioStream{DVDAudioFormat::AC3, 2, 48'000, 0, "en", DVDStreamPurpose::Unstated}));
    EXPECT_EQ(first.audio[1], (DVDAudioStream{DVDAudioFormat::LPCM, 2, 48'000, 16, "fr", DVDStreamPurpose::Unstated}));
    ASSERT_EQ(first.subtitles.size(), 1U);
    EXPECT_EQ(first.subtitles[0].language, "en");
    const DVDTitle &second = disc.titles[1];
    EXPECT_EQ(second.titleSet, 2);
    EXPECT_EQ(second.angles, 3);
    EXPECT_EQ(second.chapters.size(), 2U);
    EXPECT_NEAR(double(second.length.count()), double(2 * chapterLength.count()), 34);
    EXPECT_EQ(second.video, (DVDVideoFacts{DVDVideoStandard::NTSC, true, 720, 480, true, false}));
    EXPECT_EQ(second.audio[1].format, DVDAudioFormat::MPEG1);
    EXPECT_EQ(second.audio[1].language, "de");
    EXPECT_TRUE(disc.notes.isEmpty()) << disc.notes.join(u'\n').toStdString();
    EXPECT_FALSE(disc.isEncrypted);
    EXPECT_FALSE(disc.drive);
}

TEST_F(DescribeDVD, menus_areThoseOfTheDisc)
{
    const std::vector<DVDMenu> menus = {{DVDMenuKind::Title, 0, "en"},
                                        {DVDMenuKind::Root, 1, "en"},
                                        {DVDMenuKind::Chapter, 1, "en"},
                                        {DVDMenuKind::Root, 2, "en"},
                                        {DVDMenuKind::Chapter, 2, "en"}};
    EXPECT_EQ(described(disc()).menus, menus);
}

TEST_F(DescribeDVD, pal_hasItsLines)
{
    const DVDDescription disc = described(DiscTest::disc("pal"));
    EXPECT_EQ(disc.titles[0].video, (DVDVideoFacts{DVDVideoStandard::PAL, false, 720, 576, false, false}));
    EXPECT_EQ(disc.titles[0].length, milliseconds(8000));
}

TEST_F(DescribeDVD, widePictures_mayBePannedWhereALetterboxIsForbidden)
{
    EXPECT_EQ(described(DiscTest::disc("film")).titles[0].video,
              (DVDVideoFacts{DVDVideoStandard::NTSC, true, 720, 480, false, true}));
}

TEST_F(DescribeDVD, sizeOfPictures_isThatOfTheTables)
{
    const DVDDescription disc = described(DiscTest::disc("interlaced"));
    EXPECT_EQ(disc.titles[0].video, (DVDVideoFacts{DVDVideoStandard::PAL, false, 352, 576, false, false}));
    EXPECT_EQ(disc.titles[0].audio[0],
              (DVDAudioStream{DVDAudioFormat::DTS, 6, 48'000, 0, "en", DVDStreamPurpose::Unstated}));
    EXPECT_EQ(disc.titles[0].audio[1].format, DVDAudioFormat::AC3);
    constexpr qint64 placeOfSize = 0x201;
    const QByteArray copy = copyOfDisc();
    struct Row {
        char bits;
        std::uint16_t width, height;
    };
    for (const Row &row : {Row{0x08, 704, 480}, Row{0x10, 352, 480}, Row{0x18, 352, 240}, Row{0x04, 720, 480}}) {
        patchTable("VTS_01_0", placeOfSize, row.bits);
        const DVDVideoFacts video = described(copy).titles[0].video;
        EXPECT_EQ(video.width, row.width) << int(row.bits);
        EXPECT_EQ(video.height, row.height) << int(row.bits);
    }
}

TEST_F(DescribeDVD, anotherProgram_findsTheSame)
{
    const QString report = QString::fromUtf8(runProgram("lsdvd", {"-c", disc()}).output);
    const DVDDescription disc = described(DiscTest::disc());
    const QRegularExpression line(
        QStringLiteral("Title: (\\d+), Length: (\\d+):(\\d+):([\\d.]+) Chapters: (\\d+), Cells: \\d+, "
                       "Audio streams: (\\d+), Subpictures: (\\d+)"));
    QRegularExpressionMatchIterator matches = line.globalMatch(report);
    for (const DVDTitle &title : disc.titles) {
        ASSERT_TRUE(matches.hasNext()) << report.toStdString();
        const QRegularExpressionMatch match = matches.next();
        const double seconds =
            match.captured(2).toDouble() * 3600 + match.captured(3).toDouble() * 60 + match.captured(4).toDouble();
        EXPECT_NEAR(seconds, double(title.length.count()) / 1000, 0.05);
        EXPECT_EQ(match.captured(5).toUInt(), title.chapters.size());
        EXPECT_EQ(match.captured(6).toUInt(), title.audio.size());
        EXPECT_EQ(match.captured(7).toUInt(), title.subtitles.size());
    }
}

TEST_F(DescribeDVD, disc_isTheSame_howeverItIsNamed)
{
    const DVDDescription folder = described(disc());
    EXPECT_EQ(folder.identity.size(), 8);
    EXPECT_EQ(described(disc() + "/"), folder);
    EXPECT_EQ(described(disc() + "/VIDEO_TS"), folder);
    m_tree.makeSymbolicLink("link", disc());
    EXPECT_EQ(described(m_tree.path("link")), folder);
    DVDDescription image = described(imageOfDisc(disc()));
    EXPECT_EQ(image.volumeName, QStringLiteral("FILM"));
    image.volumeName.clear();
    EXPECT_EQ(image, folder);
    EXPECT_NE(described(disc("pal")).identity, folder.identity);
}

TEST_F(DescribeDVD, imageOfRawSectors_isReadLikeThePlainOne)
{
    const QByteArray plain = imageOfDisc(disc());
    EXPECT_EQ(described(rawImageOf(plain)), described(plain));
}

TEST_F(DescribeDVD, imageOfRawSectorsWithoutADisc_isRefusedInWords)
{
    expectFailure(rawImageOf(m_tree.makeFile("plain", QByteArray(qsizetype(400) * 2048, '\0'))), kDVDErrorNoValidMedia,
                  "there is no UDF volume in it");
}

TEST_F(DescribeDVD, regions_areThoseThatTheDiscProhibits)
{
    constexpr qint64 placeOfRegions = 0x23;
    const QByteArray copy = copyOfDisc();
    EXPECT_EQ(described(copy).prohibitedRegions, 0);
    patchTable("VIDEO_TS", placeOfRegions, '\xfd');
    EXPECT_EQ(described(copy).prohibitedRegions, 0xfd);
}

TEST_F(DescribeDVD, scrambledContents_areToldApart)
{
    const QByteArray copy = copyOfDisc();
    QFile contents(m_tree.pathText("disc/VIDEO_TS/VTS_02_1.VOB"));
    ASSERT_TRUE(contents.open(QIODevice::ReadWrite));
    QByteArray bytes = contents.readAll();
    int scrambled = 0;
    for (qsizetype sector = 0; sector + 2048 <= bytes.size(); sector += 2048) {
        if (std::uint8_t(bytes[sector + 17]) != 0xe0)
            continue;
        bytes[sector + 20] = char(bytes[sector + 20] | 0x10);
        ++scrambled;
    }
    ASSERT_GT(scrambled, 100);
    contents.seek(0);
    ASSERT_EQ(contents.write(bytes), bytes.size());
    contents.close();
    EXPECT_TRUE(described(copy).isEncrypted);
}

TEST_F(DescribeDVD, isScrambledSector_looksAtTheControlOfThePacketOnly)
{
    QFile contents(QString::fromUtf8(disc() + "/VIDEO_TS/VTS_01_1.VOB"));
    ASSERT_TRUE(contents.open(QIODevice::ReadOnly));
    int looked = 0;
    while (!contents.atEnd()) {
        QByteArray sector = contents.read(2048);
        const auto bytes = [&] {
            return std::span(reinterpret_cast<const std::uint8_t *>(sector.constData()), std::size_t(sector.size()));
        };
        EXPECT_FALSE(isScrambledSector(bytes()));
        sector[20] = char(sector[20] | 0x30);
        const auto kind = std::uint8_t(sector[17]);
        EXPECT_EQ(isScrambledSector(bytes()), kind == 0xbd || kind == 0xe0) << int(kind);
        EXPECT_FALSE(isScrambledSector(bytes().first(2047)));
        ++looked;
    }
    EXPECT_GT(looked, 500);
}

TEST_F(DescribeDVD, whatIsNoDisc_isToldSo)
{
    expectFailure(m_tree.path("missing"), kDVDErrorNoValidMedia, "No such file");
    expectFailure(m_tree.makeFolder("empty"), kDVDErrorNoValidMedia, "there is no VIDEO_TS.IFO in it");
    m_tree.makeFolder("hollow/VIDEO_TS");
    expectFailure(m_tree.path("hollow"), kDVDErrorNoValidMedia, "there is no VIDEO_TS.IFO in it");
    expectFailure(m_tree.makeFifo("fifo"), kDVDErrorNoValidMedia, "neither a folder nor an image nor a device");
    expectFailure(m_tree.makeFile("letters.iso", QByteArray(1 << 20, 'x')), kDVDErrorNoValidMedia,
                  "there is no UDF volume in it");
    expectFailure(m_tree.makeFile("nothing.iso"), kDVDErrorNoValidMedia, "there is no UDF volume in it");
    m_tree.makeFile("data/letter", "x");
    const QByteArray image = m_tree.path("data.iso");
    ASSERT_EQ(runProgram("genisoimage", {"-quiet", "-udf", "-o", image, m_tree.path("data")}).status, 0);
    expectFailure(image, kDVDErrorNoValidMedia, "there is no VIDEO_TS.IFO in a folder VIDEO_TS of its UDF volume");
}

TEST_F(DescribeDVD, tablesThatCannotBeRead_areToldByTheirFault)
{
    m_tree.makeFile("wrong/VIDEO_TS/VIDEO_TS.IFO", QByteArray(4096, 'x'));
    expectFailure(m_tree.path("wrong"), kDVDErrorDamagedMedia,
                  "VIDEO_TS.IFO and its copy cannot be read (VIDEO_TS.IFO does not begin as such tables do, "
                  "VIDEO_TS.BUP is missing)");
    m_tree.makeFile("wrong/VIDEO_TS/VIDEO_TS.IFO");
    m_tree.makeFile("wrong/VIDEO_TS/VIDEO_TS.BUP", "DVDVIDEO-VMG" + QByteArray(4096, '\xff'));
    expectFailure(m_tree.path("wrong"), kDVDErrorDamagedMedia,
                  "(VIDEO_TS.IFO is empty or on a bad place, VIDEO_TS.BUP contradicts itself)");
}

TEST_F(DescribeDVD, error_saysWhatToDo)
{
    const NSError error = describeDVD(m_tree.makeFile("letters.iso", QByteArray(1 << 20, 'x')), {}).error();
    EXPECT_EQ(
        error.localizedRecoverySuggestion(),
        QStringLiteral("Name a folder VIDEO_TS or the one that holds it, the image of a video DVD, or a device."));
    EXPECT_EQ(error.filePath(), m_tree.pathText("letters.iso"));
    EXPECT_TRUE(error.localizedDescription().contains(m_tree.pathText("letters.iso")));
}

TEST_F(DescribeDVD, damagedTables_areReadFromTheirCopy)
{
    const QByteArray copy = copyOfDisc();
    m_tree.makeFile("disc/VIDEO_TS/VIDEO_TS.IFO", QByteArray(100, 'x'));
    m_tree.makeFile("disc/VIDEO_TS/VTS_01_0.IFO");
    DVDDescription disc = described(copy);
    EXPECT_EQ(disc.titles, described(DiscTest::disc()).titles);
}

TEST_F(DescribeDVD, missingTitleSet_isTheDamageOfItsTitle)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.IFO");
    m_tree.remove("disc/VIDEO_TS/VTS_02_0.BUP");
    const DVDDescription disc = described(copy);
    ASSERT_EQ(disc.titles.size(), 2U);
    EXPECT_TRUE(disc.titles[0].damage.isEmpty());
    EXPECT_TRUE(disc.titles[1].damage.startsWith(QStringLiteral("VTS_02_0.IFO and its copy cannot be read")))
        << disc.titles[1].damage.toStdString();
}

TEST_F(DescribeDVD, missingContents_areNoted)
{
    const QByteArray copy = copyOfDisc();
    m_tree.remove("disc/VIDEO_TS/VTS_01_1.VOB");
    EXPECT_EQ(described(copy).notes, QStringList(QStringLiteral("title set 1 has no contents")));
}

TEST_F(DescribeDVD, stop_endsTheProcessAtOnce)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(describeDVD(disc(), stop.get_token()));
}

TEST(DVDTime, millisecondsOf_readsDecimals_andIsZeroForNonsense)
{
    EXPECT_EQ(millisecondsOf({0x01, 0x02, 0x03, 0xc0 | 0x15}), milliseconds(3'723'500));
    EXPECT_EQ(millisecondsOf({0x00, 0x00, 0x10, 0x40 | 0x24}), milliseconds(10'960));
    EXPECT_EQ(millisecondsOf({0x0a, 0, 0, 0}), milliseconds(0));
    EXPECT_EQ(millisecondsOf({0, 0xf0, 0, 0}), milliseconds(0));
    EXPECT_EQ(millisecondsOf({0, 0, 0, 0x3f}), milliseconds(0));
}

} // namespace

} // namespace Tessaron::Testing
