#pragma once

#include "platform/disctracks/vant/VANTImage.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace Tessaron
{

/// The image that was read, or the reason why it could not be.
struct VANTReadResult {
    std::optional<VANTImage> image;
    NSError error; ///< null when there is an image
};

/// Reads the trailer of VANT images. The bytes may be anything: what makes no sense is an error that says what is wrong
/// and at which offset, and memory is in proportion to the trailer's size, which is limited. Thread-safe; keeps no
/// state.
class TESSARON_EXPORT VANTReader
{
public:
    /// Reads the image file at the path. Besides the errors below there are those of the file itself, in
    /// NSOSStatusErrorDomain. Only regular files are read.
    [[nodiscard]] static VANTReadResult imageFromFile(const QString &path);

    /// Reads a whole image that lies in memory. Errors are of VANTErrorDomain, with the offset under
    /// VANTErrorOffsetKey.
    [[nodiscard]] static VANTReadResult imageFromBytes(QByteArrayView bytes);
};

} // namespace Tessaron
