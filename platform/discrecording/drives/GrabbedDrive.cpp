#include "platform/discrecording/drives/GrabbedDrive.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/drives/BurnControl.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/drives/LibBurn.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
constexpr std::uint64_t soundSize = 2352;
constexpr int roleOfDrives = 1; // burn_drive_get_drive_role()

/// True while a drive is open in this process.
std::atomic<bool> isDriveInUse = false;

DiscState stateOf(burn::burn_disc_status status)
{
    switch (status) {
    case burn::BURN_DISC_BLANK:
        return DiscState::Blank;
    case burn::BURN_DISC_EMPTY:
        return DiscState::NoDisc;
    case burn::BURN_DISC_APPENDABLE:
        return DiscState::Appendable;
    case burn::BURN_DISC_FULL:
        return DiscState::Closed;
    case burn::BURN_DISC_UNSUITABLE:
        return DiscState::Unsuitable;
    case burn::BURN_DISC_UNREADY:
    case burn::BURN_DISC_UNGRABBED:
        break;
    }
    return DiscState::Unknown;
}

RecordedTrackDescription descriptionOf(burn::burn_track &track)
{
    constexpr unsigned int hasWideNumbers = 1; // burn_toc_entry::extensions_valid
    constexpr unsigned int isData = 4; // of the control bits, MMC-5 table 350
    burn::burn_toc_entry entry{};
    burn::burn_track_get_entry(&track, &entry);
    RecordedTrackDescription description;
    description.session = entry.session;
    description.number = entry.point;
    description.isAudio = (entry.control & isData) == 0;
    if ((entry.extensions_valid & hasWideNumbers) != 0) {
        description.session |= std::uint32_t(entry.session_msb) << 8;
        description.number |= std::uint32_t(entry.point_msb) << 8;
        description.firstBlock = entry.start_lba;
        description.blocks = std::uint64_t(std::max(entry.track_blocks, 0));
    } else {
        description.firstBlock = burn::burn_msf_to_lba(entry.pmin, entry.psec, entry.pframe);
    }
    return description;
}

} // namespace

GrabbedDrive::GrabbedDrive(DriveAddress address)
    : m_address(std::move(address))
{
}

/// A file that stands for a drive is opened by ourselves: libburn gets the descriptor, so that the file cannot be
/// exchanged for something else after it was looked at.
NSError GrabbedDrive::openFile(bool mayMakeFile)
{
    const char *const path = m_address.path.constData();
    const int flags = O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    m_file.reset(::open(path, flags));
    if (!m_file && errno == ENOENT && mayMakeFile) {
        m_file.reset(::open(path, flags | O_CREAT | O_EXCL, 0666));
        m_isNewFile = m_file.isValid();
    }
    struct stat status = {};
    if (!m_file || ::fstat(m_file.get(), &status) != 0)
        return burnOutputError(errno, stringWithFileSystemRepresentation(m_address.path));
    if (S_ISREG(status.st_mode))
        return {};
    return burnError(paramErr,
                     QStringLiteral("%1 is no regular file and is not written to").arg(quoted(m_address.path)));
}

void GrabbedDrive::removeEmptyFile()
{
    struct stat status = {};
    if (std::exchange(m_isNewFile, false) && ::fstat(m_file.get(), &status) == 0 && status.st_size == 0)
        ::unlink(m_address.path.constData());
}

Result<std::unique_ptr<GrabbedDrive>> GrabbedDrive::grab(const DriveAddress &address, bool mayMakeFile)
{
    std::unique_ptr<GrabbedDrive> drive(new GrabbedDrive(address));
    if (NSError error = drive->isFile() ? drive->openFile(mayMakeFile) : NSError())
        return error;
    if (isDriveInUse.exchange(true))
        return burnError(fBsyErr, QStringLiteral("this program is using a drive already"),
                         QStringLiteral("Wait until that is done."));
    if (NSError error = drive->open()) {
        if (!drive->isOpen())
            isDriveInUse = false;
        return error;
    }
    return drive;
}

GrabbedDrive::~GrabbedDrive()
{
    release(false);
    removeEmptyFile();
}

QString GrabbedDrive::name() const
{
    return isFile() ? quoted(m_address.path) : QStringLiteral("the drive %1").arg(quoted(m_address.shown));
}

