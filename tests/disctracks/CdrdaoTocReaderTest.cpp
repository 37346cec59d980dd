#include "platform/disctracks/CdrdaoTocReader.h"

#include "platform/disctracks/CdrdaoWords.h"
#include "tests/disctracks/ReadDescriptions.h"
#include "tests/support/RunProgram.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <map>

using namespace Tessaron;
using Testing::ProgramRun;
using Testing::runProgram;
using Testing::runs;
using Testing::track;

namespace
{

constexpr std::uint64_t hour = std::uint64_t(60) * 60 * 75 * 2352;

/// Files of an hour of CD audio, unless `lengths` says otherwise; no value there means that nothing tells.
CueSheetFiles files(const std::map<QByteArray, std::optional<std::uint64_t>> &lengths = {})
{
    CueSheetFiles result;
    result.measure = [lengths](CueFile *file) -> Result<std::optional<std::uint64_t>> {
        if (file->name.startsWith("missing"))
            return NSError(NSOSStatusErrorDomain, fnfErr,
                           {{NSLocalizedFailureReasonErrorKey, QStringLiteral("it is not there")}});
        const auto found = lengths.find(file->name);
        file->path = "/music/" + file->name;
        return found == lengths.end() ? std::optional(hour) : found->second;
    };
    return result;
}

CueSheet read(const QByteArray &text, const CueSheetFiles &of = files())
{
    const Result<CueSheet> sheet = cdrdaoTocOfText(text, of);
    if (sheet)
        return *sheet;
    ADD_FAILURE() << qPrintable(sheet.error().localizedFailureReason());
    return {};
}

std::string errorOf(const QByteArray &text, const CueSheetFiles &of = files())
{
    return Testing::errorOf(cdrdaoTocOfText(text, of));
}

} // namespace

TEST(CdrdaoWords, cut_asTheManualSays)
{
    const std::vector<CdrdaoWord> words =
        cdrdaoWords(QStringLiteral("TRACK AUDIO// a comment {\n{\"a \\\"b\\\" \\\\c \\351\\x\",0}\n\"open"));
    ASSERT_EQ(words.size(), 8u);
    EXPECT_TRUE(words[0].is("TRACK") && words[1].is("AUDIO") && words[2].is("{"));
    EXPECT_EQ(words[3].text, QStringLiteral("a \"b\" \\c é\\x"));
    EXPECT_TRUE(words[3].isQuoted);
    EXPECT_EQ(words[3].line, 2u);
    EXPECT_TRUE(words[4].is(",") && words[5].is("0") && words[6].is("}"));
    EXPECT_EQ(cdrdaoWords(QStringLiteral("\"open\nnext")).size(), 2u);
    EXPECT_TRUE(cdrdaoWords(QStringLiteral("// nothing")).empty());
    EXPECT_FALSE(cdrdaoWords(QStringLiteral("\"TRACK\"")).front().is("TRACK"));
}

