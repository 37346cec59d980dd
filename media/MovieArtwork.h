#pragma once

#include <QImage>
#include <QString>

namespace Tessaron
{

/// The picture of a file's artwork, 80 by 80, or null: see KRMovieInfo::artworkForFile(). Of the file, the 1,048,576
/// bytes from the picture's begin count. Any thread.
[[nodiscard]] QImage movieArtwork(const QString &path);

} // namespace Tessaron
