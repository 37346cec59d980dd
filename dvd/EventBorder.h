#pragma once

#include "platform/foundation/NSAssertionHandler.h"

#include <QtGlobal>

#include <exception>

namespace Tessaron
{

/// Runs what the event loop asks for. What a failed assertion throws ends that work and goes no further: an exception
/// must not pass through the event loop, and a player is not to end because of one failed call.
template <typename Function>
void atEventBorder(const Function &function) noexcept
{
    try {
        function();
    } catch (const NSInternalInconsistencyException & /*assertion*/) {
        // The handler that has thrown it has logged it.
    } catch (const std::exception &exception) {
        qWarning("*** What an event asked for was not done: %s", exception.what());
    }
}

} // namespace Tessaron
