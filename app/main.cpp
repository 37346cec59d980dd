// The program for the desktop: files go in by dropping them, discs and images come out.
#include "app/ApplicationService.h"
#include "app/ContextMenuKey.h"
#include "app/DesktopNotifier.h"
#include "app/MainWindow.h"
#include "app/Translations.h"

#include <TessaronClasses/UnfinishedFiles.h>

#include <QApplication>
#include <QDir>
#include <QLocale>

#include <csignal>
#include <cstdio>
#include <optional>
#include <platform/foundation/FileSystemRepresentation.h>
#include <vector>

using namespace Tessaron;
using namespace Tessaron::Desktop;

namespace
{

constexpr int wrongUsage = 2;
const char *const usage = "usage: tessaron-desktop [--] [FILE...]\n"
                          "\n"
                          "Opens a project or an image, or puts files and folders onto a new disc; in the window that\n"
                          "is open already, where there is one.\n"
                          "  --help      show this text\n"
                          "  --version   show the version\n";

/// The files among the arguments; absent when there is nothing to show in a window, and `*status` is that of the
/// program then. Paths are bytes: Qt's own list of arguments would lose those that are not text.
std::optional<QList<QByteArray>> filesIn(const std::vector<QByteArray> &arguments, int *status)
{
    QList<QByteArray> files;
    bool areOptionsOver = false;
    for (const QByteArray &argument : arguments) {
        if (areOptionsOver || !argument.startsWith('-')) {
            // The list of recent projects outlives the working folder.
            files << fileSystemRepresentation(QDir().absoluteFilePath(stringWithFileSystemRepresentation(argument)));
        } else if (argument == "--") {
            areOptionsOver = true;
        } else {
            std::fprintf(stderr, "tessaron-desktop: there is no option %s\n%s", argument.constData(), usage);
            *status = wrongUsage;
            return std::nullopt;
        }
    }
    return files;
}

/// What needs no window, and no display. True when there was such an option.
bool hasTold(const std::vector<QByteArray> &arguments)
{
    for (const QByteArray &argument : arguments) {
        if (argument == "--")
            return false;
        if (argument == "--help" || argument == "-h")
            return std::fputs(usage, stdout) >= 0;
        if (argument == "--version")
            return std::puts("tessaron-desktop " TESSARON_VERSION) >= 0;
    }
    return false;
}

/// Wayland asks for leave to come in front; Qt takes it from the environment.
void bringToFront(QWidget &window, const QByteArray &token)
{
    if (!token.isEmpty() && QGuiApplication::platformName().startsWith(QStringLiteral("wayland")))
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

int main(int argc, char **argv)
{
    if (hasTold({argv + 1, argv + argc}))
        return 0;
    QApplication application(argc, argv); // takes out the options that are Qt's
    QApplication::setApplicationName(QStringLiteral("tessaron-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tessaron"));
    QApplication::setOrganizationName(QStringLiteral("Tessaron"));
    QApplication::setApplicationVersion(QStringLiteral(TESSARON_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.tessaron.Desktop"));
    std::signal(SIGPIPE, SIG_IGN);
    installTranslations(application, QLocale());
    ContextMenuKey contextMenuKey;
    application.installEventFilter(&contextMenuKey);

    int status = 0;
    const std::optional<QList<QByteArray>> files = filesIn({argv + 1, argv + argc}, &status);
    if (!files)
        return status;
    // One process has the program's projects; a second start is a wish to see the first, or to give it files.
    ApplicationService service;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!service.take(bus) && ApplicationService::handOver(bus, *files))
        return 0;
    MainWindow window;
    DesktopNotifier notifier(window, bus);
    QObject::connect(&window, &MainWindow::jobEnded, &notifier, &DesktopNotifier::tellOf);
    QObject::connect(&notifier, &DesktopNotifier::chosen, &window, [&window] { bringToFront(window, {}); });
    QObject::connect(&service, &ApplicationService::activated, &window,
                     [&window](const QByteArray &token) { bringToFront(window, token); });
    QObject::connect(&service, &ApplicationService::filesGiven, &window, &MainWindow::openFiles);
    window.show();
    window.openFiles(*files);
    status = QApplication::exec();
    window.letGo();
    removeUnfinishedFiles();
    return status;
}
