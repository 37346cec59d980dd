#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/discrecording/objects/DRDeviceMedia.h"
#include "tests/production/RawSectors.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/PathHelpers.h>

#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <utility>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr qsizetype plainSize = 2048;
constexpr qsizetype rawSize = 2352;

/// A row of the table of modes.
struct Row {
    std::int32_t mode;
    std::uint32_t sectorSize;
    std::uint32_t options;
    std::uint32_t blockSize;
    int trackMode;
    int dataForm;
    int blockType;
    int sessionFormat;
};
const Row rows[] = {
    {0, 2048, 0, 2048, 4, 16, 8, 0},   {0, 2352, 0, 2352, 4, 17, 8, 0},   {0, 2448, 32, 2048, 4, 16, 8, 0},
    {1, 2336, 0, 2336, 4, 48, 9, 32},  {1, 2332, 0, 2332, 4, 33, 12, 32}, {1, 2352, 0, 2352, 4, 33, 12, 32},
    {2, 2048, 0, 2048, 4, 32, 10, 32}, {3, 2324, 0, 2324, 4, 32, 12, 32}, {4, 2352, 0, 2352, 0, 0, 0, 0},
    {6, 2336, 0, 2336, 4, 32, 13, 16}, {6, 2352, 0, 2352, 4, 33, 12, 16},
};

KRDRDataProductionInfo infoOf(std::int32_t mode, std::uint32_t sectorSize, std::uint32_t options = 0)
{
    KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
    info.trackMode = mode;
    info.sectorSize = sectorSize;
    info.options = options;
    info.framesCount = 10;
    return info;
}

std::shared_ptr<DRTrack> trackOf(const KRDRDataProductionInfo &info)
{
    return KRDRDataProducer::initWithInfo(info, FSRef())->track();
}

/// A producer between preparation and cleanup.
class Burn
{
public:
    Burn(const KRDRDataProductionInfo &info, const QString &path)
        : m_producer(KRDRDataProducer::initWithInfo(info, path))
    {
        EXPECT_TRUE(m_producer->prepareTrack(nullptr, nullptr, {}));
    }
    ~Burn() { m_producer->cleanupTrackAfterBurn(nullptr); }
    Burn(const Burn &) = delete;
    Burn &operator=(const Burn &) = delete;

    [[nodiscard]] QByteArray data(qsizetype length) { return produced(&DRTrackProducer::produceDataForTrack, length); }
    [[nodiscard]] QByteArray pregap(qsizetype length)
    {
        return produced(&DRTrackProducer::producePreGapForTrack, length);
    }

private:
    template <typename Operation>
    QByteArray produced(Operation operation, qsizetype length)
    {
        QByteArray buffer(length, 'u');
        DRTrackProducer &producer = *m_producer;
        const std::uint32_t got =
            (producer.*operation)(nullptr, buffer.data(), std::uint32_t(length), 12345, 1, nullptr);
        EXPECT_LE(got, std::uint32_t(length));
        buffer.truncate(qsizetype(got));
        return buffer;
    }

    std::shared_ptr<KRDRDataProducer> m_producer;
};

class ByteSink final : public DRDeviceConsumer
{
public:
    OSStatus writeBlocks(const void *buffer, std::uint32_t blockCount, std::uint32_t blockSize,
                         std::uint32_t /*atAddress*/) override
    {
        bytes.append(static_cast<const char *>(buffer), qsizetype(blockCount) * blockSize);
        return noErr;
    }
    QByteArray bytes;
};

} // namespace

TEST(KRDRDataProducer, blankInfo_isZeroThroughout_andHasNoTrack)
{
    const KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
    EXPECT_EQ(info, KRDRDataProductionInfo());
    EXPECT_EQ(info.trackMode, 0);
    EXPECT_EQ(info.sectorSize, 0u);
    EXPECT_FALSE(trackOf(info));
}

TEST(KRDRDataProducer, track_hasTheNumbersOfItsModeAndSectors)
{
    for (const Row &row : rows) {
        const std::shared_ptr<DRTrack> track = trackOf(infoOf(row.mode, row.sectorSize, row.options));
        ASSERT_TRUE(track) << row.mode << ' ' << row.sectorSize;
        const QVariantMap expected = {
            {DRBlockSizeKey, row.blockSize}, {DRTrackLengthKey, quint64(10)}, {DRTrackModeKey, row.trackMode},
            {DRDataFormKey, row.dataForm},   {DRBlockTypeKey, row.blockType}, {DRSessionFormatKey, row.sessionFormat},
        };
        EXPECT_EQ(track->properties(), expected) << row.mode << ' ' << row.sectorSize;
    }
}

