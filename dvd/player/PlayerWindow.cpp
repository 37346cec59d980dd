#include "dvd/player/PlayerWindow.h"

#include "dvd/VideoView.h"
#include "dvd/player/ControlBar.h"
#include "dvd/player/PlayerTexts.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QToolTip>

#include <algorithm>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds timeOfControls(3'000);
constexpr milliseconds timeOfNotes(4'000);
constexpr milliseconds skipTime = seconds(10);
constexpr int margin = 12;
constexpr int widestControls = 960;
constexpr int volumeStep = 16;
constexpr int loudest = 255;
/// Of the screen, at first.
constexpr double largestPart = 0.8;
constexpr QSize smallestSize(560, 315);

QLabel *makeLabel(QWidget *window, const char *name)
{
    auto *const label = new QLabel(window);
    label->setObjectName(QString::fromLatin1(name));
    label->setWordWrap(true);
    // What a disc is called must not be taken for markup.
    label->setTextFormat(Qt::PlainText);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->setStyleSheet(QStringLiteral("color: #f0f0f0; background: rgba(20, 20, 24, 215); border-radius: 8px; "
                                        "padding: 8px 12px;"));
    label->hide();
    return label;
}

} // namespace

PlayerWindow::PlayerWindow(DiscPlayback *playback)
    : m_playback(playback)
    , m_picture(new VideoView(this))
    , m_controls(new ControlBar(playback, this))
    , m_message(makeLabel(this, "message"))
    , m_note(makeLabel(this, "note"))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(smallestSize.expandedTo(QSize(m_controls->smallestWidth() + 2 * margin, 0)));
    m_picture->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_message->setAlignment(Qt::AlignCenter);
    m_hideTimer.setInterval(timeOfControls);
    connect(&m_hideTimer, &QTimer::timeout, this, &PlayerWindow::hideControls);
    m_noteTimer.setInterval(timeOfNotes);
    m_noteTimer.setSingleShot(true);
    connect(&m_noteTimer, &QTimer::timeout, m_note, &QWidget::hide);
    connect(m_controls, &ControlBar::fullScreenWanted, this, [this] { setFullScreen(!isFullScreen()); });
    connect(m_playback, &DiscPlayback::opened, this, &PlayerWindow::takeOpening);
    connect(m_playback, &DiscPlayback::changed, this, &PlayerWindow::follow);
    connect(m_playback, &DiscPlayback::pointed, this, &PlayerWindow::takePointed);
    connect(m_playback, &DiscPlayback::failed, this, &PlayerWindow::showMessage);
    connect(m_playback, &DiscPlayback::refused, this,
            [this] { showNote(playerText("The disc does not allow that now")); });
    connect(m_playback, &DiscPlayback::withoutSound, this, [this](const QString &why) {
        showNote(playerText("There is no sound, since no device for it can be opened (%1)").arg(why));
    });
    connect(m_playback, &DiscPlayback::placeLost, this, [this](const QString &path) {
        showNote(playerText("The disc's place cannot be kept: %1 cannot be written").arg(path));
    });
    connect(m_playback, &DiscPlayback::ended, this,
            [this] { showMessage(playerText("The disc has come to its end")); });
    connect(m_playback, &DiscPlayback::resumed, this, [this](milliseconds at) {
        showNote(playerText("Goes on at %1, where it was left. Home plays it from its begin.").arg(shortTime(at)));
    });
    m_hideTimer.start();
}

PlayerWindow::~PlayerWindow() = default;

void PlayerWindow::showMessage(const QString &text)
{
    m_message->setText(text);
    m_message->show();
    layOut();
    showControls();
}

void PlayerWindow::showNote(const QString &text)
{
    m_note->setText(text);
    m_note->show();
    m_noteTimer.start();
    layOut();
}

void PlayerWindow::setFullScreen(bool isFullScreen)
{
    if (isFullScreen)
        showFullScreen();
    else
        showNormal();
}

/// The window gets the size of the disc's longest title, which is the film.
void PlayerWindow::takeOpening()
{
    const std::vector<DVDTitle> &titles = m_playback->disc().titles;
    const auto film = std::max_element(titles.begin(), titles.end(), [](const DVDTitle &one, const DVDTitle &other) {
        return one.length < other.length;
    });
    if (film == titles.end() || isFullScreen() || isMaximized())
        return;
    const double ratio = film->video.isWide ? 16.0 / 9 : 4.0 / 3;
    const QSizeF most = QSizeF(screen()->availableSize()) * largestPart;
    const double lines = std::min({double(film->video.height), most.height(), most.width() / ratio});
    resize(QSizeF(lines * ratio, lines).toSize().expandedTo(minimumSize()));
}

