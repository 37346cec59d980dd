#pragma once

#include "platform/discrecording/burn/BurnCancellation.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/discrecording/burn/BurnStatus.h"
#include "platform/discrecording/burn/DRCallbackDevice.h"
#include "platform/discrecording/burn/ImageTrackWriter.h"

#include <mutex>

namespace Tessaron
{

/// What a burn does on its thread: plans the layout, writes its tracks and reports. Outlives the DRBurn where that is
/// destroyed by its own thread.
class BurnJob
{
public:
    /// `burn` is only passed on to producers.
    BurnJob(DRBurn *burn, std::shared_ptr<DRCallbackDevice> device, DRLayout layout,
            std::shared_ptr<BurnStatus> status);

    /// The whole burn; ends with the final status.
    void run();

    // From any thread:
    void cancel() { m_cancellation.request(); }
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const;

private:
    [[nodiscard]] NSError plan();
    [[nodiscard]] NSError writeTracks();

    DRBurn *const m_burn;
    const std::shared_ptr<DRCallbackDevice> m_device;
    DRLayout m_layout;
    const std::shared_ptr<BurnStatus> m_status;
    BurnCancellation m_cancellation;
    BurnPlan m_plan;
    std::unique_ptr<ImageTrackWriter> m_imageWriter; ///< ends before the image it reads

    mutable std::mutex m_reportMutex;
    std::shared_ptr<const DRStorageReport> m_report; ///< guarded by m_reportMutex
};

} // namespace Tessaron
