#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QList>

namespace Tessaron
{

/// The bytes that make a file of blocks a VANT image when they are appended to it: a trailer that describes the
/// sessions and tracks of the layout (docs/vant-format.md). The tracks' data is expected one after another from the
/// start of the file, without pregaps; for a file that holds them there is vantTrailer().
///
/// Each track needs DRBlockSizeKey (not 0) and DRTrackLengthKey; other properties are described when they are set. The
/// result is null when a track lacks one of the two, when there is no track, when the sizes
/// exceed 64 bits, or when the trailer would be longer than a reader accepts. Thread-safe as long as the tracks are
/// left alone.
[[nodiscard]] TESSARON_EXPORT QByteArray VANTHeaderForDRLayout(const DRLayout &layout);

/// The same with CD-TEXT, which is carried byte for byte, block by block.
[[nodiscard]] TESSARON_EXPORT QByteArray VANTHeaderForDRLayout(const DRLayout &layout,
                                                               const QList<QByteArray> &arrayOfCDTextBlocks);

} // namespace Tessaron
