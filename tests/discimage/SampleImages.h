#pragma once

#include "platform/discimage/ImageCheck.h"
#include "platform/discrecording/objects/DRFilesystems.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

namespace Tessaron::Testing
{

/// An image of a small tree with every kind of object: files of several sizes, an empty one, one with two names,
/// folders in each other, one with many files, a link, a named pipe, names that are long, not ASCII, or start alike.
[[nodiscard]] QByteArray sampleImage(DRFilesystemMask filesystems);

/// The combinations of filesystems that are tried.
[[nodiscard]] std::vector<DRFilesystemMask> sampleFilesystems();

/// What a check finds, a line for each problem.
[[nodiscard]] QStringList problemsOf(const QByteArray &image);
[[nodiscard]] QStringList problemsOf(const std::shared_ptr<const DiscImageSource> &source);

} // namespace Tessaron::Testing