TEST(KRDRDataProducer, track_isNull_forEveryOtherPair)
{
    std::set<std::pair<std::int32_t, std::uint32_t>> known;
    for (const Row &row : rows)
        known.insert({row.mode, row.sectorSize});
    for (const std::int32_t mode : {-1, 0, 1, 2, 3, 4, 6, 7, 8, 1000}) {
        for (const std::uint32_t size : {0u, 1u, 2048u, 2324u, 2332u, 2336u, 2352u, 2448u, 0xFFFFFFFFu}) {
            if (!known.count({mode, size})) {
                EXPECT_FALSE(trackOf(infoOf(mode, size))) << mode << ' ' << size;
                EXPECT_FALSE(trackOf(infoOf(mode, size, 32))) << mode << ' ' << size;
            }
        }
    }
}

TEST(KRDRDataProducer, track_ofSectorsWithSubchannel_needsItsOption)
{
    EXPECT_FALSE(trackOf(infoOf(0, 2448)));
    EXPECT_FALSE(trackOf(infoOf(0, 2448, ~32u)));
    const std::shared_ptr<DRTrack> track = trackOf(infoOf(0, 2448, 32));
    ASSERT_TRUE(track);
    EXPECT_EQ(track->properties().value(DRBlockSizeKey), 2048u);
}

TEST(KRDRDataProducer, track_isNewEachTime_andHasTheProducer)
{
    const auto producer = KRDRDataProducer::initWithInfo(infoOf(0, 2048), FSRef());
    const std::shared_ptr<DRTrack> track = producer->track();
    EXPECT_EQ(track->producer(), producer);
    EXPECT_NE(producer->track(), track);
}

TEST(KRDRDataProducer, track_countsThePostgap_in64Bits)
{
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.postgapFramesCount = 2;
    EXPECT_EQ(trackOf(info)->properties().value(DRTrackLengthKey), quint64(12));
    info.framesCount = 0xFFFFFFFF;
    info.postgapFramesCount = 0xFFFFFFFF;
    EXPECT_EQ(trackOf(info)->properties().value(DRTrackLengthKey), quint64(0x1FFFFFFFE));
}

TEST(KRDRDataProducer, track_saysThePregapAndIndexPoints_thatTheRecordHas)
{
    KRDRDataProductionInfo info = infoOf(4, 2352);
    info.pregapFramesCount = 150;
    info.indexPointFrames = {75, 0, 300};
    EXPECT_FALSE(trackOf(info)->properties().contains(DRPreGapLengthKey));
    EXPECT_FALSE(trackOf(info)->properties().contains(DRIndexPointsKey));
    info.hasPregapInfo = 1;
    info.numberOfIndexPoints = 3;
    EXPECT_EQ(trackOf(info)->properties().value(DRPreGapLengthKey), 150u);
    EXPECT_EQ(trackOf(info)->properties().value(DRIndexPointsKey), QVariant(QVariantList{75u, 0u, 300u}));
    info.pregapFramesCount = 0;
    EXPECT_EQ(trackOf(info)->properties().value(DRPreGapLengthKey), 0u) << "stated, although there is nothing";
    info.numberOfIndexPoints = 98;
    EXPECT_EQ(trackOf(info)->properties().value(DRIndexPointsKey).toList().size(), 98);
    info.numberOfIndexPoints = 99;
    EXPECT_FALSE(trackOf(info)) << "the record holds 98";
    info.numberOfIndexPoints = 0xFFFFFFFF;
    EXPECT_FALSE(trackOf(info));
}

TEST(KRDRDataProducer, options_sayTheRightToCopy_theLaterBitWins)
{
    const auto state = [](std::uint32_t options) {
        return trackOf(infoOf(0, 2048, options))->properties().value(DRSerialCopyManagementStateKey);
    };
    EXPECT_FALSE(state(0).isValid());
    EXPECT_FALSE(state(2).isValid()) << "the bit has no meaning";
    EXPECT_EQ(state(1), DRSCMSCopyrightFree);
    EXPECT_EQ(state(4), DRSCMSCopyrightProtectedOriginal);
    EXPECT_EQ(state(5), DRSCMSCopyrightProtectedOriginal);
}

