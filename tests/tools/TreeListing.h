#pragma once

#include <QByteArray>

#include <map>
#include <string>

namespace Tessaron::Testing
{

/// What of a tree two listings are to agree on, besides names and kinds.
struct TreeListingOptions {
    bool modes = true; ///< permission bits
    bool times = true; ///< modification times, whole seconds
    bool hardLinks = true; ///< which names are one file
};

/// Path in the tree → one line on what is there: kind, size and content, or the target of a link, and what the options
/// ask for. The root itself is not listed. Two trees are alike when their listings are equal, and the test framework
/// shows where they are not.
[[nodiscard]] std::map<std::string, std::string> listTree(const QByteArray &root,
                                                          const TreeListingOptions &options = {});

} // namespace Tessaron::Testing
