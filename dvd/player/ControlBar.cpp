#include "dvd/player/ControlBar.h"

#include "dvd/player/PlayerSymbols.h"
#include "dvd/player/PlayerTexts.h"
#include "dvd/player/TimeSlider.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include <TessaronClassesUI/PlaybackTime.h>
#include <algorithm>

namespace Tessaron
{

namespace
{

// The bar is dark in every theme, since it lies over a film.
const QColor ground(20, 20, 24, 215);
const QColor ink(240, 240, 240);
const QColor paleInk(240, 240, 240, 90);
const QColor mark(90, 160, 250);

constexpr int symbolSize = 22;
constexpr int margin = 10;
constexpr double cornerRadius = 8;
constexpr int loudest = 255;
constexpr int volumeWidth = 64;

/// A menu that chooses one of several; made anew each time it opens. In the program's own colours rather than in those
/// of the bar.
void addChoices(QMenu *menu, const QStringList &names, int chosen, const std::function<void(int)> &choose)
{
    for (int index = 0; index < names.size(); ++index) {
        QAction *const action = menu->addAction(QString(names[index]).replace(u'&', QStringLiteral("&&")));
        action->setCheckable(true);
        action->setChecked(index == chosen);
        QObject::connect(action, &QAction::triggered, action, [choose, index] { choose(index); });
    }
}

// Buttons and the volume look the same in every style of the desktop, as does the time's slider.

QString buttonStyle()
{
    return QStringLiteral(
               "QToolButton { color: %1; background: transparent; border: none; border-radius: 4px; padding: 2px; }"
               "QToolButton:disabled { color: %2; }"
               "QToolButton:hover { background: rgba(240, 240, 240, 45); }"
               "QToolButton:pressed, QToolButton:open { background: rgba(240, 240, 240, 80); }"
               "QToolButton::menu-indicator { image: none; }")
        .arg(ink.name(), paleInk.name(QColor::HexArgb));
}

QString volumeStyle()
{
    return QStringLiteral(
               "QSlider { height: 22px; }"
               "QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: %1; }"
               "QSlider::sub-page:horizontal { border-radius: 2px; background: %2; }"
               "QSlider::handle:horizontal { width: 11px; margin: -4px 0; border-radius: 5px; background: %3; }")
        .arg(paleInk.name(QColor::HexArgb), mark.name(), ink.name());
}

QPalette barPalette()
{
    QPalette palette;
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
        palette.setColor(role, ink);
        palette.setColor(QPalette::Disabled, role, paleInk);
    }
    palette.setColor(QPalette::Window, QColor(40, 40, 44));
    palette.setColor(QPalette::Button, QColor(60, 60, 66));
    palette.setColor(QPalette::Base, QColor(40, 40, 44));
    palette.setColor(QPalette::Highlight, mark);
    return palette;
}

} // namespace

ControlBar::ControlBar(DiscPlayback *playback, QWidget *parent)
    : QWidget(parent)
    , m_playback(playback)
{
    setPalette(barPalette());
    setMouseTracking(true);
    m_slider = new TimeSlider(this);
    m_slider->setObjectName(QStringLiteral("time"));
    m_time = new PlaybackTime(this);
    m_time->setObjectName(QStringLiteral("elapsed"));
    m_time->setCursor(Qt::PointingHandCursor);
    m_time->setToolTip(playerText("Elapsed or remaining time"));
    m_previous = addButton("previous", "previous", "Previous chapter (Page Up)");
    m_scanBackward = addButton("scanBackward", "scanBackward", "Fast backward (Shift+Left)");
    m_play = addButton("play", "play", "Play or pause (P)");
    m_stop = addButton("stop", "stop", "Stop (X)");
    m_scanForward = addButton("scanForward", "scanForward", "Fast forward (Shift+Right)");
    m_next = addButton("next", "next", "Next chapter (Page Down)");
    m_chapters = addMenuButton("chapters", "", "Titles and chapters", &ControlBar::fillChapters);
    m_chapters->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_menu = addButton("menu", "menu", "Disc menu (D)");
    m_audio = addMenuButton("audio", "language", "Sound (L)", &ControlBar::fillAudio);
    m_subtitles = addMenuButton("subtitles", "subtitles", "Subtitles (S)", &ControlBar::fillSubtitles);
    m_angles = addMenuButton("angles", "angle", "Angle (A)", &ControlBar::fillAngles);
    m_mute = addButton("mute", "sound", "Mute (M)");
    m_fullScreen = addButton("fullScreen", "fullScreen", "Full screen (F)");
    m_volume = new QSlider(Qt::Horizontal, this);
    m_volume->setObjectName(QStringLiteral("volume"));
    m_volume->setRange(0, loudest);
    m_volume->setPageStep((loudest + 1) / 16);
    m_volume->setFixedWidth(volumeWidth);
    m_volume->setStyleSheet(volumeStyle());
    m_volume->setFocusPolicy(Qt::NoFocus);
    m_volume->setToolTip(playerText("Volume (+ and -)"));
    m_volume->setAccessibleName(playerText("Volume"));
    layOut();

    connect(m_slider, &TimeSlider::wanted, m_playback, &DiscPlayback::goToTime);
    connect(m_previous, &QToolButton::clicked, m_playback, [this] { m_playback->stepChapter(-1); });
    connect(m_next, &QToolButton::clicked, m_playback, [this] { m_playback->stepChapter(1); });
    connect(m_scanBackward, &QToolButton::clicked, m_playback, [this] { m_playback->scan(true); });
    connect(m_scanForward, &QToolButton::clicked, m_playback, [this] { m_playback->scan(false); });
    connect(m_play, &QToolButton::clicked, m_playback, [this] { m_playback->playOrPause(); });
    connect(m_stop, &QToolButton::clicked, m_playback, &DiscPlayback::stop);
    connect(m_menu, &QToolButton::clicked, m_playback, &DiscPlayback::toggleMenu);
    connect(m_mute, &QToolButton::clicked, m_playback, [this] { m_playback->setMuted(!m_playback->isMuted()); });
    connect(m_volume, &QSlider::valueChanged, m_playback, &DiscPlayback::setVolume);
    connect(m_fullScreen, &QToolButton::clicked, this, &ControlBar::fullScreenWanted);
    connect(m_playback, &DiscPlayback::changed, this, &ControlBar::follow);
    follow();
}

