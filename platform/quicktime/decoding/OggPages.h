#pragma once

#include "platform/quicktime/decoding/LocalMediaFile.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The granule position of the last page of an Ogg file (RFC 3533, 6): with Vorbis, the number of samples. No value
/// when the file does not end with a page of the stream that it begins with.
[[nodiscard]] std::optional<std::int64_t> endOfOggStream(const LocalMediaFile &file);

} // namespace Tessaron
