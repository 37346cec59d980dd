#pragma once

#include "imaging/jobs/AudioAlbum.h"
#include "platform/disctracks/CDText.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <vector>

namespace Tessaron
{

/// The code as discs have it (ISO 3901): 12 characters without dashes; empty for what is not an ISRC.
[[nodiscard]] QByteArray soundIsrc(const QString &code);

/// What is known of the texts of a disc.
struct AudioTextSources {
    /// For each track the tags of its file, as CDSound::tags() gives them; none for a track that has no file alone.
    std::vector<QMap<QString, QString>> tags;
    // What cue sheets say; it goes before the tags.
    std::vector<SpokenTexts> tracks = {}; ///< one for each track, or none at all
    SpokenTexts disc = {};
    std::uint32_t firstTrack = 1; ///< number of the first of these tracks on the disc
};

/// CD-TEXT made of tags and sheets.
struct AudioTexts {
    CDText text; ///< English first, which stands for texts without a language; without blocks where there is no text
    std::vector<QByteArray> isrcs; ///< one for each track; an empty one where the tags give no valid ISRC
    QStringList changes; ///< what does not stand in it as in the source, each in a sentence
    bool isAnyLost = false; ///< some of that has left nothing sensible
};

/// Titles, performers, songwriters, composers and arrangers of the tracks, and title and performer of the disc, where
/// all files agree on the album.
///
/// A tag such as "title-ger", as FFmpeg names those that have a language in the file (ISO 639-2), goes into a block of
/// that language, eight of them at most; what a language lacks there is filled in from the texts without one.
///
/// In the Japanese block only characters that Shift-JIS lacks are spelled in Latin letters, unless the disc has more
/// texts than there is room for in wide characters. Elsewhere those that Latin-1 lacks are. Quotes and line breaks,
/// which a cue sheet cannot hold, become apostrophes and blanks, and texts end after 160 characters, since players and
/// writers overflow on longer ones, or sooner where a language would take more than the 256 packs that it has room for.
[[nodiscard]] AudioTexts audioTextsOf(const AudioTextSources &sources);

} // namespace Tessaron
