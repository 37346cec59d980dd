#include "app/ShareSaving.h"

#include "app/JobOutcomes.h"
#include "app/ShareFolder.h"
#include "app/Words.h"

#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscSplitJob.h>

#include <platform/foundation/FileSystemRepresentation.h>
#include <utility>

namespace Tessaron::Desktop
{

ShareSaving::ShareSaving(std::vector<DiscShare> discs, QByteArray folder, QStringList missing,
                         std::weak_ptr<TessaronPanelDelegate> host, QObject *parent)
    : QObject(parent)
    , m_waiting(std::make_move_iterator(discs.begin()), std::make_move_iterator(discs.end()))
    , m_folder(std::move(folder))
    , m_missing(std::move(missing))
    , m_host(std::move(host))
    , m_count(m_waiting.size())
{
}

void ShareSaving::start()
{
    const auto failure = std::make_shared<int>(0);
    m_work.start([folder = m_folder, failure](const std::stop_token &) { *failure = makeNewFolder(folder); },
                 [this, failure] {
                     if (*failure == 0) {
                         saveNext();
                         return;
                     }
                     if (const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock())
                         host->panelTells(newFolderProblem(*failure), {});
                     deleteLater();
                 });
}

void ShareSaving::saveNext()
{
    const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock();
    if (!host || m_waiting.empty()) {
        deleteLater();
        return;
    }
    const DiscShare disc = std::move(m_waiting.front());
    m_waiting.pop_front();
    DiscImageOrder order;
    order.tree = disc.tree;
    order.volumeName = disc.volumeName;
    order.output = pathOfShare(m_folder, disc.volumeName, ".iso");
    auto job = std::make_unique<DiscImageJob>(std::move(order));
    connect(job.get(), &DiscImageJob::finished, this,
            [this](const DiscImageResult &result) { take(outcomeOf(result, {})); });
    if (!host->runPanelJob(std::move(job), displayableText(disc.volumeName)))
        deleteLater();
}

/// The window hears of each end; what is said at the last one speaks of all.
void ShareSaving::take(const JobOutcome &saved)
{
    const std::shared_ptr<TessaronPanelDelegate> host = m_host.lock();
    m_outcome.error = saved.error;
    m_outcome.isComplete = m_outcome.isComplete && saved.isComplete && !saved.error;
    m_outcome.details << saved.summary << saved.details;
    m_outcome.path = saved.path;
    if (!host || saved.error || m_waiting.empty()) {
        const std::size_t made = m_count - m_waiting.size() - (saved.error ? 1 : 0);
        if (saved.error)
            m_outcome.summary =
                tr("%1 of %n image(s) were saved.", nullptr, int(m_count)).arg(made) + u' ' + saved.summary;
        else
            m_outcome.summary = tr("%n image(s) were saved.", nullptr, int(made));
        if (m_outcome.isComplete)
            m_outcome.summary += u' ' + tr("They were not compared with the files.");
        if (!m_missing.isEmpty()) {
            m_outcome.isComplete = false;
            m_outcome.summary += u' ' + missingFromAllDiscs(m_missing.size());
            m_outcome.details << m_missing;
        }
        m_waiting.clear();
        if (host)
            host->panelJobHasEnded(m_outcome);
        deleteLater();
        return;
    }
    host->panelJobHasEnded(saved);
    saveNext();
}

} // namespace Tessaron::Desktop
