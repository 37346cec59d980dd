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

class NSFileHandle;

/// Makes a track of sectors of an image file, as a production record says, and produces its data.
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

    /// A new track with this producer. Null when sectors of this size do not go with this mode, and when the record
    /// claims more index points than it holds.
    [[nodiscard]] std::shared_ptr<DRTrack> track() override;

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

    [[nodiscard]] bool isCut() const;
    std::uint32_t readSectors(char *buffer, std::uint32_t length);

    KRDRDataProductionInfo m_info;
    const FSRef m_fileRef;

    // Of a burn.
    std::shared_ptr<NSFileHandle> m_file; ///< null outside of a burn
    bool m_isPregapInit = false;
    bool m_isDataInit = false;
    std::uint64_t m_totalReadData = 0; ///< bytes of data that were read, except from sectors with subchannel
};

} // namespace Tessaron
