#include "platform/discrecording/objects/DRTrack.h"

#include "platform/discrecording/objects/DRFolder.h"

namespace Tessaron
{

const QString DRTrackLengthKey = QStringLiteral("DRTrackLengthKey");
const QString DRPreGapLengthKey = QStringLiteral("DRPreGapLengthKey");
const QString DRPostGapLengthKey = QStringLiteral("DRPostGapLengthKey");
const QString DRBlockSizeKey = QStringLiteral("DRBlockSizeKey");
const QString DRBlockTypeKey = QStringLiteral("DRBlockTypeKey");
const QString DRDataFormKey = QStringLiteral("DRDataFormKey");
const QString DRTrackModeKey = QStringLiteral("DRTrackModeKey");
const QString DRSessionFormatKey = QStringLiteral("DRSessionFormatKey");
const QString DRIndexPointsKey = QStringLiteral("DRIndexPointsKey");
const QString DRSerialCopyManagementStateKey = QStringLiteral("DRSerialCopyManagementStateKey");
const QString DRSCMSCopyrightFree = QStringLiteral("DRSCMSCopyrightFree");
const QString DRSCMSCopyrightProtectedOriginal = QStringLiteral("DRSCMSCopyrightProtectedOriginal");
const QString DRSCMSCopyrightProtectedCopy = QStringLiteral("DRSCMSCopyrightProtectedCopy");
const QString DRAudioPreEmphasisKey = QStringLiteral("DRAudioPreEmphasisKey");
const QString DRAudioFourChannelKey = QStringLiteral("DRAudioFourChannelKey");

std::shared_ptr<DRTrack> DRTrack::trackForRootFolder(const std::shared_ptr<DRFolder> &root)
{
    if (!root)
        return nullptr;
    std::shared_ptr<DRTrack> track(new DRTrack);
    track->m_root = root;
    track->m_properties = {
        {DRBlockSizeKey, 2048u}, {DRBlockTypeKey, 8}, {DRDataFormKey, 16}, {DRTrackModeKey, 4}, {DRSessionFormatKey, 0},
    };
    return track;
}

std::shared_ptr<DRTrack> DRTrack::trackWithProducer(const std::shared_ptr<DRTrackProducer> &producer)
{
    if (!producer)
        return nullptr;
    std::shared_ptr<DRTrack> track(new DRTrack);
    track->m_producer = producer;
    return track;
}

bool isNullLayout(const DRLayout &layout)
{
    if (const auto *const track = std::get_if<std::shared_ptr<DRTrack>>(&layout))
        return !*track;
    return std::holds_alternative<std::monostate>(layout);
}

DRTrackArray tracksOfLayout(const DRLayout &layout)
{
    if (const auto *const track = std::get_if<std::shared_ptr<DRTrack>>(&layout))
        return {*track};
    if (const auto *const tracks = std::get_if<DRTrackArray>(&layout))
        return *tracks;
    DRTrackArray result;
    if (const auto *const sessions = std::get_if<std::vector<DRTrackArray>>(&layout)) {
        for (const DRTrackArray &session : *sessions)
            result.insert(result.end(), session.begin(), session.end());
    }
    return result;
}

} // namespace Tessaron