TEST(CdrdaoTocReader, tracks_lieWhereTheirPiecesSay)
{
    const CueSheet sheet = read("CD_DA\n\n"
                                "TRACK AUDIO\n NO COPY\n NO PRE_EMPHASIS\n TWO_CHANNEL_AUDIO\n ISRC \"DEABC2412345\"\n"
                                "FILE \"data.bin\" 0 00:10:00\n"
                                "TRACK AUDIO\n COPY\n PRE_EMPHASIS\n FOUR_CHANNEL_AUDIO\n"
                                "FILE \"data.bin\" 00:10:00 00:20:00\nSTART 00:02:00\nINDEX 00:05:00\nINDEX 00:06:01\n"
                                "TRACK AUDIO\nPREGAP 00:02:00\nAUDIOFILE \"other.wav\" 588 1176\n"
                                "AUDIOFILE \"third.bin\" SWAP #1000 0 588\n");
    ASSERT_EQ(sheet.contents.trackCount(), 3u);
    EXPECT_EQ(sheet.files.size(), 3u);
    EXPECT_EQ(sheet.files[0].type, CueFileType::Motorola) << "raw audio is big-endian";
    EXPECT_EQ(sheet.files[1].type, CueFileType::Wave);
    EXPECT_EQ(sheet.files[2].type, CueFileType::Binary);
    EXPECT_EQ(sheet.files[2].path, "/music/third.bin");
    EXPECT_EQ(track(sheet, 1).length, 750u);
    EXPECT_EQ(track(sheet, 1).isrc, "DEABC2412345");
    EXPECT_EQ(sheet.places[0].data, runs({{0, 0, 750}}));
    const DiscTrack &second = track(sheet, 2);
    EXPECT_EQ(second.pregap, (TrackGap{150, true}));
    EXPECT_EQ(second.length, 1350u);
    EXPECT_EQ(second.indexPoints, (std::vector<std::uint64_t>{375, 451}));
    EXPECT_EQ(second.copyState, CopyState::CopyrightFree);
    EXPECT_TRUE(second.hasPreEmphasis && second.hasFourChannels);
    EXPECT_EQ(sheet.places[1].pregap, runs({{0, std::uint64_t(750) * 2352, 150}}));
    EXPECT_EQ(sheet.places[1].data, runs({{0, std::uint64_t(900) * 2352, 1350}}));
    EXPECT_EQ(track(sheet, 3).pregap, (TrackGap{150, false}));
    EXPECT_EQ(sheet.places[2].data, runs({{1, 2352, 2}, {2, 1000, 1}}));
    EXPECT_TRUE(sheet.notes.empty());
}

TEST(CdrdaoTocReader, aPregap_mayReachOverSeveralFiles)
{
    const CueSheet sheet = read("CD_DA TRACK AUDIO FILE \"a\" 0 00:00:10 FILE \"b\" 0 00:00:10 START 00:00:13\n");
    EXPECT_EQ(track(sheet, 1).pregap, (TrackGap{13, true}));
    EXPECT_EQ(track(sheet, 1).length, 7u);
    EXPECT_EQ(sheet.places[0].pregap, runs({{0, 0, 10}, {1, 0, 3}}));
    EXPECT_EQ(sheet.places[0].data, runs({{1, 7056, 7}}));
}

TEST(CdrdaoTocReader, silence_isAGapOfTheTrack)
{
    const CueSheet sheet = read("CD_DA TRACK AUDIO SILENCE 00:01:00 START FILE \"a\" 0 00:00:10 SILENCE 00:00:05\n"
                                "TRACK AUDIO SILENCE 00:00:04\nTRACK AUDIO ZERO 00:00:03 START 00:00:01\n");
    EXPECT_EQ(track(sheet, 1).pregap, (TrackGap{75, false}));
    EXPECT_EQ(track(sheet, 1).length, 15u);
    EXPECT_EQ(track(sheet, 1).postgap, (TrackGap{5, false}));
    EXPECT_EQ(sheet.places[0].data, runs({{0, 0, 10}}));
    EXPECT_EQ(track(sheet, 2).length, 4u);
    EXPECT_EQ(track(sheet, 2).storedBlocks(), 0u);
    EXPECT_EQ(track(sheet, 3).pregap, (TrackGap{1, false}));
    EXPECT_EQ(track(sheet, 3).length, 2u);
    EXPECT_EQ(errorOf("CD_DA TRACK AUDIO FILE \"a\" 0 00:00:10\nSILENCE 00:00:05 FILE \"b\" 0 1176\n"),
              "Line 2 of the .toc file: There is silence between two pieces of the track.");
    EXPECT_EQ(errorOf("CD_DA\nTRACK AUDIO SILENCE 00:00:05 FILE \"b\" 0 1176 START 00:00:06\n"),
              "Line 2 of the .toc file: The silence in front of track 1 is not its pregap.");
}

