#include "platform/disctracks/CueSheetReader.h"

#include "platform/disctracks/CDTextPacks.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

/// Reads the sheet with files of that many bytes each, whichever they are.
Result<CueSheet> read(const QByteArray &text, std::uint64_t fileBytes)
{
    CueSheetFiles files;
    files.measure = [fileBytes](CueFile *file) -> Result<std::optional<std::uint64_t>> {
        file->path = file->name;
        return std::optional(fileBytes);
    };
    return cueSheetOfText(text, files);
}

std::string failure(const QByteArray &text, std::uint64_t fileBytes = std::uint64_t{1000} * 2352)
{
    const Result<CueSheet> sheet = read(text, fileBytes);
    if (sheet)
        return {};
    EXPECT_FALSE(sheet.error().localizedRecoverySuggestion().isEmpty());
    return sheet.error().localizedFailureReason().toStdString();
}

std::string reasonOf(const Result<CueSheet> &sheet)
{
    return sheet.error().localizedDescription().toStdString();
}

const char oneTrack[] = "FILE \"a.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n";

} // namespace

TEST(CueSheetReader, oneFile_isCutAtTheIndexes)
{
    const Result<CueSheet> sheet = read("CATALOG 4006381333931\r\nFILE \"a b.bin\" BINARY\r\n"
                                        "  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n"
                                        "  TRACK 02 AUDIO\r\n    FLAGS DCP PRE 4CH\r\n    ISRC DEA123456789\r\n"
                                        "    PREGAP 00:02:00\r\n    INDEX 01 00:04:00\r\n    INDEX 02 00:05:10\r\n"
                                        "  TRACK 03 AUDIO\r\n    INDEX 00 00:08:00\r\n    INDEX 01 00:10:00\r\n"
                                        "    POSTGAP 00:01:00\r\n",
                                        std::uint64_t{1000} * 2352);
    ASSERT_TRUE(sheet) << reasonOf(sheet);
    EXPECT_EQ(sheet->contents.mediaCatalogNumber, "4006381333931");
    ASSERT_EQ(sheet->contents.sessions.size(), 1u);
    const std::vector<DiscTrack> &tracks = sheet->contents.sessions[0].tracks;
    ASSERT_EQ(tracks.size(), 3u);
    EXPECT_EQ(tracks[0].kind, TrackKind::Mode1);
    EXPECT_EQ(tracks[0].length, 300u);
    EXPECT_EQ(tracks[1].pregap, (TrackGap{150, false}));
    EXPECT_EQ(tracks[1].length, 300u);
    EXPECT_EQ(tracks[1].indexPoints, std::vector<std::uint64_t>{85});
    EXPECT_EQ(tracks[1].isrc, "DEA123456789");
    EXPECT_EQ(tracks[1].copyState, CopyState::CopyrightFree);
    EXPECT_TRUE(tracks[1].hasPreEmphasis && tracks[1].hasFourChannels);
    EXPECT_EQ(tracks[2].pregap, (TrackGap{150, true}));
    EXPECT_EQ(tracks[2].length, 250u + 75);
    EXPECT_EQ(tracks[2].postgap, (TrackGap{75, false}));
    EXPECT_EQ(sheet->contents.storedBytes(), 1000u * 2352);
    EXPECT_EQ(sheet->places[2].pregap, (std::vector<CueRun>{{0, std::uint64_t{600} * 2352, 150}}));
    EXPECT_EQ(sheet->places[2].data, (std::vector<CueRun>{{0, std::uint64_t{750} * 2352, 250}}));
    EXPECT_TRUE(sheet->notes.empty());
    EXPECT_FALSE(sheet->contents.check());
}

