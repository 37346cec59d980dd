#pragma once

#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QMetaType>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

class DRStorageReport;
class KRFileHierarchyItem;

/// A disc that is to be planned; see DiscImageOrder.
struct DiscPlanOrder {
    /// The job takes the tree over: nothing else may use it from start() on.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
    QString volumeName = {};
    DiscFilesystems filesystems = allDiscFilesystems;
    bool relocatesDeepFolders = false;
};

/// What a disc will be.
struct DiscPlanResult {
    NSError error; ///< null when the rest is known; domain and codes are those of DiscJobErrors.h
    std::uint64_t bytes = 0; ///< of an image in format ISO, to the byte
    std::uint64_t files = 0;
    std::uint64_t folders = 0; ///< the root not counted
    std::vector<UnreadableFolder> unreadable; ///< see DiscImageResult
    /// What the disc's filesystems cannot hold as it stands, and how they will call it; null after an error.
    std::shared_ptr<const DRStorageReport> report;
};

/// Plans a disc without writing anything: how long it will be, and which names its filesystems will change. Each source
/// is looked at once, and none is read. See DiscJob for threads and lifetime.
class TESSARON_EXPORT DiscPlanJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit DiscPlanJob(DiscPlanOrder order, QObject *parent = nullptr);
    ~DiscPlanJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const DiscPlanResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::DiscPlanResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DiscPlanResult)
