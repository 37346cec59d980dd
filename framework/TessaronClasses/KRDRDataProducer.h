#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/foundation/Export.h"
#include <TessaronClasses/KRDRDataProductionInfo.h>
#include <TessaronClasses/KRProducerOfferings.h>

#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <mutex>

namespace Tessaron
{

class KRAudioTrack;
class MovieExcerpt;
class NSFileHandle;

/// Makes a track of sectors of an image file, as a production record says, and produces its data. Sound that must be
/// decoded is copied into a temporary movie of its own first, which an audio track then produces; that movie goes with
/// this object, so keep it as long as its track.
///
/// Made and asked for its track on one thread; then used by one burn at a time, on the burn's thread. The file is open
/// from prepareTrack() to cleanupTrackAfterBurn(); a later burn starts afresh.
class TESSARON_EXPORT KRDRDataProducer final : public DRTrackProducer,
                                               public KRTrackOffering,
                                               public std::enable_shared_from_this<KRDRDataProducer>
{
public:
    /// A record with every field zero.
    [[nodiscard]] static KRDRDataProductionInfo blankInfo();
    /// Of the image file; it is looked at only when a burn is prepared. Never null.
    [[nodiscard]] static std::shared_ptr<KRDRDataProducer> initWithInfo(const KRDRDataProductionInfo &info,
                                                                        const FSRef &fsRef);
    [[nodiscard]] static std::shared_ptr<KRDRDataProducer> initWithInfo(const KRDRDataProductionInfo &info,
                                                                        const QString &filePath);
    ~KRDRDataProducer() override;
    KRDRDataProducer(const KRDRDataProducer &) = delete;
    KRDRDataProducer &operator=(const KRDRDataProducer &) = delete;

    /// A new track with this producer, or that of an audio track for sound that must be decoded. Null when sectors of
    /// this size do not go with this mode, when the record claims more index points than it holds, and when the file
    /// holds no sound at the place in the record. Decoded sound is copied the first time only, which may take long.
    [[nodiscard]] std::shared_ptr<DRTrack> track() override;
    /// What a burn, or a list of producers, is to call: the audio track's own, once there is one, else this object.
    [[nodiscard]] std::shared_ptr<DRTrackProducer> dataProducer();

    /// Null unless a track of decoded sound was made. Thread-safe, as the next one.
    [[nodiscard]] std::shared_ptr<KRAudioTrack> audiotrack() const;
    void setAudiotrack(const std::shared_ptr<KRAudioTrack> &track);

    /// False when the file cannot be opened, and when a DVD is to hold other sectors than those of 2048 bytes. The
    /// numbers of `track`, which may be null, become those of a DVD then.
    bool prepareTrack(DRTrack *track, DRBurn *forBurn, const QVariantMap &toMedia) override;
    /// The file's sectors where the record says so, else zeros.
    std::uint32_t producePreGapForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                        std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    /// The next bytes of the data; zeros once as many sectors were read as the record has. A call that begins within
    /// the data takes all its bytes from the file, also those behind the data. At the end of the file and where reading
    /// fails there are fewer bytes; of sectors with subchannel all that were asked for, with zeros.
    std::uint32_t produceDataForTrack(DRTrack *track, char *intoBuffer, std::uint32_t length, std::uint64_t atAddress,
                                      std::uint32_t blockSize, std::uint32_t *ioFlags) override;
    void cleanupTrackAfterBurn(DRTrack *track) override;

private:
    KRDRDataProducer(const KRDRDataProductionInfo &info, const FSRef &fsRef);

    [[nodiscard]] std::shared_ptr<DRTrack> decodedTrack();
    [[nodiscard]] bool makeExcerpt();
    [[nodiscard]] bool isCut() const;
    std::uint32_t readSectors(char *buffer, std::uint32_t length);

    KRDRDataProductionInfo m_info;
    const FSRef m_fileRef;

    mutable std::mutex m_audiotrackMutex;
    std::shared_ptr<KRAudioTrack> m_audiotrack; ///< guarded by the mutex
    std::unique_ptr<MovieExcerpt> m_excerpt; ///< what it plays; null until it was made

    // Of a burn.
    std::shared_ptr<NSFileHandle> m_file; ///< null outside of a burn
    bool m_isPregapInit = false;
    bool m_isDataInit = false;
    std::uint64_t m_totalReadData = 0; ///< bytes of data that were read, except from sectors with subchannel
};

} // namespace Tessaron
