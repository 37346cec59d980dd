// Takes a picture of the program's window with some files on a disc, for the documents.
//
//     desktop_pictures PICTURE.png [--dark] [--language CODE] [FILE...]
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/DiscTreeView.h"
#include "app/MainWindow.h"
#include "app/Translations.h"

#include <QApplication>
#include <QLocale>
#include <QPalette>
#include <QStandardPaths>
#include <QStyleFactory>

#include <cstdio>

using namespace Tessaron::Desktop;

namespace
{

QPalette darkPalette()
{
    const QColor window(42, 44, 48);
    const QColor base(30, 31, 34);
    const QColor text(230, 230, 230);
    QPalette palette(window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(36, 37, 41));
    palette.setColor(QPalette::ToolTipBase, QColor(58, 62, 70));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText, QPalette::HighlightedText})
        palette.setColor(role, text);
    palette.setColor(QPalette::PlaceholderText, QColor(160, 160, 165));
    palette.setColor(QPalette::Highlight, QColor(61, 120, 190));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 125));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 120, 125));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 120, 125));
    return palette;
}

void takePicture(MainWindow &window, const QString &path)
{
    DataView &view = window.dataPanel().dataView();
    view.tree().expandAll();
    QApplication::processEvents();
    if (!window.grab().save(path))
        std::fprintf(stderr, "desktop_pictures: %s cannot be written\n", qPrintable(path));
    QApplication::exit(0);
}

} // namespace

int main(int argc, char **argv)
{
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("desktop-pictures"));
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty())
        return 2;
    const QString path = arguments.takeFirst();
    if (arguments.removeAll(QStringLiteral("--dark")) > 0)
        QApplication::setPalette(darkPalette());
    QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    if (const qsizetype place = arguments.indexOf(QStringLiteral("--language")); place >= 0) {
        locale = QLocale(arguments.value(place + 1));
        arguments.remove(place, 2);
    }
    QLocale::setDefault(locale);
    installTranslations(application, locale);
    QList<QByteArray> files;
    for (const QString &file : arguments)
        files << file.toUtf8();

    MainWindow window;
    window.resize(900, 560);
    window.show();
    SourceIntake &intake = window.dataPanel().dataView().intake();
    QObject::connect(&intake, &SourceIntake::finished, &window, [&] { takePicture(window, path); });
    if (files.isEmpty())
        takePicture(window, path);
    window.openFiles(files);
    return files.isEmpty() ? 0 : QApplication::exec();
}
