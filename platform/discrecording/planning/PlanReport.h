#pragma once

#include "platform/discrecording/content/StorageIssue.h"
#include "platform/discrecording/image/FilesystemWriter.h"
#include "platform/discrecording/objects/DRStorageReport.h"

#include <array>
#include <memory>
#include <vector>

namespace Tessaron
{

/// The report of a planned image: eight bytes for each item, everything else is made when an item is asked for. Keeps
/// the tree and the names of the plan alive, but nothing of the image.
class PlanReport final : public DRStorageReport
{
public:
    /// Puts the issues into the order of the tree and finds out which objects are lost.
    PlanReport(std::shared_ptr<const ContentTree> tree, std::vector<NamedTree> trees, StorageIssues issues);

    [[nodiscard]] std::size_t count() const override { return m_issues.size(); }
    [[nodiscard]] DRStorageReportItem item(std::size_t index) const override;
    [[nodiscard]] std::size_t lostCount() const override { return m_lostCount; }
    [[nodiscard]] std::size_t count(DRDiscTree tree, DRStorageReportItem::Kind kind) const override;
    /// Objects that a filesystem was to hold, but which no tree does: none of them can hold such an object.
    [[nodiscard]] std::uint32_t refusedEverywhere() const { return m_refusedEverywhere; }

private:
    static constexpr std::size_t treeCount = 5;
    static constexpr std::size_t kindCount = 3;

    /// True when no tree holds the object under its own name. `first` to `last` are all of its issues.
    [[nodiscard]] bool isLost(StorageIssues::const_iterator first, StorageIssues::const_iterator last) const;

    [[nodiscard]] bool isRefusedEverywhere(StorageIssues::const_iterator first,
                                           StorageIssues::const_iterator last) const;
    [[nodiscard]] bool isVolumeNameLost(StorageIssues::const_iterator first, StorageIssues::const_iterator last) const;
    [[nodiscard]] QString reasonOf(const StorageIssue &issue) const;

    const std::shared_ptr<const ContentTree> m_tree;
    const std::vector<NamedTree> m_trees;
    StorageIssues m_issues;
    std::array<std::array<std::size_t, kindCount>, treeCount> m_counts{};
    std::size_t m_lostCount = 0;
    std::uint32_t m_refusedEverywhere = 0;
};

} // namespace Tessaron
