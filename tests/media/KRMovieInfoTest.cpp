#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/quicktime/MediaErrors.h"
#include "tests/quicktime/Atoms.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <QBuffer>
#include <QImage>
#include <QTimer>

#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <thread>

using namespace Tessaron;
using namespace Tessaron::Testing;
using namespace std::chrono_literals;

namespace
{

class Listener final : public KRMovieInfoReceiver
{
public:
    void KRMovieInfoDidGetInfo(const QVariantMap &info) override
    {
        EXPECT_TRUE(isMainThread());
        EXPECT_TRUE(wasDescribed);
        results.push_back(info);
    }
    void KRMovieInfoDidDescribe(const QString &path, const MovieDescription *movie) override
    {
        wasDescribed = true;
        lastPath = path;
        hadMovie = movie != nullptr;
    }

    std::vector<QVariantMap> results;
    bool wasDescribed = false;
    bool hadMovie = false;
    QString lastPath;
};

class MovieInfo : public testing::Test
{
protected:
    [[nodiscard]] QString text(const QByteArray &relative) const { return tree.pathText(relative); }
    void makeMovie(const QByteArray &relative) const { tree.makeFile(relative, movieAtom(plainSoundTrack())); }
    /// Asks for a file and waits for its information.
    QVariantMap infoOn(const QByteArray &relative) const
    {
        const auto listener = std::make_shared<Listener>();
        info->getInfoForMovieAtPath(text(relative), listener);
        EXPECT_TRUE(runEventLoopUntil([&] { return !listener->results.empty(); })) << relative.constData();
        return listener->results.empty() ? QVariantMap() : listener->results.front();
    }
    static QVariantMap tracksMember(const QVariantMap &result, qsizetype index)
    {
        return result.value(fZelTracksInfoKey).toList().value(index).toMap();
    }
    [[nodiscard]] QImage artworkOf(const QByteArray &bytes) const
    {
        return KRMovieInfo::artworkForFile(stringWithFileSystemRepresentation(tree.makeFile("cover", bytes)));
    }
    /// The information on the next files that are asked for waits at this gate; it opens for all at the end.
    void useGate()
    {
        info->setDescriber([this](const QByteArray &path, const std::stop_token &stop) {
            ++waiting;
            gate.acquire();
            return describeMovie(path, stop);
        });
    }

    const std::shared_ptr<KRMovieInfo> info = KRMovieInfo::sharedInstance();
    const TemporaryTree tree;
    std::atomic<int> waiting = 0;
    std::counting_semaphore<100> gate{0};
};

QByteArray pictureBytes(const char *format, QSize size = {300, 100}, Qt::GlobalColor colour = Qt::red)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(picture.save(&buffer, format));
    return buffer.data();
}

} // namespace

TEST_F(MovieInfo, instance_isOneForAll)
{
    EXPECT_EQ(KRMovieInfo::sharedInstance(), KRMovieInfo::init());
}

TEST_F(MovieInfo, result_hasRequestTracksMovieAndMetadata)
{
    makeMovie("a.mov");
    const auto listener = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("a.mov"), listener);
    EXPECT_TRUE(listener->results.empty()) << "never before the call returns";
    EXPECT_EQ(info->indexOfItemWithPath(text("a.mov")), 0);
    ASSERT_TRUE(runEventLoopUntil([&] { return !listener->results.empty(); }));
    const QVariantMap result = listener->results.front();
    EXPECT_EQ(
        result.keys(),
        QStringList({QStringLiteral("del"), QStringLiteral("fZelTracksInfoKey"), QStringLiteral("kZelMovieInfoKey"),
                     QStringLiteral("kZelMovieMetadataKey"), QStringLiteral("path")}));
    EXPECT_EQ(result.value(QStringLiteral("path")).toString(), text("a.mov"));
    EXPECT_EQ(result.value(QStringLiteral("del")).toList().value(0).value<KRMovieInfo::Receiver>().lock(), listener);
    EXPECT_EQ(result.value(kZelMovieInfoKey).toMap(),
              QVariantMap({{kZelMovieTimeScale, quint32(1000)}, {kZelMovieDuration, quint32(1000)}}));
    EXPECT_EQ(tracksMember(result, 0).value(kZelTrackInfoFourCC).toString(), QStringLiteral("twos"));
    EXPECT_TRUE(listener->hadMovie);
    EXPECT_EQ(info->indexOfItemWithPath(text("a.mov")), -1);
}

