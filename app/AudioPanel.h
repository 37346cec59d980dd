#pragma once

#include "app/AudioConversion.h"
#include "app/AudioIntake.h"
#include "app/AudioProject.h"
#include "app/AudioTrackModel.h"
#include "app/DesktopPanel.h"
#include "app/WaveformStore.h"

#include <TessaronClasses/AudioImageJob.h>

#include <memory>

namespace Tessaron::Desktop
{

class AudioView;

/// The panel for audio CDs: tracks of sound files in their order, with pauses and CD-TEXT.
class AudioPanel final : public DesktopPanel
{
public:
    AudioPanel();
    ~AudioPanel() override;

    [[nodiscard]] AudioTrackModel &tracks() { return m_tracks; }
    [[nodiscard]] WaveformStore &waveforms() { return m_waveforms; }
    [[nodiscard]] AudioView &audioView();
    /// Adds sound files, those in folders, and those that lists and cue sheets name, in front of the row, once they are
    /// known; behind the last for -1.
    void addFiles(const QList<QByteArray> &paths, int row = -1);
    [[nodiscard]] bool isLooking() const { return m_intake.isRunning(); }
    /// What the disc would be made by; its output is not in it.
    [[nodiscard]] AudioImageOrder imageOrder() const;

    /// Converts the files of the tracks that are chosen, as a job of the window; asks for nothing.
    void convertChosen(const AudioConvertDialog::Choice &choice);

    // DesktopPanel
    [[nodiscard]] QString title() const override;
    [[nodiscard]] QString iconName() const override { return QStringLiteral("audio-x-generic"); }
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QUndoStack *undoStack() override { return &m_tracks.undoStack(); }
    [[nodiscard]] ProjectSubject *projectSubject() override { return &m_project; }
    [[nodiscard]] QString suggestedName() const override;
    [[nodiscard]] std::unique_ptr<DiscJob> imageJob(const QByteArray &path, DiscFormat format,
                                                    std::function<void(const JobOutcome &)> whenEnded) override;
    [[nodiscard]] std::optional<BurnSubject> burnSubject() override;
    bool takeFiles(const QList<QByteArray> &paths) override;
    void letGo() override;

    // TessaronPanel
    [[nodiscard]] QWidget *view() override;
    [[nodiscard]] QList<QAction *> customActionMenuItems() override;
    [[nodiscard]] std::uint64_t bestSizeApproximation() override;
    [[nodiscard]] TessaronDiscImageFormat handledDiscImageFormats() override;
    [[nodiscard]] QString emptyDiscInformationMessage() override;

private:
    [[nodiscard]] QList<AudioTrackRow> chosenTracks();
    void takeFound(const AudioFound &found);
    void discHasChanged();

    AudioTrackModel m_tracks;
    AudioProject m_project{m_tracks};
    WaveformStore m_waveforms;
    AudioIntake m_intake;
    AudioConversion m_conversion;
    std::unique_ptr<AudioView> m_view; ///< made when it is first asked for
};

} // namespace Tessaron::Desktop
