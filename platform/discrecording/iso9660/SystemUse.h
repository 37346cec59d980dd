#pragma once

#include "platform/discrecording/image/BlockImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// Where in an image a continuation area begins.
struct ContinuationPlace {
    std::uint64_t block = 0;
    std::uint32_t offset = 0; ///< bytes within the block
};

/// The System Use entries of one directory record (SUSP 1.12): first collected, then divided into what the record
/// itself holds and what goes into a continuation area. Use one for many records: it seldom allocates then.
class SystemUse
{
public:
    /// Bytes that every entry begins with: signature, length and version (SUSP 4.2).
    static constexpr std::size_t headSize = 4;
    /// The same with the byte of flags that follows in the entries of a chain.
    static constexpr std::size_t flaggedHeadSize = headSize + 1;
    /// Bytes of a CE entry (SUSP 5.1).
    static constexpr std::size_t continuationEntrySize = 28;
    /// Longest entry: its length is one byte.
    static constexpr std::size_t longestEntry = 255;

    /// Forgets all entries.
    void clear();
    /// Adds an entry with signature, length and version set, and returns the zeroed rest of it to fill. `size` is that
    /// of the whole entry. Valid until the next call.
    std::span<std::uint8_t> add(std::string_view signature, std::size_t size);
    /// Adds an entry of a chain (NM, SL): a byte of flags and the rest.
    void addBytes(std::string_view signature, std::uint8_t flags, std::span<const std::uint8_t> bytes);

    /// Divides the entries between the record, which has room for `room` bytes, and the continuation area. No entry is
    /// parted.
    void divide(std::size_t room);

    /// What goes into the record; complete after setContinuationPlace() when there is a continuation.
    [[nodiscard]] std::span<const std::uint8_t> inRecord() const { return {m_record.data(), m_recordSize}; }
    /// What goes into the continuation area. An area of more than a block begins a block and is chained from block to
    /// block.
    [[nodiscard]] std::span<const std::uint8_t> continuation() const { return m_continuation; }
    /// Completes the entries that lead to the continuation area, which begins at `place`.
    void setContinuationPlace(const ContinuationPlace &place);

private:
    struct Entry {
        std::uint32_t start = 0;
        std::uint32_t size = 0;
    };
    /// Divides the entries from `first` on into areas of at most a block each.
    void continueFrom(std::size_t first);

    std::vector<std::uint8_t> m_bytes; ///< all entries
    std::vector<Entry> m_entries;
    std::array<std::uint8_t, longestEntry> m_record{};
    std::size_t m_recordSize = 0;
    std::vector<std::uint8_t> m_continuation;
    std::vector<std::uint32_t> m_areaSizes; ///< of m_continuation; an area begins at each of its blocks
};

} // namespace Tessaron