NSError GrabbedDrive::open()
{
    try {
        std::vector<DriveMessage> messages;
        if (!BurnControl::instance().isReady())
            return burnError(ioErr, QStringLiteral("the library that writes discs does not work on this system"));
        if (BurnControl::instance().call([&] { return openOnControlThread(&messages); }))
            return {};
        DriveFault fault = driveFault(messages);
        if (fault == DriveFault::Unknown)
            fault = DriveFault::Absent;
        return driveError(fault, messages, name());
    } catch (const std::system_error &) {
        return burnError(memFullErr, QStringLiteral("the system allows no further thread to use a drive with"),
                         QStringLiteral("Close other programs and try again."));
    }
}

bool GrabbedDrive::openOnControlThread(std::vector<DriveMessage> *messages)
{
    // What is left of an earlier drive is not about this one.
    static_cast<void>(takeDriveMessages());
    QByteArray address = isFile() ? "stdio:/dev/fd/" + QByteArray::number(m_file.get()) : m_address.path;
    constexpr int takesTrayIn = 1;
    const bool isOpened = address.size() < BURN_DRIVE_ADR_LEN
        && burn::burn_drive_scan_and_grab(&m_infos, address.data(), takesTrayIn) == 1;
    *messages = takeDriveMessages();
    if (!isOpened) {
        m_infos = nullptr;
        return false;
    }
    m_drive = m_infos[0].drive;
    // Nothing but these two is ever opened, and this holds even where the library takes an address in another way.
    if ((burn::burn_drive_get_drive_role(m_drive) == roleOfDrives) == isFile()) {
        burn::burn_drive_release(m_drive, 0);
        burn::burn_drive_info_free(m_infos);
        m_infos = nullptr;
        m_drive = nullptr;
        return false;
    }
    describeDisc();
    // Questions that a disc does not answer are no failures.
    static_cast<void>(takeDriveMessages());
    return true;
}

std::vector<DriveMessage> GrabbedDrive::close(bool ejects)
{
    if (m_infos == nullptr)
        return {};
    return BurnControl::instance().call([this, ejects] {
        if (m_drive != nullptr)
            burn::burn_drive_release(m_drive, ejects ? 1 : 0);
        m_drive = nullptr;
        burn::burn_drive_info_free(m_infos);
        m_infos = nullptr;
        return takeDriveMessages();
    });
}

void GrabbedDrive::release(bool ejects)
{
    if (m_infos == nullptr)
        return;
    static_cast<void>(close(ejects));
    isDriveInUse = false;
}

NSError GrabbedDrive::lookAgain()
{
    static_cast<void>(close(false));
    NSError error = open();
    if (error)
        isDriveInUse = false;
    return error;
}

/// All that is asked of the drive; on the control thread.
void GrabbedDrive::describeDisc()
{
    m_disc = {};
    m_disc.state = stateOf(burn::burn_disc_get_status(m_drive));
    int profile = 0;
    std::array<char, 80> profileName{};
    if (burn::burn_disc_get_profile(m_drive, &profile, profileName.data()) > 0) {
        m_disc.profile = std::uint32_t(profile);
        m_disc.profileName = isFile() ? QStringLiteral("file") : QString::fromLatin1(profileName.data());
    }
    m_disc.family = discFamily(m_disc.profile);
    if (m_disc.state == DiscState::NoDisc || m_disc.state == DiscState::Unknown)
        return;
    m_disc.isErasable = burn::burn_disc_erasable(m_drive) != 0;
    m_disc.freeBlocks = std::uint64_t(burn::burn_disc_available_space(m_drive, nullptr)) / blockSize;
    burn::burn_multi_caps *capabilities = nullptr;
    if (burn::burn_disc_get_multi_caps(m_drive, burn::BURN_WRITE_NONE, &capabilities, 0) > 0) {
        m_disc.canSimulate = capabilities->might_simulate != 0;
        m_disc.canAppendLater = capabilities->multi_session != 0;
    }
    if (capabilities != nullptr)
        burn::burn_disc_free_multi_caps(&capabilities);
    describeSessions();
    describeSpeeds();
}

