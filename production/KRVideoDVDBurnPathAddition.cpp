#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRVideoDVDBurnPathAddition.h>

#include <array>

namespace Tessaron
{

FSRef KRfsRef(const QString &path)
{
    FSRef ref;
    static_cast<void>(
        FSPathMakeRefWithOptions(fileSystemRepresentation(path), kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr));
    return ref;
}

QString KRstringWithFSRef(const FSRef *ref)
{
    std::array<char, 1024> path;
    if (FSRefMakePath(ref, path.data(), std::uint32_t(path.size())) != noErr)
        return {};
    return stringWithFileSystemRepresentation(path.data());
}

} // namespace Tessaron
