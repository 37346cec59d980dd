#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include <TessaronClasses/UnreadableFolder.h>

#include <QString>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessaron
{

class DirectoryLister;
class KRDirectoryScanner;
class KRFileHierarchyItem;
class NSError;
class NSThread;
class ScanRecord;

/// The callbacks of a scan. Every callback comes on the main thread; none comes once `context` or the scanner is gone.
/// The scanner lives during the call even when the callback drops the last pointer to it.
struct KRDirectoryScannerDelegate {
    CallbackContext context;
    /// For each folder whose listing failed half-way, in the order met: domain NSOSStatusErrorDomain, the status as
    /// code, the folder's path under NSFilePathErrorKey. The scan goes on, except after memFullErr, which ends it.
    std::function<void(KRDirectoryScanner &, const NSError &)> directoryScannerReportedError;
    /// Once, with the root of the tree, when a scan ran to its end. The tree lives as long as the pointer is kept.
    /// Null, here and below, when there was not even memory for the root.
    std::function<void(KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &)>
        directoryScannerScanDidFinishWithHierarchyItem;
    /// Once, with what had been built, when a scan was cancelled.
    std::function<void(KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &)>
        directoryScannerScanDidCancelWithHierarchyItem;
};

/// Turns a folder with all it holds into a tree of items, on a worker thread. Nothing is skipped: hidden files,
/// packages, symbolic links (not followed), devices. Children come in the order in which the file system lists them;
/// each item's reference knows its kind and sizes already. A folder that cannot be opened becomes an item without
/// children and without a callback; unreadableFolders() tells. A scan that finds no descriptor free closes those of its
/// own that can wait and tries again.
///
/// The scanner belongs to the main thread; the counters may be read from any. The tree is the worker's until a callback
/// hands it over. The worker needs neither stack nor descriptors in proportion to the depth of the tree.
class TESSARON_EXPORT KRDirectoryScanner : public std::enable_shared_from_this<KRDirectoryScanner>
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// A scanner for a folder. It does not look at the disk yet.
    [[nodiscard]] static std::shared_ptr<KRDirectoryScanner> initWithFSRef(const FSRef &ref);
    [[nodiscard]] static std::shared_ptr<KRDirectoryScanner> directoryScannerWithFSRef(const FSRef &ref);
    /// The same with another source of listings than the file system.
    [[nodiscard]] static std::shared_ptr<KRDirectoryScanner>
    directoryScannerWithFSRef(const FSRef &ref, std::shared_ptr<DirectoryLister> lister);
    /// Null when nothing is at the path. A symbolic link at its end is not followed (and scans as a folder that cannot
    /// be opened).
    [[nodiscard]] static std::shared_ptr<KRDirectoryScanner> initWithPath(const QString &path);
    [[nodiscard]] static std::shared_ptr<KRDirectoryScanner> directoryScannerWithPath(const QString &path);

    /// For the factories only.
    KRDirectoryScanner(ConstructionKey, const FSRef &ref, std::shared_ptr<DirectoryLister> lister);
    /// Cancels a running scan and waits for its end; no callback follows.
    ~KRDirectoryScanner();
    KRDirectoryScanner(const KRDirectoryScanner &) = delete;
    KRDirectoryScanner &operator=(const KRDirectoryScanner &) = delete;

    [[nodiscard]] const KRDirectoryScannerDelegate &delegate() const { return m_delegate; }
    void setDelegate(const KRDirectoryScannerDelegate &delegate) { m_delegate = delegate; }

    /// Starts a scan; false when one is running or the system cannot start a thread. isRunning() is true from the
    /// moment this returns true.
    bool startDirectoryScan();
    /// True until the worker has left the scan. The callback of its end comes after that.
    [[nodiscard]] bool isRunning() const;
    /// Asks a running scan to stop, which it does at the next entry, and returns at once.
    void stopScanAsync();
    /// The same, and returns when the worker has left the scan.
    void stopScanSync();
    /// Returns when no scan is running.
    void waitUntilScanEnds() const;

    /// What the current or last scan has counted so far, without the folder itself.
    [[nodiscard]] std::uint32_t scannedFiles() const;
    [[nodiscard]] std::uint32_t scannedDirs() const;
    /// Listings that failed half-way.
    [[nodiscard]] std::uint32_t errorCount() const;
    /// All folders of the current or last scan whose contents are missing from the tree in part or altogether, in the
    /// order met: those that could not be opened (the scanned folder itself, too) and those whose listing failed
    /// half-way, which had a callback as well. When memory ran out: with ENOMEM all that were being read, the innermost
    /// first; an entry without a path when there was no room to name them. Complete once the scan has ended; a
    /// cancelled scan does not name folders that it did not reach. From any thread.
    [[nodiscard]] std::vector<UnreadableFolder> unreadableFolders() const;

private:
    /// The mark of a running scan: taken when one starts, handed to the worker, given back when the worker has left it.
    class ScanLock
    {
    public:
        [[nodiscard]] bool take();
        void giveBack();
        [[nodiscard]] bool isTaken() const;
        void waitUntilFree() const;

    private:
        mutable std::mutex m_mutex;
        mutable std::condition_variable m_isFree;
        bool m_isTaken = false; ///< guarded by the mutex
    };

    void _openPoolAndStartScan();
    void _reportErrorObject(const NSError &error);
    void _reportScanFinished(const std::shared_ptr<KRFileHierarchyItem> &root);
    void _reportScanWasCancelled(const std::shared_ptr<KRFileHierarchyItem> &root);
    void scheduleErrorReport(OSStatus status, const FSRef &folder);

    const FSRef m_fileRef;
    const std::shared_ptr<DirectoryLister> m_lister;
    ScanLock m_lock;
    KRDirectoryScannerDelegate m_delegate; ///< used on the main thread only
    const std::unique_ptr<ScanRecord> m_record;
    std::unique_ptr<NSThread> m_scanThread; ///< made once, started for every scan; joined before the members above go
};

} // namespace Tessaron
