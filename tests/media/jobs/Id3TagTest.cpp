#include "media/jobs/Id3Tag.h"

#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

// What ffprobe reads of our tags.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class Id3Tag : public testing::Test
{
protected:
    Id3Tag()
    {
        tree.makeFile("a.wav", waveFile(tone(44100)));
        ffmpeg("-i " + tree.path("a.wav") + " -map_metadata -1 -id3v2_version 0 -write_xing 0 " + tree.path("a.mp3"));
    }
    /// The tags of the sound behind this tag, with their names in lower case.
    QMap<QString, QString> tagsBehind(const QByteArray &tag)
    {
        tree.makeFile("b.mp3", tag + tree.contents("a.mp3"));
        const QByteArray seen = outputOfProgram(
            "ffprobe", {"-v", "error", "-show_entries", "format_tags", "-of", "json", tree.path("b.mp3")});
        const QJsonObject tags =
            QJsonDocument::fromJson(seen)[QStringLiteral("format")][QStringLiteral("tags")].toObject();
        QMap<QString, QString> result;
        for (auto one = tags.begin(); one != tags.end(); ++one)
            result.insert(one.key().toLower(), one.value().toString());
        EXPECT_EQ(decodedByFFmpeg(tree.path("b.mp3")), decodedByFFmpeg(tree.path("a.mp3")));
        return result;
    }

    const TemporaryTree tree;
};

const QString japanese = QStringLiteral("岡本 🎵");

} // namespace

TEST_F(Id3Tag, texts_areReadByOthers)
{
    const QMap<QString, QString> tags = tagsBehind(id3Tag({{"title", QStringLiteral("Café")},
                                                           {"ARTIST", japanese},
                                                           {"album", QStringLiteral("Album")},
                                                           {"album_artist", QStringLiteral("All")},
                                                           {"track", QStringLiteral("3/12")},
                                                           {"disc", QStringLiteral("1/2")},
                                                           {"date", QStringLiteral("2004-05-01")},
                                                           {"genre", QStringLiteral("Rock")},
                                                           {"composer", QStringLiteral("One")},
                                                           {"composer", QStringLiteral("Other")},
                                                           {"comment", QStringLiteral("two\nlines")},
                                                           {"isrc", QStringLiteral("DEABC1234567")},
                                                           {"replaygain_track_gain", QStringLiteral("-3 dB")},
                                                           {"mood", japanese},
                                                           {"encoder", QStringLiteral("Lavf")},
                                                           {"empty", QStringLiteral("  ")}},
                                                          {}));
    const QMap<QString, QString> expected{{QStringLiteral("title"), QStringLiteral("Café")},
                                          {QStringLiteral("artist"), japanese},
                                          {QStringLiteral("album"), QStringLiteral("Album")},
                                          {QStringLiteral("album_artist"), QStringLiteral("All")},
                                          {QStringLiteral("track"), QStringLiteral("3/12")},
                                          {QStringLiteral("disc"), QStringLiteral("1/2")},
                                          {QStringLiteral("date"), QStringLiteral("2004-05-01")},
                                          {QStringLiteral("genre"), QStringLiteral("Rock")},
                                          {QStringLiteral("composer"), QStringLiteral("One/Other")},
                                          {QStringLiteral("comment"), QStringLiteral("two\nlines")},
                                          {QStringLiteral("tsrc"), QStringLiteral("DEABC1234567")},
                                          {QStringLiteral("replaygain_track_gain"), QStringLiteral("-3 dB")},
                                          {QStringLiteral("mood"), japanese}};
    EXPECT_EQ(tags, expected);
}

TEST_F(Id3Tag, textsOfQuickTime_haveTheSameFrames)
{
    const QMap<QString, QString> tags = tagsBehind(id3Tag({{"\251nam", QStringLiteral("Title")},
                                                           {"\251ART", QStringLiteral("Artist")},
                                                           {"\251alb", QStringLiteral("Album")},
                                                           {"aART", QStringLiteral("All")},
                                                           {"\251day", QStringLiteral("2004")},
                                                           {"\251too", QStringLiteral("Lavf")}},
                                                          {}));
    const QMap<QString, QString> expected{{QStringLiteral("title"), QStringLiteral("Title")},
                                          {QStringLiteral("artist"), QStringLiteral("Artist")},
                                          {QStringLiteral("album"), QStringLiteral("Album")},
                                          {QStringLiteral("album_artist"), QStringLiteral("All")},
                                          {QStringLiteral("date"), QStringLiteral("2004")}};
    EXPECT_EQ(tags, expected);
}

TEST_F(Id3Tag, cover_comesOutByteForByte)
{
    for (const QByteArray kind : {"jpg", "png"}) {
        ffmpeg("-f lavfi -i testsrc=size=300x300 -frames:v 1 " + tree.path("cover." + kind));
        const QByteArray cover = tree.contents("cover." + kind);
        bool isLeftOut = true;
        const QByteArray tag = id3Tag({{"title", japanese}}, cover, &isLeftOut);
        EXPECT_FALSE(isLeftOut);
        EXPECT_EQ(tagsBehind(tag).size(), 1);
        EXPECT_EQ(ffmpeg("-i " + tree.path("b.mp3") + " -map 0:v:0 -c copy -f image2pipe -"), cover);
    }
}

TEST_F(Id3Tag, whatIsNoPicture_isLeftOut_andTold)
{
    bool isLeftOut = false;
    EXPECT_EQ(id3Tag({}, "text", &isLeftOut), QByteArray());
    EXPECT_TRUE(isLeftOut);
    EXPECT_EQ(id3Tag({}, {}, &isLeftOut), QByteArray());
    EXPECT_FALSE(isLeftOut);
}

TEST_F(Id3Tag, aDateInWords_isKeptAsItIs)
{
    EXPECT_EQ(tagsBehind(id3Tag({{"date", QStringLiteral("spring of 1990")}}, {})).value(QStringLiteral("date")),
              QStringLiteral("spring of 1990"));
}
