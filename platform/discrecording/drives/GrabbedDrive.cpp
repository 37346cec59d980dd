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
#include <mutex>
#include <optional>
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

/// True while a drive is open in this process, or was given up and not let go of yet.
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

void describeFile(const UniqueDescriptor &file, DiscDescription *description)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) == 0)
        description->readableBlocks = std::uint64_t(status.st_size) / blockSize;
}

void describeSessions(burn::burn_drive *drive, DiscDescription *description)
{
    int number = 0;
    if (burn::burn_get_read_capacity(drive, &number, 0) > 0)
        description->readableBlocks = std::uint64_t(std::max(number, 0));
    if (burn::burn_disc *const disc = burn::burn_drive_get_disc(drive)) {
        burn::burn_session **const sessions = burn::burn_disc_get_sessions(disc, &number);
        description->sessions = std::uint32_t(std::max(number, 0));
        for (std::uint32_t session = 0; session < description->sessions; ++session) {
            int count = 0;
            burn::burn_track **const tracks = burn::burn_session_get_tracks(sessions[session], &count);
            for (int track = 0; track < count; ++track)
                description->tracks.push_back(descriptionOf(*tracks[track]));
        }
        burn::burn_disc_free(disc);
    }
    if (burn::burn_disc_get_msc1(drive, &number) > 0)
        description->lastSession = std::uint64_t(std::max(number, 0));
    if (description->state == DiscState::Appendable) {
        int start = 0;
        if (burn::burn_disc_track_lba_nwa(drive, nullptr, 0, &start, &number) == 1)
            description->nextBlock = std::uint64_t(std::max(number, 0));
        description->damage = std::uint32_t(burn::burn_disc_next_track_is_damaged(drive, 0));
    }
    char *productId = nullptr;
    char *code1 = nullptr;
    char *code2 = nullptr;
    char *bookType = nullptr;
    if (burn::burn_disc_get_media_id(drive, &productId, &code1, &code2, &bookType, 0) > 0)
        description->makerCode = QString::fromLatin1(productId);
    for (char *const text : {productId, code1, code2, bookType})
        std::free(text);
}

void describeSpeeds(burn::burn_drive *drive, DiscDescription *description)
{
    burn::burn_speed_descriptor *list = nullptr;
    if (burn::burn_drive_get_speedlist(drive, &list) <= 0)
        return;
    for (const burn::burn_speed_descriptor *speed = list; speed != nullptr; speed = speed->next) {
        if (speed->write_speed > 0)
            description->writeSpeeds.push_back(std::uint32_t(speed->write_speed));
    }
    burn::burn_drive_free_speedlist(&list);
    std::sort(description->writeSpeeds.begin(), description->writeSpeeds.end());
    description->writeSpeeds.erase(std::unique(description->writeSpeeds.begin(), description->writeSpeeds.end()),
                                   description->writeSpeeds.end());
}

/// All that is asked of the drive, or of the file in its place, where that is not null; on the control thread.
DiscDescription describeDisc(burn::burn_drive *drive, const UniqueDescriptor *file)
{
    DiscDescription description;
    description.state = stateOf(burn::burn_disc_get_status(drive));
    int profile = 0;
    std::array<char, 80> profileName{};
    if (burn::burn_disc_get_profile(drive, &profile, profileName.data()) > 0) {
        description.profile = std::uint32_t(profile);
        description.profileName = file != nullptr ? QStringLiteral("file") : QString::fromLatin1(profileName.data());
    }
    description.family = discFamily(description.profile);
    if (description.state == DiscState::NoDisc || description.state == DiscState::Unknown)
        return description;
    description.isErasable = burn::burn_disc_erasable(drive) != 0;
    description.freeBlocks = std::uint64_t(burn::burn_disc_available_space(drive, nullptr)) / blockSize;
    burn::burn_multi_caps *capabilities = nullptr;
    if (burn::burn_disc_get_multi_caps(drive, burn::BURN_WRITE_NONE, &capabilities, 0) > 0) {
        description.canSimulate = capabilities->might_simulate != 0;
        description.canAppendLater = capabilities->multi_session != 0;
    }
    if (capabilities != nullptr)
        burn::burn_disc_free_multi_caps(&capabilities);
    if (file != nullptr)
        describeFile(*file, &description);
    else
        describeSessions(drive, &description);
    describeSpeeds(drive, &description);
    return description;
}

