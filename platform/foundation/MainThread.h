#pragma once

#include "platform/foundation/Export.h"

#include <functional>
#include <memory>

namespace Tessaron
{

/// Ties a record of callbacks to an object whose end silences them. A record that names no context lives as long as its
/// copy. Compare `std::weak_ptr`, which cannot tell "never set" from "set and gone".
class TESSARON_EXPORT CallbackContext
{
public:
    /// No context: the callbacks are never silenced.
    CallbackContext() = default;
    /// The callbacks are silent once `object` is gone.
    CallbackContext(const std::shared_ptr<const void> &object) // NOLINT(google-explicit-constructor)
        : m_object(object)
        , m_isSet(true)
    {
    }

    /// False once the named object is gone.
    [[nodiscard]] bool isAlive() const { return !m_isSet || !m_object.expired(); }

private:
    std::weak_ptr<const void> m_object;
    bool m_isSet = false;
};

/// True on the thread that runs QCoreApplication's event loop.
[[nodiscard]] TESSARON_EXPORT bool isMainThread();

/// Schedules `function` on the main thread's event loop and returns at once. Calls from one thread run in the order
/// in which they were scheduled. May be called from any thread; does nothing when there is no QCoreApplication.
TESSARON_EXPORT void performOnMainThread(std::function<void()> function);

/// Runs `function` on the main thread and returns when it has run; called on the main thread it runs at once. The
/// main thread must not be waiting for the caller. Does nothing when there is no QCoreApplication.
TESSARON_EXPORT void performOnMainThreadAndWait(const std::function<void()> &function);

} // namespace Tessaron
