#include "platform/dvdplayback/player/DiscPlayer.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/PacketSplitter.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

/// What is decoded ahead of what is seen.
constexpr std::size_t picturesAhead = 4;
constexpr std::int64_t ticksInSecond = 90'000;
constexpr std::int64_t ticksInMillisecond = 90;
/// Sound that is read ahead of what is heard, so that a drive can seek; more would make menus slow to answer.
constexpr std::int64_t soundAhead = ticksInSecond * 3 / 10;
/// A disc may have its pictures before their sound, but no farther than what a player must be able to keep: beyond that
/// there is no sound.
constexpr std::int64_t farthestAhead = ticksInSecond * 3 / 2;
constexpr std::size_t mostBytesAhead = 2 << 20;
constexpr std::int64_t mostSoundInFront = ticksInSecond / 10;
/// Times that are further off are mistakes.
constexpr std::int64_t mostOffTime = ticksInSecond;
/// Steps between two looks at the requests.
constexpr int stepsAtATime = 64;
/// A disc that takes more steps than these without a navigation pack runs in circles.
constexpr int mostStepsToPosition = 20'000;
constexpr std::int64_t mostLag = ticksInSecond / 2;
constexpr milliseconds timeBetweenLatePictures(200);
constexpr milliseconds timeBetweenLooks(10);
constexpr milliseconds timeBetweenFillings(100);
constexpr milliseconds timeBetweenScans(200);
constexpr std::uint32_t noSector = 0xffffffff;

milliseconds roundedUp(DiscPlayer::Clock::duration duration)
{
    return std::max(std::chrono::ceil<milliseconds>(duration), milliseconds(0));
}

bool isMoving(std::uint32_t playback)
{
    return playback == kDVDStatePlaying || playback == kDVDStatePlayingStill;
}

} // namespace

DiscPlayer::DiscPlayer(DiscFiles *disc, DVDDescription description, SharedFrames *frames, SharedSound *sound,
                       Hearers hearers)
    : m_disc(disc)
    , m_description(std::move(description))
    , m_frames(frames)
    , m_hearers(std::move(hearers))
    , m_clock(sound)
{
    m_state.playback = kDVDStateStopped;
}

void DiscPlayer::tellFirstState()
{
    if (!m_description.titles.empty()) {
        const DVDVideoFacts &video = m_description.titles.front().video;
        m_state.aspect = video.isWide ? kDVDAspectRatio16x9 : kDVDAspectRatio4x3;
        m_state.format = video.standard == DVDVideoStandard::PAL ? kDVDFormatPAL : kDVDFormatNTSC;
        m_state.width = video.width;
        m_state.height = video.height;
    }
    tellState();
}

bool DiscPlayer::start()
{
    if (m_navigator)
        return true;
    Result<std::unique_ptr<Navigator>> navigator = Navigator::open(m_disc, m_description);
    if (!navigator) {
        fail(navigator.error().localizedFailureReason());
        return false;
    }
    if (!m_video)
        m_video = VideoDecoder::create();
    if (!m_subpictures)
        m_subpictures = SubpictureDecoder::create();
    if (!m_video || !m_subpictures) {
        fail(QStringLiteral("the decoders of FFmpeg's libraries cannot be opened"));
        return false;
    }
    m_navigator = *std::move(navigator);
    m_needsPosition = true;
    forgetAhead();
    return true;
}

// Reading ahead.

/// More is read where pictures or sound run short.
bool DiscPlayer::needsMore(Clock::time_point now)
{
    return !m_isBarred && ((m_read.empty() && m_pictures < picturesAhead) || (needsSound(now) && !isFarAhead(now)));
}

bool DiscPlayer::needsSound(Clock::time_point now)
{
    return m_navigator->soundStream() && (m_clock.takesSound(now) || m_clock.isWaitingForDevice(now)) && m_sound.empty()
        && m_clock.soundAhead(now) < soundAhead;
}

bool DiscPlayer::isFarAhead(Clock::time_point now) const
{
    const std::int64_t time = m_clock.isHeld() ? m_runBegin.value_or(m_timeline.begin()) : m_clock.time(now);
    return m_bytesRead >= mostBytesAhead || (m_readTo && *m_readTo - time >= farthestAhead);
}

/// No sound comes before something else has happened.
bool DiscPlayer::isDry(Clock::time_point now) const
{
    return m_sound.empty() && (m_isBarred || !m_navigator->soundStream() || isFarAhead(now));
}

