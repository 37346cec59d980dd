#pragma once

#include "platform/discrecording/burn/BurnDevice.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/discrecording/burn/BurnStatus.h"

#include <mutex>
#include <optional>
#include <stop_token>

namespace Tessaron
{

/// What a burn does on its thread: plans the layout, writes its tracks and reports. Outlives the DRBurn where that is
/// destroyed by its own thread.
class BurnJob
{
public:
    /// `burn` is only passed on to producers.
    BurnJob(DRBurn *burn, std::shared_ptr<BurnDevice> device, DRLayout layout, std::shared_ptr<BurnStatus> status);

    /// The whole burn; ends with the final status.
    void run();

    // From any thread:
    void cancel() { m_cancellation.request_stop(); }
    [[nodiscard]] std::shared_ptr<const DRStorageReport> storageReport() const;
    [[nodiscard]] std::shared_ptr<const TableOfContents> tableOfContents() const;

private:
    [[nodiscard]] NSError plan();
    [[nodiscard]] NSError writeTracks();

    DRBurn *const m_burn;
    const std::shared_ptr<BurnDevice> m_device;
    DRLayout m_layout;
    const std::shared_ptr<BurnStatus> m_status;
    std::stop_source m_cancellation;
    std::optional<BurnPlan> m_plan;

    mutable std::mutex m_mutex; ///< guards what follows; both null until the layout is planned
    std::shared_ptr<const DRStorageReport> m_report;
    std::shared_ptr<const TableOfContents> m_contents;
};

} // namespace Tessaron
