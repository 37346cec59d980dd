#pragma once

#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>

namespace Tessaron
{

// Statuses of movies, as the classic ones number them.
inline constexpr OSErr invalidMedia = -2008; ///< the media of a track makes no sense
inline constexpr OSErr invalidMovie = -2010; ///< the movie makes no sense
inline constexpr OSErr noMovieFound = -2048; ///< the file holds no movie
inline constexpr OSErr invalidTime = -2015; ///< a time outside of the movie
inline constexpr OSErr noCodecErr = -8961; ///< the form of the media is not known
inline constexpr OSErr decoderHasEnded = -2092; ///< the program that decodes crashed, was killed, or does not answer

/// An error with a sentence why and one what to do about it; the path may be empty.
[[nodiscard]] NSError mediaError(OSErr status, const QByteArray &path, const QString &reason,
                                 const QString &suggestion);

/// A cancelled operation: userCanceledErr.
[[nodiscard]] NSError mediaCancelledError(const QByteArray &path);

} // namespace Tessaron