void DiscPlayer::readAhead(Clock::time_point now)
{
    decodePictures();
    for (int step = 0; step < stepsAtATime && m_navigator && needsMore(now); ++step) {
        takeStep(m_navigator->next());
        decodePictures();
    }
    if (m_navigator)
        decodeSound(now);
}

void DiscPlayer::enqueue(Item item)
{
    m_read.emplace_back(std::in_place_type<Item>, std::move(item));
}

void DiscPlayer::takeSector()
{
    splitSector(m_navigator->sector(), [this](const ElementaryPiece &piece) {
        const std::optional<std::int64_t> time = m_timeline.at(piece.presentation);
        if (piece.kind == ElementaryKind::Video) {
            m_read.emplace_back(VideoBytes{{piece.bytes.begin(), piece.bytes.end()}, time});
            m_bytesRead += piece.bytes.size();
            if (time)
                m_readTo = time;
        } else if (piece.kind == ElementaryKind::Subpicture) {
            // A menu's buttons are drawn by its only stream, whatever subtitles are chosen.
            const int wanted = m_navigator->subpictureStream().value_or(m_navigator->position().isInTitle ? -1 : 0);
            if (piece.stream != wanted)
                return;
            std::optional<Subpicture> subpicture = m_subpictures->add(piece.bytes, piece.presentation.has_value());
            if (subpicture)
                enqueue(Overlay{*std::move(subpicture), time});
        } else {
            takeSound(piece);
        }
    });
}

void DiscPlayer::takeSound(const ElementaryPiece &piece)
{
    const SoundStream stream = {piece.kind, piece.stream};
    if (stream != m_navigator->soundStream() || m_state.playback == kDVDStateScanning)
        return;
    const Clock::time_point now = m_hearers.now();
    if (m_clock.takesSound(now) || m_clock.isWaitingForDevice(now))
        m_sound.push_back({stream, {piece.bytes.begin(), piece.bytes.end()}, m_timeline.at(piece.presentation)});
}

void DiscPlayer::takeStep(NavigationStep step)
{
    const auto bar = [this](Item item) {
        m_read.emplace_back(Drain());
        enqueue(std::move(item));
        m_isBarred = true;
    };
    switch (step) {
    case NavigationStep::Sector:
        takeSector();
        break;
    case NavigationStep::Position:
        m_needsPosition = false;
        m_timeline.follow(m_navigator->position().begin, m_navigator->position().end);
        enqueue(m_navigator->position());
        enqueue(Button());
        break;
    case NavigationStep::Jump:
        if (std::exchange(m_dropsAtJump, false))
            forgetAhead();
        else
            m_read.emplace_back(Drain());
        break;
    case NavigationStep::Still:
        bar(Still{m_navigator->stillSeconds()});
        break;
    case NavigationStep::Wait:
        bar(Wait());
        break;
    case NavigationStep::Highlight:
        enqueue(Button());
        break;
    case NavigationStep::Stream:
        m_subpictures->forget();
        break;
    case NavigationStep::Stop:
        bar(End());
        break;
    case NavigationStep::Failure:
        fail(m_navigator->failureText());
        break;
    case NavigationStep::Nothing:
        break;
    }
}

void DiscPlayer::decodePictures()
{
    const auto taker = [this](VideoPicture picture) { takePicture(std::move(picture)); };
    const auto visitor = [this, &taker](VideoPicture picture) { m_deinterlacer.add(std::move(picture), taker); };
    while (!m_read.empty() && m_pictures < picturesAhead) {
        ReadItem front = std::move(m_read.front());
        m_read.pop_front();
        if (const auto *const video = std::get_if<VideoBytes>(&front)) {
            m_bytesRead -= video->bytes.size();
            m_video->add(video->bytes, video->time, visitor);
        } else if (std::holds_alternative<Drain>(front)) {
            m_video->drain(visitor);
            m_deinterlacer.drain(taker);
        } else {
            m_items.push_back(std::move(std::get<Item>(front)));
        }
    }
}

void DiscPlayer::takePicture(VideoPicture picture)
{
    const std::int64_t expected = m_nextPicture.value_or(m_timeline.begin());
    if (!picture.time || std::abs(*picture.time - expected) > mostOffTime)
        picture.time = expected;
    m_nextPicture = *picture.time + picture.duration;
    m_items.emplace_back(std::move(picture));
    ++m_pictures;
}