TEST_F(MovieInfo, requests_forOnePathAreReadAndDeliveredEach)
{
    makeMovie("a.mov");
    std::atomic<int> readings = 0;
    info->setDescriber([&](const QByteArray &path, const std::stop_token &stop) {
        ++readings;
        return describeMovie(path, stop);
    });
    const auto one = std::make_shared<Listener>(), other = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("a.mov"), one);
    info->getInfoForMovieAtPath(text("a.mov"), other);
    info->getInfoForMovieAtPath(text("a.mov"), one);
    ASSERT_TRUE(runEventLoopUntil([&] { return one->results.size() == 2; }));
    EXPECT_EQ(other->results.size(), 1u);
    EXPECT_EQ(readings, 3);
}

TEST_F(MovieInfo, files_areReadInOrderOneAtATime_andNeverOnTheMainThread)
{
    std::mutex mutex;
    std::vector<QByteArray> order;
    std::atomic<int> atOnce = 0, most = 0;
    info->setDescriber([&](const QByteArray &path, const std::stop_token &stop) {
        EXPECT_FALSE(isMainThread());
        most = std::max(most.load(), ++atOnce);
        Result<MovieDescription> movie = describeMovie(path, stop);
        --atOnce;
        const std::lock_guard lock(mutex);
        order.push_back(path);
        return movie;
    });
    const auto listener = std::make_shared<Listener>();
    std::vector<QByteArray> expected;
    for (int number = 0; number < 50; ++number) {
        const QByteArray name = QByteArray::number(number) + ".mov";
        makeMovie(name);
        expected.push_back(tree.path(name));
        info->getInfoForMovieAtPath(text(name), listener);
    }
    ASSERT_TRUE(runEventLoopUntil([&] { return listener->results.size() == 50; }));
    EXPECT_EQ(order, expected);
    EXPECT_EQ(most, 1);
    for (std::size_t number = 0; number < 50; ++number)
        EXPECT_EQ(fileSystemRepresentation(listener->results[number].value(QStringLiteral("path")).toString()),
                  expected[number]);
}

TEST_F(MovieInfo, mainThread_isNotBlocked_byASlowFile)
{
    useGate();
    makeMovie("slow.mov");
    const auto listener = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("slow.mov"), listener);
    ASSERT_TRUE(runEventLoopUntil([&] { return waiting == 1; }));
    int ticks = 0;
    QTimer timer;
    timer.callOnTimeout([&] { ++ticks; });
    timer.start(1ms);
    ASSERT_TRUE(runEventLoopUntil([&] { return ticks == 20; }));
    info->getInfoForMovieAtPath(text("other.mov"), listener);
    EXPECT_TRUE(listener->results.empty());
    gate.release(2);
    ASSERT_TRUE(runEventLoopUntil([&] { return listener->results.size() == 2; }));
}

TEST_F(MovieInfo, withdrawal_dropsWhatIsBeingRead_andTheNextIsReadAllTheSame)
{
    useGate();
    makeMovie("a.mov");
    makeMovie("b.mov");
    const auto one = std::make_shared<Listener>(), other = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("a.mov"), one);
    info->getInfoForMovieAtPath(text("b.mov"), other);
    ASSERT_TRUE(runEventLoopUntil([&] { return waiting == 1; }));
    EXPECT_THROW(info->abortInfoRequestForReceiver(one), std::logic_error) << "a request follows";
    EXPECT_EQ(info->indexOfItemWithPath(text("a.mov")), -1);
    EXPECT_EQ(info->indexOfItemWithPath(text("b.mov")), 0);
    gate.release(2);
    ASSERT_TRUE(runEventLoopUntil([&] { return other->results.size() == 1; }));
    drainEventLoop();
    EXPECT_TRUE(one->results.empty());
}

