#include "platform/discrecording/content/SourceFolder.h"

#include "platform/coreservices/FSRefAccess.h"

#include <fcntl.h>

namespace Tessaron
{

int SourceFolder::descriptorFor(const FSRef &ref)
{
    const std::uint32_t parent = parentNodeOfFSRef(ref);
    if (parent == 0)
        return -1;
    if (parent == m_node)
        return m_descriptor.get();
    m_node = parent;
    // The folder by its own place: the file itself may have moved to another one, but its neighbours have not.
    FSRef folder;
    folder.node = parent;
    m_descriptor.reset(::open(lastKnownPath(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return m_descriptor.get();
}

} // namespace Tessaron
