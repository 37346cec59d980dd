#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/KRProducerOfferings.h>

#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>

namespace Tessaron
{

class KRAudioTrack;
class MovieExcerpt;
class NSFileHandle;

/// What the mode of a KRDataProvider says. Other numbers give no track.
namespace KRDataProviderMode
{
inline constexpr std::int16_t audio = 0; ///< sectors of 2352 bytes
inline constexpr std::int16_t mode1 = 1;
inline constexpr std::int16_t mode2 = 2;
inline constexpr std::int16_t decodedAudio = 3; ///< of an audio file or a movie
inline constexpr std::int16_t mode2Form1 = 21;
inline constexpr std::int16_t mode2Form2 = 22;
} // namespace KRDataProviderMode

/// The option bits of a KRDataProvider.
namespace KRDataProviderOption
{
/// Form 1: the file has sectors of 2336 bytes (24 are skipped, 2048 kept). Mode 1: the length is counted in sectors of
/// 2336 bytes, while the data is read as it is. Mode 2 in sectors of 2336 bytes: becomes form 1.
inline constexpr std::uint32_t withoutHeader = 1;
inline constexpr std::uint32_t raw = 2; ///< mode 1 and form 1: the file has sectors of 2352 bytes
inline constexpr std::uint32_t mode2Raw = 4; ///< mode 2 in sectors of 2352 bytes: 2336 of each are kept
/// The data is read from the start of the track on: its pregap is not in the file.
inline constexpr std::uint32_t pregapNotInFile = 8;
inline constexpr std::uint32_t anyPregap = 16; ///< audio without a pregap: nothing is said of the pregap's length
inline constexpr std::uint32_t untilEnd = 32; ///< decoded audio: up to the end of the source
inline constexpr std::uint32_t mode2Mixed = 256; ///< mode 2 in sectors of 2352 bytes: 2332 of each are kept
} // namespace KRDataProviderOption

/// Makes a track of a run of bytes of a file, and produces its data: as it stands there, or the user data of raw
/// sectors. The burn itself supplies the pregap, as silence. Sound that must be decoded is copied into a temporary
/// movie of its own first, which an audio track then produces; that movie goes with this object, so keep it as long as
/// its track.
///
/// Made and asked for its track on one thread; then used by one burn at a time, on the burn's thread. The file is open
/// from prepareTrack() to cleanupTrackAfterBurn().
class TESSARON_EXPORT KRDataProvider final : public DRTrackProducer,
                                             public KRTrackOffering,
                                             public std::enable_shared_from_this<KRDataProvider>
{
public:
    /// Null for a null path, a length of 0, a sector size of 0, a file that is not there, and a folder. `start` and the
    /// lengths are bytes in the file, `sectorSize` is that of the file; the rest as above. For decoded audio `start` is
    /// in whole seconds (its low 32 bits), and the length of the excerpt is `length` in sectors, 75 a second.
    [[nodiscard]] static std::shared_ptr<KRDataProvider>
    providerWithFile(const QString &path, std::uint64_t start, std::uint64_t length, std::uint32_t sectorSize,
                     std::uint64_t pregapLength, std::int16_t mode, std::uint32_t options);
    ~KRDataProvider() override;
    KRDataProvider(const KRDataProvider &) = delete;
    KRDataProvider &operator=(const KRDataProvider &) = delete;

    /// Of the file; null when it is gone.
    [[nodiscard]] QString path() const;
    /// A new track with this producer, or that of an audio track for sound that must be decoded. Null for a mode that
    /// does not go with the sectors, and when the file holds no sound at that place.
    [[nodiscard]] std::shared_ptr<DRTrack> dataProducer();
    /// The same, for a list of producers. Null for sound that must be decoded: there the producer of dataProducer()'s
    /// track goes into the list.
    [[nodiscard]] std::shared_ptr<DRTrack> track() override;
    /// Whether a track was made that a DVD can hold.
    [[nodiscard]] bool dvdBurnable() const { return m_canBurnOnDVD; }

    /// False when the file cannot be opened, and when a DVD is to hold other sectors than those of 2048 bytes. The
    /// numbers of `track`, which may be null, become those of a DVD then.
    bool prepareTrack(DRTrack *track, DRBurn *forBurn, const QVariantMap &toMedia) override;
    /// The next bytes: fewer at the end of the file and where reading fails; of sectors that are cut all that were
    /// asked for, with zeros. Nothing ends the data but the track's length.
    std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                      std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    void cleanupTrackAfterBurn(DRTrack *track) override;

private:
    KRDataProvider() = default;
    void _set(const FSRef &fileRef, std::uint64_t start, std::uint64_t length, std::uint32_t sector,
              std::uint64_t pregapLen, std::int16_t mode, std::uint32_t options);

    [[nodiscard]] bool has(std::uint32_t option) const { return (m_options & option) != 0; }
    void normalise();
    [[nodiscard]] std::shared_ptr<DRTrack> decodedTrack();

    FSRef m_fileRef;
    std::uint64_t m_start = 0;
    std::uint64_t m_length = 0;
    std::uint64_t m_pregapLen = 0;
    std::uint32_t m_givenSector = 0; ///< what the pregap is counted in
    std::uint32_t m_sector = 0; ///< rewritten when the track is made, as the mode
    std::int16_t m_mode = 0;
    std::uint32_t m_options = 0;
    bool m_canBurnOnDVD = false;
    std::unique_ptr<MovieExcerpt> m_excerpt; ///< of decoded sound; null until it was made

    // Of a burn.
    std::shared_ptr<NSFileHandle> m_file; ///< null outside of a burn
    std::uint64_t m_lenProd = 0; ///< bytes of user data that were produced
};

} // namespace Tessaron
