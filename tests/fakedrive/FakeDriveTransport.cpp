#include "tests/fakedrive/FakeDriveTransport.h"

#include "tests/fakedrive/FakeDrive.h"
#include "tests/fakedrive/RealFunction.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <mutex>
#include <optional>
#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

constexpr char devicePath[] = "/dev/sr0";

std::mutex guard; ///< guards the drive, also for as long as a command takes
FakeDrive *drive = nullptr; ///< while it is open
std::atomic<int> driveDescriptor = -1; ///< changed with the guard; other descriptors do not wait for a command

int sendCommand(sg_io_hdr *header)
{
    if (drive->isGone()) {
        errno = ENODEV;
        return -1;
    }
    const bool isToDrive = header->dxfer_direction == SG_DXFER_TO_DEV;
    const std::optional<Sense> sense =
        drive->run(header->cmdp, static_cast<std::uint8_t *>(header->dxferp), header->dxfer_len, isToDrive);
    if (!sense) {
        errno = ENODEV;
        return -1;
    }
    header->host_status = 0;
    header->driver_status = 0;
    header->status = 0;
    header->sb_len_wr = 0;
    header->info = 0;
    header->resid = 0;
    if (sense->key == 0)
        return 0;
    header->status = 2; // CHECK CONDITION
    header->driver_status = 8; // sense is there
    header->info = SG_INFO_CHECK;
    if (header->sbp != nullptr && header->mx_sb_len >= 14) {
        std::memset(header->sbp, 0, header->mx_sb_len);
        header->sbp[0] = 0x70;
        header->sbp[2] = std::uint8_t(sense->key);
        header->sbp[7] = 10;
        header->sbp[12] = std::uint8_t(sense->code);
        header->sbp[13] = std::uint8_t(sense->qualifier);
        header->sb_len_wr = 18;
    }
    return 0;
}

int control(unsigned long request, void *argument)
{
    switch (request) {
    case SG_IO:
        return sendCommand(static_cast<sg_io_hdr *>(argument));
    case SCSI_IOCTL_GET_IDLUN:
        std::memset(argument, 0, 8);
        return 0;
    case SCSI_IOCTL_GET_BUS_NUMBER:
        *static_cast<int *>(argument) = 0;
        return 0;
    case CDROM_DRIVE_STATUS:
        return drive->isTrayOut() ? CDS_TRAY_OPEN : drive->hasDisc() ? CDS_DISC_OK : CDS_NO_DISC;
    default:
        errno = ENOTTY;
        return -1;
    }
}

} // namespace

bool isFake(const char *path)
{
    return path != nullptr && std::strcmp(path, devicePath) == 0 && ::getenv("TESSARON_FAKE_DRIVE") != nullptr;
}

int openDrive()
{
    const std::lock_guard lock(guard);
    if (drive != nullptr && drive->isGone()) {
        errno = ENXIO;
        return -1;
    }
    if (drive != nullptr) {
        errno = EBUSY;
        return -1;
    }
    const char *const setting = ::getenv("TESSARON_FAKE_DRIVE");
    const std::string folder = setting != nullptr ? setting : "";
    if (::access((folder + "/busy").c_str(), F_OK) == 0) {
        errno = EBUSY;
        return -1;
    }
    if (::access((folder + "/locked").c_str(), F_OK) == 0) {
        errno = EACCES;
        return -1;
    }
    driveDescriptor = realFunction<int (*)(const char *, int, ...)>("open")("/dev/null", O_RDWR | O_CLOEXEC);
    drive = new FakeDrive(folder);
    return driveDescriptor;
}

void letDriveGo(int descriptor)
{
    if (descriptor < 0 || descriptor != driveDescriptor)
        return;
    const std::lock_guard lock(guard);
    if (drive == nullptr || descriptor != driveDescriptor)
        return;
    drive->save();
    driveDescriptor = -1;
    if (!drive->isGone()) { // what is gone stays gone for this process
        delete drive;
        drive = nullptr;
    }
}

std::optional<int> controlDrive(int descriptor, unsigned long request, void *argument)
{
    if (descriptor < 0 || descriptor != driveDescriptor)
        return std::nullopt;
    const std::lock_guard lock(guard);
    if (drive == nullptr || descriptor != driveDescriptor)
        return std::nullopt;
    return control(request, argument);
}

int describe(const char *path, struct stat *status)
{
    static_cast<void>(path);
    std::memset(status, 0, sizeof *status);
    status->st_mode = S_IFBLK | 0660;
    status->st_rdev = makedev(11, 0);
    status->st_nlink = 1;
    return 0;
}

} // namespace Tessaron::Testing
