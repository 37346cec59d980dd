#include "app/FileDrops.h"

#include <QDropEvent>
#include <QMimeData>
#include <QSet>
#include <QSysInfo>

namespace Tessaron::Desktop
{

namespace
{

const QString uriListType = QStringLiteral("text/uri-list");
const QString lentFilesType = QStringLiteral("application/x-tessaron-lent-files");

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

QByteArray uriOfPath(const QByteArray &path)
{
    return "file://" + path.toPercentEncoding("/");
}

std::unique_ptr<QMimeData> offerOfLentFiles(const QList<QByteArray> &paths)
{
    QByteArray list;
    QByteArray copied = "copy"; // and not "cut"
    for (const QByteArray &path : paths) {
        const QByteArray uri = uriOfPath(path);
        list += uri + "\r\n";
        copied += '\n' + uri;
    }
    auto data = std::make_unique<QMimeData>();
    data->setData(uriListType, list);
    data->setData(QStringLiteral("x-special/gnome-copied-files"), copied);
    data->setData(QStringLiteral("application/x-kde-cutselection"), QByteArrayLiteral("0"));
    data->setData(lentFilesType, QByteArrayLiteral("1"));
    return data;
}

bool holdsLentFiles(const QMimeData &data)
{
    return data.hasFormat(lentFilesType);
}

void acceptFiles(QDragEnterEvent &event)
{
    if (!holdsFiles(*event.mimeData()) || holdsLentFiles(*event.mimeData())
        || !event.possibleActions().testFlag(Qt::CopyAction))
        return;
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

QByteArray takeDroppedFile(QDropEvent &event)
{
    const QList<QByteArray> paths = pathsOfFiles(*event.mimeData());
    if (paths.isEmpty())
        return {};
    event.setDropAction(Qt::CopyAction);
    event.accept();
    return paths.front();
}

} // namespace Tessaron::Desktop
