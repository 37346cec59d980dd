#include "platform/quicktime/AtomSource.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MovieDescription.h"
#include "tests/quicktime/Atoms.h"
#include "tests/support/TemporaryTree.h"

#include <QFile>

#include <bit>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class QuickTimeDescription : public testing::Test
{
protected:
    MovieDescription described(const QByteArray &file) const
    {
        const Result<MovieDescription> movie = describeMovie(tree.makeFile("a.mov", file));
        EXPECT_TRUE(movie) << qPrintable(movie.error().localizedDescription());
        return movie ? *movie : MovieDescription();
    }
    /// The only track of a movie with it.
    QTTrack trackOf(const TrackParts &parts) const
    {
        const MovieDescription movie = described(movieAtom(trackAtom(parts)));
        EXPECT_EQ(movie.tracks.size(), 1u);
        return movie.tracks.empty() ? QTTrack() : movie.tracks.front();
    }
    static TrackParts soundParts(const QByteArray &description, const QByteArray &sizes)
    {
        TrackParts parts;
        parts.description = description;
        parts.sizes = sizes;
        return parts;
    }

    const TemporaryTree tree;
};

QByteArray valueOf(const MovieDescription &movie, const QByteArray &key)
{
    for (const MovieMetadataItem &item : movie.metadata) {
        if (item.key == key)
            return item.value;
    }
    return "(none)";
}

/// A text as user data has it: with its length and its language.
QByteArray userText(const QByteArray &key, const QByteArray &text)
{
    return atom(key, bigEndian16(std::uint32_t(text.size())) + bigEndian16(0x55c4) + text);
}

/// A value as a list of items has it.
QByteArray itemValue(std::uint32_t type, const QByteArray &value)
{
    return atom("data", bigEndian32(type) + bigEndian32(0) + value);
}

QByteArray itemList(const QByteArray &items)
{
    return atom("udta", atom("meta", bigEndian32(0) + atom("ilst", items)));
}

} // namespace

TEST_F(QuickTimeDescription, sound_isWhatItsDescriptionSays)
{
    const QTTrack track = trackOf(soundParts(soundDescriptionAtom("twos", 2, 16, 44100), equalSizes(4, 44100)));
    EXPECT_EQ(track.mediaType, "soun");
    ASSERT_TRUE(track.sound);
    EXPECT_EQ(track.sound->dataFormat, fourCharacterCode("twos"));
    EXPECT_EQ(track.sound->sampleRate, 44100u) << "the whole part of a fixed-point number";
    EXPECT_EQ(track.sound->sampleSize, 16);
    EXPECT_EQ(track.sound->numChannels, 2);
    EXPECT_EQ(track.sound->descSize, 36);
    EXPECT_EQ(track.dataSize, 176400u);
    EXPECT_EQ(track.duration, 1000);
}

TEST_F(QuickTimeDescription, sound_hasItsTrueNumbers_inVersion2)
{
    const QByteArray behind = bigEndian32(72) + bigEndian64(std::bit_cast<std::uint64_t>(192000.0)) + bigEndian32(6)
        + bigEndian32(0x7f000000) + bigEndian32(24) + bigEndian32(0) + bigEndian32(18) + bigEndian32(1);
    const QTTrack track = trackOf(soundParts(soundDescriptionAtom("lpcm", 3, 16, 1, 2, behind), equalSizes(1, 100)));
    ASSERT_TRUE(track.sound);
    EXPECT_EQ(track.sound->sampleRate, 192000u);
    EXPECT_EQ(track.sound->sampleSize, 24);
    EXPECT_EQ(track.sound->numChannels, 6);
    EXPECT_EQ(track.sound->descSize, 72);
    EXPECT_EQ(track.dataSize, 1800u);
}

TEST_F(QuickTimeDescription, sound_hasTheRateOfItsMedia_whenTheDescriptionHasNoRoomForIt)
{
    TrackParts parts = soundParts(soundDescriptionAtom("fLaC", 2, 24, 0), equalSizes(10, 1));
    parts.mediaTimeScale = 96000;
    EXPECT_EQ(trackOf(parts).sound->sampleRate, 96000u);
}

