#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

namespace Tessaron
{

/// Held by the one process of a user that has a playback session: a lock of the system on a file in the user's runtime
/// folder (XDG_RUNTIME_DIR, or one of /tmp that belongs to the user). It goes with the process, however that ends.
class SessionLock
{
public:
    /// False when another process has it, or this one.
    [[nodiscard]] static Result<bool> take(SessionLock *lock);

    void release() { m_file.reset(); }
    [[nodiscard]] bool isHeld() const { return m_file.isValid(); }

private:
    UniqueDescriptor m_file;
};

} // namespace Tessaron
