#pragma once

#include "app/AudioTrackModel.h"
#include "app/DesktopPanel.h"

#include <TessaronClasses/InfoJob.h>

#include <memory>

namespace Tessaron::Desktop
{

class AudioView;

/// The panel for audio CDs: tracks of sound files in their order, with gaps and CD-TEXT.
class AudioPanel final : public DesktopPanel
{
public:
    AudioPanel();
    ~AudioPanel() override;

    [[nodiscard]] AudioTrackModel &tracks() { return m_tracks; }
    [[nodiscard]] AudioView &audioView();
    /// Adds sound files, and those in folders, in front of the row, once they are known; behind the last for -1.
    void addFiles(const QList<QByteArray> &paths, int row = -1);
    [[nodiscard]] bool isLooking() const { return m_info != nullptr; }
    /// Seconds that the disc takes, gaps included.
    [[nodiscard]] double discSeconds();

    // DesktopPanel
    [[nodiscard]] QString title() const override;
    [[nodiscard]] QString iconName() const override { return QStringLiteral("audio-x-generic"); }
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QUndoStack *undoStack() override { return &m_tracks.undoStack(); }
    [[nodiscard]] QString suggestedName() const override;
    [[nodiscard]] std::unique_ptr<DiscJob> imageJob(const QByteArray &path, DiscFormat format,
                                                    std::function<void(const JobOutcome &)> whenEnded) override;
    [[nodiscard]] bool canBeBurnt() const override { return false; } // its image is, as the panel for images has it
    bool takeFiles(const QList<QByteArray> &paths) override;
    void letGo() override;

    // TessaronPanel
    [[nodiscard]] QWidget *view() override;
    [[nodiscard]] QList<QAction *> customActionMenuItems() override;
    [[nodiscard]] std::uint64_t bestSizeApproximation() override;
    [[nodiscard]] TessaronDiscImageFormat handledDiscImageFormats() override;
    [[nodiscard]] QString emptyDiscInformationMessage() override;

private:
    struct Request {
        QList<QByteArray> paths;
        int row;
    };

    void startNext();
    void takeInfo(const InfoResult &result);
    void tell(const QString &text, const QStringList &details);

    AudioTrackModel m_tracks;
    QList<Request> m_waiting;
    std::unique_ptr<InfoJob> m_info; ///< null when nothing is looked at
    std::unique_ptr<AudioView> m_view; ///< made when it is first asked for
};

} // namespace Tessaron::Desktop
