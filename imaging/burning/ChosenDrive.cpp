#include "imaging/burning/ChosenDrive.h"

#include "imaging/jobs/LayoutWriting.h"
#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>

namespace Tessaron
{

namespace
{

/// The address of the only drive.
Result<QByteArray> onlyDrive()
{
    const std::vector<DriveDescription> drives = allDrives();
    if (drives.size() == 1)
        return drives.front().path;
    if (drives.empty())
        return discJobError(DiscJobErrorCode::Destination, QStringLiteral("this computer has no optical drive"),
                            QStringLiteral("Connect one."));
    QStringList paths;
    std::transform(drives.begin(), drives.end(), std::back_inserter(paths),
                   [](const DriveDescription &drive) { return stringWithFileSystemRepresentation(drive.path); });
    return discJobError(DiscJobErrorCode::Destination,
                        QStringLiteral("there are several drives: %1").arg(paths.join(QStringLiteral(", "))),
                        QStringLiteral("Name the one that is meant."));
}

} // namespace

Result<std::shared_ptr<DRDevice>> openChosenDrive(const QByteArray &address, bool mayMakeFile)
{
    const Result<QByteArray> chosen = address.isEmpty() ? onlyDrive() : Result<QByteArray>(address);
    if (!chosen)
        return chosen.error();
    Result<std::shared_ptr<DRDevice>> opened = DRDevice::open(*chosen, mayMakeFile);
    if (opened)
        return opened;
    const NSError error = opened.error();
    QVariantMap userInfo = error.userInfo();
    userInfo.insert(DiscJobUnderlyingStatusKey, error.code());
    return NSError(DiscJobErrorDomain, qint64(DiscJobErrorCode::Destination), userInfo);
}

QStringList releaseDrive(DRDevice &device, bool ejects)
{
    const NSError error = device.release(ejects);
    if (!error)
        return {};
    return {QStringLiteral("%1. %2").arg(error.localizedDescription(), error.localizedRecoverySuggestion())};
}

} // namespace Tessaron
