#include "platform/discrecording/content/SourceFolder.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/coreservices/PathAccess.h"

#include <algorithm>
#include <fcntl.h>

namespace Tessaron
{

const SourceFolder::OpenFolder *SourceFolder::find(std::uint32_t node) const
{
    const auto found = std::find_if(m_folders.begin(), m_folders.end(),
                                    [node](const OpenFolder &folder) { return folder.node == node; });
    return found != m_folders.end() ? &*found : nullptr;
}

int SourceFolder::descriptorFor(const FSRef &ref)
{
    const std::uint32_t node = parentNodeOfFSRef(ref);
    if (node == 0)
        return -1;
    if (m_folders[m_last].node == node)
        return m_folders[m_last].descriptor.get();
    if (const OpenFolder *const known = find(node))
        return known->descriptor.get();
    // The folder by its own place: the file itself may have moved to another one, but its neighbours have not.
    FSRef folder;
    folder.node = node;
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    const std::uint32_t above = parentNodeOfFSRef(folder);
    const OpenFolder *const parent = above != 0 ? find(above) : nullptr;
    UniqueDescriptor descriptor;
    if (parent && parent->descriptor)
        descriptor.reset(::openat(parent->descriptor.get(), nameOfFSRef(folder).toByteArray().constData(), flags));
    int error = 0;
    if (!descriptor)
        descriptor = openPath(lastKnownPath(folder), flags, &error);
    m_last = (m_last + 1) % m_folders.size();
    m_folders[m_last] = {node, std::move(descriptor)};
    return m_folders[m_last].descriptor.get();
}

} // namespace Tessaron
