#include "tools/tessaron/ScanCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/SignalWatcher.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/UnreadableFolders.h"
#include <TessaronClasses/KRFileHierarchyItem.h>

#include <QEventLoop>
#include <QTimer>

#include <cerrno>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr std::chrono::milliseconds progressInterval(50);

} // namespace

ScanCommand::ScanCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

ExitStatus ScanCommand::run()
{
    std::vector<Source> sources;
    m_problem = inspectSources(m_arguments.paths, &sources);
    if (!m_problem)
        scan(sources);
    m_display->clear();
    for (const GatheringError &error : m_errors)
        printDiagnostic(QStringLiteral("%1 cannot be listed: %2").arg(quoted(error.path), error.message));
    if (m_problem)
        printProblem(m_problem);
    const bool isWritten = m_arguments.json ? writeJson() : (m_problem || writeText());
    if (isWritten)
        return status();
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

void ScanCommand::scan(const std::vector<Source> &sources)
{
    SourceGatherer gatherer(sources);
    QEventLoop loop;
    const SignalWatcher signalWatcher([&gatherer] { gatherer.cancel(); });
    const auto showProgress = [&](ProgressState::Phase phase) {
        ProgressState state;
        state.phase = phase;
        state.files = gatherer.files();
        state.folders = gatherer.folders();
        m_display->update(state);
    };
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] { showProgress(ProgressState::Phase::Scanning); });
    timer.start(progressInterval);
    showProgress(ProgressState::Phase::Scanning);
    gatherer.start([&loop] { loop.quit(); });
    loop.exec();

    m_problem = gatherer.problem();
    m_errors = gatherer.errors();
    if (gatherer.isCancelled())
        m_problem = interruption();
    if (m_problem)
        return;
    countTrees(gatherer);
    showProgress(ProgressState::Phase::Done);
}

void ScanCommand::countTrees(SourceGatherer &gatherer)
{
    for (std::size_t index = 0; index < gatherer.gathered().size(); ++index) {
        GatheredSource &gathered = gatherer.gathered()[index];
        appendUnreadableFolders(*gathered.item, &m_errors);
        m_counts.push_back({gatherer.sources()[index].argument, gathered.files, gathered.folders,
                            gathered.item->contentsPhysicalSize()});
    }
}

ExitStatus ScanCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_errors.empty() ? ExitStatus::Done : ExitStatus::Incomplete;
}

ScanCommand::Counts ScanCommand::total() const
{
    Counts result;
    for (const Counts &counts : m_counts) {
        result.files += counts.files;
        result.folders += counts.folders;
        result.sizeOnDisk += counts.sizeOnDisk;
    }
    return result;
}

bool ScanCommand::writeText() const
{
    QByteArray text;
    const auto append = [&text](const QByteArray &path, const Counts &counts) {
        text += path + ": "
            + (counted(counts.files, "file", "files") + QStringLiteral(", ")
               + counted(counts.folders, "folder", "folders") + QStringLiteral(", ") + sizeText(counts.sizeOnDisk)
               + QStringLiteral(" on disk"))
                  .toUtf8()
            + '\n';
    };
    for (const Counts &counts : m_counts)
        append(printable(counts.path), counts);
    if (m_counts.size() > 1)
        append("total", total());
    return writeAll(STDOUT_FILENO, text);
}

bool ScanCommand::writeJson() const
{
    const auto writeCounts = [](JsonWriter &writer, const Counts &counts) {
        writer.member("files", counts.files);
        writer.member("folders", counts.folders);
        writer.member("sizeOnDisk", counts.sizeOnDisk);
    };
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    JsonWriter writer(STDOUT_FILENO);
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", QStringLiteral("scan"));
    writer.member("result", resultName(status()));
    writeCounts(writer, total());
    writer.key("seconds");
    writer.value(time.count(), 3);
    writer.key("sources");
    writer.beginArray();
    for (const Counts &counts : m_counts) {
        writer.beginObject();
        writer.pathMember("path", counts.path);
        writeCounts(writer, counts);
        writer.endObject();
    }
    writer.endArray();
    writeGatheringErrors(writer, "unreadable", m_errors);
    writeErrorMember(writer, m_problem);
    writer.endObject();
    return writer.finish();
}

} // namespace Tessaron::Tool
