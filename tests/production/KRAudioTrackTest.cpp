#include "platform/coreservices/FSCatalog.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRAudioTrack.h>
#include <TessaronClasses/KRVideoDVDBurnPathAddition.h>

#include <QtEndian>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::uint64_t frameSize = 2352;

class AudioTrack : public testing::Test
{
protected:
    std::shared_ptr<KRAudioTrack> trackOf(const QByteArray &name) const
    {
        return KRAudioTrack::audioTrackWithFileAtPath(tree.pathText(name));
    }
    /// A sound of that many samples at 44,100 Hz.
    void makeSound(const QByteArray &name, std::size_t samples) const { tree.makeFile(name, waveFile(noise(samples))); }
    static QVariantMap propertiesOf(const std::shared_ptr<DRTrack> &track)
    {
        return track ? track->properties() : QVariantMap();
    }

    const TemporaryTree tree;
};

QVariantMap audioPropertiesOfLength(quint64 frames)
{
    return {{DRTrackLengthKey, frames}, {DRBlockSizeKey, 2352u}, {DRBlockTypeKey, 0},
            {DRDataFormKey, 0},         {DRTrackModeKey, 0},     {DRSessionFormatKey, 0}};
}

} // namespace

TEST_F(AudioTrack, KRfsRef_doesNotFollowALinkAtTheEnd)
{
    makeSound("a.wav", 10);
    tree.makeSymbolicLink("link", "a.wav");
    const FSRef file = KRfsRef(tree.pathText("a.wav")), link = KRfsRef(tree.pathText("link"));
    EXPECT_TRUE(FSRefValid(&file) && FSRefValid(&link));
    EXPECT_NE(file, link);
    EXPECT_EQ(KRstringWithFSRef(&link), tree.pathText("link"));
    const FSRef missing = KRfsRef(tree.pathText("missing"));
    EXPECT_FALSE(FSRefValid(&missing));
    EXPECT_TRUE(KRstringWithFSRef(&missing).isNull());
}

TEST_F(AudioTrack, KRstringWithFSRef_keepsNamesThatAreNotUtf8_andHasRoomFor1023Bytes)
{
    tree.makeFile("na\xefve.wav");
    const FSRef ref = KRfsRef(tree.pathText("na\xefve.wav"));
    EXPECT_EQ(KRstringWithFSRef(&ref), tree.pathText("na\xefve.wav"));
    QByteArray deep = "d";
    while (tree.path(deep).size() < 1100)
        deep += '/' + QByteArray(200, 'x');
    tree.makeFolder(deep);
    const FSRef tooDeep = KRfsRef(tree.pathText(deep));
    EXPECT_TRUE(FSRefValid(&tooDeep));
    EXPECT_TRUE(KRstringWithFSRef(&tooDeep).isNull());
}

TEST_F(AudioTrack, audioTrack_isNull_whenNothingIsThere)
{
    EXPECT_FALSE(trackOf("missing.wav"));
    EXPECT_FALSE(KRAudioTrack::initWithFileAtPath(tree.pathText("missing.wav")));
    makeSound("a.wav", 10);
    tree.makeSymbolicLink("link", "a.wav");
    ASSERT_TRUE(trackOf("link"));
    EXPECT_EQ(trackOf("link")->path(), tree.pathText("a.wav")) << "a link is followed";
    const FSRef ref = KRfsRef(tree.pathText("a.wav"));
    EXPECT_EQ(KRAudioTrack::audioTrackWithFSRef(&ref)->path(), tree.pathText("a.wav"));
    EXPECT_EQ(KRAudioTrack::initWithFSRef(&ref)->path(), tree.pathText("a.wav"));
}

