#include "platform/discimage/iso9660/IsoDirectory.h"

#include "platform/discimage/iso9660/IsoFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

namespace Field = IsoRecordField;

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
        const std::size_t size = m_sector[at + Field::length];
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
    const std::size_t size = m_sector[at + Field::length];
    record->offset = m_offset + m_position;
    if (size < smallestRecord || size > sectorSize - at)
        return damaged(record->offset, QStringLiteral("A directory record of %1 bytes is impossible here").arg(size));
    record->bytes = std::span(m_sector).subspan(at, size);
    const std::span<const std::uint8_t> bytes = record->bytes;
    const std::size_t identifierSize = bytes[Field::identifierLength];
    // A byte of padding makes the identifier's end even.
    const std::size_t useStart = Field::identifier + identifierSize + (identifierSize % 2 == 0 ? 1 : 0);
    if (identifierSize == 0 || Field::identifier + identifierSize > size)
        return damaged(record->offset,
                       QStringLiteral("A name of %1 bytes does not fit into its record").arg(identifierSize));
    record->identifier = bytes.subspan(Field::identifier, identifierSize);
    record->systemUse = useStart < size ? bytes.subspan(useStart) : std::span<const std::uint8_t>();
    record->systemUseOffset = record->offset + useStart;
    const auto block = loadLittleEndian<std::uint32_t>(&bytes[Field::block]);
    record->length = loadLittleEndian<std::uint32_t>(&bytes[Field::dataLength]);
    record->flags = bytes[Field::flags];
    if (loadBigEndian<std::uint32_t>(&bytes[Field::block + sizeof block]) != block
        || loadBigEndian<std::uint32_t>(&bytes[Field::dataLength + sizeof record->length]) != record->length)
        return damaged(record->offset + Field::block,
                       QStringLiteral("The two byte orders of a place or length disagree"));
    const std::uint32_t attributeBlocks = bytes[Field::attributeLength];
    if (block > UINT32_MAX - attributeBlocks)
        return damaged(record->offset + Field::block, QStringLiteral("An extent lies beyond all blocks"));
    record->block = block + attributeBlocks;
    if (bytes[Field::unitSize] != 0 || bytes[Field::gapSize] != 0)
        return discImageError(DiscImageErrorCode::Unsupported, record->offset + Field::unitSize,
                              QStringLiteral("Interleaved files are not read"));
    return {};
}

} // namespace Tessaron
