#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QList>

#include <optional>
#include <sys/types.h>

namespace Tessaron
{

/// A program that was started as a child process. It is known by its descriptor (pidfd_open(2)), so that no signal ever
/// reaches another process that got its number.
class ChildTask
{
public:
    /// What is to be started, and with which descriptors; -1 stands for the ones that this process has. All others stay
    /// closed in the program.
    struct Order {
        QList<QByteArray> arguments; ///< the first one is the path of the program
        int standardInput = -1;
        int standardOutput = -1;
        int standardError = -1;
        pid_t processGroup = 0; ///< of another child; 0 for a new one, which there is also when that one is gone
    };

    /// How a program ended.
    struct End {
        static constexpr int unknown = -1;
        /// What it returned, or the signal that ended it; `unknown` where the system does not tell, since this process
        /// ignores SIGCHLD or another part of it was told instead.
        int status = unknown;
        bool isBySignal = false;
    };

    /// Starts the program in a process group, with the default action for the signals that programs count on. Signals
    /// that this process blocks are not blocked there.
    [[nodiscard]] static Result<ChildTask> launch(const Order &order);

    ChildTask(ChildTask &&other) = default;
    ChildTask &operator=(ChildTask &&other) = default;
    /// Takes the process's status if it has ended. One that still runs is left alone: see abandon().
    ~ChildTask();

    [[nodiscard]] pid_t processIdentifier() const { return m_identifier; }
    /// Readable once the process has ended.
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }

    /// How it ended; empty while it runs. The process keeps its number until it is abandoned.
    [[nodiscard]] std::optional<End> end();
    /// Does nothing once it has ended.
    void sendSignal(int number);
    /// To all processes of the group that it has made, also those that it has started itself. Does nothing where the
    /// number might belong to others by now.
    void sendSignalToGroup(int number);

    /// Lets go of a process that has ended or is about to: its status is taken as soon as it has, by the event loop of
    /// the calling thread. Waits for nothing.
    static void abandon(ChildTask task);

private:
    ChildTask(pid_t identifier, UniqueDescriptor descriptor);
    [[nodiscard]] bool isOurs() const;

    pid_t m_identifier;
    UniqueDescriptor m_descriptor; ///< invalid once the object was moved from
    std::optional<End> m_end;
};

} // namespace Tessaron
