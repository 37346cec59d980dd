#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/DiscImageJob.h>

#include <QByteArray>

namespace Tessaron::Tool
{

/// How the command ended.
[[nodiscard]] ExitStatus exitStatusFor(const DiscImageResult &result, const Problem &problem);

/// What the command says to people at its end, on standard error.
void printImageReport(const Arguments &arguments, const DiscImageResult &result, const Problem &problem,
                      double seconds);

/// What of the folders and files is not on the disc as it stands, on standard error; shorter with -q, longer with -v.
/// When the command has failed for another reason than that, `tellsStorage` is false.
void printStorage(const Arguments &arguments, const DiscImageResult &result, bool tellsStorage);

/// The members renamed, refused, altered, renamedCounts and unreadable of the object below.
void writeStorageMembers(JsonWriter &writer, const DiscImageResult &result);

/// The object that --json promises, on standard output; false when it cannot be written. The keys:
/// version 1, command "image", result "done", "incomplete", "failed" or "cancelled", output, cueSheet (format bin
/// only), format, volumeName, bytes, files, folders, seconds, renamed, refused, altered, renamedCounts, unreadable,
/// error (null or object). A path that is not UTF-8 has U+FFFD in it and a companion "…Bytes", percent-encoded.
[[nodiscard]] bool writeImageJson(const Arguments &arguments, const DiscImageResult &result, const Problem &problem,
                                  double seconds);

/// The same object for a command line that could not be understood.
[[nodiscard]] bool writeUsageErrorJson(const Arguments &arguments);

} // namespace Tessaron::Tool
