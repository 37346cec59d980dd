#pragma once

#include "platform/quicktime/MediaService.h"

namespace Tessaron
{

/// The module's functions. The first call loads it: the main bundle's resource "TessaronMedia.so", which lies in the
/// framework's private folder of helper programs. It stays loaded to the end of the process. A failure is of code
/// noMediaModule and is about the file at `path`, for which the module was needed; a later call tries again.
/// Thread-safe.
[[nodiscard]] Result<const MediaService *> mediaService(const QByteArray &path);

/// Loads a module and asks it for its functions; refuses one that was not built with this version of the framework. An
/// empty path stands for a module that is not installed.
[[nodiscard]] Result<const MediaService *> loadMediaModule(const QByteArray &modulePath);

/// Uses these functions instead of a module's from now on: for programs that are linked with them. They are not copied.
void useMediaService(const MediaService &service);

} // namespace Tessaron