TEST_F(AudioTrack, size_isThatOfTheWholeSecondsAndAFrame)
{
    struct Row {
        std::size_t samples;
        std::uint64_t frames;
    };
    for (const Row &row : {Row{1, 1}, Row{44099, 1}, Row{44100, 76}, Row{44101, 76}, Row{88199, 76}, Row{88200, 151},
                           Row{171990, 226}}) {
        makeSound("a.wav", row.samples);
        const auto track = trackOf("a.wav");
        EXPECT_EQ(track->size(), row.frames * frameSize) << row.samples;
        const auto finished = track->trackUsingCustomExporter(true);
        EXPECT_EQ(propertiesOf(finished), audioPropertiesOfLength(row.frames)) << row.samples;
        tree.remove("a.wav");
    }
    EXPECT_EQ(226 * frameSize, 531552u) << "3.9 seconds";
}

TEST_F(AudioTrack, size_countsSecondsOfAnyForm)
{
    tree.makeFile("a.wav", waveFile(noise(8000 * 39 / 10, 1), 1, 8000));
    EXPECT_EQ(trackOf("a.wav")->size(), 531552u);
    for (const char *name : {"b.mp3", "b.mov", "b.flac", "b.ogg"}) {
        ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path(name));
        EXPECT_EQ(trackOf(name)->size(), 531552u) << name;
    }
}

TEST_F(AudioTrack, size_isZeroAndAskedForAgain_untilTheFileCanBeOpened)
{
    tree.makeFile("a.wav", "no sound");
    const auto track = trackOf("a.wav");
    EXPECT_EQ(track->size(), 0u);
    makeSound("a.wav", 44100);
    EXPECT_EQ(track->size(), 76 * frameSize);
    makeSound("a.wav", 88200);
    EXPECT_EQ(track->size(), 76 * frameSize) << "kept once it is known";
    EXPECT_EQ(trackOf("a.wav")->size(), 151 * frameSize);
}

TEST_F(AudioTrack, size_isZero_orTheTrackNull_whenTheFileClaimsMoreThanNumbersHold)
{
    makeSound("a.wav", 44100);
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("plain.mov"));
    const QByteArray plain = tree.contents("plain.mov");
    const auto movieOfSeconds = [&](quint64 seconds) {
        // The movie header of version 1, which counts in 64 bits, in place of the one of version 0. It lies in "moov",
        // behind all samples, whose places therefore stay.
        const qsizetype header = plain.indexOf("mvhd") - 4, movie = plain.indexOf("moov") - 4;
        constexpr qsizetype sizeOfVersion0 = 108, behindDuration = 28;
        QByteArray longer(8, '\0');
        qToBigEndian<quint32>(120, longer.data());
        longer.replace(4, 4, "mvhd");
        longer += QByteArray("\1\0\0\0", 4) + QByteArray(16, '\0');
        QByteArray times(12, '\0');
        qToBigEndian<quint32>(1, times.data());
        qToBigEndian<quint64>(seconds, times.data() + 4);
        longer += times + plain.mid(header + behindDuration, sizeOfVersion0 - behindDuration);
        QByteArray file = plain;
        file.replace(header, sizeOfVersion0, longer);
        qToBigEndian<quint32>(qFromBigEndian<quint32>(file.constData() + movie) + 12, file.data() + movie);
        tree.makeFile("claims.mov", file);
        return trackOf("claims.mov");
    };
    EXPECT_EQ(movieOfSeconds(3)->size(), 226 * frameSize);
    const auto tooLong = movieOfSeconds(quint64(1) << 36);
    EXPECT_EQ(tooLong->size(), ((quint64(75) << 36) + 1) * frameSize);
    EXPECT_FALSE(tooLong->trackUsingCustomExporter(true)) << "more frames than a track counts";
    EXPECT_EQ(movieOfSeconds(quint64(1) << 62)->size(), 0u) << "more bytes than 64 bits count";
}

