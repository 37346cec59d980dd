#pragma once

#include <QByteArray>
#include <QString>

namespace Tessaron::Desktop
{

// Several discs of one disc that was split, as files in a new folder.

/// Makes the folder: 0, or the system's error. Touches the disk.
[[nodiscard]] int makeNewFolder(const QByteArray &folder);

/// What people are told of such an error.
[[nodiscard]] QString newFolderProblem(int errnoValue);

/// The path of a disc's file; the ending is one such as ".iso".
[[nodiscard]] QByteArray pathOfShare(const QByteArray &folder, const QString &volumeName, const char *ending);

/// Says that files which are missing are on no disc.
[[nodiscard]] QString missingFromAllDiscs(qsizetype count);

} // namespace Tessaron::Desktop
