#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <QString>

namespace Tessaron
{

/// The names that the objects of a disc have in one of its trees. Immutable, thread-safe.
class TreeDisplayNames
{
public:
    virtual ~TreeDisplayNames() = default;
    /// The name for people to read; the root's is the volume's.
    [[nodiscard]] virtual QString displayName(NodeIndex node) const = 0;
};

} // namespace Tessaron
