#include "imaging/jobs/AudioTrackLayout.h"

#include "imaging/jobs/AudioTexts.h"
#include "imaging/jobs/SoundLoudness.h"
#include "platform/disctracks/CDTextPacks.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

using namespace Tessaron;

namespace
{

using Places = std::vector<AudioTrackPlace>;
using Tags = QMap<QString, QString>;

/// A file for each length.
std::vector<AlbumTrack> tracksOf(const std::vector<std::uint64_t> &lengths, std::uint64_t gap = 0)
{
    std::vector<AlbumTrack> tracks;
    for (const std::uint64_t length : lengths) {
        AlbumTrack &track = tracks.emplace_back();
        track.sound = {{tracks.size() - 1, 0, length}};
        track.silence = tracks.size() > 1 ? gap : 0;
    }
    return tracks;
}

AudioLayout layoutOf(const std::vector<std::uint64_t> &lengths, std::uint64_t gap, bool isGapless)
{
    return audioLayoutOf(tracksOf(lengths, gap), isGapless);
}

AudioTexts textsOf(std::vector<Tags> tags)
{
    return audioTextsOf({std::move(tags)});
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// Both channels hold the same sine of 997 Hz.
SoundLoudness loudnessOfSine(double level, double seconds)
{
    const std::unique_ptr<LoudnessMeter> meter = LoudnessMeter::create();
    std::vector<float> samples;
    for (std::size_t index = 0; index < std::size_t(seconds * 44100); ++index) {
        const auto value = float(level * std::sin(2 * std::numbers::pi * 997 * double(index) / 44100));
        samples.insert(samples.end(), 2, value);
    }
    EXPECT_TRUE(meter->add(samples));
    return meter->loudness();
}

} // namespace

TEST(AudioTrackLayout, places_followEachOtherAtTheSample)
{
    const AudioLayout layout = layoutOf({588, 589, 588}, 0, true);
    EXPECT_EQ(layout.places, (Places{{0, 0, 1, 0, {}}, {0, 1, 2, 0, {}}, {0, 3, 1, 0, {}}}));
    EXPECT_EQ(layout.pieces[2], (SoundPiece{{2, 0, 588}, 1177}));
    EXPECT_EQ(layoutOf({1000, 1000}, 0, true).places, (Places{{0, 0, 2, 0, {}}, {0, 2, 2, 0, {}}}));
    EXPECT_EQ(layoutOf({1000, 1000}, 0, true).frames, 4u);
}

TEST(AudioTrackLayout, places_beginWithAFrame_withoutGaplessAndBehindAGap)
{
    const AudioLayout padded = layoutOf({1000, 1000}, 0, false);
    EXPECT_EQ(padded.places, (Places{{0, 0, 2, 0, {}}, {0, 2, 2, 0, {}}}));
    EXPECT_EQ(padded.pieces[1].position, 1176u);
    for (const bool isGapless : {false, true}) {
        const AudioLayout layout = layoutOf({1000, 1000}, 3, isGapless);
        EXPECT_EQ(layout.places, (Places{{0, 0, 2, 0, {}}, {3, 5, 2, 0, {}}}));
        EXPECT_EQ(layout.pieces[1].position, 2940u);
    }
}

TEST(AudioTrackLayout, places_countFromTheTrackOfDataInFront)
{
    const AudioLayout layout = audioLayoutOf(tracksOf({588, 588}), true, 100);
    EXPECT_EQ(layout.places, (Places{{0, 100, 1, 0, {}}, {0, 101, 1, 0, {}}}));
    EXPECT_EQ(layout.pieces[0].position, 58800u);
    EXPECT_EQ(layout.frames, 2u);
}

TEST(AudioTrackLayout, places_haveThePregapsIndexesAndPostgapsOfASheet)
{
    std::vector<AlbumTrack> tracks(1);
    tracks[0].silence = 2;
    tracks[0].pregap = {{0, 0, 588}};
    tracks[0].sound = {{0, 588, 5880}, {1, 0, 100}};
    tracks[0].indexPoints = {1176};
    tracks[0].postgap = 4;
    const AudioLayout layout = audioLayoutOf(tracks, true);
    EXPECT_EQ(layout.places, (Places{{3, 3, 15, 4, {2}}}));
    EXPECT_EQ(layout.pieces,
              (std::vector<SoundPiece>{{{0, 0, 588}, 1176}, {{0, 588, 5880}, 1764}, {{1, 0, 100}, 7644}}));
    const TableOfContents contents = contentsOf(discTracksOf(tracks, layout));
    EXPECT_FALSE(contents.check());
    EXPECT_EQ(contents.firstBlockOfTrack(1), BlockAddress(3)) << "its pregap is in the image";
    EXPECT_EQ(contents.storedBytes(), 18u * 2352);
}

TEST(AudioTrackLayout, contents_haveStoredGaps_butForThatInFrontOfTheDisc)
{
    const std::vector<AlbumTrack> tracks = tracksOf({5880, 5880}, 3);
    const TableOfContents contents = contentsOf(discTracksOf(tracks, audioLayoutOf(tracks, true)));
    EXPECT_FALSE(contents.check());
    EXPECT_EQ(contents.firstBlockOfTrack(1), BlockAddress(0));
    EXPECT_EQ(contents.firstBlockOfTrack(2), BlockAddress(13));
    EXPECT_EQ(contents.storedBytes(), 23u * 2352);
}

TEST(AudioTexts, areSpelledInLatin1_andTellWhatChanged)
{
    struct Row {
        const char *tag;
        const char *text;
        bool isLost;
    };
    for (const Row &row :
         {Row{"plain", "plain", false}, Row{"Mot\xc3\xb6rhead", "Mot\xc3\xb6rhead", false},
          Row{"Dvo\xc5\x99\xc3\xa1k", "Dvor\xc3\xa1k", false}, Row{"say \"hi\"", "say 'hi'", false},
          Row{"two\nlines", "two lines", false}, Row{"\xe2\x80\x9cquoted\xe2\x80\x9d", "'quoted'", false},
          Row{"\xd0\x9c\xd0\xb8\xd1\x80", "Mir", false}, Row{"\xf0\x9f\x8e\xb5", "??", true}}) {
        const AudioTexts texts = textsOf({{{text("title"), text(row.tag)}}});
        ASSERT_EQ(texts.text.blocks.size(), 1u);
        EXPECT_EQ(texts.text.blocks[0].texts.at(CDTextKind::Title)[1], text(row.text)) << row.tag;
        EXPECT_EQ(texts.isAnyLost, row.isLost) << row.tag;
        const bool isSame = text(row.tag).simplified() == text(row.text);
        EXPECT_EQ(texts.changes.isEmpty(), isSame) << row.tag;
    }
}

TEST(AudioTexts, ofTheDisc_areThoseThatAllFilesShare)
{
    const QString album = text("album"), artist = text("artist");
    const AudioTexts same =
        textsOf({{{album, text("A")}, {artist, text("X")}}, {{album, text("A")}, {artist, text("Y")}}});
    EXPECT_EQ(same.text.blocks.at(0).texts.at(CDTextKind::Title)[0], text("A"));
    EXPECT_EQ(same.text.blocks.at(0).texts.at(CDTextKind::Performer)[0], QString());
    const AudioTexts different = textsOf({{{album, text("A")}}, {{album, text("B")}}});
    EXPECT_TRUE(different.text.isEmpty());
    EXPECT_TRUE(textsOf({{}, {}}).text.isEmpty());
}

TEST(AudioTexts, haveABlockForEachLanguageOfTheTags)
{
    const AudioTexts texts = textsOf({{{text("title"), text("One")},
                                       {text("title-ger"), text("Eins")},
                                       {text("title-jpn"), text("\xe4\xb8\x80")},
                                       {text("title-sort"), text("no language")},
                                       {text("songwriter"), text("Someone")}},
                                      {{text("title"), text("Two")}, {text("title-deu"), text("Zwei")}}});
    ASSERT_EQ(texts.text.blocks.size(), 3u);
    const CDTextBlock &english = texts.text.blocks[0], &german = texts.text.blocks[1], &japanese = texts.text.blocks[2];
    EXPECT_EQ(english.language, 0x09);
    EXPECT_EQ(english.texts.at(CDTextKind::Title), (std::vector<QString>{{}, text("One"), text("Two")}));
    EXPECT_EQ(german.language, 0x08);
    EXPECT_EQ(german.texts.at(CDTextKind::Title), (std::vector<QString>{{}, text("Eins"), text("Zwei")}));
    EXPECT_EQ(german.texts.at(CDTextKind::Songwriter)[1], text("Someone")) << "what it lacks is filled in";
    EXPECT_EQ(japanese.language, 0x69);
    EXPECT_EQ(japanese.encoding, CDTextEncoding::ShiftJis);
    EXPECT_EQ(japanese.texts.at(CDTextKind::Title), (std::vector<QString>{{}, text("\xe4\xb8\x80"), text("Two")}));
    EXPECT_TRUE(texts.changes.isEmpty()) << texts.changes.join(u'\n').toStdString();
}

TEST(AudioTexts, inJapanese_changeOnlyWhatShiftJisLacks_andTellIt)
{
    struct Row {
        const char *tag;
        const char *text;
        bool isLost;
    };
    const std::vector<Row> rows = {{"\xe6\xa1\x9c Caf\xc3\xa9", "\xe6\xa1\x9c Cafe", false},
                                   {"\xe6\xa1\x9c \xed\x95\x9c", "\xe6\xa1\x9c han", false},
                                   {"\xe6\xa1\x9c\xf0\x9f\x8e\xb5", "\xe6\xa1\x9c?", true},
                                   {"\xef\xbd\xb6\xef\xbe\x9e\xc5\xbe", "\xe3\x82\xacz", false}, // narrow kana
                                   {"\xe3\x81\x8b\xe3\x82\x99", "\xe3\x81\x8c", false}, // a mark of its own
                                   {"\xe6\xa1\x9c", "\xe6\xa1\x9c", false}};
    std::vector<Tags> tags(rows.size());
    for (std::size_t track = 0; track < rows.size(); ++track)
        tags[track] = {{text("title-jpn"), text(rows[track].tag)}};
    const AudioTexts all = textsOf(tags);
    ASSERT_EQ(all.text.blocks.size(), 1u);
    EXPECT_EQ(all.text.blocks[0].encoding, CDTextEncoding::ShiftJis);
    EXPECT_TRUE(cdTextPacks(all.text, std::uint32_t(rows.size())));
    for (std::size_t track = 0; track < rows.size(); ++track) {
        const Row &row = rows[track];
        EXPECT_EQ(all.text.blocks[0].texts.at(CDTextKind::Title)[track + 1], text(row.text)) << row.tag;
        const QString where = QStringLiteral("track %1: ").arg(track + 1);
        const bool isTold = std::ranges::any_of(all.changes, [&](const QString &one) { return one.startsWith(where); });
        EXPECT_EQ(isTold, text(row.tag) != text(row.text)) << row.tag;
        EXPECT_EQ(textsOf({tags[track]}).isAnyLost, row.isLost) << row.tag;
    }
}

TEST(AudioTexts, inJapanese_areSpelledInLatin_whenTheDiscHasNoRoomForWideCharacters)
{
    std::vector<Tags> tags(99);
    for (std::size_t track = 0; track < tags.size(); ++track)
        tags[track] = {{text("title-jpn"), QString(10, QChar(char16_t(0x3042 + track % 80)))}};
    EXPECT_EQ(textsOf(tags).text.blocks.at(0).encoding, CDTextEncoding::ShiftJis);
    for (std::size_t track = 0; track < tags.size(); ++track)
        tags[track].insert(text("artist-jpn"), QString(10, QChar(char16_t(0x30A2 + track % 80))));
    const AudioTexts texts = textsOf(tags);
    EXPECT_EQ(texts.text.blocks.at(0).encoding, CDTextEncoding::Latin1);
    EXPECT_TRUE(cdTextPacks(texts.text, 99));
    EXPECT_FALSE(texts.changes.isEmpty());
}

TEST(AudioTexts, ofSheets_goBeforeThoseOfTags)
{
    AudioTextSources sources;
    sources.tags = {{{text("title"), text("of the tag")}, {text("artist"), text("of the tag")}}, {}};
    sources.tracks = {{{CDTextBlock::english, {{CDTextKind::Title, text("of the sheet")}}}}, {}};
    sources.disc = {{CDTextBlock::english, {{CDTextKind::Performer, text("of the disc")}}}};
    sources.firstTrack = 2;
    const AudioTexts texts = audioTextsOf(sources);
    ASSERT_EQ(texts.text.blocks.size(), 1u);
    EXPECT_EQ(texts.text.blocks[0].firstTrack, 2u);
    EXPECT_EQ(texts.text.blocks[0].texts.at(CDTextKind::Title), (std::vector<QString>{{}, text("of the sheet"), {}}));
    EXPECT_EQ(texts.text.blocks[0].texts.at(CDTextKind::Performer),
              (std::vector<QString>{text("of the disc"), text("of the tag"), {}}));
}

TEST(AudioTexts, areCutUntilTheyFit_whenTheDiscHasNoRoomForThem)
{
    std::vector<Tags> tags(99, Tags{{text("title"), QString(60, u'x')}, {text("artist"), QString(60, u'y')}});
    for (std::size_t track = 0; track < tags.size(); ++track)
        tags[track][text("title")].prepend(QString::number(track));
    const AudioTexts texts = textsOf(tags);
    EXPECT_TRUE(texts.isAnyLost);
    EXPECT_TRUE(cdTextPacks(texts.text, 99));
    EXPECT_GE(texts.text.blocks.at(0).texts.at(CDTextKind::Title)[99].size(), 10);
}

TEST(SoundLoudness, isThatOfAReferenceTone)
{
    // EBU Tech 3341: a stereo sine of 1 kHz at -23 dBFS has -23 LUFS.
    const SoundLoudness tone = loudnessOfSine(std::pow(10, -23.0 / 20), 5);
    ASSERT_TRUE(tone.loudness);
    EXPECT_NEAR(*tone.loudness, -23, 0.1);
    EXPECT_NEAR(tone.truePeakLevel(), -23, 0.1);
    EXPECT_NEAR(20 * std::log10(normalizingGain(tone)), 5, 0.1);
}

TEST(SoundLoudness, gain_isHeldBackByTheTruePeak_andLeavesSilenceAlone)
{
    SoundLoudness peaky;
    peaky.loudness = -30;
    peaky.truePeak = 0.5; // -6 dBTP: 12 dB more would be +6
    EXPECT_NEAR(20 * std::log10(normalizingGain(peaky)), 5.02, 0.01);
    SoundLoudness loud;
    loud.loudness = -8;
    loud.truePeak = 1.2;
    EXPECT_NEAR(20 * std::log10(normalizingGain(loud)), -10, 0.01);
    EXPECT_EQ(normalizingGain({}), 1);
    EXPECT_FALSE(loudnessOfSine(0, 5).loudness);
    EXPECT_FALSE(loudnessOfSine(0.5, 0.2).loudness) << "too short for a block";
}
