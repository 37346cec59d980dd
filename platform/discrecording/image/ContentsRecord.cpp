#include "platform/discrecording/image/ContentsRecord.h"

#include "platform/disctracks/vant/Crc32.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <string_view>

namespace Tessaron
{

namespace
{

// Counted from 0; all numbers little-endian.
namespace Field
{
constexpr std::size_t trees = 16;
constexpr std::size_t blocks = 20;
constexpr std::size_t firstBlock = 24;
constexpr std::size_t seconds = 28;
constexpr std::size_t checksum = 36;
} // namespace Field

constexpr std::string_view mark = "TESSARON TREES 1";
constexpr std::uint32_t shortMark = 0x54650000; // "Te"

} // namespace

std::array<std::uint8_t, contentsRecordSize> contentsRecord(const ImageFacts &facts)
{
    std::array<std::uint8_t, contentsRecordSize> record{};
    std::copy(mark.begin(), mark.end(), record.begin());
    record[Field::trees] = facts.trees;
    storeLittleEndian<std::uint32_t>(&record[Field::blocks], facts.blocks);
    storeLittleEndian<std::uint32_t>(&record[Field::firstBlock], facts.firstBlock);
    storeLittleEndian<std::uint64_t>(&record[Field::seconds], static_cast<std::uint64_t>(facts.time.seconds));
    storeLittleEndian<std::uint32_t>(&record[Field::checksum], crc32(0, record.data(), Field::checksum));
    return record;
}

std::uint32_t shortContentsRecord(const ImageFacts &facts)
{
    // The complement shows a broken bit.
    return shortMark | static_cast<std::uint32_t>(facts.trees) << 8
        | (~static_cast<std::uint32_t>(facts.trees) & 0xFFu);
}

} // namespace Tessaron
