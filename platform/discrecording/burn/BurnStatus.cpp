#include "platform/discrecording/burn/BurnStatus.h"

#include "platform/discrecording/burn/BurnErrors.h"

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds progressInterval(40);

} // namespace

BurnStatus::BurnStatus(std::shared_ptr<DRNotificationCenter> center, std::weak_ptr<DRBurn> burn)
    : m_center(std::move(center))
    , m_burn(std::move(burn))
{
}

void BurnStatus::enterState(const QString &state)
{
    const std::lock_guard lock(m_mutex);
    if (m_isFinal)
        return;
    m_facts = {state, 0, {}};
    post();
}

void BurnStatus::setPercentComplete(double percent, Posting posting)
{
    const std::lock_guard lock(m_mutex);
    if (m_isFinal)
        return;
    m_facts.percent = percent;
    if (m_lastPosted && !m_lastPosted->isDelivered && m_lastPosted->facts.state == m_facts.state)
        m_lastPosted->facts = m_facts;
    else if (posting == Posting::Always || std::chrono::steady_clock::now() - m_lastPostTime >= progressInterval)
        post();
}

void BurnStatus::finish(const NSError &error)
{
    const std::lock_guard lock(m_mutex);
    if (m_isFinal)
        return;
    m_facts = error ? Facts{DRStatusStateFailed, m_facts.percent, error} : Facts{DRStatusStateDone, 1.0, {}};
    post();
    m_isFinal = true; // not before it is told: without memory for that the caller tries again
}

QVariantMap BurnStatus::status() const
{
    const std::lock_guard lock(m_mutex);
    if (m_shown && m_showingThread == std::this_thread::get_id())
        return recordOf(m_shown->facts);
    return recordOf(m_facts);
}

NSError BurnStatus::error() const
{
    const std::lock_guard lock(m_mutex);
    return m_facts.error;
}

QVariantMap BurnStatus::recordOf(const Facts &facts)
{
    if (facts.state.isNull())
        return {};
    QVariantMap record = {{DRStatusStateKey, facts.state}, {DRStatusPercentCompleteKey, facts.percent}};
    if (facts.error)
        record.insert(DRErrorStatusKey, errorStatusOf(facts.error));
    return record;
}

/// Called with the mutex held; the centre only schedules.
void BurnStatus::post()
{
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->serial = m_lastPosted ? m_lastPosted->serial + 1 : 1;
    snapshot->facts = m_facts;
    m_center->post(
        DRBurnStatusChangedNotification, m_burn,
        [own = shared_from_this(), snapshot](const auto &callObservers) { own->deliver(snapshot, callObservers); });
    m_lastPosted = std::move(snapshot);
    m_lastPostTime = std::chrono::steady_clock::now();
}

void BurnStatus::deliver(const std::shared_ptr<Snapshot> &snapshot, const std::function<void()> &callObservers)
{
    {
        const std::lock_guard lock(m_mutex);
        snapshot->isDelivered = true;
        if (!m_shown || m_shown->serial < snapshot->serial)
            m_shown = snapshot;
        m_showingThread = std::this_thread::get_id();
        ++m_showingDepth;
    }
    callObservers();
    const std::lock_guard lock(m_mutex);
    if (--m_showingDepth == 0)
        m_shown.reset();
}

void BurnStatus::setTotals(std::uint64_t bytes, std::uint32_t files, std::uint32_t folders)
{
    m_bytesTotal = bytes;
    m_filesTotal = files;
    m_foldersTotal = folders;
}

void BurnStatus::addBytesWritten(std::uint64_t bytes)
{
    const std::uint64_t written = m_bytesWritten.fetch_add(bytes) + bytes;
    if (const std::uint64_t total = m_bytesTotal; total > 0)
        setPercentComplete(double(written) / double(total));
}

DRBurnAmounts BurnStatus::amounts() const
{
    return {m_bytesWritten, m_bytesTotal, m_filesTotal, m_foldersTotal};
}

} // namespace Tessaron
