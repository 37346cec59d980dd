#pragma once

#include "platform/disctracks/TableOfContents.h"

#include <QMap>
#include <QString>

namespace Tessaron
{

/// What a disc says of a track, under the names that CDSound::tags() gives: "title", "artist", "album", "album_artist",
/// "songwriter", "composer", "arranger", "comment", "genre", "isrc", "track" and "tracktotal". Of CD-TEXT in several
/// languages that in English, else the first one. Index 0 of the texts is that of the disc.
[[nodiscard]] QMap<QString, QString> tagsOfTrack(const TableOfContents &disc, const DiscTrack &track);

} // namespace Tessaron