void DiscPlayer::decodeSound(Clock::time_point now)
{
    if (!m_clock.takesSound(now)) {
        if (!m_clock.isWaitingForDevice(now))
            m_sound.clear();
        return;
    }
    const auto visitor = [this](DecodedSound piece) { m_clock.add(std::move(piece)); };
    while (!m_sound.empty() && m_clock.soundAhead(now) < 2 * soundAhead) {
        const SoundBytes bytes = std::move(m_sound.front());
        m_sound.pop_front();
        if (!m_soundDecoder || bytes.stream != m_soundOfDecoder) {
            if (m_soundDecoder)
                m_soundDecoder->drain(visitor);
            m_soundDecoder = SoundDecoder::create(bytes.stream.kind, m_clock.form());
            m_soundOfDecoder = bytes.stream;
        }
        if (m_soundDecoder)
            m_soundDecoder->add(bytes.bytes, bytes.time, visitor);
    }
    // The last frame of a stream is complete when nothing follows.
    if (m_isBarred && m_sound.empty() && m_soundDecoder) {
        m_soundDecoder->drain(visitor);
        m_soundDecoder.reset();
    }
}

void DiscPlayer::forgetAhead()
{
    m_read.clear();
    m_bytesRead = 0;
    m_items.clear();
    m_pictures = 0;
    m_timeline.forget();
    m_readTo.reset();
    m_nextPicture.reset();
    m_sound.clear();
    m_soundDecoder.reset();
    m_clock.forget();
    m_runBegin.reset();
    m_isBarred = false;
    m_stillUntil.reset();
    m_overlay.reset();
    m_nextOverlay.reset();
    m_button.reset();
    m_video->forget();
    m_deinterlacer.forget();
    m_subpictures->forget();
}

/// Takes a bar off the end of what was read; false for one of another kind.
template <typename Bar>
bool DiscPlayer::removeBar()
{
    if (!m_isBarred)
        return false;
    if (!m_read.empty()) {
        const auto *const last = std::get_if<Item>(&m_read.back());
        if (!last || !std::holds_alternative<Bar>(*last))
            return false;
        m_read.pop_back();
    } else {
        if (m_items.empty() || !std::holds_alternative<Bar>(m_items.back()))
            return false;
        m_items.pop_back();
    }
    m_isBarred = false;
    return true;
}

/// Steps on to the next navigation pack, as the library needs it between two requests.
bool DiscPlayer::settle()
{
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_needsPosition; ++step) {
        if (m_isBarred) {
            // A still without a navigation pack in front of it, and the end, are places to stay, too.
            if (!removeBar<Wait>())
                return true;
            m_navigator->skipWait();
        }
        takeStep(m_navigator->next());
    }
    if (m_navigator && m_needsPosition)
        fail(QStringLiteral("the disc leads around in circles"));
    return m_navigator != nullptr;
}

// Showing.

std::optional<milliseconds> DiscPlayer::advance()
{
    const Clock::time_point now = m_hearers.now();
    if (m_state.playback == kDVDStateScanning)
        return advanceScan(now);
    if (!isMoving(m_state.playback) || !m_navigator)
        return std::nullopt;
    readAhead(now);
    if (!m_navigator)
        return std::nullopt;
    m_clock.advance(now, isDry(now));
    beginRun(now);
    std::optional<milliseconds> wait;
    while (!m_items.empty() && showFront(now, &wait)) { }
    if (!m_navigator)
        return std::nullopt;
    changeOverlay(now);
    tellState();
    tellTime(now);
    if (needsMore(now) || (!m_read.empty() && m_pictures < picturesAhead))
        return milliseconds(0);
    if (m_state.playback == kDVDStatePlaying && wait)
        wait = std::min(*wait, m_timeRate);
    if (!m_sound.empty() || m_clock.soundAhead(now) > 0)
        wait = std::min(wait.value_or(timeBetweenFillings), timeBetweenFillings);
    return wait;
}

/// The clock waits at the begin of what follows on nothing, until it is known whether there is sound to go with.
void DiscPlayer::beginRun(Clock::time_point now)
{
    if (!m_clock.isHeld())
        return;
    const bool isAtBar = !m_items.empty() && !std::holds_alternative<VideoPicture>(m_items.front());
    const std::optional<std::int64_t> sound = m_clock.firstSound();
    if (!m_runBegin && !(isAtBar && m_isBarred && m_clock.hasSound()))
        return;
    if (!m_clock.hasSound() && !isDry(now) && (m_clock.takesSound(now) || m_clock.isWaitingForDevice(now)))
        return;
    std::int64_t begin = m_runBegin.value_or(sound.value_or(m_timeline.begin()));
    // A disc has the pictures of a unit before their sound, which begins half a second earlier there: that much belongs
    // to what was left, but not the little by which sound is ahead at the begin of a title.
    if (sound && *sound < begin && begin - *sound < mostSoundInFront)
        begin = *sound;
    m_runBegin.reset();
    m_clock.begin(begin, now);
    m_clock.advance(now, false);
}

