#pragma once

#include "platform/dvdplayback/PlayerMessageReader.h"
#include "platform/dvdplayback/PlayerProtocol.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/types.h>
#include <thread>

namespace Tessaron
{

/// A helper process that plays or describes one disc, and the stream of messages to it. One thread of its own hears it.
/// The end of the object ends the process. Thread-safe.
class PlayerConnection
{
public:
    struct Hearers {
        /// A message that is not a reply. On the hearing thread, under no lock.
        std::function<void(const PlayerMessage &)> message;
        /// The process has ended, or makes no sense and was ended; why, in words. Comes once at most, and not after the
        /// object's end has begun. On the hearing thread, under no lock.
        std::function<void(const QString &why)> ended;
    };

    /// Memory that the helper is given: pictures and sound. Both stay the caller's; -1 for a helper that only
    /// describes.
    struct Memory {
        int frames = -1;
        int sound = -1;
    };

    [[nodiscard]] static Result<std::unique_ptr<PlayerConnection>> start(const Memory &memory, Hearers hearers);
    /// Not on the hearing thread.
    ~PlayerConnection();
    PlayerConnection(const PlayerConnection &) = delete;
    PlayerConnection &operator=(const PlayerConnection &) = delete;

    /// Asks and waits for the answer. A helper that does not answer in time is ended. Not on the hearing thread.
    [[nodiscard]] PlayerReply request(PlayerMessageKind kind, const QByteArray &payload,
                                      std::chrono::milliseconds patience);

    /// Ends the process at once; requests that wait fail.
    void kill();
    [[nodiscard]] pid_t processIdentifier() const { return m_process; }

private:
    PlayerConnection(pid_t process, UniqueDescriptor socket, UniqueDescriptor errors, Hearers hearers);

    void hear();
    [[nodiscard]] bool hearMessages();
    void hearErrors();
    void take(const PlayerMessage &message);
    [[nodiscard]] QString howItEnded();
    void finish();

    const pid_t m_process;
    const UniqueDescriptor m_socket;
    UniqueDescriptor m_errors; ///< what the process prints on standard error
    const Hearers m_hearers;

    // The hearing thread's.
    PlayerMessageReader m_messages;
    QByteArray m_lastErrors;
    bool m_isGreeted = false;
    QString m_nonsense; ///< why the process was ended; empty where it ended itself

    std::mutex m_writing; ///< held while a message goes out
    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    std::uint32_t m_lastSequence = 0;
    std::map<std::uint32_t, std::optional<PlayerReply>> m_replies; ///< a member for each request that waits
    bool m_isProcessGone = false; ///< waited for, so that its number may be another process's
    bool m_isClosing = false;
    QString m_timeOut; ///< set where it was ended for not answering
    std::optional<QString> m_end;

    std::thread m_thread; ///< behind all that it uses
};

} // namespace Tessaron
