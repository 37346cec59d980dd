#pragma once

#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

namespace Tessaron
{

struct CueSheetText {
    QByteArray text; ///< lines ended by carriage return and line feed
    QStringList lost; ///< what the table says and a sheet cannot, in words
};

/// True when the lines of a sheet cannot say all of the CD-TEXT, so that it takes a file of its packs (cdTextPacks())
/// beside the sheet.
[[nodiscard]] TESSARON_EXPORT bool needsCDTextFile(const TableOfContents &contents);

/// The cue sheet of one file that holds the tracks one after another, each with those gaps that the table calls stored.
/// `imageName` stands there byte for byte; the sheet must lie beside the file. Texts are in UTF-8, the first language
/// only; with a name of a file of CD-TEXT the sheet names that (CDTEXTFILE), and no text counts as lost. More than one
/// session is said by REM SESSION lines. The part of the first track's pregap that lies in front of block 0 is not
/// said: every CD has it.
///
/// An error of DiscTracksErrorDomain when the table makes no sense, when a track is of a kind and size that has no
/// mode, or when a name or a text holds a quote or a line end, which a sheet cannot say. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<CueSheetText>
cueSheetForImage(const TableOfContents &contents, const QByteArray &imageName, const QByteArray &cdTextFileName = {});

} // namespace Tessaron
