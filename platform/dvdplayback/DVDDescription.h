#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

// What a DVD-Video disc says about itself, as values. Names of fields are those of the disc's own tables (VMGI and
// VTSI) where these have one.

enum class DVDVideoStandard : std::uint8_t {
    NTSC, ///< 525 lines, 29.97 frames a second
    PAL, ///< 625 lines, 25 frames a second
};

/// How the pictures of a title, or of a title set's menus, are made.
struct DVDVideoFacts {
    DVDVideoStandard standard = DVDVideoStandard::NTSC;
    bool isWide = false; ///< 16:9; else 4:3
    std::uint16_t width = 720; ///< samples in a line
    std::uint16_t height = 480; ///< lines
    bool mayLetterbox = false; ///< on a 4:3 screen
    bool mayPanAndScan = false; ///< on a 4:3 screen

    friend bool operator==(const DVDVideoFacts &, const DVDVideoFacts &) = default;
};

enum class DVDAudioFormat : std::uint8_t { AC3, MPEG1, MPEG2, LPCM, DTS, SDDS, Unknown };

/// What a stream of sound or subtitles is for, where the disc says it.
enum class DVDStreamPurpose : std::uint8_t {
    Unstated,
    Normal,
    VisuallyImpaired,
    Comments,
    OtherComments,
    Large, ///< subtitles
    Children, ///< subtitles
    HardOfHearing, ///< subtitles
    Forced, ///< subtitles that are to be shown always
};

struct DVDAudioStream {
    DVDAudioFormat format = DVDAudioFormat::Unknown;
    std::uint8_t channels = 0;
    std::uint32_t sampleRate = 48'000; ///< samples a second
    std::uint8_t bitsPerSample = 0; ///< of LPCM; 0 where it does not apply
    QByteArray language; ///< two letters of ISO 639-1; empty where the disc does not say it
    DVDStreamPurpose purpose = DVDStreamPurpose::Unstated;

    friend bool operator==(const DVDAudioStream &, const DVDAudioStream &) = default;
};

struct DVDSubtitleStream {
    QByteArray language; ///< as above
    DVDStreamPurpose purpose = DVDStreamPurpose::Unstated;

    friend bool operator==(const DVDSubtitleStream &, const DVDSubtitleStream &) = default;
};

struct DVDChapter {
    std::chrono::milliseconds start{0}; ///< from the title's begin, along its first angle
    std::chrono::milliseconds length{0};

    friend bool operator==(const DVDChapter &, const DVDChapter &) = default;
};

struct DVDTitle {
    std::uint16_t number = 0; ///< from 1
    std::uint8_t titleSet = 0; ///< from 1
    std::uint8_t numberInSet = 0; ///< from 1
    std::chrono::milliseconds length{0};
    std::uint8_t angles = 1;
    DVDVideoFacts video;
    std::vector<DVDChapter> chapters;
    std::vector<DVDAudioStream> audio;
    std::vector<DVDSubtitleStream> subtitles;
    QString damage; ///< why something of it is not known; empty for a title that could be read whole

    friend bool operator==(const DVDTitle &, const DVDTitle &) = default;
};

enum class DVDMenuKind : std::uint8_t { Title, Root, Subtitle, Audio, Angle, Chapter };

struct DVDMenu {
    DVDMenuKind kind = DVDMenuKind::Title;
    std::uint8_t titleSet = 0; ///< 0 for the disc's own
    QByteArray language; ///< two letters of ISO 639-1

    friend bool operator==(const DVDMenu &, const DVDMenu &) = default;
};

/// The region that a drive is set to.
struct DVDDriveRegion {
    std::uint8_t prohibited = 0xff; ///< bit 0 is region 1; a set bit prohibits. 0xff: no region was ever set.
    std::int16_t changesLeft = -1; ///< how often it can be set; -1 where the drive does not tell

    friend bool operator==(const DVDDriveRegion &, const DVDDriveRegion &) = default;
};

struct DVDDescription {
    QByteArray identity; ///< 8 bytes, the same for every copy of the disc, made of its tables
    QString volumeName; ///< empty where there is no volume, as for a folder
    QString provider; ///< who made the disc, as it says; may be empty
    std::uint8_t prohibitedRegions = 0; ///< bit 0 is region 1; a set bit prohibits
    std::optional<DVDDriveRegion> drive; ///< absent where the disc is in no drive, or the drive does not tell
    bool isEncrypted = false; ///< parts of its contents are scrambled: they are never unscrambled here
    std::vector<DVDTitle> titles;
    std::vector<DVDMenu> menus;
    QStringList notes; ///< what was passed over while it was read, a sentence without the full stop each

    friend bool operator==(const DVDDescription &, const DVDDescription &) = default;
};

/// Domain of the errors about DVDs; the codes are those of DVDPlayback.h.
TESSARON_EXPORT extern const QString DVDErrorDomain;

/// What the disc at the path says about itself: a folder VIDEO_TS or the one that holds it, the file of a disc image,
/// or a device that need not be mounted. A helper process reads it, so that no disc can take this process down; a stop
/// ends that process at once. No playback session is needed or touched. An error of DVDErrorDomain says what is wrong
/// with the disc. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<DVDDescription> describeDVD(const QByteArray &path, const std::stop_token &stop);

} // namespace Tessaron
