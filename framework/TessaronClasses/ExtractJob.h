#pragma once

#include "platform/quicktime/AudioDamage.h"
#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// The form of a sound that is taken out. Both have tags made of the disc's CD-TEXT.
enum class ExtractedSound : std::uint8_t {
    WAVE,
    FLAC, ///< which holds ISRCs, too
};

/// What is to be taken out of an image. Paths are bytes; relative ones count from the working folder.
struct ExtractOrder {
    QByteArray image = {}; ///< see describedDisc()
    /// Its number; 0 for what the image holds in front of index 1 of the first track, where that is sound. Absent for
    /// all tracks.
    std::optional<std::uint32_t> track = std::nullopt;
    /// The file for one track; for all of them a folder, which is made when it is not there, with the files
    /// "track01.wav" (or ".flac"), "track02.iso" and so on.
    QByteArray output = {};
    ExtractedSound sound = ExtractedSound::WAVE;
    /// With all tracks also take what number 0 stands for, if there is any, as "track00".
    bool isHiddenSoundTaken = false;
    /// Have the files on the disk, past all caches, before they get their names.
    bool isSynchronized = true;
};

/// A track that was taken out.
struct ExtractedTrack {
    std::uint32_t number = 0; ///< 0 for what is in front of the first track
    bool isAudio = false;
    QByteArray path; ///< of the file
    std::uint64_t bytes = 0; ///< of the file
    std::uint64_t blocks = 0; ///< whole ones; a sound file may end with samples that fill none, which are taken, too
    std::uint64_t pregapLeftOut = 0; ///< blocks in front of index 1 that the image holds and the file does not
    /// The sound was recorded with pre-emphasis (IEC 60908, 50/15 µs), and is in the file as it is on the disc. No
    /// sound file says so: what plays it sounds too bright unless that is undone.
    bool hasPreEmphasis = false;
    bool isChecked = false; ///< whether the image holds whole sectors, whose checksums and parity were checked
    std::uint64_t damagedSectors = 0; ///< whose checksum, parity or header is wrong; their data was taken as it is
    std::uint64_t firstDamagedSector = 0; ///< block of the track
    /// Sectors of mode 2 whose user data is longer than the 2048 bytes that were taken of it (form 2).
    std::uint64_t cutSectors = 0;
    std::uint64_t firstCutSector = 0; ///< block of the track
    /// Of sound that had to be decoded: where it is not what it was, in seconds from the start of its file.
    AudioDamageReport damage;
};

/// What became of an order.
struct ExtractResult {
    NSError error; ///< null when all was written; domain and codes are those of DiscJobErrors.h
    std::vector<ExtractedTrack> tracks; ///< empty after an error: nothing is left then
    QStringList notes; ///< see DescribedDisc

    /// True when every track was written as the image holds it, without damage.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Takes tracks out of an image: sound as sound files, decoded where the image consists of files in another form than
/// that of a CD; data as its user data alone, whatever sectors hold it. What is in front of a track's index 1 is left
/// out. The files get their names together, when all are whole. See DiscJob for threads and lifetime.
class TESSARON_EXPORT ExtractJob final : public DiscJob
{
    Q_OBJECT

public:
    explicit ExtractJob(ExtractOrder order, QObject *parent = nullptr);
    ~ExtractJob() override;

    /// As it was sent with finished(); before that, empty.
    [[nodiscard]] const ExtractResult &result() const;

Q_SIGNALS:
    void finished(const Tessaron::ExtractResult &result);

private:
    void announceResult() override;

    class Work;
};

} // namespace Tessaron

Q_DECLARE_METATYPE(Tessaron::ExtractResult)
