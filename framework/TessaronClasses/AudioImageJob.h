#pragma once

#include "platform/quicktime/AudioDamage.h"
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// What an image of an audio CD is to be made of, where, and how. Paths are bytes; relative ones count from the working
/// folder. Lengths are frames: 75 in a second, 588 samples each.
struct AudioImageOrder {
    /// Audio or movie files, a track each, in this order. A file whose name ends in ".m3u" or ".m3u8" stands for the
    /// files that it lists. 99 tracks at most.
    QList<QByteArray> sources = {};
    /// The image file. It appears when it is whole; an older file is replaced then and is left as it was if the job
    /// fails.
    QByteArray output = {};
    DiscFormat format = DiscFormat::BIN; ///< or VANT
    std::uint32_t gap = 0; ///< frames of silence in front of each track but the first
    /// Where there is no gap, let a track follow the one before it sample by sample: what two files have cut from one
    /// recording sounds as one again, and a track begins up to a frame behind its first sample. Without it each track
    /// begins with its first sample, and silence fills up the last frame of the one before it.
    bool isGapless = true;
    std::uint32_t capacity = 0; ///< fail when the tracks and gaps are longer; 0 for any length
    bool hasCDText = false; ///< titles, performers and others, from the tags of the files
    /// The ISRC of each track in order, with or without dashes; an empty one, and what is missing at the end, stands
    /// for none. They go before those of tags. One that is no ISRC, and more of them than tracks, is an error.
    QList<QByteArray> isrcs = {};
    /// Have the image on the disk, past all caches, before it gets its name.
    bool isSynchronized = true;
};

/// A track of such an image.
struct AudioImageTrack {
    QByteArray source;
    std::uint64_t samples = 0; ///< of the source, at 44,100 Hz
    std::uint64_t pregap = 0; ///< frames of silence in front of it, in the image
    std::uint64_t firstFrame = 0; ///< where index 1 is in the image
    std::uint64_t frames = 0; ///< from there to its end
    QString title; ///< of the CD-TEXT; empty without
    QString performer;
    QByteArray isrc; ///< 12 characters, or empty
    /// Shorter than the four seconds that a track of a CD has at least (IEC 60908): many recorders refuse it.
    bool isTooShort = false;
    AudioDamageReport damage; ///< where the image holds something else than the source should have
};

/// How the making of such an image has ended.
struct AudioImageResult {
    /// Null when the image is whole. Else nothing is left of it, and what was there before is as it was. Domain and
    /// codes are those of DiscJobErrors.h.
    NSError error;
    QByteArray imagePath; ///< where the image is or was to be, symbolic links followed
    QByteArray cueSheetPath; ///< empty for VANT
    std::uint64_t bytes = 0; ///< of the image file
    std::uint64_t frames = 0; ///< of all tracks and gaps
    std::vector<AudioImageTrack> tracks;
    QStringList changedTexts; ///< of the CD-TEXT, each told in a sentence
    bool areTextsLost = false; ///< among them are some of which nothing sensible was left

    /// True when there is no error, no source was damaged, and no text was lost.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Makes an image of an audio CD: decodes files to the sound of a CD, as CDSound says, into raw sectors of 2352 bytes.
/// See DiscJob for threads and lifetime. As many files are decoded at a time as there are processors; memory does not
/// grow with their length.
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
