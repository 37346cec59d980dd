#include <TessaronClasses/VerifyJob.h>

#include <QMetaObject>

#include <chrono>
#include <optional>
#include <thread>

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds shortestInterval(100); // people read no faster

} // namespace

/// The thread of one comparison. What it tells goes through the job's event loop, and is dropped there when the job is
/// gone or has begun another comparison.
class VerifyJob::Worker
{
public:
    Worker(VerifyJob *job, VerificationRequest request)
        : m_job(job)
        , m_request(std::move(request))
        , m_thread([this](const std::stop_token &stop) { run(stop); })
    {
    }

    void cancel() { m_thread.request_stop(); }

private:
    void run(const std::stop_token &stop)
    {
        VerificationResult result =
            verifyImage(m_request, stop, [this](const VerificationProgress &progress) { tell(progress); });
        post([result = std::move(result)](VerifyJob *job) {
            // Whoever hears the signal may begin the next comparison.
            const std::unique_ptr<Worker> ended = std::move(job->m_worker);
            Q_EMIT job->finished(result);
        });
    }

    void tell(const VerificationProgress &progress)
    {
        const auto now = std::chrono::steady_clock::now();
        const bool isNewPhase = progress.phase != m_phase;
        if (!isNewPhase && now - m_lastTold < shortestInterval)
            return;
        m_phase = progress.phase;
        m_lastTold = now;
        post([progress, isNewPhase](VerifyJob *job) {
            if (isNewPhase)
                Q_EMIT job->phaseChanged(progress.phase);
            Q_EMIT job->progressed(progress);
        });
    }

    template <typename Message>
    void post(Message message)
    {
        QMetaObject::invokeMethod(
            m_job, [job = m_job, message = std::move(message)] { message(job); }, Qt::QueuedConnection);
    }

    VerifyJob *const m_job;
    const VerificationRequest m_request;
    std::optional<VerificationProgress::Phase> m_phase; ///< told last
    std::chrono::steady_clock::time_point m_lastTold;
    std::jthread m_thread; ///< last: it uses all of the above, and ending it joins
};

VerifyJob::VerifyJob(QObject *parent)
    : QObject(parent)
{
}

VerifyJob::~VerifyJob() = default;

void VerifyJob::start(VerificationRequest request)
{
    Q_ASSERT(!m_worker);
    m_worker = std::make_unique<Worker>(this, std::move(request));
}

void VerifyJob::cancel()
{
    if (m_worker)
        m_worker->cancel();
}

bool VerifyJob::isRunning() const
{
    return m_worker != nullptr;
}

} // namespace Tessaron