TEST(KRDRDataProducer, options_ofAudio_areForAudioAlone)
{
    const QVariantMap plain = trackOf(infoOf(4, 2352))->properties();
    EXPECT_FALSE(plain.contains(DRAudioPreEmphasisKey) || plain.contains(DRAudioFourChannelKey));
    EXPECT_EQ(trackOf(infoOf(4, 2352, 8))->properties().value(DRAudioPreEmphasisKey), true);
    EXPECT_FALSE(trackOf(infoOf(4, 2352, 8))->properties().contains(DRAudioFourChannelKey));
    EXPECT_EQ(trackOf(infoOf(4, 2352, 16))->properties().value(DRAudioFourChannelKey), true);
    EXPECT_FALSE(trackOf(infoOf(4, 2352, 16))->properties().contains(DRAudioPreEmphasisKey));
    const QVariantMap both = trackOf(infoOf(4, 2352, 8 | 16))->properties();
    EXPECT_TRUE(both.value(DRAudioPreEmphasisKey).toBool() && both.value(DRAudioFourChannelKey).toBool());
    const QVariantMap data = trackOf(infoOf(0, 2048, 24))->properties();
    EXPECT_FALSE(data.contains(DRAudioPreEmphasisKey) || data.contains(DRAudioFourChannelKey));
}

TEST(KRDRDataProducer, data_ofEveryRow_isThatOfTheFile)
{
    struct Sectors {
        Row row;
        qsizetype offset; ///< in the whole sector
        TrackKind kind;
        bool isUserData; ///< what is produced
    };
    const Sectors all[] = {
        {rows[0], 16, TrackKind::Mode1, true},         {rows[1], 0, TrackKind::Mode1, false},
        {rows[3], 16, TrackKind::Mode2Formless, true}, {rows[4], 16, TrackKind::Mode2Form2, false},
        {rows[5], 0, TrackKind::Mode2Form1, false},    {rows[6], 24, TrackKind::Mode2Form1, true},
        {rows[7], 24, TrackKind::Mode2Form2, true},    {rows[8], 0, TrackKind::Audio, true},
        {rows[9], 16, TrackKind::Mode2Form2, false},   {rows[10], 0, TrackKind::Mode2Form1, false},
    };
    const TemporaryTree tree;
    for (const Sectors &sectors : all) {
        SCOPED_TRACE(testing::Message() << sectors.row.mode << ' ' << sectors.row.sectorSize);
        const qsizetype size = sectors.row.sectorSize;
        const QByteArray userData = userDataOf(sectors.kind, 14);
        const QByteArray raw = rawSectorsAround(sectors.kind, userData, BlockAddress(0));
        const QByteArray stored = partsOf(raw, 2352, sectors.offset, size);
        tree.makeFile("image", QByteArray(777, 'h') + stored);
        KRDRDataProductionInfo info = infoOf(sectors.row.mode, sectors.row.sectorSize);
        info.offsetInFile = 777;
        info.frameStart = 3;
        info.framesCount = 11;
        info.hasPregapInfo = 1;
        info.producePregapFromFile = 1;
        info.pregapFrameStart = 1;
        info.pregapFramesCount = 2;
        Burn burn(info, tree.pathText("image"));
        EXPECT_EQ(burn.pregap(2 * size), stored.mid(size, 2 * size));
        EXPECT_EQ(burn.data(5 * size), stored.mid(3 * size, 5 * size));
        EXPECT_EQ(burn.data(6 * size), stored.mid(8 * size));
        EXPECT_EQ(burn.data(size), QByteArray(size, '\0'));
        if (sectors.isUserData) {
            EXPECT_EQ(stored, userData);
        }
    }
}

