#pragma once

#include "platform/coreservices/FSCatalog.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <string_view>
#include <vector>

namespace Tessaron
{

/// The open listing behind FSOpenIterator() and FSGetCatalogInfoBulk(). Reads the folder's records in pieces of 32 KiB
/// and asks for each entry's facts relative to the folder's descriptor.
class FSIterator
{
public:
    explicit FSIterator(const FSRef &container);
    ~FSIterator();
    FSIterator(const FSIterator &) = delete;
    FSIterator &operator=(const FSIterator &) = delete;

    /// Opens the folder, relative to the listing of the folder that holds it when that is given and open, which makes
    /// opening cheap at any depth. 0 or an `errno` value.
    [[nodiscard]] int open(const FSIterator *parent);

    /// See FSGetCatalogInfoBulk().
    [[nodiscard]] OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo,
                                FSBulkEntry *entries);

    /// The `errno` value of the last failure.
    [[nodiscard]] int errnoValue() const { return m_errnoValue; }

    /// Gives back the descriptor and keeps the rest of the names in memory; next() opens the folder again when it must.
    /// For walks through deep trees, which would run out of descriptors.
    void releaseDescriptor();

private:
    [[nodiscard]] int openChecked(const FSIterator *parent);
    [[nodiscard]] OSStatus failed(int errnoValue);
    [[nodiscard]] bool hasRecords() const { return m_at < m_records.size(); }
    [[nodiscard]] int readRecords();
    [[nodiscard]] std::size_t takeNames(std::string_view *names, std::size_t most);
    [[nodiscard]] int fetch(const std::string_view *names, std::size_t count, std::uint32_t whichInfo,
                            FSBulkEntry *entries, std::uint32_t *actual);

    FSRef m_container;
    std::uint32_t m_node = 0; ///< the folder's place; the parent of what is listed
    UniqueDescriptor m_folder;
    QByteArray m_attributePath; ///< the folder's path, where attributesNeedPaths()
    std::vector<char> m_records; ///< as read, up to the last whole record
    std::size_t m_at = 0; ///< the next record
    bool m_isAtEnd = false; ///< the folder holds no further records than these
    bool m_keepsAttributes = true;
    int m_vainLists = 0; ///< see AttributeSource
    std::uint64_t m_notedDevice = 0; ///< whose mount was noted last
    int m_errnoValue = 0;
    int m_errorBehindRecords = 0; ///< met by releaseDescriptor(); told when the records before it are used up
};

/// FSOpenIterator() with the open listing of the folder above, which may be null, and the failure's `errno` value.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<FSIterator> openIteratorBelow(const FSRef &container,
                                                                            const FSIterator *parent, int *errnoValue);

} // namespace Tessaron
