#include "platform/fileevents/WatchedRoots.h"

#include "platform/coreservices/PathAccess.h"
#include "platform/foundation/PathBytes.h"

#include <QList>

#include <algorithm>
#include <cerrno>

namespace Tessaron
{

namespace
{

/// As many as the kernel follows for one path.
constexpr int mostLinks = 40;

int targetOfLink(const QByteArray &path, QByteArray *target)
{
    const PathAccess access(path);
    return access.error() != 0 ? access.error() : readLinkBelow(access.folder(), access.path(), target);
}

/// Walks the path as the kernel does; `root->real` is where it ends, and stays empty when it cannot be walked.
int walk(WatchedRoots::Root *root)
{
    QList<QByteArray> names = root->given.split('/');
    QByteArray folder = "/";
    int links = 0;
    while (!names.empty()) {
        const QByteArray name = names.takeFirst();
        if (name.isEmpty() || name == ".")
            continue;
        if (name == "..") {
            folder = parentPath(folder);
            continue;
        }
        const QByteArray entry = childPath(folder, name);
        root->way.insert(entry);
        struct statx facts;
        if (const int error = statPath(entry, STATX_TYPE, &facts); error != 0)
            return error;
        if (S_ISLNK(facts.stx_mode)) {
            QByteArray target;
            if (const int error = targetOfLink(entry, &target); error != 0)
                return error;
            if (++links > mostLinks)
                return ELOOP;
            if (target.startsWith('/'))
                folder = "/";
            names = target.split('/') + names;
        } else if (S_ISDIR(facts.stx_mode)) {
            folder = entry;
        } else {
            return ENOTDIR;
        }
    }
    root->real = folder;
    return 0;
}

} // namespace

bool isAtOrBelow(const QByteArray &path, const QByteArray &folder)
{
    return path.startsWith(folder)
        && (path.size() == folder.size() || folder.endsWith('/') || path[folder.size()] == '/');
}

WatchedRoots::WatchedRoots(const std::vector<QByteArray> &absolutePaths)
{
    for (const QByteArray &path : absolutePaths)
        m_roots.push_back(Root{path, {}, 0, {}, false});
}

void WatchedRoots::resolve()
{
    m_foldersOnTheWay.clear();
    for (Root &root : m_roots) {
        root.real.clear();
        root.way.clear();
        root.hasChanged = false;
        root.error = walk(&root);
        for (const QByteArray &entry : std::as_const(root.way))
            m_foldersOnTheWay.insert(parentPath(entry));
    }
}

void WatchedRoots::resolveAgain()
{
    const std::vector<Root> before = m_roots;
    resolve();
    for (std::size_t root = 0; root < m_roots.size(); ++root)
        m_roots[root].hasChanged = m_roots[root].real != before[root].real || m_roots[root].way != before[root].way;
}

bool WatchedRoots::contains(const QByteArray &realPath) const
{
    return std::any_of(m_roots.begin(), m_roots.end(), [&realPath](const Root &root) {
        return !root.real.isEmpty() && isAtOrBelow(realPath, root.real);
    });
}

std::vector<QByteArray> WatchedRoots::places() const
{
    std::vector<QByteArray> places;
    for (const Root &root : m_roots)
        places.push_back(root.real.isEmpty() ? root.given : root.real);
    return places;
}

void WatchedRoots::entryHasChanged(const QByteArray &realPath)
{
    for (Root &root : m_roots)
        root.hasChanged = root.hasChanged || root.way.contains(realPath);
}

void WatchedRoots::mountHasChanged(const QByteArray &point)
{
    for (Root &root : m_roots)
        root.hasChanged = root.hasChanged || root.real == point || root.way.contains(point);
}

bool WatchedRoots::haveChanged() const
{
    return std::any_of(m_roots.begin(), m_roots.end(), [](const Root &root) { return root.hasChanged; });
}

} // namespace Tessaron
