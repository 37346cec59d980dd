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

/// What is read ahead of what is seen; more would make menus slow to answer.
constexpr std::size_t picturesAhead = 4;
/// Steps between two looks at the requests.
constexpr int stepsAtATime = 64;
/// A disc that takes more steps than these without a navigation pack runs in circles.
constexpr int mostStepsToPosition = 20'000;
constexpr milliseconds mostLag(500);
constexpr milliseconds timeBetweenScans(200);
constexpr std::uint32_t noSector = 0xffffffff;

DiscPlayer::Clock::duration durationOfTicks(std::int64_t ticks)
{
    constexpr std::int64_t nanosecondsInNineTicks = 100'000;
    return std::chrono::nanoseconds(ticks * nanosecondsInNineTicks / 9);
}

milliseconds roundedUp(DiscPlayer::Clock::duration duration)
{
    return std::max(std::chrono::ceil<milliseconds>(duration), milliseconds(0));
}

bool isMoving(std::uint32_t playback)
{
    return playback == kDVDStatePlaying || playback == kDVDStatePlayingStill;
}

} // namespace

DiscPlayer::DiscPlayer(DiscFiles *disc, DVDDescription description, SharedFrames *frames, Hearers hearers)
    : m_disc(disc)
    , m_description(std::move(description))
    , m_frames(frames)
    , m_hearers(std::move(hearers))
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

bool DiscPlayer::isFull() const
{
    return m_pictures >= picturesAhead;
}

void DiscPlayer::readAhead()
{
    for (int step = 0; step < stepsAtATime && m_navigator && !m_isBarred && !isFull(); ++step)
        takeStep(m_navigator->next());
}

void DiscPlayer::takeSector()
{
    splitSector(m_navigator->sector(), [this](const ElementaryPiece &piece) {
        if (piece.kind == ElementaryKind::Video) {
            m_video->add(piece.bytes, [this](VideoPicture picture) {
                m_items.emplace_back(std::move(picture));
                ++m_pictures;
            });
        } else if (piece.kind == ElementaryKind::Subpicture) {
            // A menu's buttons are drawn by its only stream, whatever subtitles are chosen.
            const int wanted = m_navigator->subpictureStream().value_or(m_navigator->position().isInTitle ? -1 : 0);
            if (piece.stream != wanted)
                return;
            std::optional<Subpicture> subpicture = m_subpictures->add(piece.bytes, piece.presentation.has_value());
            if (subpicture)
                m_items.emplace_back(Overlay{*std::move(subpicture), piece.presentation.value_or(0)});
        }
    });
}

