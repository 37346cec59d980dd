#pragma once

#include <cstdint>

namespace Tessaron
{

/// A kind of disc image file: one bit each, so that several can be named in one value.
using TessaronDiscImageFormat = std::int32_t;

inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatDMG = 1;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatISO = 2;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatNRG = 4;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatCDI = 8;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatToast = 16;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatBIN = 32; ///< with a cue sheet beside it
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatTOC = 64;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatCDR = 128;
inline constexpr TessaronDiscImageFormat TessaronDiscImageFormatVANT = 256; ///< blocks followed by a header

} // namespace Tessaron
