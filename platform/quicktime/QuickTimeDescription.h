#pragma once

#include "platform/quicktime/MediaFile.h"
#include "platform/quicktime/MovieDescription.h"

#include <optional>
#include <stop_token>

namespace Tessaron
{

/// Describes a QuickTime or MP4 file by its atoms; no value for any other file. An error when the system fails a read,
/// when the tables have no end, when nothing in it can be seen or heard, and when cancelled.
[[nodiscard]] Result<std::optional<MovieDescription>> quickTimeDescription(const MediaFile &file,
                                                                           const std::stop_token &stop);

} // namespace Tessaron
