#include "platform/discrecording/objects/DRDeviceMedia.h"
#include "tests/production/RawSectors.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRDataProvider.h>

#include <cstdio>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// Bytes that make whole sectors of 2336 and of 2352.
constexpr std::uint64_t everySize = std::uint64_t(2352) * 2336;
constexpr qsizetype plainSize = 2048;
constexpr qsizetype rawSize = 2352;
constexpr qsizetype formSize = 2336;

class KRDataProviderTest : public testing::Test
{
protected:
    KRDataProviderTest() { tree.makeFile("image", QByteArray(5000, 'x')); }

    [[nodiscard]] std::shared_ptr<KRDataProvider> provider(std::int16_t mode, std::uint32_t sector,
                                                           std::uint32_t options, std::uint64_t length = everySize,
                                                           std::uint64_t pregap = 0, std::uint64_t start = 0) const
    {
        return KRDataProvider::providerWithFile(tree.pathText("image"), start, length, sector, pregap, mode, options);
    }

    /// The properties of the track, without a pregap's; empty when there is no track.
    [[nodiscard]] QVariantMap numbers(std::int16_t mode, std::uint32_t sector, std::uint32_t options) const
    {
        const std::shared_ptr<DRTrack> track = provider(mode, sector, options)->dataProducer();
        QVariantMap properties = track ? track->properties() : QVariantMap();
        properties.remove(DRPreGapLengthKey);
        return properties;
    }

    [[nodiscard]] static QVariantMap expected(quint32 blockSize, int trackMode, int dataForm, int blockType,
                                              int sessionFormat, quint64 length)
    {
        return {{DRBlockSizeKey, blockSize}, {DRTrackModeKey, trackMode},         {DRDataFormKey, dataForm},
                {DRBlockTypeKey, blockType}, {DRSessionFormatKey, sessionFormat}, {DRTrackLengthKey, length}};
    }

    [[nodiscard]] static QByteArray produced(KRDataProvider &provider, qsizetype length)
    {
        QByteArray buffer(length, 'u');
        const std::uint32_t got =
            provider.produceDataForTrack(nullptr, buffer.data(), std::uint32_t(length), 999, 7, nullptr);
        EXPECT_LE(got, std::uint32_t(length));
        buffer.truncate(qsizetype(got));
        return buffer;
    }

    const TemporaryTree tree;
};

} // namespace

TEST_F(KRDataProviderTest, providerWithFile_isNull_withoutPathLengthSectorsOrFile)
{
    tree.makeFolder("folder");
    tree.makeSymbolicLink("link", "image");
    tree.makeSymbolicLink("folder link", "folder");
    const auto of = [this](const char *name, std::uint64_t length = 1, std::uint32_t sector = 2048) {
        return KRDataProvider::providerWithFile(tree.pathText(name), 0, length, sector, 0, 1, 0);
    };
    EXPECT_TRUE(of("image"));
    EXPECT_TRUE(of("link"));
    EXPECT_FALSE(of("image", 0));
    EXPECT_FALSE(of("image", 1, 0));
    EXPECT_FALSE(of("missing"));
    EXPECT_FALSE(of("folder"));
    EXPECT_FALSE(of("folder link"));
    EXPECT_FALSE(KRDataProvider::providerWithFile({}, 0, 1, 2048, 0, 1, 0));
    EXPECT_FALSE(KRDataProvider::providerWithFile(QStringLiteral(""), 0, 1, 2048, 0, 1, 0));
}

TEST_F(KRDataProviderTest, path_isThatOfTheFile_alsoWhenItWasRenamed)
{
    const auto made = provider(1, 2048, 0);
    EXPECT_EQ(made->path(), tree.pathText("image"));
    EXPECT_EQ(std::rename(tree.path("image").constData(), tree.path("other").constData()), 0);
    EXPECT_EQ(made->path(), tree.pathText("other"));
    tree.remove("other");
    EXPECT_TRUE(made->path().isNull());
}

