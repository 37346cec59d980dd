#include "platform/discrecording/iso9660/SystemUse.h"

#include "platform/discrecording/iso9660/BothEndianFields.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// A CE entry: where the area is and how long (SUSP 5.1).
void storeContinuationEntry(std::uint8_t *to, const ContinuationPlace &place, std::uint32_t size)
{
    to[0] = 'C';
    to[1] = 'E';
    to[2] = SystemUse::continuationEntrySize;
    to[3] = 1;
    storeBothEndian(to + 4, static_cast<std::uint32_t>(place.block));
    storeBothEndian(to + 12, place.offset);
    storeBothEndian(to + 20, size);
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
    entry[0] = static_cast<std::uint8_t>(signature[0]);
    entry[1] = static_cast<std::uint8_t>(signature[1]);
    entry[2] = static_cast<std::uint8_t>(size);
    entry[3] = 1;
    return {entry + 4, size - 4};
}

void SystemUse::addBytes(std::string_view signature, std::uint8_t flags, std::span<const std::uint8_t> bytes)
{
    const std::span<std::uint8_t> rest = add(signature, 5 + bytes.size());
    rest[0] = flags;
    std::copy(bytes.begin(), bytes.end(), rest.begin() + 1);
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
