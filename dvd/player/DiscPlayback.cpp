#include "dvd/player/DiscPlayback.h"

#include "dvd/player/PlayerTexts.h"

#include "platform/workspace/NSWorkspace.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

constexpr milliseconds timeRate(250);
/// A program that is killed loses this much of the place.
constexpr milliseconds timeBetweenPlaces(20'000);
/// A disc that is left that soon begins anew the next time.
constexpr milliseconds shortestPlace(5'000);
constexpr std::int16_t scanRate = 8;

constexpr std::array<std::uint32_t, 7> heardEvents = {kDVDEventTitle,    kDVDEventPTT,       kDVDEventDisplayMode,
                                                      kDVDEventPlayback, kDVDEventTitleTime, kDVDEventVideoStandard,
                                                      kDVDEventError};

/// A bookmark of the place that plays; empty while nothing does.
QByteArray bookmarkNow()
{
    std::uint32_t size = 0;
    if (DVDGetBookmark(nullptr, &size) != noErr)
        return {};
    QByteArray bookmark(qsizetype(size), '\0');
    return DVDGetBookmark(bookmark.data(), &size) == noErr ? bookmark.left(qsizetype(size)) : QByteArray();
}

/// With what the session says about the disc, where it does.
QString withMediaFailure(const QString &text)
{
    QString why;
    return DVDCopyMediaFailure(&why) == noErr && !why.isEmpty() ? QStringLiteral("%1: %2").arg(text, why) : text;
}

} // namespace

DiscPlayback::DiscPlayback(ResumeStore store)
    : m_store(std::move(store))
{
    m_placeTimer.setInterval(timeBetweenPlaces);
    connect(&m_placeTimer, &QTimer::timeout, this, &DiscPlayback::keepPlace);
    observeSleep();
}

DiscPlayback::~DiscPlayback()
{
    NSWorkspace::sharedWorkspace().notificationCenter().removeObserver(this);
    close();
}

/// The machine waits for the call, so it is made at once rather than behind those that wait.
void DiscPlayback::observeSleep()
{
    NSNotificationCenter &center = NSWorkspace::sharedWorkspace().notificationCenter();
    center.addObserver(this, NSWorkspaceWillSleepNotification, {}, [this](const NSNotification &) {
        keepPlace();
        static_cast<void>(DVDSleep());
    });
    center.addObserver(this, NSWorkspaceDidWakeNotification, {},
                       [](const NSNotification &) { static_cast<void>(DVDWakeUp()); });
}

void DiscPlayback::open(const QByteArray &path, const PlaybackStart &start)
{
    m_requests = std::make_unique<RequestThread>();
    if (const OSStatus status = DVDInitialize(); status != noErr) {
        m_queue.perform([this, status] {
            Opening opening;
            opening.status = status;
            opening.why = reasonForNotOpening(status, {});
            takeOpening(opening);
        });
        return;
    }
    m_hasSession = true;
    static_cast<void>(DVDRegisterEventCallBack(hearEvent, heardEvents.data(), std::uint32_t(heardEvents.size()), this,
                                               &m_registration));
    m_requests->perform([this, path, start] {
        const Opening opening = openDisc(path, start, m_store);
        m_queue.perform([this, opening] { takeOpening(opening); });
    });
}

DiscPlayback::Opening DiscPlayback::openDisc(const QByteArray &path, const PlaybackStart &start,
                                             const ResumeStore &store)
{
    Opening opening;
    FSRef ref;
    opening.status = FSPathMakeRef(path, &ref, nullptr);
    if (opening.status == noErr)
        opening.status = DVDOpenMediaFile(&ref);
    if (opening.status == noErr)
        opening.status = DVDCopyDescription(&opening.disc);
    if (opening.status != noErr) {
        opening.why = reasonForNotOpening(opening.status, path);
        return opening;
    }
    static_cast<void>(DVDSetTimeEventRate(std::uint32_t(timeRate.count())));
    if (start.title) {
        opening.status = DVDSetChapter(*start.title, start.chapter);
        if (opening.status != noErr)
            opening.why = withMediaFailure(
                playerText("the disc cannot play title %1 from chapter %2 on").arg(*start.title).arg(start.chapter));
        return opening;
    }
    const QByteArray bookmark = store.bookmarkOf(opening.disc.identity);
    opening.isResumed =
        !bookmark.isEmpty() && DVDGotoBookmark(bookmark.constData(), std::uint32_t(bookmark.size())) == noErr;
    if (!opening.isResumed) {
        opening.status = DVDPlay();
        if (opening.status != noErr)
            opening.why = withMediaFailure(reasonForStopping(opening.status));
    }
    return opening;
}

void DiscPlayback::takeOpening(const Opening &opening)
{
    if (opening.status != noErr) {
        Q_EMIT failedToOpen(opening.why);
        return;
    }
    m_disc = opening.disc;
    m_isOpen = true;
    m_placeTimer.start();
    refresh();
    keepPlace();
    Q_EMIT opened();
    Q_EMIT changed();
    if (opening.isResumed)
        Q_EMIT resumed(m_now.elapsed);
}

void DiscPlayback::close()
{
    if (!m_requests)
        return;
    m_placeTimer.stop();
    m_requests.reset();
    keepPlace();
    m_isOpen = false;
    m_queue.close();
    if (!std::exchange(m_hasSession, false))
        return;
    static_cast<void>(DVDUnregisterEventCallBack(m_registration));
    static_cast<void>(DVDDispose());
}

const DVDTitle *DiscPlayback::title() const
{
    return m_now.title >= 1 && m_now.title <= m_disc.titles.size() ? &m_disc.titles[std::size_t(m_now.title - 1)]
                                                                   : nullptr;
}

// What the disc tells.

/// On the session's thread.
void DiscPlayback::hearEvent(std::uint32_t code, std::uint32_t value1, std::uint32_t /*value2*/, void *reference)
{
    auto *const playback = static_cast<DiscPlayback *>(reference);
    playback->m_queue.perform([playback, code, value1] { playback->takeEvent(code, value1); });
}

void DiscPlayback::takeEvent(std::uint32_t code, std::uint32_t value1)
{
    if (!m_isOpen)
        return;
    if (code == kDVDEventError) {
        m_isOpen = false;
        m_placeTimer.stop();
        m_now = {};
        Q_EMIT changed();
        Q_EMIT failed(reasonForStopping(OSStatus(value1)));
        return;
    }
    const PlaybackNow before = m_now;
    refresh();
    if (m_now != before)
        Q_EMIT changed();
    if (QString why; !m_hasToldSilence && DVDCopySoundFailure(&why) == noErr && !why.isEmpty()) {
        m_hasToldSilence = true;
        Q_EMIT withoutSound(why);
    }
    if (code == kDVDEventPTT)
        keepPlace();
    if (code == kDVDEventPlayback && value1 == kDVDStateStopped && !std::exchange(m_isStopping, false)) {
        m_store.forget(m_disc.identity);
        Q_EMIT ended();
    }
}

/// All of this the session knows without asking the disc.
void DiscPlayback::refresh()
{
    PlaybackNow now;
    std::uint32_t elapsed = 0, length = 0;
    std::int16_t ratio = kDVDAspectRatioUninitialized;
    static_cast<void>(DVDGetState(&now.state));
    static_cast<void>(DVDIsOnMenu(&now.isOnMenu));
    static_cast<void>(DVDGetChapter(&now.title, &now.chapter));
    static_cast<void>(DVDGetAngle(&now.angle));
    static_cast<void>(DVDGetNumAngles(&now.angles));
    static_cast<void>(DVDGetTitleTime(&elapsed, &length));
    static_cast<void>(DVDGetAspectRatio(&ratio));
    now.elapsed = milliseconds(elapsed);
    now.length = milliseconds(length);
    if (ratio == kDVDAspectRatio16x9 || ratio == kDVDAspectRatioLetterBox)
        now.ratio = 16.0 / 9;
    m_now = now;
}

void DiscPlayback::keepPlace()
{
    // In a menu, or stopped, there is no place: the one that was kept before stays.
    if (!m_isOpen || m_now.title == 0 || m_now.elapsed < shortestPlace)
        return;
    const QByteArray bookmark = bookmarkNow();
    if (bookmark.isEmpty() || m_store.keep(m_disc.identity, bookmark) || std::exchange(m_hasToldLostPlace, true))
        return;
    Q_EMIT placeLost(m_store.pathOf(m_disc.identity));
}

// Requests.

void DiscPlayback::request(std::function<OSStatus()> call, std::function<void(OSStatus)> whenDone)
{
    if (!m_requests || !m_isOpen)
        return;
    m_requests->perform([this, call = std::move(call), whenDone = std::move(whenDone)] {
        const OSStatus status = call();
        m_queue.perform([this, whenDone, status] {
            if (whenDone)
                whenDone(status);
            else
                takeAnswer(status);
        });
    });
}

void DiscPlayback::takeAnswer(OSStatus status)
{
    if (status == kDVDErrorUserActionNoOp || status == kDVDErrorWrongParam)
        Q_EMIT refused();
}

void DiscPlayback::play()
{
    request(DVDPlay);
}

void DiscPlayback::pause()
{
    request(DVDPause);
}

void DiscPlayback::playOrPause()
{
    if (m_now.state == kDVDStatePlaying || m_now.state == kDVDStatePlayingStill)
        pause();
    else
        play();
}

void DiscPlayback::pauseOrGoOn()
{
    if (m_now.state == kDVDStatePlaying)
        pause();
    else if (m_now.state == kDVDStatePaused)
        play();
}

void DiscPlayback::playFromBegin()
{
    m_isStopping = m_now.state != kDVDStateStopped;
    request(
        [] {
            const OSStatus status = DVDStop();
            return status == noErr ? DVDPlay() : status;
        },
        [this](OSStatus status) { takeStop(status); });
}

void DiscPlayback::stop()
{
    keepPlace();
    m_isStopping = m_now.state != kDVDStateStopped;
    request(DVDStop, [this](OSStatus status) { takeStop(status); });
}

void DiscPlayback::takeStop(OSStatus status)
{
    if (status != noErr)
        m_isStopping = false;
    takeAnswer(status);
}

void DiscPlayback::scan(bool isBackward)
{
    request(
        [isBackward] { return DVDScan(scanRate, isBackward ? kDVDScanDirectionBackward : kDVDScanDirectionForward); });
}

void DiscPlayback::goToChapter(int title, int chapter)
{
    request([title, chapter] { return DVDSetChapter(std::uint16_t(title), std::uint16_t(chapter)); });
}

void DiscPlayback::stepChapter(int by)
{
    if (by < 0 && m_now.chapter == 1)
        goToChapter(m_now.title, 1);
    else
        request(by < 0 ? DVDPreviousChapter : DVDNextChapter);
}

void DiscPlayback::goToTime(milliseconds time)
{
    request([time] { return DVDSetTitleTime(std::uint32_t(time.count())); });
}

void DiscPlayback::skip(milliseconds by)
{
    goToTime(std::clamp(m_now.elapsed + by, milliseconds(0), std::max(m_now.length, milliseconds(0))));
}

void DiscPlayback::setAngle(int angle)
{
    request([angle] { return DVDSetAngle(std::uint16_t(angle)); });
}

void DiscPlayback::toggleMenu()
{
    request([] {
        bool isOnMenu = false;
        const OSStatus status = DVDIsOnMenu(&isOnMenu);
        if (status != noErr)
            return status;
        return isOnMenu ? DVDReturnToTitle() : DVDGoToMenu(kDVDMenuRoot);
    });
}

void DiscPlayback::navigate(std::uint32_t navigation)
{
    request([navigation] { return DVDDoUserNavigation(navigation); }, [](OSStatus) {});
}

void DiscPlayback::pointAt(const QPoint &point, const QRect &picture, bool activates)
{
    // A mouse that moves on while the disc is asked is asked about later, with its next move.
    if (!m_isOpen || (!activates && m_isPointing))
        return;
    m_isPointing = true;
    const auto button = std::make_shared<std::int32_t>(-1);
    request(
        [point, picture, activates, button] {
            const QRectF bounds(picture);
            static_cast<void>(DVDSetVideoCGBounds(&bounds));
            const DVDPoint place = {std::int16_t(point.y()), std::int16_t(point.x())};
            return activates ? DVDDoMenuClick(&place, button.get()) : DVDDoMenuMouseOver(&place, button.get());
        },
        [this, button](OSStatus) {
            m_isPointing = false;
            Q_EMIT pointed(*button >= 0);
        });
}

// Sound.

int DiscPlayback::volume() const
{
    std::uint16_t volume = 0;
    static_cast<void>(DVDGetAudioVolumeInfo(nullptr, &volume, nullptr));
    return volume;
}

void DiscPlayback::setVolume(int volume)
{
    constexpr int loudest = 255;
    static_cast<void>(DVDSetAudioVolume(std::int16_t(std::clamp(volume, 0, loudest))));
    Q_EMIT changed();
}

bool DiscPlayback::isMuted() const
{
    bool isMuted = false;
    static_cast<void>(DVDIsMuted(&isMuted));
    return isMuted;
}

void DiscPlayback::setMuted(bool isMuted)
{
    static_cast<void>(DVDMute(isMuted));
    Q_EMIT changed();
}

// Streams.

int DiscPlayback::audioStream() const
{
    std::uint16_t stream = 0;
    static_cast<void>(DVDGetAudioStream(&stream));
    return stream;
}

void DiscPlayback::setAudioStream(int stream)
{
    request([stream] { return DVDSetAudioStream(std::uint16_t(stream)); });
}

int DiscPlayback::subtitleStream() const
{
    std::uint16_t stream = 0;
    static_cast<void>(DVDGetSubPictureStream(&stream));
    return stream;
}

void DiscPlayback::setSubtitleStream(int stream)
{
    request([stream] { return DVDSetSubPictureStream(std::uint16_t(stream)); });
}

} // namespace Tessaron
