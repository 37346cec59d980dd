#pragma once

#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/TessaronLayoutCreationManager.h>
#include <TessaronClasses/TessaronPanel.h>

/// A panel for data discs: it holds a tree of files and makes layouts of it, in the background or at once. It overrides
/// of TessaronPanel what that takes, and nothing else; a program with windows would add its view here.
class DataPanel final : public Tessaron::TessaronPanel
{
public:
    DataPanel(std::shared_ptr<Tessaron::KRFileHierarchyItem> root, bool isAsync);

    std::uint64_t bestSizeApproximation() override;
    Tessaron::TessaronDiscImageFormat handledDiscImageFormats() override;
    QString emptyDiscInformationMessage() override;

    bool canCreateLayoutAsync() override { return m_isAsync; }
    bool createLayoutAsyncAndNotifyLayoutCreationManager(
        const std::weak_ptr<Tessaron::TessaronLayoutCreationManager> &manager) override;
    bool cancelLayoutCreationAsync() override;
    Tessaron::DRLayout createLayoutSync(Tessaron::NSError *error) override;

private:
    [[nodiscard]] Tessaron::KRFileHierarchyItemLayoutTarget target();

    /// What the target's callbacks are tied to: when the panel goes, they fall silent.
    const std::shared_ptr<const int> m_life = std::make_shared<const int>(0);
    const std::shared_ptr<Tessaron::KRFileHierarchyItem> m_root;
    const bool m_isAsync;
    std::weak_ptr<Tessaron::TessaronLayoutCreationManager> m_manager;
};
