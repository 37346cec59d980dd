#pragma once

#include "platform/foundation/Export.h"

namespace Tessaron
{

/// Removes the files of images that are being made, for a program that is about to end without destroying its jobs.
/// Safe inside a signal handler.
TESSARON_EXPORT void removeUnfinishedFiles();

} // namespace Tessaron
