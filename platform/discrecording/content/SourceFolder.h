#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <cstdint>

namespace Tessaron
{

/// Keeps the folder open in which the last source lay: neighbours mostly lie in one folder, and the system finds a name
/// in an open folder in half the time that a whole path takes. Used by one thread.
class SourceFolder
{
public:
    /// The descriptor of the folder that holds the reference's place, for `…at` calls with the reference's name; -1
    /// when it cannot be opened (the caller goes by the whole reference then). Valid until the next call.
    [[nodiscard]] int descriptorFor(const FSRef &ref);

private:
    UniqueDescriptor m_descriptor;
    std::uint32_t m_node = 0;
};

} // namespace Tessaron
