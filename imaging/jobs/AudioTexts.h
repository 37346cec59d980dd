#pragma once

#include "platform/disctracks/CDText.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <vector>

namespace Tessaron
{

/// The code as discs have it (ISO 3901): 12 characters without dashes; empty for what is no ISRC.
[[nodiscard]] QByteArray soundIsrc(const QString &code);

/// CD-TEXT made of tags.
struct AudioTexts {
    CDText text; ///< one block, in English and Latin-1; without blocks where no file has a tag for it
    std::vector<QByteArray> isrcs; ///< one for each track; an empty one where the tags give no valid ISRC
    QStringList changes; ///< what does not stand in it as in the tags, each in a sentence
    bool isAnyLost = false; ///< some of that has left nothing sensible
};

/// Titles, performers, songwriters, composers and arrangers of the tracks, and title and performer of the disc, where
/// all files agree on the album. `tags` are those of each track, as CDSound::tags() gives them.
///
/// Characters that Latin-1 lacks are spelled in Latin letters, quotes and line breaks, which a cue sheet cannot hold,
/// become apostrophes and blanks, and texts end after 160 characters, since players and writers overflow on longer
/// ones.
[[nodiscard]] AudioTexts audioTextsOf(const std::vector<QMap<QString, QString>> &tags);

} // namespace Tessaron
