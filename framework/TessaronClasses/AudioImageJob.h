#pragma once

#include "platform/quicktime/AudioDamage.h"
#include <TessaronClasses/AudioTracks.h>
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// Whether sounds are brought to a common loudness, by EBU R128: programme loudness to -18 LUFS, the reference level of
/// ReplayGain 2.0, but with true peaks of -1 dBTP at most. What would be louder stays softer instead; nothing is
/// compressed or limited.
enum class AudioNormalization : std::uint8_t {
    None,
    Album, ///< one gain for all files: what was softer stays softer, and no step is heard where two tracks meet
    EachFile, ///< one for each: for files from everywhere
};

/// Texts for the CD-TEXT of a disc or a track; an empty one stands for what cue sheets and tags say.
struct AudioTitle {
    QString title;
    QString performer;

    friend bool operator==(const AudioTitle &, const AudioTitle &) = default;
};

/// What an image of an audio CD is to be made of, where, and how. Paths are bytes; relative ones count from the working
/// folder. Lengths are frames: 75 in a second, 588 samples each.
struct AudioImageOrder {
    /// Audio or movie files, a track each, in this order. A file whose name ends in ".m3u" or ".m3u8" stands for the
    /// files that it lists; one that ends in ".cue" for the tracks that this cue sheet tells of, with their gaps, index
    /// points, flags, ISRCs, texts and catalogue number. 99 tracks at most.
    QList<QByteArray> sources = {};
    /// The tracks themselves in place of `sources`, part by part; `gap` does not count then, and nothing is taken from
    /// the tags of files.
    std::vector<AudioTrackOrder> tracks = {};
    // Of the disc, where there are `tracks`.
    SpokenTexts texts = {};
    QByteArray mediaCatalogNumber = {}; ///< 13 digits, or empty
    /// The image file. It appears when it is whole; an older file is replaced then and is left as it was if the job
    /// fails. A pipe or a character device takes the image as a stream, in format VANT only: what it has taken cannot
    /// be had back.
    QByteArray output = {};
    /// Takes the image as a stream instead of `output` when it is not -1; see DiscImageOrder.
    int outputDescriptor = -1;
    DiscFormat format = DiscFormat::BIN; ///< or VANT
    /// A folder whose content becomes track 1, a track of data in raw sectors (mode 1), in front of the audio tracks;
    /// empty for none. It ends with two seconds of empty sectors, and the first audio track begins with at least two
    /// seconds of silence, as a change of the kind of tracks needs them (ECMA-130 20).
    QByteArray dataFolder = {};
    QString volumeName = {}; ///< of the track of data; empty for the name of the folder
    std::uint32_t gap = 0; ///< frames of silence in front of each of `sources` but the first
    /// Where there is no gap, let a track follow the one before it sample by sample: what two files have cut from one
    /// recording sounds as one again, and a track begins up to a frame behind its first sample. Without it each track
    /// begins with its first sample, and silence fills up the last frame of the one before it.
    bool isGapless = true;
    std::uint32_t capacity = 0; ///< fail when the tracks and gaps are longer; 0 for any length
    AudioNormalization normalization = AudioNormalization::None;
    /// Titles, performers and others, from cue sheets and the tags of the files. Where the cue sheet of a BIN image
    /// cannot say them all, a file with the extension "cdt" comes beside it.
    bool hasCDText = false;
    // Where there is CD-TEXT, these texts go before those of cue sheets and tags, in the first of its languages.
    AudioTitle discTitle = {};
    /// Of each audio track in order; what is missing at the end stands for none. More of them than tracks is an error.
    QList<AudioTitle> titles = {};
    /// The ISRC of each audio track in order, with or without dashes; an empty one, and what is missing at the end,
    /// stands for none. They go before those of cue sheets and tags. One that is not an ISRC, and more of them than
    /// tracks, is an error.
    QList<QByteArray> isrcs = {};
    /// Have the image on the disk, past all caches, before it gets its name.
    bool isSynchronized = true;
};

/// An audio track of such an image.
struct AudioImageTrack {
    std::uint32_t number = 1; ///< on the disc
    QByteArray source; ///< the file in which it begins
    std::uint64_t samples = 0; ///< of its sound from index 1 on, at 44,100 Hz
    std::uint64_t pregap = 0; ///< frames in front of it, in the image
    std::uint64_t firstFrame = 0; ///< where index 1 is in the image
    std::uint64_t frames = 0; ///< from there to its end
    QString title; ///< of the CD-TEXT; empty without
    QString performer;
    QByteArray isrc; ///< 12 characters, or empty
    /// Shorter than the four seconds that a track of a CD has at least (IEC 60908): many recorders refuse it.
    bool isTooShort = false;
    /// Where the image holds something else than the source should have; times are those of the source.
    AudioDamageReport damage;
    // Of `source`, and only where it was normalized.
    std::optional<double> loudness; ///< LUFS; none for silence
    std::optional<double> truePeak; ///< dBTP; none for silence
    std::optional<double> gain; ///< decibels
};

/// How the making of such an image has ended.
struct AudioImageResult {
    /// Null when the image is whole. Else nothing is left of it, and what was there before is as it was. Domain and
    /// codes are those of DiscJobErrors.h.
    NSError error;
    QByteArray imagePath; ///< where the image is or was to be, symbolic links followed; empty for a descriptor
    QByteArray cueSheetPath; ///< empty for VANT
    /// Of the file that holds the CD-TEXT which a cue sheet cannot say, such as further languages; the sheet names it
    /// (CDTEXTFILE). Empty where the sheet says it all, and for VANT.
    QByteArray cdTextPath;
    std::uint64_t bytes = 0; ///< of the image file
    std::uint64_t frames = 0; ///< of all tracks and gaps
    std::vector<AudioImageTrack> tracks;
    /// Of the track of data: its volume, files, folders, and what of them is not in the image. The bytes are those of
    /// its sectors. Nothing else of it is filled in.
    DiscImageResult data;
    QStringList notes; ///< on cue sheets: what was passed over or taken in a certain way, each in a sentence
    QStringList changedTexts; ///< of the CD-TEXT, each told in a sentence
    bool areTextsLost = false; ///< among them are some of which nothing sensible was left

    /// True when there is no error, no source was damaged, no text was lost, and all data is in the image.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Makes an image of an audio CD, or of one that has a track of data in front: decodes files to the sound of a CD, as
/// CDSound says, into raw sectors of 2352 bytes. See DiscJob for threads and lifetime. Each processor decodes a file at
/// a time, in a program of its own, so that a file that makes a decoder crash is an error like any other; a stream
/// takes one file at a time. Memory does not grow with their length.
class TESSARON_EXPORT AudioImageJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit AudioImageJob(AudioImageOrder order, QObject *parent = nullptr);
    ~AudioImageJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const AudioImageResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::AudioImageResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::AudioImageResult)
