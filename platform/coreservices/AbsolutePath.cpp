#include "platform/coreservices/AbsolutePath.h"

#include "platform/coreservices/PathAccess.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The kernel's own limit of links in one look-up.
constexpr int mostLinks = 40;

struct Freer {
    void operator()(char *buffer) const { std::free(buffer); }
};

int workingFolder(QByteArray *folder)
{
    const std::unique_ptr<char, Freer> buffer(::getcwd(nullptr, 0));
    if (!buffer)
        return errno;
    *folder = buffer.get();
    // A folder outside the process's root shows as "(unreachable)…".
    return folder->startsWith('/') ? 0 : ENOENT;
}

/// A path being put together from its components.
class Assembly
{
public:
    explicit Assembly(const QByteArray &from)
        : m_path(from == "/" ? QByteArray() : from)
    {
    }

    /// Adds the components of a path; one that starts with a slash starts anew.
    [[nodiscard]] int add(const QByteArray &path)
    {
        if (path.startsWith('/'))
            m_path.clear();
        for (qsizetype start = 0; start < path.size();) {
            qsizetype end = path.indexOf('/', start);
            if (end < 0)
                end = path.size();
            if (const int error = addComponent(path.mid(start, end - start)))
                return error;
            start = end + 1;
        }
        return 0;
    }

    /// Replaces a symbolic link at the end by what it points to.
    [[nodiscard]] int followLeaf()
    {
        for (;;) {
            struct statx facts;
            if (m_path.isEmpty() || statPath(m_path, STATX_TYPE, &facts) != 0 || !S_ISLNK(facts.stx_mode))
                return 0;
            if (++m_links > mostLinks)
                return ELOOP;
            QByteArray target;
            const PathAccess access(m_path);
            if (const int error =
                    access.error() ? access.error() : readLinkBelow(access.folder(), access.path(), &target))
                return error;
            m_path.truncate(m_path.lastIndexOf('/'));
            if (const int error = add(target))
                return error;
        }
    }

    [[nodiscard]] QByteArray path() const { return m_path.isEmpty() ? QByteArray("/") : m_path; }

private:
    [[nodiscard]] int addComponent(const QByteArray &component)
    {
        if (component.isEmpty() || component == ".")
            return 0;
        if (component != "..") {
            m_path += '/' + component;
            return 0;
        }
        if (const int error = followLeaf())
            return error;
        struct statx facts;
        if (const int error = m_path.isEmpty() ? 0 : statPath(m_path, STATX_TYPE, &facts))
            return error;
        if (!m_path.isEmpty() && !S_ISDIR(facts.stx_mode))
            return ENOTDIR;
        m_path.truncate(qMax(qsizetype(0), m_path.lastIndexOf('/')));
        return 0;
    }

    QByteArray m_path; ///< without a final slash, so empty for the root folder
    int m_links = 0;
};

} // namespace

int makeAbsolutePath(const QByteArray &path, LeafLink leaf, QByteArray *absolute)
{
    if (path.isEmpty() || path.contains('\0'))
        return ENOENT;
    QByteArray start("/");
    if (!path.startsWith('/')) {
        if (const int error = workingFolder(&start))
            return error;
    }
    Assembly assembly(start);
    if (const int error = assembly.add(path))
        return error;
    const bool meansFolder = path.endsWith('/') || path.endsWith("/.");
    if (leaf == LeafLink::Followed || meansFolder) {
        if (const int error = assembly.followLeaf())
            return error;
    }
    *absolute = assembly.path();
    return 0;
}

} // namespace Tessaron
