#include "tools/tessaron/CommonReport.h"

#include "platform/foundation/DescriptorLimit.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Tool
{

void printProblem(const Problem &problem)
{
    printDiagnostic(problem.message);
    if (!problem.advice.isEmpty())
        printDiagnostic(problem.advice);
}

Problem problemOfStandardOutput(const Arguments &arguments)
{
    struct stat own;
    struct stat output;
    const bool isStandardOutput = arguments.output == "-"
        || (::fstat(STDOUT_FILENO, &own) == 0 && ::stat(arguments.output.constData(), &output) == 0
            && own.st_dev == output.st_dev && own.st_ino == output.st_ino && !S_ISCHR(own.st_mode));
    if (!arguments.json || !isStandardOutput)
        return {};
    return {Problem::Kind::Usage,
            QStringLiteral("the image and the report of --json cannot both go to standard output"),
            QStringLiteral("Leave out --json, or name a file for the image."),
            {}};
}

QString resultName(ExitStatus status)
{
    switch (status) {
    case ExitStatus::Done:
        return QStringLiteral("done");
    case ExitStatus::Incomplete:
        return QStringLiteral("incomplete");
    case ExitStatus::Interrupted:
        return QStringLiteral("cancelled");
    case ExitStatus::Failed:
    case ExitStatus::WrongUsage:
        break;
    }
    return QStringLiteral("failed");
}

ExitStatus exitStatusFor(const Problem &problem)
{
    switch (problem.kind) {
    case Problem::Kind::None:
        return ExitStatus::Done;
    case Problem::Kind::Usage:
        return ExitStatus::WrongUsage;
    case Problem::Kind::Interrupted:
        return ExitStatus::Interrupted;
    default:
        return ExitStatus::Failed;
    }
}

void beginReport(JsonWriter &writer, const QString &command, ExitStatus status)
{
    beginReport(writer, command, resultName(status));
}

void beginReport(JsonWriter &writer, const QString &command, const QString &result)
{
    beginReport(writer, command);
    writer.member("result", result);
}

void beginReport(JsonWriter &writer, const QString &command)
{
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", command);
}

bool endReport(JsonWriter &writer, const Problem &problem)
{
    writeErrorMember(writer, problem);
    writer.endObject();
    return writer.finish();
}

ExitStatus exitStatusAfterReport(bool isWritten, ExitStatus status)
{
    if (isWritten)
        return status;
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

void writeErrorMember(JsonWriter &writer, const Problem &problem)
{
    writer.key("error");
    if (!problem) {
        writer.null();
        return;
    }
    writer.beginObject();
    writer.member("kind", nameOfKind(problem.kind));
    writer.member("message", problem.message);
    if (!problem.advice.isEmpty())
        writer.member("advice", problem.advice);
    if (!problem.path.isEmpty())
        writer.pathMember("path", problem.path);
    writer.member("code", std::int64_t(problem.code));
    writer.endObject();
}

void printUnreadable(const std::vector<UnreadableFolder> &unreadable)
{
    const UnreadableFolder *firstWithoutDescriptor = nullptr;
    std::size_t others = 0;
    for (const UnreadableFolder &folder : unreadable) {
        if (!isLackOfDescriptors(folder.errnoValue))
            printDiagnostic(
                QStringLiteral("%1 cannot be listed: %2").arg(quoted(folder.path), systemText(folder.errnoValue)));
        else if (firstWithoutDescriptor == nullptr)
            firstWithoutDescriptor = &folder;
        else
            ++others;
    }
    if (firstWithoutDescriptor == nullptr)
        return;
    const QString more =
        others > 0 ? QStringLiteral(" and %1").arg(counted(others, "more folder", "more folders")) : QString();
    printDiagnostic(
        QStringLiteral("%1%2 cannot be listed: %3")
            .arg(quoted(firstWithoutDescriptor->path), more, systemText(firstWithoutDescriptor->errnoValue)));
    printDiagnostic(adviceOnDescriptors());
}

void writeUnreadableMember(JsonWriter &writer, const std::vector<UnreadableFolder> &unreadable)
{
    writer.key("unreadable");
    writer.beginArray();
    for (const UnreadableFolder &folder : unreadable) {
        writer.beginObject();
        writer.pathMember("path", folder.path);
        writer.member("message", systemText(folder.errnoValue));
        writer.endObject();
    }
    writer.endArray();
}

} // namespace Tessaron::Tool
