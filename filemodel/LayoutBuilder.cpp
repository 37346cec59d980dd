#include "filemodel/LayoutBuilder.h"

#include "filemodel/DesiredDiscName.h"
#include "filemodel/FolderForLayout.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/coreservices/NodeTable.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <vector>

namespace Tessaron
{

namespace
{

// The choices of the basic inclusion and the filesystems that they stand for; any other choice means all of them.
constexpr std::int32_t basicInclusionMac = 1;
constexpr std::int32_t basicInclusionPC = 2;
constexpr DRFilesystemMask macFilesystems = DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskHFSPlus;
constexpr DRFilesystemMask pcFilesystems = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet;

void _setAttributes(const _TessaronAttributes &attributes, DRFSObject &forFSObject)
{
    if (attributes.invisible)
        forFSObject.setProperty(true, DRInvisible, DRAllFilesystems);
    if (attributes.useBasicFSInclusion) {
        if (attributes.hasBasicFSInclusion && attributes.basicFSInclusion == basicInclusionMac)
            forFSObject.setExplicitFilesystemMask(macFilesystems);
        else if (attributes.hasBasicFSInclusion && attributes.basicFSInclusion == basicInclusionPC)
            forFSObject.setExplicitFilesystemMask(pcFilesystems);
    } else if (attributes.hasAdvancedFSInclusion && attributes.advancedFSInclusion != 0) {
        forFSObject.setExplicitFilesystemMask(attributes.advancedFSInclusion);
    }
}

void setOptions(KRFileReference &reference, DRFSObject &object)
{
    _setAttributes(*reference.tessaronAttributes(), object);
    if (reference.hasDesiredName() && reference.isExtensionHiddenIsDesiredName())
        object.setProperty(true, DRMacFinderHideExtension, DRAllFilesystems);
}

/// The file that gives a folder its icon; the folder's own step adds it.
bool isFolderIcon(const KRFileReference &reference)
{
    return nameOfFSRef(*reference.fileRef()) == QByteArrayView("Icon\r");
}

/// A folder that has the name of an icon's file was taken for one when the folder above was made.
void takeOutIconFile(DRFolder &parent, const DRFolder &child)
{
    if (nameOfFSRef(child.sourceRef()) != QByteArrayView("Icon\r") || parent.children().empty())
        return;
    const std::shared_ptr<DRFSObject> first = parent.children().front();
    if (!first->isFolder() && first->sourceRef() == child.sourceRef())
        parent.removeChild(first);
}

QString nameOfNode(std::uint32_t node)
{
    const std::string_view name = NodeTable::shared().nameOf(node);
    return stringWithFileSystemRepresentation(QByteArrayView(name.data(), static_cast<qsizetype>(name.size())));
}

/// In units of 1,048,576 bytes; whole units of 10,240 bytes only.
// NOLINTBEGIN(bugprone-integer-division)
double amountOfFile(KRFileReference &reference)
{
    const double amount = static_cast<double>(reference.physicalSize() / 10240) / 102.4;
    return amount == 0 ? 0.0001 : amount;
}
// NOLINTEND(bugprone-integer-division)

} // namespace

struct LayoutBuilder::OpenFolder {
    KRFileHierarchyItem *item = nullptr;
    std::shared_ptr<DRFolder> folder;
    QString discName;
    std::size_t nextChild = 0;
};

LayoutBuilder::LayoutBuilder(Hooks hooks)
    : m_hooks(std::move(hooks))
{
}

std::shared_ptr<DRFSObject> LayoutBuilder::build(KRFileHierarchyItem &item, DRFolder *addToFolder) const
{
    if (m_hooks.isCancelled(item) || !item.fileReference())
        return nullptr;
    if (!item.fileReference()->isContainer())
        return makeFile(item, addToFolder);

    std::vector<OpenFolder> stack;
    stack.push_back(openFolder(item));
    for (;;) {
        OpenFolder &open = stack.back();
        if (m_hooks.isAbandoned() || (open.nextChild > 0 && stack.size() == 1 && m_hooks.isCancelled(item)))
            return nullptr;
        if (open.nextChild < open.item->items().size()) {
            KRFileHierarchyItem *const child = open.item->items()[open.nextChild++].get();
            if (!child || !child->fileReference())
                continue;
            if (child->fileReference()->isContainer())
                stack.push_back(openFolder(*child));
            else
                makeFile(*child, open.folder.get());
            continue;
        }
        const std::shared_ptr<DRFolder> folder = open.folder;
        const QString discName = open.discName;
        stack.pop_back();
        if (DRFolder *const parent = stack.empty() ? addToFolder : stack.back().folder.get()) {
            takeOutIconFile(*parent, *folder);
            parent->addChild(folder);
        }
        if (!discName.isNull())
            folder->setBaseName(discName);
        if (stack.empty())
            return m_hooks.isCancelled(item) ? nullptr : folder;
    }
}

LayoutBuilder::OpenFolder LayoutBuilder::openFolder(KRFileHierarchyItem &item) const
{
    const std::shared_ptr<KRFileReference> &reference = item.fileReference();
    OpenFolder open;
    open.item = &item;
    open.discName = desiredDiscNameOrNull(*reference);
    if (reference->isVirtual()) {
        open.folder = DRFolderCreateVirtual(open.discName);
    } else {
        int error = 0;
        open.folder = folderForLayout(*reference, &error);
        if (error != 0)
            m_hooks.noteUnreadable(*reference->fileRef(), error);
    }
    setOptions(*reference, *open.folder);
    return open;
}

std::shared_ptr<DRFSObject> LayoutBuilder::makeFile(KRFileHierarchyItem &item, DRFolder *addToFolder) const
{
    KRFileReference &reference = *item.fileReference();
    if (isFolderIcon(reference))
        return nullptr;
    m_hooks.willAddFile(amountOfFile(reference));
    std::shared_ptr<DRFile> file = DRFileCreateReal(reference.fileRef());
    if (!file)
        return nullptr;
    setOptions(reference, *file);
    if (addToFolder)
        addToFolder->addChild(file);
    const QString discName = desiredDiscNameOrNull(reference);
    if (!discName.isNull())
        file->setBaseName(discName);
    else if (const std::uint32_t place = FilePlaces::shared().currentNode(*reference.fileRef());
             place != reference.fileRef()->node)
        file->setBaseName(nameOfNode(place)); // renamed since it was added
    m_hooks.didAddFile();
    return file;
}

} // namespace Tessaron
