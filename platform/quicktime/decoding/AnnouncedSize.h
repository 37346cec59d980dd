#pragma once

#include "platform/quicktime/decoding/MediaContainer.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The bytes of a stream's packets where the file tells them without being read to its end: by a table of all packets,
/// by the length of samples that are as long as they say, or because nothing but packets follows the first one. No
/// value anywhere else. Moves the container's position; the container is of no further use then.
[[nodiscard]] std::optional<std::uint64_t> announcedSize(MediaContainer &container, AVStream &stream);

} // namespace Tessaron
