#include "platform/disctracks/vant/VANTReader.h"
#include "tests/production/RawSectors.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/KRCustomLayoutWriter.h>
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/KRDataProvider.h>

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <semaphore>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr qsizetype plainSize = 2048;
constexpr qsizetype rawSize = 2352;

/// Gives a byte over and over; notes what it is asked. The members may be set before it is used.
class ByteProducer : public DRTrackProducer
{
public:
    explicit ByteProducer(char byte)
        : m_byte(byte)
    {
    }

    bool prepareTrack(DRTrack *track, DRBurn *burn, const QVariantMap &media) override
    {
        calls << QStringLiteral("prepare");
        EXPECT_TRUE(!track && !burn && media.isEmpty());
        EXPECT_TRUE(isMainThread());
        return isReady;
    }
    std::uint32_t produceDataForTrack(DRTrack *track, char *buffer, std::uint32_t length, std::uint64_t address,
                                      std::uint32_t blockSize, std::uint32_t * /*flags*/) override
    {
        calls << QStringLiteral("%1 of %2").arg(length).arg(blockSize);
        EXPECT_TRUE(!track && address == 0);
        EXPECT_FALSE(isMainThread());
        if (whenAsked)
            whenAsked();
        if (silences > 0) {
            --silences;
            return 0;
        }
        const std::uint32_t given = std::min(length, most);
        std::fill_n(buffer, given, m_byte);
        return given + excess;
    }
    void cleanupTrackAfterBurn(DRTrack *track) override
    {
        EXPECT_FALSE(track);
        calls << QStringLiteral("cleanup");
    }

    QStringList calls;
    std::function<void()> whenAsked;
    bool isReady = true;
    int silences = 0; ///< how often nothing is given first
    std::uint32_t most = 0xFFFFFFFF;
    std::uint32_t excess = 0; ///< claimed beyond what is given

private:
    const char m_byte;
};

class PlainProducer final : public ByteProducer, public KRDataSizeOffering
{
public:
    PlainProducer(char byte, std::uint64_t size)
        : ByteProducer(byte)
        , m_size(size)
    {
    }
    [[nodiscard]] std::uint64_t dataSize() const override { return m_size; }

private:
    const std::uint64_t m_size;
};

class TrackProducer final : public ByteProducer,
                            public KRTrackOffering,
                            public std::enable_shared_from_this<TrackProducer>
{
public:
    TrackProducer(char byte, quint64 blocks, quint32 blockSize, int blockType)
        : ByteProducer(byte)
        , m_properties{{DRTrackLengthKey, blocks}, {DRBlockSizeKey, blockSize}, {DRBlockTypeKey, blockType}}
    {
    }
    TrackProducer(char byte, const QVariantMap &properties)
        : ByteProducer(byte)
        , m_properties(properties)
    {
    }
    [[nodiscard]] std::shared_ptr<DRTrack> track() override
    {
        ++tracksMade;
        if (!hasTrack)
            return nullptr;
        auto track = DRTrack::trackWithProducer(shared_from_this());
        track->setProperties(m_properties);
        return track;
    }

    bool hasTrack = true;
    int tracksMade = 0;

private:
    const QVariantMap m_properties;
};

QVariant element(const std::shared_ptr<DRTrackProducer> &producer)
{
    return QVariant::fromValue(producer);
}

