// Takes a picture of the program's window with some files on a disc, for the documents; of the panel for audio CDs, for
// images or for video DVDs, of the dialog that asks for a drive, with "/dev/sr0" as the drive, or of the one that
// splits a disc.
//
//     desktop_pictures PICTURE.png [--dark] [--language CODE] [--audio | --image | --video | --burn | --split]
//     [FILE...]
#include "app/AudioPanel.h"
#include "app/AudioTextDialog.h"
#include "app/BurnDialog.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/DiscTreeView.h"
#include "app/ImagePanel.h"
#include "app/MainWindow.h"
#include "app/SplitDialog.h"
#include "app/Translations.h"
#include "app/VideoPanel.h"

#include <QApplication>
#include <QLocale>
#include <QPalette>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTimer>

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

void takePicture(QWidget &window, const QString &path)
{
    QApplication::processEvents();
    if (!window.grab().save(path))
        std::fprintf(stderr, "desktop_pictures: %s cannot be written\n", qPrintable(path));
    QApplication::exit(0);
}

/// What has to be there before the picture is taken.
bool isReady(MainWindow &window, const BurnDialog *dialog)
{
    if (dialog)
        return !dialog->isBusy();
    DataView &view = window.dataPanel().dataView();
    return !window.audioPanel().isLooking() && !window.audioPanel().waveforms().isWorking()
        && !window.imagePanel().isLooking() && !window.videoPanel().isLooking() && !view.intake().isRunning()
        && (view.preview().isCurrent() || window.dataPanel().document().model().root().children.empty());
}

std::unique_ptr<BurnDialog> dialogOf(MainWindow &window)
{
    Tessaron::DriveFacts facts;
    facts.drive.path = "/dev/sr0";
    facts.drive.vendor = QStringLiteral("Example");
    facts.drive.product = QStringLiteral("Writer");
    auto dialog = std::make_unique<BurnDialog>(*window.dataPanel().burnSubject(), &window);
    dialog->show();
    dialog->showDrives({facts});
    return dialog;
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
    const auto isWanted = [&arguments](const char *option) {
        return arguments.removeAll(QString::fromLatin1(option)) > 0;
    };
    if (isWanted("--dark"))
        QApplication::setPalette(darkPalette());
    QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    if (const qsizetype place = arguments.indexOf(QStringLiteral("--language")); place >= 0) {
        locale = QLocale(arguments.value(place + 1));
        arguments.remove(place, 2);
    }
    QLocale::setDefault(locale);
    installTranslations(application, locale);
    MainWindow window;
    window.resize(900, 560);
    window.show();
    if (isWanted("--audio"))
        window.showPanel(1);
    if (isWanted("--image"))
        window.showPanel(2);
    if (isWanted("--video"))
        window.showPanel(3);
    const bool isOfDialog = isWanted("--burn");
    const bool isOfTexts = isWanted("--texts");
    const bool isOfSplitting = isWanted("--split");
    QList<QByteArray> files;
    for (const QString &file : std::as_const(arguments))
        files << file.toUtf8();
    window.openFiles(files);
    std::unique_ptr<BurnDialog> dialog;
    SplitDialog *splitting = nullptr;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &window, [&] {
        if (!isReady(window, dialog.get()) || (splitting && splitting->isWorking()))
            return;
        if (isOfSplitting && !splitting) {
            splitting = window.dataPanel().splitDisc();
            return;
        }
        if (isOfDialog && !dialog) {
            dialog = dialogOf(window);
            return;
        }
        timer.stop();
        if (isOfTexts) {
            AudioTextDialog texts(window.audioPanel().tracks().disc(), &window);
            texts.show();
            takePicture(texts, path);
            return;
        }
        window.dataPanel().dataView().tree().expandAll();
        takePicture(dialog          ? static_cast<QWidget &>(*dialog)
                        : splitting ? static_cast<QWidget &>(*splitting)
                                    : window,
                    path);
    });
    timer.start(50);
    return QApplication::exec();
}
