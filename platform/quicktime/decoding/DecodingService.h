#pragma once

#include "platform/quicktime/MediaService.h"

namespace Tessaron
{

/// The functions of the media module, for the module itself and for programs that are linked with what decodes.
[[nodiscard]] const MediaService &decodingService();

} // namespace Tessaron
