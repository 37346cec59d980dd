#pragma once

#include "platform/discimage/ImageCheck.h"
#include "platform/discrecording/objects/DRFilesystems.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron::Testing
{

/// An image of a small tree with every kind of object: files of several sizes, an empty one, one with two names,
/// folders in each other, one with many files, a link, a named pipe, names that are long, not ASCII, or start alike.
/// `time` is that of the volume, and none of its objects is later; without one it is now.
[[nodiscard]] QByteArray sampleImage(DRFilesystemMask filesystems, std::optional<std::int64_t> time = std::nullopt);

/// The combinations of filesystems that are tried.
[[nodiscard]] std::vector<DRFilesystemMask> sampleFilesystems();

/// What a check finds, a line for each problem.
[[nodiscard]] QStringList problemsOf(const QByteArray &image);
[[nodiscard]] QStringList problemsOf(const std::shared_ptr<const DiscImageSource> &source);

} // namespace Tessaron::Testing
