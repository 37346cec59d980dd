#pragma once

#include "platform/foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Tessaron
{

/// What the blocks of a track hold (ECMA-130 14, and the forms of mode 2 of the CD-ROM XA system description).
enum class TrackKind : std::uint8_t {
    Unstated, ///< blocks of which only the size is known
    Audio, ///< 588 samples of 16 bits for two channels, little-endian in an image
    Mode1, ///< 2048 bytes of user data with error correction
    Mode2Formless, ///< 2336 bytes of user data, nothing else
    Mode2Form1, ///< 2048 bytes of user data with error correction
    Mode2Form2, ///< 2324 bytes of user data
    Mode2Mixed, ///< form 1 and form 2; each sector's subheader says which
};

/// Which bytes of a sector stand in an image; the value is their number. Bytes are counted from the sync field.
enum class SectorForm : std::uint32_t {
    UserData = 2048, ///< user data of mode 1 or mode 2 form 1
    Form2UserData = 2324, ///< user data of mode 2 form 2
    Form2WithSubheader = 2332, ///< bytes 16 to 2347 of mode 2: subheader twice, then what follows without the last four
    WithoutHeader = 2336, ///< bytes 16 to 2351: all of mode 2 but sync and header
    Raw = 2352, ///< the whole sector, or a block of audio
    RawWithSubchannel = 2448, ///< the same with 96 bytes of subchannel behind it
};

/// The form whose sectors have this number of bytes; no value for any other size.
[[nodiscard]] TESSARON_EXPORT std::optional<SectorForm> sectorFormOfSize(std::uint64_t bytes);

/// A run of bytes within the sector as it stands in the image.
struct SectorPart {
    std::size_t offset = 0;
    std::size_t length = 0;

    friend bool operator==(const SectorPart &, const SectorPart &) = default;
};

/// Where a sector of this kind and form holds what a program reads: audio, or user data. For Mode2Mixed the 2048 bytes
/// of form 1, which is what filesystems lie in. No value where the form cannot hold the kind (mode 1 in 2336 bytes),
/// and for Unstated unless the form is UserData.
[[nodiscard]] TESSARON_EXPORT std::optional<SectorPart> userDataPart(TrackKind kind, SectorForm form);

} // namespace Tessaron
