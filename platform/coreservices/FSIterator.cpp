#include "platform/coreservices/FSIterator.h"

#include "platform/coreservices/CatalogFacts.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/IdentityProofs.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/NSError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::size_t readBytes = 32768;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK;

/// Entries asked for and put into the table of names at a time.
constexpr std::size_t namesAtOnce = 64;

/// A record of getdents64(2): 64-bit inode and offset, 16-bit record length, 8-bit type, the name with a NUL.
constexpr std::size_t recordLengthAt = 16;
constexpr std::size_t recordNameAt = 19;

bool isDotOrDotDot(std::string_view name)
{
    return name == "." || name == "..";
}

/// A wrong file lies where a reference leads, or none: it may have been renamed.
bool mayHaveMoved(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

} // namespace

FSIterator::FSIterator(const FSRef &container)
    : m_container(container)
{
}

FSIterator::~FSIterator() = default;

int FSIterator::open(const FSIterator *parent)
{
    int error = openChecked(parent);
    if (parent && mayHaveMoved(error))
        error = openChecked(nullptr); // by its whole path, which is searched for
    if (error != 0)
        return error;
    m_node = FilePlaces::shared().currentNode(m_container);
    if (m_node != NodeTable::root && FilePlaces::shared().isFolderInDoubt(m_node))
        FilePlaces::shared().noteFolder(m_node, identityOf(m_container));
    m_keepsAttributes = volumeKeepsAttributes(m_container.device);
    if (m_keepsAttributes && attributesNeedPaths())
        m_attributePath = pathOfNode(m_node);
    return 0;
}

/// Opens the folder below the one that is open, or finds it; ENOENT when another file lies there.
int FSIterator::openChecked(const FSIterator *parent)
{
    int error = 0;
    if (!parent || !parent->m_folder || parent->m_node != parentNodeOfFSRef(m_container)) {
        m_folder = openFSRef(m_container, folderFlags, &error);
        return error;
    }
    m_folder.reset(::openat(parent->m_folder.get(), nameOfFSRef(m_container).data(), folderFlags | O_CLOEXEC));
    struct statx facts;
    error = m_folder ? statDescriptor(m_folder.get(), identityFields, &facts) : errno;
    if (error == 0 && !isFileAtItsPlace(m_container, facts))
        error = ENOENT;
    if (error != 0)
        m_folder.reset();
    return error;
}

OSStatus FSIterator::next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo, FSBulkEntry *entries)
{
    *actual = 0;
    std::array<std::string_view, namesAtOnce> names;
    while (*actual < maximum) {
        if (!hasRecords()) {
            if (m_isAtEnd)
                return errFSNoMoreItems;
            if (const int error = readRecords())
                return failed(error);
            continue;
        }
        // Before names are taken, so that none is lost when no descriptor is to be had just now.
        if (!m_folder) {
            if (const int error = openChecked(nullptr))
                return failed(error);
        }
        const std::size_t count = takeNames(names.data(), std::min<std::size_t>(namesAtOnce, maximum - *actual));
        if (const int error = fetch(names.data(), count, whichInfo, entries + *actual, actual))
            return failed(error);
    }
    return noErr;
}

OSStatus FSIterator::failed(int errnoValue)
{
    m_errnoValue = errnoValue;
    return statusForErrno(errnoValue);
}

int FSIterator::readRecords()
{
    if (!m_folder || m_errorBehindRecords != 0) {
        m_isAtEnd = true; // an open folder would be read from its start
        return m_errorBehindRecords;
    }
    m_records.resize(readBytes);
    const long length = ::syscall(SYS_getdents64, m_folder.get(), m_records.data(), m_records.size());
    const int error = errno;
    m_records.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    m_at = 0;
    m_isAtEnd = length <= 0;
    return length < 0 ? error : 0;
}

/// Takes names from the records read; they stay valid until more records are read.
std::size_t FSIterator::takeNames(std::string_view *names, std::size_t most)
{
    std::size_t count = 0;
    while (count < most && hasRecords()) {
        const char *const record = m_records.data() + m_at;
        std::uint16_t length = 0;
        std::memcpy(&length, record + recordLengthAt, sizeof length);
        m_at += length;
        const std::string_view name(record + recordNameAt);
        if (!isDotOrDotDot(name))
            names[count++] = name;
    }
    return count;
}

