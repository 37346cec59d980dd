#include "platform/disctracks/CueSheetWriter.h"

#include "platform/disctracks/CueSheetReader.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

TableOfContents album()
{
    DiscTrack data;
    data.kind = TrackKind::Mode1;
    data.blockSize = 2352;
    data.length = 300;
    DiscTrack first;
    first.kind = TrackKind::Audio;
    first.blockSize = 2352;
    first.length = 600;
    first.pregap = {150, false};
    first.isrc = "DEA123456789";
    first.copyState = CopyState::CopyrightFree;
    first.hasPreEmphasis = true;
    DiscTrack second = first;
    second.pregap = {75, true};
    second.indexPoints = {100, 200};
    second.postgap = {10, false};
    second.copyState = CopyState::ProtectedCopy;
    TableOfContents contents;
    contents.sessions = {{BlockAddress(), {data, first}}, {BlockAddress(), {second}}};
    contents.numberTracks();
    contents.joinSessions();
    contents.mediaCatalogNumber = "4006381333931";
    CDTextBlock block;
    block.texts[CDTextKind::Title] = {QStringLiteral("Album"), QString(), QStringLiteral("One"), QStringLiteral("Two")};
    contents.cdText.blocks.push_back(block);
    return contents;
}

} // namespace

TEST(CueSheetWriter, sheet_isWhatTheTableSays)
{
    const Result<CueSheetText> sheet = cueSheetForImage(album(), "disc.bin");
    ASSERT_TRUE(sheet) << sheet.error().localizedDescription().toStdString();
    EXPECT_EQ(sheet->text,
              "CATALOG 4006381333931\r\nTITLE \"Album\"\r\nFILE \"disc.bin\" BINARY\r\n"
              "  REM SESSION 01\r\n"
              "  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n"
              "  TRACK 02 AUDIO\r\n    TITLE \"One\"\r\n    FLAGS DCP PRE\r\n    ISRC DEA123456789\r\n"
              "    PREGAP 00:02:00\r\n    INDEX 01 00:04:00\r\n"
              "  REM SESSION 02\r\n"
              "  TRACK 03 AUDIO\r\n    TITLE \"Two\"\r\n    FLAGS PRE SCMS\r\n    ISRC DEA123456789\r\n"
              "    INDEX 00 00:12:00\r\n    INDEX 01 00:13:00\r\n    INDEX 02 00:14:25\r\n    INDEX 03 00:15:50\r\n"
              "    POSTGAP 00:00:10\r\n");
    EXPECT_TRUE(sheet->lost.isEmpty());
}

TEST(CueSheetWriter, sheet_doesNotSayThePregapThatEveryCDHas)
{
    TableOfContents contents;
    DiscTrack track;
    track.length = 300;
    track.pregap = {200, false};
    contents.sessions = {{BlockAddress(-150), {track}}};
    const Result<CueSheetText> longer = cueSheetForImage(contents, "disc.bin");
    ASSERT_TRUE(longer);
    EXPECT_TRUE(longer->text.contains("PREGAP 00:00:50\r\n")) << longer->text.constData();
    contents.sessions[0].tracks[0].pregap.length = 150;
    const Result<CueSheetText> usual = cueSheetForImage(contents, "disc.bin");
    ASSERT_TRUE(usual);
    EXPECT_EQ(usual->text, "FILE \"disc.bin\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n");
}

