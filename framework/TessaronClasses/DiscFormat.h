#pragma once

#include "platform/discrecording/objects/DRFilesystems.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/TessaronDiscImageFormat.h>

#include <QByteArray>
#include <QFlags>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// What a disc image file is. The values are those of TessaronDiscImageFormat.
enum class DiscFormat : std::uint16_t {
    ISO = TessaronDiscImageFormatISO, ///< plain blocks of 2048 bytes
    BIN = TessaronDiscImageFormatBIN, ///< the same with a cue sheet beside it
    VANT = TessaronDiscImageFormatVANT, ///< the same with a trailer behind it that describes sessions and tracks
};
Q_DECLARE_FLAGS(DiscFormats, DiscFormat)
Q_DECLARE_OPERATORS_FOR_FLAGS(DiscFormats)

/// A filesystem that a disc image can have. The values are those of DRFilesystemMask.
enum class DiscFilesystem : std::uint8_t {
    ISO9660 = DRFilesystemInclusionMaskISO9660, ///< with Rock Ridge, always
    Joliet = DRFilesystemInclusionMaskJoliet,
    UDF = DRFilesystemInclusionMaskUDF,
    HFSPlus = DRFilesystemInclusionMaskHFSPlus,
};
Q_DECLARE_FLAGS(DiscFilesystems, DiscFilesystem)
Q_DECLARE_OPERATORS_FOR_FLAGS(DiscFilesystems)

/// All that are known, which is what an image has when nothing else is asked for.
inline constexpr DiscFilesystems allDiscFilesystems =
    DiscFilesystems(DiscFilesystem::ISO9660) | DiscFilesystem::Joliet | DiscFilesystem::UDF | DiscFilesystem::HFSPlus;

/// "iso", "bin" or "vant": the format's name, and the extension of its files.
[[nodiscard]] TESSARON_EXPORT QString nameOfDiscFormat(DiscFormat format);

/// The format that a file's name or path asks for by its extension, upper or lower case: ISO for every one that is not
/// BIN's or VANT's.
[[nodiscard]] TESSARON_EXPORT DiscFormat discFormatForFileName(const QByteArray &name);

} // namespace Tessaron