TEST(CdrdaoTocReader, modes_giveKindAndSectorSize)
{
    const auto shape = [](const QByteArray &mode) {
        const CueSheet sheet = read("CD_ROM_XA TRACK " + mode + " DATAFILE \"a\" 00:00:10\n");
        return std::pair(track(sheet, 1).kind, track(sheet, 1).blockSize);
    };
    EXPECT_EQ(shape("AUDIO"), std::pair(TrackKind::Audio, 2352u));
    EXPECT_EQ(shape("AUDIO RW"), std::pair(TrackKind::Audio, 2448u));
    EXPECT_EQ(shape("MODE1"), std::pair(TrackKind::Mode1, 2048u));
    EXPECT_EQ(shape("MODE1_RAW"), std::pair(TrackKind::Mode1, 2352u));
    EXPECT_EQ(shape("MODE1_RAW RW_RAW"), std::pair(TrackKind::Mode1, 2448u));
    EXPECT_EQ(shape("MODE2"), std::pair(TrackKind::Mode2Mixed, 2336u));
    EXPECT_EQ(shape("MODE2_FORM1"), std::pair(TrackKind::Mode2Form1, 2048u));
    EXPECT_EQ(shape("MODE2_FORM2"), std::pair(TrackKind::Mode2Form2, 2324u));
    EXPECT_EQ(shape("MODE2_FORM_MIX"), std::pair(TrackKind::Mode2Mixed, 2336u));
    EXPECT_EQ(shape("MODE2_RAW"), std::pair(TrackKind::Mode2Mixed, 2352u));
    EXPECT_EQ(shape("MODE2_RAW RW"), std::pair(TrackKind::Mode2Mixed, 2448u));
    for (const QByteArray mode : {"MODE3", "MODE1 RW", "\"AUDIO\"", "audio"})
        EXPECT_TRUE(QByteArray::fromStdString(errorOf("TRACK " + mode)).contains(" is not a mode of a track"))
            << mode.data();
}

TEST(CdrdaoTocReader, dataFiles_areCountedInBytes)
{
    const CueSheet sheet = read("CD_ROM TRACK MODE1 DATAFILE \"a\" #512 4096\n"
                                "TRACK MODE1_RAW ZERO MODE1_RAW 00:02:00 START DATAFILE \"b\" // to its end\n",
                                files({{"b", std::uint64_t(2352) * 7 + 5}}));
    EXPECT_EQ(sheet.places[0].data, runs({{0, 512, 2}}));
    EXPECT_EQ(track(sheet, 2).length, 7u);
    EXPECT_EQ(track(sheet, 2).pregap, (TrackGap{150, false}));
    ASSERT_EQ(sheet.notes.size(), 1u);
    EXPECT_EQ(sheet.notes[0].text, QStringLiteral("The piece of \"b\" ends with 5 bytes that fill no block of 2352."));
}

TEST(CdrdaoTocReader, length_isNotKnown_whereNothingTells)
{
    const CueSheet sheet =
        read("CD_DA TRACK AUDIO FILE \"a.mp3\" 0 INDEX 00:01:00\n", files({{"a.mp3", std::nullopt}}));
    EXPECT_FALSE(sheet.places[0].isLengthKnown);
    EXPECT_EQ(sheet.files[0].type, CueFileType::Mp3);
    EXPECT_EQ(track(sheet, 1).length, 76u);
}

TEST(CdrdaoTocReader, texts_areThoseOfEachLanguage)
{
    const CueSheet sheet = read(
        "CD_DA\nCATALOG \"1234567890123\"\n"
        "CD_TEXT {\n LANGUAGE_MAP {\n 0 : EN\n 1: 8\n }\n LANGUAGE 0 {\n  TITLE \"Disc\"\n  SIZE_INFO { 0, 1, 2 }\n"
        "  GENRE { 0, 1 }\n }\n LANGUAGE 1 { TITLE \"Scheibe\" }\n}\n"
        "TRACK AUDIO\nCD_TEXT { LANGUAGE 0 { TITLE \"One\" PERFORMER \"Caf\\351\" } }\nFILE \"a\" 0 1176\n"
        "TRACK AUDIO\nFILE \"a\" 0 1176\n");
    EXPECT_EQ(sheet.contents.mediaCatalogNumber, "1234567890123");
    const CDText &text = sheet.contents.cdText;
    ASSERT_EQ(text.blocks.size(), 2u);
    EXPECT_EQ(text.blocks[0].language, 0x09);
    EXPECT_EQ(text.blocks[1].language, 0x08);
    EXPECT_EQ(text.blocks[0].texts.at(CDTextKind::Title),
              (std::vector<QString>{QStringLiteral("Disc"), QStringLiteral("One"), QString()}));
    EXPECT_EQ(text.blocks[0].texts.at(CDTextKind::Performer)[1], QStringLiteral("Café"));
    EXPECT_EQ(text.blocks[1].texts.at(CDTextKind::Title)[0], QStringLiteral("Scheibe"));
    ASSERT_EQ(sheet.notes.size(), 1u);
    EXPECT_EQ(sheet.notes[0].line, 11u);
}

