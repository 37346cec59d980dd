#include "imaging/verification/OutputFolder.h"

#include "imaging/jobs/FreeSpace.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

NSError outputError(const QByteArray &path, int errnoValue)
{
    return discJobError(errnoValue == ENOSPC || errnoValue == EDQUOT ? DiscJobErrorCode::Space
                                                                     : DiscJobErrorCode::Destination,
                        QStringLiteral("the output %1 cannot be written: %2").arg(quoted(path), systemText(errnoValue)),
                        isLackOfDescriptors(errnoValue) ? adviceOnDescriptors() : QString(), path);
}

NSError checkRoomForOutput(int descriptor, std::uint64_t bytes, const QByteArray &path)
{
    const std::optional<std::uint64_t> room = freeSpaceForPlainWriting(descriptor);
    if (!room || *room >= bytes)
        return {};
    return discJobError(DiscJobErrorCode::Space,
                        QStringLiteral("there is too little room for the output: it takes %1 bytes, and %2 are free")
                            .arg(bytes)
                            .arg(*room),
                        QStringLiteral("Choose another place, or make room."), path);
}

OutputFolder::~OutputFolder()
{
    if (!m_made.isEmpty())
        ::rmdir(m_made.constData());
}

NSError OutputFolder::open(const QByteArray &path, const QString &advice)
{
    if (::mkdir(path.constData(), 0777) == 0)
        m_made = path;
    else if (errno != EEXIST)
        return outputError(path, errno);
    m_folder.reset(::open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (m_folder && ::faccessat(AT_FDCWD, path.constData(), W_OK | X_OK, AT_EACCESS) == 0)
        return {};
    if (errno != ENOTDIR)
        return outputError(path, errno);
    return discJobError(DiscJobErrorCode::Destination,
                        QStringLiteral("the output %1 is not a folder").arg(quoted(path)), advice, path);
}

int OutputFolder::sync() const
{
    const UniqueDescriptor readable(::openat(m_folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return readable && ::syncfs(readable.get()) == 0 ? 0 : errno;
}

} // namespace Tessaron