TEST_F(QuickTimeDescription, size_isThatOfTheBytes_whenTheTableCountsSamplesOfSound)
{
    // A frame of 34 bytes for each channel stands for 64 samples.
    const QByteArray version1 = bigEndian32(64) + bigEndian32(34) + bigEndian32(68) + bigEndian32(2);
    EXPECT_EQ(
        trackOf(soundParts(soundDescriptionAtom("ima4", 2, 16, 44100, 1, version1), equalSizes(1, 6400))).dataSize,
        6800u);
    EXPECT_EQ(trackOf(soundParts(soundDescriptionAtom("in24", 2, 24, 44100), equalSizes(1, 100))).dataSize, 600u);
    const QByteArray ofThree = bigEndian32(1) + bigEndian32(3) + bigEndian32(6) + bigEndian32(2);
    const QTTrack deep =
        trackOf(soundParts(soundDescriptionAtom("in24", 2, 16, 44100, 1, ofThree), equalSizes(1, 100)));
    EXPECT_EQ(deep.dataSize, 600u);
    EXPECT_EQ(deep.sound->sampleSize, 24) << "version 1 has always 16 in the field of version 0";
    EXPECT_EQ(trackOf(soundParts(soundDescriptionAtom(QByteArray(4, '\0'), 1, 8, 22050), equalSizes(1, 100))).dataSize,
              100u);
}

TEST_F(QuickTimeDescription, size_isTheSumOfTheTable)
{
    const QByteArray description = soundDescriptionAtom("mp4a", 2, 16, 44100);
    const QByteArray large =
        atom("stsz", bigEndian32(0) + bigEndian32(0) + bigEndian32(20000) + bigEndian32(7).repeated(20000));
    EXPECT_EQ(trackOf(soundParts(description, large)).dataSize, 140000u) << "longer than the window";
    const auto compact = [&](std::uint32_t bits, std::uint32_t count, const QByteArray &entries) {
        return atom("stz2", bigEndian32(0) + bigEndian32(bits) + bigEndian32(count) + entries);
    };
    EXPECT_EQ(trackOf(soundParts(description, compact(16, 2, bigEndian16(300) + bigEndian16(5)))).dataSize, 305u);
    EXPECT_EQ(trackOf(soundParts(description, compact(8, 3, "\x01\x02\x03"))).dataSize, 6u);
    EXPECT_EQ(trackOf(soundParts(description, compact(4, 3, "\x12\x3f"))).dataSize, 6u) << "half of the last byte";
}

TEST_F(QuickTimeDescription, size_isUnknown_whenTheTableIsCut)
{
    const QByteArray description = soundDescriptionAtom("mp4a", 2, 16, 44100);
    for (const QByteArray &sizes :
         {QByteArray(), atom("stsz", bigEndian32(0)),
          atom("stsz", bigEndian32(0) + bigEndian32(0) + bigEndian32(3) + bigEndian32(7).repeated(2)),
          atom("stsz", bigEndian32(0) + bigEndian32(0) + bigEndian32(0xffffffff)),
          atom("stz2", bigEndian32(0) + bigEndian32(3) + bigEndian32(1) + "a")}) {
        const QTTrack track = trackOf(soundParts(description, sizes));
        EXPECT_FALSE(track.dataSize) << sizes.toHex().constData();
        EXPECT_TRUE(track.sound);
    }
}

TEST_F(QuickTimeDescription, pictures_areWhatTheirDescriptionSays)
{
    TrackParts parts;
    parts.mediaType = "vide";
    parts.mediaTimeScale = 600;
    parts.description = imageDescriptionAtom("SVQ3", 640, 480, "Sorenson Video 3", 3, 32);
    parts.sizes = equalSizes(1000, 25);
    const QTTrack track = trackOf(parts);
    ASSERT_TRUE(track.image);
    EXPECT_EQ(track.image->codecType, fourCharacterCode("SVQ3"));
    EXPECT_EQ(track.image->width, 640);
    EXPECT_EQ(track.image->height, 480);
    EXPECT_EQ(track.image->frameCount, 3);
    EXPECT_EQ(track.image->depth, 32);
    EXPECT_EQ(track.image->name, QStringLiteral("Sorenson Video 3"));
    EXPECT_EQ(track.dataSize, 25000u);
}

