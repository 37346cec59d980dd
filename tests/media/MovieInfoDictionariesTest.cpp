#include "media/MovieInfoDictionaries.h"

#include "platform/quicktime/AtomSource.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

MovieDescription movieWith(const QTTrack &track)
{
    MovieDescription movie;
    movie.duration = {5000, 600};
    movie.tracks = {track};
    return movie;
}

QTTrack soundTrack(std::uint32_t format)
{
    QTTrack track;
    track.mediaType = "soun";
    track.duration = 4000;
    track.dataSize = 123456;
    track.sound = QTSoundDescription{format, 44100, 16, 2, 52, QString()};
    return track;
}

QTTrack videoTrack()
{
    QTTrack track;
    track.mediaType = "vide";
    track.duration = 4000;
    track.image = QTImageDescription{fourCharacterCode("avc1"), 640, 480, 1, 24, QStringLiteral("H.264")};
    return track;
}

QVariantMap firstTrack(const QTTrack &track)
{
    const QVariantList tracks = trackDictionaries(movieWith(track));
    return tracks.isEmpty() ? QVariantMap() : tracks.first().toMap();
}

QString metadataText(const QByteArray &key, const QByteArray &value, const QString &name)
{
    return metadataDictionary({{key, value}}).value(name).toString();
}

} // namespace

TEST(MovieInfoDictionaries, audioTrack_hasExactlyItsKeysAndTypes)
{
    const QVariantMap track = firstTrack(soundTrack(fourCharacterCode("sowt")));
    const QVariantMap expected{
        {QStringLiteral("kZelTrackInfoSize"), qint64(123456)},
        {QStringLiteral("kZelTrackInfoType"), QStringLiteral("kZelTrackTypeAudio")},
        {QStringLiteral("kZelTrackInfoDuration"), qint64(4000)},
        {QStringLiteral("kZelTrackInfoTimeScale"), qint64(600)},
        {QStringLiteral("kZelTrackInfoFourCC"), QStringLiteral("sowt")},
        {QStringLiteral("kZelAudioInfoSampleRate"), quint64(44100)},
        {QStringLiteral("kZelAudioInfoSampleSize"), QVariant::fromValue<short>(16)},
        {QStringLiteral("kZelAudioInfoChannelCount"), QVariant::fromValue<short>(2)},
        {QStringLiteral("desc size"), qint64(52)},
    };
    EXPECT_EQ(track, expected);
    for (auto member = expected.begin(); member != expected.end(); ++member)
        EXPECT_EQ(track[member.key()].typeId(), member.value().typeId()) << qPrintable(member.key());
}

TEST(MovieInfoDictionaries, videoTrack_hasExactlyItsKeys_andItsCodeAsItLiesInMemory)
{
    const QVariantMap track = firstTrack(videoTrack());
    const QVariantMap expected{
        {QStringLiteral("kZelTrackInfoType"), QStringLiteral("kZelTrackTypeVideo")},
        {QStringLiteral("kZelTrackInfoDuration"), qint64(4000)},
        {QStringLiteral("kZelTrackInfoTimeScale"), qint64(600)},
        {QStringLiteral("kZelTrackInfoFourCC"),
         Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? QStringLiteral("1cva") : QStringLiteral("avc1")},
        {QStringLiteral("kZelTrackInfoFourCCNum"), quint64(0x61766331)},
        {QStringLiteral("fZelVideoInfoWidth"), QVariant::fromValue<short>(640)},
        {QStringLiteral("fZelVideoInfoHeight"), QVariant::fromValue<short>(480)},
        {QStringLiteral("kZelVideoInfoFrameCount"), QVariant::fromValue<short>(1)},
        {QStringLiteral("kZelVideoInfoDepth"), QVariant::fromValue<short>(24)},
        {QStringLiteral("kZelVideoInfoName"), QStringLiteral("H.264")},
    };
    EXPECT_EQ(track, expected) << "without a size, which is not known";
}