QToolButton *ControlBar::addButton(const char *name, const char *symbol, const char *text)
{
    auto *const button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));

    button->setFocusPolicy(Qt::NoFocus);
    button->setIconSize(QSize(symbolSize, symbolSize));
    button->setStyleSheet(buttonStyle());
    button->setToolTip(playerText(text));
    button->setAccessibleName(playerText(text));
    setSymbol(button, symbol);
    return button;
}

QToolButton *ControlBar::addMenuButton(const char *name, const char *symbol, const char *text,
                                       void (ControlBar::*fill)(QMenu *))
{
    QToolButton *const button = addButton(name, symbol, text);
    auto *const menu = new QMenu(button);
    menu->setPalette(QPalette());
    m_menus.append(menu);
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    connect(menu, &QMenu::aboutToShow, this, [this, menu, fill] {
        menu->clear();
        (this->*fill)(menu);
    });
    return button;
}

void ControlBar::layOut()
{
    auto *const time = new QHBoxLayout;
    time->addWidget(m_slider);
    time->addWidget(m_time);
    auto *const buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (QToolButton *const button : {m_previous, m_scanBackward, m_play, m_scanForward, m_next, m_stop})
        buttons->addWidget(button);
    buttons->addSpacing(margin);
    buttons->addWidget(m_chapters);
    buttons->addStretch();
    for (QToolButton *const button : {m_menu, m_audio, m_subtitles, m_angles})
        buttons->addWidget(button);
    buttons->addSpacing(margin);
    buttons->addWidget(m_mute);
    buttons->addWidget(m_volume);
    buttons->addWidget(m_fullScreen);
    auto *const rows = new QVBoxLayout(this);
    rows->setContentsMargins(margin, margin / 2, margin, margin / 2);
    rows->setSpacing(0);
    rows->addLayout(time);
    rows->addLayout(buttons);
    // The longest text there is, so that no button moves while the disc plays.
    m_chapters->setText(playerText("Title %1, chapter %2").arg(88).arg(88));
    m_chapters->setMinimumWidth(m_chapters->sizeHint().width());
    m_smallestWidth = rows->minimumSize().width();
}

void ControlBar::setSymbol(QToolButton *button, const char *symbol) const
{
    if (button->property("symbol").toByteArray() == symbol)
        return;
    button->setProperty("symbol", QByteArray(symbol));
    button->setIcon(playerSymbol(symbol, ink, paleInk));
}

bool ControlBar::isInUse() const
{
    return m_slider->isSliderDown() || m_volume->isSliderDown()
        || std::any_of(m_menus.begin(), m_menus.end(), [](const QMenu *menu) { return menu->isVisible(); });
}

void ControlBar::setFullScreen(bool isFullScreen)
{
    setSymbol(m_fullScreen, isFullScreen ? "leaveFullScreen" : "fullScreen");
}

