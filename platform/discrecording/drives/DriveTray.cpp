#include "platform/discrecording/drives/DriveTray.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>

namespace Tessaron
{

NSError errorOfEjecting(const DriveAddress &address)
{
    if (address.kind == DriveAddress::Kind::File)
        return {};
    // Without waiting, which would take the tray in again.
    const UniqueDescriptor drive(::open(address.path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!drive || ::ioctl(drive.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT) != CDS_DISC_OK)
        return {};
    return burnError(ioErr, QStringLiteral("the drive %1 did not put the disc out").arg(quoted(address.shown)),
                     QStringLiteral("Press the button of the drive; close programs that use the disc before that."));
}

} // namespace Tessaron
