#include "imaging/jobs/SourceGatherer.h"

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <cerrno>
#include <iterator>
#include <utility>

namespace Tessaron
{

namespace
{

/// A source that was there a moment ago cannot be looked at any more.
QString lossOf(const QString &what, const DiscSource &source, OSStatus status)
{
    const QString named = what.arg(quoted(source.argument));
    return status == fnfErr ? QStringLiteral("%1 is gone").arg(named)
                            : QStringLiteral("%1 cannot be reached: %2").arg(named, reasonOfStatus(status));
}

} // namespace

SourceGatherer::SourceGatherer(std::vector<DiscSource> sources)
    : m_sources(std::move(sources))
    , m_life(std::make_shared<int>())
{
    m_gathered.reserve(m_sources.size());
}

SourceGatherer::~SourceGatherer()
{
    m_life.reset();
    if (m_scanner)
        m_scanner->stopScanSync();
}

void SourceGatherer::start(std::function<void()> whenEnded)
{
    m_whenEnded = std::move(whenEnded);
    continueLater();
}

void SourceGatherer::cancel()
{
    m_isCancelled = true;
    m_task.requestStop();
    if (m_scanner)
        m_scanner->stopScanAsync();
}

std::uint64_t SourceGatherer::files() const
{
    std::uint64_t result = m_filesInRow + (m_scanner ? m_scanner->scannedFiles() : 0);
    for (const GatheredSource &source : m_gathered)
        result += source.files;
    return result;
}

std::uint64_t SourceGatherer::folders() const
{
    std::uint64_t result = m_scanner ? m_scanner->scannedDirs() : 0;
    for (const GatheredSource &source : m_gathered)
        result += source.folders;
    return result;
}

void SourceGatherer::continueLater()
{
    performOnMainThread([this, life = CallbackContext(m_life)] {
        if (life.isAlive())
            gatherNext();
    });
}

void SourceGatherer::gatherNext()
{
    if (m_isCancelled || m_error || m_gathered.size() == m_sources.size()) {
        end();
        return;
    }
    const DiscSource &source = m_sources[m_gathered.size()];
    if (source.isFolder)
        gatherFolder(source);
    else
        gatherFiles();
}

void SourceGatherer::gatherFolder(const DiscSource &source)
{
    FSRef ref;
    if (const OSStatus status = FSPathMakeRef(source.path, &ref, nullptr)) {
        fail(source, lossOf(QStringLiteral("the folder %1"), source, status));
        return;
    }
    m_scannedPath = lastKnownPath(ref);
    m_scanner = KRDirectoryScanner::directoryScannerWithFSRef(ref);
    KRDirectoryScannerDelegate delegate;
    delegate.context = m_life;
    delegate.directoryScannerScanDidFinishWithHierarchyItem =
        [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { folderEnded(item); };
    delegate.directoryScannerScanDidCancelWithHierarchyItem =
        [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { folderEnded(item); };
    m_scanner->setDelegate(delegate);
    if (!m_scanner->startDirectoryScan())
        fail(source,
             QStringLiteral("the folder %1 cannot be scanned: %2").arg(quoted(source.argument), systemText(EAGAIN)));
}

void SourceGatherer::folderEnded(const std::shared_ptr<KRFileHierarchyItem> &item)
{
    if (item)
        judge(*item);
    else
        m_error = outOfMemoryError();
    m_gathered.push_back({item, m_scanner->scannedFiles(), m_scanner->scannedDirs()});
    // The scanner is still busy with this very callback: it goes when the next source, or the end, has come.
    performOnMainThread([this, life = CallbackContext(m_life), scanner = m_scanner] {
        if (life.isAlive())
            gatherNext();
    });
    m_scanner.reset();
}

/// Folders that the scanner could not list are missing in the tree; only its list of unreadable ones tells which.
void SourceGatherer::judge(const KRFileHierarchyItem &root)
{
    const DiscSource &source = m_sources[m_gathered.size()];
    for (UnreadableFolder &folder : m_scanner->unreadableFolders()) {
        if (folder.errnoValue == ENOMEM)
            m_error = outOfMemoryError();
        else if (folder.path == m_scannedPath && root.numberOfItems() == 0)
            m_error = discJobError(DiscJobErrorCode::Source,
                                   QStringLiteral("the folder %1 cannot be listed: %2")
                                       .arg(quoted(source.argument), systemText(folder.errnoValue)),
                                   isLackOfDescriptors(folder.errnoValue) ? adviceOnDescriptors() : QString(),
                                   source.argument);
        else
            m_unreadable.push_back(std::move(folder));
    }
}

/// All files up to the next folder.
void SourceGatherer::gatherFiles()
{
    m_task.start([this, first = m_gathered.size()](const std::stop_token &stop) { return lookAtFiles(first, stop); },
                 [this](const NSError &error) {
                     m_error = error;
                     m_filesInRow = 0;
                     std::move(m_row.begin(), m_row.end(), std::back_inserter(m_gathered));
                     m_row.clear();
                     gatherNext();
                 });
}

/// On the worker.
NSError SourceGatherer::lookAtFiles(std::size_t first, const std::stop_token &stop)
{
    for (std::size_t index = first; index < m_sources.size() && !m_sources[index].isFolder; ++index) {
        if (stop.stop_requested())
            break;
        const DiscSource &source = m_sources[index];
        FSRef ref;
        if (const OSStatus status = FSPathMakeRef(source.path, &ref, nullptr))
            return discJobError(DiscJobErrorCode::Source, lossOf(QStringLiteral("the file %1"), source, status), {},
                                source.argument);
        const std::shared_ptr<KRFileReference> reference = KRFileReference::initWithFSRef(ref);
        m_row.push_back({KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference), 1, 0});
        ++m_filesInRow;
    }
    return {};
}

void SourceGatherer::fail(const DiscSource &source, const QString &message)
{
    m_scanner.reset();
    m_error = discJobError(DiscJobErrorCode::Source, message, {}, source.argument);
    continueLater();
}

void SourceGatherer::end()
{
    const std::function<void()> whenEnded = std::move(m_whenEnded);
    m_whenEnded = nullptr;
    if (whenEnded)
        whenEnded();
}

} // namespace Tessaron
