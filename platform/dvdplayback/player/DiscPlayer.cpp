#include "platform/dvdplayback/player/DiscPlayer.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/PacketSplitter.h"

#include <algorithm>
#include <utility>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

constexpr std::int64_t ticksInSecond = 90'000;
constexpr std::int64_t ticksInMillisecond = 90;
/// Sound that is read ahead of what is heard, so that a drive can seek; more would make menus slow to answer.
constexpr std::int64_t soundAhead = ticksInSecond * 3 / 10;
/// A disc may have its pictures before their sound, but no farther than what a player must be able to keep: beyond that
/// there is no sound.
constexpr std::int64_t farthestAhead = ticksInSecond * 3 / 2;
constexpr std::size_t mostBytesAhead = 2 << 20;
constexpr std::int64_t mostSoundInFront = ticksInSecond / 10;
/// Steps between two looks at the requests.
constexpr int stepsAtATime = 64;
constexpr std::int64_t mostLag = ticksInSecond / 2;
constexpr milliseconds timeBetweenLatePictures(200);
constexpr milliseconds timeBetweenLooks(10);
constexpr milliseconds timeBetweenFillings(100);
constexpr milliseconds timeBetweenScans(200);

milliseconds roundedUp(DiscPlayer::Clock::duration duration)
{
    return std::max(std::chrono::ceil<milliseconds>(duration), milliseconds(0));
}

} // namespace

DiscPlayer::DiscPlayer(DiscFiles *disc, DVDDescription description, SharedFrames *frames, SharedSound *sound,
                       Hearers hearers)
    : m_disc(disc)
    , m_description(std::move(description))
    , m_hearers(std::move(hearers))
    , m_clock(sound)
    , m_sound(&m_clock)
    , m_screen(frames, m_hearers.frame)
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
    if (!m_subpictures)
        m_subpictures = SubpictureDecoder::create();
    if (!m_rows.open() || !m_subpictures) {
        fail(QStringLiteral("the decoders of FFmpeg's libraries cannot be opened"));
        return false;
    }
    m_navigator = *std::move(navigator);
    m_screen.setColours(m_navigator->colours());
    m_needsPosition = true;
    forgetAhead();
    return true;
}

// Reading ahead.

/// More is read where pictures or sound run short.
bool DiscPlayer::needsMore(Clock::time_point now)
{
    return !m_rows.isBarred() && (m_rows.isShortOfPictures() || (needsSound(now) && !isFarAhead(now)));
}

bool DiscPlayer::needsSound(Clock::time_point now)
{
    return m_navigator->soundStream() && (m_clock.takesSound(now) || m_clock.isWaitingForDevice(now))
        && m_sound.isEmpty() && m_clock.soundAhead(now) < soundAhead;
}

bool DiscPlayer::isFarAhead(Clock::time_point now) const
{
    const std::int64_t time = m_clock.isHeld() ? m_runBegin.value_or(m_timeline.begin()) : m_clock.time(now);
    return m_rows.bytesRead() >= mostBytesAhead || (m_rows.readTo() && *m_rows.readTo() - time >= farthestAhead);
}

/// No sound comes before something else has happened.
bool DiscPlayer::isDry(Clock::time_point now) const
{
    return m_sound.isEmpty() && (m_rows.isBarred() || !m_navigator->soundStream() || isFarAhead(now));
}

void DiscPlayer::readAhead(Clock::time_point now)
{
    m_rows.decode(m_timeline.begin());
    for (int step = 0; step < stepsAtATime && m_navigator && needsMore(now); ++step) {
        takeStep(m_navigator->next());
        m_rows.decode(m_timeline.begin());
    }
    if (m_navigator)
        m_sound.decode(now, 2 * soundAhead, m_rows.isBarred());
}