TEST(CueSheetReader, eachMode_isOfItsKindAndSize)
{
    const struct {
        const char *word;
        TrackKind kind;
        std::uint32_t size;
    } rows[] = {
        {"AUDIO", TrackKind::Audio, 2352},           {"CDG", TrackKind::Audio, 2448},
        {"MODE1/2048", TrackKind::Mode1, 2048},      {"MODE1/2352", TrackKind::Mode1, 2352},
        {"MODE2/2048", TrackKind::Mode2Form1, 2048}, {"MODE2/2324", TrackKind::Mode2Form2, 2324},
        {"MODE2/2336", TrackKind::Mode2Mixed, 2336}, {"MODE2/2352", TrackKind::Mode2Mixed, 2352},
        {"CDI/2336", TrackKind::Mode2Mixed, 2336},   {"cdi/2352", TrackKind::Mode2Mixed, 2352},
    };
    for (const auto &row : rows) {
        const Result<CueSheet> sheet = read(QByteArray("FILE a BINARY\nTRACK 01 ") + row.word + "\nINDEX 01 00:00:00\n",
                                            std::uint64_t{4} * row.size);
        ASSERT_TRUE(sheet) << row.word;
        const DiscTrack &track = *sheet->contents.track(1);
        EXPECT_EQ(track.kind, row.kind) << row.word;
        EXPECT_EQ(track.blockSize, row.size);
        EXPECT_EQ(track.length, 4u);
        EXPECT_EQ(recordingNumbers(track).sessionFormat.value_or(0) == 16,
                  QByteArray(row.word).toUpper().startsWith("CDI"));
    }
}

TEST(CueSheetReader, formsThatPeopleWrite_areReadAlike)
{
    const Result<CueSheet> plain = read(oneTrack, std::uint64_t{10} * 2352);
    ASSERT_TRUE(plain) << reasonOf(plain);
    const QByteArray text = oneTrack;
    QByteArray utf16("\xFF\xFE");
    QByteArray utf16Big("\xFE\xFF");
    for (const char character : text) {
        utf16.append(character).append('\0');
        utf16Big.append('\0').append(character);
    }
    const QByteArray variants[] = {
        "\xEF\xBB\xBF" + text,
        utf16,
        utf16Big,
        QByteArray(text).replace('\n', '\r'),
        QByteArray(text).replace("\n", "\r\n"),
        text.chopped(1),
        QByteArray(text).replace("\"", ""),
        "file a.bin binary\ntrack 1 mode1/2352\nindex 1 0:0:0",
        "\n\n\t FILE   a.bin\t BINARY  \n\tTRACK  01  MODE1/2352\n INDEX 01   00:00:00\n\n",
        "REM made by hand\nREM GENRE none\n" + text,
    };
    for (const QByteArray &variant : variants) {
        const Result<CueSheet> sheet = read(variant, std::uint64_t{10} * 2352);
        ASSERT_TRUE(sheet) << reasonOf(sheet) << variant.constData();
        EXPECT_EQ(sheet->contents, plain->contents);
        EXPECT_EQ(sheet->files[0].name, "a.bin");
        EXPECT_EQ(sheet->places, plain->places);
    }
}

TEST(CueSheetReader, anUnquotedName_mayHoldBlanks)
{
    const Result<CueSheet> sheet = read("FILE my own disc.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n", 2352);
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->files[0].name, "my own disc.bin");
    EXPECT_EQ(sheet->files[0].nameAsWritten, "my own disc.bin");
}

TEST(CueSheetReader, olderEncodings_areToldApartAndNoted)
{
    const Result<CueSheet> western = read("FILE \"Caf\xE9.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n", 2352);
    ASSERT_TRUE(western);
    EXPECT_EQ(western->files[0].name, "Caf\xC3\xA9.bin");
    EXPECT_EQ(western->files[0].nameAsWritten, "Caf\xE9.bin");
    ASSERT_EQ(western->notes.size(), 1u);
    EXPECT_TRUE(western->notes[0].text.contains(QStringLiteral("Windows-1252")));
    const Result<CueSheet> japanese =
        read("TITLE \"\x83\x5C\x83\x6A\x81\x5B\"\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n", 2352);
    ASSERT_TRUE(japanese);
    const CDTextBlock &block = japanese->contents.cdText.blocks.at(0);
    EXPECT_EQ(block.texts.at(CDTextKind::Title)[0], QStringLiteral(u"\u30bd\u30cb\u30fc"));
    EXPECT_EQ(block.encoding, CDTextEncoding::ShiftJis);
}

TEST(CueSheetReader, aFileForEachTrack_countsFromItsOwnStart)
{
    const Result<CueSheet> sheet = read("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                        "FILE b.wav WAVE\nTRACK 02 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:01:00\n",
                                        std::uint64_t{500} * 2352);
    ASSERT_TRUE(sheet) << reasonOf(sheet);
    EXPECT_EQ(sheet->contents.track(1)->length, 500u);
    EXPECT_EQ(sheet->contents.track(2)->pregap, (TrackGap{75, true}));
    EXPECT_EQ(sheet->contents.track(2)->length, 425u);
    EXPECT_EQ(sheet->places[1].data, (std::vector<CueRun>{{1, std::uint64_t{75} * 2352, 425}}));
}

