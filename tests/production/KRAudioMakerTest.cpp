#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSBundle.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRCustomLayoutWriter.h>
#include <TessaronClasses/KRVideoDVDBurnPathAddition.h>

#include <QElapsedTimer>
#include <QRegularExpression>

#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

// The producer as burns use it: its callbacks on a thread of their own, and helpers of every kind.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::uint32_t frameSize = 2352;
constexpr auto shortPatience = std::chrono::milliseconds(300);

/// Runs the steps on a thread of their own, with the event loop of the main thread running.
void onBurnThread(const std::function<void()> &steps)
{
    std::atomic<bool> isOver = false;
    std::thread thread([&] {
        steps();
        isOver = true;
        performOnMainThread([] {});
    });
    EXPECT_TRUE(runEventLoopUntil([&] { return isOver.load(); }));
    thread.join();
}

/// True while the process runs; false also for what has ended and was not waited for.
bool isAlive(pid_t id)
{
    FILE *const file = std::fopen(("/proc/" + std::to_string(id) + "/stat").c_str(), "r");
    if (!file)
        return false;
    char state = 0;
    const int got = std::fscanf(file, "%*d %*s %c", &state);
    std::fclose(file);
    return got == 1 && state != 'Z';
}

class AudioMaker : public testing::Test
{
protected:
    AudioMaker() { maker->setRef(KRfsRef(QString::fromUtf8(tree.makeFile("a.wav", waveFile(source))))); }

    /// Has a shell script as the helper: $1 the source, $2 the pipe.
    void useHelper(const QByteArray &script) const
    {
        tree.makeFile("bundle/Resources/DummyRedbook", "#!/bin/sh\necho $$ > " + tree.path("number") + '\n' + script);
        tree.setMode("bundle/Resources/DummyRedbook", 0755);
        NSBundle::setMainBundlePath(tree.pathText("bundle"));
    }
    [[nodiscard]] pid_t helper() const { return pid_t(tree.contents("number").trimmed().toInt()); }
    [[nodiscard]] bool helperEnds() const
    {
        return runEventLoopUntil(
            [this] {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                return !isAlive(helper());
            },
            std::chrono::seconds(5));
    }
    [[nodiscard]] bool prepare(KRAudioMaker &one) const { return one.prepareTrack(nullptr, nullptr, {}); }
    /// A buffer of which the producer says that it has filled `*answer` bytes.
    static QByteArray produce(KRAudioMaker &one, std::uint32_t length, std::uint32_t *answer)
    {
        QByteArray buffer(qsizetype(length), '#');
        std::uint32_t flags = 0;
        *answer = one.produceDataForTrack(nullptr, buffer.data(), length, 0, frameSize, &flags);
        return buffer;
    }
    static QByteArray produce(KRAudioMaker &one, std::uint32_t length)
    {
        std::uint32_t answer = 0;
        QByteArray buffer = produce(one, length, &answer);
        EXPECT_EQ(answer, length);
        return buffer;
    }
    [[nodiscard]] bool pipeExists(const QString &path) const
    {
        struct stat status;
        return ::lstat(path.toUtf8().constData(), &status) == 0;
    }

    const TemporaryTree tree;
    const Samples source = noise(100000);
    std::shared_ptr<KRAudioMaker> maker = std::make_shared<KRAudioMaker>();
};

QByteArray bytesOf(const Samples &samples)
{
    return QByteArray(reinterpret_cast<const char *>(samples.data()), qsizetype(samples.size() * 2));
}

QByteArray zeros(qsizetype count)
{
    return QByteArray(count, '\0');
}

} // namespace

TEST_F(AudioMaker, burn_deliversTheSound_andLeavesNothing)
{
    QString pipe;
    QByteArray got;
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        pipe = maker->tempFifoPath();
        EXPECT_TRUE(pipeExists(pipe));
        EXPECT_GE(maker->fifoFileNo(), 1);
        for (int part = 0; part < 18; ++part)
            got += produce(*maker, 10 * frameSize);
        EXPECT_EQ(KRAudioMaker::totalSize(), 180u * frameSize);
        maker->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(maker->helperExitStatus(), 0);
    });
    EXPECT_EQ(got, bytesOf(source) + zeros(got.size() - qsizetype(source.size() * 2)));
    EXPECT_FALSE(pipeExists(pipe));
    EXPECT_TRUE(maker->tempFifoPath().isNull());
    EXPECT_EQ(maker->fifoFileNo(), 0);
}

