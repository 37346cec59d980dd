#include "platform/fileevents/FileEventSource.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Tessaron
{

bool holdsSystemFilesOnly(const QByteArray &fileSystemType)
{
    static constexpr std::array<std::string_view, 22> types = {
        "autofs",    "binfmt_misc", "bpf",    "cgroup",  "cgroup2",   "configfs",   "debugfs", "devpts",
        "efivarfs",  "fusectl",     "mqueue", "nfsd",    "nsfs",      "proc",       "pstore",  "rpc_pipefs",
        "selinuxfs", "securityfs",  "sysfs",  "tracefs", "hugetlbfs", "fuse.portal"};
    const std::string_view type(fileSystemType.constData(), static_cast<std::size_t>(fileSystemType.size()));
    return std::find(types.begin(), types.end(), type) != types.end();
}

NSError cannotWatch(const QByteArray &path, const QString &reason, const QString &remedy)
{
    return NSError(NSOSStatusErrorDomain, ioErr,
                   {{NSLocalizedDescriptionKey, QStringLiteral("Changes in %1 cannot be watched.").arg(quoted(path))},
                    {NSLocalizedFailureReasonErrorKey, reason},
                    {NSLocalizedRecoverySuggestionErrorKey, remedy},
                    {NSFilePathErrorKey, stringWithFileSystemRepresentation(path)}});
}

} // namespace Tessaron
