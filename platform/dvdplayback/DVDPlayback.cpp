#include "platform/dvdplayback/DVDPlayback.h"

#include "platform/dvdplayback/DVDBookmarkBytes.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/dvdplayback/DVDVideoFrames.h"
#include "platform/dvdplayback/MessageBytes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::uint16_t loudest = 255;
constexpr std::array<std::int16_t, 6> scanRates = {1, 2, 4, 8, 16, 32};
/// Of the plane that buttons lie on, whatever size the pictures have.
constexpr double menuWidth = 720, menuHeightOfNTSC = 480, menuHeightOfPAL = 576;

DVDSession &session()
{
    return DVDSession::instance();
}

/// Why there is no state to answer from.
OSStatus withoutMedia()
{
    return session().hasBegun() ? kDVDErrorNoValidMedia : kDVDErrorUninitializedLib;
}

/// Sets `*output` to what the function takes out of the state.
template <typename Output, typename Function>
OSStatus answer(Output *output, const Function &function)
{
    if (!output)
        return kDVDErrorWrongParam;
    const std::optional<PlayerState> state = session().state();
    if (!state)
        return withoutMedia();
    *output = static_cast<Output>(function(*state));
    return noErr;
}

template <typename... Values>
QByteArray payload(Values... values)
{
    MessageWriter writer;
    (writer.add(values), ...);
    return writer.bytes();
}

QByteArray pathOf(const FSRef *ref)
{
    std::array<char, 8192> path;
    if (!ref || FSRefMakePath(ref, path.data(), std::uint32_t(path.size())) != noErr)
        return {};
    return QByteArray(path.data());
}

OSStatus openMedia(const FSRef *ref)
{
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    const QByteArray path = pathOf(ref);
    return path.isEmpty() ? kDVDErrorNoValidMedia : session().openMedia(path);
}

/// The button under a point of the window; -1 outside of all.
OSStatus pointAt(const DVDPoint *point, bool activates, std::int32_t *button)
{
    if (!point || !button)
        return kDVDErrorWrongParam;
    const std::optional<PlayerState> state = session().state();
    if (!state)
        return withoutMedia();
    const QRectF bounds = session().settings().bounds;
    *button = -1;
    // A mouse that moves over a film must not keep the disc busy.
    if (!state->isOnMenu || bounds.width() <= 0 || bounds.height() <= 0
        || !bounds.contains(QPointF(point->horizontal, point->vertical)))
        return noErr;
    const auto x = std::int32_t((point->horizontal - bounds.left()) * menuWidth / bounds.width());
    const double menuHeight = state->format == kDVDFormatPAL ? menuHeightOfPAL : menuHeightOfNTSC;
    const auto y = std::int32_t((point->vertical - bounds.top()) * menuHeight / bounds.height());
    QByteArray answer;
    const OSStatus status = session().ask(PlayerMessageKind::PointAt, payload(x, y, activates), &answer);
    if (status != noErr)
        return status;
    MessageReader reader(answer);
    const auto found = reader.take<std::int32_t>();
    if (reader.isAtEnd())
        *button = found;
    return noErr;
}

} // namespace

OSStatus DVDInitialize()
{
    return session().begin();
}

OSStatus DVDDispose()
{
    return session().end();
}

OSStatus DVDRegisterEventCallBack(DVDEventCallBack callBack, const std::uint32_t *codes, std::uint32_t count,
                                  void *reference, std::uint32_t *identifier)
{
    if (!callBack || !identifier || (!codes && count > 0))
        return kDVDErrorWrongParam;
    return session().addCallBack(callBack, std::set<std::uint32_t>(codes, codes + count), reference, identifier);
}

OSStatus DVDUnregisterEventCallBack(std::uint32_t identifier)
{
    return session().removeCallBack(identifier);
}

OSStatus DVDSetFatalErrorCallBack(DVDFatalErrorCallBack callBack, void *reference)
{
    return session().setFatalErrorCallBack(callBack, reference);
}

OSStatus DVDSetTimeEventRate(std::uint32_t milliseconds)
{
    return session().setTimeRate(milliseconds);
}