void ControlBar::follow()
{
    const PlaybackNow &now = m_playback->now();
    const DVDTitle *const title = m_playback->title();
    const bool isOpen = now.state != kDVDStateUnknown;
    std::vector<std::chrono::milliseconds> starts;
    if (title) {
        for (const DVDChapter &chapter : title->chapters)
            starts.push_back(chapter.start);
    }
    m_slider->setChapters(std::move(starts));
    m_slider->setTime(now.elapsed, title ? now.length : std::chrono::milliseconds(0));
    m_time->setTimeElapsed(std::uint32_t(now.elapsed.count()),
                           std::uint32_t(std::max(now.length - now.elapsed, std::chrono::milliseconds(0)).count()));
    setSymbol(m_play, now.state == kDVDStatePlaying || now.state == kDVDStatePlayingStill ? "pause" : "play");
    m_play->setEnabled(isOpen);
    m_stop->setEnabled(isOpen && now.state != kDVDStateStopped);
    m_previous->setEnabled(title);
    m_next->setEnabled(title && now.chapter < title->chapters.size());
    m_scanBackward->setEnabled(title);
    m_scanForward->setEnabled(title);
    m_menu->setEnabled(isOpen && !m_playback->disc().menus.empty());
    m_chapters->setEnabled(!m_playback->disc().titles.empty() && isOpen);
    m_chapters->setText(title              ? playerText("Title %1, chapter %2").arg(now.title).arg(now.chapter)
                            : now.isOnMenu ? playerText("Menu")
                                           : playerText("Titles"));
    m_audio->setVisible(title && title->audio.size() > 1);
    m_subtitles->setVisible(title && !title->subtitles.empty());
    m_angles->setVisible(now.angles > 1);
    const bool isSilent = m_playback->isMuted() || m_playback->volume() == 0;
    setSymbol(m_mute, isSilent ? "muted" : "sound");
    if (!m_volume->isSliderDown()) {
        const QSignalBlocker blocker(m_volume);
        m_volume->setValue(m_playback->volume());
    }
}

void ControlBar::fillMenu(QMenu *menu)
{
    const std::pair<QToolButton *, void (ControlBar::*)(QMenu *)> choices[] = {
        {m_chapters, &ControlBar::fillChapters},
        {m_audio, &ControlBar::fillAudio},
        {m_subtitles, &ControlBar::fillSubtitles},
        {m_angles, &ControlBar::fillAngles},
    };
    for (const auto &[button, fill] : choices) {
        if (!button->isEnabled() || button->isHidden())
            continue;
        QMenu *const choice = menu->addMenu(button->toolTip());
        (this->*fill)(choice);
    }
    menu->addSeparator();
    for (QToolButton *const button : {m_play, m_stop, m_menu, m_mute, m_fullScreen}) {
        QAction *const action = menu->addAction(button->toolTip(), button, &QToolButton::click);
        action->setEnabled(button->isEnabled());
    }
}

void ControlBar::fillChapters(QMenu *menu)
{
    const PlaybackNow now = m_playback->now();
    for (const DVDTitle &title : m_playback->disc().titles) {
        QMenu *const chapters =
            menu->addMenu(playerText("Title %1 (%2)").arg(title.number).arg(shortTime(title.length)));
        QStringList names;
        int number = 0;
        for (const DVDChapter &chapter : title.chapters)
            names << playerText("Chapter %1 (%2)").arg(++number).arg(shortTime(chapter.start));
        const bool isPlaying = title.number == now.title;
        if (isPlaying)
            chapters->menuAction()->setIcon(playerSymbol("play", QMenu().palette().color(QPalette::Text), paleInk));
        addChoices(chapters, names, isPlaying ? now.chapter - 1 : -1,
                   [this, title = int(title.number)](int index) { m_playback->goToChapter(title, index + 1); });
    }
}

void ControlBar::fillAudio(QMenu *menu)
{
    const DVDTitle *const title = m_playback->title();
    if (!title)
        return;
    QStringList names;
    int number = 0;
    for (const DVDAudioStream &stream : title->audio)
        names << audioStreamName(stream, ++number);
    addChoices(menu, names, m_playback->audioStream() - 1,
               [this](int index) { m_playback->setAudioStream(index + 1); });
}

void ControlBar::fillSubtitles(QMenu *menu)
{
    const DVDTitle *const title = m_playback->title();
    if (!title)
        return;
    QStringList names = {playerText("None")};
    int number = 0;
    for (const DVDSubtitleStream &stream : title->subtitles)
        names << subtitleStreamName(stream, ++number);
    addChoices(menu, names, m_playback->subtitleStream(), [this](int index) { m_playback->setSubtitleStream(index); });
}

void ControlBar::fillAngles(QMenu *menu)
{
    const PlaybackNow &now = m_playback->now();
    QStringList names;
    for (int angle = 1; angle <= now.angles; ++angle)
        names << playerText("Angle %1").arg(angle);
    addChoices(menu, names, now.angle - 1, [this](int index) { m_playback->setAngle(index + 1); });
}

void ControlBar::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
}

} // namespace Tessaron
