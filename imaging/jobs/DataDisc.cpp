#include "imaging/jobs/DataDisc.h"

#include "platform/discrecording/planning/DiscImagePlan.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <sys/stat.h>

namespace Tessaron
{

NSError errorOfEnvironment()
{
    const QByteArray value = qgetenv("SOURCE_DATE_EPOCH");
    if (value.isEmpty())
        return {};
    const std::optional<std::int64_t> seconds = sourceDateEpochFromEnvironment();
    constexpr std::int64_t endOfYear9999 = 253'402'300'799;
    if (seconds && *seconds >= 0 && *seconds <= endOfYear9999)
        return {};
    if (seconds)
        return discJobError(
            DiscJobErrorCode::InvalidOrder,
            QStringLiteral("SOURCE_DATE_EPOCH is %1, a time %2")
                .arg(quoted(value),
                     *seconds < 0 ? QStringLiteral("before 1970") : QStringLiteral("after the year 9999")),
            QStringLiteral("Set it to the seconds from 1970 to a day of the years until 9999, or unset it."));
    return discJobError(DiscJobErrorCode::InvalidOrder,
                        QStringLiteral("SOURCE_DATE_EPOCH is %1, which is not a number of seconds").arg(quoted(value)),
                        QStringLiteral("Set it to the seconds since 1970, or unset it."));
}

bool isOneFolder(const std::vector<DiscSource> &sources)
{
    return sources.size() == 1 && sources.front().isFolder;
}

bool isDvdVideo(const std::vector<DiscSource> &sources)
{
    const QByteArray folderName = QByteArrayLiteral("VIDEO_TS");
    struct stat status;
    if (isOneFolder(sources))
        return ::lstat((sources.front().path + '/' + folderName).constData(), &status) == 0 && S_ISDIR(status.st_mode);
    return std::any_of(sources.begin(), sources.end(), [&folderName](const DiscSource &source) {
        return source.isFolder && source.name == folderName;
    });
}

bool isDvdVideo(const KRFileHierarchyItem &root)
{
    const std::shared_ptr<KRFileHierarchyItem> folder = root.childWithDesiredName(QStringLiteral("VIDEO_TS"));
    return folder && folder->fileReference()->isContainer();
}

std::vector<DiscSource> filesOfTree(const KRFileHierarchyItem &root)
{
    std::vector<DiscSource> files;
    std::vector<const KRFileHierarchyItem *> waiting = {&root};
    while (!waiting.empty()) {
        const KRFileHierarchyItem *const item = waiting.back();
        waiting.pop_back();
        for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items())
            waiting.push_back(child.get());
        const std::shared_ptr<KRFileReference> &reference = item->fileReference();
        if (!reference || reference->isVirtual() || reference->isContainer())
            continue;
        const FSRef &ref = *reference->fileRef();
        const QByteArray path = lastKnownPath(ref);
        files.push_back({path, path, path.mid(path.lastIndexOf('/') + 1), false, {ref.device, ref.inode}});
    }
    return files;
}

} // namespace Tessaron
