#include "tools/tessaron/UnreadableFolders.h"

#include "platform/coreservices/FSRefAccess.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <fcntl.h>

namespace Tessaron::Tool
{

void appendUnreadableFolders(const KRFileHierarchyItem &root, std::vector<GatheringError> *errors)
{
    std::vector<const KRFileHierarchyItem *> open = {&root}; // a tree may be deeper than the stack
    while (!open.empty()) {
        const KRFileHierarchyItem &item = *open.back();
        open.pop_back();
        for (auto child = item.items().rbegin(); child != item.items().rend(); ++child)
            open.push_back(child->get());
        if (item.numberOfItems() > 0 || !item.fileReference()->isContainer())
            continue;
        int reason = 0;
        const FSRef &ref = *item.fileReference()->fileRef();
        const UniqueDescriptor folder = openFSRef(ref, O_RDONLY | O_DIRECTORY, &reason);
        if (!folder)
            errors->push_back({lastKnownPath(ref), systemText(reason)});
    }
}

} // namespace Tessaron::Tool
