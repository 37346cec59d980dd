// The program for the desktop: files go in by dropping them, discs and images come out.
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
                          "Opens a project, or puts files and folders onto a new disc.\n"
                          "  --help      show this text\n"
                          "  --version   show the version\n";

/// The files among the arguments; absent when there is nothing to show in a window, and `*status` is that of the
/// program then. Paths are bytes: Qt's own list of arguments would lose those that are no text.
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

    int status = 0;
    const std::optional<QList<QByteArray>> files = filesIn({argv + 1, argv + argc}, &status);
    if (!files)
        return status;
    MainWindow window;
    window.show();
    window.openFiles(*files);
    status = QApplication::exec();
    window.letGo();
    removeUnfinishedFiles();
    return status;
}
