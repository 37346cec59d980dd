#include "filemodel/DirectoryLister.h"

#include "platform/coreservices/FSIterator.h"

namespace Tessaron
{

namespace
{

class FileSystemListing final : public DirectoryListing
{
public:
    explicit FileSystemListing(std::shared_ptr<FSIterator> iterator)
        : m_iterator(std::move(iterator))
    {
    }

    OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo, FSBulkEntry *entries) override
    {
        return FSGetCatalogInfoBulk(*m_iterator, maximum, actual, whichInfo, entries);
    }

    void rest() override { m_iterator->releaseDescriptor(); }

    [[nodiscard]] const FSIterator *iterator() const { return m_iterator.get(); }

private:
    const std::shared_ptr<FSIterator> m_iterator;
};

class FileSystemLister final : public DirectoryLister
{
public:
    std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *parent) override
    {
        const auto *const above = static_cast<const FileSystemListing *>(parent);
        OSStatus status = noErr;
        std::shared_ptr<FSIterator> iterator =
            FSOpenIteratorBelow(folder, above ? above->iterator() : nullptr, &status);
        return iterator ? std::make_unique<FileSystemListing>(std::move(iterator)) : nullptr;
    }
};

} // namespace

std::shared_ptr<DirectoryLister> DirectoryLister::fileSystem()
{
    static const auto lister = std::make_shared<FileSystemLister>();
    return lister;
}

} // namespace Tessaron
