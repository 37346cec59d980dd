#pragma once

#include "platform/disctracks/CueSheetReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

namespace Tessaron
{

/// Reads a table of contents as cdrdao writes it (its manual, "TOC FILES"): one session, tracks of pieces of files and
/// of silence, CD-TEXT in up to eight languages. Files of raw audio are big-endian unless SWAP says otherwise.
///
/// Errors are of DiscTracksErrorDomain, as for a cue sheet, and name the line, the cause and what to do: words that are
/// not known or do not belong where they stand, times that cannot be read, a piece beyond the end of its file, a pregap
/// longer than its track. Silence is understood where a disc has it without a file, in front of a track and at its end;
/// in between it is an error, as are sectors that this library knows no form of and data from a pipe. Thread-safe as
/// far as `files` is.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cdrdaoTocOfText(const QByteArray &text, const CueSheetFiles &files);

/// Reads the file at the path (bytes) and looks for its files as cueSheetOfFile() does.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cdrdaoTocOfFile(const QByteArray &path,
                                                               const SoundMeasure &otherSounds = {});

} // namespace Tessaron
