#pragma once

#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/DiscJob.h>

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What is to be taken out of an image. Paths are bytes; relative ones count from the working folder.
struct ExtractOrder {
    QByteArray image; ///< see describedDisc()
    std::optional<std::uint32_t> track; ///< its number; absent for all tracks
    /// The file for one track; for all of them a folder, which is made when it is not there, with the files
    /// "track01.wav", "track02.iso" and so on.
    QByteArray output;
};

/// A track that was taken out.
struct ExtractedTrack {
    std::uint32_t number = 0;
    bool isAudio = false;
    QByteArray path; ///< of the file
    std::uint64_t bytes = 0; ///< of the file
    std::uint64_t blocks = 0;
    std::uint64_t pregapLeftOut = 0; ///< blocks in front of index 1 that the image holds and the file does not
    bool isChecked = false; ///< whether the image holds whole sectors, whose checksums and parity were checked
    std::uint64_t damagedSectors = 0; ///< whose checksum, parity or header is wrong; their data was taken as it is
    std::uint64_t firstDamagedSector = 0; ///< block of the track
    /// Sectors of mode 2 whose user data is longer than the 2048 bytes that were taken of it (form 2).
    std::uint64_t cutSectors = 0;
    std::uint64_t firstCutSector = 0; ///< block of the track
};

/// What became of an order.
struct ExtractResult {
    NSError error; ///< null when all was written; domain and codes are those of DiscJobErrors.h
    std::vector<ExtractedTrack> tracks; ///< empty after an error: nothing is left then
    QStringList notes; ///< see DescribedDisc

    /// True when every track was written as the image holds it, without damage.
    [[nodiscard]] TESSARON_EXPORT bool isComplete() const;
};

/// Takes tracks out of an image: sound as WAVE files of CD audio, data as its user data alone, whatever sectors hold
/// it. What is in front of a track's index 1 is left out. The files get their names together, when all are whole. See
/// DiscJob for threads and lifetime.
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
