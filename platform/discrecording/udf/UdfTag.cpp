#include "platform/discrecording/udf/UdfTag.h"

#include "platform/foundation/ByteOrder.h"

#include <array>

namespace Tessaron
{

namespace
{

// Fields of a tag (ECMA-167 3/7.2), counted from 0.
namespace Field
{
constexpr std::size_t identifier = 0;
constexpr std::size_t version = 2;
constexpr std::size_t checksum = 4;
constexpr std::size_t reserved = 5;
constexpr std::size_t serialNumber = 6;
constexpr std::size_t crc = 8;
constexpr std::size_t crcLength = 10;
constexpr std::size_t location = 12;
} // namespace Field

/// Version of the tag's format: 2 for the second edition of ECMA-167, which UDF 1.02 is built on.
constexpr std::uint16_t descriptorVersion = 2;

constexpr std::size_t tableCount = 4;
using CrcTable = std::array<std::uint16_t, 256>;

/// The n-th table answers for a byte that n further bytes follow. A disc of a million small files has 200 MB under
/// checksums: four bytes in a step halve the time of one.
constexpr std::array<CrcTable, tableCount> makeCrcTables()
{
    std::array<CrcTable, tableCount> tables{};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        unsigned int crc = byte << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) != 0 ? (crc << 1) ^ 0x1021 : crc << 1;
        tables[0][byte] = static_cast<std::uint16_t>(crc);
    }
    for (std::size_t table = 1; table < tableCount; ++table) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const unsigned int before = tables[table - 1][byte];
            tables[table][byte] = static_cast<std::uint16_t>((before << 8) ^ tables[0][(before >> 8) & 0xFF]);
        }
    }
    return tables;
}
constexpr std::array<CrcTable, tableCount> crcTables = makeCrcTables();

} // namespace

std::uint16_t udfCrc(std::span<const std::uint8_t> bytes)
{
    unsigned int crc = 0;
    std::size_t at = 0;
    for (; at + tableCount <= bytes.size(); at += tableCount)
        crc = crcTables[3][(crc >> 8) ^ bytes[at]] ^ crcTables[2][(crc & 0xFF) ^ bytes[at + 1]]
            ^ crcTables[1][bytes[at + 2]] ^ crcTables[0][bytes[at + 3]];
    for (; at < bytes.size(); ++at)
        crc = ((crc << 8) & 0xFFFF) ^ crcTables[0][(crc >> 8) ^ bytes[at]];
    return static_cast<std::uint16_t>(crc);
}

void storeUdfTag(std::span<std::uint8_t> descriptor, UdfTag tag, std::uint32_t location)
{
    const std::span<const std::uint8_t> body = descriptor.subspan(udfTagSize);
    storeLittleEndian<std::uint16_t>(&descriptor[Field::identifier], static_cast<std::uint16_t>(tag));
    storeLittleEndian<std::uint16_t>(&descriptor[Field::version], descriptorVersion);
    descriptor[Field::checksum] = 0;
    descriptor[Field::reserved] = 0;
    storeLittleEndian<std::uint16_t>(&descriptor[Field::serialNumber], 0); // not given
    storeLittleEndian<std::uint16_t>(&descriptor[Field::crc], udfCrc(body));
    storeLittleEndian<std::uint16_t>(&descriptor[Field::crcLength], static_cast<std::uint16_t>(body.size()));
    storeLittleEndian<std::uint32_t>(&descriptor[Field::location], location);
    unsigned int sum = 0;
    for (std::size_t at = 0; at < udfTagSize; ++at)
        sum += descriptor[at];
    descriptor[Field::checksum] = static_cast<std::uint8_t>(sum);
}

} // namespace Tessaron
