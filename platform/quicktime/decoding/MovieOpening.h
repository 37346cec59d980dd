#pragma once

#include "platform/foundation/Result.h"
#include "platform/quicktime/MediaService.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <stop_token>

namespace Tessaron
{

// What QTMovie asks of FFmpeg's libraries; see there.

[[nodiscard]] Result<MovieContents> openMovie(const QByteArray &path, const std::stop_token &stop);

[[nodiscard]] Result<std::uint64_t> sizeOfTrack(const QByteArray &path, std::size_t index, const std::stop_token &stop);

// The same for describeMovie() and pictureOfCover().

[[nodiscard]] Result<MovieDescription> describeStreams(const QByteArray &path, const std::stop_token &stop);

[[nodiscard]] Result<QByteArray> attachedPicture(const QByteArray &path, const std::stop_token &stop);

} // namespace Tessaron
