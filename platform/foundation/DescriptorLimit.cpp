#include "platform/foundation/DescriptorLimit.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <fcntl.h>
#include <vector>

namespace Tessaron
{

bool isLackOfDescriptors(const NSError &error)
{
    return error.domain() == NSOSStatusErrorDomain && error.code() == tmfoErr;
}

int probeDescriptors(std::size_t count)
{
    std::vector<UniqueDescriptor> probes;
    probes.reserve(count);
    while (probes.size() < count) {
        probes.emplace_back(::open("/", O_PATH | O_CLOEXEC));
        if (!probes.back())
            return errno;
    }
    return 0;
}

QString adviceOnDescriptors()
{
    return QStringLiteral("Close other programs, or allow more open files (ulimit -n).");
}

} // namespace Tessaron