TEST_F(AudioMaker, burn_losesNothing_whenItIsSlow)
{
    QByteArray got;
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        for (int part = 0; part < 10; ++part) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            got += produce(*maker, 17 * frameSize);
        }
        maker->cleanupTrackAfterBurn(nullptr);
    });
    EXPECT_EQ(got, bytesOf(source).left(qsizetype(170) * frameSize));
}

TEST_F(AudioMaker, burn_canBeRepeated_alsoWhenTheFirstWasNotEnded)
{
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        const QString first = maker->tempFifoPath();
        EXPECT_EQ(produce(*maker, frameSize), bytesOf(source).left(frameSize));
        ASSERT_TRUE(prepare(*maker));
        EXPECT_FALSE(pipeExists(first));
        EXPECT_EQ(produce(*maker, frameSize), bytesOf(source).left(frameSize)) << "from the beginning";
        EXPECT_EQ(KRAudioMaker::totalSize(), frameSize) << "counted from the last preparation on";
        maker->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(maker->helperExitStatus(), 4) << "the rest was not asked for";
    });
}

TEST_F(AudioMaker, pipe_isForTheUserAlone_andNamedByTheTime)
{
    const mode_t before = ::umask(0);
    onBurnThread([&] {
        const double now = double(::time(nullptr)) - 978307200;
        ASSERT_TRUE(prepare(*maker));
        const QByteArray path = maker->tempFifoPath().toUtf8();
        const QRegularExpression form(QStringLiteral("^tempFifo-(\\d+\\.\\d{6})$"));
        const QRegularExpressionMatch match = form.match(QString::fromUtf8(path.mid(path.lastIndexOf('/') + 1)));
        EXPECT_TRUE(match.hasMatch()) << path.constData();
        EXPECT_NEAR(match.captured(1).toDouble(), now, 10);
        struct stat pipe = {}, folder = {};
        EXPECT_EQ(::stat(path.constData(), &pipe), 0);
        EXPECT_EQ(pipe.st_mode, mode_t(S_IFIFO | 0600));
        EXPECT_EQ(::stat(path.left(path.lastIndexOf('/')).constData(), &folder), 0);
        EXPECT_EQ(folder.st_mode, mode_t(S_IFDIR | 0700));
        maker->cleanupTrackAfterBurn(nullptr);
    });
    ::umask(before);
}

TEST_F(AudioMaker, createFifo_logsWhatMkfifoAnswers_andForgetsThePath)
{
    static QStringList logged;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { logged << text; });
    EXPECT_FALSE(maker->createFifo(tree.pathText("missing")));
    qInstallMessageHandler(before);
    EXPECT_EQ(logged, QStringList{QStringLiteral("mkfifo error 1")});
    EXPECT_TRUE(maker->tempFifoPath().isNull());
    EXPECT_TRUE(maker->createFifo(tree.pathText()));
    EXPECT_TRUE(maker->tempFifoPath().startsWith(tree.pathText() + QStringLiteral("/tempFifo-")));
}

TEST_F(AudioMaker, prepare_fails_whenTheSourceIsGone)
{
    tree.remove("a.wav");
    onBurnThread([&] { EXPECT_FALSE(prepare(*maker)); });
    EXPECT_TRUE(maker->tempFifoPath().isNull());
    KRAudioMaker withoutSource;
    onBurnThread([&] { EXPECT_FALSE(prepare(withoutSource)); });
}

TEST_F(AudioMaker, helper_getsSourcePipeAndName_andTheNullDeviceForItsOutput)
{
    tree.makeFile("na\xefve.wav");
    maker->setRef(KRfsRef(tree.pathText("na\xefve.wav")));
    useHelper("{ printf '%s|' \"$@\"; readlink /proc/$$/fd/1 /proc/$$/fd/2; } > " + tree.path("seen")
              + "\nexec > \"$2\"\n");
    QByteArray pipe;
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        pipe = maker->tempFifoPath().toUtf8();
        EXPECT_EQ(produce(*maker, frameSize), zeros(frameSize));
        maker->cleanupTrackAfterBurn(nullptr);
    });
    // While it wrote that, its standard output was the file.
    EXPECT_EQ(tree.contents("seen"),
              tree.path("na\xefve.wav") + '|' + pipe + "|dummyNotification|" + tree.path("seen") + "\n/dev/null\n");
}

