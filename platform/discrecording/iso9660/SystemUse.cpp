#include "platform/discrecording/iso9660/SystemUse.h"

#include "platform/discrecording/iso9660/BothEndianFields.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Fields that every entry begins with (SUSP 4.2), counted from 0.
namespace Head
{
constexpr std::size_t signature = 0;
constexpr std::size_t length = 2;
constexpr std::size_t version = 3;
} // namespace Head
static_assert(Head::version + 1 == SystemUse::headSize);

// Fields of a CE entry (SUSP 5.1).
namespace Continuation
{
constexpr std::size_t block = 4;
constexpr std::size_t offset = 12;
constexpr std::size_t length = 20;
} // namespace Continuation

void storeHead(std::uint8_t *entry, std::string_view signature, std::size_t length)
{
    std::copy(signature.begin(), signature.end(), entry + Head::signature);
    entry[Head::length] = static_cast<std::uint8_t>(length);
    entry[Head::version] = 1;
}

/// A CE entry: where the area is and how long.
void storeContinuationEntry(std::uint8_t *to, const ContinuationPlace &place, std::uint32_t size)
{
    storeHead(to, "CE", SystemUse::continuationEntrySize);
    storeBothEndian(to + Continuation::block, static_cast<std::uint32_t>(place.block));
    storeBothEndian(to + Continuation::offset, place.offset);
    storeBothEndian(to + Continuation::length, size);
}

} // namespace

void SystemUse::clear()
{
    m_bytes.clear();
    m_entries.clear();
    m_recordSize = 0;
    m_continuation.clear();
    m_areaSizes.clear();
}

std::span<std::uint8_t> SystemUse::add(std::string_view signature, std::size_t size)
{
    const std::size_t start = m_bytes.size();
    m_bytes.resize(start + size);
    m_entries.push_back({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(size)});
    std::uint8_t *const entry = m_bytes.data() + start;
    storeHead(entry, signature, size);
    return {entry + headSize, size - headSize};
}

void SystemUse::addBytes(std::string_view signature, std::uint8_t flags, std::span<const std::uint8_t> bytes)
{
    const std::span<std::uint8_t> rest = add(signature, flaggedHeadSize + bytes.size());
    rest.front() = flags;
    std::copy(bytes.begin(), bytes.end(), rest.begin() + (flaggedHeadSize - headSize));
}

void SystemUse::divide(std::size_t room)
{
    std::size_t first = m_entries.size();
    m_recordSize = m_bytes.size();
    if (m_recordSize > room) {
        m_recordSize = 0;
        for (first = 0; m_recordSize + m_entries[first].size + continuationEntrySize <= room; ++first)
            m_recordSize += m_entries[first].size;
    }
    std::copy_n(m_bytes.begin(), m_recordSize, m_record.begin());
    if (first < m_entries.size()) {
        m_recordSize += continuationEntrySize;
        continueFrom(first);
    }
}

void SystemUse::continueFrom(std::size_t first)
{
    const std::size_t rest = m_bytes.size() - m_entries[first].start;
    const std::size_t limit = rest <= logicalBlockSize ? logicalBlockSize : logicalBlockSize - continuationEntrySize;
    std::size_t areaStart = 0;
    for (std::size_t index = first; index < m_entries.size(); ++index) {
        const Entry &entry = m_entries[index];
        if (m_continuation.size() - areaStart + entry.size > limit) {
            m_areaSizes.push_back(
                static_cast<std::uint32_t>(m_continuation.size() - areaStart + continuationEntrySize));
            areaStart += logicalBlockSize;
            m_continuation.resize(areaStart);
        }
        m_continuation.insert(m_continuation.end(), m_bytes.begin() + entry.start,
                              m_bytes.begin() + entry.start + entry.size);
    }
    m_areaSizes.push_back(static_cast<std::uint32_t>(m_continuation.size() - areaStart));
}

void SystemUse::setContinuationPlace(const ContinuationPlace &place)
{
    if (m_areaSizes.empty())
        return;
    storeContinuationEntry(m_record.data() + m_recordSize - continuationEntrySize, place, m_areaSizes[0]);
    for (std::size_t area = 0; area + 1 < m_areaSizes.size(); ++area) {
        std::uint8_t *const end = m_continuation.data() + area * logicalBlockSize + m_areaSizes[area];
        storeContinuationEntry(end - continuationEntrySize, {place.block + area + 1, 0}, m_areaSizes[area + 1]);
    }
}

} // namespace Tessaron
