#pragma once

#include "platform/coreservices/FSCatalog.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

/// Lists folders ahead of a scan on a thread of its own, so that the scan's thread is busy building items while the
/// system looks up the next files. On two processors a scan takes about two thirds of its time alone.
///
/// The scan takes the folders from the front of what it announced, the reader from the back: they meet once. What the
/// reader has not begun the scan does itself. All operations belong to the scan's thread.
class FolderReader
{
public:
    static constexpr std::uint32_t batchSize = 50;
    static constexpr std::uint32_t whichInfo = kFSCatInfoNodeFlags | kFSCatInfoDataSizes | kFSCatInfoRsrcSizes;

    /// What one bulk call gave: the first `count` of the entries.
    struct Batch {
        std::vector<FSBulkEntry> entries;
        std::uint32_t count = 0;
        OSStatus status = noErr;
        int errnoValue = 0; ///< of a status that is a failure
    };
    /// An open folder (null with an `errno` value when it cannot be opened) and its first batches.
    struct Folder {
        std::shared_ptr<FSIterator> iterator;
        std::vector<Batch> batches;
        int errnoValue = 0;
    };

    /// std::system_error when the system has no thread to give.
    FolderReader();
    /// Ends the thread once the bulk call that it is in returns.
    ~FolderReader();
    FolderReader(const FolderReader &) = delete;
    FolderReader &operator=(const FolderReader &) = delete;

    void readAhead(const std::vector<FSRef> &folders);

    /// A long folder's further batches that are being read.
    struct Job;
    using Reading = std::shared_ptr<Job>;

    /// Begins to read on in an open folder, some batches further. Only the reader may use the iterator until takeOn().
    [[nodiscard]] Reading readOn(std::shared_ptr<FSIterator> iterator);
    /// The batches, at least one; waits for them, or reads them itself when the reader has not begun. std::bad_alloc
    /// also when the reader ran out of memory at it.
    [[nodiscard]] std::vector<Batch> takeOn(const Reading &reading);
    /// Returns when the reader no longer uses the iterator, which is soon; what was read is lost.
    void abandon(const Reading &reading);

    /// True with the folder when it was read ahead, waiting for it when the reader is at it; false when the caller is
    /// to open it. Either way the reader forgets it.
    [[nodiscard]] bool take(const FSRef &ref, Folder *folder);

    /// Takes back the room of a batch that is done with, for a later one: making it anew costs more than filling it.
    void reuse(Batch &&batch);

    /// Gives up what was announced and not taken, to have its descriptors closed; the scan opens those folders itself.
    void dropFolders();

private:
    void run();
    void forgetWhatIsTaken();
    [[nodiscard]] std::vector<FSBulkEntry> roomForBatch();
    [[nodiscard]] std::shared_ptr<Job> nextJob();

    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_hasWork;
    std::condition_variable m_isRead;
    std::unordered_map<std::uint32_t, std::shared_ptr<Job>> m_jobs; ///< by node, until they are taken
    std::vector<std::weak_ptr<Job>> m_pending; ///< those announced last at the back
    std::size_t m_readCount = 0; ///< jobs read and not yet taken
    std::vector<std::vector<FSBulkEntry>> m_spare; ///< room for batches, each of batchSize entries
    std::shared_ptr<Job> m_current; ///< the one being read
    bool m_isEnding = false;
    std::thread m_thread; ///< uses the others
};

} // namespace Tessaron
