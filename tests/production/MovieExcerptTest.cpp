#include "imaging/ProcessFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRAudioTrack.h>
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/KRDataProvider.h>
#include <TessaronClasses/TemporaryFiles.h>

#include <QDir>
#include <QFileInfo>

#include <array>
#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t second = 44100;
constexpr qsizetype frame = 2352;

/// Tracks of sound that is decoded, of both producers.
class DecodedSound : public testing::Test
{
protected:
    DecodedSound() { tree.makeFile("sound.wav", waveFile(sound)); }

    static KRDRDataProductionInfo infoOf(float start, float duration)
    {
        KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
        info.trackMode = KRDRTrackMode::decodedAudio;
        info.quickTimeStartSeconds = start;
        info.quickTimeDurationSeconds = duration;
        return info;
    }
    std::shared_ptr<KRDRDataProducer> producer(const KRDRDataProductionInfo &info, const char *name = "sound.wav") const
    {
        return KRDRDataProducer::initWithInfo(info, tree.pathText(name));
    }
    std::shared_ptr<KRDataProvider> provider(std::uint64_t start, std::uint64_t frames, std::uint32_t options = 0,
                                             std::uint64_t pregap = 0) const
    {
        return KRDataProvider::providerWithFile(tree.pathText("sound.wav"), start, frames * 2352, 2352, pregap,
                                                KRDataProviderMode::decodedAudio, options);
    }
    static quint64 lengthOf(const std::shared_ptr<DRTrack> &track)
    {
        return track ? track->properties().value(DRTrackLengthKey).toULongLong() : 0;
    }
    static bool hasLink(const KRDRDataProducer &producer)
    {
        return QFileInfo(producer.audiotrack()->path()).dir().exists(QStringLiteral("tempWavFile.wav"));
    }
    static Samples produced(DRTrackProducer &producer, qsizetype frames)
    {
        EXPECT_TRUE(producer.prepareTrack(nullptr, nullptr, {}));
        QByteArray buffer(frames * frame, 'u');
        EXPECT_EQ(producer.produceDataForTrack(nullptr, buffer.data(), std::uint32_t(buffer.size()), 0, 2352, nullptr),
                  std::uint32_t(buffer.size()));
        producer.cleanupTrackAfterBurn(nullptr);
        return samplesOf(buffer);
    }
    [[nodiscard]] Samples part(std::size_t from, std::size_t count) const
    {
        return {sound.begin() + std::ptrdiff_t(2 * from), sound.begin() + std::ptrdiff_t(2 * (from + count))};
    }

    const Samples sound = noise(3 * second);
    const TemporaryTree tree;
};

} // namespace

TEST_F(DecodedSound, productionRecord_cutsTheSound_andSaysWhatItSays)
{
    KRDRDataProductionInfo info = infoOf(1.0F, 1.5F);
    info.hasPregapInfo = 1;
    info.pregapFramesCount = 150;
    info.numberOfIndexPoints = 2;
    info.indexPointFrames = {10, 20};
    info.framesCount = 999999;
    info.options = KRDRProductionOption::copyrightFree;
    const auto made = producer(info);
    EXPECT_FALSE(made->audiotrack());
    EXPECT_EQ(made->dataProducer(), made);
    const std::shared_ptr<DRTrack> track = made->track();
    ASSERT_TRUE(track);
    EXPECT_EQ(lengthOf(track), 76u) << "the audio track's own length: a second and a frame";
    EXPECT_EQ(track->properties().value(DRPreGapLengthKey), 150u);
    EXPECT_EQ(track->properties().value(DRIndexPointsKey), QVariant(QVariantList{10u, 20u}));
    EXPECT_EQ(track->properties().value(DRSerialCopyManagementStateKey), DRSCMSCopyrightFree);
    ASSERT_TRUE(made->audiotrack());
    EXPECT_TRUE(std::dynamic_pointer_cast<KRAudioMaker>(track->producer()));
    EXPECT_EQ(produced(*made->dataProducer(), 76), part(second, std::size_t(76) * 588));
    EXPECT_EQ(lengthOf(made->track()), 76u) << "asked again";
}

TEST_F(DecodedSound, productionRecord_goesToTheEnd_whereItSaysSo)
{
    KRDRDataProductionInfo info = infoOf(1.0F, 0.25F);
    info.quickTimeDurationGoTillEndOfFile = 1;
    EXPECT_EQ(lengthOf(producer(info)->track()), 151u);
    EXPECT_EQ(lengthOf(producer(infoOf(0, 100))->track()), 226u) << "what reaches past the end is cut";
}

TEST_F(DecodedSound, productionRecord_takesABinFileForSound)
{
    const TemporaryTree elsewhere(QStringLiteral("/dev/shm")); // where no hard link leads to
    for (const TemporaryTree *const place : {&tree, &elsewhere}) {
        place->makeFile("sound.BIN", waveFile(sound));
        const auto made = KRDRDataProducer::initWithInfo(infoOf(0, 2), place->pathText("sound.BIN"));
        ASSERT_TRUE(made->track());
        EXPECT_TRUE(hasLink(*made)) << "media services see a WAVE file";
        EXPECT_EQ(produced(*made->dataProducer(), 10), part(0, 5880));
    }
    for (const char *const name : {"sound.wav", ".bin", "sound.bin.wav"}) {
        tree.makeFile(name, waveFile(sound));
        const auto made = producer(infoOf(0, 2), name);
        ASSERT_TRUE(made->track()) << name;
        EXPECT_FALSE(hasLink(*made)) << name;
    }
}

