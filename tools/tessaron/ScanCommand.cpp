#include "tools/tessaron/ScanCommand.h"

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/MessageTexts.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <unistd.h>
#include <utility>
#include <vector>

namespace Tessaron::Tool
{

namespace
{

constexpr qsizetype writtenAtOnce = 1 << 16; // bytes

/// Writes a line for everything below an item, each folder before what is in it. A tree may be deeper than the stack
/// is: what is left to do stands in a list.
bool writeNames(const KRFileHierarchyItem &root, const QByteArray &rootPath)
{
    struct Pending {
        const KRFileHierarchyItem *item;
        QByteArray path;
    };
    std::vector<Pending> pending{{&root, rootPath}};
    QByteArray lines;
    while (!pending.empty()) {
        const Pending next = std::move(pending.back());
        pending.pop_back();
        lines += printable(next.path) + '\n';
        const QByteArray prefix = next.path.endsWith('/') ? next.path : next.path + '/';
        const auto &items = next.item->items();
        for (auto item = items.rbegin(); item != items.rend(); ++item)
            pending.push_back(
                {item->get(), prefix + lastComponent(lastKnownPath(*(*item)->fileReference()->fileRef()))});
        if (lines.size() >= writtenAtOnce && !writeAll(STDOUT_FILENO, std::exchange(lines, {})))
            return false;
    }
    return writeAll(STDOUT_FILENO, lines);
}

} // namespace

ScanCommand::ScanCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus ScanCommand::run()
{
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    scan();
    printUnreadable(m_result.unreadable);
    if (m_problem)
        printProblem(m_problem);
    const bool isWritten = m_arguments.json ? writeJson() : (m_problem || isQuiet || writeText());
    return exitStatusAfterReport(isWritten, status());
}

void ScanCommand::scan()
{
    ScanJob job(m_arguments.paths);
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
}

ExitStatus ScanCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.unreadable.empty() ? ExitStatus::Done : ExitStatus::Incomplete;
}

ScannedSource ScanCommand::total() const
{
    ScannedSource result;
    for (const ScannedSource &counts : m_result.sources) {
        result.files += counts.files;
        result.folders += counts.folders;
        result.sizeOnDisk += counts.sizeOnDisk;
    }
    return result;
}

bool ScanCommand::writeText() const
{
    if (m_arguments.verbosity == Verbosity::Verbose) {
        for (const ScannedSource &source : m_result.sources) {
            if (source.tree && !writeNames(*source.tree, source.path))
                return false;
        }
    }
    QByteArray text;
    const auto append = [&text](const QByteArray &path, const ScannedSource &counts) {
        text += path + ": "
            + (counted(counts.files, "file", "files") + QStringLiteral(", ")
               + counted(counts.folders, "folder", "folders") + QStringLiteral(", ") + sizeText(counts.sizeOnDisk)
               + QStringLiteral(" on disk"))
                  .toUtf8()
            + '\n';
    };
    for (const ScannedSource &counts : m_result.sources)
        append(printable(counts.path), counts);
    if (m_result.sources.size() > 1)
        append("total", total());
    return writeAll(STDOUT_FILENO, text);
}

bool ScanCommand::writeJson() const
{
    const auto writeCounts = [](JsonWriter &writer, const ScannedSource &counts) {
        writer.member("files", counts.files);
        writer.member("folders", counts.folders);
        writer.member("sizeOnDisk", counts.sizeOnDisk);
    };
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("scan"), status());
    writeCounts(writer, total());
    writer.key("seconds");
    writer.value(m_run.seconds(), 3);
    writer.key("sources");
    writer.beginArray();
    for (const ScannedSource &counts : m_result.sources) {
        writer.beginObject();
        writer.pathMember("path", counts.path);
        writeCounts(writer, counts);
        writer.endObject();
    }
    writer.endArray();
    writeUnreadableMember(writer, m_result.unreadable);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
