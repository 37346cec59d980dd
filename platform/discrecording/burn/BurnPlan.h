#pragma once

#include "platform/discrecording/burn/TrackWriter.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/discrecording/objects/DRTrack.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/Result.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// A whole layout, ready to be written.
struct BurnPlan {
    TableOfContents contents;
    std::vector<std::unique_ptr<TrackWriter>> writers; ///< of the tracks of all sessions, in order
    std::shared_ptr<const DRStorageReport> report; ///< on all tracks together
    std::uint64_t bytes = 0;
    std::uint32_t files = 0;
    std::uint32_t folders = 0;
};

/// Plans each track, after all have been looked at: what cannot be written fails before anything slow begins. The error
/// is burnCancelledError() once a stop was asked for. `burn` and `media` are only passed on to producers; `burn` may be
/// null. `progress` gets 0 to 1, on the calling thread. `firstBlock`: as BurnDevice::firstBlock().
[[nodiscard]] Result<BurnPlan> planBurn(const DRLayout &layout, DRBurn *burn, const std::stop_token &cancellation,
                                        const std::function<void(double)> &progress, const QVariantMap &media = {},
                                        BlockAddress firstBlock = {});

/// Writes all that was planned to the sink, from the disc's beginning to its end; after a failure the sink abandons the
/// disc and has the last word about the error. `bytesTaken` as in BlockStream.
[[nodiscard]] NSError writeDisc(const BurnPlan &plan, BlockSink &sink, const std::stop_token &cancellation,
                                const std::function<void(std::uint64_t bytes)> &bytesTaken);

/// One report in place of several.
[[nodiscard]] std::shared_ptr<const DRStorageReport>
joinReports(std::vector<std::shared_ptr<const DRStorageReport>> reports);

} // namespace Tessaron