class CustomLayoutWriter : public testing::Test
{
protected:
    CustomLayoutWriter()
    {
        tree.makeFile("disc.bin");
        const auto note = [this](const QString &what) {
            EXPECT_TRUE(isMainThread());
            heard << what;
        };
        delegate.KRCustomLayoutWriterPathForItem = [this, note](KRCustomLayoutWriter &, const auto &) {
            note(QStringLiteral("path"));
            return destination;
        };
        delegate.KRCustomLayoutWriterArrayOfCDTextBlocks = [this, note](KRCustomLayoutWriter &) {
            note(QStringLiteral("texts"));
            return texts;
        };
        delegate.KRCustomLayoutWriterProgress = [this](KRCustomLayoutWriter &, double value) {
            EXPECT_TRUE(isMainThread());
            progress << value;
        };
        delegate.KRCustomLayoutWriterDidEnd = [this, note](KRCustomLayoutWriter &) {
            note(QStringLiteral("end"));
            isOver = true;
        };
        delegate.KRCustomLayoutWriterDidFailWithError = [this, note](KRCustomLayoutWriter &, const NSError &error) {
            EXPECT_EQ(error, unkownError());
            note(QStringLiteral("failure"));
            isOver = true;
        };
        delegate.KRCustomLayoutWriterDidAbort = [this, note](KRCustomLayoutWriter &) {
            note(QStringLiteral("abort"));
            isOver = true;
        };
    }

    void make(const QVariant &layout)
    {
        writer = KRCustomLayoutWriter::initWithLayout(layout, &delegate);
        ASSERT_TRUE(writer);
    }
    void run()
    {
        isOver = false;
        writer->beginLayoutWriting();
        EXPECT_TRUE(runEventLoopUntil([this] { return isOver; }));
        drainEventLoop();
    }
    void write(const QVariant &layout)
    {
        make(layout);
        run();
    }
    void expectFailure(const QVariant &layout)
    {
        heard.clear();
        write(layout);
        EXPECT_EQ(heard.count(QStringLiteral("failure")), 1);
        EXPECT_EQ(heard.last(), QStringLiteral("failure"));
    }

    const TemporaryTree tree;
    QString destination = tree.pathText("disc.bin");
    QList<QByteArray> texts;
    KRCustomLayoutWriterDelegate delegate;
    std::shared_ptr<KRCustomLayoutWriter> writer;
    QStringList heard;
    QList<double> progress;
    bool isOver = false;
};

} // namespace

TEST_F(CustomLayoutWriter, initWithLayout_isNull_withoutLayoutOrDelegate)
{
    EXPECT_FALSE(KRCustomLayoutWriter::initWithLayout({}, &delegate));
    EXPECT_FALSE(KRCustomLayoutWriter::initWithLayout(QVariantList(), nullptr));
    EXPECT_TRUE(KRCustomLayoutWriter::initWithLayout(QVariantList(), &delegate));
}

TEST_F(CustomLayoutWriter, aProducerWithoutATrack_isWrittenByItsSize_withoutACueSheet)
{
    const auto producer = std::make_shared<PlainProducer>('x', 1'000'000);
    tree.makeFile("disc.bin", "before ");
    write(element(producer));
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path texts end"));
    EXPECT_TRUE(tree.contents("disc.bin") == "before " + QByteArray(1'000'000, 'x')) << "at the file's end";
    EXPECT_EQ(producer->calls.join(u';'), QStringLiteral("prepare;823200 of 0;176800 of 0;cleanup"));
    EXPECT_TRUE(writer->cueSheet().isNull());
    EXPECT_TRUE(writer->VANTData().isNull());
}

