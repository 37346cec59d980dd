#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"

#include <functional>

namespace Tessaron
{

/// What the application's delegate answers to the wish to end it.
enum NSApplicationTerminateReply {
    NSTerminateCancel = 0,
    NSTerminateNow = 1,
};

/// Answers for the application, on the main thread. Each function is called only if it is there.
struct NSApplicationDelegate {
    CallbackContext context;
    /// Once, at the first turn of the event loop; never for a delegate that comes later.
    std::function<void()> applicationDidFinishLaunching;
    /// Missing, it stands for NSTerminateNow.
    std::function<NSApplicationTerminateReply()> applicationShouldTerminate;
    /// The event loop has ended.
    std::function<void()> applicationWillTerminate;
};

/// The program as a whole, in terms of its event loop: that of QCoreApplication, which has to exist.
class TESSARON_EXPORT NSApplication
{
public:
    [[nodiscard]] static NSApplication &sharedApplication();

    /// On the main thread.
    void setDelegate(NSApplicationDelegate delegate);
    /// Asks the delegate on the main thread, then ends the event loop with 0, which tells the delegate again; without
    /// waiting. Windows are not asked. `sender` is who wants it, and is not touched. On any thread.
    void terminate(const void *sender);

    NSApplication(const NSApplication &) = delete;
    NSApplication &operator=(const NSApplication &) = delete;

private:
    NSApplication() = default;

    NSApplicationDelegate m_delegate; ///< main thread only, like the member below
    bool m_hearsEventLoop = false; ///< its first turn and its end
};

} // namespace Tessaron
