#include "filemodel/DirectoryScan.h"

#include "filemodel/FolderReader.h"
#include "filemodel/ScanRecord.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/WhenThereIsMemory.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace Tessaron
{

namespace
{

/// Entries fetched by one call.
constexpr std::uint32_t batchSize = FolderReader::batchSize;

constexpr std::uint32_t wantedInfo = FolderReader::whichInfo;

/// Below this many levels nothing is read ahead: the path to each would be walked again.
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

/// The heap of a worker thread grows page by page, with a system call for each: thousands of them for 100,000 files. A
/// block that is taken and given back leaves its room behind, as it is small enough that malloc(3) neither maps it
/// apart nor gives it back to the system.
void growHeapAtOnce()
{
    constexpr std::size_t room = std::size_t{120} * 1024;
    void *volatile block = std::malloc(room); // volatile: a compiler may leave out what seems to be in vain
    std::free(block);
}

/// How many entries fill that room with their items and references, about.
constexpr std::size_t entriesPerGrowth = 300;

} // namespace

DirectoryScan::DirectoryScan(const FSRef &folder, DirectoryLister &lister, ScanRecord &record, Hooks hooks)
    : m_folder(folder)
    , m_lister(lister)
    , m_record(record)
    , m_hooks(std::move(hooks))
{
}

DirectoryScan::~DirectoryScan() = default;

bool DirectoryScan::run()
{
    whenThereIsMemory([this] { m_record.begin(); });
    bool wasCancelled = false;
    m_entering = m_folder;
    try {
        m_root = KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::initWithFSRef(m_folder));
        enterFolder(m_folder, m_root);
        wasCancelled = walk();
    } catch (const std::bad_alloc &) {
        giveUp();
    }
    m_lister.endScan();
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
        if (m_hooks.isCancelled()) {
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

/// Makes sure that the level has a next entry, fetching further batches as long as there are any.
DirectoryScan::Step DirectoryScan::prepareEntry(Level &level)
{
    while (level.next == level.count) {
        if (level.status != noErr && level.status != errFSNoMoreItems) {
            m_record.countError();
            m_record.noteUnreadable(level.folder, level.listing->errnoValue());
            m_hooks.reportError(level.status, level.folder);
        }
        if (level.status != noErr || !level.listing)
            return Step::EndOfFolder;
        fetchBatch(level);
        announceFolders(level);
    }
    return Step::Entry;
}

void DirectoryScan::fetchBatch(Level &level)
{
    if (m_untilGrowth < batchSize) {
        growHeapAtOnce();
        m_untilGrowth = entriesPerGrowth;
    }
    level.entries.resize(batchSize);
    level.count = level.next = 0;
    std::uint32_t actual = 0;
    level.status = level.listing->next(batchSize, &actual, wantedInfo, level.entries.data());
    if (level.status == tmfoErr && actual == 0) {
        giveBackDescriptors();
        level.status = level.listing->next(batchSize, &actual, wantedInfo, level.entries.data());
    }
    level.count = actual;
    m_untilGrowth -= actual;
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
    m_lister.willOpen(folders);
}

void DirectoryScan::takeEntry(const FSBulkEntry &entry)
{
    KRFileHierarchyItem &parent = *m_levels[m_depth - 1].item;
    if (entry.info.nodeFlags & kFSNodeIsDirectoryMask) {
        m_record.countFolder();
        const FSRef folder = entry.ref;
        const std::shared_ptr<KRFileHierarchyItem> item = itemForFolder(folder);
        // Added while it is empty: otherwise the tree would look at all levels above for a circle.
        parent.addItem(item);
        enterFolder(folder, item);
        return;
    }
    m_record.countFile();
    parent.addItem(itemForFile(entry));
}

void DirectoryScan::enterFolder(const FSRef &folder, const std::shared_ptr<KRFileHierarchyItem> &item)
{
    m_entering = folder;
    std::unique_ptr<DirectoryListing> listing = openListing(folder);
    if (m_depth > mostOpenLevels && m_levels[m_depth - 1].listing) {
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
    m_entering = {};
}

/// Null when the folder cannot be opened, which is noted.
std::unique_ptr<DirectoryListing> DirectoryScan::openListing(const FSRef &folder)
{
    DirectoryListing *const above = m_depth > 0 ? m_levels[m_depth - 1].listing.get() : nullptr;
    int error = 0;
    std::unique_ptr<DirectoryListing> listing = m_lister.open(folder, above, &error);
    if (!listing && isLackOfDescriptors(error)) {
        giveBackDescriptors();
        listing = m_lister.open(folder, above, &error);
    }
    if (!listing)
        m_record.noteUnreadable(folder, error);
    return listing;
}

/// The system has no descriptor left: all that wait for their turn give back theirs.
void DirectoryScan::giveBackDescriptors()
{
    m_lister.giveBackDescriptors();
    for (std::size_t index = 0; index < m_depth; ++index) {
        if (m_levels[index].listing)
            m_levels[index].listing->rest();
    }
}

void DirectoryScan::leaveFolder()
{
    Level &level = m_levels[--m_depth];
    level.listing.reset();
    level.item.reset();
    if (m_depth > mostOpenLevels)
        level.entries = {};
}

/// Memory has run out. The tree built so far stays; the folders that are missing are noted, as far as there is memory
/// for that.
void DirectoryScan::giveUp()
{
    for (Level &level : m_levels) {
        level.listing.reset();
        level.entries = {};
    }
    m_lister.endScan();
    const FSRef at = m_entering.node != 0 || m_depth == 0 ? m_entering : m_levels[m_depth - 1].folder;
    try {
        m_record.countError();
        m_record.noteUnreadable(at, ENOMEM);
        m_hooks.reportError(memFullErr, at);
        for (std::size_t index = m_depth; index-- > 0;) {
            if (m_levels[index].folder != at)
                m_record.noteUnreadable(m_levels[index].folder, ENOMEM);
        }
    } catch (const std::bad_alloc &) {
        m_record.noteOutOfMemory();
    }
}

} // namespace Tessaron
