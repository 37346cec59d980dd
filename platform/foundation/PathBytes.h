#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace Tessaron
{

// Paths as bytes, taken apart and put together by their slashes alone: the file system is never asked.

/// The part behind the last slash; empty for a path that ends in a slash.
[[nodiscard]] inline QByteArrayView lastPathComponent(QByteArrayView path)
{
    return path.sliced(path.lastIndexOf('/') + 1);
}

/// The path of the folder in which an absolute path ends; "/" for the root itself.
[[nodiscard]] inline QByteArray parentPath(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.first(slash);
}

/// The path of an entry of a folder, with one slash between the two.
[[nodiscard]] inline QByteArray childPath(const QByteArray &folder, QByteArrayView name)
{
    QByteArray path;
    path.reserve(folder.size() + 1 + name.size());
    path.append(folder);
    if (!path.endsWith('/'))
        path.append('/');
    return path.append(name);
}

} // namespace Tessaron
