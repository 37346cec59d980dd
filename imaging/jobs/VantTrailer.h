#pragma once

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// What makes a data image of `imageLength` bytes, a multiple of 2048, a VANT image when it is put behind it: one
/// session of one track.
[[nodiscard]] QByteArray vantTrailerForImage(std::uint64_t imageLength);

} // namespace Tessaron
