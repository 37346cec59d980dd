#include "platform/dvdplayback/player/DriveRegion.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace Tessaron
{

std::optional<DVDDriveRegion> regionOfDrive(const QByteArray &path)
{
    struct stat status;
    if (::stat(path.constData(), &status) != 0)
        return std::nullopt;
    const dev_t device = S_ISBLK(status.st_mode) ? status.st_rdev : status.st_dev;
    if (major(device) == 0) // a filesystem without a device
        return std::nullopt;
    const QByteArray node = "/dev/block/" + QByteArray::number(major(device)) + ':' + QByteArray::number(minor(device));
    // Without O_NONBLOCK an empty drive is waited for.
    const UniqueDescriptor drive(::open(node.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    dvd_authinfo question{};
    question.type = DVD_LU_SEND_RPC_STATE;
    if (!drive || ::ioctl(drive.get(), CDROM_GET_CAPABILITY, 0) < 0 || ::ioctl(drive.get(), DVD_AUTH, &question) != 0)
        return std::nullopt;
    DVDDriveRegion region;
    region.prohibited = question.lrpcs.region_mask;
    region.changesLeft = question.lrpcs.ucca;
    return region;
}

} // namespace Tessaron
