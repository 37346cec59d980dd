#include "platform/discrecording/burn/BurnJob.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/WhenThereIsMemory.h"

#include <new>

namespace Tessaron
{

BurnJob::BurnJob(DRBurn *burn, std::shared_ptr<BurnDevice> device, DRLayout layout, std::shared_ptr<BurnStatus> status)
    : m_burn(burn)
    , m_device(std::move(device))
    , m_layout(std::move(layout))
    , m_status(std::move(status))
{
}

void BurnJob::run()
{
    NSError error;
    try {
        error = plan();
        if (!error)
            error = writeTracks();
    } catch (const std::bad_alloc &) {
        whenThereIsMemory([&error] {
            error = burnError(memFullErr, QStringLiteral("There is not enough memory to write the disc."),
                              QStringLiteral("Close other programs, or put fewer files on it."));
        });
    }
    // The end is told before the plan's readers are joined: one of them may hang in a slow read.
    whenThereIsMemory([&] {
        if (error && m_cancellation.stop_requested())
            error = burnCancelledError(error);
        m_status->finish(error);
    });
    m_plan.reset();
    m_layout = {};
}

NSError BurnJob::plan()
{
    m_status->enterState(DRStatusStatePreparing);
    const auto progress = [this](double percent) { m_status->setPercentComplete(percent); };
    Result<BurnPlan> plan =
        planBurn(m_layout, m_burn, m_cancellation.get_token(), progress, m_device->mediaInfo(), m_device->firstBlock());
    m_layout = {}; // the plan keeps what it needs of it
    if (!plan)
        return plan.error();
    m_plan = std::move(*plan);
    m_status->setTotals(m_plan->bytes, m_plan->files, m_plan->folders);
    auto contents = std::make_shared<const TableOfContents>(m_plan->contents);
    const std::lock_guard lock(m_mutex);
    m_report = m_plan->report;
    m_contents = std::move(contents);
    return {};
}

NSError BurnJob::writeTracks()
{
    m_status->enterState(DRStatusStateTrackWrite);
    const std::shared_ptr<BlockSink> sink = m_device->sinkForBurn(m_cancellation.get_token());
    const auto bytesTaken = [this](std::uint64_t bytes) { m_status->addBytesWritten(bytes); };
    if (NSError error = writeDisc(*m_plan, *sink, m_cancellation.get_token(), bytesTaken))
        return error;
    m_status->setPercentComplete(1.0, BurnStatus::Posting::Always);
    return {};
}

std::shared_ptr<const DRStorageReport> BurnJob::storageReport() const
{
    const std::lock_guard lock(m_mutex);
    return m_report;
}

std::shared_ptr<const TableOfContents> BurnJob::tableOfContents() const
{
    const std::lock_guard lock(m_mutex);
    return m_contents;
}

} // namespace Tessaron