/// True as well where no sound keeps anything waiting.
bool DiscPlayer::isSoundOver(Clock::time_point now) const
{
    return !m_clock.followsSound() || (m_sound.empty() && m_clock.soundAhead(now) == 0);
}

bool DiscPlayer::showFront(Clock::time_point now, std::optional<milliseconds> *wait)
{
    Item &front = m_items.front();
    if (auto *const picture = std::get_if<VideoPicture>(&front)) {
        if (!showPicture(picture, now, wait))
            return false;
        --m_pictures;
    } else if (auto *const position = std::get_if<NavigationPosition>(&front)) {
        take(*position);
    } else if (auto *const overlay = std::get_if<Overlay>(&front)) {
        takeOverlay(std::move(*overlay), now);
    } else if (std::holds_alternative<Button>(front)) {
        const std::optional<ButtonColours> button = m_navigator->highlight();
        m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
        if (std::exchange(m_button, button) != button && m_overlay)
            compose();
    } else if (const auto *const still = std::get_if<Still>(&front)) {
        if (!endStill(*still, now, wait))
            return false;
    } else {
        if (m_runBegin || !isSoundOver(now)) {
            *wait = timeBetweenLooks;
            return false;
        }
        if (std::holds_alternative<End>(front)) {
            end();
            return false;
        }
        m_isBarred = false;
        m_navigator->skipWait();
    }
    m_items.pop_front();
    return true;
}

bool DiscPlayer::showPicture(VideoPicture *picture, Clock::time_point now, std::optional<milliseconds> *wait)
{
    const std::int64_t time = picture->time.value_or(0);
    if (m_clock.isHeld()) {
        // The first one is seen at once.
        if (m_runBegin) {
            *wait = timeBetweenLooks;
            return false;
        }
        m_runBegin = time;
    } else {
        const std::int64_t late = m_clock.time(now) - time;
        if (late < 0) {
            *wait = milliseconds((-late + ticksInMillisecond - 1) / ticksInMillisecond);
            return false;
        }
        // Without sound to keep up with, nothing is left out.
        if (late > mostLag && !m_clock.followsSound())
            m_clock.begin(time, now);
        else if (late > picture->duration && m_pictures > 1 && now - m_lastShown < timeBetweenLatePictures)
            return true;
    }
    m_lastShown = now;
    show(std::move(*picture));
    return true;
}

/// True when the still is over.
bool DiscPlayer::endStill(const Still &still, Clock::time_point now, std::optional<milliseconds> *wait)
{
    if (!m_stillUntil) {
        m_stillUntil = still.seconds ? now + std::chrono::seconds(*still.seconds) : Clock::time_point::max();
        setPlayback(kDVDStatePlayingStill);
    }
    if (now < *m_stillUntil) {
        if (*m_stillUntil != Clock::time_point::max())
            *wait = roundedUp(*m_stillUntil - now);
        return false;
    }
    if (m_runBegin || !isSoundOver(now)) {
        *wait = timeBetweenLooks;
        return false;
    }
    m_stillUntil.reset();
    m_isBarred = false;
    m_navigator->skipStill();
    setPlayback(kDVDStatePlaying);
    // What comes next has its own times.
    m_clock.hold();
    return true;
}

void DiscPlayer::takeOverlay(Overlay overlay, Clock::time_point now)
{
    // The buttons of a menu are there with it.
    const bool isAtOnce = m_state.isOnMenu || !overlay.time;
    if (!overlay.time)
        overlay.time = m_clock.time(now);
    if (isAtOnce)
        overlay.subpicture.start = std::min<std::int64_t>(overlay.subpicture.start, 0);
    m_nextOverlay = std::move(overlay);
    if (isAtOnce) {
        m_overlay = std::move(m_nextOverlay->subpicture);
        m_overlayUntil = m_overlay->end ? std::optional(*m_nextOverlay->time + *m_overlay->end) : std::nullopt;
        m_nextOverlay.reset();
        m_button = m_navigator->highlight();
        compose();
    }
}

