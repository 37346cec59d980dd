#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>

namespace Tessaron
{

/// Bytes from an offset of a file; how many, fewer than asked for only at its end and where it cannot be read.
using ReadResult = std::function<std::size_t(std::uint64_t offset, void *buffer, std::size_t length)>;

/// What shows that a file of sound is not whole, as a clause; empty for one that is. WAVE and AIFF files must be as
/// long as their headers say, MP3 files (MPEG-1, layer III) consist of whole frames up to their last byte: an encoder
/// that finds the disk full while it closes its file may say nothing. `format` is a code of KRAudioConverter.
[[nodiscard]] QString flawOfResult(std::uint64_t bytes, const ReadResult &read, std::int32_t format);

/// The same for a file at a path.
[[nodiscard]] QString flawOfResult(const QByteArray &path, std::int32_t format);

} // namespace Tessaron
