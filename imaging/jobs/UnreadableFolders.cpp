#include "imaging/jobs/UnreadableFolders.h"

#include "platform/coreservices/FSCatalog.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

namespace Tessaron
{

void appendUnreadableFolders(const KRFileHierarchyItem &root, std::vector<UnreadableSource> *unreadable)
{
    std::vector<const KRFileHierarchyItem *> open = {&root}; // a tree may be deeper than the stack
    while (!open.empty()) {
        const KRFileHierarchyItem &item = *open.back();
        open.pop_back();
        for (auto child = item.items().rbegin(); child != item.items().rend(); ++child)
            open.push_back(child->get());
        if (item.numberOfItems() > 0 || !item.fileReference()->isContainer())
            continue;
        OSStatus status = noErr;
        const FSRef &ref = *item.fileReference()->fileRef();
        if (!FSOpenIterator(ref, &status))
            unreadable->push_back({lastKnownPath(ref), reasonOfStatus(status)});
    }
}

} // namespace Tessaron
