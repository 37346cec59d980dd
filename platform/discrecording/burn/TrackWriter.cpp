#include "platform/discrecording/burn/TrackWriter.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/ImageTrackWriter.h"
#include "platform/discrecording/burn/ProducerTrackWriter.h"
#include "platform/discrecording/objects/DRTrack.h"

namespace Tessaron
{

TrackWriter::~TrackWriter() = default;

Result<std::unique_ptr<TrackWriter>> trackWriterFor(const std::shared_ptr<DRTrack> &track, DRBurn *burn)
{
    if (!track)
        return burnError(paramErr, QStringLiteral("A track of the layout is missing."));
    if (track->producer()) {
        const Result<DiscTrack> described = describeProducerTrack(*track);
        if (!described)
            return described.error();
        return std::make_unique<ProducerTrackWriter>(track, *described, burn);
    }
    if (track->rootFolder())
        return std::make_unique<ImageTrackWriter>(track->rootFolder());
    return burnError(paramErr, QStringLiteral("A track has neither a folder nor a producer."));
}

} // namespace Tessaron