/// Subtitles come and go at their times, between pictures, too.
void DiscPlayer::changeOverlay(Clock::time_point now)
{
    if (m_clock.isHeld())
        return;
    const std::int64_t time = m_clock.time(now);
    bool isChanged = false;
    if (m_overlay && m_overlayUntil && time >= *m_overlayUntil) {
        m_overlay.reset();
        isChanged = true;
    }
    if (m_nextOverlay && time >= *m_nextOverlay->time + m_nextOverlay->subpicture.start) {
        m_overlay = std::move(m_nextOverlay->subpicture);
        m_overlayUntil = m_overlay->end ? std::optional(*m_nextOverlay->time + *m_overlay->end) : std::nullopt;
        m_nextOverlay.reset();
        isChanged = true;
    }
    if (isChanged)
        compose();
}

void DiscPlayer::show(VideoPicture picture)
{
    m_shown = std::move(picture);
    m_state.width = std::uint16_t(m_shown.frame->width);
    m_state.height = std::uint16_t(m_shown.frame->height);
    compose();
}

void DiscPlayer::compose()
{
    const AVFrame *const frame = m_shown.frame.get();
    if (!frame || frame->width < 1 || frame->height < 1 || frame->width > int(mostFrameWidth)
        || frame->height > int(mostFrameHeight))
        return;
    constexpr int stride = int(mostFrameWidth) * 4;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), frame->width, frame->height, AVPixelFormat(frame->format),
                                        frame->width, frame->height, AV_PIX_FMT_BGRA, SWS_FAST_BILINEAR, nullptr,
                                        nullptr, nullptr));
    if (!m_scaler)
        return;
    std::uint8_t *const pixels = m_frames->pixelsToFill();
    std::uint8_t *const planes[4] = {pixels, nullptr, nullptr, nullptr};
    const int strides[4] = {stride, 0, 0, 0};
    sws_scale(m_scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    if (m_overlay)
        layOver(*m_overlay, m_navigator->colours(), m_button, pixels, stride, frame->width, frame->height);
    m_hearers.frame(m_frames->publish(std::uint32_t(frame->width), std::uint32_t(frame->height)));
}

void DiscPlayer::take(const NavigationPosition &position)
{
    // Subtitles of a title that was left must not stay over the menu, nor a menu's buttons over a title.
    if (m_state.isOnMenu == position.isInTitle) {
        m_overlay.reset();
        m_nextOverlay.reset();
    }
    m_state.isOnMenu = !position.isInTitle;
    m_state.title = position.place.title;
    m_state.chapter = position.place.chapter;
    m_state.angle = position.place.angle;
    m_state.angles = position.angles;
    m_state.elapsed = position.place.elapsed;
    m_state.length = position.length;
    m_state.aspect = position.aspect;
    m_state.format = position.format;
    m_state.buttons = position.isInTitle ? std::uint8_t(0) : position.buttons;
    m_state.place = position.place;
    m_state.soundStreams = position.soundStreams;
    m_state.soundStream = position.isInTitle ? position.soundStream : std::uint8_t(0);
    m_state.subtitleStreams = position.subtitleStreams;
    m_state.subtitleStream = position.subtitleStream;
    m_positionTime.reset();
}

void DiscPlayer::tellState()
{
    m_state.sound = std::uint8_t(m_clock.device());
    if (m_state == m_told)
        return;
    m_told = m_state;
    m_hearers.state(m_state);
}

void DiscPlayer::tellTime(Clock::time_point now)
{
    if (!m_positionTime && !m_clock.isHeld())
        m_positionTime = m_clock.time(now);
    if (m_state.title == 0 || now - m_timeTold < m_timeRate)
        return;
    // What is told a little late must not make all that follows later.
    m_timeTold = now - m_timeTold < 2 * m_timeRate ? m_timeTold + m_timeRate : now;
    const std::int64_t since = m_positionTime ? (m_clock.time(now) - *m_positionTime) / ticksInMillisecond : 0;
    const bool isRunning = m_state.playback == kDVDStatePlaying;
    const std::int64_t elapsed = m_state.elapsed + (isRunning ? std::max<std::int64_t>(since, 0) : 0);
    m_hearers.titleTime(std::uint32_t(std::min<std::int64_t>(elapsed, m_state.length)), m_state.length);
}