void PlayerWindow::follow()
{
    const PlaybackNow &now = m_playback->now();
    if (now.isMoving())
        m_message->hide();
    else
        showControls();
    m_picture->setVisible(now.state != kDVDStateStopped && now.state != kDVDStateUnknown);
    if (m_ratio != now.ratio) {
        m_ratio = now.ratio;
        layOut();
    }
    if (!now.isOnMenu && m_isOnButton)
        takePointed(false);
}

// Places.

QRect PlayerWindow::pictureRect() const
{
    QSizeF size(height() * m_ratio, height());
    if (size.width() > width())
        size = QSizeF(width(), width() / m_ratio);
    const QSize whole = size.toSize();
    return {QPoint((width() - whole.width()) / 2, (height() - whole.height()) / 2), whole};
}

void PlayerWindow::layOut()
{
    m_picture->setGeometry(pictureRect());
    const int barWidth = std::min(width() - 2 * margin, widestControls);
    const int barHeight = m_controls->sizeHint().height();
    m_controls->setGeometry((width() - barWidth) / 2, height() - barHeight - margin, barWidth, barHeight);
    const int textWidth = std::max(width() - 4 * margin, 1);
    for (QLabel *const label : {m_message, m_note}) {
        label->setWordWrap(label->fontMetrics().horizontalAdvance(label->text()) + 4 * margin > textWidth);
        const int labelWidth = label->wordWrap() ? textWidth : label->sizeHint().width();
        label->resize(labelWidth, label->wordWrap() ? label->heightForWidth(labelWidth) : label->sizeHint().height());
    }
    m_message->move((width() - m_message->width()) / 2, (height() - m_message->height()) / 2);
    m_note->move(margin, margin);
    update();
}

bool PlayerWindow::event(QEvent *event)
{
    // The bar has another height with other fonts.
    if (event->type() == QEvent::LayoutRequest)
        layOut();
    return QWidget::event(event);
}

void PlayerWindow::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), Qt::black);
}

void PlayerWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void PlayerWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::WindowStateChange) {
        m_controls->setFullScreen(isFullScreen());
        // What it belongs to is elsewhere now.
        QToolTip::hideText();
    }
    QWidget::changeEvent(event);
}

void PlayerWindow::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    Q_EMIT closed();
}

// The controls.

void PlayerWindow::showControls()
{
    m_controls->show();
    m_controls->raise();
    setCursor(m_isOnButton ? Qt::PointingHandCursor : Qt::ArrowCursor);
    m_hideTimer.start();
}

void PlayerWindow::hideControls()
{
    if (!m_playback->now().isMoving() || m_controls->isInUse() || m_controls->underMouse())
        return;
    m_controls->hide();
    m_hideTimer.stop();
    setCursor(Qt::BlankCursor);
}

void PlayerWindow::takePointed(bool isOnButton)
{
    m_isOnButton = isOnButton;
    if (cursor().shape() != Qt::BlankCursor || isOnButton)
        setCursor(isOnButton ? Qt::PointingHandCursor : Qt::ArrowCursor);
    // They must not lie over a button that the user is about to press.
    if (isOnButton && !m_controls->underMouse()) {
        m_controls->hide();
        m_hideTimer.start();
    }
}

// Mouse.

void PlayerWindow::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint place = event->position().toPoint();
    if (m_playback->now().isOnMenu && event->buttons() == Qt::NoButton)
        m_playback->pointAt(place, pictureRect(), false);
    if (!m_isOnButton)
        showControls();
}

void PlayerWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_playback->now().isOnMenu)
        m_playback->pointAt(event->position().toPoint(), pictureRect(), true);
    else
        showControls();
}

void PlayerWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_playback->now().isOnMenu)
        mousePressEvent(event);
    else
        setFullScreen(!isFullScreen());
}

void PlayerWindow::wheelEvent(QWheelEvent *event)
{
    if (const int turned = event->angleDelta().y(); turned != 0)
        changeVolume(turned > 0 ? volumeStep : -volumeStep);
}

void PlayerWindow::contextMenuEvent(QContextMenuEvent *event)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_controls->fillMenu(menu);
    menu->popup(event->globalPos());
}

// Keys.

void PlayerWindow::keyPressEvent(QKeyEvent *event)
{
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (isPlain && takeNavigationKey(event->key()))
        return;
    if (takePlayingKey(*event) || (isPlain && (takeSoundKey(event->key()) || takeStreamKey(event->key())))
        || takeWindowKey(*event))
        showControls();
    else
        QWidget::keyPressEvent(event);
}

