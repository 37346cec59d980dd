#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// An optical drive of this computer, as the system describes it without touching the drive.
struct DriveDescription {
    QByteArray path; ///< device file, such as "/dev/sr0"
    QByteArray identity; ///< name below /dev/disk/by-id, which stays with the drive; empty where the system has none
    QString vendor;
    QString product;
    QString revision; ///< of its firmware
};

/// All optical drives, in the order of their device files. No drive is opened. The folders are those of the system
/// unless a test has others.
[[nodiscard]] TESSARON_EXPORT std::vector<DriveDescription>
allDrives(const QByteArray &blockDevices = "/sys/class/block", const QByteArray &identities = "/dev/disk/by-id");

/// What a drive says of the disc in it.
enum class DiscState : std::uint8_t {
    Unknown,
    NoDisc,
    Blank, ///< or overwriteable: it is written from its begin
    Appendable, ///< a session can be added
    Closed, ///< only to be read, or to be blanked
    Unsuitable, ///< neither read nor written here
};

/// The families of discs that differ in how they are written.
enum class DiscFamily : std::uint8_t {
    None,
    CDR,
    CDRW,
    DVDMinusR,
    DVDMinusRW, ///< sequential
    DVDPlusR,
    BDR,
    Overwritable, ///< DVD+RW, DVD-RAM, formatted DVD-RW, BD-RE
    ReadOnly, ///< pressed, or of a kind that is not written here
    File, ///< a regular file in the place of a drive
};

/// The family of an MMC profile; see DiscDescription::profile.
[[nodiscard]] TESSARON_EXPORT DiscFamily discFamily(std::uint32_t profile);
[[nodiscard]] TESSARON_EXPORT bool isCDFamily(DiscFamily family);
/// True when what is written takes the place of what is there: discs without sessions, and files.
[[nodiscard]] TESSARON_EXPORT bool isOverwritten(DiscFamily family);
/// True when a written disc of the family can be made empty again.
[[nodiscard]] TESSARON_EXPORT bool isRewritable(DiscFamily family);
/// How fast single speed is, in bytes a second; 0 for files.
[[nodiscard]] TESSARON_EXPORT std::uint32_t singleSpeed(std::uint32_t profile);

/// A track that is on a disc.
struct RecordedTrackDescription {
    std::uint32_t session = 1;
    std::uint32_t number = 1;
    std::int64_t firstBlock = 0; ///< its index 1
    std::uint64_t blocks = 0; ///< a CD's: with the two run-out blocks of a track that was written by itself
    bool isAudio = false;

    friend bool operator==(const RecordedTrackDescription &, const RecordedTrackDescription &) = default;
};

/// A disc in a drive, as it was when it was looked at.
struct DiscDescription {
    DiscState state = DiscState::Unknown;
    std::uint32_t profile = 0; ///< of MMC-5 table 89: 0x09 CD-R, 0x1B DVD+R …; 0xFFFF for a file
    QString profileName; ///< "CD-R", "DVD+RW" …, "file"
    DiscFamily family = DiscFamily::None;
    bool isErasable = false; ///< can be blanked, or formatted for a new begin
    bool canSimulate = false;
    bool canAppendLater = false; ///< a session can be written so that others may follow
    std::uint64_t freeBlocks = 0; ///< of 2048 bytes (of a CD: sectors), for one session of one track
    std::uint32_t sessions = 0; ///< whole ones on the disc
    std::vector<RecordedTrackDescription> tracks; ///< of these
    std::optional<std::uint64_t> lastSession; ///< first block of the last session's first track, where there is one
    std::optional<std::uint64_t> nextBlock; ///< where the next session would begin
    std::uint64_t readableBlocks = 0; ///< up to the end of what can be read
    std::vector<std::uint32_t> writeSpeeds; ///< thousands of bytes a second, ascending; empty where none are known
    QString makerCode; ///< what the disc says of its maker and kind; may be empty
    std::uint32_t damage = 0; ///< 1: the next track is damaged and must be closed first; 2, 3: it cannot be written
};

} // namespace Tessaron
