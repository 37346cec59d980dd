#pragma once

#include <QByteArray>

namespace Tessaron
{

/// A folder that was to be read and could not be, wholly or in part.
struct UnreadableFolder {
    QByteArray path; ///< bytes, of any length; where it was when it was last found
    int errnoValue = 0; ///< why; see NSError::errorWithErrno()

    friend bool operator==(const UnreadableFolder &, const UnreadableFolder &) = default;
};

} // namespace Tessaron
