#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <vector>

namespace Tessaron
{

/// A file of sound, or a cue sheet with the files that it names.
struct AudioSource {
    std::size_t firstFile = 0; ///< place in AudioSources::files
    std::size_t fileCount = 1;
    QByteArray sheetPath; ///< empty for a file of sound
    QByteArray sheet; ///< text of the cue sheet
    QByteArray cdTextPath; ///< of the file of CD-TEXT that the sheet names; empty where it is not there
};

/// What the arguments of a job stand for.
struct AudioSources {
    QList<QByteArray> files; ///< of sound; in the order in which they are heard
    std::vector<AudioSource> sources;
};

/// True for the name of a cue sheet.
[[nodiscard]] bool isCueSheetName(const QByteArray &path);

/// The files that the arguments stand for: a list (".m3u", ".m3u8") is replaced by the files that it names, in its
/// order, relative ones beside it; a cue sheet (".cue") by those in which its tracks lie. An error of code Source or
/// InvalidOrder (DiscJobErrors.h) names the line that cannot be used. What the files are is not looked at.
[[nodiscard]] Result<AudioSources> audioSourcesOf(const QList<QByteArray> &arguments);

/// The entries of a list, relative ones beside the list at `path`. An error names the line.
[[nodiscard]] Result<QList<QByteArray>> entriesOfList(const QByteArray &path, QByteArray text);

} // namespace Tessaron
