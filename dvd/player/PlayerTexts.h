#pragma once

#include "platform/dvdplayback/DVDDescription.h"
#include "platform/foundation/OSStatus.h"

#include <QByteArray>
#include <QString>

#include <chrono>

namespace Tessaron
{

/// A text of the player's window in the user's language; the English one is its key.
[[nodiscard]] QString playerText(const char *english);

/// Why the disc at the path cannot be played: a sentence without the full stop. For what only the disc itself can say
/// it is looked at again, so not on the main thread.
[[nodiscard]] QString reasonForNotOpening(OSStatus status, const QByteArray &path);
/// Why playing has ended.
[[nodiscard]] QString reasonForStopping(OSStatus status);

/// "1:02:03" or "2:03".
[[nodiscard]] QString shortTime(std::chrono::milliseconds time);

/// "English, Dolby Digital 5.1, comments".
[[nodiscard]] QString audioStreamName(const DVDAudioStream &stream, int number);
/// "German, for the hard of hearing".
[[nodiscard]] QString subtitleStreamName(const DVDSubtitleStream &stream, int number);

} // namespace Tessaron