void DiscPlayer::takeStep(NavigationStep step)
{
    const auto drain = [this] {
        m_video->drain([this](VideoPicture picture) {
            m_items.emplace_back(std::move(picture));
            ++m_pictures;
        });
    };
    switch (step) {
    case NavigationStep::Sector:
        takeSector();
        break;
    case NavigationStep::Position:
        m_needsPosition = false;
        m_items.emplace_back(m_navigator->position());
        m_items.emplace_back(Button());
        break;
    case NavigationStep::Jump:
        if (std::exchange(m_dropsAtJump, false))
            forgetAhead();
        else
            drain();
        break;
    case NavigationStep::Still:
        drain();
        m_items.emplace_back(Still{m_navigator->stillSeconds()});
        m_isBarred = true;
        break;
    case NavigationStep::Wait:
        drain();
        m_items.emplace_back(Wait());
        m_isBarred = true;
        break;
    case NavigationStep::Highlight:
        m_items.emplace_back(Button());
        break;
    case NavigationStep::Stream:
        m_subpictures->forget();
        break;
    case NavigationStep::Stop:
        drain();
        m_items.emplace_back(End());
        m_isBarred = true;
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
    m_items.clear();
    m_pictures = 0;
    m_isBarred = false;
    m_stillUntil.reset();
    m_overlay.reset();
    m_button.reset();
    m_video->forget();
    m_subpictures->forget();
    m_due = Clock::now();
}

/// Steps on to the next navigation pack, as the library needs it between two requests.
bool DiscPlayer::settle()
{
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_needsPosition; ++step) {
        if (m_isBarred) {
            const bool isWait = !m_items.empty() && std::holds_alternative<Wait>(m_items.back());
            // A still without a navigation pack in front of it, and the end, are places to stay, too.
            if (!isWait)
                return true;
            m_items.pop_back();
            m_isBarred = false;
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
    const Clock::time_point now = Clock::now();
    if (m_state.playback == kDVDStateScanning)
        return advanceScan(now);
    if (!isMoving(m_state.playback) || !m_navigator)
        return std::nullopt;
    readAhead();
    std::optional<milliseconds> wait;
    while (!m_items.empty() && showFront(now, &wait)) { }
    if (m_overlay && now >= m_overlayUntil) {
        m_overlay.reset();
        compose();
    }
    tellState();
    tellTime(now);
    if (m_items.empty() || (!m_isBarred && !isFull()))
        return isMoving(m_state.playback) ? std::optional(milliseconds(0)) : std::nullopt;
    if (m_state.playback == kDVDStatePlaying && wait)
        wait = std::min(*wait, m_timeRate);
    return wait;
}

bool DiscPlayer::showFront(Clock::time_point now, std::optional<milliseconds> *wait)
{
    Item &front = m_items.front();
    if (auto *const picture = std::get_if<VideoPicture>(&front)) {
        if (now < m_due) {
            *wait = roundedUp(m_due - now);
            return false;
        }
        m_due += durationOfTicks(picture->duration);
        if (now - m_due > mostLag)
            m_due = now;
        show(std::move(*picture));
        --m_pictures;
    } else if (auto *const position = std::get_if<NavigationPosition>(&front)) {
        take(*position);
    } else if (auto *const overlay = std::get_if<Overlay>(&front)) {
        const std::optional<std::int64_t> end = overlay->subpicture.end;
        m_overlayUntil = end ? now + durationOfTicks(*end) : Clock::time_point::max();
        m_overlay = std::move(overlay->subpicture);
        m_button = m_navigator->highlight();
        compose();
    } else if (std::holds_alternative<Button>(front)) {
        const std::optional<ButtonColours> button = m_navigator->highlight();
        m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
        if (std::exchange(m_button, button) != button && m_overlay)
            compose();
    } else if (const auto *const still = std::get_if<Still>(&front)) {
        if (!m_stillUntil) {
            m_stillUntil = still->seconds ? now + std::chrono::seconds(*still->seconds) : Clock::time_point::max();
            setPlayback(kDVDStatePlayingStill);
        }
        if (now < *m_stillUntil) {
            if (*m_stillUntil != Clock::time_point::max())
                *wait = roundedUp(*m_stillUntil - now);
            return false;
        }
        m_stillUntil.reset();
        m_isBarred = false;
        m_navigator->skipStill();
        setPlayback(kDVDStatePlaying);
        m_due = now;
    } else if (std::holds_alternative<Wait>(front)) {
        m_isBarred = false;
        m_navigator->skipWait();
    } else {
        static_cast<void>(stop());
        return false;
    }
    m_items.pop_front();
    return true;
}

void DiscPlayer::show(VideoPicture picture)
{
    m_shown = std::move(picture);
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
    if (m_state.isOnMenu == position.isInTitle)
        m_overlay.reset();
    m_state.isOnMenu = !position.isInTitle;
    m_state.title = position.place.title;
    m_state.chapter = position.place.chapter;
    m_state.angle = position.place.angle;
    m_state.angles = position.angles;
    m_state.elapsed = position.place.elapsed;
    m_state.length = position.length;
    m_state.aspect = position.aspect;
    m_state.format = position.format;
    m_state.width = position.width;
    m_state.height = position.height;
    m_state.buttons = position.isInTitle ? std::uint8_t(0) : position.buttons;
    m_state.place = position.place;
    m_positionTaken = Clock::now();
}

void DiscPlayer::tellState()
{
    if (m_state == m_told)
        return;
    m_told = m_state;
    m_hearers.state(m_state);
}

void DiscPlayer::tellTime(Clock::time_point now)
{
    if (m_state.title == 0 || now - m_timeTold < m_timeRate)
        return;
    m_timeTold = now;
    const auto since = std::chrono::duration_cast<milliseconds>(now - m_positionTaken).count();
    const bool isRunning = m_state.playback == kDVDStatePlaying;
    const std::int64_t elapsed = m_state.elapsed + (isRunning ? std::max<std::int64_t>(since, 0) : 0);
    m_hearers.titleTime(std::uint32_t(std::min<std::int64_t>(elapsed, m_state.length)), m_state.length);
}

void DiscPlayer::setPlayback(std::uint32_t playback)
{
    m_state.playback = playback;
}

void DiscPlayer::fail(const QString &why)
{
    static_cast<void>(stop());
    m_hearers.failure(why.isEmpty() ? QStringLiteral("the disc cannot be read on") : why);
}

// Requests.

OSStatus DiscPlayer::play()
{
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
    m_due = m_positionTaken = Clock::now();
    tellState();
    return noErr;
}

OSStatus DiscPlayer::pause()
{
    if (!m_navigator)
        return kDVDErrorUserActionNoOp;
    if (m_state.playback == kDVDStatePaused)
        return noErr;
    m_playbackBefore = isMoving(m_state.playback) ? m_state.playback : std::uint32_t(kDVDStatePlaying);
    setPlayback(kDVDStatePaused);
    tellState();
    return noErr;
}

OSStatus DiscPlayer::stop()
{
    if (m_navigator)
        forgetAhead();
    m_navigator.reset();
    m_shown = {};
    const PlayerState before = m_state;
    m_state = {};
    m_state.playback = kDVDStateStopped;
    m_state.aspect = before.aspect;
    m_state.format = before.format;
    m_state.width = before.width;
    m_state.height = before.height;
    tellState();
    return noErr;
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
    return playChapter(title, chapter);
}

OSStatus DiscPlayer::setAngle(int angle)
{
    if (!m_navigator || !settle())
        return kDVDErrorUserActionNoOp;
    const OSStatus status = m_navigator->setAngle(angle);
    // It is seen, and told, with one of the next video units.
    m_needsPosition = m_needsPosition || status == noErr;
    return status;
}

OSStatus DiscPlayer::goToMenu(std::uint32_t menu)
{
    return jump([&] { return m_navigator->goToMenu(menu); });
}

OSStatus DiscPlayer::returnToTitle()
{
    return jump([&] { return m_navigator->returnToTitle(); });
}

OSStatus DiscPlayer::navigate(std::uint32_t navigation)
{
    if (!m_navigator || !settle())
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
    if (!m_navigator || !settle())
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
    if (m_isBarred && !m_items.empty() && std::holds_alternative<Still>(m_items.back())) {
        m_items.pop_back();
        m_isBarred = false;
        m_stillUntil.reset();
    }
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
    if (const OSStatus status = playChapter(place.title, place.chapter); status != noErr)
        return status;
    // Searching works along the first angle.
    if (m_state.angle != 1 && setAngle(1) == noErr && !settle())
        return kDVDErrorDamagedMedia;
    const OSStatus found = jump([&] {
        return place.sectorInTitle != noSector ? m_navigator->searchSector(place.sectorInTitle)
                                               : m_navigator->searchTime(place.elapsed);
    });
    if (found != noErr)
        return found;
    return place.angle > 1 && place.angle <= m_state.angles ? setAngle(place.angle) : OSStatus(noErr);
}

OSStatus DiscPlayer::scan(int rate, bool isBackward)
{
    if (!m_navigator || !settle() || m_state.title == 0)
        return kDVDErrorUserActionNoOp;
    m_scanRate = isBackward ? -rate : rate;
    m_scanTime = m_state.elapsed;
    m_due = Clock::now();
    setPlayback(kDVDStateScanning);
    tellState();
    return noErr;
}

std::optional<milliseconds> DiscPlayer::advanceScan(Clock::time_point now)
{
    if (now < m_due)
        return roundedUp(m_due - now);
    m_due = now + timeBetweenScans;
    m_scanTime += m_scanRate * timeBetweenScans.count();
    const bool isAtEnd = m_scanTime <= 0 || m_scanTime >= std::int64_t(m_state.length);
    const std::int64_t time = std::clamp<std::int64_t>(m_scanTime, 0, std::max<std::int64_t>(m_state.length, 1) - 1);
    const Clock::time_point due = m_due;
    if (jump([&] { return m_navigator->searchTime(std::uint32_t(time)); }) != noErr || isAtEnd) {
        if (m_navigator) {
            setPlayback(kDVDStatePlaying);
            m_due = now;
            tellState();
        }
        return milliseconds(0);
    }
    for (int step = 0; step < mostStepsToPosition && m_navigator && m_pictures == 0 && !m_isBarred; ++step)
        takeStep(m_navigator->next());
    while (!m_items.empty()) {
        if (auto *const picture = std::get_if<VideoPicture>(&m_items.front())) {
            show(std::move(*picture));
            break;
        }
        m_items.pop_front();
    }
    if (m_navigator) {
        m_timeTold = {};
        tellTime(now);
        m_due = due;
    }
    return roundedUp(due - Clock::now());
}

} // namespace Tessaron
