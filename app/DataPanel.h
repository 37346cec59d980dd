#pragma once

#include "app/DataProject.h"
#include "app/DesktopPanel.h"
#include "app/DiscDocument.h"

#include <TessaronClasses/DiscSplitJob.h>
#include <TessaronClasses/TessaronLayoutCreationManager.h>

#include <memory>

namespace Tessaron
{
class KRFileHierarchyItem;
struct KRFileHierarchyItemLayoutTarget;
} // namespace Tessaron

namespace Tessaron::Desktop
{

class DataView;
class SplitDialog;

/// The panel for data discs.
class DataPanel final : public DesktopPanel
{
public:
    DataPanel();
    ~DataPanel() override;

    [[nodiscard]] DiscDocument &document() { return m_document; }
    [[nodiscard]] DataView &dataView();
    /// Proposes how the disc goes onto several ones; null when it is empty. The dialog is the view's, and is shown.
    SplitDialog *splitDisc();
    /// Makes an image of each of these discs in a new folder.
    void saveShares(std::vector<DiscShare> discs, const QByteArray &folder);
    /// Saves each of these discs as a project in a new folder, for discs of this kind.
    void saveShareProjects(const std::vector<DiscShare> &discs, const QString &mediumKey, const QByteArray &folder);
    /// Asks for a drive and a disc for each of them, one after the other.
    void burnShares(std::vector<DiscShare> discs);

    // DesktopPanel
    [[nodiscard]] QString title() const override;
    [[nodiscard]] QString iconName() const override { return QStringLiteral("folder"); }
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QUndoStack *undoStack() override { return &m_document.undoStack(); }
    [[nodiscard]] ProjectSubject *projectSubject() override { return &m_project; }
    void projectWasOpened() override;
    [[nodiscard]] QString suggestedName() const override { return m_document.volumeName(); }
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
    [[nodiscard]] std::uint64_t bestSizeApproximation() override;
    [[nodiscard]] TessaronDiscImageFormat handledDiscImageFormats() override;
    [[nodiscard]] QString emptyDiscInformationMessage() override;
    [[nodiscard]] bool canCreateLayoutAsync() override { return true; }
    [[nodiscard]] bool createLayoutAsyncAndNotifyLayoutCreationManager(
        const std::weak_ptr<TessaronLayoutCreationManager> &manager) override;
    bool cancelLayoutCreationAsync() override;

private:
    void askForSharesFolder(const SplitDialog &dialog, const QString &title,
                            const std::function<void(const QByteArray &folder)> &whenChosen);
    [[nodiscard]] KRFileHierarchyItemLayoutTarget target();
    [[nodiscard]] QStringList lostFiles() const;

    DiscDocument m_document;
    DataProject m_project{m_document};
    std::unique_ptr<DataView> m_view; ///< made when it is first asked for
    std::shared_ptr<KRFileHierarchyItem> m_savedTree; ///< of the image that was made last, to compare it with
    std::shared_ptr<KRFileHierarchyItem> m_layoutTree; ///< what a running layout is made of
    std::weak_ptr<TessaronLayoutCreationManager> m_manager;
    const std::shared_ptr<const int> m_life = std::make_shared<const int>(0); ///< its end silences callbacks
};

} // namespace Tessaron::Desktop
