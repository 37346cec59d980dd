#include "filemodel/FolderForLayout.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FileLocator.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>

#include <cerrno>

namespace Tessaron
{

namespace
{

QString nameOf(KRFileReference &reference)
{
    const QString name = reference.name();
    return name.isNull() ? stringWithFileSystemRepresentation(nameOfFSRef(*reference.fileRef())) : name;
}

/// Adds whatever lies there under the name of the icon's file; 0 or an `errno` value.
int addIcon(const FSRef &ref, const QByteArray &path, DRFolder &folder)
{
    const QByteArray name = QByteArrayLiteral("Icon\r");
    struct statx facts;
    const int error = statPath(QByteArray(path).append('/').append(name), STATX_TYPE, &facts);
    if (error != 0)
        return error == ENOENT ? 0 : error;
    FSRef icon;
    if (FSMakeFSRefForChild(ref, name, &icon) == noErr)
        folder.addChild(DRFileCreateReal(&icon));
    return 0;
}

} // namespace

std::shared_ptr<DRFolder> folderForLayout(KRFileReference &reference, int *errnoValue)
{
    *errnoValue = 0;
    std::shared_ptr<DRFolder> folder = DRFolderCreateVirtual(nameOf(reference));
    if (reference.isVirtual())
        return folder;
    const FSRef &ref = *reference.fileRef();
    folder->setSourceRef(ref);
    QByteArray path;
    *errnoValue = locateFile(ref, 0, nullptr, &path);
    if (*errnoValue != 0)
        return folder;
    FileInfo finderInfo;
    if (FSGetFinderInfo(&ref, &finderInfo, nullptr, nullptr) == noErr) {
        const auto flags = static_cast<std::int16_t>(finderFlagsOf(finderInfo.bytes.data()));
        folder->setProperty(int(flags), DRMacFinderFlags, DRAllFilesystems);
    }
    *errnoValue = addIcon(ref, path, *folder);
    return folder;
}

} // namespace Tessaron