TEST(CdrdaoTocReader, languagesThatAreNotKnown_areNotedAndTheirTextsKept)
{
    const CueSheet sheet = read("CD_TEXT {\n LANGUAGE_MAP {\n 0 : XX\n 1: 256\n 2:jpn 9 : EN\n 3\n }\n"
                                " LANGUAGE 0 { TITLE \"A\" }\n LANGUAGE 1 { TITLE \"B\" }\n"
                                " LANGUAGE 2 { TITLE \"C\" }\n LANGUAGE 3 { TITLE \"D\" }\n}\n"
                                "TRACK AUDIO\nFILE \"a\" 0 1176\n");
    constexpr std::uint8_t unknown = 0, japanese = 0x69;
    std::vector<std::pair<std::uint8_t, QString>> texts;
    for (const CDTextBlock &block : sheet.contents.cdText.blocks)
        texts.emplace_back(block.language, block.texts.at(CDTextKind::Title)[0]);
    EXPECT_EQ(texts,
              (std::vector<std::pair<std::uint8_t, QString>>{{unknown, QStringLiteral("A")},
                                                             {unknown, QStringLiteral("B")},
                                                             {japanese, QStringLiteral("C")},
                                                             {unknown, QStringLiteral("D")}}));
    const std::pair<std::uint32_t, const char *> notes[] = {
        {3, "\"XX\" is not a language that is known; the texts of language 0 were taken without one."},
        {4, "\"256\" is not a language that is known; the texts of language 1 were taken without one."},
        {5, "\"9\" is not a number of a language from 0 to 7 and was passed over."},
        {0, "No LANGUAGE_MAP says which language number 3 is; its texts were taken without one."}};
    ASSERT_EQ(sheet.notes.size(), std::size(notes));
    for (std::size_t index = 0; index < std::size(notes); ++index) {
        EXPECT_EQ(sheet.notes[index].line, notes[index].first);
        EXPECT_EQ(sheet.notes[index].text.toStdString(), notes[index].second);
    }
}

