#pragma once

#include "filemodel/DirectoryLister.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{

class KRFileHierarchyItem;
class ScanRecord;

/// One run of a scanner on its worker thread: walks the folders depth first, with its own stack instead of the
/// thread's.
class DirectoryScan
{
public:
    struct Hooks {
        /// Asked at every entry.
        std::function<bool()> isCancelled;
        /// The listing of the folder has failed half-way.
        std::function<void(OSStatus, const FSRef &folder)> reportError;
    };

    /// All of these must outlive the scan.
    DirectoryScan(const FSRef &folder, DirectoryLister &lister, ScanRecord &record, Hooks hooks);
    ~DirectoryScan();

    /// Builds the tree; true when the walk stopped for a cancellation. When memory runs out the walk ends, too: the
    /// folder that was being read is reported, and each one that is left half-read is noted as unreadable.
    [[nodiscard]] bool run();

    /// Null only when there was no memory for it.
    [[nodiscard]] const std::shared_ptr<KRFileHierarchyItem> &root() const { return m_root; }

private:
    /// A folder that is being listed, and its item that is being filled.
    struct Level {
        FSRef folder;
        std::shared_ptr<KRFileHierarchyItem> item;
        std::unique_ptr<DirectoryListing> listing;
        std::vector<FSBulkEntry> entries; ///< the current batch
        std::size_t count = 0; ///< entries in it
        std::size_t next = 0; ///< the next of them
        OSStatus status = 0; ///< of the call that brought the batch
    };

    enum class Step { Entry, EndOfFolder };

    [[nodiscard]] bool walk();
    void announceFolders(const Level &level);
    [[nodiscard]] Step prepareEntry(Level &level);
    void fetchBatch(Level &level);
    void takeEntry(const FSBulkEntry &entry);
    void enterFolder(const FSRef &folder, const std::shared_ptr<KRFileHierarchyItem> &item);
    [[nodiscard]] std::unique_ptr<DirectoryListing> openListing(const FSRef &folder);
    void giveBackDescriptors();
    void leaveFolder();
    void giveUp();

    const FSRef m_folder;
    DirectoryLister &m_lister;
    ScanRecord &m_record;
    const Hooks m_hooks;
    std::shared_ptr<KRFileHierarchyItem> m_root;
    std::vector<Level> m_levels; ///< the first m_depth are in use; the rest keep their buffers for the next folder
    std::size_t m_depth = 0;
    std::size_t m_untilGrowth = 0; ///< entries until the heap is made to grow again
    FSRef m_entering; ///< the folder whose level is being made; the zero reference else
};

} // namespace Tessaron