/// Drives of which a thread of libburn did not let go in time.
struct BusyDrive {
    std::mutex mutex;
    burn::burn_drive_info *infos = nullptr; ///< null when there is no such drive
    burn::burn_drive *drive = nullptr;
};

BusyDrive &busyDrive()
{
    static BusyDrive one;
    return one;
}

} // namespace

/// What the control thread tells of an opening.
struct GrabbedDrive::Opening {
    Opened opened;
    DiscDescription disc;
    std::vector<DriveMessage> messages;
};

GrabbedDrive::GrabbedDrive(DriveAddress address, const DrivePatience &patience)
    : m_address(std::move(address))
    , m_patience(patience)
    , m_file(std::make_shared<UniqueDescriptor>())
{
}

/// A file that stands for a drive is opened by ourselves: libburn gets the descriptor, so that the file cannot be
/// exchanged for something else after it was looked at.
NSError GrabbedDrive::openFile(bool mayMakeFile)
{
    const char *const path = m_address.path.constData();
    const int flags = O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    m_file->reset(::open(path, flags));
    if (!*m_file && errno == ENOENT && mayMakeFile) {
        m_file->reset(::open(path, flags | O_CREAT | O_EXCL, 0666));
        m_isNewFile = m_file->isValid();
    }
    struct stat status = {};
    if (!*m_file || ::fstat(m_file->get(), &status) != 0)
        return burnOutputError(errno, stringWithFileSystemRepresentation(m_address.path));
    if (S_ISREG(status.st_mode))
        return {};
    return burnError(paramErr,
                     QStringLiteral("%1 is not a regular file and is not written to").arg(quoted(m_address.path)));
}

void GrabbedDrive::removeEmptyFile()
{
    struct stat status = {};
    if (std::exchange(m_isNewFile, false) && ::fstat(m_file->get(), &status) == 0 && status.st_size == 0)
        ::unlink(m_address.path.constData());
}

Result<std::unique_ptr<GrabbedDrive>> GrabbedDrive::grab(const DriveAddress &address, bool mayMakeFile,
                                                         const DrivePatience &patience)
{
    std::unique_ptr<GrabbedDrive> drive(new GrabbedDrive(address, patience));
    if (NSError error = drive->isFile() ? drive->openFile(mayMakeFile) : NSError())
        return error;
    if (isDriveInUse.exchange(true)) {
        if (NSError error = letBusyOneGo())
            return error;
    }
    if (NSError error = drive->open())
        return error;
    return drive;
}

GrabbedDrive::~GrabbedDrive()
{
    static_cast<void>(release(false));
    removeEmptyFile();
}

QString GrabbedDrive::name() const
{
    return isFile() ? quoted(m_address.path) : QStringLiteral("the drive %1").arg(quoted(m_address.shown));
}

void GrabbedDrive::letGo(const Opened &opened, bool ejects)
{
    if (opened.drive != nullptr)
        burn::burn_drive_release(opened.drive, ejects ? 1 : 0);
    if (opened.infos != nullptr)
        burn::burn_drive_info_free(opened.infos);
}

NSError GrabbedDrive::noAnswer() const
{
    return driveError(DriveFault::NoAnswer, {}, name());
}

/// Asks the open drive. The work owns what it uses; no value when the drive is given up.
template <typename Work>
auto GrabbedDrive::ask(Work work)
{
    auto answer = BurnControl::instance().callWithin(m_patience.atQuestion, std::move(work),
                                                     [opened = m_opened, file = m_file](const auto &) {
                                                         letGo(opened, false);
                                                         isDriveInUse = false;
                                                     });
    if (!answer)
        m_opened = {};
    return answer;
}

