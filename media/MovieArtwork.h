#pragma once

#include "platform/quicktime/MediaFile.h"

#include <QImage>

namespace Tessaron
{

/// The picture of a file's artwork, 80 by 80: the first JPEG with a JFIF mark, else the first PNG, whose mark lies in
/// the first 81,920 bytes, as far as it lies in the 1,048,576 bytes from its begin. Null without a picture. Any thread.
[[nodiscard]] QImage movieArtwork(const MediaFile &file);

} // namespace Tessaron
