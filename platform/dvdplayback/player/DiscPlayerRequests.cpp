// What is asked of the player, as in DVDPlayback.h.

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/DiscPlayer.h"

#include <utility>

namespace Tessaron
{

namespace
{

using std::chrono::milliseconds;

constexpr std::uint32_t noSector = 0xffffffff;

} // namespace

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
    sleep();
    return noErr;
}

void DiscPlayer::sleep()
{
    if (!m_navigator || m_state.playback == kDVDStatePaused)
        return;
    m_playbackBefore = isMoving() ? m_state.playback : std::uint32_t(kDVDStatePlaying);
    setPlayback(kDVDStatePaused);
    tellState();
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
    m_screen.clear();
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
    if (m_rows.removeBar<Still>())
        m_stillUntil.reset();
    if (m_state.playback == kDVDStatePlayingStill || m_state.playback == kDVDStatePaused)
        setPlayback(kDVDStatePlaying);
    tellState();
}

void DiscPlayer::showSelection()
{
    m_state.selectedButton = std::uint8_t(m_navigator->selectedButton());
    m_screen.setButton(m_navigator->highlight());
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
        m_rows.decode(m_timeline.begin());
        m_runBegin.reset();
        const PlaybackRows::Item *const front = m_rows.front();
        if (!front) {
            if (m_rows.isBarred())
                break;
            takeStep(m_navigator->next());
            continue;
        }
        const bool isPicture = std::holds_alternative<VideoPicture>(*front);
        const bool isStay = std::holds_alternative<Still>(*front) || std::holds_alternative<End>(*front);
        std::optional<milliseconds> wait;
        if (isStay || !showFront(now, &wait))
            break;
        if (isPicture) {
            // What belongs to pictures that were stepped over is not heard.
            m_sound.dropBefore(m_runBegin.value_or(m_timeline.begin()));
            tellState();
            return noErr;
        }
    }
    return kDVDErrorUserActionNoOp;
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
    if (status == noErr && stream == 0)
        m_screen.removeOverlay();
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

} // namespace Tessaron