TEST_F(DecodedSound, productionRecord_hasNoTrack_whereThereIsNoSuchSound)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const auto &[start, duration] : {std::pair<float, float>{-1, 1},
                                          {0, -1},
                                          {0, 0},
                                          {3.5F, 1},
                                          {nan, 1},
                                          {0, nan},
                                          {infinity, 1},
                                          {0, infinity},
                                          {3e38F, 3e38F}}) {
        const auto made = producer(infoOf(start, duration));
        EXPECT_FALSE(made->track()) << start << ' ' << duration;
        EXPECT_FALSE(made->audiotrack());
    }
    tree.makeFile("text.bin", "no sound at all");
    EXPECT_FALSE(producer(infoOf(0, 1), "text.bin")->track());
    EXPECT_FALSE(producer(infoOf(0, 1), "missing.wav")->track());
}

TEST_F(DecodedSound, temporaryMovie_goesWithItsMaker)
{
    auto made = producer(infoOf(0, 1));
    ASSERT_TRUE(made->track());
    const QFileInfo movie(made->audiotrack()->path());
    EXPECT_TRUE(movie.exists());
    EXPECT_EQ(movie.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    made.reset();
    EXPECT_FALSE(QFileInfo::exists(movie.filePath()));
    EXPECT_FALSE(QFileInfo::exists(movie.path()));
}

TEST_F(DecodedSound, temporaryMovieLinkAndPipe_goWithTheNextStart_whenTheirProcessIsKilled)
{
    tree.makeFile("sound.bin", waveFile(sound));
    int paths[2] = {-1, -1};
    ASSERT_EQ(::pipe(paths), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const auto made = producer(infoOf(0, 3), "sound.bin");
        const std::shared_ptr<DRTrack> track = made->track();
        const bool isReady = track && track->producer()->prepareTrack(nullptr, nullptr, {});
        const QByteArray movie = isReady ? fileSystemRepresentation(made->audiotrack()->path()) : "none";
        (void)!::write(paths[1], movie.constData(), std::size_t(movie.size()));
        for (;;)
            ::pause();
    }
    std::array<char, 1000> told = {};
    ASSERT_GT(::read(paths[0], told.data(), told.size() - 1), 0);
    const QFileInfo movie(stringWithFileSystemRepresentation(told.data()));
    const QDir folderOfProcess(QFileInfo(movie.path()).path());
    EXPECT_TRUE(movie.exists()) << told.data();
    EXPECT_TRUE(QFileInfo::exists(movie.dir().filePath(QStringLiteral("tempWavFile.wav"))));
    EXPECT_EQ(folderOfProcess.entryList({QStringLiteral("tempFifo-*")}, QDir::System).size(), 1);
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_TRUE(movie.exists());
    // What a program does that starts now.
    EXPECT_FALSE(ProcessFolder([] { return fileSystemRepresentation(temporaryFolder()); }).path().isEmpty());
    EXPECT_FALSE(folderOfProcess.exists());
    ::close(paths[0]);
    ::close(paths[1]);
}

TEST_F(DecodedSound, provider_countsInWholeSeconds)
{
    const auto made = provider(1, 75);
    const std::shared_ptr<DRTrack> track = made->dataProducer();
    EXPECT_EQ(lengthOf(track), 76u);
    EXPECT_EQ(track->properties().value(DRPreGapLengthKey), 0u);
    ASSERT_TRUE(track);
    EXPECT_EQ(produced(*track->producer(), 75), part(second, second));
    EXPECT_FALSE(made->track()) << "a list takes the track's producer";
    EXPECT_EQ(lengthOf(provider(0, 149)->dataProducer()), 76u) << "a part of a second is left out";
    EXPECT_EQ(lengthOf(provider(0, 75, KRDataProviderOption::untilEnd)->dataProducer()), 226u);
    EXPECT_EQ(lengthOf(provider(1, 75, KRDataProviderOption::untilEnd)->dataProducer()), 151u);
    EXPECT_EQ(lengthOf(provider(std::uint64_t(7) << 32 | 2, 75)->dataProducer()), 76u) << "the low 32 bits count";
    EXPECT_FALSE(provider(0, 74)->dataProducer()) << "no second at all";
    EXPECT_FALSE(provider(4, 75)->dataProducer());
    EXPECT_FALSE(provider(4, 75, KRDataProviderOption::untilEnd)->dataProducer());
    EXPECT_FALSE(provider(0xFFFFFFFF, ~std::uint64_t(0) / 2352)->dataProducer());
}

TEST_F(DecodedSound, provider_saysNoPregap_orTheOneGiven)
{
    const auto pregap = [&](std::uint32_t options, std::uint64_t bytes) {
        const std::shared_ptr<DRTrack> track = provider(0, 75, options, bytes)->dataProducer();
        return track ? track->properties().value(DRPreGapLengthKey) : QVariant(QStringLiteral("no track"));
    };
    EXPECT_EQ(pregap(0, 0), 0u);
    EXPECT_FALSE(pregap(KRDataProviderOption::anyPregap, 0).isValid());
    EXPECT_EQ(pregap(0, std::uint64_t(150) * 2352), 150u);
}
