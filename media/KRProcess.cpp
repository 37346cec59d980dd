#include "media/ProcessRecord.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRProcess.h>

#include <sys/wait.h>
#include <utility>

namespace Tessaron
{

KRProcess::KRProcess(kinfo_proc record)
    : m_kinfo(std::move(record))
{
}

std::shared_ptr<KRProcess> KRProcess::initWithKinfo_proc(const kinfo_proc *record)
{
    return record ? std::shared_ptr<KRProcess>(new KRProcess(*record)) : nullptr;
}

std::optional<std::vector<std::shared_ptr<KRProcess>>> KRProcess::processList()
{
    const std::optional<std::vector<kinfo_proc>> records = processRecords("/proc");
    if (!records)
        return std::nullopt;
    std::vector<std::shared_ptr<KRProcess>> processes;
    for (const kinfo_proc &record : *records)
        processes.push_back(initWithKinfo_proc(&record));
    return processes;
}

std::shared_ptr<KRProcess> KRProcess::processWithName(const QString &name)
{
    if (name.isNull())
        return nullptr;
    const auto processes = processList();
    if (!processes)
        return nullptr;
    for (const std::shared_ptr<KRProcess> &process : *processes) {
        if (process->name() == name)
            return process;
    }
    return nullptr;
}

QString KRProcess::name() const
{
    return stringWithFileSystemRepresentation(m_kinfo.p_comm);
}

int KRProcess::waitUntilExit() const
{
    constexpr int noChild = -1;
    // Numbers that are not those of a process mean groups of children to waitpid(2), which would take the status of
    // any.
    int status = 0;
    return m_kinfo.p_pid > 0 ? ::waitpid(m_kinfo.p_pid, &status, WNOHANG) : noChild;
}

} // namespace Tessaron
