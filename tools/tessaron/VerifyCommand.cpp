#include "tools/tessaron/VerifyCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/ContentComparison.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VolumeComparison.h"

#include <array>
#include <cerrno>

namespace Tessaron::Tool
{

namespace
{

/// Those that keep every name come first: where they say that a file lies, the others are expected to have it, too.
constexpr std::array comparisonOrder = {VolumeKind::RockRidge, VolumeKind::UDF, VolumeKind::HFSPlus, VolumeKind::Joliet,
                                        VolumeKind::ISO9660};

} // namespace

VerifyCommand::VerifyCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

ExitStatus VerifyCommand::run()
{
    m_signalWatcher = std::make_unique<SignalWatcher>([] {});
    std::vector<Source> sources;
    m_outcome.problem = prepare(&sources);
    if (!m_outcome.problem)
        verify(sources);
    if (isCancelled())
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
    m_progress.phase = ProgressState::Phase::Scanning;
    m_display->update(m_progress);
    SourceIndex index(sources, [this] { return isCancelled(); });
    for (const SourceFailure &failure : index.failures())
        m_outcome.differences.add({Difference::Kind::Source, 0, failure.path, {}, failure.reason});
    m_outcome.files = index.fileCount();
    m_outcome.folders = index.folderCount();
    m_progress.files = index.fileCount();
    m_progress.folders = index.folderCount();
    m_progress.phase = ProgressState::Phase::Planning;
    m_display->update(m_progress);
    ContentPlan plan(index.count());
    checkLengths();
    compareVolumes(index, plan);
    if (!isCancelled())
        compareContents(index, plan);
}

/// A volume that states more blocks than the image has was cut.
void VerifyCommand::checkLengths()
{
    for (const FoundVolume &volume : m_image.volumes) {
        if (volume.error)
            m_outcome.differences.addDamage(setOf(volume.kind), "/", volume.error);
        if (!volume.reader)
            continue;
        const DiscVolumeFacts &facts = volume.reader->facts();
        const std::uint64_t length = m_image.source->length();
        if (facts.offset <= length && facts.blockCount <= (length - facts.offset) / facts.blockSize)
            continue;
        m_outcome.differences.add({Difference::Kind::Damage, setOf(volume.kind), "/", length,
                                   QStringLiteral("the volume has %1 blocks of %2 bytes, but the image ends at byte %3")
                                       .arg(facts.blockCount)
                                       .arg(facts.blockSize)
                                       .arg(length)});
    }
}

void VerifyCommand::compareVolumes(SourceIndex &index, ContentPlan &plan)
{
    FolderPlaces rockRidgeFolders;
    bool hasRockRidge = false;
    for (const VolumeKind kind : comparisonOrder) {
        for (const FoundVolume &volume : m_image.volumes) {
            if (volume.kind != kind || !volume.reader || isCancelled())
                continue;
            hasRockRidge = hasRockRidge || kind == VolumeKind::RockRidge;
            VolumeComparison comparison(*volume.reader, index, plan, m_outcome.differences, &rockRidgeFolders,
                                        hasRockRidge);
            m_outcome.volumes.emplace_back(kind, comparison.run([this] { return isCancelled(); }));
        }
    }
}

void VerifyCommand::compareContents(const SourceIndex &index, ContentPlan &plan)
{
    ContentComparison comparison(*m_image.source, index, plan, m_outcome.differences);
    m_progress.phase = ProgressState::Phase::Comparing;
    m_progress.bytesTotal = comparison.byteCount();
    comparison.run([this](std::uint64_t done) {
        m_outcome.bytesCompared = done;
        m_progress.bytesWritten = done;
        m_display->update(m_progress);
        return !isCancelled();
    });
    if (isCancelled())
        return;
    m_progress.phase = ProgressState::Phase::Done;
    m_display->update(m_progress);
}

} // namespace Tessaron::Tool
