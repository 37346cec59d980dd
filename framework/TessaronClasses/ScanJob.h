#pragma once

#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

/// What was found at one of the paths that were scanned.
struct ScannedSource {
    QByteArray path; ///< as given
    std::uint64_t files = 0; ///< one for each name: a file with several names counts for each
    std::uint64_t folders = 0; ///< the source itself not counted
    std::uint64_t sizeOnDisk = 0; ///< bytes that the files take there, each name counted; folders count 0
    /// The tree of all that was found, to make a layout of it.
    std::shared_ptr<KRFileHierarchyItem> tree;
};

/// How a scan has ended.
struct ScanResult {
    NSError error; ///< null when all paths were scanned; domain and codes are those of DiscJobErrors.h
    std::vector<ScannedSource> sources; ///< one for each path, in their order; empty after an error
    std::vector<UnreadableFolder> unreadable; ///< folders that could not be listed, or not to their end
};

/// Finds out what is in folders and files. A folder given that cannot be listed at all is an error; one below it is
/// named among the unreadable ones. See DiscJob for threads and lifetime.
class TESSARON_EXPORT ScanJob final : public DiscJob
{
    Q_OBJECT

public:
    /// Paths are bytes. A symbolic link among them stands for what it leads to.
    explicit ScanJob(QList<QByteArray> paths, QObject *parent = nullptr);
    ~ScanJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const ScanResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::ScanResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::ScanResult)
