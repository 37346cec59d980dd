#pragma once

#include "platform/foundation/Export.h"

#include <QString>

namespace Tessaron
{

class NSScanner;

/// The cue sheet of an image with one data track of 2048-byte blocks: three lines, each ended by carriage return and
/// line feed. It names the file without its folder and so has to lie beside it. Null for a null path.
[[nodiscard]] TESSARON_EXPORT QString standardCueSheetForFile(const QString &path);

// What is added to the scanner for reading cue sheets. An out argument may be null.

/// Reads the next text between double quotes, skipping what comes before it; a run of quotes counts as one. When the
/// scanner's whole text has no quote, reads a word instead.
TESSARON_EXPORT bool scanQuotedString(NSScanner &scanner, QString *result);

/// Reads a word: up to white space or the end of the line.
TESSARON_EXPORT bool scanString(NSScanner &scanner, QString *result);

/// Reads a time code "minutes:seconds:frames"; a run of colons counts as one. Blanks and tabs are skipped, the end of
/// the line is not. The numbers have no upper limit. What was read before a missing piece stays in the out arguments.
TESSARON_EXPORT bool scanMinutes(NSScanner &scanner, int *minutes, int *seconds, int *frames);

} // namespace Tessaron