TEST_F(MovieInfo, stopAll_dropsEverything_andLaterRequestsAreRead)
{
    useGate();
    makeMovie("a.mov");
    const auto listener = std::make_shared<Listener>();
    for (int count = 0; count < 5; ++count)
        info->getInfoForMovieAtPath(text("a.mov"), listener);
    ASSERT_TRUE(runEventLoopUntil([&] { return waiting == 1; }));
    info->stopAll();
    EXPECT_EQ(info->indexOfItemWithPath(text("a.mov")), -1);
    gate.release(2);
    makeMovie("b.mov");
    info->getInfoForMovieAtPath(text("b.mov"), listener);
    ASSERT_TRUE(runEventLoopUntil([&] { return !listener->results.empty(); }));
    drainEventLoop();
    ASSERT_EQ(listener->results.size(), 1u);
    EXPECT_EQ(listener->results[0].value(QStringLiteral("path")).toString(), text("b.mov"));
    EXPECT_EQ(waiting, 2);
}

TEST_F(MovieInfo, stopAllRightBehindARequest_leavesTheQueueAtWork)
{
    makeMovie("a.mov");
    const auto listener = std::make_shared<Listener>();
    for (int round = 0; round < 50; ++round) {
        listener->results.clear();
        info->getInfoForMovieAtPath(text("a.mov"), listener);
        info->stopAll();
        info->getInfoForMovieAtPath(text("a.mov"), listener);
        ASSERT_TRUE(runEventLoopUntil([&] { return !listener->results.empty(); }));
    }
}

TEST_F(MovieInfo, receiverThatIsGone_isNotTold)
{
    useGate();
    makeMovie("a.mov");
    auto gone = std::make_shared<Listener>();
    const auto listener = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("a.mov"), gone);
    info->getInfoForMovieAtPath(text("a.mov"), nullptr);
    info->getInfoForMovieAtPath(QString(), listener);
    info->getInfoForMovieAtPath(text("a.mov"), listener);
    gone.reset();
    gate.release(3);
    ASSERT_TRUE(runEventLoopUntil([&] { return !listener->results.empty(); }));
    EXPECT_EQ(waiting, 3) << "a request for nothing opens nothing";
    EXPECT_EQ(listener->results.size(), 1u);
}

TEST_F(MovieInfo, fileThatCannotBeOpened_hasAnErrorAndEmptyInformation)
{
    tree.makeFile("empty.mov");
    tree.makeFile("text.mp4", "just a text");
    tree.makeFifo("pipe.mov");
    tree.makeFolder("folder.mov");
    for (const char *const name : {"empty.mov", "text.mp4", "pipe.mov", "folder.mov", "missing.wmv"}) {
        const QVariantMap result = infoOn(name);
        const auto error = result.value(QStringLiteral("error")).value<NSError>();
        EXPECT_TRUE(error) << name;
        EXPECT_FALSE(error.localizedFailureReason().isEmpty()) << name;
        EXPECT_TRUE(result.value(fZelTracksInfoKey).toList().isEmpty()) << name;
        EXPECT_TRUE(result.contains(kZelMovieMetadataKey) && result.value(kZelMovieMetadataKey).toMap().isEmpty());
        EXPECT_TRUE(result.contains(kZelMovieInfoKey) && result.value(kZelMovieInfoKey).toMap().isEmpty());
    }
}

