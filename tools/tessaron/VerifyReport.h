#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/Problem.h"
#include <TessaronClasses/ImageVerification.h>

#include <QByteArray>

namespace Tessaron::Tool
{

/// How a comparison of an image with its sources has ended.
struct VerifyOutcome {
    Problem problem; ///< why the comparison did not come to its end; default-made when it did
    VerificationResult result;
};

[[nodiscard]] ExitStatus exitStatusFor(const VerifyOutcome &outcome);

/// What the command says to people: differences on standard error, the result for each filesystem on standard output.
/// False when the latter cannot be written.
[[nodiscard]] bool printVerifyReport(const Arguments &arguments, const VerifyOutcome &outcome);

/// The first differences on standard error, with -v all that are kept.
void printDifferences(const Arguments &arguments, const ImageDifferenceList &differences);
/// Members differenceCount and differences.
void writeDifferenceMembers(JsonWriter &writer, const ImageDifferenceList &differences);

/// The object that --json promises, on standard output; false when it cannot be written.
[[nodiscard]] bool writeVerifyJson(const QByteArray &image, const VerifyOutcome &outcome, double seconds);

} // namespace Tessaron::Tool
