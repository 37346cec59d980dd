#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// Keeps the folders open in which the last sources lay: neighbours mostly lie in one folder, and the system finds a
/// name in an open folder in half the time that a whole path takes. A folder below one that is open is opened from
/// there, so that trees thousands of levels deep do not take time by the square of their depth. Used by one thread.
class SourceFolder
{
public:
    /// The descriptor of the folder that holds the reference's place, for `…at` calls with the reference's name; -1
    /// when it cannot be opened (the caller goes by the whole reference then). Valid until the next call.
    [[nodiscard]] int descriptorFor(const FSRef &ref);

private:
    struct OpenFolder {
        std::uint32_t node = 0;
        UniqueDescriptor descriptor;
    };
    /// The open folder of this node, null when it is not among them.
    [[nodiscard]] const OpenFolder *find(std::uint32_t node) const;

    /// Several, since a walk by level comes to all folders of one level before those below them.
    std::array<OpenFolder, 8> m_folders;
    std::size_t m_last = 0; ///< place of the one opened last
};

} // namespace Tessaron