TEST_F(MovieInfo, fileThatDoesNotAnswer_isGivenUp_andTheNextIsRead)
{
    std::binary_semaphore silence{0};
    std::atomic<bool> wasStopped = false, hasReturned = false;
    // What answers is known before: it must not seem silent where the machine is slow.
    makeMovie("a.mov");
    const Result<MovieDescription> answer = describeMovie(tree.path("a.mov"), {});
    ASSERT_TRUE(answer);
    info->setDescriber([&](const QByteArray &path, const std::stop_token &stop) -> Result<MovieDescription> {
        if (!path.endsWith("silent.mov"))
            return *answer;
        silence.acquire();
        wasStopped = stop.stop_requested();
        hasReturned = true;
        return MovieDescription();
    });
    info->setPatience(500ms);
    const auto one = std::make_shared<Listener>(), other = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(text("silent.mov"), one);
    info->getInfoForMovieAtPath(text("a.mov"), other);
    ASSERT_TRUE(runEventLoopUntil([&] { return !one->results.empty() && !other->results.empty(); }));
    EXPECT_FALSE(hasReturned);
    const auto error = one->results[0].value(QStringLiteral("error")).value<NSError>();
    EXPECT_EQ(error.code(), ioErr);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("has not answered for 1 second")))
        << qPrintable(error.localizedDescription());
    EXPECT_TRUE(tracksMember(other->results[0], 0).contains(kZelTrackInfoType));
    // When the system lets go of the thread at last, nothing more is told.
    silence.release();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasReturned.load(); }));
    EXPECT_TRUE(wasStopped);
    infoOn("a.mov");
    drainEventLoop();
    EXPECT_EQ(one->results.size(), 1u);
}

TEST_F(MovieInfo, filesBesideASilentOne_haveAnErrorAtOnce_whenTheyLieOnTheSameMount)
{
    std::binary_semaphore silence{0};
    std::atomic<bool> hasReturned = false;
    std::atomic<int> readings = 0;
    makeMovie("a.mov");
    const Result<MovieDescription> answer = describeMovie(tree.path("a.mov"), {});
    ASSERT_TRUE(answer);
    info->setDescriber([&](const QByteArray &path, const std::stop_token &) -> Result<MovieDescription> {
        ++readings;
        if (!path.endsWith("silent.mov"))
            return *answer;
        silence.acquire();
        hasReturned = true;
        return MovieDescription();
    });
    info->setPatience(500ms);
    // The file system of processes is a mount of its own on every machine; nothing in it is opened.
    const auto one = std::make_shared<Listener>(), beside = std::make_shared<Listener>(),
               elsewhere = std::make_shared<Listener>();
    info->getInfoForMovieAtPath(QStringLiteral("/proc/silent.mov"), one);
    info->getInfoForMovieAtPath(QStringLiteral("/proc/self/../other.mov"), beside);
    info->getInfoForMovieAtPath(text("a.mov"), elsewhere);
    ASSERT_TRUE(runEventLoopUntil([&] { return !elsewhere->results.empty(); }));
    ASSERT_EQ(beside->results.size(), 1u);
    const auto error = beside->results[0].value(QStringLiteral("error")).value<NSError>();
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("another file on “/proc” does not answer")))
        << qPrintable(error.localizedDescription());
    EXPECT_TRUE(tracksMember(elsewhere->results[0], 0).contains(kZelTrackInfoType));
    EXPECT_EQ(readings, 2);
    silence.release();
    ASSERT_TRUE(runEventLoopUntil([&] { return hasReturned.load(); }));
}

TEST_F(MovieInfo, requests_mayComeFromManyThreads)
{
    makeMovie("a.mov");
    const auto listener = std::make_shared<Listener>(), withdrawn = std::make_shared<Listener>();
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int number = 0; number < 4; ++number)
            threads.emplace_back([&] {
                for (int count = 0; count < 25; ++count) {
                    info->getInfoForMovieAtPath(text("a.mov"), listener);
                    info->getInfoForMovieAtPath(text("a.mov"), withdrawn);
                    try {
                        info->abortInfoRequestForReceiver(withdrawn);
                    } catch (const std::logic_error &) {
                        // Another thread has put its requests behind this one.
                    }
                }
            });
        ASSERT_TRUE(runEventLoopUntil([&] { return listener->results.size() == 100; }));
    }
}

