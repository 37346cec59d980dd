#include "tests/filemodel/tree/LayoutRecorder.h"

#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/MainThread.h"
#include "tests/support/EventLoop.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

KRFileHierarchyItemLayoutTarget LayoutRecorder::target()
{
    KRFileHierarchyItemLayoutTarget target;
    target.KRFileHierarchyItemDRLayoutCreationProgress = [this](KRFileHierarchyItem &item, float value) {
        EXPECT_TRUE(isMainThread());
        calls.emplace_back("progress");
        progress.push_back(value);
        if (onProgress)
            onProgress(item);
    };
    target.KRFileHierarchyItemDRLayoutCreationFinished = [this](KRFileHierarchyItem &item,
                                                                const std::shared_ptr<DRFSObject> &made) {
        EXPECT_TRUE(isMainThread());
        calls.emplace_back("finished");
        madeRoot = made;
        folder = std::dynamic_pointer_cast<DRFolder>(made);
        isOver = true;
        if (onEnd)
            onEnd(item);
    };
    target.KRFileHierarchyItemDRLayoutCreationDidCancel = [this](KRFileHierarchyItem &item) {
        EXPECT_TRUE(isMainThread());
        calls.emplace_back("cancelled");
        isOver = true;
        if (onEnd)
            onEnd(item);
    };
    return target;
}

std::shared_ptr<DRFolder> LayoutRecorder::run(KRFileHierarchyItem &root)
{
    EXPECT_TRUE(root.createDRLayoutAsyncNotifyProgressToTarget(target()));
    EXPECT_TRUE(waitForEnd());
    return folder;
}

bool LayoutRecorder::waitForEnd() const
{
    return runEventLoopUntil([this] { return isOver; });
}

std::shared_ptr<KRFileHierarchyItem> virtualFolderItem(const QString &name)
{
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::virtualFolderWithName(name));
}

std::shared_ptr<KRFileHierarchyItem> itemAt(const QString &path)
{
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::fileReferenceWithPath(path));
}

std::shared_ptr<KRFileHierarchyItem> knownFileItem(const FSRef &ref)
{
    _ZelFileAttribute known = ZelFileAttributeNone_fct();
    known.empty = 0;
    known.directory = 1;
    known.dataSizeIsKnown = 0;
    known.rsrcSizeIsKnown = 0;
    known.dataSize = 4096;
    known.rsrcSize = 0;
    return KRFileHierarchyItem::fileHierarchyItemWithFileReference(
        KRFileReference::initWithFSRef(ref, std::move(known)));
}

QStringList pathsBelow(const DRFolder &folder, const QString &prefix)
{
    QStringList paths;
    for (const auto &child : folder.children()) {
        const QString path = prefix + child->baseName();
        if (child->isFolder()) {
            paths << path + u'/';
            paths << pathsBelow(static_cast<const DRFolder &>(*child), path + u'/');
        } else {
            paths << path;
        }
    }
    return paths;
}

} // namespace Tessaron::Testing
