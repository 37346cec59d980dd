#pragma once

#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <optional>

namespace Tessaron
{

/// No sheet is longer: 99 tracks with 99 index points and their texts take a tenth.
inline constexpr std::int64_t maximumCueSheetSize = 1 << 20;

/// How many bytes the sound of a file has in the form of a CD; no value where that cannot be told. A reader of
/// descriptions knows WAVE and AIFF files of CD audio itself, and asks for all others by their path.
using SoundMeasure = std::function<std::optional<std::uint64_t>(const QByteArray &path)>;

/// What a reader of cue sheets asks for the files that a sheet names. Without an operation the
/// files are not looked at.
struct CueSheetFiles {
    /// Finds the file, fills in its path, and says how many bytes of sectors (or samples) it holds; no value when only
    /// a decoder could tell. The error is passed on with the line of the sheet.
    std::function<Result<std::optional<std::uint64_t>>(CueFile *file)> measure;
    /// The contents of the file that CDTEXTFILE names.
    std::function<Result<QByteArray>(const QByteArray &name)> cdText;
};

/// Reads a cue sheet as people and programs write them: any letter case, blanks and line ends; with a byte-order mark,
/// in UTF-16, UTF-8 or an older encoding; names with or without quotes; one FILE for all tracks, one for each, or a new
/// one between INDEX 00 and 01. REM SESSION begins a session; other remarks and commands that are not known are passed
/// over with a note.
///
/// Errors are of DiscTracksErrorDomain and name the line, the cause and what to do: a mode that is not known, numbers
/// that cannot be read or are out of order, an INDEX beyond the end of its file, a track without INDEX 01, no track at
/// all. Thread-safe as far as `files` is.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cueSheetOfText(const QByteArray &text, const CueSheetFiles &files);

/// Reads the sheet at the path (bytes) and looks for its files beside it: as they are named, without the folders of
/// another system, in another letter case, or, for a sound, with another ending; a note says each that was found under
/// another name. Only regular files are opened. Besides the errors above there are those of files that are missing,
/// cannot be read, or could be one of several.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> cueSheetOfFile(const QByteArray &path,
                                                              const SoundMeasure &otherSounds = {});

} // namespace Tessaron
