#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace Tessaron
{

/// A picture made small, or the reason why it could not be read.
struct Thumbnail {
    QImage image;
    QString problem; ///< a sentence; empty with an image
};

/// Reads the picture in a file and makes it fit into a number of pixels, turned upright. Opens regular files only, so
/// that no pipe or device can hold the caller up. Thread-safe.
[[nodiscard]] Thumbnail thumbnailOfFile(const QString &path, QSize pixels);

} // namespace Tessaron
