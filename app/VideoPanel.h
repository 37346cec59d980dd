#pragma once

#include "app/DesktopPanel.h"
#include "app/PlayerProcess.h"

#include <TessaronClasses/DVDInspectJob.h>
#include <TessaronClasses/DiscPlanJob.h>
#include <TessaronClasses/ScanJob.h>

#include <memory>

namespace Tessaron
{
class KRFileHierarchyItem;
}

namespace Tessaron::Desktop
{

class VideoView;

/// The panel for DVD-Video: tells what is in a folder VIDEO_TS or in an image of a disc, checks its files, plays it,
/// and makes a disc for players of a folder.
class VideoPanel final : public DesktopPanel
{
public:
    VideoPanel();
    ~VideoPanel() override;

    /// Shows another disc: a folder VIDEO_TS, the one that holds it, or an image. It is looked at in the background.
    void openDisc(const QByteArray &path);
    [[nodiscard]] QByteArray discPath() const { return m_path; }
    [[nodiscard]] bool isLooking() const { return m_inspecting || m_scanning || m_planning; }
    /// What is said of the disc; empty without one.
    [[nodiscard]] QString summary() const { return m_summary; }
    [[nodiscard]] VideoView &videoView();
    /// True for the name of a folder that is a video DVD.
    [[nodiscard]] static bool isVideoName(const QByteArray &path);

    // DesktopPanel
    [[nodiscard]] QString title() const override;
    [[nodiscard]] QString iconName() const override { return QStringLiteral("video-x-generic"); }
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QString suggestedName() const override;
    [[nodiscard]] std::unique_ptr<DiscJob> imageJob(const QByteArray &path, DiscFormat format,
                                                    std::function<void(const JobOutcome &)> whenEnded) override;
    [[nodiscard]] std::unique_ptr<DiscJob> verifyJob(const QByteArray &path,
                                                     std::function<void(const JobOutcome &)> whenEnded) override;
    [[nodiscard]] std::optional<BurnSubject> burnSubject() override;
    bool takeFiles(const QList<QByteArray> &paths) override;
    void letGo() override;

    // TessaronPanel
    [[nodiscard]] QWidget *view() override;
    [[nodiscard]] QList<QAction *> customActionMenuItems() override;
    [[nodiscard]] std::uint64_t bestSizeApproximation() override { return m_bytes; }
    [[nodiscard]] TessaronDiscImageFormat handledDiscImageFormats() override;
    [[nodiscard]] QString emptyDiscInformationMessage() override;

private:
    void inspected(const DVDInspectResult &result);
    void scanned(const ScanResult &result);
    void plan();
    void showSize();
    void planned(const DiscPlanResult &result);
    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> discTree() const;
    void play();
    void askForFolder();
    void askForImage();
    void forgetDisc();

    QByteArray m_path; ///< empty while no disc is open
    QString m_summary;
    std::uint64_t m_bytes = 0; ///< that the disc takes; 0 until that is known
    std::shared_ptr<KRFileHierarchyItem> m_files; ///< the folder VIDEO_TS; null for an image
    std::unique_ptr<VideoView> m_view; ///< made when it is first asked for
    PlayerProcess m_player;
    std::unique_ptr<DVDInspectJob> m_inspecting; ///< null when nothing is looked at
    std::unique_ptr<ScanJob> m_scanning;
    std::unique_ptr<DiscPlanJob> m_planning; ///< lays out what a folder will be as a disc
    QStringList m_problems; ///< found so far
};

} // namespace Tessaron::Desktop
