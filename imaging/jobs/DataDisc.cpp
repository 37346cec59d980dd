#include "imaging/jobs/DataDisc.h"

#include "platform/discrecording/planning/DiscImagePlan.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

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
                        QStringLiteral("SOURCE_DATE_EPOCH is %1, which is no number of seconds").arg(quoted(value)),
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

} // namespace Tessaron
