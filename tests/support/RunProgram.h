#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <sys/types.h>

namespace Tessaron::Testing
{

struct ProgramRun {
    int status =
        -1; ///< what the program returned; 128 and the number of the signal that ended it; -1 if it did not start
    QByteArray output;
    QByteArray errors;
};

/// Descriptors of the test that a program gets in place of its own.
struct ProgramEnds {
    int input = -1; ///< -1 for no input
    int output = -1; ///< -1 for memory, so that the program never waits for the test
};

/// A program that runs beside the test; destroying it kills it. Not by means of Qt, whose way of forking makes
/// ThreadSanitizer blind for what orders the thread that does it.
class RunningProgram
{
public:
    /// Without a working folder, it runs in that of the test.
    RunningProgram(const QByteArray &program, const QList<QByteArray> &arguments, ProgramEnds ends = {},
                   const QByteArray &workingFolder = {});
    ~RunningProgram();
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;

    [[nodiscard]] bool isStarted() const { return m_child > 0; }
    /// Asked like a parent that does not wait. False for what could not be started, too.
    [[nodiscard]] bool isRunning() const;
    /// False when it still runs after this time.
    [[nodiscard]] bool waitUntilEnded(std::chrono::milliseconds atMost) const;
    /// Waits for the end, however long that takes.
    ProgramRun finish();

private:
    const UniqueDescriptor m_output;
    const UniqueDescriptor m_errors;
    pid_t m_child = -1;
};

/// Runs a program of the system to its end, without input.
ProgramRun runProgram(const QByteArray &program, const QList<QByteArray> &arguments,
                      const QByteArray &workingFolder = {});

} // namespace Tessaron::Testing
