#include "platform/disctracks/CloneCDReader.h"

#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/DiscDescription.h"
#include "tests/disctracks/ReadDescriptions.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::runs;
using Testing::track;

namespace
{

CueSheetFiles image(std::optional<std::uint64_t> sectors)
{
    CueSheetFiles files;
    files.measure = [sectors](CueFile *file) -> Result<std::optional<std::uint64_t>> {
        file->path = "/images/" + file->name;
        return sectors ? std::optional(*sectors * 2352) : std::nullopt;
    };
    return files;
}

struct Point {
    int number; ///< of the track, or 0xa0 to 0xa2
    int block;
    int control = 4;
    int session = 1;
};

QByteArray entries(const std::vector<Point> &points)
{
    QByteArray text = "[CloneCD]\r\nVersion=3\r\n[Disc]\r\nTocEntries=" + QByteArray::number(qsizetype(points.size()))
        + "\r\nSessions=1\r\nDataTracksScrambled=0\r\nCDTextLength=0\r\n[Session 1]\r\nPreGapMode=1\r\n";
    int number = 0;
    for (const Point &point : points)
        text += "[Entry " + QByteArray::number(number++) + "]\r\nSession=" + QByteArray::number(point.session)
            + "\r\nPoint=0x" + QByteArray::number(point.number, 16) + "\r\nADR=0x01\r\nControl=0x"
            + QByteArray::number(point.control, 16)
            + "\r\nTrackNo=0\r\nALBA=-150\r\nPLBA=" + QByteArray::number(point.block) + "\r\n";
    return text;
}

const QByteArray oneTrack = entries({{0xa0, 4350}, {0xa1, 4350}, {0xa2, 1000}, {1, 0}});

CueSheet read(const QByteArray &text, std::optional<std::uint64_t> sectors)
{
    const Result<CueSheet> sheet = cloneCDOfText(text, "disc.img", image(sectors));
    if (sheet)
        return *sheet;
    ADD_FAILURE() << qPrintable(sheet.error().localizedFailureReason());
    return {};
}

std::string errorOf(const QByteArray &text, std::optional<std::uint64_t> sectors = 100000)
{
    return Testing::errorOf(cloneCDOfText(text, "disc.img", image(sectors)));
}

} // namespace

TEST(CloneCDReader, tracks_lieWhereTheEntriesSay)
{
    const CueSheet sheet =
        read(entries({{0xa0, 4350}, {0xa1, 7950}, {0xa2, 1000}, {1, 0}, {3, 700, 0}, {2, 400, 11}})
                 + "[TRACK 1]\r\nMODE=1\r\nINDEX 1=0\r\n[TRACK 2]\nMODE=0\nINDEX 0=250\nINDEX 1=400\n"
                   "INDEX 2=500\nISRC=DEABC2412345\nFLAGS= DCP\n[TRACK 3]\nMODE=0\nINDEX 1=700\n",
             1000);
    ASSERT_EQ(sheet.contents.trackCount(), 3u);
    EXPECT_EQ(sheet.contents.sessions.size(), 1u);
    EXPECT_EQ(track(sheet, 1).kind, TrackKind::Mode1);
    EXPECT_EQ(track(sheet, 1).blockSize, 2352u);
    EXPECT_EQ(track(sheet, 1).length, 250u);
    EXPECT_EQ(sheet.places[0].data, runs({{0, 0, 250}}));
    const DiscTrack &second = track(sheet, 2);
    EXPECT_TRUE(second.isAudio() && second.hasPreEmphasis && second.hasFourChannels);
    EXPECT_EQ(second.copyState, CopyState::CopyrightFree);
    EXPECT_EQ(second.pregap, (TrackGap{150, true}));
    EXPECT_EQ(second.length, 300u);
    EXPECT_EQ(second.indexPoints, std::vector<std::uint64_t>{100});
    EXPECT_EQ(second.isrc, "DEABC2412345");
    EXPECT_EQ(sheet.places[1].pregap, runs({{0, std::uint64_t(250) * 2352, 150}}));
    EXPECT_EQ(sheet.places[1].data, runs({{0, std::uint64_t(400) * 2352, 300}}));
    EXPECT_EQ(track(sheet, 3).length, 300u);
    EXPECT_EQ(sheet.contents.firstBlockOfTrack(3), BlockAddress(700));
    EXPECT_EQ(sheet.files[0].path, "/images/disc.img");
    EXPECT_TRUE(sheet.notes.empty());
}