void DiscPlayer::setPlayback(std::uint32_t playback)
{
    m_state.playback = playback;
    m_clock.setPaused(playback == kDVDStatePaused, m_hearers.now());
}

void DiscPlayer::fail(const QString &why)
{
    end();
    m_hearers.failure(why.isEmpty() ? QStringLiteral("the disc cannot be read on") : why);
}

// Requests.

OSStatus DiscPlayer::play()
{
    m_clock.setSlowness(1, m_hearers.now());
    switch (m_state.playback) {
    case kDVDStatePlaying:
    case kDVDStatePlayingStill:
        return noErr;
    case kDVDStatePaused:
        setPlayback(m_playbackBefore);
        break;
    case kDVDStateScanning:
        setPlayback(kDVDStatePlaying);
        break;
    default:
        if (!start())
            return kDVDErrorDamagedMedia;
        setPlayback(kDVDStatePlaying);
    }
    tellState();
    return noErr;
}

OSStatus DiscPlayer::pause()
{
    if (!m_navigator)
        return kDVDErrorUserActionNoOp;
    if (m_state.playback == kDVDStatePaused)
        return noErr;
    if (isForbidden(UserOperation::Pause))
        return kDVDErrorUserActionNoOp;
    m_playbackBefore = isMoving(m_state.playback) ? m_state.playback : std::uint32_t(kDVDStatePlaying);
    setPlayback(kDVDStatePaused);
    tellState();
    return noErr;
}

OSStatus DiscPlayer::stop()
{
    if (isForbidden(UserOperation::Stop))
        return kDVDErrorUserActionNoOp;
    end();
    return noErr;
}

bool DiscPlayer::isForbidden(UserOperation operation) const
{
    return m_navigator && m_navigator->forbids(operation);
}

void DiscPlayer::end()
{
    if (m_navigator)
        forgetAhead();
    m_navigator.reset();
    m_shown = {};
    const PlayerState before = m_state;
    m_state = {};
    setPlayback(kDVDStateStopped);
    m_state.aspect = before.aspect;
    m_state.format = before.format;
    m_state.width = before.width;
    m_state.height = before.height;
    m_clock.setSlowness(1, m_hearers.now());
    tellState();
}

OSStatus DiscPlayer::jump(const std::function<OSStatus()> &request)
{
    if (!m_navigator || !settle())
        return kDVDErrorUserActionNoOp;
    if (const OSStatus status = request(); status != noErr)
        return status;
    forgetAhead();
    m_needsPosition = true;
    if (!settle())
        return kDVDErrorDamagedMedia;
    if (m_state.playback != kDVDStateScanning)
        setPlayback(kDVDStatePlaying);
    take(m_navigator->position());
    m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
    tellState();
    return noErr;
}

OSStatus DiscPlayer::playChapter(int title, int chapter)
{
    // A disc that is stopped forbids nothing.
    const bool isSameTitle = title == m_state.title;
    const UserOperation operation = isSameTitle ? UserOperation::TimeOrChapterSearch
        : chapter == 1                          ? UserOperation::TitlePlay
                                                : UserOperation::ChapterPlay;
    return isForbidden(operation) ? kDVDErrorUserActionNoOp : jumpToChapter(title, chapter);
}

OSStatus DiscPlayer::jumpToChapter(int title, int chapter)
{
    if (!start())
        return kDVDErrorDamagedMedia;
    if (m_state.playback == kDVDStateScanning)
        setPlayback(kDVDStatePlaying);
    return jump([&] { return m_navigator->playChapter(title, chapter); });
}

OSStatus DiscPlayer::stepChapter(int by)
{
    const int title = m_state.title, chapter = m_state.chapter + by;
    if (title == 0 || chapter < 1
        || std::size_t(chapter) > m_description.titles[std::size_t(title - 1)].chapters.size())
        return kDVDErrorUserActionNoOp;
    if (isForbidden(by < 0 ? UserOperation::PreviousProgram : UserOperation::NextProgram))
        return kDVDErrorUserActionNoOp;
    return jumpToChapter(title, chapter);
}

OSStatus DiscPlayer::setAngle(int angle)
{
    if (!m_navigator || !settle() || isForbidden(UserOperation::Angle))
        return kDVDErrorUserActionNoOp;
    const OSStatus status = m_navigator->setAngle(angle);
    // It is seen, and told, with one of the next video units.
    m_needsPosition = m_needsPosition || status == noErr;
    return status;
}

