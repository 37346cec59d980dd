#include "filemodel/DirectoryLister.h"

#include "filemodel/FolderReader.h"
#include "platform/coreservices/FSIterator.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <thread>

namespace Tessaron
{

namespace
{

class FileSystemLister final : public DirectoryLister
{
public:
    std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *parent, int *errnoValue) override;
    void willOpen(const std::vector<FSRef> &folders) override;
    void giveBackDescriptors() override;
    void endScan() override { m_reader.reset(); }

    /// Null where nothing is to be read ahead.
    FolderReader *reader();

private:
    std::unique_ptr<FolderReader> m_reader;
    bool m_hasNoThread = false; ///< the system had none to give; not asked again
};

/// A listing that starts with what was read ahead and, when the folder is long, is read on while it is used.
class FileSystemListing final : public DirectoryListing
{
public:
    FileSystemListing(FileSystemLister &lister, FolderReader::Folder folder)
        : m_lister(lister)
        , m_folder(std::move(folder))
    {
    }
    ~FileSystemListing() override
    {
        if (m_reading)
            m_lister.reader()->abandon(m_reading);
    }

    OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo, FSBulkEntry *entries) override;

    [[nodiscard]] int errnoValue() const override { return m_errnoValue; }

    void rest() override
    {
        collect();
        m_folder.iterator->releaseDescriptor();
    }

    /// Null while the reader uses it.
    [[nodiscard]] const FSIterator *iterator() const { return m_reading ? nullptr : m_folder.iterator.get(); }

private:
    void collect();
    void readOnIfLong();

    FileSystemLister &m_lister;
    FolderReader::Folder m_folder;
    std::size_t m_nextBatch = 0;
    int m_batchesTaken = 0;
    int m_errnoValue = 0;
    FolderReader::Reading m_reading;
};

OSStatus FileSystemListing::next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo,
                                 FSBulkEntry *entries)
{
    if (m_nextBatch == m_folder.batches.size())
        collect();
    OSStatus status = noErr;
    if (m_nextBatch < m_folder.batches.size()) {
        // The scan asks for batches as the reader reads them: the two constants are one.
        FolderReader::Batch &batch = m_folder.batches[m_nextBatch++];
        *actual = std::min(maximum, batch.count);
        std::copy_n(batch.entries.begin(), *actual, entries);
        status = batch.status;
        m_errnoValue = batch.errnoValue;
        m_lister.reader()->reuse(std::move(batch));
    } else {
        status = FSGetCatalogInfoBulk(*m_folder.iterator, maximum, actual, whichInfo, entries);
        m_errnoValue = m_folder.iterator->errnoValue();
    }
    ++m_batchesTaken;
    if (status == noErr)
        readOnIfLong();
    return status;
}

/// Appends what the reader has read on to the batches that are left.
void FileSystemListing::collect()
{
    if (!m_reading)
        return;
    std::vector<FolderReader::Batch> further = m_lister.reader()->takeOn(m_reading);
    m_reading.reset();
    m_folder.batches.erase(m_folder.batches.begin(),
                           m_folder.batches.begin() + static_cast<std::ptrdiff_t>(m_nextBatch));
    m_nextBatch = 0;
    std::move(further.begin(), further.end(), std::back_inserter(m_folder.batches));
}

void FileSystemListing::readOnIfLong()
{
    constexpr int batchesOfAShortFolder = 2;
    const bool mayGoOn = m_folder.batches.empty() || m_folder.batches.back().status == noErr;
    if (m_reading || !mayGoOn || m_batchesTaken < batchesOfAShortFolder)
        return;
    if (FolderReader *const reader = m_lister.reader())
        m_reading = reader->readOn(m_folder.iterator);
}

std::unique_ptr<DirectoryListing> FileSystemLister::open(const FSRef &folder, DirectoryListing *parent, int *errnoValue)
{
    FolderReader::Folder opened;
    if (!m_reader || !m_reader->take(folder, &opened)) {
        const auto *const above = static_cast<const FileSystemListing *>(parent);
        opened.iterator = openIteratorBelow(folder, above ? above->iterator() : nullptr, &opened.errnoValue);
    }
    *errnoValue = opened.errnoValue;
    return opened.iterator ? std::make_unique<FileSystemListing>(*this, std::move(opened)) : nullptr;
}

void FileSystemLister::giveBackDescriptors()
{
    if (m_reader)
        m_reader->dropFolders();
}

void FileSystemLister::willOpen(const std::vector<FSRef> &folders)
{
    if (FolderReader *const folderReader = reader())
        folderReader->readAhead(folders);
}

FolderReader *FileSystemLister::reader()
{
    // On one processor a second thread would only stand in the way.
    static const bool hasSecondProcessor = std::thread::hardware_concurrency() > 1;
    if (m_reader || !hasSecondProcessor || m_hasNoThread)
        return m_reader.get();
    try {
        m_reader = std::make_unique<FolderReader>();
    } catch (const std::system_error &) {
        m_hasNoThread = true;
    }
    return m_reader.get();
}

} // namespace

std::shared_ptr<DirectoryLister> DirectoryLister::fileSystem()
{
    return std::make_shared<FileSystemLister>();
}

} // namespace Tessaron
