#include "filemodel/DirectoryLister.h"

#include "filemodel/FolderReader.h"
#include "platform/coreservices/FSIterator.h"

#include <algorithm>
#include <thread>

namespace Tessaron
{

namespace
{

/// A listing that starts with what was read ahead.
class FileSystemListing final : public DirectoryListing
{
public:
    explicit FileSystemListing(FolderReader::Folder folder)
        : m_folder(std::move(folder))
    {
    }

    OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo, FSBulkEntry *entries) override
    {
        if (m_nextBatch < m_folder.batches.size() && maximum == FolderReader::batchSize
            && whichInfo == FolderReader::whichInfo) {
            FolderReader::Batch &batch = m_folder.batches[m_nextBatch++];
            std::copy(batch.entries.begin(), batch.entries.end(), entries);
            *actual = static_cast<std::uint32_t>(batch.entries.size());
            return batch.status;
        }
        return FSGetCatalogInfoBulk(*m_folder.iterator, maximum, actual, whichInfo, entries);
    }

    void rest() override { m_folder.iterator->releaseDescriptor(); }

    [[nodiscard]] const FSIterator *iterator() const { return m_folder.iterator.get(); }

private:
    FolderReader::Folder m_folder;
    std::size_t m_nextBatch = 0;
};

class FileSystemLister final : public DirectoryLister
{
public:
    std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *parent) override
    {
        FolderReader::Folder opened;
        if (!m_reader || !m_reader->take(folder, &opened)) {
            const auto *const above = static_cast<const FileSystemListing *>(parent);
            OSStatus status = noErr;
            opened.iterator = FSOpenIteratorBelow(folder, above ? above->iterator() : nullptr, &status);
        }
        return opened.iterator ? std::make_unique<FileSystemListing>(std::move(opened)) : nullptr;
    }

    void willOpen(const std::vector<FSRef> &folders) override
    {
        // On one processor a second thread would only stand in the way.
        static const bool hasSecondProcessor = std::thread::hardware_concurrency() > 1;
        if (!hasSecondProcessor)
            return;
        if (!m_reader)
            m_reader = std::make_unique<FolderReader>();
        m_reader->readAhead(folders);
    }

    void endScan() override { m_reader.reset(); }

private:
    std::unique_ptr<FolderReader> m_reader;
};

} // namespace

std::shared_ptr<DirectoryLister> DirectoryLister::fileSystem()
{
    return std::make_shared<FileSystemLister>();
}

} // namespace Tessaron
