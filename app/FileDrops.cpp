#include "app/FileDrops.h"

#include <QMimeData>
#include <QSet>
#include <QSysInfo>

namespace Tessaron::Desktop
{

namespace
{

const QString uriListType = QStringLiteral("text/uri-list");

/// The path of a line "file:///path" or "file://host/path"; null for any other.
QByteArray pathOfLine(const QByteArray &line)
{
    constexpr QByteArrayView scheme("file:");
    if (!line.startsWith(scheme))
        return {};
    QByteArray rest = line.mid(scheme.size());
    if (rest.startsWith("//")) {
        const qsizetype slash = rest.indexOf('/', 2);
        const QByteArray host = slash < 0 ? rest.mid(2) : rest.mid(2, slash - 2);
        if (slash < 0 || (!host.isEmpty() && host != "localhost" && host != QSysInfo::machineHostName().toUtf8()))
            return {};
        rest = rest.mid(slash);
    }
    const QByteArray path = QByteArray::fromPercentEncoding(rest);
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

} // namespace

bool holdsFiles(const QMimeData &data)
{
    return data.hasFormat(uriListType);
}

QList<QByteArray> pathsOfFiles(const QMimeData &data)
{
    QList<QByteArray> paths;
    QSet<QByteArray> known;
    for (const QByteArray &line : data.data(uriListType).split('\n')) {
        QByteArray path = pathOfLine(line.trimmed());
        while (path.size() > 1 && path.endsWith('/'))
            path.chop(1);
        if (path.isEmpty() || known.contains(path))
            continue;
        known.insert(path);
        paths << path;
    }
    return paths;
}

} // namespace Tessaron::Desktop