TEST_F(KRDataProviderTest, track_hasTheNumbersOfItsModeAndSectors)
{
    EXPECT_EQ(numbers(0, 2352, 0), expected(2352, 0, 0, 0, 0, 2336));
    EXPECT_EQ(numbers(1, 2048, 0), expected(2048, 4, 16, 8, 0, everySize / 2048));
    EXPECT_EQ(numbers(2, 2336, 0), expected(2336, 4, 48, 9, 32, 2352));
    EXPECT_EQ(numbers(2, 2332, 0), expected(2332, 4, 33, 12, 32, everySize / 2332));
    EXPECT_EQ(numbers(2, 2352, 0), expected(2352, 4, 33, 12, 32, 2336));
    for (const quint32 sector : {2048u, 2324u, 2336u, 2352u, 1u, 65536u}) {
        EXPECT_EQ(numbers(21, sector, 0), expected(sector, 4, 32, 10, 32, everySize / sector));
        EXPECT_EQ(numbers(22, sector, 0), expected(sector, 4, 32, 12, 32, everySize / sector));
    }
}

TEST_F(KRDataProviderTest, options_changeTheSectorsAndTheLength)
{
    EXPECT_EQ(numbers(1, 2352, 2), expected(2048, 4, 16, 8, 0, 2336));
    EXPECT_EQ(numbers(1, 2048, 2), expected(2048, 4, 16, 8, 0, 2336));
    EXPECT_EQ(numbers(1, 2048, 1), expected(2048, 4, 16, 8, 0, 2352));
    EXPECT_EQ(numbers(1, 2352, 3), expected(2048, 4, 16, 8, 0, 2336)) << "raw sectors go first";
    EXPECT_EQ(numbers(2, 2352, 4), expected(2336, 4, 48, 9, 32, 2336));
    EXPECT_EQ(numbers(2, 2352, 256), expected(2332, 4, 33, 12, 32, 2336));
    EXPECT_EQ(numbers(2, 2332, 256), expected(2332, 4, 33, 12, 32, 2336));
    EXPECT_EQ(numbers(2, 2352, 260), expected(2336, 4, 48, 9, 32, 2336)) << "option 4 goes first";
    EXPECT_EQ(numbers(2, 2336, 4), expected(2336, 4, 48, 9, 32, 2336));
    EXPECT_EQ(numbers(2, 2336, 1), expected(2048, 4, 32, 10, 32, 2352));
    EXPECT_EQ(numbers(2, 2352, 5), expected(2048, 4, 32, 10, 32, 2352)) << "first 2336 bytes, then form 1";
    EXPECT_EQ(numbers(21, 2352, 2), expected(2048, 4, 32, 10, 32, 2336));
    EXPECT_EQ(numbers(21, 2048, 2), expected(2048, 4, 32, 10, 32, 2336));
    EXPECT_EQ(numbers(21, 2048, 1), expected(2048, 4, 32, 10, 32, 2352));
    EXPECT_EQ(numbers(21, 2048, 3), expected(2048, 4, 32, 10, 32, 2336));
    EXPECT_EQ(numbers(22, 2324, 0xFFFF), expected(2324, 4, 32, 12, 32, everySize / 2324)) << "no option counts";
    EXPECT_EQ(numbers(0, 2352, 0xFF0F & ~16u), expected(2352, 0, 0, 0, 0, 2336));
}

TEST_F(KRDataProviderTest, track_isNull_forEveryOtherPair)
{
    for (const std::uint32_t sector : {1u, 2048u, 2324u, 2332u, 2336u, 2448u, 0xFFFFFFFFu})
        EXPECT_TRUE(numbers(0, sector, 0).isEmpty()) << sector;
    for (const std::uint32_t sector : {1u, 2324u, 2332u, 2336u, 2352u, 2448u})
        EXPECT_TRUE(numbers(1, sector, 0).isEmpty()) << sector;
    EXPECT_TRUE(numbers(1, 2352, ~2u & 0xFFFF).isEmpty()) << "only its own option makes sectors of it";
    for (const std::uint32_t sector : {1u, 2048u, 2324u, 2448u})
        EXPECT_TRUE(numbers(2, sector, 0xFFFF).isEmpty()) << sector;
    for (const int mode : {-1, 4, 20, 23, 32767, -32768}) {
        for (const std::uint32_t sector : {2048u, 2324u, 2332u, 2336u, 2352u})
            EXPECT_TRUE(numbers(std::int16_t(mode), sector, 0).isEmpty()) << mode;
    }
}

