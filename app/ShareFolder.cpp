#include "app/ShareFolder.h"

#include <QCoreApplication>

#include <cerrno>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>
#include <sys/stat.h>

namespace Tessaron::Desktop
{

namespace
{

struct ShareWords {
    Q_DECLARE_TR_FUNCTIONS(ShareSaving)
};

} // namespace

int makeNewFolder(const QByteArray &folder)
{
    return ::mkdir(folder.constData(), 0777) == 0 ? 0 : errno;
}

QString newFolderProblem(int errnoValue)
{
    return errnoValue == EEXIST ? ShareWords::tr("There is something of this name already. Name a new folder.")
                                : ShareWords::tr("The folder cannot be made: %1").arg(systemText(errnoValue));
}

QByteArray pathOfShare(const QByteArray &folder, const QString &volumeName, const char *ending)
{
    QString fileName = volumeName.trimmed();
    fileName.replace(u'/', u'-');
    while (fileName.startsWith(u'.'))
        fileName.remove(0, 1);
    return folder + '/' + fileSystemRepresentation(fileName.isEmpty() ? ShareWords::tr("disc") : fileName) + ending;
}

QString missingFromAllDiscs(qsizetype count)
{
    return ShareWords::tr("%n item(s) are on no disc: their files are missing.", nullptr, int(count));
}

} // namespace Tessaron::Desktop