TEST(CueSheetReader, aGapAtTheEndOfTheFileBefore_isThePregap)
{
    const Result<CueSheet> sheet = read("FILE a.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                        "TRACK 02 AUDIO\nINDEX 00 00:05:00\nFILE b.wav WAVE\nINDEX 01 00:00:00\n",
                                        std::uint64_t{500} * 2352);
    ASSERT_TRUE(sheet) << reasonOf(sheet);
    EXPECT_EQ(sheet->contents.track(1)->length, 375u);
    EXPECT_EQ(sheet->contents.track(2)->pregap, (TrackGap{125, true}));
    EXPECT_EQ(sheet->contents.track(2)->length, 500u);
    EXPECT_EQ(sheet->places[1].pregap, (std::vector<CueRun>{{0, std::uint64_t{375} * 2352, 125}}));
    EXPECT_EQ(sheet->places[1].data, (std::vector<CueRun>{{1, 0, 500}}));
}

TEST(CueSheetReader, blocksInFrontOfTheFirstIndex_areThePregap)
{
    const Result<CueSheet> sheet =
        read("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:33\n", std::uint64_t{100} * 2352);
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->contents.track(1)->pregap, (TrackGap{33, true}));
    EXPECT_EQ(sheet->contents.track(1)->length, 67u);
}

TEST(CueSheetReader, tracksOfDifferentSizes_areCountedInTheirOwn)
{
    const Result<CueSheet> sheet = read("FILE a.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n"
                                        "TRACK 02 AUDIO\nINDEX 00 00:01:00\nINDEX 01 00:02:00\n",
                                        75 * 2048 + 100 * 2352 + 5);
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->places[1].pregap, (std::vector<CueRun>{{0, std::uint64_t{75} * 2048, 75}}));
    EXPECT_EQ(sheet->places[1].data, (std::vector<CueRun>{{0, 75 * 2048 + 75 * 2352, 25}}));
    ASSERT_EQ(sheet->notes.size(), 1u);
    EXPECT_EQ(sheet->notes[0].line, 1u);
    EXPECT_TRUE(sheet->notes[0].text.contains(QStringLiteral("5 bytes")));
}

TEST(CueSheetReader, sessions_areKept)
{
    const Result<CueSheet> sheet = read("FILE a.bin BINARY\nREM SESSION 01\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                        "REM SESSION 02\nTRACK 02 MODE1/2352\nINDEX 01 00:04:00\n",
                                        std::uint64_t{500} * 2352);
    ASSERT_TRUE(sheet);
    ASSERT_EQ(sheet->contents.sessions.size(), 2u);
    EXPECT_EQ(sheet->contents.sessions[1].tracks[0].number, 2u);
    EXPECT_EQ(sheet->contents.sessions[1].firstBlock, BlockAddress(300));
}

TEST(CueSheetReader, whatIsNotKnown_isPassedOverWithANote)
{
    const Result<CueSheet> sheet = read("FILE a.bin BINARY\nTRACK 01 AUDIO\nSHINY yes\nFLAGS DCP NEW\nISRC none\n"
                                        "INDEX 01 00:00:00\nCATALOG 12\nFILE b.bin BINARY\nCDTEXTFILE a.cdt\n",
                                        2352);
    ASSERT_TRUE(sheet);
    std::vector<std::uint32_t> lines;
    for (const CueNote &note : sheet->notes)
        lines.push_back(note.line);
    EXPECT_EQ(lines, (std::vector<std::uint32_t>{3, 4, 5, 7, 9, 8}));
    EXPECT_EQ(sheet->files.size(), 2u);
}