OSStatus DVDSleep()
{
    return session().sleep();
}

OSStatus DVDWakeUp()
{
    return session().wakeUp();
}

OSStatus DVDIsValidMediaRef(const FSRef *media, bool *isValid)
{
    if (!media || !isValid)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    const QByteArray path = pathOf(media);
    const Result<DVDDescription> description =
        path.isEmpty() ? Result<DVDDescription>(NSError(DVDErrorDomain, kDVDErrorNoValidMedia)) : describeDVD(path, {});
    // That the helper cannot be started says nothing about the media.
    *isValid = description.hasValue();
    return description.hasValue() || description.error().code() != kDVDErrorPlaybackOpen ? noErr
                                                                                         : kDVDErrorPlaybackOpen;
}

OSStatus DVDOpenMediaVolume(const FSRef *volume)
{
    return openMedia(volume);
}

OSStatus DVDOpenMediaFile(const FSRef *file)
{
    return openMedia(file);
}

OSStatus DVDCloseMediaVolume()
{
    return session().closeMedia();
}

OSStatus DVDCloseMediaFile()
{
    return session().closeMedia();
}

OSStatus DVDHasMedia(bool *hasMedia)
{
    if (!hasMedia)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    *hasMedia = session().hasMedia();
    return noErr;
}

OSStatus DVDGetMediaUniqueID(std::uint8_t *identifier)
{
    if (!identifier)
        return kDVDErrorWrongParam;
    const std::optional<DVDDescription> description = session().description();
    if (!description)
        return withoutMedia();
    std::memcpy(identifier, description->identity.constData(), std::size_t(description->identity.size()));
    return noErr;
}

OSStatus DVDGetDiscRegionCode(std::uint32_t *mask)
{
    if (!mask)
        return kDVDErrorWrongParam;
    const std::optional<DVDDescription> description = session().description();
    if (!description)
        return withoutMedia();
    *mask = description->prohibitedRegions;
    return noErr;
}

OSStatus DVDGetDriveRegionCode(std::uint32_t *mask, std::int16_t *changesLeft)
{
    if (!mask || !changesLeft)
        return kDVDErrorWrongParam;
    const std::optional<DVDDescription> description = session().description();
    if (!description)
        return withoutMedia();
    if (!description->drive)
        return kDVDErrorMissingDrive;
    *mask = description->drive->prohibited;
    *changesLeft = description->drive->changesLeft;
    return noErr;
}

OSStatus DVDCopyMediaFailure(QString *why)
{
    if (!why)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    *why = session().mediaFailure();
    return noErr;
}

OSStatus DVDCopyDescription(DVDDescription *description)
{
    if (!description)
        return kDVDErrorWrongParam;
    std::optional<DVDDescription> known = session().description();
    if (!known)
        return withoutMedia();
    *description = *std::move(known);
    return noErr;
}

OSStatus DVDPlay()
{
    return session().ask(PlayerMessageKind::Play);
}

OSStatus DVDPause()
{
    return session().ask(PlayerMessageKind::Pause);
}

OSStatus DVDStop()
{
    return session().ask(PlayerMessageKind::Stop);
}

OSStatus DVDIsPlaying(bool *isPlaying)
{
    return answer(isPlaying, [](const PlayerState &state) {
        return state.playback == kDVDStatePlaying || state.playback == kDVDStatePlayingStill
            || state.playback == kDVDStateScanning;
    });
}

OSStatus DVDGetState(std::uint32_t *state)
{
    return answer(state, [](const PlayerState &now) { return now.playback; });
}

OSStatus DVDScan(std::int16_t rate, std::int8_t direction)
{
    if (std::find(scanRates.begin(), scanRates.end(), rate) == scanRates.end()
        || (direction != kDVDScanDirectionForward && direction != kDVDScanDirectionBackward))
        return kDVDErrorWrongParam;
    return session().ask(PlayerMessageKind::Scan, payload(rate, direction));
}

OSStatus DVDSetChapter(std::uint16_t title, std::uint16_t chapter)
{
    return session().ask(PlayerMessageKind::SetChapter, payload(title, chapter));
}

