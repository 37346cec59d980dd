#include "media/jobs/MadeFolders.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

int MadeFolders::make(const QByteArray &path)
{
    if (::mkdir(path.constData(), 0777) == 0) {
        m_paths.push_back(path);
        return 0;
    }
    struct stat status;
    if (errno == EEXIST) {
        if (::stat(path.constData(), &status) != 0)
            return errno;
        return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
    }
    QByteArray around = path;
    while (around.endsWith('/'))
        around.chop(1);
    const qsizetype slash = around.lastIndexOf('/');
    if (errno != ENOENT || slash <= 0)
        return errno;
    around.truncate(slash);
    if (const int failure = make(around))
        return failure;
    if (::mkdir(path.constData(), 0777) == 0)
        m_paths.push_back(path);
    else if (errno != EEXIST) // Another process may have been faster.
        return errno;
    return 0;
}

void MadeFolders::removeEmpty()
{
    for (auto path = m_paths.rbegin(); path != m_paths.rend(); ++path)
        ::rmdir(path->constData());
    m_paths.clear();
}

} // namespace Tessaron
