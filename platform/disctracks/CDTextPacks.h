#pragma once

#include "platform/disctracks/CDText.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

inline constexpr std::size_t cdTextPackSize = 18; ///< bytes, the checksum included

/// The packs that say the texts (MMC-3 annex J), block after block, each block's sizes at its end; what lies in a
/// lead-in or in the file of a cue sheet's CDTEXTFILE. `lastTrack` is the disc's. A kind of text that a block has gets
/// a text for the disc and each track, an empty one where there is none; the same text again becomes a tab. In
/// Shift-JIS, ASCII characters are written in their wide forms, since each character takes two bytes.
///
/// An error of DiscTracksErrorDomain, never a shortened text, when there are more than eight blocks, when a block needs
/// more than its 256 packs, when a text has characters that the block's encoding lacks, or belongs to no track.
[[nodiscard]] TESSARON_EXPORT Result<QByteArray> cdTextPacks(const CDText &text, std::uint32_t lastTrack);

/// Whether packs in this encoding can say the text as it is.
[[nodiscard]] TESSARON_EXPORT bool canBeCDText(const QString &text, CDTextEncoding encoding);

/// The packs of each block by themselves.
[[nodiscard]] TESSARON_EXPORT QList<QByteArray> cdTextBlocksOfPacks(QByteArrayView packs);

/// The texts that packs say. A four-byte header as drives put it in front, and one zero behind, are passed over; packs
/// that repeat the table of contents (types 88 and 89) are not texts. An error that names the pack when one is cut, its
/// checksum is wrong, it is out of order, or its text is in an encoding that is not known. Memory is in proportion to
/// the packs.
[[nodiscard]] TESSARON_EXPORT Result<CDText> cdTextOfPacks(QByteArrayView packs);

} // namespace Tessaron