TEST(CdrdaoTocReader, errors_nameLineAndCause)
{
    const std::pair<const char *, const char *> wrong[] = {
        {"", "The file is not a table of contents of cdrdao with a track."},
        {"CD_DA\n", "The file is not a table of contents of cdrdao with a track."},
        {"CD_DA\nBOGUS", "Line 2 of the .toc file: \"BOGUS\" does not belong here."},
        {"CD_DA\n\nSTART", "Line 3 of the .toc file: START stands before the first TRACK."},
        {"TRACK AUDIO\nFILE \"a\" x", "Line 2 of the .toc file: \"x\" is not a length."},
        {"TRACK AUDIO\nFILE \"a\" 00:61:00", "Line 2 of the .toc file: \"00:61:00\" is not a length."},
        {"TRACK AUDIO\nFILE \"a\" 99999999999999999999",
         "Line 2 of the .toc file: \"99999999999999999999\" is not a length."},
        {"TRACK AUDIO\nFILE a 0", "Line 2 of the .toc file: \"a\" does not belong here."},
        {"TRACK AUDIO\nFILE", "Line 2 of the .toc file: The file ends too early."},
        {"TRACK AUDIO\nFILE \"missing\" 0", "Line 2 of the .toc file: \"missing\" cannot be read: it is not there"},
        {"TRACK AUDIO\nFILE \"a\" 61:00:00",
         "Line 2 of the .toc file: The piece lies beyond the end of \"a\", which has 635040000 bytes."},
        {"TRACK AUDIO\nFILE \"a\" 59:00:00 02:00:00",
         "Line 2 of the .toc file: The piece lies beyond the end of \"a\", which has 635040000 bytes."},
        {"\nTRACK AUDIO\nTRACK AUDIO", "Line 2 of the .toc file: Track 1 has no blocks."},
        {"\nTRACK AUDIO FILE \"a\" 0 588 START 00:00:02",
         "Line 2 of the .toc file: The pregap of track 1 is longer than what stands there."},
        {"TRACK AUDIO FILE \"a\" 0 00:00:10\nINDEX 00:00:10",
         "Line 2 of the .toc file: This INDEX lies behind the end of its track, or before another."},
        {"TRACK AUDIO FILE \"a\" 0 00:00:10\nSTART 00:00:01\nSTART",
         "Line 3 of the .toc file: \"START\" does not belong here."},
        {"TRACK AUDIO SILENCE 100", "Line 1 of the .toc file: The length makes no whole blocks."},
        {"TRACK AUDIO FIFO \"a\" 00:00:10",
         "Line 1 of the .toc file: The track's data comes from a pipe, which is read only once."},
        {"CD_TEXT { LANGUAGE 8 { } }", "Line 1 of the .toc file: LANGUAGE needs a number from 0 to 7."},
        {"CD_TEXT { LANGUAGE 0 { TITLE \"x\"", "Line 1 of the .toc file: The file ends too early."},
        {"CD_TEXT { LANGUAGE 0 { TITLE }", "Line 1 of the .toc file: \"}\" does not belong here."},
        {"CD_TEXT { LANGUAGE 0 { SIZE_INFO { {", "Line 1 of the .toc file: The file ends too early."},
    };
    for (const auto &[text, error] : wrong)
        EXPECT_EQ(errorOf(text), error) << text;
    EXPECT_EQ(errorOf(QByteArray((1 << 20) + 1, ' ')), "The file has 1048577 bytes; no .toc file is so long.");
    EXPECT_EQ(errorOf(QByteArray("TRACK AUDIO SILENCE 588\n").repeated(100)),
              "Line 100 of the .toc file: There are more tracks than the 99 that a disc can have.");
}

TEST(CdrdaoTocReader, cdrdaoItself_understandsTheSame)
{
    const QTemporaryDir folder;
    QFile audio(folder.filePath(QStringLiteral("a.bin")));
    ASSERT_TRUE(audio.open(QIODevice::WriteOnly));
    audio.write(QByteArray(qsizetype(1000) * 2352, 'a'));
    audio.close();
    const QByteArray text = "CD_DA\nTRACK AUDIO\nFILE \"a.bin\" 0 00:06:00\nTRACK AUDIO\nPREGAP 00:02:00\n"
                            "FILE \"a.bin\" 00:06:00 00:06:00\nSTART 00:03:00\n";
    QFile toc(folder.filePath(QStringLiteral("a.toc")));
    ASSERT_TRUE(toc.open(QIODevice::WriteOnly));
    // A PREGAP says where the track starts: START beside it is refused by both.
    toc.write(QByteArray(text).replace("START 00:03:00\n", ""));
    toc.close();
    const ProgramRun result = runProgram("cdrdao", {"show-toc", "a.toc"}, folder.path().toUtf8());
    const QString shown = QString::fromUtf8(result.output + result.errors);
    EXPECT_TRUE(shown.contains(QStringLiteral("START  00:08:00(   600)"))) << qPrintable(shown);
    EXPECT_TRUE(shown.contains(QStringLiteral("END    00:14:00(  1050)"))) << qPrintable(shown);
    const Result<CueSheet> sheet = cdrdaoTocOfFile(folder.filePath(QStringLiteral("a.toc")).toUtf8());
    ASSERT_TRUE(sheet) << qPrintable(sheet.error().localizedFailureReason());
    EXPECT_EQ(sheet->contents.firstBlockOfTrack(2), BlockAddress(600));
    EXPECT_EQ(track(*sheet, 2).length, 6u * 75);
    EXPECT_EQ(errorOf(text), "Line 7 of the .toc file: \"START\" does not belong here.");
}
