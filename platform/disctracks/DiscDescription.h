#pragma once

#include "platform/disctracks/CueSheetReader.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// The kinds of files that say which tracks lie where in other files. All of them are read into a CueSheet.
enum class DiscDescriptionKind : std::uint8_t {
    None, ///< anything else
    CueSheet,
    CloneCD, ///< CloneCDReader.h
    Cdrdao, ///< CdrdaoTocReader.h
};

/// By the end of the name: ".cue", ".ccd", ".toc", in any letter case.
[[nodiscard]] TESSARON_EXPORT DiscDescriptionKind discDescriptionKind(const QByteArray &path);

/// "cue sheet", ".ccd file", ".toc file"; empty for None.
[[nodiscard]] TESSARON_EXPORT QString nameOfDiscDescription(DiscDescriptionKind kind);

/// Reads the description at the path (bytes), and looks at the files that it names. Errors as those of the reader for
/// its kind; what is None is read as a cue sheet.
[[nodiscard]] TESSARON_EXPORT Result<CueSheet> discDescriptionOfFile(const QByteArray &path,
                                                                     const SoundMeasure &otherSounds = {});

} // namespace Tessaron
