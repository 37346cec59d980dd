#include "tools/tessaron/DrivesCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/DriveReport.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <QStringList>

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

QString headText(const DriveFacts &facts)
{
    QString text = stringWithFileSystemRepresentation(facts.drive.path);
    const QStringList names = {facts.drive.vendor, facts.drive.product, facts.drive.revision};
    for (const QString &name : names) {
        if (!name.isEmpty())
            text += u' ' + name;
    }
    return text;
}

QString stateText(const DiscDescription &disc)
{
    switch (disc.state) {
    case DiscState::NoDisc:
        return QStringLiteral("no disc");
    case DiscState::Blank:
        return QStringLiteral("%1, ready to be written").arg(disc.profileName);
    case DiscState::Appendable:
        return QStringLiteral("%1 with %2, open for more")
            .arg(disc.profileName, counted(disc.sessions, "session", "sessions"));
    case DiscState::Closed:
        return QStringLiteral("%1, written and closed%2")
            .arg(disc.profileName, disc.isErasable ? QStringLiteral("; it can be blanked") : QString());
    case DiscState::Unsuitable:
        return QStringLiteral("a disc that this drive cannot use");
    case DiscState::Unknown:
        break;
    }
    return QStringLiteral("a disc that cannot be looked at");
}

QString speedsText(const DiscDescription &disc)
{
    QStringList speeds;
    const double single = singleSpeed(disc.profile) / 1000.0;
    for (const std::uint32_t speed : disc.writeSpeeds) {
        if (single > 0)
            speeds << QStringLiteral("%1x").arg(QString::number(speed / single, 'f', 1));
    }
    return speeds.join(QStringLiteral(", "));
}

QStringList linesAbout(const DriveFacts &facts)
{
    QStringList lines{headText(facts)};
    if (!facts.disc)
        return lines;
    const DiscDescription &disc = *facts.disc;
    lines << QStringLiteral("  disc: ") + stateText(disc);
    if (disc.freeBlocks > 0)
        lines << QStringLiteral("  room: %1 (%2 blocks)").arg(sizeText(disc.freeBlocks * 2048)).arg(disc.freeBlocks);
    if (const QString speeds = speedsText(disc); !speeds.isEmpty())
        lines << QStringLiteral("  speeds: ") + speeds;
    QStringList abilities;
    if (disc.canSimulate)
        abilities << QStringLiteral("simulating");
    if (disc.canAppendLater)
        abilities << QStringLiteral("several sessions");
    if (!abilities.isEmpty())
        lines << QStringLiteral("  can: ") + abilities.join(QStringLiteral(", "));
    return lines;
}

} // namespace

DrivesCommand::DrivesCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus DrivesCommand::run()
{
    DrivesJob job({m_arguments.paths, m_arguments.opensDrives});
    m_result = JobRun().resultOf(job);
    m_problem = problemOf(m_result.error);
    for (const DriveFacts &facts : m_result.drives) {
        if (facts.error)
            printProblem(problemOf(facts.error));
    }
    if (m_problem && m_problem.kind == Problem::Kind::Interrupted)
        printProblem(m_problem);
    return exitStatusAfterReport(m_arguments.json ? writeJson() : writeText(), exitStatusFor(m_problem));
}

bool DrivesCommand::writeText() const
{
    QByteArray text;
    for (const DriveFacts &facts : m_result.drives) {
        if (facts.error)
            continue;
        for (const QString &line : linesAbout(facts))
            text += printable(line) + '\n';
    }
    if (m_result.drives.empty() && !m_problem)
        printDiagnostic(QStringLiteral("this computer has no optical drive"));
    return writeAll(STDOUT_FILENO, text);
}

bool DrivesCommand::writeJson() const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("drives"), exitStatusFor(m_problem));
    writer.key("drives");
    writer.beginArray();
    for (const DriveFacts &facts : m_result.drives) {
        writer.beginObject();
        writer.pathMember("path", facts.drive.path);
        writer.pathMember("identity", facts.drive.identity);
        writer.member("vendor", facts.drive.vendor);
        writer.member("product", facts.drive.product);
        writer.member("revision", facts.drive.revision);
        if (facts.disc) {
            writer.key("disc");
            writeDiscObject(writer, *facts.disc);
        }
        if (m_arguments.opensDrives || !m_arguments.paths.isEmpty())
            writeErrorMember(writer, problemOf(facts.error));
        writer.endObject();
    }
    writer.endArray();
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
