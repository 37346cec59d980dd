#pragma once

#include "platform/quicktime/AtomSource.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The atom inside of "moov" that stands for a compressed one (QuickTime File Format, "Compressed Movie Resources").
inline constexpr std::uint32_t compressedMovieType = fourCharacterCode("cmov");

/// The atom "moov" out of such an atom: compressed by zlib, at most 64 MiB long. No value for anything else.
[[nodiscard]] std::optional<QByteArray> inflatedMovie(AtomSource &source, const Atom &compressed);

} // namespace Tessaron
