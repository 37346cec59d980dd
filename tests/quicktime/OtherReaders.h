#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QMap>
#include <QString>

#include <cstdint>
#include <vector>

namespace Tessaron::Testing
{

// What ffprobe and MediaInfo read in audio and movie files.

/// A member of an object as text; empty without it.
QString member(const QJsonValue &object, const char *name);

/// The streams of one kind, without covers, as ffprobe sees them.
QJsonArray probedStreams(const QByteArray &path, const char *kind);
/// The bytes of all packets of a stream.
std::uint64_t probedSize(const QByteArray &path, const QByteArray &index);

/// The parts of a kind that MediaInfo tells: "General", "Audio", "Video".
QJsonArray mediaInfo(const QByteArray &path, const char *kind);

/// A track of a QuickTime or MP4 file, by its atoms as MediaInfo lists them.
struct ListedTrack {
    std::int64_t duration = 0; ///< in the movie's units
    // Of the first sample description.
    QString code;
    std::int64_t descriptionSize = 0;
    QMap<QString, QString> fields; ///< by their names there: "Sample size", "Frame count" …

    /// The same field is named otherwise in MP4 files.
    [[nodiscard]] int number(const char *field, const char *otherName = "") const;
};
struct ListedMovie {
    std::int64_t timeScale = 0;
    std::int64_t duration = 0;
    std::vector<ListedTrack> tracks;
};
ListedMovie listedMovie(const QByteArray &path);

} // namespace Tessaron::Testing
