#pragma once

#include "platform/dvdplayback/PlayerProtocol.h"

#include <QByteArray>

#include <cstddef>
#include <optional>

namespace Tessaron
{

// A bookmark as bytes: a mark, a version, the identity of the disc, the place, and a checksum (CRC-32) of all that. It
// outlives the process and stands for one disc.

inline constexpr std::size_t bookmarkSize = 44;

[[nodiscard]] QByteArray bookmarkBytes(const QByteArray &discIdentity, const PlayerPlace &place);

/// Absent for bytes that are not a bookmark, a damaged one, one of another version, or one of another disc.
[[nodiscard]] std::optional<PlayerPlace> placeOfBookmark(const QByteArray &bytes, const QByteArray &discIdentity);

} // namespace Tessaron
