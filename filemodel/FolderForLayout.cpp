#include "filemodel/FolderForLayout.h"

#include "platform/coreservices/CatalogFacts.h"
#include "platform/coreservices/ForkAttributes.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileReference.h>

#include <cerrno>

namespace Tessaron
{

namespace
{

/// As it is on the disk just now; what the reference remembers may be seconds old.
QString nameOf(KRFileReference &reference, const LayoutPlace &place)
{
    const QString remembered = place.errnoValue == 0 ? QString() : reference.name();
    return remembered.isNull() ? stringWithFileSystemRepresentation(place.name) : remembered;
}

void setFinderFlagsOf(DRFolder &folder, const LayoutSource &source, const struct statx &facts)
{
    FSCatalogInfo info;
    const std::uint64_t device = deviceOf(facts);
    AttributeSource attributes{source.descriptor.get(), ".", {}, device};
    if (volumeKeepsAttributes(device))
        fillFromAttributes(attributes, facts, kFSCatInfoFinderInfo, &info);
    const auto flags = static_cast<std::int16_t>(finderFlagsOf(info.finderInfo));
    folder.setProperty(int(flags), DRMacFinderFlags, DRAllFilesystems);
}

/// Adds what lies in the folder under the name of the icon's file; 0 or an `errno` value.
int addIcon(DRFolder &folder, const LayoutSource &source)
{
    const QByteArray name = QByteArrayLiteral("Icon\r");
    struct statx facts;
    const int error = statBelow(source.descriptor.get(), name.constData(), STATX_TYPE, &facts);
    if (error != 0)
        return error == ENOENT ? 0 : error;
    FSRef icon;
    const OSStatus status = FSMakeFSRefForChild(folder.sourceRef(), name, &icon);
    if (status == noErr)
        folder.addChild(DRFileCreateReal(&icon));
    return status == noErr || status == fnfErr ? 0 : EIO;
}

} // namespace

std::shared_ptr<DRFolder> folderForLayout(KRFileReference &reference, const LayoutSource &above, LayoutSource *source,
                                          int *errnoValue)
{
    *errnoValue = 0;
    *source = {};
    if (reference.isVirtual())
        return DRFolderCreateVirtual(reference.name());
    const FSRef &ref = *reference.fileRef();
    const LayoutPlace place = findLayoutPlace(ref, above);
    std::shared_ptr<DRFolder> folder = DRFolderCreateVirtual(nameOf(reference, place));
    folder->setSourceRef(ref);
    source->node = ref.node;
    source->descriptor = openLayoutSource(ref, place, above, errnoValue);
    if (!source->descriptor)
        return folder;
    setFinderFlagsOf(*folder, *source, place.facts);
    *errnoValue = addIcon(*folder, *source);
    return folder;
}

} // namespace Tessaron
