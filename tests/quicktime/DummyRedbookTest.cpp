#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

// The program as those who start it see it: a process and a pipe.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr qsizetype frameSize = 2352;

QByteArray bytesOf(const Samples &samples)
{
    return QByteArray(reinterpret_cast<const char *>(samples.data()), qsizetype(samples.size() * 2));
}

/// The bytes of whole frames, filled up with zeros.
QByteArray wholeFrames(const QByteArray &bytes)
{
    return bytes + QByteArray((frameSize - bytes.size() % frameSize) % frameSize, '\0');
}

class DummyRedbook : public testing::Test
{
protected:
    DummyRedbook() { leaveSessionBus(); }

    void start(const QList<QByteArray> &arguments)
    {
        UniqueDescriptor writing;
        makePipe(&output, &writing);
        process = std::make_unique<RunningProgram>(program(), arguments, ProgramEnds{-1, writing.get()});
        ASSERT_TRUE(process->isStarted());
    }
    /// Takes all that it writes to standard output, and waits for its end.
    ProgramRun finish(std::chrono::seconds atMost = std::chrono::seconds(30))
    {
        const QByteArray written = readAll(output.get());
        EXPECT_TRUE(process->waitUntilEnded(atMost));
        ProgramRun run = process->finish();
        run.output = written;
        return run;
    }
    static QByteArray program()
    {
        return NSBundle::mainBundle()->pathForResource(QStringLiteral("DummyRedbook")).toUtf8();
    }
    static void makePipe(UniqueDescriptor *reading, UniqueDescriptor *writing)
    {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        reading->reset(ends[0]);
        writing->reset(ends[1]);
    }
    UniqueDescriptor openForReading(const QByteArray &path) const
    {
        return UniqueDescriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    }
    static QByteArray readAll(int descriptor)
    {
        QByteArray bytes;
        std::array<char, 5000> buffer;
        for (;;) {
            const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
            if (got <= 0)
                return bytes;
            bytes.append(buffer.data(), got);
        }
    }
    /// Asks again and again, for half a minute at most.
    static bool becomesTrue(const std::function<bool()> &condition)
    {
        for (int look = 0; look < 3000; ++look) {
            if (condition())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    static qsizetype bytesWaitingIn(const UniqueDescriptor &pipe)
    {
        int count = 0;
        return ::ioctl(pipe.get(), FIONREAD, &count) == 0 ? count : -1;
    }
    /// Whether the process runs the program and has nothing to do but wait: asleep at each of many looks.
    static bool waitsIn(const QByteArray &number, const QByteArray &program)
    {
        for (int look = 0; look < 10; ++look) {
            QFile file(QStringLiteral("/proc/") + QString::fromUtf8(number) + QStringLiteral("/stat"));
            if (!file.open(QIODevice::ReadOnly) || !file.readAll().contains('(' + program + ") S "))
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    const TemporaryTree tree;
    UniqueDescriptor output; ///< what the process writes to standard output
    std::unique_ptr<RunningProgram> process;
};

} // namespace

TEST_F(DummyRedbook, writes_wholeFramesToStandardOutput)
{
    for (const std::size_t count : {1u, 587u, 588u, 589u, 40000u}) {
        const Samples source = noise(count);
        start({tree.makeFile("a.wav", waveFile(source)), "-"});
        const ProgramRun run = finish();
        EXPECT_EQ(run.status, 0) << count;
        EXPECT_EQ(run.output, wholeFrames(bytesOf(source))) << count;
        EXPECT_EQ(run.errors, QByteArray());
    }
}

TEST_F(DummyRedbook, losesNothing_whenTheReaderLooksAtTheProcessBeforeThePipe)
{
    const Samples source = noise(100000);
    const QByteArray fifo = tree.makeFifo("fifo");
    start({tree.makeFile("a.wav", waveFile(source)), fifo, "dummyNotification"});
    const UniqueDescriptor pipe = openForReading(fifo);
    ASSERT_TRUE(pipe);
    QByteArray got;
    std::array<char, frameSize * 10> buffer;
    // Slow at the end, when all that is left lies in the pipe and the writer has nothing more to do.
    while (process->isRunning()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(got.size() > 200000 ? 30 : 1));
        const ssize_t count = ::read(pipe.get(), buffer.data(), buffer.size());
        ASSERT_GE(count, 0);
        if (count == 0)
            break;
        got.append(buffer.data(), count);
    }
    EXPECT_EQ(got, wholeFrames(bytesOf(source)));
    EXPECT_EQ(finish().status, 0);
}

TEST_F(DummyRedbook, endsQuietly_whenItsReaderGoes)
{
    const QByteArray wave = tree.makeFile("a.wav", waveFile(noise(2000000)));
    const QByteArray fifo = tree.makeFifo("fifo");
    start({wave, fifo});
    UniqueDescriptor pipe = openForReading(fifo);
    std::array<char, 10000> buffer;
    ASSERT_GT(::read(pipe.get(), buffer.data(), buffer.size()), 0);
    pipe.reset();
    const ProgramRun run = finish();
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.errors, QByteArray());
}

TEST_F(DummyRedbook, endsQuietly_whenItsReaderGoesWithBytesLeftInThePipe)
{
    const QByteArray fifo = tree.makeFifo("fifo");
    const QByteArray wave = waveFile(noise(2000));
    start({tree.makeFile("a.wav", wave), fifo});
    UniqueDescriptor pipe = openForReading(fifo);
    ASSERT_TRUE(becomesTrue([&pipe] { return bytesWaitingIn(pipe) == 4 * frameSize; })) << "it has written all";
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_TRUE(process->isRunning()) << "the bytes are still in the pipe";
    pipe.reset();
    EXPECT_EQ(finish().status, 4);
}

TEST_F(DummyRedbook, endsQuietly_whenItInheritedTheReadEnd)
{
    const QByteArray fifo = tree.makeFifo("fifo");
    // Without O_CLOEXEC, as a program would open it that does not think of its children.
    UniqueDescriptor pipe(::open(fifo.constData(), O_RDONLY | O_NONBLOCK));
    start({tree.makeFile("a.wav", waveFile(noise(2000000))), fifo});
    ASSERT_TRUE(becomesTrue([&pipe] { return bytesWaitingIn(pipe) > 0; })) << "it writes";
    pipe.reset();
    EXPECT_EQ(finish().status, 4) << "while it holds the read end itself, it never would";
}

TEST_F(DummyRedbook, failsAndClosesThePipe_whenTheSourceCannotBeDecoded)
{
    const QByteArray fifo = tree.makeFifo("fifo");
    for (const QByteArray &source : {tree.path("missing.wav"), tree.makeFile("a.txt", "text"),
                                     tree.makeFile("empty.wav"), tree.path(), tree.makeFifo("other")}) {
        start({source, fifo, "dummyNotification"});
        const UniqueDescriptor pipe = openForReading(fifo);
        EXPECT_EQ(readAll(pipe.get()), QByteArray());
        const ProgramRun run = finish();
        EXPECT_EQ(run.status, 1);
        EXPECT_FALSE(run.errors.isEmpty()) << source.constData();
    }
}

TEST_F(DummyRedbook, refusesToWriteAnywhereElseThanIntoAFifo)
{
    const QByteArray wave = tree.makeFile("a.wav", waveFile(noise(1000)));
    const QByteArray file = tree.makeFile("precious", "contents");
    for (const QByteArray &target : {file, tree.path("missing"), tree.path()}) {
        start({wave, target});
        const ProgramRun run = finish();
        EXPECT_EQ(run.status, 1) << target.constData();
        EXPECT_FALSE(run.errors.isEmpty());
    }
    EXPECT_EQ(tree.contents("precious"), "contents");
    EXPECT_FALSE(tree.exists("missing"));
    start({wave});
    EXPECT_EQ(finish().status, 2);
}

TEST_F(DummyRedbook, saysDamageWithItsExitStatus_andKeepsTheLength)
{
    tree.makeFile("a.wav", waveFile(noise(100000)));
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.flac"));
    QByteArray flac = tree.contents("a.flac");
    flac[flac.size() / 2] = char(flac[flac.size() / 2] ^ 1);
    start({tree.makeFile("bent.flac", flac), "-"});
    const ProgramRun run = finish();
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.output.size(), (100000 + 587) / 588 * frameSize);
    EXPECT_TRUE(run.errors.contains("could not be decoded"));
}

