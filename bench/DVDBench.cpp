// Plays a title of a disc as a player with a window would, without drawing: dvd_bench FOLDER SECONDS. Prints a line of
// JSON: milliseconds from opening, and from asking for the title, to the first picture; pictures that came, and those
// that were due; the processor time of all processes, in percent of the time that passed; the memory of the helper
// after a sixth of the time and at the end, in kibibytes.

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/dvdplayback/DVDVideoFrames.h"

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/resource.h>
#include <thread>

using namespace Tessaron;
using Clock = std::chrono::steady_clock;

namespace
{

long residentKibibytes(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:"))
            return std::atol(line.c_str() + 6);
    }
    return -1;
}

double secondsOfProcessors(int whose)
{
    struct rusage usage {
    };
    ::getrusage(whose, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

std::atomic<int> framesHeard = 0;

} // namespace

int main(int argc, char **arguments)
{
    const QCoreApplication application(argc, arguments);
    const int seconds = argc == 3 ? std::atoi(arguments[2]) : 0;
    FSRef folder;
    if (seconds < 6 || FSPathMakeRef(arguments[1], &folder, nullptr) != noErr || DVDInitialize() != noErr) {
        std::fputs("usage: dvd_bench FOLDER SECONDS (6 at least)\n", stderr);
        return 2;
    }
    setDVDFrameHearer([] {
        ++framesHeard;
        framesHeard.notify_all();
    });
    const Clock::time_point opened = Clock::now();
    if (DVDOpenMediaFile(&folder) != noErr)
        return 1;
    const Clock::time_point asked = Clock::now();
    if (DVDSetChapter(1, 1) != noErr)
        return 1;
    framesHeard.wait(0);
    const double fromOpening = millisecondsSince(opened), fromAsking = millisecondsSince(asked);
    const pid_t helper = DVDSession::instance().helperProcess();
    // Counted from a second later, when all runs evenly.
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const int before = framesHeard;
    const Clock::time_point begin = Clock::now();
    QImage picture;
    long early = 0;
    for (int left = seconds * 50; left > 0; --left) {
        std::this_thread::sleep_until(begin + std::chrono::milliseconds(20) * (seconds * 50 - left + 1));
        static_cast<void>(takeDVDFrame(&picture));
        if (left == seconds * 50 * 5 / 6)
            early = residentKibibytes(helper);
    }
    const int heard = framesHeard - before;
    std::int16_t ratio = 0;
    DVDGetAspectRatio(&ratio);
    std::uint16_t width = 0, height = 0;
    DVDGetNativeVideoSize(&width, &height);
    const double due = seconds * (height == 576 ? 25.0 : 30'000.0 / 1001);
    const long late = residentKibibytes(helper);
    const double wall = millisecondsSince(opened) / 1000;
    DVDDispose();
    const double processors = secondsOfProcessors(RUSAGE_SELF) + secondsOfProcessors(RUSAGE_CHILDREN);
    std::printf("{\"first_from_open_ms\": %.1f, \"first_from_play_ms\": %.1f, \"frames\": %d, \"frames_due\": %.1f, "
                "\"cpu_percent\": %.2f, \"helper_kib_early\": %ld, \"helper_kib_late\": %ld}\n",
                fromOpening, fromAsking, heard, due, 100 * processors / wall, early, late);
    return 0;
}
