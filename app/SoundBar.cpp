#include "app/SoundBar.h"

#include "app/AbandonedJob.h"
#include "app/WaveformPainting.h"
#include "app/WaveformStore.h"
#include "app/Words.h"

#include <TessaronClasses/DiscJobErrors.h>

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QSignalBlocker>
#include <QStyleOptionFocusRect>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace Tessaron::Desktop
{

namespace
{

constexpr int stepSeconds = 5;
constexpr int pageSeconds = 30;
constexpr int margin = 3;

int framesOf(const AudioTrackRow &track)
{
    double seconds = track.seconds;
    for (const AudioPart &part : track.order.pregap)
        seconds -= double(part.frames) / soundFramesPerSecond;
    return int(std::clamp(std::round(seconds * soundFramesPerSecond), 0.0, 1e8));
}

/// A triangle to listen, two bars to pause: those of styles are black on dark windows, too.
QIcon listeningIcon(bool isPause, const QPalette &palette)
{
    constexpr int size = 64;
    constexpr int border = 12;
    const auto picture = [isPause](const QColor &color) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        constexpr int end = size - border;
        constexpr int bar = (end - border) / 3;
        if (isPause) {
            painter.drawRect(border, border, bar, end - border);
            painter.drawRect(end - bar, border, bar, end - border);
        } else {
            painter.drawPolygon(QPolygon({QPoint(border, border), QPoint(end, size / 2), QPoint(border, end)}));
        }
        return pixmap;
    };
    QIcon icon;
    icon.addPixmap(picture(palette.color(QPalette::Active, QPalette::ButtonText)));
    icon.addPixmap(picture(palette.color(QPalette::Disabled, QPalette::ButtonText)), QIcon::Disabled);
    return icon;
}

} // namespace

WaveformSlider::WaveformSlider(const WaveformStore &waveforms, QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
    , m_waveforms(waveforms)
{
    setSingleStep(stepSeconds * int(soundFramesPerSecond));
    setPageStep(pageSeconds * int(soundFramesPerSecond));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setTrack(std::nullopt);
    connect(this, &QSlider::actionTriggered, this, [this] { Q_EMIT seekWanted(sliderPosition()); });
}

void WaveformSlider::setTrack(const std::optional<AudioTrackRow> &track)
{
    m_track = track;
    setRange(0, track ? framesOf(*track) : 0);
    setEnabled(track.has_value());
    update();
}

QSize WaveformSlider::sizeHint() const
{
    return {200, 3 * fontMetrics().height()};
}

QSize WaveformSlider::minimumSizeHint() const
{
    return {80, 2 * fontMetrics().height()};
}

void WaveformSlider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect area = rect().adjusted(margin, margin, -margin, -margin);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    if (m_track) {
        drawWaveform(painter, area, *m_track, m_waveforms, palette().color(QPalette::Text));
        const int place =
            maximum() > 0 ? area.left() + int(std::int64_t(area.width()) * sliderPosition() / maximum()) : area.left();
        QRect heard = area;
        heard.setRight(place);
        QColor over = palette().color(QPalette::Highlight);
        over.setAlphaF(0.35F);
        painter.fillRect(heard, over);
        painter.fillRect(QRect(place - 1, rect().top(), 2, rect().height()), palette().color(QPalette::Highlight));
    }
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.backgroundColor = palette().color(QPalette::Base);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void WaveformSlider::goTo(double x)
{
    const int width = std::max(rect().width() - 2 * margin, 1);
    const int frame = int(std::clamp((x - margin) / width, 0.0, 1.0) * maximum());
    setSliderPosition(frame);
    Q_EMIT seekWanted(frame);
}

void WaveformSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || maximum() == 0)
        return;
    setSliderDown(true);
    goTo(event->position().x());
}

void WaveformSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (isSliderDown())
        goTo(event->position().x());
}

void WaveformSlider::mouseReleaseEvent(QMouseEvent *)
{
    setSliderDown(false);
}

