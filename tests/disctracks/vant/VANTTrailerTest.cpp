#include "platform/disctracks/vant/VANTTrailer.h"

#include "platform/disctracks/vant/VANTReader.h"

#include <gtest/gtest.h>
#include <limits>

using namespace Tessaron;

namespace
{

/// Two sessions: audio with and without a stored pregap, then data.
TableOfContents mixedDisc()
{
    DiscTrack audio;
    audio.kind = TrackKind::Audio;
    audio.blockSize = 2352;
    audio.length = 4;
    audio.pregap = {3, false};
    audio.postgap = {1, true};
    audio.indexPoints = {1, 2};
    audio.copyState = CopyState::ProtectedCopy;
    audio.hasPreEmphasis = true;
    audio.recording = {0, 0, 0, 0};
    DiscTrack withStoredGap = audio;
    withStoredGap.pregap.isStored = true;
    DiscTrack data;
    data.length = 2;
    data.postgap.isStored = true;
    data.recording = {4, 16, 8, 0};
    TableOfContents contents;
    contents.sessions = {{BlockAddress(), {audio, withStoredGap}}, {BlockAddress(), {data}}};
    contents.numberTracks();
    contents.joinSessions();
    return contents;
}

VANTReadResult readBack(const TableOfContents &contents)
{
    const Result<QByteArray> trailer = vantTrailer(contents);
    return trailer ? VANTReader::imageFromBytes(QByteArray(qsizetype(contents.storedBytes()), 'x') + *trailer)
                   : VANTReadResult{{}, trailer.error()};
}

} // namespace

TEST(VANTTrailer, trailer_describesTheTable_sessionsAndStoredGapsIncluded)
{
    const TableOfContents contents = mixedDisc();
    const VANTReadResult result = readBack(contents);
    ASSERT_TRUE(result.image) << result.error.localizedDescription().toStdString();
    EXPECT_EQ(result.image->dataLength, contents.storedBytes());
    EXPECT_EQ(result.image->sessions.size(), 2u);
    EXPECT_EQ(result.image->sessions[0].tracks[0].startOffset, 0u);
    EXPECT_EQ(result.image->sessions[0].tracks[1].startOffset, (4 + 3) * 2352u);
    EXPECT_EQ(tableOfContentsOfVANT(*result.image), contents);
}

TEST(VANTTrailer, trailer_statesTheUsualNumbers_onlyWhereNothingIsStated)
{
    DiscTrack track;
    track.length = 1;
    VANTReadResult result = readBack(TableOfContents::withTrack(track));
    ASSERT_TRUE(result.image);
    EXPECT_EQ(result.image->sessions[0].tracks[0].blockType, 8);
    EXPECT_EQ(result.image->sessions[0].tracks[0].dataForm, 16);
    track.recording.blockType = 8;
    result = readBack(TableOfContents::withTrack(track));
    ASSERT_TRUE(result.image);
    EXPECT_FALSE(result.image->sessions[0].tracks[0].dataForm);
}

TEST(VANTTrailer, trailer_fails_whenTheFormatCannotSayIt)
{
    const auto codeWhen = [](const auto &change) {
        TableOfContents contents = mixedDisc();
        change(contents, contents.sessions[0].tracks[0]);
        const Result<QByteArray> trailer = vantTrailer(contents);
        return trailer ? DiscTracksErrorCode(0) : DiscTracksErrorCode(trailer.error().code());
    };
    using enum DiscTracksErrorCode;
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(codeWhen([](TableOfContents &contents, DiscTrack &) { contents.sessions.clear(); }), NoTracks);
    EXPECT_EQ(codeWhen([](TableOfContents &contents, DiscTrack &) { contents.sessions[1].tracks.clear(); }), NoTracks);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.blockSize = 0; }), TrackShape);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.postgap.length = 5; }), TrackShape);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.postgap.isStored = false; }), TrackShape);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.length = most / 2352 + 1; }), TooLarge);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.length = most / 2352; }), TooLarge);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.pregap.length = 1ull << 32; }), TooLarge);
    EXPECT_EQ(codeWhen([](TableOfContents &, DiscTrack &track) { track.indexPoints = {1ull << 32}; }), TooLarge);
}

TEST(VANTTrailer, lostInVANT_namesWhatIsNotKept)
{
    TableOfContents contents = mixedDisc();
    EXPECT_TRUE(lostInVANT(contents).isEmpty());
    contents.mediaCatalogNumber = "4006381333931";
    contents.sessions[0].tracks[1].isrc = "DEA123456789";
    contents.cdText.blocks.resize(1);
    EXPECT_EQ(lostInVANT(contents).size(), 3);
}