TEST_F(CustomLayoutWriter, tracks_followEachOther_inFileAndCueSheet)
{
    const auto one = std::make_shared<TrackProducer>('1', 100, 2352, 0);
    const auto two = std::make_shared<TrackProducer>('2', 200, 2352, 0);
    const auto three = std::make_shared<TrackProducer>('3', 300, 2352, 0);
    write(QVariantList{element(one), QVariantList{element(two), element(three)}});
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path path path texts end"));
    EXPECT_TRUE(tree.contents("disc.bin")
                == QByteArray(235'200, '1') + QByteArray(470'400, '2') + QByteArray(705'600, '3'));
    EXPECT_EQ(writer->cueSheet(),
              QStringLiteral("FILE \"disc.bin\" BINARY\n"
                             "TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                             "TRACK 02 AUDIO\n    INDEX 01 00:01:25\n"
                             "TRACK 03 AUDIO\n    INDEX 01 00:04:00\n"));
    EXPECT_EQ(one->tracksMade, 2) << "for the size, and when its turn came";
    EXPECT_EQ(three->calls.join(u';'), QStringLiteral("prepare;705600 of 2352;cleanup"));
}

TEST_F(CustomLayoutWriter, cueSheet_saysTheKindByTheBlockType_andNamesTheFirstFileOnly)
{
    QVariantList layout;
    for (const int blockType : {8, 9, 10, 11, 12, 13, 0})
        layout << element(std::make_shared<TrackProducer>('x', 1, 2336, blockType));
    int files = 0;
    delegate.KRCustomLayoutWriterPathForItem = [&](KRCustomLayoutWriter &, const auto &) {
        const QByteArray name = "file" + QByteArray::number(++files);
        tree.makeFile(name);
        return tree.pathText(name);
    };
    write(layout);
    QStringList kinds;
    for (const QString &line : writer->cueSheet().split(u'\n')) {
        if (line.startsWith(QStringLiteral("TRACK")))
            kinds << line.mid(9);
    }
    EXPECT_EQ(kinds.join(u' '),
              QStringLiteral("MODE1/2336 MODE1/2336 MODE2/2336 MODE1/2336 MODE2/2336 MODE2/2336 AUDIO"));
    EXPECT_EQ(writer->cueSheet().count(QStringLiteral("FILE")), 1);
    EXPECT_TRUE(writer->cueSheet().startsWith(QStringLiteral("FILE \"file1\" BINARY\n")));
    EXPECT_EQ(tree.contents("file7").size(), 2336);
}

TEST_F(CustomLayoutWriter, cueSheet_takesATrackWithoutABlockTypeForAudio)
{
    write(element(
        std::make_shared<TrackProducer>('x', QVariantMap{{DRTrackLengthKey, quint64(75)}, {DRBlockSizeKey, 2352u}})));
    EXPECT_TRUE(writer->cueSheet().contains(QStringLiteral("TRACK 01 AUDIO\n"))) << writer->cueSheet().toStdString();
}

TEST_F(CustomLayoutWriter, chunks_areOf350Blocks_whateverTheirSize)
{
    const auto big = std::make_shared<TrackProducer>('b', 701, 2448, 8);
    const auto small = std::make_shared<TrackProducer>('s', 351, 2048, 8);
    write(QVariantList{element(big), element(small)});
    EXPECT_EQ(big->calls.join(u';'), QStringLiteral("prepare;856800 of 2448;856800 of 2448;2448 of 2448;cleanup"));
    EXPECT_EQ(small->calls.join(u';'), QStringLiteral("prepare;716800 of 2048;2048 of 2048;cleanup"));
    EXPECT_TRUE(writer->cueSheet().endsWith(QStringLiteral("TRACK 02 MODE1/2048\n    INDEX 01 00:09:26\n")))
        << "places are counted in blocks: " << writer->cueSheet().toStdString();
}

TEST_F(CustomLayoutWriter, listsInLists_areFlattenedOnce)
{
    const auto inner = std::make_shared<PlainProducer>('i', 5);
    const auto outer = std::make_shared<PlainProducer>('o', 5);
    expectFailure(QVariantList{element(outer), QVariant(QVariantList{QVariant(QVariantList{element(inner)})})});
    EXPECT_EQ(tree.contents("disc.bin"), "ooooo");
    EXPECT_EQ(inner->calls, QStringList()) << "a list in a list in the list is not a producer";
}

TEST_F(CustomLayoutWriter, VANTData_makesTheFileAVANTImage)
{
    texts = {"a block of CD-TEXT"};
    write(QVariantList{element(std::make_shared<TrackProducer>('1', 10, 2048, 8)),
                       element(std::make_shared<TrackProducer>('2', 20, 2352, 0))});
    tree.makeFile("disc.vant", tree.contents("disc.bin") + writer->VANTData());
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    const std::vector<VANTTrack> &tracks = read.image->sessions.at(0).tracks;
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[1].startOffset, 10u * 2048);
    EXPECT_EQ(tracks[1].length, 20u);
    EXPECT_TRUE(writer->VANTData().contains("a block of CD-TEXT"));
}

TEST_F(CustomLayoutWriter, VANTData_isNull_whenAProducerHasNoTrack)
{
    write(QVariantList{element(std::make_shared<TrackProducer>('1', 10, 2048, 8)),
                       element(std::make_shared<PlainProducer>('2', 100))});
    EXPECT_EQ(heard.last(), QStringLiteral("end"));
    EXPECT_TRUE(writer->VANTData().isNull());
}

TEST_F(CustomLayoutWriter, progress_isToldEverySevenChunks_inWholeKibibytes)
{
    constexpr std::uint64_t size = 15 * 823'200 + 100;
    write(element(std::make_shared<PlainProducer>('x', size)));
    constexpr std::uint64_t total = size / 1024;
    constexpr std::uint64_t afterSeven = 7 * 823'200 / 1024;
    constexpr std::uint64_t afterFourteen = 14 * 823'200 / 1024;
    EXPECT_EQ(progress, (QList<double>{double(afterSeven) / double(total), double(afterFourteen) / double(total)}));
}

TEST_F(CustomLayoutWriter, progress_countsTheChunksOfEachProducer_andTheBytesOfAll)
{
    const auto six = std::make_shared<PlainProducer>('6', 6 * 823'200);
    const auto seven = std::make_shared<TrackProducer>('7', 7 * 350, 2352, 0);
    const auto trackless = std::make_shared<TrackProducer>('t', 1'000'000, 2352, 0);
    trackless->hasTrack = false;
    const QVariantList layout{element(six), element(six), element(seven), element(trackless)};
    expectFailure(layout);
    constexpr std::uint64_t written = std::uint64_t(6 + 6 + 7) * 823'200;
    EXPECT_EQ(progress, QList<double>{1.0}) << "a producer that has no track adds nothing to the size";
    EXPECT_EQ(std::uint64_t(tree.contents("disc.bin").size()), written);
}

TEST_F(CustomLayoutWriter, aProducerThatGivesLess_isAskedForTheRest)
{
    const auto producer = std::make_shared<TrackProducer>('x', 700, 2048, 8);
    producer->most = 500'000;
    write(element(producer));
    EXPECT_EQ(producer->calls.join(u';'),
              QStringLiteral("prepare;716800 of 2048;716800 of 2048;433600 of 2048;cleanup"));
    EXPECT_EQ(tree.contents("disc.bin").size(), 700 * 2048);
}

TEST_F(CustomLayoutWriter, aProducerThatGivesNothing_isAskedOnceMore)
{
    const auto once = std::make_shared<PlainProducer>('x', 100);
    once->silences = 1;
    QElapsedTimer timer;
    timer.start();
    write(element(once));
    EXPECT_EQ(heard.last(), QStringLiteral("end"));
    EXPECT_GE(timer.elapsed(), 20) << "a moment later, in milliseconds";
    const auto twice = std::make_shared<PlainProducer>('x', 100);
    twice->silences = 2;
    expectFailure(element(twice));
    EXPECT_EQ(twice->calls.join(u';'), QStringLiteral("prepare;100 of 0;100 of 0;cleanup"));
    EXPECT_EQ(tree.contents("disc.bin").size(), 100) << "what was written stays";
}

TEST_F(CustomLayoutWriter, aProducerThatGivesNothing_isAskedOnceMore_forEachChunk)
{
    const auto producer = std::make_shared<PlainProducer>('x', 3 * 823'200);
    producer->whenAsked = [&producer, isSecond = true]() mutable {
        isSecond = !isSecond;
        producer->silences = isSecond ? 0 : 1;
    };
    write(element(producer));
    EXPECT_EQ(heard.last(), QStringLiteral("end"));
    EXPECT_EQ(producer->calls.size(), 1 + 6 + 1);
    EXPECT_EQ(tree.contents("disc.bin").size(), 3 * 823'200);
}

TEST_F(CustomLayoutWriter, writing_mayBeginAgain_afterAFailure)
{
    const auto producer = std::make_shared<TrackProducer>('x', 75, 2352, 0);
    producer->silences = 2;
    make(element(producer));
    run();
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path failure"));
    run();
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path failure path texts end"));
    EXPECT_EQ(tree.contents("disc.bin").size(), 75 * 2352);
}

TEST_F(CustomLayoutWriter, cueSheet_hasATrackThatFailed)
{
    expectFailure(element(std::make_shared<TrackProducer>('x', 0, 2352, 0)));
    EXPECT_EQ(writer->cueSheet(), QStringLiteral("FILE \"disc.bin\" BINARY\nTRACK 01 AUDIO\n    INDEX 01 00:00:00\n"));
}

TEST_F(CustomLayoutWriter, writing_fails_whenAProducerIsEmptyOrUnwilling)
{
    expectFailure(element(std::make_shared<PlainProducer>('x', 0)));
    expectFailure(element(std::make_shared<ByteProducer>('x')));
    expectFailure(element(std::make_shared<TrackProducer>('x', 0, 2048, 8)));
    const auto trackless = std::make_shared<TrackProducer>('x', 5, 2048, 8);
    trackless->hasTrack = false;
    expectFailure(element(trackless));
    EXPECT_EQ(trackless->calls.join(u';'), QStringLiteral("prepare;cleanup"));
    const auto unready = std::make_shared<PlainProducer>('x', 5);
    unready->isReady = false;
    expectFailure(element(unready));
    EXPECT_EQ(unready->calls.join(u';'), QStringLiteral("prepare"));
    const auto liar = std::make_shared<PlainProducer>('x', 5);
    liar->excess = 1;
    expectFailure(element(liar));
    expectFailure(QVariantList{QStringLiteral("no producer")});
    EXPECT_EQ(tree.contents("disc.bin"), "");
}

TEST_F(CustomLayoutWriter, writing_fails_whenSizesMakeNoSense)
{
    expectFailure(element(std::make_shared<TrackProducer>('x', quint64(1) << 60, 2048, 8)));
    expectFailure(element(std::make_shared<TrackProducer>('x', 2, 0x7FFFFFFF, 8)));
}

TEST_F(CustomLayoutWriter, writing_fails_withoutAnExistingFile)
{
    const auto producer = std::make_shared<PlainProducer>('x', 5);
    for (const QString &path : {QString(), tree.pathText("missing"), tree.pathText()}) {
        destination = path;
        expectFailure(element(producer));
    }
    EXPECT_EQ(producer->calls, QStringList());
    EXPECT_FALSE(tree.exists("missing"));
    destination = QStringLiteral("/dev/full");
    expectFailure(element(producer));
    delegate.KRCustomLayoutWriterPathForItem = {};
    expectFailure(element(producer));
}

TEST_F(CustomLayoutWriter, abort_takesEffectBeforeTheNextChunk_andIsForEver)
{
    const auto first = std::make_shared<PlainProducer>('x', 5 * 823'200);
    first->whenAsked = [this] { writer->abort(); };
    const auto second = std::make_shared<PlainProducer>('y', 5);
    write(QVariantList{element(first), element(second)});
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path abort"));
    EXPECT_EQ(first->calls.join(u';'), QStringLiteral("prepare;823200 of 0;cleanup"));
    EXPECT_EQ(tree.contents("disc.bin").size(), 823'200);
    writer->beginLayoutWriting();
    drainEventLoop();
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path abort"));
    EXPECT_EQ(second->calls, QStringList());
}

TEST_F(CustomLayoutWriter, abort_isHeardBetweenTwoProducers)
{
    const auto first = std::make_shared<PlainProducer>('x', 5);
    first->whenAsked = [this] { writer->abort(); };
    write(QVariantList{element(first), element(std::make_shared<PlainProducer>('y', 5))});
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path abort"));
    EXPECT_EQ(tree.contents("disc.bin"), "xxxxx");
}

TEST_F(CustomLayoutWriter, beginLayoutWriting_doesNothing_whileAWritingIsUnderWay)
{
    make(element(std::make_shared<PlainProducer>('x', 5)));
    writer->beginLayoutWriting();
    run();
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path texts end"));
    EXPECT_EQ(tree.contents("disc.bin"), "xxxxx");
}

TEST_F(CustomLayoutWriter, aSecondRun_appendsAgain_andCountsTheTracksOn)
{
    make(element(std::make_shared<TrackProducer>('x', 75, 2352, 0)));
    run();
    run();
    EXPECT_EQ(tree.contents("disc.bin").size(), 2 * 75 * 2352);
    EXPECT_TRUE(writer->cueSheet().endsWith(
        QStringLiteral("TRACK 01 AUDIO\n    INDEX 01 00:00:00\nTRACK 02 AUDIO\n    INDEX 01 00:01:00\n")));
}

TEST_F(CustomLayoutWriter, writing_followsTheFile_whenItIsRenamedBeforeItsTurn)
{
    const auto producer = std::make_shared<PlainProducer>('x', 5);
    delegate.KRCustomLayoutWriterPathForItem = [&](KRCustomLayoutWriter &, const auto &) { return destination; };
    write(element(producer));
    EXPECT_EQ(std::rename(tree.path("disc.bin").constData(), tree.path("other.bin").constData()), 0);
    expectFailure(element(producer));
}

TEST_F(CustomLayoutWriter, destruction_stopsTheWriting_andReportsNothing)
{
    std::binary_semaphore asked(0);
    const auto producer = std::make_shared<PlainProducer>('x', 100 * 823'200);
    producer->whenAsked = [&] {
        asked.release();
        producer->whenAsked = {};
    };
    make(element(producer));
    writer->beginLayoutWriting();
    asked.acquire();
    writer.reset();
    EXPECT_EQ(producer->calls.last(), QStringLiteral("cleanup"));
    drainEventLoop();
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path"));
    EXPECT_LT(tree.contents("disc.bin").size(), 100 * 823'200);
}

TEST_F(CustomLayoutWriter, aCallback_mayLetGoOfTheWriter)
{
    delegate.KRCustomLayoutWriterDidEnd = [this](KRCustomLayoutWriter &) {
        writer.reset();
        isOver = true;
    };
    write(element(std::make_shared<PlainProducer>('x', 5)));
    EXPECT_EQ(tree.contents("disc.bin"), "xxxxx");
}

TEST_F(CustomLayoutWriter, callbacks_areOptional_andSilentWithoutTheirContext)
{
    KRCustomLayoutWriterDelegate quiet;
    quiet.KRCustomLayoutWriterPathForItem = [this](KRCustomLayoutWriter &, const auto &) { return destination; };
    const auto without =
        KRCustomLayoutWriter::initWithLayout(element(std::make_shared<TrackProducer>('x', 5, 2048, 8)), &quiet);
    without->beginLayoutWriting();
    EXPECT_TRUE(runEventLoopUntil([&] { return !without->VANTData().isNull(); }));
    auto context = std::make_shared<int>();
    delegate.context = CallbackContext(context);
    make(element(std::make_shared<PlainProducer>('x', 5)));
    context.reset();
    writer->beginLayoutWriting();
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
}

TEST_F(CustomLayoutWriter, producersOfEveryKind_areWrittenInOneList)
{
    const QByteArray data = userDataOf(TrackKind::Mode1, 400);
    const QByteArray raw = rawSectorsAround(TrackKind::Mode1, data, BlockAddress(0));
    const QByteArray audio = userDataOf(TrackKind::Audio, 360);
    tree.makeFile("raw.bin", raw);
    tree.makeFile("subchannel.img", withSubchannels(raw));
    tree.makeFile("audio.bin", "head" + audio);
    KRDRDataProductionInfo dataInfo = KRDRDataProducer::blankInfo();
    dataInfo.trackMode = KRDRTrackMode::mode1;
    dataInfo.sectorSize = 2448;
    dataInfo.options = KRDRProductionOption::sectorsWithSubchannel;
    dataInfo.frameStart = 10;
    dataInfo.framesCount = 390;
    KRDRDataProductionInfo audioInfo = KRDRDataProducer::blankInfo();
    audioInfo.trackMode = KRDRTrackMode::audio;
    audioInfo.sectorSize = 2352;
    audioInfo.offsetInFile = 4;
    audioInfo.frameStart = 5;
    audioInfo.framesCount = 355;
    audioInfo.postgapFramesCount = 20;
    write(QVariantList{
        element(KRDRDataProducer::initWithInfo(dataInfo, tree.pathText("subchannel.img"))),
        QVariantList{element(KRDRDataProducer::initWithInfo(audioInfo, tree.pathText("audio.bin"))),
                     element(KRDataProvider::providerWithFile(tree.pathText("raw.bin"), 2352, 399 * rawSize, 2352, 0,
                                                              KRDataProviderMode::mode1, KRDataProviderOption::raw))},
        element(std::make_shared<TrackProducer>('t', 75, 2336, 9)),
        element(KRDataProvider::providerWithFile(tree.pathText("audio.bin"), 4, 7 * rawSize, 2352, 0,
                                                 KRDataProviderMode::audio, 0)),
    });
    EXPECT_EQ(heard.join(u' '), QStringLiteral("path path path path path texts end"));
    const QByteArray written = tree.contents("disc.bin");
    const QByteArray expected = data.mid(10 * plainSize) + audio.mid(5 * rawSize) + QByteArray(20 * rawSize, '\0')
        + data.mid(2048) + QByteArray(qsizetype(75) * 2336, 't') + audio.first(7 * rawSize);
    EXPECT_TRUE(written == expected);
    EXPECT_EQ(writer->cueSheet(),
              QStringLiteral("FILE \"disc.bin\" BINARY\n"
                             "TRACK 01 MODE1/2048\n    INDEX 01 00:00:00\n"
                             "TRACK 02 AUDIO\n    INDEX 01 00:05:15\n"
                             "TRACK 03 MODE1/2048\n    INDEX 01 00:10:15\n"
                             "TRACK 04 MODE1/2336\n    INDEX 01 00:15:39\n"
                             "TRACK 05 AUDIO\n    INDEX 01 00:16:39\n"));
    tree.makeFile("disc.vant", written + writer->VANTData());
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    EXPECT_EQ(read.image->sessions.at(0).tracks.size(), 5u);
}

TEST_F(CustomLayoutWriter, writing_fails_whenTheFileOfAProducerIsTooShort)
{
    tree.makeFile("short", QByteArray(3 * plainSize, 's'));
    KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
    info.sectorSize = 2048;
    info.framesCount = 0xFFFFFFFF;
    info.postgapFramesCount = 0xFFFFFFFF;
    expectFailure(element(KRDRDataProducer::initWithInfo(info, tree.pathText("short"))));
    EXPECT_EQ(tree.contents("disc.bin"), QByteArray(3 * plainSize, 's'));
    expectFailure(element(KRDRDataProducer::initWithInfo(KRDRDataProducer::blankInfo(), tree.pathText("short"))));
    expectFailure(
        element(KRDataProvider::providerWithFile(tree.pathText("short"), 2 * plainSize, 4096, 2048, 0, 1, 0)));
}
