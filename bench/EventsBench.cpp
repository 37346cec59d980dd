// A storm of changes in many folders, and what a stream of events tells of it:
//   events_bench fanotify|inotify|none FOLDER FOLDERS CHANGES
// Another process makes files in folders of the new folder FOLDER, one after the other and as fast as it can. Printed
// are the seconds that this takes, those until the last of it is told, how many events tell it, how many of these stand
// for changes that are not told one by one, and by how much the process grew at most. Fails when a folder in which
// something changed is told by no event. With "none" nothing listens: the same storm for comparison.

#include "platform/fileevents/FSEventStream.h"
#include "platform/fileevents/FileEventSource.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tessaron;

namespace
{

using Clock = std::chrono::steady_clock;

struct Told {
    std::set<std::string> folders;
    std::uint64_t events = 0;
    std::uint64_t inPlaceOfOthers = 0;
    bool isAllToBeScanned = false; ///< an event of the whole folder came since the storm began
    std::string root;
    Clock::time_point last;
};

void hear(ConstFSEventStreamRef /*stream*/, void *info, std::size_t count, void *eventPaths,
          const FSEventStreamEventFlags *flags, const FSEventStreamEventId * /*identifiers*/)
{
    auto &told = *static_cast<Told *>(info);
    const auto *const paths = static_cast<const char *const *>(eventPaths);
    for (std::size_t index = 0; index < count; ++index) {
        ++told.events;
        told.folders.insert(paths[index]);
        if ((flags[index] & kFSEventStreamEventFlagMustScanSubDirs) == 0)
            continue;
        ++told.inPlaceOfOthers;
        told.isAllToBeScanned = told.isAllToBeScanned || told.root == paths[index];
    }
    told.last = Clock::now();
}

std::string folderNamed(const std::string &root, unsigned long number)
{
    return root + "/" + std::to_string(number) + "/";
}

/// In a process of its own, so that its work is not that of the listener.
int makeChanges(const std::string &root, unsigned long folders, unsigned long changes, int done)
{
    const Clock::time_point begin = Clock::now();
    for (unsigned long change = 0; change < changes; ++change) {
        const std::string path = folderNamed(root, change % folders) + std::to_string(change);
        const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        if (file < 0)
            return 1;
        ::close(file);
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return ::write(done, &seconds, sizeof seconds) == sizeof seconds ? 0 : 1;
}

long peakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void runEventLoop(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(time);
    loop.exec();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 5) {
        std::fputs("usage: events_bench fanotify|inotify|none FOLDER FOLDERS CHANGES\n", stderr);
        return 2;
    }
    const std::string service = argv[1];
    const unsigned long folders = std::strtoul(argv[3], nullptr, 10);
    const unsigned long changes = std::strtoul(argv[4], nullptr, 10);
    if (folders == 0 || ::mkdir(argv[2], 0755) != 0) {
        std::perror(argv[2]);
        return 1;
    }
    char *const real = ::realpath(argv[2], nullptr);
    const std::string root = real;
    std::free(real);
    for (unsigned long folder = 0; folder < folders; ++folder)
        ::mkdir(folderNamed(root, folder).c_str(), 0755);

    Told told;
    told.root = root + "/";
    const auto stream =
        FSEventStream::create(hear, {&told, {}}, {QByteArray::fromStdString(root)}, kFSEventStreamEventIdSinceNow,
                              std::chrono::milliseconds(200), kFSEventStreamCreateFlagNone);
    if (service != "none") {
        (*stream)->scheduleWithRunLoop();
        const NSError error =
            (*stream)->start([&service] { return service == "fanotify" ? makeFanotifySource() : makeInotifySource(); });
        if (error) {
            std::fprintf(stderr, "events_bench: %s\n", qPrintable(error.localizedDescription()));
            return 1;
        }
        while (service == "inotify" && !told.isAllToBeScanned) // until all watches are set
            runEventLoop(std::chrono::milliseconds(50));
    }
    told.folders.clear();
    told.events = told.inPlaceOfOthers = 0;
    told.isAllToBeScanned = false;
    const long before = peakMemory();
    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return 1;
    const Clock::time_point begin = Clock::now();
    told.last = begin;
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(makeChanges(root, folders, changes, ends[1]));
    int status = -1;
    while (::waitpid(child, &status, WNOHANG) == 0)
        runEventLoop(std::chrono::milliseconds(20));
    double storm = 0;
    if (status != 0 || ::read(ends[0], &storm, sizeof storm) != sizeof storm)
        return 1;
    runEventLoop(std::chrono::seconds(2)); // ten times the latency
    unsigned long missing = 0;
    for (unsigned long folder = 0; service != "none" && folder < folders && folder < changes; ++folder)
        missing += told.isAllToBeScanned || told.folders.contains(folderNamed(root, folder)) ? 0 : 1;
    std::printf("%s: %lu changes in %lu folders, made in %.2f s, told after %.2f s by %llu events (%llu in place of "
                "others), %ld KiB more at most\n",
                service.c_str(), changes, folders, storm, std::chrono::duration<double>(told.last - begin).count(),
                static_cast<unsigned long long>(told.events), static_cast<unsigned long long>(told.inPlaceOfOthers),
                peakMemory() - before);
    if (missing > 0)
        std::fprintf(stderr, "events_bench: %lu folders changed and were not told\n", missing);
    return missing > 0 ? 1 : 0;
}
