#include "media/ProcessRecord.h"

#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DirectoryStream.h"

#include <QList>

#include <cerrno>
#include <fcntl.h>
#include <string>

namespace Tessaron
{

namespace
{

constexpr std::size_t mostBytes = 4096; ///< of a "stat"; they have about 300

/// Where a field stands behind the name: fields are counted from 1 on (proc(5)), and these follow number 2.
namespace Field
{
constexpr qsizetype behindName = 3;
constexpr qsizetype parent = 4 - behindName;
constexpr qsizetype nice = 19 - behindName;
} // namespace Field

bool isNumber(const char *name)
{
    return *name != '\0' && std::string(name).find_first_not_of("0123456789") == std::string::npos;
}

/// Empty where the process is gone or does not show itself.
QByteArray statOfProcess(int folder, const char *name)
{
    const std::string path = std::string(name) + "/stat";
    const UniqueDescriptor file(::openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC));
    QByteArray bytes(qsizetype(mostBytes), '\0');
    std::size_t got = 0;
    if (!file || readFully(file.get(), 0, bytes.data(), mostBytes, &got) != 0)
        return {};
    return bytes.first(qsizetype(got));
}

} // namespace

std::optional<kinfo_proc> processRecord(const QByteArray &stat)
{
    // A name may hold anything, parentheses and line ends too.
    const qsizetype nameBegin = stat.indexOf(" (");
    const qsizetype nameEnd = stat.lastIndexOf(')');
    if (nameBegin < 0 || nameEnd < nameBegin + 2)
        return std::nullopt;
    const QList<QByteArray> fields = stat.mid(nameEnd + 2).split(' ');
    if (fields.size() <= Field::nice)
        return std::nullopt;
    bool isPid = false, isParent = false, isNice = false;
    kinfo_proc record;
    record.p_pid = stat.first(nameBegin).toInt(&isPid);
    record.p_comm = stat.sliced(nameBegin + 2, nameEnd - nameBegin - 2);
    record.e_ppid = fields[Field::parent].toInt(&isParent);
    record.p_nice = std::int8_t(fields[Field::nice].toInt(&isNice));
    return isPid && isParent && isNice ? std::optional(record) : std::nullopt;
}

std::optional<std::vector<kinfo_proc>> processRecords(const QByteArray &folder)
{
    const DirectoryStream stream =
        directoryStream(UniqueDescriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (!stream)
        return std::nullopt;
    std::vector<kinfo_proc> records;
    for (;;) {
        errno = 0;
        const dirent *const entry = ::readdir(stream.get());
        if (!entry)
            return errno == 0 ? std::optional(records) : std::nullopt;
        if (!isNumber(entry->d_name))
            continue;
        if (const auto record = processRecord(statOfProcess(::dirfd(stream.get()), entry->d_name)))
            records.push_back(*record);
    }
}

} // namespace Tessaron
