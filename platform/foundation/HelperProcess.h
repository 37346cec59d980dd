#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/types.h>

namespace Tessaron
{

/// How a program is started.
struct HelperSettings {
    int standardInput = -1; ///< a descriptor of this process; -1 for the null device
    int standardOutput = -1; ///< the same
    /// In a process group of its own: what is typed at a terminal to end this process does not reach the program.
    bool hasOwnGroup = false;
};

/// A program started by this process, with standard input, output and error at the null device unless the settings say
/// otherwise. No other descriptor of this process that is marked close-on-exec reaches it. Thread-safe.
///
/// The end of the object does not end the program: it is left to itself, and taken off the system's table of processes
/// when it has ended and another helper is started or let go.
class HelperProcess
{
public:
    /// Null with `*errnoValue` set when the program cannot be started.
    [[nodiscard]] static std::unique_ptr<HelperProcess> start(const QByteArray &program,
                                                              const QList<QByteArray> &arguments, int *errnoValue,
                                                              const HelperSettings &settings = {});
    ~HelperProcess();
    HelperProcess(const HelperProcess &) = delete;
    HelperProcess &operator=(const HelperProcess &) = delete;

    [[nodiscard]] bool isRunning();
    /// The exit status once the program has ended: what it returned, or 128 and the number of the signal that ended it.
    [[nodiscard]] std::optional<int> exitStatus();
    /// False when it still runs after that time.
    bool waitForEnd(std::chrono::milliseconds atMost);
    void kill();

private:
    explicit HelperProcess(pid_t id);

    std::mutex m_mutex; ///< guards the members below
    pid_t m_id; ///< the system's, as long as there is no status
    std::optional<int> m_status;
};

} // namespace Tessaron