TEST(MovieInfoDictionaries, codeOfSound_isRaw_whenItIsZero_andHasBlanksForZeroBytes)
{
    EXPECT_EQ(firstTrack(soundTrack(0)).value(kZelTrackInfoFourCC).toString(), QStringLiteral("raw "));
    EXPECT_EQ(firstTrack(soundTrack(fourCharacterCode("ms\0\x02"))).value(kZelTrackInfoFourCC).toString(),
              QStringLiteral("ms \x02"));
}

TEST(MovieInfoDictionaries, tracks_ofOtherKindsAndWithoutDescriptionAreLeftOut)
{
    QTTrack text;
    text.mediaType = "text";
    QTTrack bare;
    bare.mediaType = "soun";
    MovieDescription movie = movieWith(text);
    movie.tracks.push_back(bare);
    movie.tracks.push_back(videoTrack());
    EXPECT_EQ(trackDictionaries(movie).size(), 1);
}

TEST(MovieInfoDictionaries, movie_hasTheLowBitsOfItsDuration)
{
    MovieDescription movie;
    movie.duration = {0x1'2345'6789, 44100};
    EXPECT_EQ(movieDictionary(movie),
              QVariantMap({{QStringLiteral("kZelMovieTimeScale"), quint32(44100)},
                           {QStringLiteral("kZelMovieDuration"), quint32(0x23456789)}}));
}

TEST(MovieInfoDictionaries, metadata_goesByFiveKeysInEitherOrder)
{
    EXPECT_EQ(metadataText("\251alb", "x", QStringLiteral("kZelAudioInfoAlbum")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("bla\251", "x", QStringLiteral("kZelAudioInfoAlbum")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("\251aut", "x", QStringLiteral("kZelAudioInfoAuthors")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("tua\251", "x", QStringLiteral("kZelAudioInfoAuthors")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("\251ART", "x", QStringLiteral("kZelAudioInfoArtist")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("TRA\251", "x", QStringLiteral("kZelAudioInfoArtist")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("\251nam", "x", QStringLiteral("kZelAudioInfoTitle")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("man\251", "x", QStringLiteral("kZelAudioInfoTitle")), QStringLiteral("x"));
    EXPECT_EQ(metadataText("\251day", "1999?", QStringLiteral("kZelAudioInfoYear")), QStringLiteral("1999?"));
    EXPECT_EQ(metadataText("yad\251", "x", QStringLiteral("kZelAudioInfoYear")), QStringLiteral("x"));
    EXPECT_EQ(metadataText(QByteArray("\251nam\0more", 9), "x", QStringLiteral("kZelAudioInfoTitle")),
              QStringLiteral("x"));
    const std::vector<MovieMetadataItem> others = {{"\251alb1", "x"}, {"\251al", "x"}, {"alb\251", "x"},
                                                   {"\251art", "x"},  {"", "x"},       {"genre", "x"}};
    EXPECT_TRUE(metadataDictionary(others).isEmpty());
}

TEST(MovieInfoDictionaries, metadata_isLeftOut_whenItIsNoUtf8)
{
    EXPECT_TRUE(metadataDictionary({{"\251nam", "caf\xe9"}}).isEmpty());
    const QVariantMap both = metadataDictionary({{"\251nam", "first"}, {"\251nam", "caf\xe9"}, {"\251ART", "a"}});
    EXPECT_EQ(both.value(kZelAudioInfoTitle).toString(), QStringLiteral("first"));
    EXPECT_EQ(metadataDictionary({{"\251nam", "first"}, {"man\251", "second"}}).value(kZelAudioInfoTitle).toString(),
              QStringLiteral("second"));
}

TEST(MovieInfoDictionaries, metadata_endsAt255BytesAndAtAZeroByte)
{
    EXPECT_EQ(metadataText("\251nam", QByteArray(300, 'x'), kZelAudioInfoTitle).size(), 255);
    EXPECT_EQ(metadataText("\251nam", QByteArray("one\0two", 7), kZelAudioInfoTitle), QStringLiteral("one"));
    // Cut inside of a character it is no UTF-8.
    EXPECT_TRUE(metadataDictionary({{"\251nam", QByteArray(254, 'x') + "é"}}).isEmpty());
}