TEST_F(KRDataProviderTest, track_isTheSame_whenItIsAskedForAgain)
{
    for (const std::uint32_t options : {0u, 1u, 2u, 4u, 5u, 256u, 260u}) {
        for (const std::uint32_t sector : {2048u, 2332u, 2336u, 2352u}) {
            for (const std::int16_t mode : {std::int16_t(1), std::int16_t(2), std::int16_t(21)}) {
                if (sector == 2332 && options == 260)
                    continue; // these options contradict sectors that have lost their headers already
                const auto made = provider(mode, sector, options, 235200, 23520);
                const std::shared_ptr<DRTrack> first = made->dataProducer();
                const std::shared_ptr<DRTrack> second = made->track();
                ASSERT_EQ(first == nullptr, second == nullptr);
                if (first) {
                    EXPECT_EQ(first->properties(), second->properties()) << mode << ' ' << sector << ' ' << options;
                    EXPECT_EQ(first->producer(), made);
                }
            }
        }
    }
}

TEST_F(KRDataProviderTest, length_isCountedIn64Bits)
{
    const auto length = [this](std::uint64_t bytes) {
        return provider(0, 2352, 0, bytes)->dataProducer()->properties().value(DRTrackLengthKey).toULongLong();
    };
    EXPECT_EQ(length(235200), 100u);
    EXPECT_EQ(length(235199), 99u);
    EXPECT_EQ(length(1), 0u);
    EXPECT_EQ(length(std::uint64_t(2352) << 32), std::uint64_t(1) << 32);
    EXPECT_EQ(length(std::numeric_limits<std::uint64_t>::max()), std::numeric_limits<std::uint64_t>::max() / 2352);
}

TEST_F(KRDataProviderTest, pregap_isCountedInTheSectorsOfTheFile)
{
    const auto pregap = [this](std::int16_t mode, std::uint32_t sector, std::uint32_t options, std::uint64_t length) {
        return provider(mode, sector, options, 235200, length)->dataProducer()->properties().value(DRPreGapLengthKey);
    };
    EXPECT_EQ(pregap(0, 2352, 0, 150 * rawSize), 150u);
    EXPECT_EQ(pregap(1, 2352, 2, 150 * rawSize), 150u) << "although the blocks have 2048 bytes";
    EXPECT_EQ(pregap(2, 2336, 1, 7 * formSize), 7u);
    EXPECT_EQ(pregap(1, 2048, 0, 2047), 0u) << "stated, as soon as there are bytes";
    EXPECT_EQ(pregap(0, 2352, 0, 0), 0u) << "no silence in front of audio";
    EXPECT_FALSE(pregap(0, 2352, 16, 0).isValid());
    EXPECT_EQ(pregap(0, 2352, 16, 2352), 1u);
    EXPECT_FALSE(pregap(1, 2048, 0, 0).isValid());
    EXPECT_FALSE(pregap(2, 2352, 0, 0).isValid());
    EXPECT_EQ(pregap(1, 2048, 0, std::uint64_t(2048) << 40), quint64(1) << 40);
}

TEST_F(KRDataProviderTest, dvdBurnable_onceATrackOfMode1WasMade)
{
    const auto made = provider(1, 2352, 2);
    EXPECT_FALSE(made->dvdBurnable());
    EXPECT_TRUE(made->dataProducer());
    EXPECT_TRUE(made->dvdBurnable());
    const auto refused = provider(1, 2352, 0);
    EXPECT_FALSE(refused->dataProducer());
    EXPECT_FALSE(refused->dvdBurnable());
    const auto form1 = provider(21, 2048, 0);
    EXPECT_TRUE(form1->dataProducer());
    EXPECT_FALSE(form1->dvdBurnable());
}