TEST_F(AudioTrack, producer_dependsOnTheFlagAndTheExtension)
{
    enum Kind { Nothing, Track, Maker };
    struct Row {
        const char *name;
        bool usesCustomExporter;
        Kind kind;
    };
    for (const Row &row :
         {Row{"a.wav", false, Track}, Row{"a.wav", true, Maker}, Row{"a.mov", false, Maker}, Row{"a.MOV", false, Maker},
          Row{"a.Mov", true, Maker}, Row{"a", false, Track}, Row{".mov", false, Track}, Row{"mov", false, Track},
          Row{"a.mov.wav", false, Track}, Row{"a.mov2", false, Track}}) {
        makeSound(row.name, 1000);
        EXPECT_EQ(trackOf(row.name)->_dataProducer(row.usesCustomExporter).index(), std::size_t(row.kind)) << row.name;
        EXPECT_TRUE(trackOf(row.name)->dataProducer()) << row.name;
    }
    tree.makeFile("text.txt", "text");
    EXPECT_EQ(trackOf("text.txt")->_dataProducer(false).index(), std::size_t(Nothing));
    EXPECT_FALSE(trackOf("text.txt")->trackUsingCustomExporter(false));
    ASSERT_TRUE(trackOf("text.txt")->dataProducer()) << "whatever the file holds";
    EXPECT_EQ(trackOf("text.txt")->dataProducer()->dataSize(), 0u);
    const auto gone = trackOf("text.txt");
    tree.remove("text.txt");
    for (const bool usesCustomExporter : {false, true}) {
        EXPECT_EQ(gone->_dataProducer(usesCustomExporter).index(), std::size_t(Nothing));
        EXPECT_FALSE(gone->trackUsingCustomExporter(usesCustomExporter));
    }
    EXPECT_FALSE(gone->dataProducer());
}

TEST_F(AudioTrack, dataProducer_isAMakerWithTheSize)
{
    makeSound("a.wav", 171990);
    const std::shared_ptr<KRAudioMaker> maker = trackOf("a.wav")->dataProducer();
    ASSERT_TRUE(maker);
    EXPECT_EQ(maker->dataSize(), 531552u);
    const std::shared_ptr<DRTrack> track = maker->track();
    EXPECT_EQ(track->producer(), maker);
    EXPECT_EQ(track->properties(), maker->dataProducer()->properties());
    maker->setSize(5 * frameSize - 1);
    EXPECT_EQ(maker->track()->properties(), audioPropertiesOfLength(4)) << "whole frames only";
    maker->setSize((quint64(1) << 32) * frameSize - 1);
    EXPECT_EQ(maker->track()->properties(), audioPropertiesOfLength(0xFFFFFFFF));
    maker->setSize((quint64(1) << 32) * frameSize);
    EXPECT_FALSE(maker->track()) << "a length of 32 bits cannot say it";
}

TEST_F(AudioTrack, trackWithoutTheCustomExporter_hasAllOfTheSound)
{
    const Samples source = noise(10000);
    tree.makeFile("a.wav", waveFile(source));
    const std::shared_ptr<DRTrack> track = trackOf("a.wav")->trackUsingCustomExporter(false);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->properties(), audioPropertiesOfLength(18)) << "17.007 frames";
    DRTrackProducer &producer = *track->producer();
    for (int burn = 0; burn < 2; ++burn) {
        ASSERT_TRUE(producer.prepareTrack(track.get(), nullptr, {}));
        QByteArray bytes(18 * frameSize, 'x');
        std::uint32_t flags = 0;
        for (std::uint32_t frame = 0; frame < 18; frame += 9)
            EXPECT_EQ(producer.produceDataForTrack(track.get(), bytes.data() + frame * frameSize, 9 * frameSize, frame,
                                                   frameSize, &flags),
                      9 * frameSize);
        producer.cleanupTrackAfterBurn(track.get());
        Samples expected = source;
        expected.resize(18 * frameSize / 2);
        EXPECT_EQ(samplesOf(bytes), expected);
    }
    tree.remove("a.wav");
    EXPECT_FALSE(producer.prepareTrack(track.get(), nullptr, {}));
}