TEST_F(DummyRedbook, postsRisingProgressThatEndsAtOne)
{
    const PrivateBus bus;
    std::vector<double> posted;
    QObject context;
    const QString name = QStringLiteral("dummyNotification");
    ASSERT_FALSE(NSDistributedNotificationCenter::defaultCenter().addObserver(
        &context, name, {}, [&](const NSDistributedNotification &one) {
            posted.push_back(one.userInfo.value(QStringLiteral("progress")).toDouble());
        }));
    const QByteArray fifo = tree.makeFifo("fifo");
    start({tree.makeFile("a.wav", waveFile(noise(1500000))), fifo, "dummyNotification"});
    std::thread reader([&] {
        const UniqueDescriptor pipe = openForReading(fifo);
        std::array<char, 200000> buffer;
        while (::read(pipe.get(), buffer.data(), buffer.size()) > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    });
    EXPECT_TRUE(runEventLoopUntil([&] { return !posted.empty() && posted.back() == 1; }));
    reader.join();
    EXPECT_EQ(finish().status, 0);
    EXPECT_GE(posted.size(), 3u);
    EXPECT_TRUE(std::is_sorted(posted.begin(), posted.end()));
    EXPECT_GT(posted.front(), 0);
    EXPECT_EQ(std::count(posted.begin(), posted.end(), 1), 1);
}

TEST_F(DummyRedbook, isNotHeldUp_byABusThatDoesNotAnswer)
{
    const QByteArray path = tree.path("bus");
    const UniqueDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(std::size_t(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener.get(), 5), 0);
    const Samples source = noise(100000);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
    QElapsedTimer timer;
    timer.start();
    start({tree.makeFile("a.wav", waveFile(source)), "-", "dummyNotification"});
    const ProgramRun run = finish();
    EXPECT_EQ(run.status, 0);
    EXPECT_LT(timer.elapsed(), 5000);
    EXPECT_EQ(run.output, wholeFrames(bytesOf(source)));
}

TEST_F(DummyRedbook, endsWithItsStarter_whenNoProgramEverReads)
{
    const QByteArray fifo = tree.makeFifo("fifo");
    const QByteArray wave = tree.makeFile("a.wav", waveFile(noise(1000)));
    // A shell that starts it in the background, says its number, and ends when it is told.
    UniqueDescriptor numbers, fromShell, toShell, orders;
    makePipe(&numbers, &fromShell);
    makePipe(&orders, &toShell);
    RunningProgram shell("sh", {"-c", program() + ' ' + wave + ' ' + fifo + " >/dev/null 2>&1 & echo $!; read line"},
                         {orders.get(), fromShell.get()});
    std::array<char, 30> line;
    const ssize_t length = ::read(numbers.get(), line.data(), line.size());
    ASSERT_GT(length, 0);
    const QByteArray number = QByteArray(line.data(), length).trimmed();
    ASSERT_GT(number.toInt(), 0);
    // While it waits for a reader it knows its starter.
    EXPECT_TRUE(becomesTrue([&number] { return waitsIn(number, "DummyRedbook"); }));
    EXPECT_EQ(::kill(number.toInt(), 0), 0) << "it waits as long as its starter lives";
    ASSERT_EQ(::write(toShell.get(), "end\n", 4), 4);
    EXPECT_EQ(shell.finish().status, 0);
    EXPECT_TRUE(becomesTrue([&number] { return ::kill(number.toInt(), 0) != 0; }));
}

TEST_F(DummyRedbook, tellsEachSystemCallThatFails)
{
    tree.makeFile("a.wav", waveFile(noise(200000)));
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.mp3"));
    const QByteArray path = tree.path("a.mp3");
    const UniqueDescriptor nothing(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    for (const char *injection : {"pread64:error=EIO:when=1", "pread64:error=EIO:when=2", "pread64:error=EIO:when=3",
                                  "pread64:error=EIO:when=2+", "write:error=ENOSPC:when=1", "write:error=EIO:when=3"}) {
        const QByteArray of = QByteArray(injection).startsWith("write") ? QByteArray("/dev/null") : path;
        RunningProgram strace(
            "strace",
            {"-f", "-qq", "-o", "/dev/null", "-P", of, "-e", QByteArray("inject=") + injection, program(), path, "-"},
            {-1, nothing.get()});
        const ProgramRun run = strace.finish();
        EXPECT_EQ(run.status, 1) << injection;
        EXPECT_TRUE(run.errors.startsWith("DummyRedbook: ")) << injection;
    }
}