TEST(KRDRDataProducer, data_ofSectorsWithSubchannel_isTheirUserData)
{
    const TemporaryTree tree;
    const QByteArray userData = userDataOf(TrackKind::Mode1, 130);
    const QByteArray stored = withSubchannels(rawSectorsAround(TrackKind::Mode1, userData, BlockAddress(0)));
    tree.makeFile("image", "some" + stored);
    KRDRDataProductionInfo info = infoOf(0, 2448, 32);
    info.offsetInFile = 4;
    info.frameStart = 10;
    info.framesCount = 20;
    info.hasPregapInfo = 1;
    info.producePregapFromFile = 1;
    info.pregapFrameStart = 7;
    info.pregapFramesCount = 3;
    Burn burn(info, tree.pathText("image"));
    EXPECT_EQ(burn.pregap(3 * plainSize), userData.mid(7 * plainSize, 3 * plainSize));
    EXPECT_EQ(burn.data(1 * plainSize), userData.mid(10 * plainSize, 2048));
    EXPECT_EQ(burn.data(100 * plainSize), userData.mid(11 * plainSize, 100 * plainSize))
        << "nothing is counted: it goes on behind the data";
    EXPECT_EQ(burn.data(3 * plainSize + 100), userData.mid(111 * plainSize, 3 * plainSize) + QByteArray(100, '\0'))
        << "half a sector is zeros";
    EXPECT_EQ(burn.data(2048), userData.mid(114 * plainSize, 2048)) << "and takes nothing from the file";
    EXPECT_EQ(burn.data(20 * plainSize), userData.mid(115 * plainSize) + QByteArray(5 * plainSize, '\0'))
        << "at the file's end";
    EXPECT_EQ(burn.data(2048), QByteArray(2048, '\0'));
}

TEST(KRDRDataProducer, data_ofSectorsWithSubchannel_isFilledUp_whereTheFileEndsInASector)
{
    const TemporaryTree tree;
    const QByteArray userData = userDataOf(TrackKind::Mode1, 3);
    const QByteArray stored = withSubchannels(rawSectorsAround(TrackKind::Mode1, userData, BlockAddress(0)));
    for (const qsizetype missing : {1, 384, 385, 2431, 2432, 2433, 2448}) {
        tree.makeFile("image", stored.chopped(missing));
        Burn burn(infoOf(0, 2448, 32), tree.pathText("image"));
        const qsizetype lost = std::min<qsizetype>(std::max<qsizetype>(missing - 384, 0), 2048);
        EXPECT_EQ(burn.data(4 * plainSize), userData.chopped(lost) + QByteArray(lost + 2048, '\0')) << missing;
    }
}

TEST(KRDRDataProducer, data_isCutFromSectorsWithSubchannel_wheneverTheOptionSaysSo)
{
    const TemporaryTree tree;
    const QByteArray userData = userDataOf(TrackKind::Mode1, 6);
    const QByteArray stored = withSubchannels(rawSectorsAround(TrackKind::Mode1, userData, BlockAddress(0)));
    tree.makeFile("image", stored);
    // Places are counted in the record's own sectors, what is read is cut like sectors of 2448 bytes all the same.
    KRDRDataProductionInfo info = infoOf(0, 1224, 32);
    info.frameStart = 4;
    EXPECT_EQ(Burn(info, tree.pathText("image")).data(2 * plainSize), userData.mid(2 * plainSize, 2 * plainSize));
}

TEST(KRDRDataProducer, postgap_isZeros_whateverTheFileHoldsThere)
{
    const TemporaryTree tree;
    const QByteArray stored = userDataOf(TrackKind::Mode1, 13);
    tree.makeFile("image", stored);
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.postgapFramesCount = 2;
    Burn burn(info, tree.pathText("image"));
    EXPECT_EQ(burn.data(10 * plainSize), stored.first(10 * plainSize));
    for (int block = 0; block < 5; ++block)
        EXPECT_EQ(burn.data(2048), QByteArray(2048, '\0'));
    Burn other(info, tree.pathText("image"));
    EXPECT_EQ(other.data(9 * plainSize), stored.first(9 * plainSize));
    EXPECT_EQ(other.data(3 * plainSize), stored.mid(9 * plainSize, 3 * plainSize))
        << "a call within the data is read whole";
    EXPECT_EQ(other.data(100), QByteArray(100, '\0'));
}

