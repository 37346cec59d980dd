#pragma once

#include <TessaronClasses/DiscSplitJob.h>

#include <QDialog>
#include <QList>

#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace Tessaron::Desktop
{

class JobBar;

/// Proposes how the files of a disc go onto several ones, for the kind of disc that is chosen. Nothing is written here:
/// what is to become of them is told by signals.
class SplitDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `makeTree` gives a tree of the disc for each proposal; `mediumKey` is the kind of disc to begin with.
    SplitDialog(std::function<std::shared_ptr<KRFileHierarchyItem>()> makeTree, const QString &volumeName,
                const QString &mediumKey, QWidget *parent = nullptr);
    ~SplitDialog() override;

    [[nodiscard]] bool isWorking() const { return m_job != nullptr; }
    /// The discs as they are proposed; empty while there is no proposal.
    [[nodiscard]] const std::vector<DiscShare> &discs() const { return m_discs; }
    /// What is said of the proposal.
    [[nodiscard]] QString summary() const;
    void propose(const QString &mediumKey);
    /// The kind of disc that the proposal is for.
    [[nodiscard]] QString mediumKey() const { return m_mediumKey; }

Q_SIGNALS:
    /// Either the proposal is ready, or the reason why the tree cannot be split.
    void proposed();
    /// An image of each disc is wanted.
    void imagesWanted();
    /// A project of each disc is wanted.
    void projectsWanted();
    /// The discs are to be written, one after the other.
    void burningWanted();

private:
    void layOut();
    void take(const DiscSplitResult &result);
    void showDiscs(const DiscSplitResult &result);

    const std::function<std::shared_ptr<KRFileHierarchyItem>()> m_makeTree;
    const QString m_volumeName;
    QComboBox *const m_medium;
    QLabel *const m_summary;
    QTreeWidget *const m_tree;
    JobBar *const m_progress;
    QList<QPushButton *> m_ofProposal; ///< what can be done with it
    QString m_mediumKey;
    std::uint64_t m_capacity = 0;
    std::vector<DiscShare> m_discs;
    std::unique_ptr<DiscSplitJob> m_job; ///< null when nothing is asked
};

} // namespace Tessaron::Desktop
