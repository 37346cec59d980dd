#include "app/WaveformStore.h"

#include "app/AbandonedJob.h"

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

/// In kilobytes. A disc of 99 minutes takes nine hundred.
constexpr qsizetype mostKept = 16'000;
constexpr std::size_t bytesOfUnit = 1000;

} // namespace

WaveformStore::WaveformStore(QObject *parent)
    : QObject(parent)
    , m_waveforms(mostKept)
{
}

WaveformStore::~WaveformStore()
{
    abandonJob(std::move(m_job));
}

void WaveformStore::setWanted(const QList<QByteArray> &paths)
{
    m_wanted = paths;
    if (m_job && !m_wanted.contains(m_path))
        abandonJob(std::move(m_job));
    if (!m_job)
        startNext();
}

const Waveform *WaveformStore::waveformOf(const QByteArray &path) const
{
    return m_waveforms.object(path);
}

void WaveformStore::forget(const QByteArray &path)
{
    m_waveforms.remove(path);
    m_failed.remove(path);
    if (m_job && m_path == path)
        abandonJob(std::move(m_job));
}

void WaveformStore::letGo()
{
    m_wanted.clear();
    abandonJob(std::move(m_job));
}

void WaveformStore::startNext()
{
    const auto next = std::find_if(m_wanted.begin(), m_wanted.end(), [this](const QByteArray &path) {
        return !m_waveforms.contains(path) && !m_failed.contains(path);
    });
    if (next == m_wanted.end())
        return;
    m_path = *next;
    m_job = std::make_unique<WaveformJob>(WaveformOrder{m_path});
    connect(m_job.get(), &WaveformJob::finished, this, [this](const WaveformResult &result) {
        const qsizetype cost = qsizetype(result.waveform.peaks.size() * sizeof(WaveformPeak) / bytesOfUnit) + 1;
        // One that is longer than all that may be kept would be made again and again.
        const bool isKept =
            !result.error && m_waveforms.insert(m_path, std::make_unique<Waveform>(result.waveform).release(), cost);
        if (!isKept)
            m_failed.insert(m_path);
        m_job.release()->deleteLater(); // which has the result until then
        Q_EMIT found(m_path);
        if (!m_job)
            startNext();
    });
    m_job->start();
}

} // namespace Tessaron::Desktop