bool PlayerWindow::takeNavigationKey(int key)
{
    switch (key) {
    case Qt::Key_Up:
        m_playback->navigate(kDVDUserNavigationMoveUp);
        return true;
    case Qt::Key_Down:
        m_playback->navigate(kDVDUserNavigationMoveDown);
        return true;
    case Qt::Key_Left:
        m_playback->navigate(kDVDUserNavigationMoveLeft);
        return true;
    case Qt::Key_Right:
        m_playback->navigate(kDVDUserNavigationMoveRight);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        m_playback->navigate(kDVDUserNavigationEnter);
        return true;
    default:
        return false;
    }
}

bool PlayerWindow::takePlayingKey(const QKeyEvent &event)
{
    const bool hasShift = event.modifiers() == Qt::ShiftModifier;
    const bool hasControl = event.modifiers() == Qt::ControlModifier;
    const bool isBackward = event.key() == Qt::Key_Left;
    switch (event.key()) {
    case Qt::Key_Space: // as DVDController has it
        m_playback->pauseOrGoOn();
        return true;
    case Qt::Key_P:
    case Qt::Key_MediaPlay:
    case Qt::Key_MediaPause:
    case Qt::Key_MediaTogglePlayPause:
        m_playback->playOrPause();
        return true;
    case Qt::Key_X:
    case Qt::Key_MediaStop:
        if (!hasControl)
            m_playback->stop();
        return !hasControl;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (hasShift)
            m_playback->scan(isBackward);
        else if (hasControl)
            m_playback->skip(isBackward ? -skipTime : skipTime);
        return hasShift || hasControl;
    case Qt::Key_PageUp:
    case Qt::Key_MediaPrevious:
        m_playback->stepChapter(-1);
        return true;
    case Qt::Key_PageDown:
    case Qt::Key_MediaNext:
        m_playback->stepChapter(1);
        return true;
    case Qt::Key_Home:
        m_playback->playFromBegin();
        m_note->hide();
        return true;
    case Qt::Key_D:
        m_playback->toggleMenu();
        return true;
    default:
        return false;
    }
}

bool PlayerWindow::takeSoundKey(int key)
{
    switch (key) {
    case Qt::Key_M:
    case Qt::Key_VolumeMute:
        m_playback->setMuted(!m_playback->isMuted());
        return true;
    case Qt::Key_Plus:
    case Qt::Key_VolumeUp:
        changeVolume(volumeStep);
        return true;
    case Qt::Key_Minus:
    case Qt::Key_VolumeDown:
        changeVolume(-volumeStep);
        return true;
    default:
        return false;
    }
}

/// Each key chooses the next one.
bool PlayerWindow::takeStreamKey(int key)
{
    const DVDTitle *const title = m_playback->title();
    if (!title || (key != Qt::Key_A && key != Qt::Key_L && key != Qt::Key_S))
        return false;
    if (const PlaybackNow &now = m_playback->now(); key == Qt::Key_A && now.angles > 1) {
        const int angle = now.angle % now.angles + 1;
        showNote(playerText("Angle %1").arg(angle));
        m_playback->setAngle(angle);
    }
    if (const std::vector<DVDAudioStream> &streams = title->audio; key == Qt::Key_L && !streams.empty()) {
        const int stream = m_playback->audioStream() % int(streams.size()) + 1;
        showNote(audioStreamName(streams[std::size_t(stream - 1)], stream));
        m_playback->setAudioStream(stream);
    }
    if (const std::vector<DVDSubtitleStream> &streams = title->subtitles; key == Qt::Key_S && !streams.empty()) {
        const int stream = (m_playback->subtitleStream() + 1) % int(streams.size() + 1);
        showNote(stream == 0 ? playerText("No subtitles")
                             : subtitleStreamName(streams[std::size_t(stream - 1)], stream));
        m_playback->setSubtitleStream(stream);
    }
    return true;
}

bool PlayerWindow::takeWindowKey(const QKeyEvent &event)
{
    const bool hasControl = event.modifiers() == Qt::ControlModifier;
    switch (event.key()) {
    case Qt::Key_F:
    case Qt::Key_F11:
        setFullScreen(!isFullScreen());
        return true;
    case Qt::Key_Escape:
        if (isFullScreen())
            setFullScreen(false);
        return true;
    case Qt::Key_Q:
    case Qt::Key_W:
        if (hasControl)
            close();
        return hasControl;
    default:
        return false;
    }
}

void PlayerWindow::changeVolume(int by)
{
    m_playback->setVolume(std::clamp(m_playback->volume() + by, 0, loudest));
    showNote(playerText("Volume %1 %").arg((m_playback->volume() * 100 + loudest / 2) / loudest));
}

} // namespace Tessaron
