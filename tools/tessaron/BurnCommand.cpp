#include "tools/tessaron/BurnCommand.h"

#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/DiscOrders.h"
#include "tools/tessaron/DriveReport.h"
#include "tools/tessaron/ImageReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/SoundReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VerifyReport.h"

#include <unistd.h>

namespace Tessaron::Tool
{

BurnCommand::BurnCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

Problem BurnCommand::makeOrder(BurnDiscOrder *made) const
{
    BurnDiscOrder &order = *made;
    if (m_arguments.isSound) {
        if (Problem problem = setSoundOptions(&order.audio.emplace(), m_arguments))
            return problem;
    } else {
        setLayoutOptions(&order, m_arguments);
    }
    order.drive = m_arguments.drive;
    order.speed = m_arguments.speed;
    order.isSimulated = m_arguments.isSimulated;
    order.leavesOpen = m_arguments.leavesOpen;
    order.overburns = m_arguments.overburns;
    order.verifies = m_arguments.verifies;
    order.ejects = m_arguments.ejects;
    return {};
}

ExitStatus BurnCommand::run()
{
    BurnDiscOrder order;
    m_problem = makeOrder(&order);
    if (!m_problem) {
        BurnDiscJob job(std::move(order));
        m_result = m_run.resultOf(job);
        m_problem = problemOf(m_result.error);
    }
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), status());
}

ExitStatus BurnCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

void BurnCommand::print(double seconds) const
{
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    if (!m_result.isImage)
        printStorage(m_arguments, m_result.data, !m_problem || m_problem.kind == Problem::Kind::NotStored);
    if (!isQuiet || m_result.isAnythingLost) {
        for (const QString &note : m_result.notes)
            printDiagnostic(note);
    }
    printReplaced();
    if (!isQuiet)
        printShortTracks(m_result.audioTracks);
    if (m_result.verification)
        printDifferences(m_arguments, m_result.verification->differences);
    if (m_problem) {
        printProblem(m_problem);
        return;
    }
    if (isQuiet)
        return;
    if (m_result.waits > 0)
        printDiagnostic(
            QStringLiteral("the drive had to wait for data %1").arg(counted(m_result.waits, "time", "times")));
    QString line = whatWasWritten() + QStringLiteral(", %1 s").arg(QString::number(seconds, 'f', 1));
    if (status() == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything could be stored, see above");
    printDiagnostic(line);
}

/// Files of earlier sessions that are not seen any more; -q does not hide that.
void BurnCommand::printReplaced() const
{
    constexpr qsizetype shown = 20;
    for (const QString &path : m_result.replaced.mid(0, shown))
        printDiagnostic(QStringLiteral("%1 takes the place of the file that the disc had").arg(path));
    if (m_result.replaced.size() > shown)
        printDiagnostic(QStringLiteral("… and %1 more; --json lists all").arg(m_result.replaced.size() - shown));
}

QString BurnCommand::whatWasWritten() const
{
    QString amount = m_result.isImage
        ? counted(m_result.tracks, "track", "tracks")
        : QStringLiteral("%1, %2").arg(counted(m_result.data.files, "file", "files"),
                                       counted(m_result.data.folders, "folder", "folders"));
    if (m_result.keptFiles > 0 || m_result.keptFolders > 0)
        amount +=
            QStringLiteral(", beside the disc's %1, %2")
                .arg(counted(m_result.keptFiles, "file", "files"), counted(m_result.keptFolders, "folder", "folders"));
    const bool isCompared = m_result.verification || m_result.bytesCompared > 0;
    return QStringLiteral("%1 %2 with %3: %4, %5%6")
        .arg(m_arguments.isSimulated ? QStringLiteral("simulated the writing of") : QStringLiteral("wrote"),
             discText(m_result.disc), m_result.driveName, sizeText(m_result.data.bytes), amount,
             isCompared ? QStringLiteral(", compared") : QString());
}

bool BurnCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("burn"), status());
    writer.pathMember("drive", m_arguments.drive);
    writer.key("disc");
    writeDiscObject(writer, m_result.disc);
    writer.member("condition", m_result.condition);
    writer.member("simulated", m_arguments.isSimulated);
    writer.member("image", m_result.isImage);
    if (!m_result.isImage)
        writer.member("volumeName", m_result.data.volumeName);
    writer.member("bytes", m_result.data.bytes);
    writer.member("files", m_result.data.files);
    writer.member("folders", m_result.data.folders);
    writer.member("keptFiles", m_result.keptFiles);
    writer.member("keptFolders", m_result.keptFolders);
    writer.textsMember("replaced", m_result.replaced);
    writer.member("tracks", m_result.tracks);
    if (m_arguments.isSound)
        writeSoundTracks(writer, "audioTracks", m_result.audioTracks);
    writer.member("sessions", m_result.sessions);
    writer.member("waits", m_result.waits);
    writer.key("seconds");
    writer.value(seconds, 3);
    writer.textsMember("notes", m_result.notes);
    if (m_result.verification) {
        writer.member("bytesCompared", m_result.verification->bytesCompared);
        writeDifferenceMembers(writer, m_result.verification->differences);
    } else if (m_result.bytesCompared > 0) {
        writer.member("bytesCompared", m_result.bytesCompared);
    }
    if (!m_result.fault.isEmpty())
        writer.member("fault", m_result.fault);
    writeStorageMembers(writer, m_result.data);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
