#pragma once

#include "platform/foundation/Export.h"
#include "platform/quicktime/MovieDescription.h"

#include <QString>
#include <QVariantMap>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

class QImage;

namespace Tessaron
{

// Keys of a result, besides "path" (QString), "del" (QVariantList of KRMovieInfo::Receiver) and "error" (NSError, only
// where the file could not be opened). Some begin with an f: callers go by these very names.
TESSARON_EXPORT extern const QString fZelTracksInfoKey; ///< QVariantList of the dictionaries of the tracks
TESSARON_EXPORT extern const QString kZelMovieInfoKey; ///< QVariantMap; empty for a file that could not be opened
TESSARON_EXPORT extern const QString kZelMovieMetadataKey; ///< QVariantMap of what was found

// Keys of the movie's dictionary.
TESSARON_EXPORT extern const QString kZelMovieTimeScale; ///< quint32: units in a second
TESSARON_EXPORT extern const QString kZelMovieDuration; ///< quint32: the low 32 bits of the duration in those units

// Keys of the metadata.
TESSARON_EXPORT extern const QString kZelAudioInfoAlbum; ///< QString, as are the next four
TESSARON_EXPORT extern const QString kZelAudioInfoTitle;
TESSARON_EXPORT extern const QString kZelAudioInfoArtist;
TESSARON_EXPORT extern const QString kZelAudioInfoAuthors;
TESSARON_EXPORT extern const QString kZelAudioInfoYear; ///< as the file has it
TESSARON_EXPORT extern const QString kZelAudioInfoArtworks; ///< QVariantList of one QImage of 80 by 80

// Keys of the dictionary of a track.
TESSARON_EXPORT extern const QString kZelTrackInfoSize; ///< qint64: bytes of data; absent where no table tells it
TESSARON_EXPORT extern const QString kZelTrackInfoType; ///< QString: one of the next two
TESSARON_EXPORT extern const QString kZelTrackTypeAudio;
TESSARON_EXPORT extern const QString kZelTrackTypeVideo;
TESSARON_EXPORT extern const QString kZelTrackInfoDuration; ///< qint64: in units of the next one
TESSARON_EXPORT extern const QString kZelTrackInfoTimeScale; ///< qint64: the movie's
/// QString of four characters: of sound, the sample format; of pictures, the codec as it lies in the memory of this
/// machine, which reads backwards on most.
TESSARON_EXPORT extern const QString kZelTrackInfoFourCC;

// Besides, in that of an audio track, where "desc size" (qint64) has the bytes of the sound description.
TESSARON_EXPORT extern const QString kZelAudioInfoSampleRate; ///< quint64: hertz
TESSARON_EXPORT extern const QString kZelAudioInfoSampleSize; ///< short: bits
TESSARON_EXPORT extern const QString kZelAudioInfoChannelCount; ///< short

// Besides, in that of a video track.
TESSARON_EXPORT extern const QString fZelVideoInfoWidth; ///< short: pixels
TESSARON_EXPORT extern const QString fZelVideoInfoHeight; ///< short: pixels
TESSARON_EXPORT extern const QString kZelVideoInfoFrameCount; ///< short: frames in a sample
TESSARON_EXPORT extern const QString kZelVideoInfoDepth; ///< short: bits of a pixel
TESSARON_EXPORT extern const QString kZelVideoInfoName; ///< QString: the codec's name
TESSARON_EXPORT extern const QString kZelTrackInfoFourCCNum; ///< quint64: the codec, its first character highest

/// Who is told of a file. Called on the main thread.
class TESSARON_EXPORT KRMovieInfoReceiver
{
public:
    virtual ~KRMovieInfoReceiver();

