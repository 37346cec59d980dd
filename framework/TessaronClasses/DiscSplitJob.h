#pragma once

#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>

#include <QList>
#include <QMetaType>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;

/// A tree that is to be put onto several discs; see DiscImageOrder.
struct DiscSplitOrder {
    /// The job takes the tree over: nothing else may use it from start() on, nor after the end of the job, since the
    /// trees of the discs share its items.
    std::shared_ptr<KRFileHierarchyItem> tree = {};
    std::uint64_t capacity = 0; ///< bytes of user data that each disc holds
    QString volumeName = {};
    DiscFilesystems filesystems = allDiscFilesystems;
    bool relocatesDeepFolders = false;
};

/// One of the discs.
struct DiscShare {
    /// For a DiscImageOrder or a BurnDiscOrder. The trees of several discs share references to folders that lie on all
    /// of them: only one may be used at a time.
    std::shared_ptr<KRFileHierarchyItem> tree;
    QString volumeName; ///< the name asked for, with the number of the disc where there are several
    std::uint64_t bytes = 0; ///< of an image in format ISO, to the byte
    std::uint64_t files = 0;
    std::uint64_t folders = 0; ///< the root not counted
    /// What is on it, as paths from the root with '/' in front, in the order of names: of a folder that is on it whole
    /// its own path alone, of any other one the paths of what is on it.
    QList<QString> paths;
};

/// How a tree is split.
struct DiscSplitResult {
    NSError error; ///< null when all that fits onto a disc is on one; domain and codes are those of DiscJobErrors.h
    std::vector<DiscShare> discs; ///< empty after an error

    /// A file that no disc of this capacity holds.
    struct TooLargeFile {
        QString path; ///< from the root, with '/' in front
        std::uint64_t bytes = 0;
    };
    std::vector<TooLargeFile> tooLarge; ///< is on no disc: a file is never cut
};

/// Finds out how a tree goes onto several discs: which folders and files on which, and how large each disc will be.
/// Folders stay together where a disc can hold them; else their parts go onto as few discs as they can. The same tree
/// is always split in the same way. Nothing is written; each source is looked at, but not read. See DiscJob for threads
/// and lifetime.
class TESSARON_EXPORT DiscSplitJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit DiscSplitJob(DiscSplitOrder order, QObject *parent = nullptr);
    ~DiscSplitJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const DiscSplitResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::DiscSplitResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::DiscSplitResult)
