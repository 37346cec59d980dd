#pragma once

#include "platform/foundation/HelperProcess.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/SoundProtocol.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <optional>
#include <span>

namespace Tessaron
{

/// The program DummyRedbook as a server of sound, and the memory that it shares with this process. One thread at a
/// time, except for interrupt(). Nothing that the program sends is trusted.
class SoundHelper
{
public:
    /// An error about the file at `path`, for which the program was needed.
    [[nodiscard]] static Result<std::unique_ptr<SoundHelper>> start(const QByteArray &path);
    /// Ends the program.
    ~SoundHelper();
    SoundHelper(const SoundHelper &) = delete;
    SoundHelper &operator=(const SoundHelper &) = delete;

    /// Makes a call of receive() that waits, and every later one, return nothing. From any thread.
    void interrupt();

    /// False when the program has gone away.
    [[nodiscard]] bool send(const SoundProtocol::Message &message);
    /// Waits for the next answer; none when the program has gone away, or was interrupted.
    [[nodiscard]] std::optional<SoundProtocol::Message> receive();
    /// True while every call above has succeeded.
    [[nodiscard]] bool isUsable() const { return m_isUsable; }

    /// Puts a record into the memory; false when it is too long.
    [[nodiscard]] bool putRecord(const QByteArray &record);
    /// The record of an answer.
    [[nodiscard]] QByteArray record(const SoundProtocol::Message &answer) const;
    /// The sound of an answer to Fill.
    [[nodiscard]] std::span<const char> sound(const SoundProtocol::Message &answer) const;

    /// Why the program has gone away, as an error about the file that it was decoding.
    [[nodiscard]] NSError howItEnded(const QByteArray &path);

private:
    SoundHelper(std::unique_ptr<HelperProcess> process, UniqueDescriptor socket, char *memory);

    const std::unique_ptr<HelperProcess> m_process;
    const UniqueDescriptor m_socket;
    char *const m_memory;
    std::atomic<bool> m_isUsable = true;
};

} // namespace Tessaron
