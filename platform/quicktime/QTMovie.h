#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

struct MovieContents;

// Movies and sound are read by a module of the framework that is loaded when it is first needed: a process that opens
// no movie never loads FFmpeg's libraries. Where the module is missing, or belongs to another version of the framework,
// the operations that need it fail with an error of code noMediaModule that says what to install.
inline constexpr OSErr noMediaModule = -2091;

// Keys of the attributes that a movie is opened with.
/// QString: the path, as stringWithFileSystemRepresentation() gives it
TESSARON_EXPORT extern const QString QTMovieFileNameAttribute;
/// bool: whether opening may go on later; it never does here
TESSARON_EXPORT extern const QString QTMovieOpenAsyncOKAttribute;

/// A time in a movie: `timeValue` units, `timeScale` of them in a second.
struct QTTime {
    std::int64_t timeValue = 0;
    std::int64_t timeScale = 0;
    friend bool operator==(const QTTime &, const QTTime &) = default;
};

/// What the samples of a sound track are.
struct QTSoundDescription {
    std::uint32_t dataFormat = 0; ///< four characters, the first one in the highest byte; 0 where there are none
    std::uint32_t sampleRate = 0; ///< samples a second
    std::int16_t sampleSize = 0; ///< bits
    std::int16_t numChannels = 0;
    std::int64_t descSize = 0; ///< bytes of the description in a QuickTime file; elsewhere what it would have there
    QString name; ///< of the codec, for people; may be empty
};

/// What the pictures of a video track are.
struct QTImageDescription {
    std::uint32_t codecType = 0; ///< as `dataFormat`
    std::int16_t width = 0; ///< pixels
    std::int16_t height = 0;
    std::int16_t frameCount = 1; ///< in a sample
    std::int16_t depth = 24; ///< bits of a pixel
    QString name; ///< of the codec, for people: in a QuickTime or MP4 file what stands there, which may be empty
};

/// A track of a movie.
struct QTTrack {
    QByteArray mediaType; ///< "soun", "vide", "text" or another one that the file names; may be empty
    std::int64_t duration = 0; ///< in the movie's time scale
    std::optional<std::uint64_t> dataSize; ///< bytes of its samples, where that is known without reading all of them
    std::optional<QTSoundDescription> sound;
    std::optional<QTImageDescription> image;
};

/// A run of the sound of a file, in samples of its own rate.
struct QTSoundSegment {
    QByteArray path;
    std::int64_t begin = 0;
    std::int64_t end = 0; ///< not included
};

/// An audio or movie file, or a new movie that segments of others are put into. A value once it is opened; each thread
/// may have its own. The file itself stays closed between operations, and is looked at again by each.
class TESSARON_EXPORT QTMovie
{
public:
    /// Opens the file under QTMovieFileNameAttribute before it returns. Null when it holds nothing that can be played,
    /// or cannot be read; `error`, unless null, says why, and is cleared otherwise. Any regular file may be given: no
    /// other file is opened on its behalf, and opening ends on any bytes.
    [[nodiscard]] static std::shared_ptr<QTMovie>
    initWithAttributes(const QVariantMap &attributes, NSError *error = nullptr, const std::stop_token &stop = {});
    /// The same with a path alone.
    [[nodiscard]] static std::shared_ptr<QTMovie>
    movieByOpeningFileSync(const QByteArray &path, NSError *error = nullptr, const std::stop_token &stop = {});
    /// An empty movie.
    [[nodiscard]] static std::shared_ptr<QTMovie> newMovie();

    [[nodiscard]] const QByteArray &path() const { return m_path; }
    /// With sound alone, the scale is the sound's rate and the value exact where the file tells it. A QuickTime or MP4
    /// file has the scale and value of its header, every other movie has 600 units a second.
    [[nodiscard]] QTTime duration() const { return m_duration; }
    [[nodiscard]] const std::vector<QTTrack> &tracks() const { return m_tracks; }

    /// The bytes of a track's samples. Reads all of the file where it has no table of them.
    [[nodiscard]] Result<std::uint64_t> dataSizeOfTrack(std::size_t index, const std::stop_token &stop = {}) const;

    [[nodiscard]] const std::vector<QTSoundSegment> &segments() const { return m_segments; }

private:
    friend TESSARON_EXPORT NSError InsertMovieSegment(const QTMovie &, QTMovie &, std::int64_t, std::int64_t);
    QTMovie() = default;

    QByteArray m_path; ///< empty for a new movie
    QTTime m_duration;
    std::uint32_t m_soundRate = 0; ///< 0 without sound
    std::vector<QTTrack> m_tracks;
    std::vector<QTSoundSegment> m_segments; ///< of a new movie
};

/// Appends a segment of an opened movie to a new one; times in the scale of the source. What reaches past the end is
/// cut there; a segment that begins behind it, or has no length, is an error (invalidTime), as is a movie without
/// sound. The sound alone is copied: movies are made here to feed audio tracks.
[[nodiscard]] TESSARON_EXPORT NSError InsertMovieSegment(const QTMovie &source, QTMovie &destination,
                                                         std::int64_t sourceIn, std::int64_t sourceDuration);

/// A file that movies are written into, from CreateMovieStorage() to CloseMovieStorage().
class MovieStorage;

struct MovieStorageDeleter {
    TESSARON_EXPORT void operator()(MovieStorage *storage) const;
};
using MovieStorageHandle = std::unique_ptr<MovieStorage, MovieStorageDeleter>;

/// Opens the file for a movie. What it held is deleted; a file that is not there is made, for its owner alone.
[[nodiscard]] TESSARON_EXPORT Result<MovieStorageHandle> CreateMovieStorage(const QByteArray &path);

/// Writes a new movie with its samples, which stand alone: the files that they come from are not needed again. Samples
/// of PCM and of lossless codecs stay what they are, as PCM; those of AAC, MP3 and ALAC are copied as they are
/// encoded, with an edit list that is exact to the sample, where one segment is all; everything else is decoded to PCM
/// of at least the depth of the decoder.
[[nodiscard]] TESSARON_EXPORT NSError AddMovieToStorage(const QTMovie &movie, MovieStorage &storage,
                                                        const std::stop_token &stop = {});

/// Closes the file; the error that the system reports only now, if any.
[[nodiscard]] TESSARON_EXPORT NSError CloseMovieStorage(MovieStorageHandle storage);

} // namespace Tessaron
