#include "tools/tessaron/VerifyCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/VerifyJob.h>

#include <QEventLoop>

#include <cerrno>

namespace Tessaron::Tool
{

namespace
{

ProgressState::Phase phaseFor(VerificationProgress::Phase phase)
{
    switch (phase) {
    case VerificationProgress::Phase::ListingSources:
        return ProgressState::Phase::Scanning;
    case VerificationProgress::Phase::ComparingNames:
        return ProgressState::Phase::Planning;
    case VerificationProgress::Phase::ComparingContents:
        return ProgressState::Phase::Comparing;
    }
    return ProgressState::Phase::Scanning;
}

} // namespace

VerifyCommand::VerifyCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

ExitStatus VerifyCommand::run()
{
    m_signalWatcher = std::make_unique<SignalWatcher>([this] {
        if (m_job != nullptr)
            m_job->cancel();
    });
    std::vector<Source> sources;
    m_outcome.problem = prepare(&sources);
    if (!m_outcome.problem)
        verify(sources);
    if (m_signalWatcher->isInterrupted())
        m_outcome.problem = interruption();
    m_display->clear();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    bool isWritten = true;
    if (m_arguments.json) {
        if (m_outcome.problem)
            printProblem(m_outcome.problem);
        isWritten = writeVerifyJson(m_arguments.paths.first(), m_outcome, time.count());
    } else {
        isWritten = printVerifyReport(m_arguments, m_outcome);
    }
    if (isWritten)
        return exitStatusFor(m_outcome);
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

Problem VerifyCommand::prepare(std::vector<Source> *sources)
{
    const QByteArray &image = m_arguments.paths.first();
    if (Problem problem = openImage(image, &m_image))
        return problem;
    if (m_image.volumes.empty())
        return {Problem::Kind::Source, QStringLiteral("no filesystem was found in %1").arg(quoted(image)),
                QStringLiteral("Known are ISO 9660, Rock Ridge, Joliet, UDF and HFS+."), image};
    if (Problem problem = inspectSources(m_arguments.paths.mid(1), sources))
        return problem;
    return checkSideBySide(*sources);
}

void VerifyCommand::verify(const std::vector<Source> &sources)
{
    VerificationRequest request;
    request.image = m_image.source;
    request.volumes = std::move(m_image.volumes);
    for (const Source &source : sources)
        request.sources.push_back({source.path, source.name, source.isFolder});
    VerifyJob job;
    QEventLoop loop;
    QObject::connect(&job, &VerifyJob::progressed, &loop,
                     [this](const VerificationProgress &progress) { showProgress(progress); });
    QObject::connect(&job, &VerifyJob::finished, &loop, [&](const VerificationResult &result) {
        m_outcome.result = result;
        loop.quit();
    });
    m_job = &job;
    job.start(std::move(request));
    if (m_signalWatcher->isInterrupted())
        job.cancel();
    loop.exec();
    m_job = nullptr;
    if (m_outcome.result.isCancelled)
        return;
    m_progress.phase = ProgressState::Phase::Done;
    m_progress.bytesWritten = m_outcome.result.bytesCompared;
    m_display->update(m_progress);
}

void VerifyCommand::showProgress(const VerificationProgress &progress)
{
    m_progress.phase = phaseFor(progress.phase);
    m_progress.files = progress.files;
    m_progress.folders = progress.folders;
    m_progress.bytesWritten = progress.bytesDone;
    m_progress.bytesTotal = progress.bytesTotal;
    m_display->update(m_progress);
}

} // namespace Tessaron::Tool
