#include "tests/coreservices/LongTree.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace Tessaron::Testing
{

QByteArray makeDeepFolders(const QByteArray &top, const QByteArray &name, int depth)
{
    UniqueDescriptor folder(::open(top.constData(), O_PATH | O_DIRECTORY));
    QByteArray path = top;
    for (int level = 0; level < depth; ++level) {
        if (::mkdirat(folder.get(), name.constData(), 0777) != 0)
            return {};
        folder = UniqueDescriptor(::openat(folder.get(), name.constData(), O_PATH | O_DIRECTORY));
        path.append('/').append(name);
    }
    const UniqueDescriptor file(::openat(folder.get(), "leaf", O_CREAT | O_WRONLY, 0666));
    return ::write(file.get(), "deep", 4) == 4 ? path.append("/leaf") : QByteArray();
}

void removeDeepFolders(const QByteArray &top, const QByteArray &name, int depth)
{
    // Going up through ".." needs one descriptor only.
    UniqueDescriptor folder(::open(top.constData(), O_PATH | O_DIRECTORY));
    for (int level = 0; level < depth; ++level) {
        UniqueDescriptor next(::openat(folder.get(), name.constData(), O_PATH | O_DIRECTORY));
        if (!next)
            return;
        folder = std::move(next);
    }
    ::unlinkat(folder.get(), "leaf", 0);
    for (int level = 0; level < depth; ++level) {
        folder = UniqueDescriptor(::openat(folder.get(), "..", O_PATH | O_DIRECTORY));
        ::unlinkat(folder.get(), name.constData(), AT_REMOVEDIR);
    }
}

} // namespace Tessaron::Testing
