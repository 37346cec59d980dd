#include "filemodel/LayoutBuilder.h"

#include "filemodel/DesiredDiscName.h"
#include "filemodel/FolderForLayout.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/FilePlaces.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <utility>

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

/// A folder that has the name of an icon's file was taken for the icon when the folder above was made. Its reference
/// may name the place where it was before.
void takeOutIconFile(DRFolder &parent, const DRFolder &child)
{
    if (parent.children().empty())
        return;
    const std::shared_ptr<DRFSObject> first = parent.children().front();
    if (!first->isFolder() && identityOf(first->sourceRef()) == identityOf(child.sourceRef()))
        parent.removeChild(first);
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
    LayoutSource source;
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
    LayoutSource loose; // of files that lie in a virtual folder, the one that the last of them is in on disk
    if (!item.fileReference()->isContainer())
        return makeFile(item, loose, addToFolder);

    std::vector<OpenFolder> stack;
    std::unordered_set<const KRFileHierarchyItem *> open; // those on the stack: no item is laid out inside itself
    enter(item, stack, open);
    for (;;) {
        OpenFolder &top = stack.back();
        if (m_hooks.isAbandoned() || (top.nextChild > 0 && stack.size() == 1 && m_hooks.isCancelled(item)))
            return nullptr;
        if (top.nextChild < top.item->items().size()) {
            KRFileHierarchyItem *const child = top.item->items()[top.nextChild++].get();
            if (!child || !child->fileReference() || open.contains(child))
                continue;
            if (child->fileReference()->isContainer()) {
                enter(*child, stack, open);
            } else if (top.source.node != 0) {
                makeFile(*child, top.source, top.folder.get());
            } else {
                enterFolderOf(*child->fileReference()->fileRef(), loose);
                makeFile(*child, loose, top.folder.get());
            }
            continue;
        }
        open.erase(top.item);
        const std::shared_ptr<DRFolder> folder = leave(stack, addToFolder);
        if (stack.empty())
            return m_hooks.isCancelled(item) ? nullptr : folder;
    }
}

void LayoutBuilder::enter(KRFileHierarchyItem &item, std::vector<OpenFolder> &stack,
                          std::unordered_set<const KRFileHierarchyItem *> &open) const
{
    /// Folders above each other that keep their descriptors.
    constexpr std::size_t mostOpen = 16;
    const std::shared_ptr<KRFileReference> &reference = item.fileReference();
    OpenFolder entered;
    entered.item = &item;
    entered.discName = desiredDiscNameOrNull(*reference);
    if (reference->isVirtual()) {
        entered.folder = DRFolderCreateVirtual(entered.discName);
    } else {
        const LayoutSource outside;
        int error = 0;
        entered.folder =
            folderForLayout(*reference, stack.empty() ? outside : stack.back().source, &entered.source, &error);
        entered.source.filesToLookAt = item.items().size();
        if (error != 0)
            m_hooks.noteUnreadable(*reference->fileRef(), error);
    }
    setOptions(*reference, *entered.folder);
    stack.push_back(std::move(entered));
    open.insert(&item);
    if (stack.size() > mostOpen)
        stack[stack.size() - mostOpen - 1].source.descriptor.reset();
}

/// Takes the folder that is done from the stack and puts it into the one that holds it.
std::shared_ptr<DRFolder> LayoutBuilder::leave(std::vector<OpenFolder> &stack, DRFolder *addToFolder)
{
    const OpenFolder done = std::move(stack.back());
    stack.pop_back();
    if (!stack.empty()) {
        OpenFolder &above = stack.back();
        if (above.source.node != 0 && !above.source.descriptor)
            above.source.descriptor = openSourceAbove(done.source, above.folder->sourceRef());
    }
    if (DRFolder *const parent = stack.empty() ? addToFolder : stack.back().folder.get()) {
        takeOutIconFile(*parent, *done.folder);
        parent->addChild(done.folder);
    }
    if (!done.discName.isNull())
        done.folder->setBaseName(done.discName);
    return done.folder;
}

std::shared_ptr<DRFSObject> LayoutBuilder::makeFile(KRFileHierarchyItem &item, LayoutSource &source,
                                                    DRFolder *addToFolder) const
{
    KRFileReference &reference = *item.fileReference();
    const FSRef &ref = *reference.fileRef();
    const QByteArrayView name = findLayoutName(ref, source);
    // The file that gives a folder its icon: the folder's own step adds it.
    if (name == QByteArrayView("Icon\r"))
        return nullptr;
    m_hooks.willAddFile(amountOfFile(reference));
    const std::shared_ptr<DRFile> file = DRFileCreateReal(&ref);
    if (!file)
        return nullptr;
    setOptions(reference, *file);
    if (addToFolder)
        addToFolder->addChild(file);
    const QString discName = desiredDiscNameOrNull(reference);
    if (!discName.isNull())
        file->setBaseName(discName);
    else if (name != nameOfFSRef(ref))
        file->setBaseName(stringWithFileSystemRepresentation(name)); // renamed since it was added
    m_hooks.didAddFile();
    return file;
}

} // namespace Tessaron
