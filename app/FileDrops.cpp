#include "app/FileDrops.h"

#include <QMimeData>
#include <QSet>
#include <QSysInfo>

namespace Tessaron::Desktop
{

namespace
{

const QString uriListType = QStringLiteral("text/uri-list");

} // namespace

QByteArray pathOfUri(const QByteArray &uri)
{
    constexpr QByteArrayView scheme("file:");
    if (!uri.startsWith(scheme))
        return {};
    QByteArray rest = uri.mid(scheme.size());
    if (rest.startsWith("//")) {
        const qsizetype slash = rest.indexOf('/', 2);
        const QByteArray host = slash < 0 ? rest.mid(2) : rest.mid(2, slash - 2);
        if (slash < 0 || (!host.isEmpty() && host != "localhost" && host != QSysInfo::machineHostName().toUtf8()))
            return {};
        rest = rest.mid(slash);
    }
    QByteArray path = QByteArray::fromPercentEncoding(rest);
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

bool holdsFiles(const QMimeData &data)
{
    return data.hasFormat(uriListType);
}

QList<QByteArray> pathsOfFiles(const QMimeData &data)
{
    QList<QByteArray> paths;
    QSet<QByteArray> known;
    for (const QByteArray &line : data.data(uriListType).split('\n')) {
        const QByteArray path = pathOfUri(line.trimmed());
        if (path.isEmpty() || known.contains(path))
            continue;
        known.insert(path);
        paths << path;
    }
    return paths;
}

} // namespace Tessaron::Desktop
