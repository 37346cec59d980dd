#include "app/ProjectFile.h"

#include <TessaronClasses/FileReferenceFunctions.h>

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

struct ProjectWords {
    Q_DECLARE_TR_FUNCTIONS(Project)
};

constexpr int currentVersion = 1;
const QString formatName = QStringLiteral("tessaron-project");
/// Bytes. A longer file is not a project that a person has put together, and is not read.
constexpr qint64 longestProject = qint64(2) << 30;

/// A file or folder as a project names it; links are not followed.
bool findAt(const QByteArray &path, bool isFolder, FSRef *ref)
{
    bool foundFolder = false;
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, ref, &foundFolder) == noErr
        && foundFolder == isFolder;
}

} // namespace

NSError notAProject(const QByteArray &path, const QString &why)
{
    const QString shown = displayableText(stringWithFileSystemRepresentation(path));
    return NSError(NSCocoaErrorDomain, 1,
                   {{NSLocalizedDescriptionKey, ProjectWords::tr("%1 cannot be opened: %2").arg(shown, why)},
                    {NSFilePathErrorKey, shown}});
}

Result<QJsonObject> projectAt(const QByteArray &path)
{
    QFile file(stringWithFileSystemRepresentation(path));
    if (!file.open(QIODevice::ReadOnly))
        return notAProject(path, file.errorString());
    if (file.size() > longestProject)
        return notAProject(path, ProjectWords::tr("it is too long for a project"));
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (document.isNull())
        return notAProject(path, ProjectWords::tr("it is not a project, or it is damaged"));
    const QJsonObject object = document.object();
    if (object.value(QStringLiteral("format")).toString() != formatName)
        return notAProject(path, ProjectWords::tr("it is not a project"));
    if (object.value(QStringLiteral("version")).toInt() > currentVersion)
        return notAProject(path, ProjectWords::tr("it was saved by a newer version of this program"));
    return object;
}

QString kindOfProject(const QJsonObject &project)
{
    return project.value(QStringLiteral("kind")).toString(QStringLiteral("data"));
}

QByteArray bytesOfProject(QJsonObject contents, const QString &kind)
{
    contents.insert(QStringLiteral("format"), formatName);
    contents.insert(QStringLiteral("version"), currentVersion);
    contents.insert(QStringLiteral("kind"), kind);
    return QJsonDocument(contents).toJson(QJsonDocument::Indented);
}

void setBytes(QJsonObject &object, const QString &key, const QByteArray &bytes)
{
    const QString text = stringWithFileSystemRepresentation(bytes);
    if (holdsUndecodableBytes(text))
        object.insert(key + QStringLiteral("Bytes"), QString::fromLatin1(bytes.toBase64()));
    else
        object.insert(key, text);
}

QByteArray bytesIn(const QJsonObject &object, const QString &key)
{
    const QJsonValue encoded = object.value(key + QStringLiteral("Bytes"));
    if (encoded.isString())
        return QByteArray::fromBase64(encoded.toString().toLatin1());
    return fileSystemRepresentation(object.value(key).toString());
}

void setSource(QJsonObject &object, const ProjectSource &source, const QByteArray &folder)
{
    const QByteArray inside = folder + '/';
    if (source.path.startsWith(inside)) {
        setBytes(object, QStringLiteral("path"), source.path.mid(inside.size()));
        setBytes(object, QStringLiteral("absolutePath"), source.path);
    } else {
        setBytes(object, QStringLiteral("path"), source.path);
    }
    if (!source.alias.isEmpty())
        object.insert(QStringLiteral("alias"), QString::fromLatin1(source.alias.toBase64()));
}

ProjectSource sourceIn(const QJsonObject &object)
{
    const QByteArray absolute = bytesIn(object, QStringLiteral("absolutePath"));
    return {absolute.isEmpty() ? bytesIn(object, QStringLiteral("path")) : absolute,
            QByteArray::fromBase64(object.value(QStringLiteral("alias")).toString().toLatin1())};
}

bool findSource(const QJsonObject &object, const QByteArray &projectFolder, bool isFolder, FSRef *ref)
{
    const QByteArray path = bytesIn(object, QStringLiteral("path"));
    const QByteArray place = path.startsWith('/') ? path : projectFolder + '/' + path;
    if (!path.isEmpty() && findAt(place, isFolder, ref))
        return true;
    const QByteArray absolute = bytesIn(object, QStringLiteral("absolutePath"));
    if (!absolute.isEmpty() && findAt(absolute, isFolder, ref))
        return true;
    const QByteArray alias = QByteArray::fromBase64(object.value(QStringLiteral("alias")).toString().toLatin1());
    return !alias.isEmpty() && FSRefFromAliasData(alias, ref) == noErr;
}

} // namespace Tessaron::Desktop