TEST_F(KRDataProviderTest, prepareTrack_forADvd_needsPlainSectors_andRewritesTheNumbers)
{
    const QVariantMap dvd = {{DRDeviceMediaClassKey, DRDeviceMediaClassDVD}};
    const auto raw = provider(1, 2352, 2);
    EXPECT_FALSE(raw->prepareTrack(nullptr, nullptr, dvd)) << "no track was made of it yet";
    const std::shared_ptr<DRTrack> track = raw->dataProducer();
    EXPECT_TRUE(raw->prepareTrack(track.get(), nullptr, {}));
    EXPECT_EQ(track->properties().value(DRTrackModeKey), 4);
    EXPECT_TRUE(raw->prepareTrack(track.get(), nullptr, dvd));
    EXPECT_EQ(track->properties(), expected(2048, 5, 16, 8, 0, 2336));
    const auto audio = provider(0, 2352, 0);
    const std::shared_ptr<DRTrack> audioTrack = audio->dataProducer();
    EXPECT_FALSE(audio->prepareTrack(audioTrack.get(), nullptr, dvd));
    EXPECT_EQ(audioTrack->properties().value(DRTrackModeKey), 0);
    EXPECT_EQ(produced(*audio, 10), QByteArray());
}

TEST_F(KRDataProviderTest, prepareTrack_fails_withoutTheFile)
{
    const auto made = provider(1, 2048, 0);
    tree.remove("image");
    EXPECT_FALSE(made->prepareTrack(nullptr, nullptr, {}));
    EXPECT_EQ(produced(*made, 10), QByteArray());
}

TEST_F(KRDataProviderTest, data_isCut_asModeAndOptionsSay)
{
    struct Cut {
        std::int16_t mode;
        std::uint32_t sector;
        std::uint32_t options;
        TrackKind kind;
        qsizetype storedOffset; ///< in the whole sector
        qsizetype storedSize; ///< in the file
        qsizetype skipped; ///< in the file's sector
        qsizetype kept;
    };
    const Cut cuts[] = {
        {1, 2352, 2, TrackKind::Mode1, 0, 2352, 16, 2048},
        {1, 2048, 2, TrackKind::Mode1, 0, 2352, 16, 2048},
        {1, 2048, 0, TrackKind::Mode1, 16, 2048, 0, 2048},
        {2, 2352, 4, TrackKind::Mode2Formless, 0, 2352, 16, 2336},
        {2, 2352, 260, TrackKind::Mode2Formless, 0, 2352, 16, 2336},
        {2, 2352, 256, TrackKind::Mode2Form2, 0, 2352, 16, 2332},
        {2, 2332, 0, TrackKind::Mode2Form2, 16, 2332, 0, 2332},
        {2, 2336, 0, TrackKind::Mode2Formless, 16, 2336, 0, 2336},
        {2, 2352, 0, TrackKind::Mode2Form1, 0, 2352, 0, 2352},
        {21, 2352, 2, TrackKind::Mode2Form1, 0, 2352, 24, 2048},
        {21, 2048, 2, TrackKind::Mode2Form1, 0, 2352, 24, 2048},
        {21, 2048, 0, TrackKind::Mode2Form1, 24, 2048, 0, 2048},
        {21, 2048, 1, TrackKind::Mode2Form1, 16, 2336, 24, 2048},
        {21, 2048, 3, TrackKind::Mode2Form1, 16, 2336, 24, 2048},
        {2, 2336, 1, TrackKind::Mode2Form1, 16, 2336, 24, 2048},
        {1, 2048, 1, TrackKind::Mode1, 16, 2048, 0, 2048},
        {22, 2324, 0, TrackKind::Mode2Form2, 24, 2324, 0, 2324},
        {22, 2324, 1 | 2 | 4 | 256, TrackKind::Mode2Form2, 24, 2324, 0, 2324},
        {0, 2352, 1 | 2 | 4 | 256, TrackKind::Audio, 0, 2352, 0, 2352},
        {0, 2352, 0, TrackKind::Audio, 0, 2352, 0, 2352},
    };
    for (const Cut &cut : cuts) {
        SCOPED_TRACE(testing::Message() << cut.mode << ' ' << cut.sector << ' ' << cut.options);
        const QByteArray userData = userDataOf(cut.kind, 110);
        const QByteArray raw = rawSectorsAround(cut.kind, userData, BlockAddress(0));
        const QByteArray stored = partsOf(raw, 2352, cut.storedOffset, cut.storedSize);
        tree.makeFile("image", "somewhere" + stored);
        const std::uint64_t pregap = 2 * std::uint64_t(cut.storedSize);
        const auto made = provider(cut.mode, cut.sector, cut.options, std::uint64_t(stored.size()) - pregap, pregap, 9);
        const std::shared_ptr<DRTrack> track = made->dataProducer();
        ASSERT_TRUE(track);
        ASSERT_TRUE(made->prepareTrack(track.get(), nullptr, {}));
        const QByteArray kept = partsOf(stored.mid(2 * cut.storedSize), cut.storedSize, cut.skipped, cut.kept);
        EXPECT_EQ(produced(*made, cut.kept), kept.first(cut.kept));
        EXPECT_EQ(produced(*made, 107 * cut.kept), kept.mid(cut.kept));
        const bool isCut = cut.kept != cut.storedSize;
        EXPECT_EQ(produced(*made, 100), isCut ? QByteArray(100, '\0') : QByteArray()) << "nothing fills up plain data";
        made->cleanupTrackAfterBurn(track.get());
        // Sectors of 2336 bytes in which 24 are skipped: the user data begins 8 bytes in, and so it is cut.
        if (cut.storedSize != 2336 || cut.skipped == 0) {
            const qsizetype ownSize = userDataSize(cut.kind);
            if (cut.kept == ownSize) {
                EXPECT_EQ(kept, userData.mid(2 * ownSize));
            }
        }
    }
}

