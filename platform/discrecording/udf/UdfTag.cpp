#include "platform/discrecording/udf/UdfTag.h"

#include "platform/foundation/ByteOrder.h"

#include <array>

namespace Tessaron
{

namespace
{

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
    storeLittleEndian<std::uint16_t>(&descriptor[0], static_cast<std::uint16_t>(tag));
    storeLittleEndian<std::uint16_t>(&descriptor[2], descriptorVersion);
    descriptor[4] = 0;
    descriptor[5] = 0;
    storeLittleEndian<std::uint16_t>(&descriptor[6], 0); // serial number: none
    storeLittleEndian<std::uint16_t>(&descriptor[8], udfCrc(body));
    storeLittleEndian<std::uint16_t>(&descriptor[10], static_cast<std::uint16_t>(body.size()));
    storeLittleEndian<std::uint32_t>(&descriptor[12], location);
    unsigned int sum = 0;
    for (std::size_t at = 0; at < udfTagSize; ++at)
        sum += descriptor[at];
    descriptor[4] = static_cast<std::uint8_t>(sum);
}

} // namespace Tessaron
