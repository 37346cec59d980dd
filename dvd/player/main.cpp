#include "dvd/player/DiscPlayback.h"
#include "dvd/player/PlayerTexts.h"
#include "dvd/player/PlayerWindow.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PrintableText.h"
#include "platform/foundation/SignalWatcher.h"

#include <QApplication>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unistd.h>

using namespace Tessaron;

namespace
{

// The statuses of the command tessaron, whose place this program takes.
constexpr int statusFailed = 1;
constexpr int statusWrongUsage = 2;
constexpr int statusInterrupted = 130;

/// A disc that opens sooner never shows an empty window.
constexpr std::chrono::milliseconds patienceWithOpening(500);
/// A drive that does not answer must not hold up the end.
constexpr std::chrono::milliseconds patienceWithEnd(2'000);

struct Options {
    PlaybackStart start;
    QByteArray path;
};

/// "--title N", "--chapter N", then "--" and the path: the command passes nothing else.
std::optional<Options> optionsOf(int argc, char **argv)
{
    Options options;
    int next = 1;
    for (; next + 1 < argc && QByteArray(argv[next]) != "--"; next += 2) {
        bool isNumber = false;
        const std::uint16_t number = QByteArray(argv[next + 1]).toUShort(&isNumber);
        const QByteArray name = argv[next];
        if (!isNumber || number == 0 || (name != "--title" && name != "--chapter"))
            return std::nullopt;
        if (name == "--title")
            options.start.title = number;
        else
            options.start.chapter = number;
    }
    if (next + 2 != argc || QByteArray(argv[next]) != "--")
        return std::nullopt;
    options.path = argv[next + 1];
    return options;
}

void printDiagnostic(const QString &text)
{
    std::fprintf(stderr, "tessaron: %s\n", printable(text).constData());
}

/// While the connection to the display is made: Qt would end the program by abort() where it cannot be.
void hearQtBeforeDisplay(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text)
{
    static QString whyNot;
    if (type == QtWarningMsg && whyNot.isEmpty())
        whyNot = text.trimmed();
    if (type != QtFatalMsg)
        return;
    printDiagnostic(QStringLiteral("no window can be shown: %1").arg(whyNot.isEmpty() ? text.trimmed() : whyNot));
    ::_exit(statusFailed);
}

std::atomic<bool> isOpening = true;
QtMessageHandler usualHandler = nullptr;

/// What the session logs is a line like any other of the command's; but why a disc cannot be opened is said with its
/// path. On any thread.
void hearLog(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const QLatin1String session("DVD playback: ");
    if (!text.startsWith(session))
        usualHandler(type, context, text);
    else if (!isOpening)
        printDiagnostic(text.mid(session.size()));
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

QByteArray absolutePath(const QByteArray &path)
{
    char *const resolved = ::realpath(path.constData(), nullptr);
    QByteArray result = resolved ? QByteArray(resolved) : path;
    std::free(resolved);
    return result;
}

/// Leaves without waiting for a call that a drive does not answer: the helper process ends by itself.
int endWith(int status, DiscPlayback *playback)
{
    const auto deadline = std::chrono::steady_clock::now() + patienceWithEnd;
    while (playback->isBusy() && std::chrono::steady_clock::now() < deadline)
        ::usleep(10'000);
    if (playback->isBusy())
        ::_exit(status);
    playback->close();
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    const std::optional<Options> options = optionsOf(argc, argv);
    if (!options) {
        printDiagnostic(QStringLiteral("this program is started by 'tessaron dvd --play PATH'"));
        return statusWrongUsage;
    }
    if (!hasDisplay()) {
        printDiagnostic(QStringLiteral("there is no display to show a window on"));
        return statusFailed;
    }
    int onlyName = 1; // Qt has options of its own, which are not ours
    usualHandler = qInstallMessageHandler(hearQtBeforeDisplay);
    QApplication application(onlyName, argv);
    qInstallMessageHandler(hearLog);
    QApplication::setApplicationName(QStringLiteral("tessaron"));
    QApplication::setQuitOnLastWindowClosed(false);
    int status = EXIT_SUCCESS;
    const SignalWatcher ends([&] {
        status = statusInterrupted;
        QApplication::quit();
    });

    DiscPlayback playback;
    PlayerWindow window(&playback);
    window.setWindowTitle(stringWithFileSystemRepresentation(lastComponent(options->path)));
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, &QTimer::timeout, &window, [&] {
        if (window.isVisible())
            return;
        window.showMessage(playerText("The disc is being opened"));
        window.show();
    });
    QObject::connect(&window, &PlayerWindow::closed, &application, &QApplication::quit);
    QObject::connect(&playback, &DiscPlayback::opened, &window, [&] {
        isOpening = false;
        if (!playback.disc().volumeName.isEmpty())
            window.setWindowTitle(playback.disc().volumeName);
        window.show();
    });
    QObject::connect(&playback, &DiscPlayback::failedToOpen, &window, [&](const QString &why) {
        printDiagnostic(QStringLiteral("%1 cannot be played: %2").arg(quoted(options->path), why));
        status = statusFailed;
        QApplication::quit();
    });
    QObject::connect(&playback, &DiscPlayback::failed, &window, [&](const QString &why) {
        printDiagnostic(why);
        status = statusFailed;
    });
    QObject::connect(&playback, &DiscPlayback::placeLost, &window, [&](const QString &path) {
        printDiagnostic(QStringLiteral("%1 cannot be written: the disc's place is not kept")
                            .arg(quoted(fileSystemRepresentation(path))));
    });
    patience.start(patienceWithOpening);
    playback.open(absolutePath(options->path), options->start);
    QApplication::exec();
    window.hide();
    return endWith(status, &playback);
}
