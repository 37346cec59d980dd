#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <platform/coreservices/FSRef.h>
#include <platform/foundation/Result.h>

namespace Tessaron::Desktop
{

// What projects of all kinds have in common: a file of JSON, and in it the names of files that are found again.

/// Says that a project cannot be opened, and why.
[[nodiscard]] NSError notAProject(const QByteArray &path, const QString &why);
/// The object of a project's file, of a version that this program knows. Touches the disk.
[[nodiscard]] Result<QJsonObject> projectAt(const QByteArray &path);
/// The kind of a project; an older one without that is one of data.
[[nodiscard]] QString kindOfProject(const QJsonObject &project);
/// The contents of a project's file.
[[nodiscard]] QByteArray bytesOfProject(QJsonObject contents, const QString &kind);

/// Bytes that are text are written as text, others in base64 under another key.
void setBytes(QJsonObject &object, const QString &key, const QByteArray &bytes);
[[nodiscard]] QByteArray bytesIn(const QJsonObject &object, const QString &key);

/// Where a file is, and what finds it when it is moved.
struct ProjectSource {
    QByteArray path;
    QByteArray alias; ///< empty for none

    friend bool operator==(const ProjectSource &, const ProjectSource &) = default;
};
/// Names a file in a project that lies in the folder: relative to it where the file lies below it.
void setSource(QJsonObject &object, const ProjectSource &source, const QByteArray &folder);
/// As it was named, the path from the root where there is one.
[[nodiscard]] ProjectSource sourceIn(const QJsonObject &object);
/// Finds the file: at its place, relative to the project's folder first, else where it was moved to. Touches the disk.
[[nodiscard]] bool findSource(const QJsonObject &object, const QByteArray &projectFolder, bool isFolder, FSRef *ref);

} // namespace Tessaron::Desktop