TEST(CloneCDReader, modes_giveTheKind)
{
    const auto kind = [](const char *mode) {
        return track(read(oneTrack + "[TRACK 1]\nMODE=" + mode + "\n", 1000), 1).kind;
    };
    EXPECT_EQ(kind("0"), TrackKind::Audio);
    EXPECT_EQ(kind("1"), TrackKind::Mode1);
    EXPECT_EQ(kind("2"), TrackKind::Mode2Mixed);
    const CueSheet without = read(oneTrack, 1000);
    EXPECT_EQ(track(without, 1).kind, TrackKind::Mode1);
    EXPECT_EQ(without.notes.size(), 1u);
    EXPECT_EQ(errorOf(oneTrack + "[TRACK 1]\nMODE=3\n"),
              "Line 43 of the .ccd file: \"3\" is not a mode of a track that is known here.");
}

TEST(CloneCDReader, audioInFrontOfTrack1_isItsPregap)
{
    const CueSheet sheet =
        read(entries({{0xa2, 1000, 0}, {1, 300, 0}}) + "[TRACK 1]\nMODE=0\nINDEX 0=0\nINDEX 1=300\n", 1000);
    EXPECT_EQ(track(sheet, 1).pregap, (TrackGap{300, true}));
    EXPECT_EQ(sheet.places[0].pregap, runs({{0, 0, 300}}));
    EXPECT_EQ(track(sheet, 1).length, 700u);
}

TEST(CloneCDReader, sessions_followEachOtherInTheImage_butNotOnTheDisc)
{
    const CueSheet sheet = read(entries({{0xa2, 1000}, {1, 0}, {0xa2, 13000, 4, 2}, {2, 12400, 4, 2}})
                                    + "[TRACK 1]\nMODE=1\n[TRACK 2]\nMODE=2\n",
                                1600);
    ASSERT_EQ(sheet.contents.sessions.size(), 2u);
    EXPECT_EQ(sheet.contents.firstBlockOfTrack(2), BlockAddress(12400));
    EXPECT_EQ(sheet.places[1].data, runs({{0, std::uint64_t(1000) * 2352, 600}}));
}

TEST(CloneCDReader, texts_areTheirPacks)
{
    CDText text;
    text.blocks.emplace_back();
    text.blocks[0].texts[CDTextKind::Title] = {QStringLiteral("Disc"), QStringLiteral("One")};
    const Result<QByteArray> packs = cdTextPacks(text, 1);
    ASSERT_TRUE(packs);
    QByteArray section = "[CDText]\nEntries=4\n";
    for (qsizetype at = 0; at < packs->size(); at += qsizetype(cdTextPackSize))
        section +=
            "Entry " + QByteArray::number(at / qsizetype(cdTextPackSize)) + '=' + packs->mid(at, 16).toHex(' ') + "\n";
    const CueSheet sheet = read(oneTrack + "[Disc]\nCATALOG=1234567890123\n[TRACK 1]\nMODE=1\n" + section, 1000);
    EXPECT_EQ(sheet.contents.cdText, text);
    EXPECT_EQ(sheet.contents.mediaCatalogNumber, "1234567890123");
    const CueSheet broken = read(oneTrack + "[TRACK 1]\nMODE=1\n[CDText]\nEntry 0=80 00\nEntry 1=00\n", 1000);
    EXPECT_EQ(broken.notes.size(), 2u);
}

TEST(CloneCDReader, notes_sayWhatWasPassedOver)
{
    const CueSheet sheet = read(entries({{0xa2, 1000}, {2, 0}})
                                    + "nonsense\n[TRACK 2]\nMODE=1\nINDEX 1=5\nINDEX 3=7\nISRC=short\n; a comment\n",
                                1001);
    EXPECT_EQ(track(sheet, 1).length, 1000u) << "counted from 1";
    QStringList notes;
    for (const CueNote &note : sheet.notes)
        notes << note.text;
    EXPECT_EQ(notes.size(), 6) << qPrintable(notes.join(u'\n'));
}

