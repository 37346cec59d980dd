#include "imaging/jobs/AudioTrackLayout.h"

#include "imaging/jobs/AudioTexts.h"

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

using Places = std::vector<AudioTrackPlace>;

} // namespace

TEST(AudioTrackLayout, places_followEachOtherAtTheSample)
{
    EXPECT_EQ(audioTrackPlaces({588, 589, 588}, 0, true),
              (Places{{0, 588, 0, 0, 1}, {588, 589, 0, 1, 2}, {1177, 588, 0, 3, 1}}));
    EXPECT_EQ(audioTrackPlaces({1000, 1000}, 0, true), (Places{{0, 1000, 0, 0, 2}, {1000, 1000, 0, 2, 2}}));
    EXPECT_EQ(framesOf(audioTrackPlaces({1000, 1000}, 0, true)), 4u);
}

TEST(AudioTrackLayout, places_beginWithAFrame_withoutGaplessAndBehindAGap)
{
    EXPECT_EQ(audioTrackPlaces({1000, 1000}, 0, false), (Places{{0, 1000, 0, 0, 2}, {1176, 1000, 0, 2, 2}}));
    for (const bool isGapless : {false, true})
        EXPECT_EQ(audioTrackPlaces({1000, 1000}, 3, isGapless), (Places{{0, 1000, 0, 0, 2}, {2940, 1000, 3, 5, 2}}));
}

TEST(AudioTrackLayout, contents_haveStoredGaps_butForThatInFrontOfTheDisc)
{
    const TableOfContents contents = contentsOf(audioTrackPlaces({5880, 5880}, 3, true));
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
        const AudioTexts texts = audioTextsOf({{{QStringLiteral("title"), QString::fromUtf8(row.tag)}}});
        ASSERT_EQ(texts.text.blocks.size(), 1u);
        EXPECT_EQ(texts.text.blocks[0].texts.at(CDTextKind::Title)[1], QString::fromUtf8(row.text)) << row.tag;
        EXPECT_EQ(texts.isAnyLost, row.isLost) << row.tag;
        const bool isSame = QString::fromUtf8(row.tag).simplified() == QString::fromUtf8(row.text);
        EXPECT_EQ(texts.changes.isEmpty(), isSame) << row.tag;
    }
}

TEST(AudioTexts, ofTheDisc_areThoseThatAllFilesShare)
{
    const QString album = QStringLiteral("album"), artist = QStringLiteral("artist");
    const AudioTexts same = audioTextsOf({{{album, QStringLiteral("A")}, {artist, QStringLiteral("X")}},
                                          {{album, QStringLiteral("A")}, {artist, QStringLiteral("Y")}}});
    EXPECT_EQ(same.text.blocks.at(0).texts.at(CDTextKind::Title)[0], QStringLiteral("A"));
    EXPECT_EQ(same.text.blocks.at(0).texts.at(CDTextKind::Performer)[0], QString());
    const AudioTexts different = audioTextsOf({{{album, QStringLiteral("A")}}, {{album, QStringLiteral("B")}}});
    EXPECT_TRUE(different.text.isEmpty());
    EXPECT_TRUE(audioTextsOf({{}, {}}).text.isEmpty());
}