TEST_F(AudioMaker, helper_thatDeliversHalfABuffer_isFollowedByZeros)
{
    // It stays until the bytes are taken: what lies in the pipe of a helper that has ended is not read.
    useHelper("exec 3> \"$2\"; printf '%01176d' 0 | tr 0 x >&3; sleep 1\n");
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        EXPECT_EQ(produce(*maker, frameSize), QByteArray(1176, 'x') + zeros(1176));
        for (int buffer = 0; buffer < 3; ++buffer)
            EXPECT_EQ(produce(*maker, frameSize), zeros(frameSize));
        EXPECT_EQ(KRAudioMaker::totalSize(), 4 * frameSize);
        maker->cleanupTrackAfterBurn(nullptr);
    });
    EXPECT_EQ(maker->helperExitStatus(), 0);
}

TEST_F(AudioMaker, whatLiesInThePipe_isLost_onceTheHelperHasEnded)
{
    useHelper("printf '%02352d' 0 > \"$2\"\n");
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        while (!maker->helperExitStatus())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(produce(*maker, frameSize), zeros(frameSize));
        maker->cleanupTrackAfterBurn(nullptr);
    });
}

TEST_F(AudioMaker, helper_thatIsKilled_isFollowedByZeros)
{
    useHelper("exec 3> \"$2\"; printf '%01000d' 0 | tr 0 x >&3; exec sleep 60\n");
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        EXPECT_EQ(produce(*maker, 1000), QByteArray(1000, 'x'));
        ::kill(helper(), SIGKILL);
        EXPECT_EQ(produce(*maker, frameSize), zeros(frameSize));
        maker->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(maker->helperExitStatus(), 128 + SIGKILL);
    });
}

TEST_F(AudioMaker, prepare_fails_whenTheHelperEndsBeforeItOpensThePipe)
{
    QElapsedTimer timer;
    timer.start();
    useHelper("exit 1\n");
    onBurnThread([&] { EXPECT_FALSE(prepare(*maker)); });
    EXPECT_TRUE(maker->tempFifoPath().isNull());
    EXPECT_EQ(maker->fifoFileNo(), 0);
    tree.makeFile("bundle/Resources/DummyRedbook", "not a program");
    tree.setMode("bundle/Resources/DummyRedbook", 0644);
    onBurnThread([&] { EXPECT_FALSE(prepare(*maker)); });
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(AudioMaker, prepare_fails_whenTheHelperDoesNothing)
{
    useHelper("exec sleep 60\n");
    maker->setHelperPatience(shortPatience);
    onBurnThread([&] { EXPECT_FALSE(prepare(*maker)); });
    EXPECT_TRUE(helperEnds());
    EXPECT_TRUE(maker->tempFifoPath().isNull());
}

TEST_F(AudioMaker, produce_givesNothing_whenTheHelperIsSilent)
{
    useHelper("exec 3> \"$2\"; printf '%01000d' 0 >&3; exec sleep 60\n");
    maker->setHelperPatience(shortPatience);
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        QElapsedTimer timer;
        timer.start();
        for (int attempt = 0; attempt < 3; ++attempt) {
            std::uint32_t answer = 1;
            produce(*maker, frameSize, &answer);
            EXPECT_EQ(answer, 0u) << "no silence is burned for a helper that hangs";
        }
        EXPECT_LT(timer.elapsed(), 3000);
        maker->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(maker->helperExitStatus(), 128 + SIGKILL);
    });
}

TEST_F(AudioMaker, produce_givesNothing_whenThePipeCannotBeRead)
{
    useHelper("exec 3> \"$2\"; exec sleep 60\n");
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        maker->destroyFifo();
        std::uint32_t answer = 1;
        produce(*maker, frameSize, &answer);
        EXPECT_EQ(answer, 0u);
        ::kill(helper(), SIGKILL);
        maker->cleanupTrackAfterBurn(nullptr);
    });
    EXPECT_TRUE(helperEnds());
}

TEST_F(AudioMaker, produce_givesZeros_withoutAHelper)
{
    EXPECT_EQ(produce(*maker, frameSize), zeros(frameSize));
    maker->cleanupTrackAfterBurn(nullptr);
    EXPECT_FALSE(maker->helperExitStatus());
}

TEST_F(AudioMaker, twoMakers_shareNothingButTheTotal)
{
    const auto other = std::make_shared<KRAudioMaker>();
    const Samples otherSource = tone(100000);
    other->setRef(KRfsRef(QString::fromUtf8(tree.makeFile("b.wav", waveFile(otherSource)))));
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        EXPECT_EQ(produce(*maker, 2 * frameSize), bytesOf(source).left(qsizetype(2) * frameSize));
        ASSERT_TRUE(prepare(*other));
        EXPECT_EQ(KRAudioMaker::totalSize(), 0u) << "set back by each preparation";
        EXPECT_NE(maker->tempFifoPath(), other->tempFifoPath());
        EXPECT_EQ(produce(*other, 3 * frameSize), bytesOf(otherSource).left(qsizetype(3) * frameSize));
        EXPECT_EQ(produce(*maker, 2 * frameSize),
                  bytesOf(source).mid(qsizetype(2) * frameSize, qsizetype(2) * frameSize));
        EXPECT_EQ(KRAudioMaker::totalSize(), 5 * frameSize);
        maker->cleanupTrackAfterBurn(nullptr);
        EXPECT_EQ(produce(*other, frameSize), bytesOf(otherSource).mid(qsizetype(3) * frameSize, frameSize));
        other->cleanupTrackAfterBurn(nullptr);
    });
}

