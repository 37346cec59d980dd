#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QString>

#include <cstdint>

namespace Tessaron
{

/// Domain of the errors that readers of disc images make; the codes are DiscImageErrorCode. Failures of the image file
/// itself are of NSOSStatusErrorDomain.
TESSARON_EXPORT extern const QString DiscImageErrorDomain;
/// User information of such an error: offset in the image of what is wrong (quint64, bytes).
TESSARON_EXPORT extern const QString DiscImageErrorOffsetKey;
/// User information of such an error: what is wrong, without the place (QString).
TESSARON_EXPORT extern const QString DiscImageErrorReasonKey;

enum class DiscImageErrorCode : int {
    Truncated = 1, ///< something lies beyond the end of the image
    Damaged = 2, ///< a structure contradicts its standard or another structure
    Unsupported = 3, ///< sound, but of a kind that is not read here
    Loop = 4, ///< structures lead back to themselves, or more of them share bytes than any sound volume needs
};

/// The error with its place; the failure reason is `reason`, a sentence without the full stop, and names the offset.
[[nodiscard]] TESSARON_EXPORT NSError discImageError(DiscImageErrorCode code, std::uint64_t offset,
                                                     const QString &reason);

} // namespace Tessaron
