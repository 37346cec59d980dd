// Takes a picture of the player's window while it shows a disc, for the documents.
//
//     player_pictures PICTURE.png DISC [--title N] [--chapter N] [--menu BUTTON]
//
// The disc is paused once a second of the title has played; with --menu, the menu of that button is open. Without a
// title the disc's own menu is shown.
#include "dvd/player/ControlBar.h"
#include "dvd/player/DiscPlayback.h"
#include "dvd/player/PlayerWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QToolButton>

#include <algorithm>
#include <cstdio>

using namespace Tessaron;

namespace
{

constexpr std::chrono::milliseconds timeOfPicture(1'000);

/// Menus are windows of their own, which grab() of the player's window leaves out.
QPixmap pictureOf(PlayerWindow &window, const QString &menuButton)
{
    QPixmap picture = window.grab();
    if (const auto *const button = window.findChild<QToolButton *>(menuButton); button && button->menu()) {
        QMenu *const menu = button->menu();
        menu->popup(button->mapToGlobal(QPoint(0, 0)));
        menu->adjustSize();
        QPoint place = button->mapTo(&window, QPoint(0, -menu->height()));
        place.setX(std::min(place.x(), window.width() - menu->width()));
        QPainter(&picture).drawPixmap(place, menu->grab());
        menu->close();
    }
    return picture;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QCommandLineParser parser;
    const QCommandLineOption title(QStringLiteral("title"), {}, QStringLiteral("N"));
    const QCommandLineOption chapter(QStringLiteral("chapter"), {}, QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption menu(QStringLiteral("menu"), {}, QStringLiteral("BUTTON"));
    parser.addOptions({title, chapter, menu});
    parser.process(application);
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 2)
        return 2;

    const QTemporaryDir state;
    DiscPlayback playback{ResumeStore(state.filePath(QStringLiteral("places/")))};
    PlayerWindow window(&playback);
    QObject::connect(&playback, &DiscPlayback::opened, &window, [&] { window.show(); });
    QObject::connect(&playback, &DiscPlayback::failedToOpen, &window, [&](const QString &why) {
        std::fprintf(stderr, "player_pictures: %s\n", qPrintable(why));
        QApplication::exit(1);
    });
    QTimer ready; // what lies over the picture has settled
    ready.setSingleShot(true);
    const auto follow = [&] {
        const PlaybackNow &now = playback.now();
        if (now.state == kDVDStatePlaying && now.title != 0 && now.elapsed >= timeOfPicture)
            playback.pause();
        if (now.state != kDVDStatePaused && now.state != kDVDStatePlayingStill)
            return;
        ready.start(timeOfPicture);
    };
    QObject::connect(&ready, &QTimer::timeout, &window,
                     [&] { QApplication::exit(pictureOf(window, parser.value(menu)).save(paths[0]) ? 0 : 1); });
    QObject::connect(&playback, &DiscPlayback::changed, &window, follow);
    PlaybackStart start;
    if (parser.isSet(title))
        start.title = parser.value(title).toUShort();
    start.chapter = parser.value(chapter).toUShort();
    playback.open(paths[1].toUtf8(), start);
    return QApplication::exec();
}
