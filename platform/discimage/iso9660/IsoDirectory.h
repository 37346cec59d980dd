#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/NSError.h"

#include <array>
#include <cstdint>
#include <span>

namespace Tessaron
{

/// A directory record (ECMA-119 9.1) whose parts are known to lie within it.
struct IsoRecord {
    std::span<const std::uint8_t> bytes; ///< all of it; valid until the next one is taken
    std::uint64_t offset = 0; ///< in the image
    std::span<const std::uint8_t> identifier;
    std::span<const std::uint8_t> systemUse;
    std::uint64_t systemUseOffset = 0; ///< in the image
    std::uint32_t block = 0; ///< of the extent, behind an extended attribute record
    std::uint32_t length = 0; ///< of the extent, bytes
    std::uint8_t flags = 0;

    static constexpr std::uint8_t folderFlag = 2;
    static constexpr std::uint8_t associatedFlag = 4; ///< the other fork of a file of the same name
    static constexpr std::uint8_t moreSectionsFlag = 0x80;

    [[nodiscard]] bool isFolder() const { return (flags & folderFlag) != 0; }
    [[nodiscard]] bool hasMoreSections() const { return (flags & moreSectionsFlag) != 0; }
    /// "." or "..".
    [[nodiscard]] bool isSpecial() const { return identifier.size() == 1 && identifier[0] <= 1; }
};

/// Takes the records of a directory one after another, sector by sector.
class IsoDirectory
{
public:
    /// The directory at `offset` of the image, of `length` bytes.
    IsoDirectory(const DiscImageSource &source, std::uint64_t offset, std::uint64_t length)
        : m_source(source)
        , m_offset(offset)
        , m_length(length)
    {
    }

    /// Takes the next record; false at the end, with the null error, and when the record is damaged.
    [[nodiscard]] bool next(IsoRecord *record, NSError *error);

private:
    [[nodiscard]] NSError readSector();
    [[nodiscard]] NSError parse(std::size_t at, IsoRecord *record) const;

    static constexpr std::size_t sectorSize = 2048; // records never cross one (ECMA-119 6.8.1.1)

    const DiscImageSource &m_source;
    const std::uint64_t m_offset;
    const std::uint64_t m_length;
    std::uint64_t m_position = 0;
    std::array<std::uint8_t, sectorSize> m_sector;
};

} // namespace Tessaron