TEST_F(QuickTimeDescription, nameOfCodec_endsWithItsField_andMayBeMacRoman)
{
    TrackParts parts;
    parts.mediaType = "vide";
    parts.description = imageDescriptionAtom("rle ", 8, 8, "Animation \xa8"); // a registered trade mark
    EXPECT_EQ(trackOf(parts).image->name, QStringLiteral("Animation ®"));
    parts.description = imageDescriptionAtom("rle ", 8, 8, QByteArray(31, 'x'));
    parts.description[8 + 42] = char(200);
    EXPECT_EQ(trackOf(parts).image->name.size(), 31);
}

TEST_F(QuickTimeDescription, track_hasNoDescription_whenItIsCut)
{
    TrackParts parts;
    parts.description = soundDescriptionAtom("twos", 2, 16, 44100).first(30);
    EXPECT_FALSE(trackOf(parts).sound);
    parts.mediaType = "vide";
    parts.description = imageDescriptionAtom("rle ", 8, 8, "x").first(80);
    EXPECT_FALSE(trackOf(parts).image);
}

TEST_F(QuickTimeDescription, tracks_ofAllKindsAreListed)
{
    TrackParts text;
    text.mediaType = "text";
    const MovieDescription movie = described(movieAtom(plainSoundTrack() + trackAtom(text)));
    ASSERT_EQ(movie.tracks.size(), 2u);
    EXPECT_EQ(movie.tracks[1].mediaType, "text");
    const NSError error = describeMovie(tree.makeFile("text.mov", movieAtom(trackAtom(text)))).error();
    EXPECT_EQ(error.code(), noMovieFound);
}

TEST_F(QuickTimeDescription, movie_isFound_howeverItsAtomsSayTheirSizes)
{
    const QByteArray movie = movieAtom(plainSoundTrack());
    const QByteArray media(1000, 'm');
    const QByteArray longSize = bigEndian32(1) + "mdat" + bigEndian64(16 + 1000) + media;
    const QByteArray toTheEnd = bigEndian32(0) + movie.sliced(4);
    const QByteArray tooLong = bigEndian32(0x7fffffff) + movie.sliced(4);
    for (const QByteArray &file : {movie, atom("mdat", media) + movie, longSize + movie, longSize + toTheEnd,
                                   atom("ftyp", "qt  ") + atom("wide") + tooLong}) {
        const MovieDescription found = described(file);
        EXPECT_EQ(found.duration, (QTTime{1000, 1000}));
        EXPECT_EQ(found.container, QStringLiteral("QuickTime"));
        ASSERT_EQ(found.tracks.size(), 1u);
        EXPECT_EQ(found.tracks[0].dataSize, 176400u);
    }
}

