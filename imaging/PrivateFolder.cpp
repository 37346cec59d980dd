#include "imaging/PrivateFolder.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

PrivateFolder::PrivateFolder(const QByteArray &place, const QByteArray &name)
    : m_wanted(place + '/' + name)
{
}

QByteArray PrivateFolder::path()
{
    const std::lock_guard lock(m_mutex);
    // Tested at each call: a service that cleans the place up may have removed the folder.
    if (!m_substitute.isEmpty() && makeOrTake(m_substitute))
        return m_substitute;
    if (makeOrTake(m_wanted))
        return m_wanted;
    QByteArray pattern = m_wanted + "-XXXXXX";
    if (!::mkdtemp(pattern.data()))
        return {};
    m_substitute = pattern;
    return m_substitute;
}

bool PrivateFolder::makeOrTake(const QByteArray &path)
{
    constexpr mode_t forUserAlone = S_IRWXU;
    const bool isNew = ::mkdir(path.constData(), forUserAlone) == 0;
    if (!isNew && errno != EEXIST)
        return false;
    // Opened first, so that what is looked at cannot be exchanged meanwhile.
    const UniqueDescriptor folder(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid())
        return false;
    // A umask may have taken away more than it should.
    if (isNew)
        return ::fchmod(folder.get(), forUserAlone) == 0;
    return (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace Tessaron
