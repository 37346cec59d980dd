// Measures what people feel of a large disc in the program for the desktop: how long it takes from the end of the scan
// until the tree is shown, how much memory it takes, and how long its frames take while it scrolls.
//
//     QT_QPA_PLATFORM=offscreen desktop_bench FOLDER
//
// Prints a figure a line: bytes, milliseconds, and frames that took longer than 16 ms.
#include "app/DataView.h"
#include "app/DiscTreeView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace Tessaron::Desktop;

namespace
{

constexpr double millisecond = 1e6; // nanoseconds

/// From one step of the scroll bar to its picture.
std::vector<double> framesWhileScrolling(DataView &view, int steps)
{
    QScrollBar &bar = *view.tree().verticalScrollBar();
    std::vector<double> frames;
    for (int step = 0; step < steps; ++step) {
        QElapsedTimer clock;
        clock.start();
        bar.setValue(int(qint64(bar.maximum()) * step / steps));
        view.tree().viewport()->repaint();
        frames.push_back(double(clock.nsecsElapsed()) / millisecond);
    }
    return frames;
}

/// What this process holds in memory, in bytes.
double memory()
{
    long pages = 0;
    if (std::FILE *const file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%*s %ld", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return double(pages) * double(::sysconf(_SC_PAGESIZE));
}

void tell(const char *what, double value)
{
    std::printf("%-28s %10.1f\n", what, value);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: desktop_bench FOLDER\n");
        return 2;
    }
    DiscDocument document;
    DataView view(document);
    view.resize(1000, 700);
    view.show();
    QElapsedTimer clock;
    QEventLoop waiting;
    double described = 0;
    // The view puts what was found into the tree before this program hears of the end.
    QObject::connect(&document.model(), &QAbstractItemModel::rowsAboutToBeInserted, &waiting,
                     [&] { described = double(clock.nsecsElapsed()) / millisecond; });
    QObject::connect(&view.intake(), &SourceIntake::finished, &waiting, &QEventLoop::quit);
    view.repaint();
    const double before = memory();
    clock.start();
    view.addPaths({argv[1]});
    waiting.exec();
    view.tree().expandToDepth(1);
    view.tree().viewport()->repaint();
    const double shown = double(clock.nsecsElapsed()) / millisecond;
    constexpr int steps = 500;
    std::vector<double> frames = framesWhileScrolling(view, steps);
    std::sort(frames.begin(), frames.end());
    const double objects = double(document.model().root().objects);
    tell("objects", objects);
    tell("memory, bytes an object", (memory() - before) / objects);
    tell("scanned and described, ms", described);
    tell("then shown, ms", shown - described);
    tell("frame, median, ms", frames[frames.size() / 2]);
    tell("frame, worst, ms", frames.back());
    tell("frames above 16 ms", double(frames.end() - std::upper_bound(frames.begin(), frames.end(), 16.0)));
    return 0;
}