void DiscPlayer::takeSector()
{
    splitSector(m_navigator->sector(), [this](const ElementaryPiece &piece) {
        const std::optional<std::int64_t> time = m_timeline.at(piece.presentation);
        if (piece.kind == ElementaryKind::Video) {
            m_rows.addVideo(piece.bytes, time);
        } else if (piece.kind == ElementaryKind::Subpicture) {
            // A menu's buttons are drawn by its only stream, whatever subtitles are chosen.
            const int wanted = m_navigator->subpictureStream().value_or(m_navigator->position().isInTitle ? -1 : 0);
            if (piece.stream != wanted)
                return;
            std::optional<Subpicture> subpicture = m_subpictures->add(piece.bytes, piece.presentation.has_value());
            if (subpicture)
                m_rows.add(Overlay{*std::move(subpicture), time});
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
        m_sound.add(stream, piece.bytes, m_timeline.at(piece.presentation));
}

void DiscPlayer::takeStep(NavigationStep step)
{
    switch (step) {
    case NavigationStep::Sector:
        takeSector();
        break;
    case NavigationStep::Position:
        m_needsPosition = false;
        m_timeline.follow(m_navigator->position().begin, m_navigator->position().end);
        m_rows.add(TimedPosition{m_navigator->position(), m_timeline.begin()});
        m_rows.add(ButtonChange());
        break;
    case NavigationStep::Jump:
        if (std::exchange(m_dropsAtJump, false))
            forgetAhead();
        else
            m_rows.addBreak();
        break;
    case NavigationStep::Still:
        m_rows.addBar(Still{m_navigator->stillSeconds()});
        break;
    case NavigationStep::Wait:
        m_rows.addBar(Wait());
        break;
    case NavigationStep::Highlight:
        m_rows.add(ButtonChange());
        break;
    case NavigationStep::Stream:
        m_subpictures->forget();
        m_screen.setColours(m_navigator->colours());
        break;
    case NavigationStep::Stop:
        m_rows.addBar(End());
        break;
    case NavigationStep::Failure:
        fail(m_navigator->failureText());
        break;
    case NavigationStep::Nothing:
        break;
    }
}

void DiscPlayer::forgetAhead()
{
    m_rows.forget();
    m_timeline.forget();
    m_sound.forget();
    m_clock.forget();
    m_runBegin.reset();
    m_stillUntil.reset();
    m_nextPosition.reset();
    m_screen.forget();
    m_subpictures->forget();
}

/// Steps on to the next navigation pack, as the library needs it between two requests.
bool DiscPlayer::settle()
{
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_needsPosition; ++step) {
        if (m_rows.isBarred()) {
            // A still without a navigation pack in front of it, and the end, are places to stay, too.
            if (!m_rows.removeBar<Wait>())
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
    if (!isMoving() || !m_navigator)
        return std::nullopt;
    readAhead(now);
    if (!m_navigator)
        return std::nullopt;
    m_clock.advance(now, isDry(now));
    beginRun(now);
    if (m_nextPosition && !m_clock.isHeld() && m_clock.time(now) >= m_nextPosition->time)
        takeWaitingPosition();
    std::optional<milliseconds> wait;
    while (m_rows.front() && showFront(now, &wait)) { }
    if (!m_navigator)
        return std::nullopt;
    if (!m_clock.isHeld())
        m_screen.changeOverlay(m_clock.time(now));
    tellState();
    tellTime(now);
    if (needsMore(now) || m_rows.canDecode())
        return milliseconds(0);
    if (m_state.playback == kDVDStatePlaying && wait)
        wait = std::min(*wait, m_timeRate);
    if (!m_sound.isEmpty() || m_clock.soundAhead(now) > 0)
        wait = std::min(wait.value_or(timeBetweenFillings), timeBetweenFillings);
    return wait;
}

/// The clock waits at the begin of what follows on nothing, until it is known whether there is sound to go with.
void DiscPlayer::beginRun(Clock::time_point now)
{
    if (!m_clock.isHeld())
        return;
    const bool isAtBar = m_rows.front() && !std::holds_alternative<VideoPicture>(*m_rows.front());
    const std::optional<std::int64_t> sound = m_clock.firstSound();
    if (!m_runBegin && !(isAtBar && m_rows.isBarred() && m_clock.hasSound()))
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
    return !m_clock.followsSound() || (m_sound.isEmpty() && m_clock.soundAhead(now) == 0);
}

bool DiscPlayer::showFront(Clock::time_point now, std::optional<milliseconds> *wait)
{
    PlaybackRows::Item &front = *m_rows.front();
    if (auto *const picture = std::get_if<VideoPicture>(&front)) {
        if (!showPicture(picture, now, wait))
            return false;
    } else if (auto *const position = std::get_if<TimedPosition>(&front)) {
        takeInTime(*position, now);
    } else if (auto *const overlay = std::get_if<Overlay>(&front)) {
        takeOverlay(std::move(*overlay), now);
    } else if (std::holds_alternative<ButtonChange>(front)) {
        m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
        m_screen.setButton(m_navigator->highlight());
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
        m_rows.lift();
        m_navigator->skipWait();
    }
    m_rows.removeFront();
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
        else if (late > picture->duration && m_rows.pictures() > 1 && now - m_lastShown < timeBetweenLatePictures)
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
        takeWaitingPosition();
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
    m_rows.lift();
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
        m_screen.lay(std::move(overlay), m_navigator->highlight());
    else
        m_screen.keep(std::move(overlay));
}

void DiscPlayer::show(VideoPicture picture)
{
    m_state.width = std::uint16_t(picture.frame->width);
    m_state.height = std::uint16_t(picture.frame->height);
    // Who sees it can ask where it is from.
    tellState();
    m_screen.show(std::move(picture));
}

/// The decoder holds a few pictures back, which come behind a position that is later than they are.
void DiscPlayer::takeInTime(const TimedPosition &position, Clock::time_point now)
{
    takeWaitingPosition();
    const bool isOnTheWay = position.position.isInTitle && position.position.place.title == m_state.title;
    m_nextPosition = position;
    if (!isOnTheWay || m_clock.isHeld() || m_clock.time(now) >= m_nextPosition->time)
        takeWaitingPosition();
}

void DiscPlayer::takeWaitingPosition()
{
    if (!m_nextPosition)
        return;
    take(m_nextPosition->position);
    m_positionTime = m_nextPosition->time;
    m_nextPosition.reset();
}

void DiscPlayer::take(const NavigationPosition &position)
{
    // Subtitles of a title that was left must not stay over the menu, nor a menu's buttons over a title.
    if (m_state.isOnMenu == position.isInTitle)
        m_screen.dropOverlay();
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

bool DiscPlayer::isMoving() const
{
    return m_state.playback == kDVDStatePlaying || m_state.playback == kDVDStatePlayingStill;
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

// Scanning.

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
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_rows.pictures() == 0 && !m_rows.isBarred();
         ++step) {
        takeStep(m_navigator->next());
        m_rows.decode(m_timeline.begin());
    }
    for (bool isSeen = false; !isSeen && m_rows.front(); m_rows.removeFront()) {
        auto *const picture = std::get_if<VideoPicture>(m_rows.front());
        isSeen = picture != nullptr;
        if (isSeen)
            show(std::move(*picture));
    }
    if (m_navigator) {
        m_timeTold = {};
        tellTime(now);
    }
    return roundedUp(m_scanDue - m_hearers.now());
}

} // namespace Tessaron