TEST(KRDRDataProducer, pregap_isZeros_unlessItIsInTheFile)
{
    const TemporaryTree tree;
    tree.makeFile("image", userDataOf(TrackKind::Mode1, 13));
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.pregapFramesCount = 2;
    for (const auto &[has, inFile] : {std::pair<char, char>{0, 0}, {0, 1}, {1, 0}}) {
        info.hasPregapInfo = has;
        info.producePregapFromFile = inFile;
        EXPECT_EQ(Burn(info, tree.pathText("image")).pregap(4096), QByteArray(4096, '\0'));
    }
}

TEST(KRDRDataProducer, data_endsWithTheFile)
{
    const TemporaryTree tree;
    tree.makeFile("image", userDataOf(TrackKind::Mode1, 3));
    Burn burn(infoOf(0, 2048), tree.pathText("image"));
    EXPECT_EQ(burn.data(10 * plainSize), userDataOf(TrackKind::Mode1, 3));
    EXPECT_EQ(burn.data(2048), QByteArray());
}

TEST(KRDRDataProducer, data_isNothing_whereTheRecordLeadsOutOfTheFile)
{
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    const TemporaryTree tree;
    tree.makeFile("image", userDataOf(TrackKind::Mode1, 3));
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.hasPregapInfo = 1;
    info.producePregapFromFile = 1;
    for (const std::uint32_t size : {2048u, 0xFFFFFFFFu}) {
        info.sectorSize = size;
        for (const std::int64_t offset : {std::int64_t(-1), least, most, std::int64_t(6144), most - 6000}) {
            for (const std::uint32_t frame : {0u, 1u, 0xFFFFFFFFu}) {
                if (offset == -1 && frame == 1 && size == 2048)
                    continue; // that is byte 2047
                info.offsetInFile = offset;
                info.frameStart = frame;
                info.pregapFrameStart = frame;
                Burn burn(info, tree.pathText("image"));
                EXPECT_EQ(burn.pregap(4096), QByteArray()) << offset << ' ' << frame;
                EXPECT_EQ(burn.data(4096), QByteArray()) << offset << ' ' << frame;
            }
        }
    }
    info.sectorSize = 2048;
    info.offsetInFile = -2048;
    info.frameStart = 1;
    EXPECT_EQ(Burn(info, tree.pathText("image")).data(6144), userDataOf(TrackKind::Mode1, 3))
        << "frame 0 may lie in front of the file";
}

TEST(KRDRDataProducer, data_isNothing_withoutAPreparation_orWithoutSectors)
{
    const TemporaryTree tree;
    tree.makeFile("image", "bytes");
    char byte = 'u';
    const auto producer = KRDRDataProducer::initWithInfo(infoOf(0, 2048), tree.pathText("image"));
    EXPECT_EQ(producer->produceDataForTrack(nullptr, &byte, 1, 0, 0, nullptr), 0u);
    EXPECT_EQ(Burn(infoOf(0, 0), tree.pathText("image")).data(10), QByteArray());
    EXPECT_EQ(byte, 'u');
}

TEST(KRDRDataProducer, data_ofAnEmptyTrack_isZeros)
{
    const TemporaryTree tree;
    tree.makeFile("image", "bytes");
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.framesCount = 0;
    EXPECT_EQ(Burn(info, tree.pathText("image")).data(10), QByteArray(10, '\0'));
}

TEST(KRDRDataProducer, prepareTrack_fails_withoutTheFile)
{
    const TemporaryTree tree;
    const auto missing = KRDRDataProducer::initWithInfo(infoOf(0, 2048), tree.pathText("missing"));
    ASSERT_TRUE(missing->track()) << "the file is looked at later";
    EXPECT_FALSE(missing->prepareTrack(nullptr, nullptr, {}));
    EXPECT_FALSE(KRDRDataProducer::initWithInfo(infoOf(0, 2048), FSRef())->prepareTrack(nullptr, nullptr, {}));
    tree.makeFile("gone", "x");
    const auto gone = KRDRDataProducer::initWithInfo(infoOf(0, 2048), fsRef(tree.pathText("gone")));
    EXPECT_TRUE(gone->prepareTrack(nullptr, nullptr, {}));
    gone->cleanupTrackAfterBurn(nullptr);
    tree.remove("gone");
    EXPECT_FALSE(gone->prepareTrack(nullptr, nullptr, {}));
    tree.makeFile("secret", "x");
    tree.setMode("secret", 0);
    const WithoutRootRights rights;
    EXPECT_FALSE(
        KRDRDataProducer::initWithInfo(infoOf(0, 2048), tree.pathText("secret"))->prepareTrack(nullptr, nullptr, {}));
}

