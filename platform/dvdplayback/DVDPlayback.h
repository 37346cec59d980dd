#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/dvdplayback/DVDDescription.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"

#include <QRectF>
#include <QString>

#include <cstdint>

namespace Tessaron
{

// The playback of DVD-Video discs: one session for a process, and one for all processes of a user. A session reads and
// decodes in a helper process without network and without write access, so that no disc can take the caller down: a
// helper that ends is event 24 and the fatal-error callback, and media is closed then.
//
// Every call returns 0 or one of the codes below. Any thread may call; calls are carried out one after the other. Those
// that the helper has to answer wait for the disc, which takes moments, and longer only where a drive spins up or tries
// a bad sector again and again: opening fails after a minute, anything else after 20 seconds. Outputs are left alone on
// failure unless said otherwise.

inline constexpr OSStatus kDVDErrorUnknown = -70001; ///< something that no other code says; the log has the words
inline constexpr OSStatus kDVDErrorInitializingLib =
    -70002; ///< another session is held, by this process or another one
inline constexpr OSStatus kDVDErrorUninitializedLib = -70003; ///< there is no session
inline constexpr OSStatus kDVDErrorUserActionNoOp =
    -70011; ///< cannot be done where the disc is now, or the disc forbids it
inline constexpr OSStatus kDVDErrorMissingDrive = -70012; ///< the media is in no drive that tells its region
inline constexpr OSStatus kDVDErrorNoValidMedia =
    -70015; ///< no media is open, or what is there is not a DVD-Video disc
inline constexpr OSStatus kDVDErrorWrongParam = -70016; ///< an argument makes no sense, as a bookmark of another disc
inline constexpr OSStatus kDVDErrorPlaybackOpen = -70019; ///< the media cannot be read, or the helper does not run
/// The drive's region and those of the disc exclude each other, as they always do where the drive has none set.
inline constexpr OSStatus kDVDErrordRegionCodeUninitialized = -70024;
inline constexpr OSStatus kDVDErrorEncryptedMedia =
    -70190; ///< the contents are scrambled, and are not unscrambled here
inline constexpr OSStatus kDVDErrorDamagedMedia =
    -70191; ///< the disc's tables make no sense; the helper ended over them

/// What happened; value 1 and value 2 of each behind it.
enum DVDEventCode : std::uint32_t {
    kDVDEventTitle = 1, ///< the number of the title that plays
    kDVDEventPTT = 2, ///< the number of the chapter that plays
    kDVDEventDisplayMode = 7, ///< the aspect ratio, a DVDAspectRatio
    kDVDEventPlayback = 11, ///< a DVDState
    kDVDEventVideoStandard = 12, ///< a DVDFormat
    kDVDEventTitleTime = 20, ///< milliseconds from the title's begin; its length in milliseconds
    kDVDEventError = 24, ///< a status of the list above, as unsigned
};

enum DVDState : std::uint32_t {
    kDVDStateUnknown = 0,
    kDVDStatePlaying = 1,
    kDVDStatePlayingStill = 2,
    kDVDStatePaused = 3,
    kDVDStateStopped = 4,
    kDVDStateScanning = 5,
    kDVDStateIdle = 6,
};

enum DVDAspectRatio : std::int16_t {
    kDVDAspectRatioUninitialized = 0,
    kDVDAspectRatio4x3 = 1,
    kDVDAspectRatio4x3PanAndScan = 2,
    kDVDAspectRatio16x9 = 3,
    kDVDAspectRatioLetterBox = 4,
};

enum DVDFormat : std::int16_t {
    kDVDFormatUninitialized = 0,
    kDVDFormatNTSC = 1,
    kDVDFormatPAL = 2,
};

enum DVDMenuCode : std::uint32_t {
    kDVDMenuTitle = 0,
    kDVDMenuRoot = 1,
    kDVDMenuSubPicture = 2,
    kDVDMenuAudio = 3,
    kDVDMenuAngle = 4,
    kDVDMenuPTT = 5,
};

enum DVDUserNavigation : std::uint32_t {
    kDVDUserNavigationMoveUp = 1,
    kDVDUserNavigationMoveDown = 2,
    kDVDUserNavigationMoveLeft = 3,
    kDVDUserNavigationMoveRight = 4,
    kDVDUserNavigationEnter = 5,
};

enum DVDScanDirection : std::int8_t {
    kDVDScanDirectionForward = 0,
    kDVDScanDirectionBackward = 1,
};

/// A point of the video window, from the top left of its frame.
struct DVDPoint {
    std::int16_t vertical = 0;
    std::int16_t horizontal = 0;
};

/// A rectangle of the video window, in points from the top left of its frame.
struct DVDRect {
    std::int16_t top = 0;
    std::int16_t left = 0;
    std::int16_t bottom = 0;
    std::int16_t right = 0;
};

/// Called on a thread of the session, never under a lock; may call everything below but DVDDispose().
using DVDEventCallBack = void (*)(std::uint32_t code, std::uint32_t value1, std::uint32_t value2, void *reference);
using DVDFatalErrorCallBack = void (*)(OSStatus error, void *reference);

// The session.

/// Begins the session; kDVDErrorInitializingLib while one is held anywhere, by another process of the user too.
TESSARON_EXPORT OSStatus DVDInitialize();
/// Closes media, ends the session. No callback runs when this has returned. kDVDErrorWrongParam inside a callback.
TESSARON_EXPORT OSStatus DVDDispose();
/// Calls back for each of the `count` event codes; codes that never come are allowed. `*identifier` is not 0.
TESSARON_EXPORT OSStatus DVDRegisterEventCallBack(DVDEventCallBack callBack, const std::uint32_t *codes,
                                                  std::uint32_t count, void *reference, std::uint32_t *identifier);
/// No callback of that registration runs when this has returned, unless it is called inside of one.
TESSARON_EXPORT OSStatus DVDUnregisterEventCallBack(std::uint32_t identifier);
/// The one function that is told when playing cannot go on; null for none. The one before does not run when this has
/// returned, unless it is called inside of it.
TESSARON_EXPORT OSStatus DVDSetFatalErrorCallBack(DVDFatalErrorCallBack callBack, void *reference);
/// How often kDVDEventTitleTime comes, milliseconds; 900 at first.
TESSARON_EXPORT OSStatus DVDSetTimeEventRate(std::uint32_t milliseconds);
/// Around a sleep of the machine: playing is paused, also where the disc forbids that to users, and goes on where it
/// was.
TESSARON_EXPORT OSStatus DVDSleep();
TESSARON_EXPORT OSStatus DVDWakeUp();

// Media.

/// Whether a folder VIDEO_TS (or the one that holds it), an image or a device can be opened. An answer of false is no
/// failure.
TESSARON_EXPORT OSStatus DVDIsValidMediaRef(const FSRef *media, bool *isValid);
/// Opens the disc of a mounted volume or an unmounted device, stopped. kDVDErrordRegionCodeUninitialized where regions
/// exclude each other, kDVDErrorEncryptedMedia for scrambled contents.
TESSARON_EXPORT OSStatus DVDOpenMediaVolume(const FSRef *volume);
/// The same for a folder VIDEO_TS, or the one that holds it, or for the file of an image.
TESSARON_EXPORT OSStatus DVDOpenMediaFile(const FSRef *file);
TESSARON_EXPORT OSStatus DVDCloseMediaVolume();
TESSARON_EXPORT OSStatus DVDCloseMediaFile();
TESSARON_EXPORT OSStatus DVDHasMedia(bool *hasMedia);
/// 8 bytes that are the same for every copy of the disc.
TESSARON_EXPORT OSStatus DVDGetMediaUniqueID(std::uint8_t *identifier);
/// A bit for each region, set where the disc prohibits it; bit 0 is region 1.
TESSARON_EXPORT OSStatus DVDGetDiscRegionCode(std::uint32_t *mask);
/// The same of the drive, 0xff where no region was ever set, and how often it can be set still. kDVDErrorMissingDrive
/// where media is not in a drive.
TESSARON_EXPORT OSStatus DVDGetDriveRegionCode(std::uint32_t *mask, std::int16_t *changesLeft);
/// Why playing the media that was opened last came to an end (event 24), or a call that answered
/// kDVDErrorDamagedMedia did, in words. Empty while it can be played.
TESSARON_EXPORT OSStatus DVDCopyMediaFailure(QString *why);
/// All that the disc says about itself.
TESSARON_EXPORT OSStatus DVDCopyDescription(DVDDescription *description);

// Playing.

/// Plays: from the disc's begin when it is stopped, or goes on.
TESSARON_EXPORT OSStatus DVDPlay();
TESSARON_EXPORT OSStatus DVDPause();
TESSARON_EXPORT OSStatus DVDStop();
/// True while pictures move or stand still by the disc's will, and while scanning.
TESSARON_EXPORT OSStatus DVDIsPlaying(bool *isPlaying);
TESSARON_EXPORT OSStatus DVDGetState(std::uint32_t *state);
/// Shows pictures `rate` times as fast (1, 2, 4, 8, 16 or 32), without sound, until playing is asked for.
TESSARON_EXPORT OSStatus DVDScan(std::int16_t rate, std::int8_t direction);
/// Plays a title from one of its chapters on; both from 1.
TESSARON_EXPORT OSStatus DVDSetChapter(std::uint16_t title, std::uint16_t chapter);
TESSARON_EXPORT OSStatus DVDPreviousChapter();
TESSARON_EXPORT OSStatus DVDNextChapter();
/// Pictures `times` times as slow (2, 4 or 8), without sound, until playing is asked for.
TESSARON_EXPORT OSStatus DVDPlaySlowly(std::int16_t times);
/// Pauses, and shows the next picture.
TESSARON_EXPORT OSStatus DVDStepFrame();
/// The title and chapter that play; 0 in menus.
TESSARON_EXPORT OSStatus DVDGetChapter(std::uint16_t *title, std::uint16_t *chapter);
/// Where in the title, and how long it is; milliseconds.
TESSARON_EXPORT OSStatus DVDGetTitleTime(std::uint32_t *elapsed, std::uint32_t *length);
/// Plays on at a time of the title, milliseconds; the video unit that holds it is found, which is a second at most.
TESSARON_EXPORT OSStatus DVDSetTitleTime(std::uint32_t elapsed);
TESSARON_EXPORT OSStatus DVDGetNumAngles(std::uint16_t *count);
/// From 1.
TESSARON_EXPORT OSStatus DVDGetAngle(std::uint16_t *angle);
TESSARON_EXPORT OSStatus DVDSetAngle(std::uint16_t angle);

// Menus. Points are those of the video window; `*button` is the button's index from 0, or -1 outside of all.

TESSARON_EXPORT OSStatus DVDIsOnMenu(bool *isOnMenu);
TESSARON_EXPORT OSStatus DVDGoToMenu(std::uint32_t menu);
/// Back from a menu to where the title was left.
TESSARON_EXPORT OSStatus DVDReturnToTitle();
TESSARON_EXPORT OSStatus DVDDoUserNavigation(std::uint32_t navigation);
/// Selects and activates the button under the point.
TESSARON_EXPORT OSStatus DVDDoMenuClick(const DVDPoint *point, std::int32_t *button);
/// Selects it only.
TESSARON_EXPORT OSStatus DVDDoMenuMouseOver(const DVDPoint *point, std::int32_t *button);

// Bookmarks: opaque bytes, of this disc only, that outlive the process.

/// The place that plays. Without a buffer, `*size` becomes the size that one needs; with one, of that size at least,
/// the size that was used.
TESSARON_EXPORT OSStatus DVDGetBookmark(void *buffer, std::uint32_t *size);
/// Plays from there on. kDVDErrorWrongParam for bytes that are not a bookmark, or one of another disc.
TESSARON_EXPORT OSStatus DVDGotoBookmark(const void *bookmark, std::uint32_t size);

// Sound.

/// 0, the volume now, 255.
TESSARON_EXPORT OSStatus DVDGetAudioVolumeInfo(std::uint16_t *minimum, std::uint16_t *volume, std::uint16_t *maximum);
TESSARON_EXPORT OSStatus DVDSetAudioVolume(std::int16_t volume);
TESSARON_EXPORT OSStatus DVDIsMuted(bool *isMuted);
TESSARON_EXPORT OSStatus DVDMute(bool isMuted);
/// Why nothing can be heard, in words of the system, where no device can be opened: the disc is played without sound
/// then. Empty while a device is open, or is being opened, which takes a moment once media is open.
TESSARON_EXPORT OSStatus DVDCopySoundFailure(QString *why);

// Streams of sound and of subtitles of the title that plays, counted from 1 as DVDCopyDescription() lists them with
// their languages. Streams cannot be chosen outside of titles.

TESSARON_EXPORT OSStatus DVDGetNumAudioStreams(std::uint16_t *count);
/// 0 where nothing is to be heard.
TESSARON_EXPORT OSStatus DVDGetAudioStream(std::uint16_t *stream);
/// Heard once what was read of the present one has been: half a second at most.
TESSARON_EXPORT OSStatus DVDSetAudioStream(std::uint16_t stream);
TESSARON_EXPORT OSStatus DVDGetNumSubPictureStreams(std::uint16_t *count);
/// 0 while no subtitles are shown.
TESSARON_EXPORT OSStatus DVDGetSubPictureStream(std::uint16_t *stream);
/// 0 for no subtitles.
TESSARON_EXPORT OSStatus DVDSetSubPictureStream(std::uint16_t stream);

// The picture.

/// Names the window that shows the video; 0 for none.
TESSARON_EXPORT OSStatus DVDSetVideoWindowID(std::uint32_t window);
/// Names the screen that the window is on, from 1. Each that a window can be on is supported; 0 stands for no screen.
TESSARON_EXPORT OSStatus DVDSwitchToDisplay(std::uint32_t display, bool *isSupported);
/// Where in the window's frame the video lies, for the points of menus.
TESSARON_EXPORT OSStatus DVDSetVideoBounds(const DVDRect *bounds);
TESSARON_EXPORT OSStatus DVDSetVideoCGBounds(const QRectF *bounds);
/// A DVDAspectRatio.
TESSARON_EXPORT OSStatus DVDGetAspectRatio(std::int16_t *ratio);
/// In samples: 720 by 480 or by 576, or less.
TESSARON_EXPORT OSStatus DVDGetNativeVideoSize(std::uint16_t *width, std::uint16_t *height);

} // namespace Tessaron