OSStatus DVDPreviousChapter()
{
    return session().ask(PlayerMessageKind::PreviousChapter);
}

OSStatus DVDNextChapter()
{
    return session().ask(PlayerMessageKind::NextChapter);
}

OSStatus DVDPlaySlowly(std::int16_t times)
{
    if (times != 2 && times != 4 && times != 8)
        return kDVDErrorWrongParam;
    return session().ask(PlayerMessageKind::PlaySlowly, payload(times));
}

OSStatus DVDStepFrame()
{
    return session().ask(PlayerMessageKind::StepFrame);
}

OSStatus DVDGetChapter(std::uint16_t *title, std::uint16_t *chapter)
{
    if (!chapter)
        return kDVDErrorWrongParam;
    return answer(title, [chapter](const PlayerState &state) {
        *chapter = state.chapter;
        return state.title;
    });
}

OSStatus DVDGetTitleTime(std::uint32_t *elapsed, std::uint32_t *length)
{
    if (!length)
        return kDVDErrorWrongParam;
    return answer(elapsed, [length](const PlayerState &state) {
        *length = state.length;
        return state.elapsed;
    });
}

OSStatus DVDSetTitleTime(std::uint32_t elapsed)
{
    return session().ask(PlayerMessageKind::GoToTime, payload(elapsed));
}

OSStatus DVDGetNumAngles(std::uint16_t *count)
{
    return answer(count, [](const PlayerState &state) { return state.angles; });
}

OSStatus DVDGetAngle(std::uint16_t *angle)
{
    return answer(angle, [](const PlayerState &state) { return state.angle; });
}

OSStatus DVDSetAngle(std::uint16_t angle)
{
    return session().ask(PlayerMessageKind::SetAngle, payload(angle));
}

OSStatus DVDIsOnMenu(bool *isOnMenu)
{
    return answer(isOnMenu, [](const PlayerState &state) { return state.isOnMenu; });
}

OSStatus DVDGoToMenu(std::uint32_t menu)
{
    return session().ask(PlayerMessageKind::GoToMenu, payload(menu));
}

OSStatus DVDReturnToTitle()
{
    return session().ask(PlayerMessageKind::ReturnToTitle);
}

OSStatus DVDDoUserNavigation(std::uint32_t navigation)
{
    if (navigation < kDVDUserNavigationMoveUp || navigation > kDVDUserNavigationEnter)
        return kDVDErrorWrongParam;
    return session().ask(PlayerMessageKind::Navigate, payload(navigation));
}

OSStatus DVDDoMenuClick(const DVDPoint *point, std::int32_t *button)
{
    return pointAt(point, true, button);
}

OSStatus DVDDoMenuMouseOver(const DVDPoint *point, std::int32_t *button)
{
    return pointAt(point, false, button);
}

OSStatus DVDGetBookmark(void *buffer, std::uint32_t *size)
{
    if (!size)
        return kDVDErrorWrongParam;
    const std::optional<PlayerState> state = session().state();
    const std::optional<DVDDescription> description = session().description();
    if (!state || !description)
        return withoutMedia();
    if (!buffer) {
        *size = std::uint32_t(bookmarkSize);
        return noErr;
    }
    if (*size < bookmarkSize)
        return kDVDErrorWrongParam;
    if (state->place.title == 0)
        return kDVDErrorUserActionNoOp;
    const QByteArray bytes = bookmarkBytes(description->identity, state->place);
    std::memcpy(buffer, bytes.constData(), bookmarkSize);
    *size = std::uint32_t(bookmarkSize);
    return noErr;
}

OSStatus DVDGotoBookmark(const void *bookmark, std::uint32_t size)
{
    const std::optional<DVDDescription> description = session().description();
    if (!description)
        return withoutMedia();
    if (!bookmark || size < bookmarkSize)
        return kDVDErrorWrongParam;
    const std::optional<PlayerPlace> place = placeOfBookmark(
        QByteArray(static_cast<const char *>(bookmark), qsizetype(bookmarkSize)), description->identity);
    return place ? session().ask(PlayerMessageKind::GoToPlace, encodedPlace(*place)) : kDVDErrorWrongParam;
}