TEST_F(QuickTimeDescription, movie_isFound_behindMediaOfManyGigabytes)
{
    const QByteArray movie = movieAtom(plainSoundTrack());
    const std::uint64_t size = std::uint64_t(20) << 30;
    tree.makeSparseFile("huge.mov", qint64(size) + movie.size());
    QFile file(tree.pathText("huge.mov"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write(bigEndian32(1) + "mdat" + bigEndian64(size));
    file.seek(qint64(size));
    file.write(movie);
    file.close();
    const Result<MovieDescription> found = describeMovie(tree.path("huge.mov"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->tracks.size(), 1u);
}

TEST_F(QuickTimeDescription, movie_isInflated_whenItIsCompressed)
{
    const auto compressed = [](const QByteArray &movie, std::uint32_t length) {
        // Qt puts the length in front, just as the atom has it.
        return atom(
            "moov",
            atom("cmov", atom("dcom", "zlib") + atom("cmvd", bigEndian32(length) + qCompress(movie).sliced(4))));
    };
    const QByteArray movie = movieAtom(plainSoundTrack() + atom("udta", userText("\251nam", "Small")));
    const MovieDescription found = described(compressed(movie, std::uint32_t(movie.size())));
    ASSERT_EQ(found.tracks.size(), 1u);
    EXPECT_EQ(valueOf(found, "\251nam"), "Small");
    for (const QByteArray &lie : {compressed(movie, std::uint32_t(movie.size()) + 1), compressed(movie, 0x7fffffff),
                                  compressed(movie, 0), compressed("text", 4)})
        EXPECT_EQ(describeMovie(tree.makeFile("lie.mov", lie)).error().code(), invalidMovie);
}

TEST_F(QuickTimeDescription, fragments_areAddedUp)
{
    TrackParts parts = soundParts(soundDescriptionAtom("mp4a", 2, 16, 44100), equalSizes(0, 0));
    parts.duration = 0;
    parts.sizes += atom("stts", bigEndian64(0));
    const QByteArray defaults = atom(
        "mvex",
        atom("trex",
             bigEndian32(0) + bigEndian32(1) + bigEndian32(1) + bigEndian32(1024) + bigEndian32(100) + bigEndian32(0)));
    const auto fragment = [](const QByteArray &tracks) { return atom("moof", atom("mfhd", bigEndian64(0)) + tracks); };
    const QByteArray plain = fragment(
        atom("traf", atom("tfhd", bigEndian32(0) + bigEndian32(1)) + atom("trun", bigEndian32(0) + bigEndian32(10))));
    // Other defaults, and then sizes and durations of each sample.
    const QByteArray other =
        fragment(atom("traf",
                      atom("tfhd", bigEndian32(0x18) + bigEndian32(1) + bigEndian32(441) + bigEndian32(50))
                          + atom("trun", bigEndian32(0) + bigEndian32(2))
                          + atom("trun",
                                 bigEndian32(0x301) + bigEndian32(2) + bigEndian32(0) + bigEndian32(22050)
                                     + bigEndian32(7) + bigEndian32(11025) + bigEndian32(8))));
    const QByteArray movie = movieAtom(trackAtom(parts) + defaults, 0);
    const MovieDescription found = described(movie + plain + atom("mdat", "x") + other);
    ASSERT_EQ(found.tracks.size(), 1u);
    EXPECT_EQ(found.tracks[0].dataSize, 10u * 100 + 2 * 50 + 7 + 8);
    const std::int64_t ticks = 10 * 1024 + 2 * 441 + 22050 + 11025;
    EXPECT_EQ(found.tracks[0].duration, (ticks * 1000 + 22050) / 44100);
    EXPECT_EQ(found.duration.timeValue, found.tracks[0].duration);
    const MovieDescription cut = described(movie + other.first(other.size() - 6));
    EXPECT_FALSE(cut.tracks.at(0).dataSize) << "what is cut has no size that is known";
}

TEST_F(QuickTimeDescription, metadata_isReadFromUserDataItemsAndKeys)
{
    const QByteArray keys = atom("keys", bigEndian32(0) + bigEndian32(1) + atom("mdta", "com.apple.quicktime.make"));
    const QByteArray quickTime = atom(
        "meta", atom("hdlr", QByteArray(24, '\0')) + keys + atom("ilst", atom(bigEndian32(1), itemValue(1, "Camera"))));
    const QByteArray items = atom("\251nam", itemValue(1, "Title"))
        + atom("\251ART", itemValue(2, QByteArray("\0A\0B", 4))) + atom("trkn", itemValue(0, "12345678"))
        + atom("----",
               atom("mean", bigEndian32(0) + "org.example") + atom("name", bigEndian32(0) + "mood")
                   + itemValue(1, "good"));
    const QByteArray user = atom("udta",
                                 userText("\251alb", "Album") + userText("\251cmt", "\xfe\xff\x20\xac")
                                     + atom("meta", bigEndian32(0) + atom("ilst", items)) + bigEndian32(0));
    const MovieDescription movie = described(movieAtom(plainSoundTrack() + user + quickTime));
    EXPECT_EQ(valueOf(movie, "\251alb"), "Album");
    EXPECT_EQ(valueOf(movie, "\251cmt"), "€");
    EXPECT_EQ(valueOf(movie, "\251nam"), "Title");
    EXPECT_EQ(valueOf(movie, "\251ART"), "AB");
    EXPECT_EQ(valueOf(movie, "org.example:mood"), "good");
    EXPECT_EQ(valueOf(movie, "com.apple.quicktime.make"), "Camera");
    EXPECT_EQ(movie.metadata.size(), 6u) << "no text, no item";
}

TEST_F(QuickTimeDescription, metadata_staysWhatItIs_whenItIsNoUtf8_andIsCutBehind64KiB)
{
    const QByteArray items =
        atom("\251nam", itemValue(1, "\xff!")) + atom("\251cmt", itemValue(1, QByteArray(100000, 'c')));
    const MovieDescription movie = described(movieAtom(plainSoundTrack() + itemList(items)));
    EXPECT_EQ(valueOf(movie, "\251nam"), "\xff!");
    EXPECT_EQ(valueOf(movie, "\251cmt").size(), 65536);
    const QByteArray many = atom("\251cmt", itemValue(1, QByteArray(60000, 'c'))).repeated(100);
    EXPECT_EQ(described(movieAtom(plainSoundTrack() + itemList(many))).metadata.size(), 17u) << "a megabyte in all";
}

TEST_F(QuickTimeDescription, cover_isTheFirstPicture_whereverItLies)
{
    const QByteArray picture = "\x89PNG" + QByteArray(200000, 'p');
    const QByteArray items = atom("covr", itemValue(14, picture) + itemValue(13, "\xff\xd8\xff second"));
    const QByteArray file = atom("mdat", QByteArray(300000, 'm')) + movieAtom(plainSoundTrack() + itemList(items));
    const MovieDescription movie = described(file);
    ASSERT_TRUE(movie.cover);
    EXPECT_EQ(movie.cover->extension, "png");
    EXPECT_EQ(movie.cover->offset, file.indexOf("\x89PNG"));
    EXPECT_EQ(pictureOfCover(tree.path("a.mov"), *movie.cover).valueOr(QByteArray()), picture);
    tree.makeFile("a.mov", file.first(file.size() - 150000));
    EXPECT_TRUE(pictureOfCover(tree.path("a.mov"), *movie.cover).error()) << "the file was cut meanwhile";
}

TEST_F(QuickTimeDescription, anyBytes_endInAMovieOrAnError)
{
    const QByteArray whole =
        atom("ftyp", "M4A ") + movieAtom(plainSoundTrack() + itemList(atom("\251nam", itemValue(1, "T"))));
    for (qsizetype length = 0; length < whole.size(); length += 7) {
        const Result<MovieDescription> cut = describeMovie(tree.makeFile("cut.m4a", whole.first(length)));
        EXPECT_TRUE(cut || !cut.error().localizedFailureReason().isEmpty()) << length;
    }
    // Atoms in atoms in atoms, each as long as it likes.
    QByteArray nested;
    for (int depth = 0; depth < 5000; ++depth)
        nested = bigEndian32(0x10000000) + "moov" + nested;
    EXPECT_TRUE(describeMovie(tree.makeFile("nested.mov", nested)).error());
    const QByteArray tooMany = atom("free").repeated(1'000'001);
    const NSError error = describeMovie(tree.makeFile("many.mov", tooMany + movieAtom(plainSoundTrack()))).error();
    EXPECT_TRUE(error.localizedFailureReason().contains(QStringLiteral("no end")))
        << qPrintable(error.localizedFailureReason());
}

TEST_F(QuickTimeDescription, describing_endsWhenItIsCancelled)
{
    std::stop_source stop;
    stop.request_stop();
    const QByteArray path = tree.makeFile("a.mov", movieAtom(plainSoundTrack()));
    EXPECT_EQ(describeMovie(path, stop.get_token()).error().code(), userCanceledErr);
}

TEST_F(QuickTimeDescription, describing_refusesWhatIsNoFile_withoutWaiting)
{
    for (const QByteArray &path : {tree.path("missing"), tree.path(), tree.makeFifo("pipe"), QByteArray("/dev/zero")}) {
        const NSError error = describeMovie(path).error();
        EXPECT_TRUE(error) << path.constData();
        EXPECT_FALSE(error.localizedFailureReason().isEmpty());
    }
}
