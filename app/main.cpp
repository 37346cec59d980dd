// The program for the desktop: files go in by dropping them, discs and images come out.
#include "app/MainWindow.h"
#include "app/Translations.h"

#include <TessaronClasses/UnfinishedFiles.h>

#include <QApplication>
#include <QLocale>

#include <csignal>
#include <cstdlib>

using namespace Tessaron::Desktop;

int main(int argc, char **argv)
{
    // Paths are bytes: Qt's own list of arguments would lose those that are no text.
    const std::vector<QByteArray> arguments(argv + 1, argv + argc);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tessaron-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tessaron"));
    QApplication::setOrganizationName(QStringLiteral("Tessaron"));
    QApplication::setApplicationVersion(QStringLiteral(TESSARON_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.tessaron.Desktop"));
    std::signal(SIGPIPE, SIG_IGN);
    installTranslations(application, QLocale());

    MainWindow window;
    window.show();
    QList<QByteArray> files;
    for (const QByteArray &argument : arguments) {
        if (!argument.startsWith('-'))
            files << argument;
    }
    window.openFiles(files);
    const int status = QApplication::exec();
    window.letGo();
    Tessaron::removeUnfinishedFiles();
    return status;
}