NSError GrabbedDrive::open()
{
    try {
        if (!BurnControl::instance().isReady()) {
            isDriveInUse = false;
            return burnError(ioErr, QStringLiteral("the library that writes discs does not work on this system"));
        }
        const std::optional<Opening> opening = BurnControl::instance().callWithin(
            m_patience.atOpening, [address = m_address, file = m_file] { return openOnControlThread(address, *file); },
            [file = m_file](const Opening &late) {
                letGo(late.opened, false);
                isDriveInUse = false;
            });
        if (!opening)
            return noAnswer();
        m_opened = opening->opened;
        m_disc = opening->disc;
        if (isOpen())
            return {};
        isDriveInUse = false;
        DriveFault fault = driveFault(opening->messages);
        if (fault == DriveFault::Unknown)
            fault = DriveFault::Absent;
        return driveError(fault, opening->messages, name());
    } catch (const std::system_error &) {
        isDriveInUse = false;
        return burnError(memFullErr, QStringLiteral("the system allows no further thread to use a drive with"),
                         QStringLiteral("Close other programs and try again."));
    }
}

GrabbedDrive::Opening GrabbedDrive::openOnControlThread(const DriveAddress &address, const UniqueDescriptor &file)
{
    // What is left of an earlier drive is not about this one.
    static_cast<void>(takeDriveMessages());
    const bool isFile = address.kind == DriveAddress::Kind::File;
    QByteArray path = isFile ? "stdio:/dev/fd/" + QByteArray::number(file.get()) : address.path;
    constexpr int takesTrayIn = 1;
    Opening opening;
    Opened &opened = opening.opened;
    const bool isOpened = path.size() < BURN_DRIVE_ADR_LEN
        && burn::burn_drive_scan_and_grab(&opened.infos, path.data(), takesTrayIn) == 1;
    opening.messages = takeDriveMessages();
    if (!isOpened) {
        opened = {};
        return opening;
    }
    opened.drive = opened.infos[0].drive;
    // Nothing but these two is ever opened, and this holds even where the library takes an address in another way.
    if ((burn::burn_drive_get_drive_role(opened.drive) == roleOfDrives) == isFile) {
        letGo(opened, false);
        opened = {};
        return opening;
    }
    opening.disc = describeDisc(opened.drive, isFile ? &file : nullptr);
    // Questions that a disc does not answer are not failures.
    static_cast<void>(takeDriveMessages());
    return opening;
}

/// The next drive can be opened then, unless this one did not answer.
NSError GrabbedDrive::close(bool ejects)
{
    if (m_opened.infos == nullptr)
        return {};
    const Opened opened = std::exchange(m_opened, {});
    const auto isClosed = BurnControl::instance().callWithin(
        m_patience.atQuestion,
        [opened, ejects, file = m_file] {
            letGo(opened, ejects);
            return true;
        },
        [](bool) { isDriveInUse = false; });
    return isClosed ? NSError() : noAnswer();
}

NSError GrabbedDrive::release(bool ejects)
{
    if (m_opened.infos == nullptr)
        return {};
    NSError error = close(ejects);
    if (!error)
        isDriveInUse = false;
    return error;
}

NSError GrabbedDrive::lookAgain()
{
    if (NSError error = close(false))
        return error;
    return open();
}

void GrabbedDrive::giveUpBusy()
{
    BusyDrive &busy = busyDrive();
    const std::lock_guard lock(busy.mutex);
    const Opened opened = std::exchange(m_opened, {});
    busy.infos = opened.infos;
    busy.drive = opened.drive;
}

