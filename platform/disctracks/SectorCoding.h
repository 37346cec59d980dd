#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/disctracks/SectorForm.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QFlags>
#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Tessaron
{

class TrackSubchannel;

/// Where the fields of a whole sector lie (ECMA-130 14 and annex A; for mode 2 the CD-ROM XA system description).
namespace SectorField
{
inline constexpr std::size_t sync = 0;
inline constexpr std::size_t syncSize = 12;
inline constexpr std::size_t address = 12; ///< minute, second, frame in BCD
inline constexpr std::size_t mode = 15;
inline constexpr std::size_t subheader = 16; ///< of mode 2, twice four bytes
inline constexpr std::size_t mode1Data = 16;
inline constexpr std::size_t mode1Checksum = 2064;
inline constexpr std::size_t mode1Zeros = 2068; ///< eight of them
inline constexpr std::size_t form1Data = 24;
inline constexpr std::size_t form1Checksum = 2072;
inline constexpr std::size_t form2Checksum = 2348;
inline constexpr std::size_t parityP = 2076;
inline constexpr std::size_t parityQ = 2248;
inline constexpr std::size_t sectorSize = 2352;
} // namespace SectorField

/// The subheader of a sector of mode 2.
struct SectorSubheader {
    static constexpr std::uint8_t endOfRecord = 0x01;
    static constexpr std::uint8_t data = 0x08;
    static constexpr std::uint8_t form2 = 0x20;
    static constexpr std::uint8_t endOfFile = 0x80;

    std::uint8_t file = 0;
    std::uint8_t channel = 0;
    std::uint8_t submode = data;
    std::uint8_t coding = 0;

    friend bool operator==(const SectorSubheader &, const SectorSubheader &) = default;
};

/// Continues the error detection code of sectors (ECMA-130 14.3) over further bytes; start with 0.
[[nodiscard]] TESSARON_EXPORT std::uint32_t sectorChecksum(std::uint32_t checksum, const std::uint8_t *bytes,
                                                           std::size_t length);

// Each takes a whole sector of 2352 bytes that holds its user data in place, and fills in all the rest for the block at
// `address`. Thread-safe.
TESSARON_EXPORT void completeMode1Sector(std::uint8_t *sector, BlockAddress address);
TESSARON_EXPORT void completeFormlessSector(std::uint8_t *sector, BlockAddress address);
TESSARON_EXPORT void completeForm1Sector(std::uint8_t *sector, BlockAddress address, const SectorSubheader &subheader);
/// The form 2 bit is set in any case.
TESSARON_EXPORT void completeForm2Sector(std::uint8_t *sector, BlockAddress address, const SectorSubheader &subheader);

/// What is wrong with a sector.
enum class SectorFault : std::uint32_t {
    Sync = 1u << 0, ///< no sync field
    Address = 1u << 1, ///< not decimal digits, or not the address expected
    Mode = 1u << 2, ///< not the mode of the track's kind
    Subheader = 1u << 3, ///< its two copies differ
    Checksum = 1u << 4,
    ParityP = 1u << 5,
    ParityQ = 1u << 6,
    Zeros = 1u << 7, ///< one of the eight zeros of mode 1 is set
};
Q_DECLARE_FLAGS(SectorFaults, SectorFault)
Q_DECLARE_OPERATORS_FOR_FLAGS(SectorFaults)

/// Checks a whole sector of 2352 bytes. Audio is never wrong. A form 2 sector whose checksum is 0 has none. `address`
/// is compared when given.
[[nodiscard]] TESSARON_EXPORT SectorFaults checkSector(const std::uint8_t *sector, TrackKind kind,
                                                       std::optional<BlockAddress> address);

/// The mode that the header of a whole sector says, with the form of its subheader: what kind of track this sector is
/// of. Audio when there is no sync field; Unstated for an unknown mode.
[[nodiscard]] TESSARON_EXPORT TrackKind kindOfSector(const std::uint8_t *sector);

/// Turns blocks of 2048 bytes of user data into the sectors of a track. A value; thread-safe.
class TESSARON_EXPORT SectorEncoder
{
public:
    /// No encoder for a form that cannot hold user data of 2048 bytes: those are UserData for each kind of data,
    /// Raw and RawWithSubchannel for mode 1 and mode 2, WithoutHeader for mode 2. In mode 2 the sectors are of form 1.
    [[nodiscard]] static std::optional<SectorEncoder> encoderFor(TrackKind kind, SectorForm form);

    [[nodiscard]] std::size_t blockSize() const { return std::size_t(m_form); }
    /// True when the blocks are the user data as they stand.
    [[nodiscard]] bool isPlain() const { return m_form == SectorForm::UserData; }
    /// Makes `blockCount` blocks of blockSize() bytes each from as many of 2048 bytes; the first one is at `first`. The
    /// buffers must not overlap. `subchannel` is needed for the form that has it, and not looked at otherwise; null
    /// leaves its bytes 0.
    void encode(const char *userData, std::size_t blockCount, BlockAddress first, char *blocks,
                const TrackSubchannel *subchannel = nullptr) const;

private:
    SectorEncoder(TrackKind kind, SectorForm form)
        : m_kind(kind)
        , m_form(form)
    {
    }

    TrackKind m_kind;
    SectorForm m_form;
};

} // namespace Tessaron
