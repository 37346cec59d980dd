#include "filemodel/DirectoryScan.h"
#include "filemodel/ScanRecord.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/WhenThereIsMemory.h"
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/PathHelpers.h>

#include <new>
#include <system_error>
#include <utility>

namespace Tessaron
{

bool KRDirectoryScanner::ScanLock::take()
{
    const std::lock_guard lock(m_mutex);
    return !std::exchange(m_isTaken, true);
}

void KRDirectoryScanner::ScanLock::giveBack()
{
    // Notified under the lock: a thread that waited may destroy this as soon as it is free.
    const std::lock_guard lock(m_mutex);
    m_isTaken = false;
    m_isFree.notify_all();
}

bool KRDirectoryScanner::ScanLock::isTaken() const
{
    const std::lock_guard lock(m_mutex);
    return m_isTaken;
}

void KRDirectoryScanner::ScanLock::waitUntilFree() const
{
    std::unique_lock lock(m_mutex);
    m_isFree.wait(lock, [this] { return !m_isTaken; });
}

std::shared_ptr<KRDirectoryScanner> KRDirectoryScanner::initWithFSRef(const FSRef &ref)
{
    return directoryScannerWithFSRef(ref, DirectoryLister::fileSystem());
}

std::shared_ptr<KRDirectoryScanner> KRDirectoryScanner::directoryScannerWithFSRef(const FSRef &ref)
{
    return initWithFSRef(ref);
}

std::shared_ptr<KRDirectoryScanner>
KRDirectoryScanner::directoryScannerWithFSRef(const FSRef &ref, std::shared_ptr<DirectoryLister> lister)
{
    return std::make_shared<KRDirectoryScanner>(ConstructionKey(), ref, std::move(lister));
}

std::shared_ptr<KRDirectoryScanner> KRDirectoryScanner::initWithPath(const QString &path)
{
    FSRef ref;
    const OSStatus status =
        FSPathMakeRefWithOptions(fileSystemRepresentation(path), kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr);
    return status == noErr ? initWithFSRef(ref) : nullptr;
}

std::shared_ptr<KRDirectoryScanner> KRDirectoryScanner::directoryScannerWithPath(const QString &path)
{
    return initWithPath(path);
}

KRDirectoryScanner::KRDirectoryScanner(ConstructionKey, const FSRef &ref, std::shared_ptr<DirectoryLister> lister)
    : m_fileRef(ref)
    , m_lister(std::move(lister))
    , m_record(std::make_unique<ScanRecord>())
{
}

KRDirectoryScanner::~KRDirectoryScanner()
{
    stopScanSync();
    m_scanThread.reset();
}

bool KRDirectoryScanner::startDirectoryScan()
{
    if (!m_lock.take())
        return false;
    if (!m_scanThread)
        m_scanThread = std::make_unique<NSThread>([this] { _openPoolAndStartScan(); });
    // The last run gave the lock back, but may still be scheduling its report.
    m_scanThread->waitUntilFinished();
    try {
        m_scanThread->start();
    } catch (const std::system_error &) {
        m_lock.giveBack();
        return false;
    }
    return true;
}

bool KRDirectoryScanner::isRunning() const
{
    return m_lock.isTaken();
}

void KRDirectoryScanner::stopScanAsync()
{
    if (isRunning())
        m_scanThread->cancel();
}

void KRDirectoryScanner::stopScanSync()
{
    stopScanAsync();
    m_lock.waitUntilFree();
}

void KRDirectoryScanner::waitUntilScanEnds() const
{
    m_lock.waitUntilFree();
}

std::uint32_t KRDirectoryScanner::scannedFiles() const
{
    return m_record->files();
}

std::uint32_t KRDirectoryScanner::scannedDirs() const
{
    return m_record->folders();
}

std::uint32_t KRDirectoryScanner::errorCount() const
{
    return m_record->errors();
}

std::vector<UnreadableFolder> KRDirectoryScanner::unreadableFolders() const
{
    return m_record->unreadableFolders();
}

/// The worker. It comes with the lock taken on its behalf.
void KRDirectoryScanner::_openPoolAndStartScan()
{
    // The root travels with the report, so that a scan started meanwhile cannot take its place, and in a box that the
    // main thread empties, so that the tree is never left to this thread to be freed.
    struct Ending {
        std::shared_ptr<KRFileHierarchyItem> root;
        bool wasCancelled = false;
    };
    std::shared_ptr<Ending> ending;
    std::function<void()> report;
    whenThereIsMemory([&] {
        ending = std::make_shared<Ending>();
        report = [weak = weak_from_this(), ending] {
            const Ending handedOver = std::exchange(*ending, {});
            const std::shared_ptr<KRDirectoryScanner> scanner = weak.lock();
            if (scanner && handedOver.wasCancelled)
                scanner->_reportScanWasCancelled(handedOver.root);
            else if (scanner)
                scanner->_reportScanFinished(handedOver.root);
        };
    });
    {
        DirectoryScan scan(m_fileRef, *m_lister, *m_record,
                           {[this] { return m_scanThread->isCancelled(); },
                            [this](OSStatus status, const FSRef &folder) { scheduleErrorReport(status, folder); }});
        ending->wasCancelled = scan.run();
        ending->root = scan.root();
    }
    ending.reset();
    m_lock.giveBack();
    whenThereIsMemory([&report] { performOnMainThread(report); });
}

void KRDirectoryScanner::scheduleErrorReport(OSStatus status, const FSRef &folder)
{
    QString path = stringWithFSRef(&folder);
    if (path.isNull())
        path = stringWithFileSystemRepresentation(lastKnownPath(folder));
    const NSError error(NSOSStatusErrorDomain, status, {{NSFilePathErrorKey, path}});
    performOnMainThread([weak = weak_from_this(), error] {
        if (const std::shared_ptr<KRDirectoryScanner> scanner = weak.lock())
            scanner->_reportErrorObject(error);
    });
}

void KRDirectoryScanner::_reportErrorObject(const NSError &error)
{
    // A copy, for the callback may set another delegate.
    const KRDirectoryScannerDelegate delegate = m_delegate;
    if (delegate.directoryScannerReportedError && delegate.context.isAlive())
        delegate.directoryScannerReportedError(*this, error);
}

void KRDirectoryScanner::_reportScanFinished(const std::shared_ptr<KRFileHierarchyItem> &root)
{
    const KRDirectoryScannerDelegate delegate = m_delegate;
    if (delegate.directoryScannerScanDidFinishWithHierarchyItem && delegate.context.isAlive())
        delegate.directoryScannerScanDidFinishWithHierarchyItem(*this, root);
}

void KRDirectoryScanner::_reportScanWasCancelled(const std::shared_ptr<KRFileHierarchyItem> &root)
{
    const KRDirectoryScannerDelegate delegate = m_delegate;
    if (delegate.directoryScannerScanDidCancelWithHierarchyItem && delegate.context.isAlive())
        delegate.directoryScannerScanDidCancelWithHierarchyItem(*this, root);
}

} // namespace Tessaron
