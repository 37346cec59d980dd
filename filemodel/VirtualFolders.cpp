#include "platform/coreservices/FSCatalog.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/VirtualFolders.h>

namespace Tessaron
{

namespace
{

/// Where the Finder flags lie in the 16 bytes of Finder information, for files and folders alike.
constexpr std::size_t finderFlagsOffset = 8;

} // namespace

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
    const FSRef &ref = *reference->fileRef();
    QString name = reference->name();
    if (name.isNull())
        name = stringWithFileSystemRepresentation(nameOfFSRef(ref));
    std::shared_ptr<DRFolder> folder = DRFolderCreateVirtual(name);
    if (reference->isVirtual())
        return folder;
    folder->setSourceRef(ref);

    FileInfo finderInfo;
    if (FSGetFinderInfo(&ref, &finderInfo, nullptr, nullptr) == noErr) {
        const auto flags = loadBigEndian<std::uint16_t>(finderInfo.bytes.data() + finderFlagsOffset);
        folder->setProperty(int(static_cast<std::int16_t>(flags)), DRMacFinderFlags, DRAllFilesystems);
    }
    FSRef icon;
    FSCatalogInfo info;
    if (FSMakeFSRefForChild(ref, QByteArrayLiteral("Icon\r"), &icon) == noErr
        && FSGetCatalogInfo(&icon, kFSCatInfoNodeFlags, &info) == noErr
        && (info.nodeFlags & kFSNodeIsDirectoryMask) == 0)
        folder->addChild(DRFileCreateReal(&icon));
    return folder;
}

} // namespace Tessaron
