#include "app/JobRunner.h"

#include "app/JobBar.h"

#include <TessaronClasses/BurnDiscJob.h>

#include <QMessageBox>
#include <QPushButton>

namespace Tessaron::Desktop
{

JobRunner::JobRunner(JobBar &bar, QWidget &window)
    : m_bar(bar)
    , m_window(window)
{
    connect(&m_bar, &JobBar::cancelWanted, this, &JobRunner::cancel);
}

JobRunner::~JobRunner() = default;

void JobRunner::start(std::unique_ptr<DiscJob> job, const QString &name)
{
    m_name = name;
    m_job = std::move(job);
    connect(m_job.get(), &DiscJob::progressed, &m_bar, &JobBar::showProgress);
    m_bar.begin(name);
    Q_EMIT started();
    m_job->start();
}

void JobRunner::startNext(std::unique_ptr<DiscJob> job)
{
    m_job.release()->deleteLater();
    start(std::move(job), m_name);
}

void JobRunner::setForDrive(const QString &spoiling)
{
    m_bar.setForDrive(true);
    m_spoiling = spoiling;
}

void JobRunner::end()
{
    DiscJob *const ended = m_job ? m_job.release() : m_letGo.data();
    if (!ended)
        return;
    ended->deleteLater();
    m_spoiling.clear();
    if (m_stopQuestion)
        m_stopQuestion->close();
    m_bar.end();
}

bool JobRunner::isWritingDisc() const
{
    if (!m_job || m_spoiling.isEmpty())
        return false;
    const DiscJobPhase phase = m_job->progress().phase;
    return phase == DiscJobPhase::Writing || phase == DiscJobPhase::Finishing;
}

void JobRunner::cancel()
{
    if (!isWritingDisc())
        stop();
    else
        askBeforeStopping(tr("A disc is being written. Stop?") + u'\n' + m_spoiling, tr("&Stop"), [this] { stop(); });
}

void JobRunner::stop()
{
    if (!m_job)
        return;
    m_bar.showCancelling();
    m_job->cancel();
}

/// The work goes on meanwhile; when it ends, there is nothing to ask any more.
void JobRunner::askBeforeStopping(const QString &text, const QString &stopText, const std::function<void()> &whenWanted)
{
    if (m_stopQuestion)
        return;
    m_stopQuestion = new QMessageBox(QMessageBox::Question, tr("Tessaron"), text.section(u'\n', 0, 0),
                                     QMessageBox::NoButton, &m_window);
    m_stopQuestion->setInformativeText(text.section(u'\n', 1));
    const QPushButton *const stop = m_stopQuestion->addButton(stopText, QMessageBox::DestructiveRole);
    QPushButton *const goOn = m_stopQuestion->addButton(tr("&Go On"), QMessageBox::RejectRole);
    m_stopQuestion->setDefaultButton(goOn);
    m_stopQuestion->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_stopQuestion, &QMessageBox::buttonClicked, this, [stop, whenWanted](const QAbstractButton *button) {
        if (button == stop)
            whenWanted();
    });
    m_stopQuestion->open();
}

void JobRunner::askBeforeQuitting(const std::function<void()> &whenWanted)
{
    const bool isWriting = isWritingDisc();
    const QString text = !isWriting ? tr("An image is being made or read. Stop, and quit?")
                                    : tr("A disc is being written. Stop, and quit?");
    askBeforeStopping(isWriting ? text + u'\n' + m_spoiling : text, tr("&Stop and Quit"), whenWanted);
}

void JobRunner::letGo()
{
    // A drive is waited for: one that is left in the middle is of no use to anyone.
    if (m_job && m_job->isRunning() && !qobject_cast<BurnDiscJob *>(m_job.get())) {
        m_job->cancel();
        m_letGo = m_job.release(); // its destructor would wait
    }
}

} // namespace Tessaron::Desktop
