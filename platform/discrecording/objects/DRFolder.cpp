#include "platform/discrecording/objects/DRFolder.h"

#include "platform/coreservices/FSCatalog.h"
#include "platform/discrecording/objects/DRFSObjectRare.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <iterator>

namespace Tessaron
{

DRFolder::DRFolder(ConstructionKey, const FSRef &source)
    : DRFSObject(source, false)
{
}

DRFolder::DRFolder(ConstructionKey, const QString &name)
    : DRFSObject(name)
{
}

DRFolder::~DRFolder()
{
    // A chain of folders that free each other would need stack for each level of depth; so the folders that nothing
    // else holds give up their children here before they go.
    std::vector<std::shared_ptr<DRFSObject>> orphans;
    const auto orphan = [&orphans](DRFolder &folder) {
        for (const auto &child : folder.m_children)
            child->m_parent = nullptr;
        std::ranges::copy_if(std::make_move_iterator(folder.m_children.begin()),
                             std::make_move_iterator(folder.m_children.end()), std::back_inserter(orphans),
                             [](const std::shared_ptr<DRFSObject> &child) { return child->isFolder(); });
        folder.m_children.clear();
    };
    orphan(*this);
    while (!orphans.empty()) {
        const std::shared_ptr<DRFSObject> object = std::move(orphans.back());
        orphans.pop_back();
        if (object.use_count() == 1)
            orphan(static_cast<DRFolder &>(*object));
    }
}

std::shared_ptr<DRFolder> DRFolder::folderWithPath(const QString &path)
{
    FSRef ref;
    return FSPathMakeRef(fileSystemRepresentation(path), &ref, nullptr) == noErr ? DRFolderCreateReal(&ref) : nullptr;
}

std::shared_ptr<DRFolder> DRFolder::virtualFolderWithName(const QString &name)
{
    return DRFolderCreateVirtual(name);
}

void DRFolder::addChild(const std::shared_ptr<DRFSObject> &child)
{
    if (!child || !isVirtual())
        return;
    // A folder without children holds nothing; so building a deep tree from its root costs no walk at each step.
    if (child.get() == this)
        return;
    if (child->isFolder() && !static_cast<const DRFolder &>(*child).children().empty()) {
        for (const DRFSObject *ancestor = this; ancestor; ancestor = ancestor->m_parent) {
            if (ancestor == child.get())
                return;
        }
    }
    // The caller's pointer may be the one in the array that the child leaves, so a copy is needed.
    const std::shared_ptr<DRFSObject> kept = child; // NOLINT(performance-unnecessary-copy-initialization)
    if (kept->m_parent)
        kept->m_parent->removeChild(kept);
    m_children.push_back(kept);
    kept->m_parent = this;
}

void DRFolder::removeChild(const std::shared_ptr<DRFSObject> &child)
{
    const auto found = std::ranges::find(m_children, child);
    if (found == m_children.end())
        return;
    (*found)->m_parent = nullptr;
    m_children.erase(found);
}

void DRFolder::removeAllChildren()
{
    for (const auto &child : m_children)
        child->m_parent = nullptr;
    m_children.clear();
}

std::shared_ptr<DRFolder> DRFolderCreateReal(const FSRef *ref)
{
    FSCatalogInfo info;
    if (!ref || FSGetCatalogInfo(ref, kFSCatInfoNodeFlags, &info) != noErr
        || !(info.nodeFlags & kFSNodeIsDirectoryMask))
        return nullptr;
    return std::make_shared<DRFolder>(DRFolder::ConstructionKey(), *ref);
}

std::shared_ptr<DRFolder> DRFolderCreateVirtual(const QString &name)
{
    return std::make_shared<DRFolder>(DRFolder::ConstructionKey(), name);
}

} // namespace Tessaron
