#include "platform/dvdplayback/player/Sandbox.h"

#include "platform/foundation/UniqueDescriptor.h"
#include "tests/dvdplayback/DiscFixture.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// What a process that is shut off answers with; the number of the first step that went wrong otherwise.
class Sandbox : public DiscTest
{
protected:
    enum Step {
        AllAsItShould,
        NotShutOff,
        CannotReadDisc,
        CanWrite,
        CanConnect,
        CanFork,
        CanExecute,
        CanTouchProcesses,
        CannotStartThread,
        CanReadElsewhere,
    };

    [[nodiscard]] int statusOfChild(const std::function<int(const DiscPlace &)> &steps) const
    {
        const Result<DiscPlace> place = findDisc(disc());
        EXPECT_TRUE(place);
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(steps(*place));
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    [[nodiscard]] int stepsOfReader(const DiscPlace &place) const
    {
        SandboxFacts facts;
        if (shutOffAllBut(place, &facts))
            return NotShutOff;
        const QByteArray tables = place.path + "/VIDEO_TS.IFO";
        if (!UniqueDescriptor(::open(tables.constData(), O_RDONLY)))
            return CannotReadDisc;
        const QByteArray mine = m_tree.path("mine");
        if (UniqueDescriptor(::open(mine.constData(), O_WRONLY)) || UniqueDescriptor(::open(mine.constData(), O_RDWR))
            || UniqueDescriptor(::open(m_tree.path("new").constData(), O_WRONLY | O_CREAT, 0600))
            || ::unlink(mine.constData()) == 0 || ::mkdir(m_tree.path("made").constData(), 0700) == 0
            || ::rename(mine.constData(), m_tree.path("other").constData()) == 0 || ::truncate(mine.constData(), 0) == 0
            || ::chmod(mine.constData(), 0777) == 0)
            return CanWrite;
        if (UniqueDescriptor(::socket(AF_INET, SOCK_STREAM, 0)) || UniqueDescriptor(::socket(AF_UNIX, SOCK_STREAM, 0))
            || UniqueDescriptor(::socket(AF_NETLINK, SOCK_RAW, 0)))
            return CanConnect;
        if (::fork() >= 0)
            return CanFork;
        ::execl("/bin/true", "true", nullptr);
        if (errno != EPERM)
            return CanExecute;
        if (::kill(::getppid(), 0) == 0)
            return CanTouchProcesses;
        bool hasRun = false;
        std::thread([&] { hasRun = true; }).join();
        if (!hasRun)
            return CannotStartThread;
        if (facts.seesOnlyTheDisc && UniqueDescriptor(::open("/etc/passwd", O_RDONLY)))
            return CanReadElsewhere;
        return AllAsItShould;
    }

    [[nodiscard]] static int stepsOfRunaway(const DiscPlace &place)
    {
        SandboxFacts facts;
        if (shutOffAllBut(place, &facts))
            return NotShutOff;
        // The limit, brought near: as if it had computed nearly so long already.
        const struct itimerval near = {{0, 0}, {0, 50'000}};
        ::setitimer(ITIMER_PROF, &near, nullptr);
        std::atomic<bool> goesOn = true;
        while (goesOn) { }
        return AllAsItShould;
    }
};

TEST_F(Sandbox, process_canReadTheDiscAndNothingElse)
{
    m_tree.makeFile("mine", "contents");
    EXPECT_EQ(statusOfChild([this](const DiscPlace &place) { return stepsOfReader(place); }), AllAsItShould);
    EXPECT_EQ(m_tree.contents("mine"), "contents");
}

TEST_F(Sandbox, process_isEnded_whenItRunsInCircles)
{
    EXPECT_EQ(statusOfChild(stepsOfRunaway), 128 + SIGPROF);
}

} // namespace

} // namespace Tessaron::Testing