    virtual void KRMovieInfoDidGetInfo(const QVariantMap &info) = 0;
    /// Comes just before that, with all that the file says of itself, texts uncut; null when it could not be opened.
    virtual void KRMovieInfoDidDescribe(const QString &path, const MovieDescription *movie);
    /// Whether the artwork is looked for and decoded. True unless a receiver that shows no pictures says otherwise;
    /// asked when it asks for a file, on its thread.
    [[nodiscard]] virtual bool wantsArtworks() const;

protected:
    KRMovieInfoReceiver() = default;
    KRMovieInfoReceiver(const KRMovieInfoReceiver &) = default;
    KRMovieInfoReceiver &operator=(const KRMovieInfoReceiver &) = default;
};

/// Finds out, in the background, what is in audio and movie files: one after the other, on a thread that lives for one
/// file. Results come to the main thread through the event loop, which never waits for a file.
///
/// A file that does not answer (a dead network mount, a drive that tries a bad sector again and again) is given up
/// after a while: its request gets an error, and the next file is read on another thread. What else lies on that mount
/// gets the error at once as long as the system still holds the thread. Pipes and devices are never opened for reading.
///
/// Receivers are not owned; one that is gone is not told. Any thread may ask; the program needs a QCoreApplication.
class TESSARON_EXPORT KRMovieInfo
{
public:
    using Receiver = std::weak_ptr<KRMovieInfoReceiver>;

    /// The one object of the process, made by the first call.
    [[nodiscard]] static std::shared_ptr<KRMovieInfo> sharedInstance();
    /// The same.
    [[nodiscard]] static std::shared_ptr<KRMovieInfo> init();
    /// Stops reading; a thread that the system holds is left to the end of the process.
    ~KRMovieInfo();
    KRMovieInfo(const KRMovieInfo &) = delete;
    KRMovieInfo &operator=(const KRMovieInfo &) = delete;

    /// Asks for a file; returns at once. Each call leads to a reading and a delivery of its own, also for the same
    /// path. Paths are texts (FileSystemRepresentation.h). Nothing comes of a null path or a null receiver.
    void getInfoForMovieAtPath(const QString &path, const std::shared_ptr<KRMovieInfoReceiver> &andNotify);
    /// Takes a receiver out of all requests, and the request out of the queue that has no other one; what is being read
    /// for it is dropped. When requests follow the one that was changed, they stay as they are and std::logic_error is
    /// raised: withdraw again, until nothing is raised. A request of several receivers goes to the place in the queue
    /// that the receiver had in its list; std::out_of_range where the queue is shorter.
    void abortInfoRequestForReceiver(const std::shared_ptr<KRMovieInfoReceiver> &receiver);
    /// Drops all requests, with that which is being read.
    void stopAll();
    /// Starts to read unless that goes on already or nothing waits.
    void getAllInfo();

    /// The place of the first request for a path in the queue, which holds the one that is being read, too; or -1.
    [[nodiscard]] std::ptrdiff_t indexOfItemWithPath(const QString &path) const;
    /// Whether a file is one of Windows Media: by the names of its codecs and the types of content that the shared MIME
    /// database has for its name, or else by its extension. Opens the file, on the calling thread.
    [[nodiscard]] bool isWindowsMediaMovie(const QString &path) const;
    /// The picture of a file's artwork, 80 by 80, or null: the first JPEG by its mark "JFIF", else the first PNG by its
    /// mark "PNG". The mark is searched as offsetOfBytesWithBuffer() does, and begins in the first 81,920 bytes. Reads
    /// the file, on the calling thread.
    [[nodiscard]] static QImage artworkForFile(const QString &path);

    /// How long a file may take until it is given up; a minute at first. For files asked for later.
    void setPatience(std::chrono::milliseconds patience);
    /// What describes files instead of describeMovie(), for programs with formats of their own. Called on the reading
    /// thread; an empty function is describeMovie() again.
    using Describer = std::function<Result<MovieDescription>(const QByteArray &path, const std::stop_token &stop)>;
    void setDescriber(Describer describer);

private:
    KRMovieInfo();

    class State;
    const std::shared_ptr<State> d; ///< shared with the threads
};

/// Takes its arguments, does nothing and returns 0: the place where writing these texts into a movie would go.
extern "C" TESSARON_EXPORT int setTitleAuthorAlbumOfMovieFile(const char *path, const char *title, const char *author,
                                                              const char *album);

} // namespace Tessaron
