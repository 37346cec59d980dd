#include "platform/discrecording/burn/BurnJob.h"

#include "platform/discrecording/burn/BurnErrors.h"

#include <new>

namespace Tessaron
{

BurnJob::BurnJob(DRBurn *burn, std::shared_ptr<DRCallbackDevice> device, DRLayout layout,
                 std::shared_ptr<BurnStatus> status)
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
        error = burnError(memFullErr,
                          QStringLiteral("There is not enough memory to write the disc. "
                                         "Close other programs, or put fewer files on it."));
    }
    if (error && m_cancellation.isRequested())
        error = burnCancelledError();
    // Whoever hears of the end must not wait for a reader that hangs in a slow read: those are joined afterwards.
    m_status->finish(error);
    m_imageWriter.reset();
    m_plan = {};
    m_layout = {};
}

NSError BurnJob::plan()
{
    m_status->enterState(DRStatusStatePreparing);
    NSError error;
    m_plan = planBurn(
        m_layout, m_cancellation.token(), [this](double percent) { m_status->setPercentComplete(percent); }, &error);
    if (m_cancellation.isRequested())
        return burnCancelledError();
    if (error)
        return error;
    m_layout = {};
    m_status->setTotals(m_plan.bytes, m_plan.files, m_plan.folders);
    const std::lock_guard lock(m_reportMutex);
    m_report = std::exchange(m_plan.report, nullptr);
    return {};
}

NSError BurnJob::writeTracks()
{
    m_status->enterState(DRStatusStateTrackWrite);
    BurnSink sink(*m_device->consumer(), *m_status, m_cancellation);
    for (const PlannedTrack &planned : m_plan.tracks) {
        NSError error;
        if (planned.image) {
            m_imageWriter = std::make_unique<ImageTrackWriter>(*planned.image, sink, m_cancellation);
            error = m_imageWriter->write();
        } else {
            error = ProducerTrackWriter(m_burn, *planned.track, sink, m_cancellation).write(planned.extent);
        }
        if (error)
            return error;
    }
    m_status->setPercentComplete(1.0, BurnStatus::Posting::Always);
    return {};
}

std::shared_ptr<const DRStorageReport> BurnJob::storageReport() const
{
    const std::lock_guard lock(m_reportMutex);
    return m_report;
}

} // namespace Tessaron
