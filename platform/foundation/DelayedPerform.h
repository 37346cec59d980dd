#pragma once

#include "platform/foundation/Export.h"

#include <chrono>
#include <functional>

namespace Tessaron
{

/// Runs `function` on the calling thread's event loop once `delay` has passed. `target` names on whose behalf, for
/// cancelPreviousPerformRequests(); it is never dereferenced.
///
/// A request on a thread that runs no event loop never fires and is dropped with its thread. Many requests with the
/// same delay cost one timer together. Returns false when the calling thread has no event dispatcher, so that the
/// request cannot fire.
TESSARON_EXPORT bool performAfterDelay(const void *target, std::chrono::milliseconds delay,
                                       std::function<void()> function);

/// Drops the requests for `target`, whichever thread they belong to. After the call no earlier request of the calling
/// thread starts any more; one of another thread may be starting just now.
TESSARON_EXPORT void cancelPreviousPerformRequests(const void *target);

} // namespace Tessaron