TEST(CueSheetWriter, textsThatASheetCannotSay_needAFile_whichTheSheetNames)
{
    TableOfContents contents = album();
    EXPECT_FALSE(needsCDTextFile({}));
    EXPECT_FALSE(needsCDTextFile(contents));
    CDTextBlock german = contents.cdText.blocks.front();
    german.language = 0x08;
    contents.cdText.blocks.push_back(german);
    EXPECT_TRUE(needsCDTextFile(contents));
    EXPECT_EQ(cueSheetForImage(contents, "disc.bin")->lost.size(), 1);
    const Result<CueSheetText> sheet = cueSheetForImage(contents, "disc.bin", "disc.cdt");
    ASSERT_TRUE(sheet);
    EXPECT_TRUE(sheet->lost.isEmpty()) << sheet->lost.join(u';').toStdString();
    EXPECT_TRUE(sheet->text.contains("CDTEXTFILE \"disc.cdt\"\r\n")) << sheet->text.constData();
    EXPECT_TRUE(sheet->text.contains("TITLE \"One\"\r\n")) << "for readers that pass over the file";
    EXPECT_FALSE(cueSheetForImage(contents, "disc.bin", "a \"disc\".cdt"));
    TableOfContents withGenre = album();
    withGenre.cdText.blocks.front().genreCode = 3;
    EXPECT_TRUE(needsCDTextFile(withGenre));
    TableOfContents withIdentification = album();
    withIdentification.cdText.blocks.front().texts[CDTextKind::DiscIdentification] = {QStringLiteral("ABC 123")};
    EXPECT_TRUE(needsCDTextFile(withIdentification));
}

TEST(CueSheetWriter, aWrittenSheet_readsBackAsTheSameTable)
{
    const TableOfContents contents = album();
    const Result<CueSheetText> sheet = cueSheetForImage(contents, "disc.bin");
    ASSERT_TRUE(sheet);
    CueSheetFiles files;
    files.measure = [&](CueFile *) -> Result<std::optional<std::uint64_t>> {
        return std::optional(contents.storedBytes());
    };
    const Result<CueSheet> back = cueSheetOfText(sheet->text, files);
    ASSERT_TRUE(back) << back.error().localizedDescription().toStdString();
    EXPECT_EQ(back->contents, contents);
}

TEST(CueSheetWriter, whatASheetCannotSay_isListed)
{
    TableOfContents contents = album();
    contents.sessions[0].tracks[1].copyState = CopyState::ProtectedOriginal;
    contents.cdText.blocks.push_back(contents.cdText.blocks[0]);
    contents.cdText.blocks[0].genreCode = 3;
    EXPECT_EQ(cueSheetForImage(contents, "disc.bin")->lost.size(), 3);
}

TEST(CueSheetWriter, indexPoints_areLost_whereTheImageDoesNotHoldThePostgapAroundThem)
{
    TableOfContents contents = album();
    DiscTrack &last = contents.sessions[1].tracks[0];
    last.indexPoints = {100, 589, 590, 595}; // of 600 blocks, the last 10 of which are the postgap
    const Result<CueSheetText> sheet = cueSheetForImage(contents, "disc.bin");
    ASSERT_TRUE(sheet);
    EXPECT_TRUE(sheet->text.contains("    INDEX 03 00:20:64\r\n    POSTGAP 00:00:10\r\n")) << sheet->text.constData();
    EXPECT_EQ(sheet->lost, QStringList(QStringLiteral("index points in postgaps that the image does not hold")));
    last.postgap.isStored = true;
    const Result<CueSheetText> whole = cueSheetForImage(contents, "disc.bin");
    ASSERT_TRUE(whole);
    EXPECT_TRUE(whole->text.contains("    INDEX 05 00:20:70\r\n")) << whole->text.constData();
    EXPECT_TRUE(whole->lost.isEmpty());
}

TEST(CueSheetWriter, sheet_fails_whenItCannotBeWritten)
{
    EXPECT_FALSE(cueSheetForImage(album(), "a \"disc\".bin"));
    EXPECT_FALSE(cueSheetForImage({}, "disc.bin"));
    TableOfContents odd = album();
    odd.sessions[0].tracks[0].blockSize = 512;
    EXPECT_FALSE(cueSheetForImage(odd, "disc.bin"));
    TableOfContents quoted = album();
    quoted.cdText.blocks[0].texts[CDTextKind::Title][1] = QStringLiteral("a \"b\"");
    EXPECT_FALSE(cueSheetForImage(quoted, "disc.bin"));
}