TEST(KRDRDataProducer, prepareTrack_forADvd_needsPlainSectors_andRewritesTheNumbers)
{
    const TemporaryTree tree;
    tree.makeFile("image", "x");
    const QVariantMap dvd = {{DRDeviceMediaClassKey, DRDeviceMediaClassDVD}};
    for (const Row &row : rows) {
        const auto producer =
            KRDRDataProducer::initWithInfo(infoOf(row.mode, row.sectorSize, row.options | 1), tree.pathText("image"));
        const std::shared_ptr<DRTrack> track = producer->track();
        const QVariantMap before = track->properties();
        EXPECT_TRUE(producer->prepareTrack(track.get(), nullptr, {{DRDeviceMediaClassKey, DRDeviceMediaClassCD}}));
        EXPECT_EQ(track->properties(), before);
        EXPECT_EQ(producer->prepareTrack(track.get(), nullptr, dvd), row.sectorSize == 2048) << row.sectorSize;
        EXPECT_EQ(producer->prepareTrack(nullptr, nullptr, dvd), row.sectorSize == 2048);
        QVariantMap expected = before;
        if (row.sectorSize == 2048)
            expected.insert({{DRTrackModeKey, 5}, {DRDataFormKey, 16}, {DRBlockTypeKey, 8}, {DRSessionFormatKey, 0}});
        EXPECT_EQ(track->properties(), expected);
    }
}

TEST(KRDRDataProducer, aLaterBurn_startsAfresh)
{
    const TemporaryTree tree;
    const QByteArray stored = userDataOf(TrackKind::Mode1, 5);
    tree.makeFile("image", stored);
    KRDRDataProductionInfo info = infoOf(0, 2048);
    info.framesCount = 2;
    info.hasPregapInfo = 1;
    info.producePregapFromFile = 1;
    info.pregapFrameStart = 3;
    const auto producer = KRDRDataProducer::initWithInfo(info, tree.pathText("image"));
    for (int burn = 0; burn < 2; ++burn) {
        ASSERT_TRUE(producer->prepareTrack(nullptr, nullptr, {}));
        QByteArray buffer(2 * plainSize, 'u');
        EXPECT_EQ(producer->producePreGapForTrack(nullptr, buffer.data(), 4096, 0, 0, nullptr), 4096u);
        EXPECT_EQ(buffer, stored.mid(3 * plainSize));
        EXPECT_EQ(producer->produceDataForTrack(nullptr, buffer.data(), 4096, 0, 0, nullptr), 4096u);
        EXPECT_EQ(buffer, stored.first(4096));
        EXPECT_EQ(producer->produceDataForTrack(nullptr, buffer.data(), 4096, 0, 0, nullptr), 4096u);
        EXPECT_EQ(buffer, QByteArray(4096, '\0'));
        producer->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(producer->produceDataForTrack(nullptr, buffer.data(), 4096, 0, 0, nullptr), 0u);
    }
}

TEST(KRDRDataProducer, aBurn_takesPregapDataAndPostgap)
{
    const TemporaryTree tree;
    const QByteArray stored = userDataOf(TrackKind::Audio, 60);
    tree.makeFile("image", "junk" + stored);
    KRDRDataProductionInfo info = infoOf(4, 2352);
    info.offsetInFile = 4;
    info.frameStart = 20;
    info.framesCount = 40;
    info.hasPregapInfo = 1;
    info.producePregapFromFile = 1;
    info.pregapFrameStart = 5;
    info.pregapFramesCount = 15;
    info.postgapFramesCount = 7;
    ByteSink sink;
    const auto burn = DRBurn::burnForDevice(DRCallbackDevice::initWithConsumer(&sink));
    burn->writeLayout(KRDRDataProducer::initWithInfo(info, tree.pathText("image"))->track());
    burn->waitUntilFinished();
    EXPECT_EQ(burn->status().value(DRStatusStateKey), DRStatusStateDone);
    EXPECT_EQ(sink.bytes, stored.mid(5 * rawSize) + QByteArray(7 * rawSize, '\0'));
}
