#include "platform/disctracks/DescribedFilePath.h"

#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QString>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

bool isThere(const QByteArray &path)
{
    struct stat status;
    return ::stat(path.constData(), &status) == 0;
}

QByteArrayView lastComponent(QByteArrayView name)
{
    return name.sliced(std::max(name.lastIndexOf('/'), name.lastIndexOf('\\')) + 1);
}

/// The entry of the folder whose name is the same in another letter case; empty unless exactly one is.
QByteArray entryInAnyCase(const QByteArray &folder, const QByteArray &name)
{
    const QString wanted = QString::fromUtf8(name).toCaseFolded();
    QByteArray found;
    const DirectoryStream stream =
        directoryStream(UniqueDescriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (const dirent *const entry = stream ? ::readdir(stream.get()) : nullptr) {
        if (QString::fromUtf8(entry->d_name).toCaseFolded() != wanted)
            continue;
        if (!found.isEmpty())
            return {};
        found = entry->d_name;
    }
    return found;
}

} // namespace

QByteArray pathOfDescribedFile(const QByteArray &folder, const QByteArrayList &names)
{
    for (const QByteArray &name : names) {
        QByteArray path = name.startsWith('/') ? name : folder + name;
        if (!name.isEmpty() && isThere(path))
            return path;
    }
    // Sheets travel: a folder of another machine is of no use, but the file may lie beside the sheet.
    for (const QByteArray &name : names) {
        const QByteArray alone = lastComponent(name).toByteArray();
        if (!alone.isEmpty() && isThere(folder + alone))
            return folder + alone;
        const QByteArray other = entryInAnyCase(folder.isEmpty() ? QByteArray(".") : folder, alone);
        if (!alone.isEmpty() && !other.isEmpty())
            return folder + other;
    }
    return {};
}

} // namespace Tessaron
