#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <stop_token>
#include <thread>

namespace Tessaron
{

/// Bytes that a thread of its own makes while another one takes them: a pipe of the system between the two. One thread
/// makes, uses and destroys it; destroying it stops the making and waits for its end.
class SoundPipe
{
public:
    /// Writes everything into the descriptor; called on the thread. Once the token asks for a stop, it should return
    /// soon; what it writes until then is thrown away.
    using Make = std::function<NSError(int descriptor, const std::stop_token &stop)>;

    SoundPipe() = default;
    ~SoundPipe();
    SoundPipe(const SoundPipe &) = delete;
    SoundPipe &operator=(const SoundPipe &) = delete;

    /// A stop of `stop` stops the making, too.
    [[nodiscard]] NSError start(Make make, const std::stop_token &stop);
    /// Takes `length` bytes, and waits for them. When fewer come, the error says why the making ended early.
    [[nodiscard]] NSError take(void *bytes, std::size_t length);
    /// Once all is taken: waits for the end of the making, and returns its error. More than was taken is an error, too.
    [[nodiscard]] NSError finish();

private:
    void stop();

    UniqueDescriptor m_readEnd;
    UniqueDescriptor m_writeEnd; ///< the thread's while it runs
    NSError m_error; ///< of the making; the thread's while it runs
    std::jthread m_thread;
    std::optional<std::stop_callback<std::function<void()>>> m_passOn; ///< last member: it stops the thread
};

} // namespace Tessaron
