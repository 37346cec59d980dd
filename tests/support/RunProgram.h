#pragma once

#include <QByteArray>
#include <QList>

namespace Tessaron::Testing
{

struct ProgramRun {
    int status =
        -1; ///< what the program returned; 128 and the number of the signal that ended it; -1 if it did not start
    QByteArray output;
    QByteArray errors;
};

/// Runs a program of the system to its end, without input. Not by means of Qt, whose way of forking makes
/// ThreadSanitizer blind for what orders the thread that does it.
ProgramRun runProgram(const QByteArray &program, const QList<QByteArray> &arguments);

} // namespace Tessaron::Testing