TEST_F(AudioMaker, destructor_endsABurnThatWasNotEnded)
{
    useHelper("exec cat \"$1\" - > \"$2\"\n");
    tree.makeFile("a.wav", QByteArray(2000000, 'x'));
    QString pipe;
    onBurnThread([&] {
        ASSERT_TRUE(prepare(*maker));
        pipe = maker->tempFifoPath();
        EXPECT_EQ(produce(*maker, frameSize), QByteArray(frameSize, 'x'));
        maker.reset();
    });
    EXPECT_FALSE(pipeExists(pipe));
    EXPECT_TRUE(helperEnds()) << "nothing reads what it writes";
}

TEST_F(AudioMaker, preparedOnTheMainThread_needsNoEventLoop)
{
    ASSERT_TRUE(prepare(*maker));
    EXPECT_EQ(produce(*maker, frameSize), bytesOf(source).left(frameSize));
    maker->cleanupTrackAfterBurn(nullptr);
    EXPECT_EQ(maker->fifoFileNo(), 0);
}

TEST_F(AudioMaker, burnThread_goesOn_whenTheMainThreadWaitsForIt)
{
    QElapsedTimer timer;
    timer.start();
    std::thread([&] {
        EXPECT_TRUE(prepare(*maker));
        EXPECT_EQ(produce(*maker, frameSize), bytesOf(source).left(frameSize));
        maker->cleanupTrackAfterBurn(nullptr);
    }).join();
    EXPECT_LT(timer.elapsed(), 8000);
    EXPECT_TRUE(maker->tempFifoPath().isNull());
    drainEventLoop(); // the steps that were not needed do nothing any more
    EXPECT_EQ(maker->fifoFileNo(), 0);
}

TEST_F(AudioMaker, customLayoutWriter_writesItsTrack)
{
    tree.makeFile("disc.bin");
    maker->setSize(100ull * frameSize);
    bool hasEnded = false;
    KRCustomLayoutWriterDelegate delegate;
    delegate.KRCustomLayoutWriterPathForItem = [this](KRCustomLayoutWriter &, const auto &) {
        return tree.pathText("disc.bin");
    };
    delegate.KRCustomLayoutWriterDidEnd = [&](KRCustomLayoutWriter &) { hasEnded = true; };
    const auto writer = KRCustomLayoutWriter::initWithLayout(
        QVariant::fromValue(std::static_pointer_cast<DRTrackProducer>(maker)), &delegate);
    writer->beginLayoutWriting();
    EXPECT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
    EXPECT_EQ(tree.contents("disc.bin"), bytesOf(source).left(qsizetype(100) * frameSize));
    EXPECT_TRUE(writer->cueSheet().contains(QStringLiteral("TRACK 01 AUDIO")));
    EXPECT_TRUE(maker->tempFifoPath().isNull());
}

TEST_F(AudioMaker, writerThatIsDestroyedAtWork_leavesNoPipe)
{
    useHelper("exec 3> \"$2\"; while printf '%04000d' 0 >&3; do sleep 0.05; done\n");
    tree.makeFile("disc.bin");
    maker->setSize(10000ull * frameSize);
    KRCustomLayoutWriterDelegate delegate;
    delegate.KRCustomLayoutWriterPathForItem = [this](KRCustomLayoutWriter &, const auto &) {
        return tree.pathText("disc.bin");
    };
    auto writer = KRCustomLayoutWriter::initWithLayout(
        QVariant::fromValue(std::static_pointer_cast<DRTrackProducer>(maker)), &delegate);
    writer->beginLayoutWriting();
    EXPECT_TRUE(runEventLoopUntil([&] { return maker->fifoFileNo() >= 1; }));
    const QString pipe = maker->tempFifoPath();
    ::kill(helper(), SIGKILL); // so that the chunk that is waited for ends
    QElapsedTimer timer;
    timer.start();
    writer.reset();
    EXPECT_LT(timer.elapsed(), 5000);
    EXPECT_FALSE(pipeExists(pipe));
}
