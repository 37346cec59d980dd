#include "platform/discimage/iso9660/IsoDirectory.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Of a directory record (ECMA-119 9.1). Numbers are recorded little-endian, then big-endian.
constexpr std::size_t attributeLengthField = 1;
constexpr std::size_t blockField = 2;
constexpr std::size_t lengthField = 10;
constexpr std::size_t flagsField = 25;
constexpr std::size_t unitSizeField = 26;
constexpr std::size_t gapSizeField = 27;
constexpr std::size_t identifierLengthField = 32;
constexpr std::size_t identifierOffset = 33;
constexpr std::size_t smallestRecord = 34;

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

} // namespace

bool IsoDirectory::next(IsoRecord *record, NSError *error)
{
    *error = {};
    while (m_position < m_length) {
        const std::size_t at = std::size_t(m_position % sectorSize);
        if (at == 0) {
            *error = readSector();
            if (*error)
                return false;
        }
        const std::size_t size = m_sector[at];
        if (size == 0) { // the rest of the sector is empty
            m_position += sectorSize - at;
            continue;
        }
        *error = parse(at, record);
        if (*error)
            return false;
        m_position += size;
        return true;
    }
    return false;
}

NSError IsoDirectory::readSector()
{
    const auto part = std::size_t(std::min<std::uint64_t>(sectorSize, m_length - m_position));
    std::fill(m_sector.begin() + std::ptrdiff_t(part), m_sector.end(), std::uint8_t(0));
    return m_source.read(m_offset + m_position, m_sector.data(), part);
}

NSError IsoDirectory::parse(std::size_t at, IsoRecord *record) const
{
    const std::size_t size = m_sector[at];
    record->offset = m_offset + m_position;
    if (size < smallestRecord || size > sectorSize - at)
        return damaged(record->offset, QStringLiteral("A directory record of %1 bytes is impossible here").arg(size));
    record->bytes = std::span(m_sector).subspan(at, size);
    const std::span<const std::uint8_t> bytes = record->bytes;
    const std::size_t identifierSize = bytes[identifierLengthField];
    // A byte of padding makes the identifier's end even.
    const std::size_t useStart = identifierOffset + identifierSize + (identifierSize % 2 == 0 ? 1 : 0);
    if (identifierSize == 0 || identifierOffset + identifierSize > size)
        return damaged(record->offset,
                       QStringLiteral("A name of %1 bytes does not fit into its record").arg(identifierSize));
    record->identifier = bytes.subspan(identifierOffset, identifierSize);
    record->systemUse = useStart < size ? bytes.subspan(useStart) : std::span<const std::uint8_t>();
    record->systemUseOffset = record->offset + useStart;
    const auto block = loadLittleEndian<std::uint32_t>(&bytes[blockField]);
    record->length = loadLittleEndian<std::uint32_t>(&bytes[lengthField]);
    record->flags = bytes[flagsField];
    if (loadBigEndian<std::uint32_t>(&bytes[blockField + 4]) != block
        || loadBigEndian<std::uint32_t>(&bytes[lengthField + 4]) != record->length)
        return damaged(record->offset + blockField,
                       QStringLiteral("The two byte orders of a place or length disagree"));
    const std::uint32_t attributeBlocks = bytes[attributeLengthField];
    if (block > UINT32_MAX - attributeBlocks)
        return damaged(record->offset + blockField, QStringLiteral("An extent lies beyond all blocks"));
    record->block = block + attributeBlocks;
    if (bytes[unitSizeField] != 0 || bytes[gapSizeField] != 0)
        return discImageError(DiscImageErrorCode::Unsupported, record->offset + unitSizeField,
                              QStringLiteral("Interleaved files are not read"));
    return {};
}

} // namespace Tessaron
