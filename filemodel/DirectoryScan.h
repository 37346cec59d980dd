#pragma once

#include "filemodel/DirectoryLister.h"
#include <TessaronClasses/KRDirectoryScanner.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace Tessaron
{

class KRFileReference;

/// One run of a scanner on its worker thread: walks the folders depth first, with its own stack instead of the
/// thread's.
class DirectoryScan
{
public:
    explicit DirectoryScan(KRDirectoryScanner &scanner);
    ~DirectoryScan();

    /// Builds the tree; true when the walk stopped for a cancellation.
    [[nodiscard]] bool run();

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
    void takeEntry(const FSBulkEntry &entry);
    void enterFolder(const FSRef &folder, const std::shared_ptr<KRFileHierarchyItem> &item);
    void leaveFolder();
    [[nodiscard]] bool isCancelled() const;

    KRDirectoryScanner &m_scanner;
    std::shared_ptr<KRFileHierarchyItem> m_root;
    std::vector<Level> m_levels; ///< the first m_depth are in use; the rest keep their buffers for the next folder
    std::size_t m_depth = 0;
};

} // namespace Tessaron
