#include "media/WindowsMedia.h"

#include <QMimeDatabase>

#include <algorithm>

namespace Tessaron
{

namespace
{

QString extensionOf(const QString &path)
{
    const QString name = path.section(u'/', -1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QString() : name.sliced(dot + 1); // A dot in front hides the file.
}

bool anyContains(const std::optional<QStringList> &names, QLatin1String part)
{
    return names && std::any_of(names->begin(), names->end(), [&](const QString &name) { return name.contains(part); });
}

QString nameOfType(const QString &type)
{
    const QString kind = type.section(u'/', 1);
    for (const auto prefix : {QLatin1String("x-ms-"), QLatin1String("vnd.ms-")}) {
        if (kind.startsWith(prefix))
            return QStringLiteral("com.microsoft.") + kind.sliced(prefix.size());
    }
    return type;
}

} // namespace

bool isWindowsMedia(const QString &path, const std::optional<QStringList> &codecs,
                    const std::optional<QStringList> &contentTypes)
{
    if (path.isNull())
        return false;
    if (codecs || contentTypes)
        return anyContains(codecs, QLatin1String("Windows")) || anyContains(contentTypes, QLatin1String("microsoft"));
    const QString extension = extensionOf(path).toLower();
    return extension == QLatin1String("wmv") || extension == QLatin1String("asf");
}

std::optional<QStringList> contentTypeTree(const QString &path)
{
    static const QMimeDatabase database;
    QStringList names;
    for (const QMimeType &type : database.mimeTypesForFileName(path.section(u'/', -1))) {
        names << nameOfType(type.name());
        for (const QString &ancestor : type.allAncestors())
            names << nameOfType(ancestor);
    }
    return names.isEmpty() ? std::nullopt : std::optional(names);
}

} // namespace Tessaron