TEST(CueSheetReader, anError_namesLineAndCause)
{
    EXPECT_NE(failure("").find("not a cue sheet"), std::string::npos);
    EXPECT_NE(failure("\xff\xfe\x00").find("not a cue sheet"), std::string::npos);
    const QByteArray file = "FILE a.bin BINARY\n";
    const QByteArray track = file + "TRACK 01 AUDIO\n";
    const struct {
        QByteArray text;
        const char *start;
        const char *part;
    } rows[] = {
        {"TRACK 01 AUDIO\nINDEX 01 00:00:00", "Line 2", "FILE"},
        {"INDEX 01 00:00:00", "Line 1", "TRACK"},
        {"FILE a.bin", "Line 1", "type"},
        {"FILE a.bin CLAY", "Line 1", "CLAY"},
        {file + "TRACK 01 MODE3/2048", "Line 2", "MODE3/2048"},
        {file + "TRACK 01", "Line 2", "mode"},
        {file + "TRACK 00 AUDIO", "Line 2", "01 to 99"},
        {file + "TRACK 100 AUDIO", "Line 2", "01 to 99"},
        {track + "INDEX 01 00:00:00\nTRACK 03 AUDIO", "Line 4", "TRACK 3"},
        {track + "INDEX 01 00:00", "Line 3", "00:00"},
        {track + "INDEX 01 00:60:00", "Line 3", "00:60:00"},
        {track + "INDEX 01 00:00:75", "Line 3", "00:00:75"},
        {track + "INDEX 100 00:00:00", "Line 3", "00 to 99"},
        {track + "INDEX 01 -1:00:00", "Line 3", "-1:00:00"},
        {track, "Line 2", "INDEX 01"},
        {track + "INDEX 00 00:00:00", "Line 2", "INDEX 01"},
        {track + "INDEX 01 00:00:00\nINDEX 03 00:01:00", "Line 4", "INDEX 03"},
        {track + "INDEX 01 00:00:00\nINDEX 01 00:01:00", "Line 4", "INDEX 01"},
        {track + "INDEX 00 00:02:00\nINDEX 01 00:01:00", "Line 4", "before"},
        {track + "PREGAP 00:02:00\nINDEX 00 00:00:00\nINDEX 01 00:01:00", "Line 2", "PREGAP"},
        {track + "PREGAP 00:02:00\nINDEX 01 00:01:00", "Line 2", "PREGAP"},
        {track + "INDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:00", "Line 2", "no blocks"},
        {track + "INDEX 01 00:13:26", "Line 3", "beyond the end"},
        {track + "INDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 90:00:00", "Line 5", "beyond the end"},
        {track + "INDEX 01 999999999:00:00", "Line 3", "beyond the end"},
        {track + "INDEX 01 00:01:00\nINDEX 02 00:01:00", "Line 4", "where the one in front"},
        {track + "INDEX 01 00:01:00\nINDEX 02 00:02:00\nINDEX 03 00:02:00", "Line 5", "where the one in front"},
        {track + "INDEX 01 00:01:00\nINDEX 02 00:13:25", "Line 2", "ends at its last INDEX"},
        {track + "INDEX 01 00:01:00\nINDEX 02 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:02:00", "Line 2",
         "ends at its last INDEX"},
    };
    for (const auto &row : rows) {
        const std::string text = failure(row.text);
        EXPECT_EQ(text.rfind(row.start, 0), 0u) << row.text.constData() << ": " << text;
        EXPECT_NE(text.find(row.part), std::string::npos) << row.text.constData() << ": " << text;
    }
    EXPECT_EQ(failure(track + "INDEX 01 00:13:24"), "") << "the last block of a thousand";
}

TEST(CueSheetReader, texts_areThoseOfTheDiscAndItsTracks)
{
    const Result<CueSheet> sheet = read("TITLE \"The \"Album\"\"\nPERFORMER Somebody Else\nFILE a.bin BINARY\n"
                                        "TRACK 01 AUDIO\nTITLE \"One\"\nSONGWRITER \"Writer\"\nINDEX 01 00:00:00\n"
                                        "TRACK 02 AUDIO\nTITLE \"Two\"\nINDEX 01 00:00:01\n",
                                        std::uint64_t{2} * 2352);
    ASSERT_TRUE(sheet);
    const auto &texts = sheet->contents.cdText.blocks.at(0).texts;
    EXPECT_EQ(texts.at(CDTextKind::Title),
              (std::vector<QString>{QStringLiteral("The \"Album\""), QStringLiteral("One"), QStringLiteral("Two")}));
    EXPECT_EQ(texts.at(CDTextKind::Performer)[0], QStringLiteral("Somebody Else"));
    EXPECT_EQ(texts.at(CDTextKind::Songwriter)[1], QStringLiteral("Writer"));
    const Result<QByteArray> packs = cdTextPacks(sheet->contents.cdText, 2);
    EXPECT_TRUE(packs);
}
