#pragma once

#include "platform/discrecording/burn/ProducerTrackWriter.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/NSError.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// One track of a layout, ready to be written: it has either an image or a producer.
struct PlannedTrack {
    std::shared_ptr<DRTrack> track; ///< null once the image is planned
    std::shared_ptr<const BlockImage> image; ///< null for a track with a producer
    ProducerTrackExtent extent; ///< for a track with a producer

    [[nodiscard]] std::uint64_t blocks() const;
    [[nodiscard]] std::uint64_t bytes() const;
};

/// A whole layout, ready to be written.
struct BurnPlan {
    std::vector<PlannedTrack> tracks; ///< of all sessions, in order
    std::shared_ptr<const DRStorageReport> report; ///< on all tracks together
    std::uint64_t bytes = 0;
    std::uint32_t files = 0;
    std::uint32_t folders = 0;
};

/// Plans each track, after all have been looked at: what cannot be written fails before anything slow begins. `*error`
/// is set when the layout cannot be written; after a cancel the plan is worth nothing. `progress` gets 0 to 1, on the
/// calling thread.
[[nodiscard]] BurnPlan planBurn(const DRLayout &layout, const std::stop_token &cancellation,
                                const std::function<void(double)> &progress, NSError *error);

/// One report in place of several.
[[nodiscard]] std::shared_ptr<const DRStorageReport>
joinReports(std::vector<std::shared_ptr<const DRStorageReport>> reports);

} // namespace Tessaron