void GrabbedDrive::describeSessions()
{
    int number = 0;
    if (isFile()) {
        struct stat status = {};
        if (::fstat(m_file.get(), &status) == 0)
            m_disc.readableBlocks = std::uint64_t(status.st_size) / blockSize;
        return;
    }
    if (burn::burn_get_read_capacity(m_drive, &number, 0) > 0)
        m_disc.readableBlocks = std::uint64_t(std::max(number, 0));
    if (burn::burn_disc *const disc = burn::burn_drive_get_disc(m_drive)) {
        burn::burn_session **const sessions = burn::burn_disc_get_sessions(disc, &number);
        m_disc.sessions = std::uint32_t(std::max(number, 0));
        for (std::uint32_t session = 0; session < m_disc.sessions; ++session) {
            int count = 0;
            burn::burn_track **const tracks = burn::burn_session_get_tracks(sessions[session], &count);
            for (int track = 0; track < count; ++track)
                m_disc.tracks.push_back(descriptionOf(*tracks[track]));
        }
        burn::burn_disc_free(disc);
    }
    if (burn::burn_disc_get_msc1(m_drive, &number) > 0)
        m_disc.lastSession = std::uint64_t(std::max(number, 0));
    if (m_disc.state == DiscState::Appendable) {
        int start = 0;
        if (burn::burn_disc_track_lba_nwa(m_drive, nullptr, 0, &start, &number) == 1)
            m_disc.nextBlock = std::uint64_t(std::max(number, 0));
        m_disc.damage = std::uint32_t(burn::burn_disc_next_track_is_damaged(m_drive, 0));
    }
    char *productId = nullptr;
    char *code1 = nullptr;
    char *code2 = nullptr;
    char *bookType = nullptr;
    if (burn::burn_disc_get_media_id(m_drive, &productId, &code1, &code2, &bookType, 0) > 0)
        m_disc.makerCode = QString::fromLatin1(productId);
    for (char *const text : {productId, code1, code2, bookType})
        std::free(text);
}

void GrabbedDrive::describeSpeeds()
{
    burn::burn_speed_descriptor *list = nullptr;
    if (burn::burn_drive_get_speedlist(m_drive, &list) <= 0)
        return;
    for (const burn::burn_speed_descriptor *speed = list; speed != nullptr; speed = speed->next) {
        if (speed->write_speed > 0)
            m_disc.writeSpeeds.push_back(std::uint32_t(speed->write_speed));
    }
    burn::burn_drive_free_speedlist(&list);
    std::sort(m_disc.writeSpeeds.begin(), m_disc.writeSpeeds.end());
    m_disc.writeSpeeds.erase(std::unique(m_disc.writeSpeeds.begin(), m_disc.writeSpeeds.end()),
                             m_disc.writeSpeeds.end());
}

NSError GrabbedDrive::readBlocks(std::uint64_t first, std::uint32_t count, char *out)
{
    std::vector<DriveMessage> messages;
    const bool isRead = BurnControl::instance().call([&] {
        off_t got = 0;
        const off_t wanted = off_t(count) * off_t(blockSize);
        const bool isWell = m_drive != nullptr
            && burn::burn_read_data(m_drive, off_t(first * blockSize), out, wanted, &got, 0) > 0 && got == wanted;
        messages = takeDriveMessages();
        return isWell;
    });
    if (isRead)
        return {};
    return burnError(
        ioErr,
        QStringLiteral("block %1 of the disc in %2 cannot be read%3")
            .arg(first)
            .arg(name(),
                 messages.empty() ? QString() : QStringLiteral(" (%1)").arg(messages.front().text.simplified())));
}

NSError GrabbedDrive::overwriteBlocks(std::uint64_t first, std::span<const std::uint8_t> bytes)
{
    const auto offset = off_t(first * blockSize);
    if (isFile()) {
        if (::lseek(m_file.get(), offset, SEEK_SET) < 0)
            return burnOutputError(errno, name());
        const int failure = writeFully(m_file.get(), bytes.data(), bytes.size());
        return failure == 0 ? NSError() : burnOutputError(failure, name());
    }
    std::vector<std::uint8_t> written(bytes.begin(), bytes.end()); // the library takes what it may write into
    std::vector<DriveMessage> messages;
    const bool isWritten = BurnControl::instance().call([&] {
        static_cast<void>(takeDriveMessages());
        constexpr int waitsUntilWritten = 1;
        const bool isWell = m_drive != nullptr
            && burn::burn_random_access_write(m_drive, offset, reinterpret_cast<char *>(written.data()),
                                              off_t(written.size()), waitsUntilWritten)
                == 1;
        messages = takeDriveMessages();
        return isWell;
    });
    return isWritten ? NSError() : driveError(driveFault(messages), messages, name());
}

NSError GrabbedDrive::readSound(std::int64_t first, std::uint32_t count, char *out)
{
    std::vector<DriveMessage> messages;
    const bool isRead = BurnControl::instance().call([&] {
        off_t got = 0;
        const off_t wanted = off_t(count) * off_t(soundSize);
        const bool isWell =
            m_drive != nullptr && burn::burn_read_audio(m_drive, int(first), out, wanted, &got, 0) > 0 && got == wanted;
        messages = takeDriveMessages();
        return isWell;
    });
    if (isRead)
        return {};
    return burnError(ioErr, QStringLiteral("sector %1 of the disc in %2 cannot be read").arg(first).arg(name()));
}

} // namespace Tessaron
