#include "platform/discimage/ContentsRecordReader.h"

#include "platform/disctracks/vant/Crc32.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Tessaron
{

namespace
{

namespace Field
{
constexpr std::size_t trees = 16;
constexpr std::size_t blocks = 20;
constexpr std::size_t firstBlock = 24;
constexpr std::size_t seconds = 28;
constexpr std::size_t checksum = 36;
} // namespace Field

constexpr std::string_view mark = "TESSARON TREES 1";

} // namespace

std::optional<ContentsRecord> contentsRecordIn(std::span<const std::uint8_t, ContentsRecord::size> bytes)
{
    if (!std::equal(mark.begin(), mark.end(), bytes.begin())
        || crc32(0, bytes.data(), Field::checksum) != loadLittleEndian<std::uint32_t>(&bytes[Field::checksum]))
        return std::nullopt;
    ContentsRecord record;
    record.trees = bytes[Field::trees];
    record.blocks = loadLittleEndian<std::uint32_t>(&bytes[Field::blocks]);
    record.firstBlock = loadLittleEndian<std::uint32_t>(&bytes[Field::firstBlock]);
    record.seconds = std::int64_t(loadLittleEndian<std::uint64_t>(&bytes[Field::seconds]));
    return record;
}

std::optional<ContentsRecord> contentsRecordAt(const DiscImageSource &source, std::uint64_t offset)
{
    std::array<std::uint8_t, ContentsRecord::size> bytes;
    if (!source.contains(offset, bytes.size()) || source.read(offset, bytes.data(), bytes.size()))
        return std::nullopt;
    return contentsRecordIn(bytes);
}

} // namespace Tessaron