OSStatus DiscPlayer::goToMenu(std::uint32_t menu)
{
    const auto operation = static_cast<UserOperation>(static_cast<std::uint32_t>(UserOperation::TitleMenu) + menu);
    if (menu <= kDVDMenuPTT && isForbidden(operation))
        return kDVDErrorUserActionNoOp;
    return jump([&] { return m_navigator->goToMenu(menu); });
}

OSStatus DiscPlayer::returnToTitle()
{
    if (isForbidden(UserOperation::Resume))
        return kDVDErrorUserActionNoOp;
    return jump([&] { return m_navigator->returnToTitle(); });
}

OSStatus DiscPlayer::navigate(std::uint32_t navigation)
{
    if (!m_navigator || !settle() || isForbidden(UserOperation::Button))
        return kDVDErrorUserActionNoOp;
    const OSStatus status = m_navigator->moveSelection(navigation);
    if (status != noErr)
        return status;
    if (navigation == kDVDUserNavigationEnter)
        followButton();
    else
        showSelection();
    return noErr;
}

OSStatus DiscPlayer::pointAt(int x, int y, bool activates, std::int32_t *button)
{
    if (!m_navigator || !settle() || isForbidden(UserOperation::Button))
        return kDVDErrorUserActionNoOp;
    bool wasActivated = false;
    *button = m_navigator->pointAt(x, y, activates, &wasActivated);
    if (wasActivated)
        followButton();
    else if (*button >= 0)
        showSelection();
    return noErr;
}

/// What the button did is known with the next step only: it may jump, or just set something.
void DiscPlayer::followButton()
{
    m_dropsAtJump = true;
    m_needsPosition = true;
    if (removeBar<Still>())
        m_stillUntil.reset();
    if (m_state.playback == kDVDStatePlayingStill || m_state.playback == kDVDStatePaused)
        setPlayback(kDVDStatePlaying);
    tellState();
}

void DiscPlayer::showSelection()
{
    const std::optional<ButtonColours> button = m_navigator->highlight();
    m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
    if (std::exchange(m_button, button) != button && m_overlay)
        compose();
    tellState();
}

OSStatus DiscPlayer::goToPlace(const PlayerPlace &place)
{
    const UserOperation operation =
        place.title == m_state.title ? UserOperation::TimeOrChapterSearch : UserOperation::TitleOrTimePlay;
    if (isForbidden(operation))
        return kDVDErrorUserActionNoOp;
    if (const OSStatus status = jumpToChapter(place.title, place.chapter); status != noErr)
        return status;
    const auto search = [&] {
        return place.sectorInTitle != noSector ? m_navigator->searchSector(place.sectorInTitle)
                                               : m_navigator->searchTime(place.elapsed);
    };
    return jumpAlongFirstAngle(search, isForbidden(UserOperation::Angle) ? 1 : place.angle);
}

/// Searching does not work along the others.
OSStatus DiscPlayer::jumpAlongFirstAngle(const std::function<OSStatus()> &search, int angle)
{
    if (m_navigator->position().place.angle != 1) {
        const OSStatus status = m_navigator->setAngle(1);
        m_needsPosition = m_needsPosition || status == noErr;
        if (status == noErr && !settle())
            return kDVDErrorDamagedMedia;
    }
    return jump([&] {
        const OSStatus found = search();
        // Before the first unit is read, whose end may be the last place of the chapter where angles part. A title that
        // has not that many stays with the first one.
        if (found == noErr && angle > 1)
            static_cast<void>(m_navigator->setAngle(angle));
        return found;
    });
}

OSStatus DiscPlayer::goToTime(std::uint32_t elapsed)
{
    if (!m_navigator || !settle() || m_state.title == 0 || isForbidden(UserOperation::TimeOrChapterSearch))
        return kDVDErrorUserActionNoOp;
    if (elapsed >= m_state.length)
        return kDVDErrorWrongParam;
    // The angle that was chosen, which may not be seen yet.
    const int angle = m_navigator->position().place.angle;
    return jumpAlongFirstAngle([&] { return m_navigator->searchTime(elapsed); }, angle);
}

OSStatus DiscPlayer::playSlowly(int times)
{
    if (times < 2)
        return kDVDErrorWrongParam;
    if (!m_navigator || !settle())
        return kDVDErrorUserActionNoOp;
    if (const OSStatus status = play(); status != noErr)
        return status;
    m_clock.setSlowness(times, m_hearers.now());
    m_sound.clear();
    return noErr;
}