TEST_F(MovieInfo, windowsMedia_isToldByNamesOfCodecsAndOfFiles)
{
    tree.makeFile("UPPER.WMV", "no movie at all");
    EXPECT_TRUE(info->isWindowsMediaMovie(text("UPPER.WMV")));
    EXPECT_TRUE(info->isWindowsMediaMovie(text("missing.ASF")));
    makeMovie("plain.mov");
    EXPECT_FALSE(info->isWindowsMediaMovie(text("plain.mov")));
    EXPECT_FALSE(info->isWindowsMediaMovie(QString()));
    TrackParts parts;
    parts.mediaType = "vide";
    parts.description = imageDescriptionAtom("WMV3", 320, 240, "Windows Media Video 9");
    tree.makeFile("flip.mov", movieAtom(trackAtom(parts)));
    EXPECT_TRUE(info->isWindowsMediaMovie(text("flip.mov")));
    const QVariantMap result = infoOn("flip.mov");
    EXPECT_EQ(tracksMember(result, 0).value(kZelVideoInfoName).toString(), QStringLiteral("Windows Media Video 9"));
}

TEST_F(MovieInfo, artwork_isScaledToItsSize_whicheverKindItIs)
{
    for (const char *const format : {"jpg", "png"}) {
        const QByteArray path = tree.makeFile("cover", QByteArray(5000, 'x') + pictureBytes(format) + "more");
        const QImage artwork = KRMovieInfo::artworkForFile(stringWithFileSystemRepresentation(path));
        ASSERT_FALSE(artwork.isNull()) << format;
        EXPECT_EQ(artwork.size(), QSize(80, 80)) << format;
        EXPECT_NEAR(qRed(artwork.pixel(40, 40)), 255, 4);
        EXPECT_NEAR(qGreen(artwork.pixel(40, 40)), 0, 4);
    }
}

TEST_F(MovieInfo, artwork_isFound_whereItsMarkBeginsInTheFirst81920Bytes)
{
    const QByteArray jpeg = pictureBytes("jpg"), png = pictureBytes("png");
    ASSERT_EQ(jpeg.indexOf("JFIF"), 6);
    ASSERT_EQ(png.indexOf("PNG"), 1);
    EXPECT_FALSE(artworkOf(QByteArray(81919 - 6, 'x') + jpeg).isNull()) << "the mark ends behind them";
    EXPECT_TRUE(artworkOf(QByteArray(81920 - 6, 'x') + jpeg).isNull());
    EXPECT_FALSE(artworkOf(QByteArray(81919 - 1, 'x') + png).isNull());
    EXPECT_TRUE(artworkOf(QByteArray(81920 - 1, 'x') + png).isNull());
    EXPECT_TRUE(artworkOf(QByteArray(100000, 'x') + jpeg).isNull());
}

TEST_F(MovieInfo, artwork_isThePng_whereTheMarkOfAJpegLiesTooFarBack)
{
    const QImage artwork = artworkOf(QByteArray(70000, 'x') + pictureBytes("png") + QByteArray(20000, 'x')
                                     + pictureBytes("jpg", {300, 100}, Qt::blue));
    ASSERT_FALSE(artwork.isNull());
    EXPECT_GT(qRed(artwork.pixel(40, 40)), 200);
}

TEST_F(MovieInfo, artwork_isTheJpeg_alsoBehindAPng)
{
    const QImage artwork = artworkOf(pictureBytes("png") + pictureBytes("jpg", {300, 100}, Qt::blue));
    ASSERT_FALSE(artwork.isNull());
    EXPECT_GT(qBlue(artwork.pixel(40, 40)), 200);
}

