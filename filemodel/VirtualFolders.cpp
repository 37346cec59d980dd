#include "filemodel/FolderForLayout.h"
#include "platform/coreservices/FSRef.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/VirtualFolders.h>

namespace Tessaron
{

std::shared_ptr<DRFolder> virtualFolderWithPath(const QString &path)
{
    FSRef ref;
    bool isDirectory = false;
    if (FSPathMakeRef(fileSystemRepresentation(path), &ref, &isDirectory) != noErr || !isDirectory)
        return nullptr;
    return virtualFolderWithFSRef(ref);
}

std::shared_ptr<DRFolder> virtualFolderWithFSRef(const FSRef &ref)
{
    const std::shared_ptr<KRFileReference> reference = KRFileReference::initWithFSRef(ref);
    return reference ? virtualFolderWithFileReference(reference) : nullptr;
}

std::shared_ptr<DRFolder> virtualFolderWithFileReference(const std::shared_ptr<KRFileReference> &reference)
{
    LayoutSource source;
    int error = 0; // a folder without flags and icon is the answer then
    return folderForLayout(*reference, LayoutSource(), &source, &error);
}

} // namespace Tessaron