OSStatus DiscPlayer::stepPicture()
{
    if (!m_navigator || !settle())
        return kDVDErrorUserActionNoOp;
    if (const OSStatus status = pause(); status != noErr)
        return status;
    const Clock::time_point now = m_hearers.now();
    // What was handed on already belongs to the picture that is left.
    m_clock.forget();
    for (int step = 0; step < mostStepsToPosition && m_navigator; ++step) {
        decodePictures();
        m_runBegin.reset();
        if (m_items.empty()) {
            if (m_isBarred)
                break;
            takeStep(m_navigator->next());
            continue;
        }
        const bool isPicture = std::holds_alternative<VideoPicture>(m_items.front());
        const bool isStay =
            std::holds_alternative<Still>(m_items.front()) || std::holds_alternative<End>(m_items.front());
        std::optional<milliseconds> wait;
        if (isStay || !showFront(now, &wait))
            break;
        if (isPicture) {
            dropSoundBefore(m_runBegin.value_or(m_timeline.begin()));
            tellState();
            return noErr;
        }
    }
    return kDVDErrorUserActionNoOp;
}

/// What belongs to pictures that were stepped over is not heard.
void DiscPlayer::dropSoundBefore(std::int64_t time)
{
    // Bytes without a time go with those in front of them.
    const auto last = std::find_if(m_sound.rbegin(), m_sound.rend(),
                                   [time](const SoundBytes &bytes) { return bytes.time && *bytes.time <= time; });
    if (last == m_sound.rend() || std::next(last) == m_sound.rend())
        return;
    m_sound.erase(m_sound.begin(), std::next(last).base());
    if (m_soundDecoder)
        m_soundDecoder->forget();
}

OSStatus DiscPlayer::setSoundStream(int stream)
{
    if (!m_navigator || !settle() || isForbidden(UserOperation::SoundStream))
        return kDVDErrorUserActionNoOp;
    const OSStatus status = m_navigator->chooseSound(stream);
    m_needsPosition = m_needsPosition || status == noErr;
    return status;
}

OSStatus DiscPlayer::setSubtitleStream(int stream)
{
    if (!m_navigator || !settle() || isForbidden(UserOperation::SubtitleStream))
        return kDVDErrorUserActionNoOp;
    const OSStatus status = m_navigator->chooseSubtitles(stream);
    m_needsPosition = m_needsPosition || status == noErr;
    if (status == noErr && stream == 0 && m_overlay) {
        m_overlay.reset();
        m_nextOverlay.reset();
        compose();
    }
    return status;
}

OSStatus DiscPlayer::scan(int rate, bool isBackward)
{
    if (!m_navigator || !settle() || m_state.title == 0
        || isForbidden(isBackward ? UserOperation::BackwardScan : UserOperation::ForwardScan))
        return kDVDErrorUserActionNoOp;
    m_clock.setSlowness(1, m_hearers.now());
    m_scanRate = isBackward ? -rate : rate;
    m_scanTime = m_state.elapsed;
    m_scanDue = m_hearers.now();
    setPlayback(kDVDStateScanning);
    tellState();
    return noErr;
}

std::optional<milliseconds> DiscPlayer::advanceScan(Clock::time_point now)
{
    if (now < m_scanDue)
        return roundedUp(m_scanDue - now);
    m_scanDue = now + timeBetweenScans;
    m_scanTime += m_scanRate * timeBetweenScans.count();
    const bool isAtEnd = m_scanTime <= 0 || m_scanTime >= std::int64_t(m_state.length);
    const std::int64_t time = std::clamp<std::int64_t>(m_scanTime, 0, std::max<std::int64_t>(m_state.length, 1) - 1);
    if (jump([&] { return m_navigator->searchTime(std::uint32_t(time)); }) != noErr || isAtEnd) {
        if (m_navigator) {
            setPlayback(kDVDStatePlaying);
            tellState();
        }
        return milliseconds(0);
    }
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_pictures == 0 && !m_isBarred; ++step) {
        takeStep(m_navigator->next());
        decodePictures();
    }
    while (!m_items.empty()) {
        if (auto *const picture = std::get_if<VideoPicture>(&m_items.front())) {
            show(std::move(*picture));
            --m_pictures;
            m_items.pop_front();
            break;
        }
        m_items.pop_front();
    }
    if (m_navigator) {
        m_timeTold = {};
        tellTime(now);
    }
    return roundedUp(m_scanDue - m_hearers.now());
}

} // namespace Tessaron