TEST(CloneCDReader, errors_nameLineAndCause)
{
    const std::pair<QByteArray, const char *> wrong[] = {
        {"", "The file describes no disc of CloneCD."},
        {"[Disc]\n", "The file describes no disc of CloneCD."},
        {"[Disc]\nDataTracksScrambled=1\n", "Line 2 of the .ccd file: The sectors of data are scrambled in the image."},
        {"[Entry 0]\nPoint=x\n", "Line 2 of the .ccd file: \"x\" is not a number."},
        {"[Entry 0]\nPoint=99999999999\n", "Line 2 of the .ccd file: \"99999999999\" is not a number."},
        {"[Entry 0]\nPoint=0xa2\n", "The file names no track."},
        {"[Entry 0]\nPoint=1\n", "Line 1 of the .ccd file: Track 1 has no PLBA."},
        {"[Entry 0]\nPoint=1\nPLBA=-1\n", "Line 3 of the .ccd file: Block -1 is not a place of a track on a CD."},
        {"[Entry 0]\nPoint=1\nPLBA=450001\n",
         "Line 3 of the .ccd file: Block 450001 is not a place of a track on a CD."},
        {"[Entry 0]\nPoint=1\nPLBA=0\nSession=0\n", "Line 1 of the .ccd file: Track 1 is in no session from 1 to 99."},
        {"[Entry 0]\nPoint=1\nPLBA=0\n", "Line 3 of the .ccd file: Session 1 has no entry for its end (point 0xa2)."},
        {"[Entry 0]\nPoint=1\nPLBA=0\n[Entry 1]\nPoint=162\nPLBA=0\n",
         "Line 4 of the .ccd file: Session 1 does not end behind its last track."},
        {"[Entry 0]\nPoint=1\nPLBA=0\n[Entry 1]\nPoint=3\nPLBA=10\n",
         "Line 6 of the .ccd file: Track 3 follows track 1."},
        {"[Entry 0]\nPoint=1\nPLBA=0\n[Entry 1]\nPoint=1\nPLBA=10\n",
         "Line 6 of the .ccd file: Track 1 follows track 1."},
        {"[Entry 0]\nPoint=1\nPLBA=10\n[Entry 1]\nPoint=2\nPLBA=10\n",
         "Line 6 of the .ccd file: Track 2 begins before track 1."},
        {"[TRACK 0]\n", "Line 1 of the .ccd file: A TRACK needs a number from 1 to 99."},
        {"[TRACK]\n", "Line 1 of the .ccd file: A TRACK needs a number from 1 to 99."},
        {"[TRACK 1]\n[TRACK 1]\n", "Line 2 of the .ccd file: TRACK 1 is described twice."},
        {"[TRACK 1]\nINDEX 100=0\n", "Line 2 of the .ccd file: An INDEX needs a number from 0 to 99."},
        {"[TRACK 1]\nINDEX 1=a\n", "Line 2 of the .ccd file: \"a\" is not a number."},
    };
    for (const auto &[text, error] : wrong)
        EXPECT_EQ(errorOf(text), error) << text.constData();
    EXPECT_EQ(errorOf(entries({{0xa2, 1000}, {1, 0}, {2, 500}}) + "[TRACK 2]\nMODE=1\nINDEX 0=0\n"),
              "Line 36 of the .ccd file: Index 0 of track 2 does not lie between track 1 and index 1.");
    EXPECT_EQ(errorOf(oneTrack, 999),
              "Line 41 of the .ccd file: Track 1 ends at byte 2352000, but the image has 2349648.");
    EXPECT_EQ(errorOf(QByteArray((1 << 20) + 1, ' ')), "The file has 1048577 bytes; no .ccd file is so long.");
}

TEST(CloneCDReader, cloneCDOfFile_findsTheImageBesideIt)
{
    const QTemporaryDir folder;
    const auto write = [&](const char *name, const QByteArray &bytes) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    write("Disc.CCD", oneTrack + "[TRACK 1]\nMODE=1\n");
    const QByteArray path = folder.filePath(QStringLiteral("Disc.CCD")).toUtf8();
    const Result<CueSheet> missing = discDescriptionOfFile(path);
    ASSERT_FALSE(missing);
    EXPECT_TRUE(missing.error().localizedFailureReason().contains(QStringLiteral("\"Disc.img\" cannot be read")));
    write("DISC.IMG", QByteArray(qsizetype(1000) * 2352, 'x'));
    const Result<CueSheet> found = discDescriptionOfFile(path);
    ASSERT_TRUE(found) << qPrintable(found.error().localizedFailureReason());
    EXPECT_TRUE(found->files[0].path.endsWith("/DISC.IMG"));
}

TEST(DiscDescription, kind_goesByTheName)
{
    EXPECT_EQ(discDescriptionKind("a/b.CUE"), DiscDescriptionKind::CueSheet);
    EXPECT_EQ(discDescriptionKind("b.ccd"), DiscDescriptionKind::CloneCD);
    EXPECT_EQ(discDescriptionKind("b.Toc"), DiscDescriptionKind::Cdrdao);
    for (const char *name : {"", "cue", "b.bin", "b.cue/x", "b.cues"})
        EXPECT_EQ(discDescriptionKind(name), DiscDescriptionKind::None);
    EXPECT_EQ(nameOfDiscDescription(DiscDescriptionKind::Cdrdao), QStringLiteral(".toc file"));
    EXPECT_TRUE(nameOfDiscDescription(DiscDescriptionKind::None).isEmpty());
}