OSStatus DVDGetAudioVolumeInfo(std::uint16_t *minimum, std::uint16_t *volume, std::uint16_t *maximum)
{
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    if (minimum)
        *minimum = 0;
    if (volume)
        *volume = session().settings().volume;
    if (maximum)
        *maximum = loudest;
    return noErr;
}

OSStatus DVDSetAudioVolume(std::int16_t volume)
{
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    if (volume < 0 || volume > loudest)
        return kDVDErrorWrongParam;
    session().setSettings([&](DVDSession::Settings *settings) { settings->volume = std::uint16_t(volume); });
    return noErr;
}

OSStatus DVDIsMuted(bool *isMuted)
{
    if (!isMuted)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    *isMuted = session().settings().isMuted;
    return noErr;
}

OSStatus DVDMute(bool isMuted)
{
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    session().setSettings([&](DVDSession::Settings *settings) { settings->isMuted = isMuted; });
    return noErr;
}

OSStatus DVDCopySoundFailure(QString *why)
{
    if (!why)
        return kDVDErrorWrongParam;
    if (!session().hasMedia())
        return withoutMedia();
    *why = session().soundFailure();
    return noErr;
}

OSStatus DVDGetNumAudioStreams(std::uint16_t *count)
{
    return answer(count, [](const PlayerState &state) { return state.soundStreams; });
}

OSStatus DVDGetAudioStream(std::uint16_t *stream)
{
    return answer(stream, [](const PlayerState &state) { return state.soundStream; });
}

OSStatus DVDSetAudioStream(std::uint16_t stream)
{
    return session().ask(PlayerMessageKind::SetSoundStream, payload(stream));
}

OSStatus DVDGetNumSubPictureStreams(std::uint16_t *count)
{
    return answer(count, [](const PlayerState &state) { return state.subtitleStreams; });
}

OSStatus DVDGetSubPictureStream(std::uint16_t *stream)
{
    return answer(stream, [](const PlayerState &state) { return state.subtitleStream; });
}

OSStatus DVDSetSubPictureStream(std::uint16_t stream)
{
    return session().ask(PlayerMessageKind::SetSubtitleStream, payload(stream));
}

OSStatus DVDSetVideoWindowID(std::uint32_t window)
{
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    session().setSettings([&](DVDSession::Settings *settings) { settings->window = window; });
    return noErr;
}

OSStatus DVDSwitchToDisplay(std::uint32_t display, bool *isSupported)
{
    if (!isSupported)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    // Pictures are memory that a window draws: any screen that a window can be on will do.
    session().setSettings([&](DVDSession::Settings *settings) {
        *isSupported = display != 0 && settings->unsupportedDisplay != display;
        if (*isSupported)
            settings->display = display;
    });
    return noErr;
}

OSStatus DVDSetVideoBounds(const DVDRect *bounds)
{
    if (!bounds)
        return kDVDErrorWrongParam;
    const QRectF rectangle(QPointF(bounds->left, bounds->top), QPointF(bounds->right, bounds->bottom));
    return DVDSetVideoCGBounds(&rectangle);
}

OSStatus DVDSetVideoCGBounds(const QRectF *bounds)
{
    if (!bounds)
        return kDVDErrorWrongParam;
    if (!session().hasBegun())
        return kDVDErrorUninitializedLib;
    session().setSettings([&](DVDSession::Settings *settings) { settings->bounds = *bounds; });
    return noErr;
}

OSStatus DVDGetAspectRatio(std::int16_t *ratio)
{
    return answer(ratio, [](const PlayerState &state) { return state.aspect; });
}

OSStatus DVDGetNativeVideoSize(std::uint16_t *width, std::uint16_t *height)
{
    if (!height)
        return kDVDErrorWrongParam;
    return answer(width, [height](const PlayerState &state) {
        *height = state.height;
        return state.width;
    });
}

bool takeDVDFrame(QImage *image)
{
    return session().takeFrame(image);
}

void setDVDFrameHearer(std::function<void()> hearer)
{
    session().setFrameHearer(std::move(hearer));
}

} // namespace Tessaron
