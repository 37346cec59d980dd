#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>
#include <QImage>

namespace Tessaron
{

// A custom icon is an icon family in the resource fork (type 'icns', id -16455) of a file whose Finder flags say so, or
// of the file "Icon\r" in a folder whose Finder flags say so. Where the file system keeps no attribute of that length,
// the fork and the Finder information lie in an AppleDouble file ("._name", RFC 1740) beside the file. Thread-safe.

/// The family; null when the file has no custom icon. The bytes are as they were found.
[[nodiscard]] TESSARON_EXPORT QByteArray customIconFamily(const FSRef &ref);

/// Gives a file a custom icon made from the picture, in all sizes of a family; other resources of the file stay. A null
/// picture takes the icon away. False when the file cannot be given one: folders are not supported, nor is a
/// file with a resource fork that has no room for the icon. When there is no room for it in the attributes of a file
/// without a fork, an AppleDouble file is made.
[[nodiscard]] TESSARON_EXPORT bool setCustomIcon(const FSRef &ref, const QImage &picture);

} // namespace Tessaron