TEST_F(KRDataProviderTest, data_ofCutSectors_isZeros_whereTheFileOrTheBufferEnds)
{
    const QByteArray userData = userDataOf(TrackKind::Mode1, 3);
    const QByteArray raw = rawSectorsAround(TrackKind::Mode1, userData, BlockAddress(0));
    tree.makeFile("image", raw.chopped(288 + 48));
    const auto made = provider(1, 2352, 2);
    ASSERT_TRUE(made->prepareTrack(nullptr, nullptr, {}));
    EXPECT_EQ(produced(*made, 2048 + 5), userData.first(2048) + QByteArray(5, '\0'));
    EXPECT_EQ(produced(*made, 3 * plainSize), userData.mid(2048).chopped(48) + QByteArray(2048 + 48, '\0'));
    EXPECT_EQ(produced(*made, 100), QByteArray(100, '\0'));
}

TEST_F(KRDataProviderTest, option8_readsFromTheStart_asIfThereWereNoPregap)
{
    tree.makeFile("image", "....pregapdata");
    const auto in = provider(1, 2048, 0, 10, 6, 4);
    ASSERT_TRUE(in->prepareTrack(nullptr, nullptr, {}));
    EXPECT_EQ(produced(*in, 100), "data");
    const auto out = provider(1, 2048, 8, 10, 6, 4);
    EXPECT_TRUE(out->dataProducer()->properties().contains(DRPreGapLengthKey));
    ASSERT_TRUE(out->prepareTrack(nullptr, nullptr, {}));
    EXPECT_EQ(produced(*out, 100), "pregapdata");
    EXPECT_FALSE(out->dataProducer()->properties().contains(DRPreGapLengthKey)) << "it is cleared";
}

TEST_F(KRDataProviderTest, data_isNothing_whereTheTrackLeadsOutOfTheFile)
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    for (const auto &[start, pregap] :
         {std::pair<std::uint64_t, std::uint64_t>{5000, 0}, {0, 5000}, {most, 0}, {most, most}, {2, most}, {most, 2}}) {
        const auto plain = provider(1, 2048, 0, 10, pregap, start);
        ASSERT_TRUE(plain->prepareTrack(nullptr, nullptr, {}));
        EXPECT_EQ(produced(*plain, 10), QByteArray()) << start;
        const auto raw = provider(1, 2048, 2, 10, pregap, start);
        ASSERT_TRUE(raw->prepareTrack(nullptr, nullptr, {}));
        EXPECT_EQ(produced(*raw, 2048), QByteArray(2048, '\0')) << start;
    }
}

TEST_F(KRDataProviderTest, aLaterBurn_startsAfresh)
{
    tree.makeFile("image", "data");
    const auto made = provider(1, 2048, 0);
    for (int burn = 0; burn < 2; ++burn) {
        ASSERT_TRUE(made->prepareTrack(nullptr, nullptr, {}));
        EXPECT_EQ(produced(*made, 10), "data");
        made->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(produced(*made, 10), QByteArray());
    }
}
