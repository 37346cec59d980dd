#pragma once

#include "app/AudioDisc.h"

#include <TessaronClasses/ListenJob.h>

#include <QSlider>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QAction;
class QLabel;

namespace Tessaron::Desktop
{

class WaveformStore;

/// How a track looks, and the place that is heard, which keys and the mouse move.
class WaveformSlider final : public QSlider
{
    Q_OBJECT

public:
    explicit WaveformSlider(const WaveformStore &waveforms, QWidget *parent = nullptr);

    /// The track that is shown; none for an absent one.
    void setTrack(const std::optional<AudioTrackRow> &track);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user wants to hear the track from this frame on.
    void seekWanted(int frame);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void goTo(double x);

    const WaveformStore &m_waveforms;
    std::optional<AudioTrackRow> m_track;
};

/// Lets the user hear a track: begin and pause, the place in it, and how it looks. On the main thread.
class SoundBar final : public QWidget
{
    Q_OBJECT

public:
    /// `row` finds a track as it is now; absent for one that is gone.
    using FindTrack = std::function<std::optional<AudioTrackRow>(std::uint64_t id)>;

    SoundBar(const WaveformStore &waveforms, FindTrack findTrack, QWidget *parent = nullptr);
    ~SoundBar() override;

    /// Begins, goes on or pauses.
    [[nodiscard]] QAction *listenAction() const { return m_listen; }
    [[nodiscard]] WaveformSlider &slider() const { return *m_slider; }
    /// The track that is heard next, and looked at; what is heard goes on until another one is begun.
    void setTrack(const std::optional<AudioTrackRow> &track);
    /// The tracks have changed: what is heard of one that is gone stops.
    void lookAgain();
    [[nodiscard]] bool isListening() const { return m_job != nullptr; }
    [[nodiscard]] bool isPaused() const { return !m_job || m_job->isPaused(); }
    void listenOrPause();
    void stop();
    [[nodiscard]] QString timeText() const;

Q_SIGNALS:
    /// It cannot be heard.
    void failed(const Tessaron::ListenResult &result);

protected:
    void changeEvent(QEvent *event) override;

private:
    void begin(const AudioTrackRow &track, std::uint64_t frame);
    void showState();
    void showPosition();
    void seek(int frame);

    const FindTrack m_findTrack;
    QAction *const m_listen;
    WaveformSlider *const m_slider;
    QLabel *const m_time;
    std::optional<AudioTrackRow> m_track; ///< that is looked at
    std::uint64_t m_heardId = 0; ///< of the track that the job plays
    std::unique_ptr<ListenJob> m_job;
};

} // namespace Tessaron::Desktop
