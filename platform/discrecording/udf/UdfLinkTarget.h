#pragma once

#include <string>
#include <string_view>

namespace Tessaron
{

/// The target of a symbolic link as UDF records it.
struct UdfLinkTarget {
    std::string components; ///< path components (ECMA-167 4/14.16) in a row: the contents of the link
    bool isSimplified = false; ///< a reader makes another text of it, of the same meaning
    bool hasChangedNames = false; ///< it has names that UDF does not hold as they are, so that it leads elsewhere
};

/// Makes the path components of a target. A slash at the beginning is the root; "." and ".." are components of their
/// own kinds; slashes in a row count as one, one at the end does not count.
[[nodiscard]] UdfLinkTarget udfLinkTarget(std::string_view target);

} // namespace Tessaron
