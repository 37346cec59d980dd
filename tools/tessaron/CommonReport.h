#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/UnreadableFolder.h>

#include <vector>

namespace Tessaron::Tool
{

/// Version of the objects that --json prints; goes up when a key changes its meaning or goes away.
inline constexpr std::int64_t jsonVersion = 1;

/// One line on standard error about what went wrong, and one with advice if there is any.
void printProblem(const Problem &problem);

/// The image and the report of --json cannot share standard output, however that is named.
[[nodiscard]] Problem problemOfStandardOutput(const Arguments &arguments);

/// "done", "incomplete", "failed" or "cancelled".
[[nodiscard]] QString resultName(ExitStatus status);

/// The status of a command that ended with this problem.
[[nodiscard]] ExitStatus exitStatusFor(const Problem &problem);

/// Opens the object of --json with its first members: version, command and result.
void beginReport(JsonWriter &writer, const QString &command, ExitStatus status);
/// The same with a result that resultName() does not know.
void beginReport(JsonWriter &writer, const QString &command, const QString &result);

/// The same without the result, for a report that is written before that is known: it has to follow.
void beginReport(JsonWriter &writer, const QString &command);

/// Closes the object with its last member, writeErrorMember(); false (with `errno` set) when the report could not be
/// written.
[[nodiscard]] bool endReport(JsonWriter &writer, const Problem &problem);

/// How a command ends whose report was written, or was not, which is said then. Needs the `errno` of the writing.
[[nodiscard]] ExitStatus exitStatusAfterReport(bool isWritten, ExitStatus status);

/// Member "error": null, or an object with kind, message, advice, path (when there is one) and code.
void writeErrorMember(JsonWriter &writer, const Problem &problem);

/// A line on standard error for each folder that could not be listed; one for all for which the system had no
/// descriptor left.
void printUnreadable(const std::vector<UnreadableFolder> &unreadable);

/// Member "unreadable": an array of objects with path and message.
void writeUnreadableMember(JsonWriter &writer, const std::vector<UnreadableFolder> &unreadable);

} // namespace Tessaron::Tool