/// Makes room for another drive where the one in use was given up and has come to an end since.
NSError GrabbedDrive::letBusyOneGo()
{
    BurnControl &control = BurnControl::instance();
    BusyDrive &busy = busyDrive();
    const std::lock_guard lock(busy.mutex);
    if (busy.infos == nullptr && !control.isStuck())
        return burnError(fBsyErr, QStringLiteral("this program is using a drive already"),
                         QStringLiteral("Wait until that is done."));
    NSError waiting =
        burnError(fBsyErr, QStringLiteral("a drive that this program was using has not answered yet"),
                  QStringLiteral("Look at its cable and its power, switch it off and on, then try again."));
    if (control.isStuck())
        return waiting;
    const bool isIdle = control.call([&busy] {
        burn::burn_progress progress{};
        if (burn::burn_drive_get_status(busy.drive, &progress) != burn::BURN_DRIVE_IDLE)
            return false;
        letGo({busy.infos, busy.drive}, false);
        return true;
    });
    if (!isIdle)
        return waiting;
    busy.infos = nullptr;
    busy.drive = nullptr;
    return {};
}

GrabbedDrive::Reading GrabbedDrive::read(std::size_t length, char *out, const ReadingFunction &reading)
{
    if (!isOpen())
        return {};
    struct Answer {
        Reading reading;
        std::vector<char> bytes;
    };
    // Into memory of its own: a reading that is given up must not write into the caller's.
    const auto answer = ask([drive = m_opened.drive, length, reading] {
        Answer made;
        made.bytes.resize(length);
        off_t got = 0;
        made.reading.isWell = reading(drive, made.bytes.data(), off_t(length), &got) > 0 && got == off_t(length);
        made.reading.messages = takeDriveMessages();
        return made;
    });
    if (!answer)
        return {false, true, {}};
    if (answer->reading.isWell)
        std::memcpy(out, answer->bytes.data(), length);
    return answer->reading;
}

NSError GrabbedDrive::readBlocks(std::uint64_t first, std::uint32_t count, char *out)
{
    const Reading reading =
        read(std::size_t(count) * blockSize, out, [first](burn::burn_drive *drive, char *to, off_t length, off_t *got) {
            return burn::burn_read_data(drive, off_t(first * blockSize), to, length, got, 0);
        });
    if (reading.isWell)
        return {};
    if (reading.isGivenUp)
        return noAnswer();
    const std::vector<DriveMessage> &messages = reading.messages;
    return burnError(
        ioErr,
        QStringLiteral("block %1 of the disc in %2 cannot be read%3")
            .arg(first)
            .arg(name(),
                 messages.empty() ? QString() : QStringLiteral(" (%1)").arg(messages.front().text.simplified())));
}

NSError GrabbedDrive::readSound(std::int64_t first, std::uint32_t count, char *out)
{
    const Reading reading =
        read(std::size_t(count) * soundSize, out, [first](burn::burn_drive *drive, char *to, off_t length, off_t *got) {
            return burn::burn_read_audio(drive, int(first), to, length, got, 0);
        });
    if (reading.isWell)
        return {};
    if (reading.isGivenUp)
        return noAnswer();
    return burnError(ioErr, QStringLiteral("sector %1 of the disc in %2 cannot be read").arg(first).arg(name()));
}

NSError GrabbedDrive::overwriteBlocks(std::uint64_t first, std::span<const std::uint8_t> bytes)
{
    const auto offset = off_t(first * blockSize);
    if (isFile()) {
        if (::lseek(m_file->get(), offset, SEEK_SET) < 0)
            return burnOutputError(errno, name());
        const int failure = writeFully(m_file->get(), bytes.data(), bytes.size());
        return failure == 0 ? NSError() : burnOutputError(failure, name());
    }
    if (!isOpen())
        return driveError(DriveFault::Gone, {}, name());
    struct Answer {
        bool isWell = false;
        std::vector<DriveMessage> messages;
    };
    // The library takes what it may write into.
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    const auto answer = ask([drive = m_opened.drive, offset, written = std::move(copy)]() mutable {
        static_cast<void>(takeDriveMessages());
        constexpr int waitsUntilWritten = 1;
        Answer made;
        made.isWell = burn::burn_random_access_write(drive, offset, reinterpret_cast<char *>(written.data()),
                                                     off_t(written.size()), waitsUntilWritten)
            == 1;
        made.messages = takeDriveMessages();
        return made;
    });
    if (!answer)
        return noAnswer();
    return answer->isWell ? NSError() : driveError(driveFault(answer->messages), answer->messages, name());
}

} // namespace Tessaron
