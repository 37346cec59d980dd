#pragma once

#include "platform/disctracks/TableOfContents.h"
#include "platform/disctracks/vant/VANTImage.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace Tessaron
{

/// The bytes that make a file of blocks a VANT image when they are appended to it (docs/vant-format.md). The file holds
/// the tracks one after another from its start, each with those gaps that the table calls stored. `cdTextBlocks` are
/// carried byte for byte; what the table itself says of CD-TEXT is not (see lostInVANT()).
///
/// An error when there is no track or a session without tracks, when a block size is 0, a gap longer than its track or
/// a postgap not stored, when sizes exceed what the format's fields hold, or when the trailer would be longer than a
/// reader accepts. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<QByteArray> vantTrailer(const TableOfContents &contents,
                                                             const QList<QByteArray> &cdTextBlocks = {});

/// What the table says and a VANT image cannot, in words; empty when all is kept.
[[nodiscard]] TESSARON_EXPORT QStringList lostInVANT(const TableOfContents &contents);

/// The table that an image's trailer describes. A pregap is stored when the room for it is there between the end of the
/// track in front and the track's data.
[[nodiscard]] TESSARON_EXPORT TableOfContents tableOfContentsOfVANT(const VANTImage &image);

} // namespace Tessaron