/// The search for the mark passes over the letter that ends a begin of it.
TEST_F(MovieInfo, artwork_isMissed_whereALetterOfItsMarkStandsBeforeIt)
{
    // The length of the first segment ends in a "J" then: 74 bytes.
    QByteArray jpeg = pictureBytes("jpg");
    ASSERT_EQ(jpeg[5], 16);
    jpeg.insert(4 + 16, QByteArray('J' - 16, '\0'));
    jpeg[5] = 'J';
    ASSERT_FALSE(QImage::fromData(jpeg, "jpg").isNull());
    EXPECT_TRUE(artworkOf(jpeg).isNull());
    EXPECT_FALSE(artworkOf("JFIF" + pictureBytes("png")).isNull()) << "a mark at the very begin is none";
}

TEST_F(MovieInfo, artwork_isNone_whereAPictureIsLongerThanAMebibyte)
{
    QByteArray png = pictureBytes("png");
    // A chunk that says nothing, before the one with the picture.
    const qsizetype place = png.indexOf("IDAT") - 4;
    png.insert(place, bigEndian32(1 << 20) + "prVt" + QByteArray(1 << 20, 'x') + QByteArray(4, '\0'));
    ASSERT_FALSE(QImage::fromData(png, "png").isNull());
    EXPECT_TRUE(artworkOf(png).isNull());
}

TEST_F(MovieInfo, artwork_isNone_whenWhatBearsTheMarkIsNoPicture)
{
    const QByteArray png = pictureBytes("png");
    for (const QByteArray &bytes : {QByteArray(), QByteArray("JFIF"), QByteArray(1000, 'x'), "xxxxxxxxJFIFxxxx" + png,
                                    QByteArray("PNG"), QByteArray("xPNGxxxx")})
        EXPECT_TRUE(artworkOf(bytes).isNull());
    tree.makeFifo("pipe");
    for (const char *const name : {"missing", "pipe", "."})
        EXPECT_TRUE(KRMovieInfo::artworkForFile(text(name)).isNull()) << name;
    EXPECT_TRUE(KRMovieInfo::artworkForFile(QString()).isNull());
}

TEST_F(MovieInfo, artwork_isInTheMetadata)
{
    tree.makeFile("a.mov", atom("free", pictureBytes("png")) + movieAtom(plainSoundTrack()));
    const QVariantList artworks =
        infoOn("a.mov").value(kZelMovieMetadataKey).toMap().value(kZelAudioInfoArtworks).toList();
    ASSERT_EQ(artworks.size(), 1);
    EXPECT_EQ(artworks[0].value<QImage>().size(), QSize(80, 80));
}

TEST_F(MovieInfo, artwork_isNotDecoded_whenTheReceiverWantsNone)
{
    class Blind final : public KRMovieInfoReceiver
    {
    public:
        void KRMovieInfoDidGetInfo(const QVariantMap &info) override { result = info; }
        [[nodiscard]] bool wantsArtworks() const override { return false; }
        QVariantMap result;
    };
    tree.makeFile("a.mov", atom("free", pictureBytes("png")) + movieAtom(plainSoundTrack()));
    const auto blind = std::make_shared<Blind>();
    info->getInfoForMovieAtPath(text("a.mov"), blind);
    ASSERT_TRUE(runEventLoopUntil([&] { return !blind->result.isEmpty(); }));
    EXPECT_TRUE(blind->result.contains(kZelMovieMetadataKey));
    EXPECT_FALSE(blind->result.value(kZelMovieMetadataKey).toMap().contains(kZelAudioInfoArtworks));
}

TEST_F(MovieInfo, placeholder_doesNothing)
{
    EXPECT_EQ(setTitleAuthorAlbumOfMovieFile("a", "b", "c", "d"), 0);
    EXPECT_EQ(setTitleAuthorAlbumOfMovieFile(nullptr, nullptr, nullptr, nullptr), 0);
}