/// Fills `entries` with what is still there of the names, and adds their number to `*actual`.
int FSIterator::fetch(const std::string_view *names, std::size_t count, std::uint32_t whichInfo, FSBulkEntry *entries,
                      std::uint32_t *actual)
{
    const unsigned int mask = catalogFields(whichInfo);
    const FileTime now = IdentityProofs::now();
    constexpr std::uint32_t attributeInfo = kFSCatInfoRsrcSizes | kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
    std::array<std::string_view, namesAtOnce> present;
    std::size_t found = 0;
    int error = 0;
    for (std::size_t index = 0; index < count; ++index) {
        struct statx facts;
        error = statBelow(m_folder.get(), names[index].data(), mask, &facts);
        if (error == ENOENT) {
            error = 0;
            continue;
        }
        if (error != 0)
            break;
        FSBulkEntry &entry = entries[found];
        entry.ref = refWithFacts(facts, 0);
        if (IdentityProofs::isYoung(entry.ref, now))
            IdentityProofs::shared().noteYoung(entry.ref, m_folder.get(), names[index].data());
        if (entry.ref.device != m_notedDevice) {
            m_notedDevice = entry.ref.device;
            IdentityProofs::shared().noteMount(m_notedDevice, mountOf(facts));
        }
        fillCatalogInfo(facts, whichInfo, &entry.info);
        if (m_keepsAttributes && (whichInfo & attributeInfo) && mayHaveFinderInfo(facts)) {
            AttributeSource source{m_folder.get(), names[index].data(), m_attributePath, entry.ref.device};
            source.vainLists = m_vainLists;
            fillFromAttributes(source, facts, whichInfo, &entry.info);
            m_vainLists = source.vainLists;
            m_keepsAttributes = source.isSupported || entry.ref.device != m_container.device;
        }
        present[found++] = names[index];
    }
    std::array<std::uint32_t, namesAtOnce> nodes;
    NodeTable::shared().intern(m_node, present.data(), found, nodes.data());
    for (std::size_t index = 0; index < found; ++index) {
        entries[index].ref.node = nodes[index];
        if (nodes[index] == NodeTable::none)
            return ENOMEM;
    }
    *actual += static_cast<std::uint32_t>(found);
    return error;
}

void FSIterator::releaseDescriptor()
{
    std::vector<char> rest(m_records.begin() + static_cast<std::ptrdiff_t>(m_at), m_records.end());
    while (m_folder && !m_isAtEnd && m_errorBehindRecords == 0) {
        m_at = 0;
        if (const int error = readRecords()) {
            m_errorBehindRecords = error;
            m_isAtEnd = false; // the failure is told when the listing comes to it
            break;
        }
        rest.insert(rest.end(), m_records.begin(), m_records.end());
    }
    rest.shrink_to_fit();
    m_records.swap(rest);
    m_at = 0;
    m_folder.reset();
}

std::shared_ptr<FSIterator> openIteratorBelow(const FSRef &container, const FSIterator *parent, int *errnoValue)
{
    auto iterator = std::make_shared<FSIterator>(container);
    *errnoValue = iterator->open(parent);
    return *errnoValue == 0 ? iterator : nullptr;
}

std::shared_ptr<FSIterator> FSOpenIterator(const FSRef &container, OSStatus *status)
{
    int error = 0;
    std::shared_ptr<FSIterator> iterator = openIteratorBelow(container, nullptr, &error);
    if (status)
        *status = statusForErrno(error);
    return iterator;
}

OSStatus FSGetCatalogInfoBulk(FSIterator &iterator, std::uint32_t maximum, std::uint32_t *actual,
                              std::uint32_t whichInfo, FSBulkEntry *entries)
{
    return actual && entries && maximum > 0 ? iterator.next(maximum, actual, whichInfo, entries) : OSStatus(paramErr);
}

} // namespace Tessaron
