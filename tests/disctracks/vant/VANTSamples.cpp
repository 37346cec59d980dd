#include "tests/disctracks/vant/VANTSamples.h"

#include "fuzz/VANTPromises.h"

#include <TessaronClasses/VANTHeader.h>

#include <cstring>

namespace Tessaron::Testing
{

namespace
{

class SilentProducer final : public DRTrackProducer
{
public:
    std::uint32_t produceDataForTrack(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                      std::uint32_t *) override
    {
        return 0;
    }
};

} // namespace

std::shared_ptr<DRTrack> trackWith(const QVariantMap &properties)
{
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(std::make_shared<SilentProducer>());
    track->setProperties(properties);
    return track;
}

std::shared_ptr<DRTrack> dataTrack(quint64 blocks)
{
    return trackWith({{DRBlockSizeKey, 2048u},
                      {DRTrackLengthKey, blocks},
                      {DRTrackModeKey, 4},
                      {DRDataFormKey, 16},
                      {DRBlockTypeKey, 8},
                      {DRSessionFormatKey, 0}});
}

std::shared_ptr<DRTrack> audioTrack(quint64 blocks)
{
    return trackWith({{DRBlockSizeKey, 2352u},
                      {DRTrackLengthKey, blocks},
                      {DRTrackModeKey, 0},
                      {DRDataFormKey, 0},
                      {DRBlockTypeKey, 0},
                      {DRSessionFormatKey, 0},
                      {DRPreGapLengthKey, 150u},
                      {DRPostGapLengthKey, 2u},
                      {DRIndexPointsKey, QVariantList{10u, 4000000000u}},
                      {DRSerialCopyManagementStateKey, DRSCMSCopyrightProtectedOriginal},
                      {DRAudioPreEmphasisKey, true},
                      {DRAudioFourChannelKey, true}});
}

QByteArray richImage()
{
    const std::vector<DRTrackArray> sessions = {{audioTrack(3), dataTrack(2)}, {dataTrack(0)}};
    const QByteArray data(3 * 2352 + 2 * 2048, 'x');
    return data + VANTHeaderForDRLayout(sessions, {QByteArray("\x80\0\r\n", 4), QByteArray()});
}

void correctChecksum(QByteArray *image)
{
    correctVANTChecksum(reinterpret_cast<std::uint8_t *>(image->data()), std::size_t(image->size()));
}

QByteArray brokenPromise(const VANTReadResult &result, quint64 fileSize)
{
    return brokenVANTPromise(result, fileSize);
}

} // namespace Tessaron::Testing