SoundBar::SoundBar(const WaveformStore &waveforms, FindTrack findTrack, QWidget *parent)
    : QWidget(parent)
    , m_findTrack(std::move(findTrack))
    , m_listen(new QAction(this))
    , m_slider(new WaveformSlider(waveforms, this))
    , m_time(new QLabel(this))
{
    m_listen->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    connect(m_listen, &QAction::triggered, this, &SoundBar::listenOrPause);
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto *const button = new QToolButton(this);
    button->setDefaultAction(m_listen);
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setFocusPolicy(Qt::StrongFocus);
    row->addWidget(button);
    row->addWidget(m_slider, 1);
    row->addWidget(m_time);
    m_slider->setAccessibleName(tr("Place in the track"));
    m_slider->setToolTip(tr("Click where you want to listen"));
    m_time->setAccessibleName(tr("Time"));
    connect(m_slider, &WaveformSlider::seekWanted, this, &SoundBar::seek);
    connect(&waveforms, &WaveformStore::found, m_slider, [this] { m_slider->update(); });
    showState();
}

SoundBar::~SoundBar()
{
    abandonJob(std::move(m_job));
}

void SoundBar::setTrack(const std::optional<AudioTrackRow> &track)
{
    const bool isOther = !track || !m_track || track->id != m_track->id;
    m_track = track;
    m_slider->setTrack(track);
    if (isOther && (!m_job || !track || track->id != m_heardId)) {
        const QSignalBlocker quiet(m_slider);
        m_slider->setValue(0);
    }
    showState();
}

void SoundBar::lookAgain()
{
    if (m_job && !m_findTrack(m_heardId))
        stop();
    if (m_track)
        setTrack(m_findTrack(m_track->id));
}

void SoundBar::listenOrPause()
{
    if (m_job && (!m_track || m_track->id == m_heardId)) {
        m_job->setPaused(!m_job->isPaused());
        showState();
    } else if (m_track) {
        begin(*m_track, std::uint64_t(m_slider->sliderPosition()));
    }
}

void SoundBar::begin(const AudioTrackRow &track, std::uint64_t frame)
{
    stop();
    const bool isAtEnd = frame + soundFramesPerSecond >= std::uint64_t(framesOf(track));
    m_heardId = track.id;
    m_job = std::make_unique<ListenJob>(ListenOrder{track.order.sound, isAtEnd ? 0 : frame});
    connect(m_job.get(), &DiscJob::progressed, this, &SoundBar::showPosition);
    connect(m_job.get(), &ListenJob::finished, this, [this](const ListenResult &result) {
        ListenJob *const ended = m_job.release();
        const ListenResult own = result;
        ended->deleteLater();
        showState();
        if (own.error && !isDiscJobError(own.error, DiscJobErrorCode::Cancelled))
            Q_EMIT failed(own);
    });
    m_job->start();
    showState();
}

void SoundBar::stop()
{
    abandonJob(std::move(m_job));
    showState();
}

void SoundBar::seek(int frame)
{
    if (m_job && m_track && m_track->id == m_heardId)
        m_job->seek(std::uint64_t(std::max(frame, 0)));
    showPosition();
}

/// The bar shows the track that is looked at; what is heard of another one does not move it.
void SoundBar::showPosition()
{
    if (m_job && m_track && m_track->id == m_heardId && !m_slider->isSliderDown()) {
        const QSignalBlocker quiet(m_slider);
        m_slider->setValue(int(std::min<std::uint64_t>(m_job->position(), std::uint64_t(m_slider->maximum()))));
    }
    const auto text = [](int frames) { return durationText(std::chrono::seconds(frames / int(soundFramesPerSecond))); };
    m_time->setText(m_track ? tr("%1 of %2").arg(text(m_slider->sliderPosition()), text(m_slider->maximum()))
                            : QString());
}

void SoundBar::showState()
{
    const bool isHeard = m_job && !m_job->isPaused() && (!m_track || m_track->id == m_heardId);
    m_listen->setText(isHeard ? tr("&Pause") : tr("&Listen"));
    m_listen->setIcon(listeningIcon(isHeard, palette()));
    m_listen->setEnabled(m_job != nullptr || m_track.has_value());
    showPosition();
}

void SoundBar::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showState();
}

QString SoundBar::timeText() const
{
    return m_time->text();
}

} // namespace Tessaron::Desktop
