#include "filemodel/DirectoryScan.h"

#include "filemodel/FolderReader.h"
#include "platform/foundation/NSThread.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

namespace Tessaron
{

namespace
{

/// Entries fetched by one call.
constexpr std::uint32_t batchSize = FolderReader::batchSize;

constexpr std::uint32_t wantedInfo = FolderReader::whichInfo;

/// Below so many folders nothing is read ahead: the path to each would be walked again.
constexpr std::size_t mostLevelsAhead = 32;

/// Folders above each other that keep descriptors and full-sized buffers while the walk is below them.
constexpr std::size_t mostOpenLevels = 64;

/// The record that every reference of a scan starts with.
_ZelFileAttribute scannedAttributes()
{
    _ZelFileAttribute attributes = ZelFileAttributeNone_fct();
    attributes.empty = 0;
    return attributes;
}

std::shared_ptr<KRFileHierarchyItem> itemForFolder(const FSRef &ref)
{
    _ZelFileAttribute attributes = scannedAttributes();
    attributes.directory = 0;
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(
        KRFileReference::initWithFSRef(ref, std::move(attributes)));
}

std::shared_ptr<KRFileHierarchyItem> itemForFile(const FSBulkEntry &entry)
{
    _ZelFileAttribute attributes = scannedAttributes();
    attributes.dataSize = entry.info.dataPhysicalSize;
    attributes.rsrcSize = entry.info.rsrcPhysicalSize;
    attributes.dataSizeIsKnown = 0;
    attributes.rsrcSizeIsKnown = 0;
    attributes.directory = 1;
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(
        KRFileReference::initWithFSRef(entry.ref, std::move(attributes)));
}

void countOneMore(std::atomic<std::uint32_t> &counter)
{
    // Only the worker writes: no need for a locked increment.
    counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

} // namespace

DirectoryScan::DirectoryScan(KRDirectoryScanner &scanner)
    : m_scanner(scanner)
{
}

DirectoryScan::~DirectoryScan() = default;

bool DirectoryScan::isCancelled() const
{
    return m_scanner.m_scanThread->isCancelled();
}

bool DirectoryScan::run()
{
    m_scanner.m_scannedFiles.store(0, std::memory_order_relaxed);
    m_scanner.m_scannedDirs.store(0, std::memory_order_relaxed);
    m_scanner.m_errorCount.store(0, std::memory_order_relaxed);
    m_root =
        KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::initWithFSRef(m_scanner.m_fileRef));
    enterFolder(m_scanner.m_fileRef, m_root);
    const bool wasCancelled = walk();
    m_scanner.m_lister->endScan();
    return wasCancelled;
}

bool DirectoryScan::walk()
{
    while (m_depth > 0) {
        Level &level = m_levels[m_depth - 1];
        if (prepareEntry(level) == Step::EndOfFolder) {
            leaveFolder();
            continue;
        }
        // What was built so far stays; the folders above notice the cancellation at their own next entries.
        if (isCancelled()) {
            const bool isRoot = m_depth == 1;
            leaveFolder();
            if (isRoot)
                return true;
            continue;
        }
        takeEntry(level.entries[level.next++]);
    }
    return false;
}

/// Makes sure that the level has a next entry, fetching further batches as long as there are.
DirectoryScan::Step DirectoryScan::prepareEntry(Level &level)
{
    while (level.next == level.count) {
        if (level.status != noErr && level.status != errFSNoMoreItems) {
            countOneMore(m_scanner.m_errorCount);
            m_scanner.scheduleErrorReport(level.status, level.folder);
        }
        if (level.status != noErr || !level.listing)
            return Step::EndOfFolder;
        level.entries.resize(batchSize);
        std::uint32_t actual = 0;
        level.status = level.listing->next(batchSize, &actual, wantedInfo, level.entries.data());
        level.count = actual;
        level.next = 0;
        announceFolders(level);
    }
    return Step::Entry;
}

/// Tells the lister which folders come next, but for the first, which is opened right away.
void DirectoryScan::announceFolders(const Level &level)
{
    if (m_depth > mostLevelsAhead)
        return;
    std::vector<FSRef> folders;
    for (std::size_t index = 0; index < level.count; ++index) {
        if (level.entries[index].info.nodeFlags & kFSNodeIsDirectoryMask)
            folders.push_back(level.entries[index].ref);
    }
    if (folders.size() < 2)
        return;
    folders.erase(folders.begin());
    m_scanner.m_lister->willOpen(folders);
}

void DirectoryScan::takeEntry(const FSBulkEntry &entry)
{
    if (entry.info.nodeFlags & kFSNodeIsDirectoryMask) {
        countOneMore(m_scanner.m_scannedDirs);
        const FSRef folder = entry.ref;
        enterFolder(folder, itemForFolder(folder));
        return;
    }
    countOneMore(m_scanner.m_scannedFiles);
    m_levels[m_depth - 1].item->addItem(itemForFile(entry));
}

void DirectoryScan::enterFolder(const FSRef &folder, const std::shared_ptr<KRFileHierarchyItem> &item)
{
    DirectoryListing *const above = m_depth > 0 ? m_levels[m_depth - 1].listing.get() : nullptr;
    std::unique_ptr<DirectoryListing> listing = m_scanner.m_lister->open(folder, above);
    if (m_depth > mostOpenLevels) {
        Level &parent = m_levels[m_depth - 1];
        parent.listing->rest();
        parent.entries.erase(parent.entries.begin() + static_cast<std::ptrdiff_t>(parent.count), parent.entries.end());
        parent.entries.erase(parent.entries.begin(), parent.entries.begin() + static_cast<std::ptrdiff_t>(parent.next));
        parent.entries.shrink_to_fit();
        parent.count = parent.entries.size();
        parent.next = 0;
    }
    if (m_depth == m_levels.size())
        m_levels.emplace_back();
    Level &level = m_levels[m_depth++];
    level.folder = folder;
    level.item = item;
    level.listing = std::move(listing);
    level.count = level.next = 0;
    level.status = noErr;
}

void DirectoryScan::leaveFolder()
{
    Level &level = m_levels[--m_depth];
    level.listing.reset();
    const std::shared_ptr<KRFileHierarchyItem> item = std::move(level.item);
    if (m_depth > 0)
        m_levels[m_depth - 1].item->addItem(item);
    if (m_depth > mostOpenLevels)
        level.entries = {};
}

} // namespace Tessaron
