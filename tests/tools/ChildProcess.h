#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <functional>
#include <optional>
#include <sys/types.h>

namespace Tessaron::Testing
{

/// How a child process is started. Arguments are bytes, unlike those of QProcess: a file name may be any.
struct ChildSettings {
    QByteArray program; ///< a path, or a name that is looked up in PATH
    QList<QByteArray> arguments;
    QByteArray folder; ///< working folder; empty for the test's own
    QList<QByteArray> environment; ///< "NAME=value", added to the test's own
    std::optional<QByteArray> standardOutput; ///< a file to write to; "" closes the descriptor
    bool outputToBrokenPipe = false; ///< standard output is a pipe that nobody reads
    std::optional<quint64> fileSizeLimit; ///< RLIMIT_FSIZE, bytes
    std::optional<quint64> descriptorLimit; ///< RLIMIT_NOFILE
    bool inGroupOfItsOwn = false; ///< a process group, as a shell gives to each command
    bool withoutRootRights = false; ///< as user 65534 when the test runs as root
};

/// What is left of a child process.
struct ChildResult {
    int exitStatus = -1; ///< -1 when a signal ended it
    int signal = 0;
    QByteArray output;
    QByteArray errors;
};

/// A running child process. Its output goes to memory, so that it never waits for the test. Destroying it kills it.
class ChildProcess
{
public:
    explicit ChildProcess(const ChildSettings &settings);
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    [[nodiscard]] pid_t id() const { return m_id; }
    void sendSignal(int number) const;
    /// What it has written to standard error so far.
    [[nodiscard]] QByteArray errorsSoFar() const;
    /// False when the condition does not come true while the process runs, or within the time.
    [[nodiscard]] bool waitUntil(const std::function<bool()> &condition,
                                 std::chrono::milliseconds atMost = std::chrono::seconds(30)) const;
    /// Waits for the end; kills it after two minutes, which fails the test.
    ChildResult finish();

private:
    [[noreturn]] void becomeChild(const ChildSettings &settings) const;
    [[nodiscard]] bool hasEnded() const;

    pid_t m_id = -1;
    int m_output = -1;
    int m_errors = -1;
};

/// False where a program that has no descriptor left is ended by something of the build's own.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool runsWithoutDescriptors = false;
#else
inline constexpr bool runsWithoutDescriptors = true;
#endif

/// Starts and finishes.
ChildResult runChild(const ChildSettings &settings);

/// Runs another program that must be there and succeed; its standard output.
QByteArray outputOf(const QByteArray &program, const QList<QByteArray> &arguments, const QByteArray &folder = {});

/// Settings for the built command with these arguments.
ChildSettings tessaron(const QList<QByteArray> &arguments);

/// The same, run to its end.
ChildResult runTessaron(const QList<QByteArray> &arguments);

/// Runs the command with ever more descriptors, as long as it fails for the lack of them; each failure goes to the
/// function, with the limit. Fails the test when the command never succeeds.
void runTessaronWithEverMoreDescriptors(const QList<QByteArray> &arguments,
                                        const std::function<void(const ChildResult &, quint64 limit)> &whenItFails);

} // namespace Tessaron::Testing
