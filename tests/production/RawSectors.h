#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/disctracks/SectorForm.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// Bytes of user data in a sector of the kind; those of audio are its samples.
[[nodiscard]] qsizetype userDataSize(TrackKind kind);

/// User data of sectors in which no two are alike.
[[nodiscard]] QByteArray userDataOf(TrackKind kind, int sectors);

/// The whole sectors, 2352 bytes each, around the user data, with sync, headers, checksums and parity.
[[nodiscard]] QByteArray rawSectorsAround(TrackKind kind, const QByteArray &userData, BlockAddress first);

/// `length` bytes from `offset` on of each sector of `sectorSize` bytes.
[[nodiscard]] QByteArray partsOf(const QByteArray &sectors, qsizetype sectorSize, qsizetype offset, qsizetype length);

/// The whole sectors with 96 bytes behind each.
[[nodiscard]] QByteArray withSubchannels(const QByteArray &rawSectors);

// What a sector of 2352 bytes says, found out without the library's own code: the checksum by long division of
// polynomials (ECMA-130 14.3), the parity by the two check equations of each of its code words (annex A).

/// True for a sector with a sync field, an address and this mode in its header.
[[nodiscard]] bool hasHeader(const QByteArray &sector, BlockAddress address, int mode);
[[nodiscard]] bool isSoundMode1(const QByteArray &sector);
[[nodiscard]] bool isSoundForm1(const QByteArray &sector);
[[nodiscard]] bool isSoundForm2(const QByteArray &sector);

} // namespace Tessaron::Testing
