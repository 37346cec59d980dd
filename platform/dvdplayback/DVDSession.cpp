#include "platform/dvdplayback/DVDSession.h"

#include "platform/dvdplayback/MessageBytes.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <QtGlobal>

#include <system_error>
#include <utility>

namespace Tessaron
{

namespace
{

using std::chrono::seconds;

/// A drive that spins up, and tries a bad sector again and again, is not hung yet.
constexpr seconds patienceWithOpening(60);
constexpr seconds patienceWithPlaying(20);
constexpr std::uint8_t allRegions = 0xff;
constexpr float loudestVolume = 255;
/// More wait only where a callback does not return.
constexpr std::size_t mostEvents = 10'000;

void log(const char *what, const QString &why)
{
    qWarning("%s: %s", what, displayableText(why).toUtf8().constData());
}

bool isPlayingState(std::uint32_t playback)
{
    return playback == kDVDStatePlaying || playback == kDVDStatePlayingStill || playback == kDVDStateScanning;
}

} // namespace

bool regionsExcludeEachOther(std::uint8_t prohibitedByDisc, std::uint8_t prohibitedByDrive)
{
    return (prohibitedByDisc | prohibitedByDrive) == allRegions;
}

DVDSession &DVDSession::instance()
{
    static DVDSession session;
    return session;
}

DVDSession::~DVDSession()
{
    dropMedia();
}

bool DVDSession::hasBegun() const
{
    const std::lock_guard lock(m_mutex);
    return m_hasBegun;
}

OSStatus DVDSession::begin()
{
    const std::lock_guard call(m_calls);
    if (m_lock.isHeld())
        return kDVDErrorInitializingLib;
    const Result<bool> taken = SessionLock::take(&m_lock);
    if (!taken) {
        log("DVD playback", taken.error().localizedDescription());
        return kDVDErrorUnknown;
    }
    if (!*taken)
        return kDVDErrorInitializingLib;
    try {
        m_teller = std::jthread([this](const std::stop_token &stop) { deliverEvents(stop); });
    } catch (const std::system_error &) {
        m_lock.release();
        return kDVDErrorUnknown;
    }
    const std::lock_guard lock(m_mutex);
    m_hasBegun = true;
    m_settings = {};
    return noErr;
}

OSStatus DVDSession::end()
{
    {
        const std::lock_guard telling(m_telling);
        if (m_tellingThread == std::this_thread::get_id())
            return kDVDErrorWrongParam;
    }
    const std::lock_guard call(m_calls);
    if (!m_lock.isHeld())
        return kDVDErrorUninitializedLib;
    dropMedia();
    m_teller = {};
    {
        const std::lock_guard telling(m_telling);
        m_events.clear();
        m_callBacks.clear();
        m_fatalErrorCallBack = nullptr;
        m_tellingThread = {};
    }
    m_timeRate = 900;
    m_lock.release();
    const std::lock_guard lock(m_mutex);
    m_hasBegun = false;
    return noErr;
}

OSStatus DVDSession::addCallBack(DVDEventCallBack callBack, std::set<std::uint32_t> codes, void *reference,
                                 std::uint32_t *identifier)
{
    if (!hasBegun())
        return kDVDErrorUninitializedLib;
    const std::lock_guard telling(m_telling);
    *identifier = ++m_lastIdentifier;
    m_callBacks.emplace(*identifier, CallBack{callBack, std::move(codes), reference});
    return noErr;
}

OSStatus DVDSession::removeCallBack(std::uint32_t identifier)
{
    if (!hasBegun())
        return kDVDErrorUninitializedLib;
    std::unique_lock telling(m_telling);
    if (m_callBacks.erase(identifier) == 0)
        return kDVDErrorWrongParam;
    if (m_tellingThread != std::this_thread::get_id())
        m_told.wait(telling, [&] { return m_running != identifier; });
    return noErr;
}

OSStatus DVDSession::setFatalErrorCallBack(DVDFatalErrorCallBack callBack, void *reference)
{
    if (!hasBegun())
        return kDVDErrorUninitializedLib;
    std::unique_lock telling(m_telling);
    m_fatalErrorCallBack = callBack;
    m_fatalErrorReference = reference;
    if (m_tellingThread != std::this_thread::get_id())
        m_told.wait(telling, [this] { return !m_tellsFatalError; });
    return noErr;
}

OSStatus DVDSession::openMedia(const QByteArray &path)
{
    const std::lock_guard call(m_calls);
    if (!m_lock.isHeld())
        return kDVDErrorUninitializedLib;
    dropMedia();
    const OSStatus status = connect(path);
    if (status != noErr)
        dropMedia();
    return status;
}

OSStatus DVDSession::connect(const QByteArray &path)
{
    Result<std::unique_ptr<SharedFrames>> frames = SharedFrames::create();
    Result<std::unique_ptr<SharedSound>> sound = SharedSound::create();
    if (!frames || !sound) {
        log("DVD playback", (frames ? sound.error() : frames.error()).localizedDescription());
        return kDVDErrorPlaybackOpen;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = false;
        m_mediaFailure.clear();
    }
    Result<std::unique_ptr<PlayerConnection>> connection =
        PlayerConnection::start({(*frames)->descriptor(), (*sound)->descriptor()},
                                {[this](const PlayerMessage &message) { hear(message); },
                                 [this](const QString &why) { hearEnd(kDVDErrorDamagedMedia, why); }});
    if (!connection) {
        log("DVD playback", connection.error().localizedDescription());
        return OSStatus(connection.error().code());
    }
    {
        const std::lock_guard lock(m_mutex);
        m_frames = *std::move(frames);
        m_sound = *std::move(sound);
        setGain();
        m_state = {};
        m_helperProcess = (*connection)->processIdentifier();
    }
    m_connection = *std::move(connection);
    const PlayerReply reply = m_connection->request(PlayerMessageKind::Open, path, patienceWithOpening);
    if (reply.status != noErr) {
        log("DVD playback", reply.text);
        return reply.status;
    }
    std::optional<DVDDescription> description = decodedDescription(reply.payload);
    if (!description)
        return kDVDErrorUnknown;
    MessageWriter rate;
    rate.add(m_timeRate);
    const PlayerReply rateReply =
        m_connection->request(PlayerMessageKind::SetTimeRate, rate.bytes(), patienceWithPlaying);
    if (rateReply.status != noErr)
        return rateReply.status;
    const std::lock_guard lock(m_mutex);
    if (m_driveRegion)
        description->drive = m_driveRegion;
    if (description->drive && regionsExcludeEachOther(description->prohibitedRegions, description->drive->prohibited))
        return kDVDErrordRegionCodeUninitialized;
    if (description->isEncrypted) {
        log("DVD playback", QStringLiteral("the disc is copy-protected: its contents are scrambled"));
        return kDVDErrorEncryptedMedia;
    }
    if (m_hasEnded)
        return kDVDErrorDamagedMedia;
    // A device takes a while to open: it does so before anything is played.
    m_soundProcess = std::make_unique<SoundProcess>(m_sound.get());
    m_description = std::move(description);
    m_isAlive = true;
    return noErr;
}

void DVDSession::dropMedia()
{
    m_connection.reset();
    m_soundProcess.reset();
    m_playsAfterSleep = false;
    const std::lock_guard lock(m_mutex);
    m_isAlive = false;
    m_description.reset();
    m_state = {};
    m_frames.reset();
    m_sound.reset();
    m_helperProcess = -1;
}

OSStatus DVDSession::closeMedia()
{
    const std::lock_guard call(m_calls);
    if (!m_lock.isHeld())
        return kDVDErrorUninitializedLib;
    // Media whose helper has ended can be closed, too, and counts as open until then for this call only.
    if (!m_connection)
        return kDVDErrorNoValidMedia;
    dropMedia();
    return noErr;
}

bool DVDSession::hasMedia() const
{
    const std::lock_guard lock(m_mutex);
    return m_isAlive;
}

OSStatus DVDSession::ask(PlayerMessageKind kind, const QByteArray &payload, QByteArray *answer)
{
    const std::lock_guard call(m_calls);
    if (!m_lock.isHeld())
        return kDVDErrorUninitializedLib;
    if (!m_connection || !hasMedia())
        return kDVDErrorNoValidMedia;
    const PlayerReply reply = m_connection->request(kind, payload, patienceWithPlaying);
    if (reply.status == noErr && answer)
        *answer = reply.payload;
    // The end of the helper may be heard later than its calls are answered.
    const std::lock_guard lock(m_mutex);
    if (m_mediaFailure.isEmpty())
        m_mediaFailure = reply.text;
    return reply.status;
}

OSStatus DVDSession::setTimeRate(std::uint32_t milliseconds)
{
    {
        const std::lock_guard call(m_calls);
        if (!m_lock.isHeld())
            return kDVDErrorUninitializedLib;
        if (milliseconds == 0)
            return kDVDErrorWrongParam;
        m_timeRate = milliseconds;
    }
    MessageWriter rate;
    rate.add(milliseconds);
    const OSStatus status = ask(PlayerMessageKind::SetTimeRate, rate.bytes());
    return status == kDVDErrorNoValidMedia ? noErr : status;
}

OSStatus DVDSession::sleep()
{
    const std::optional<PlayerState> now = state();
    if (!now)
        return hasBegun() ? noErr : kDVDErrorUninitializedLib;
    if (!isPlayingState(now->playback))
        return noErr;
    const OSStatus status = ask(PlayerMessageKind::Sleep);
    const std::lock_guard call(m_calls);
    m_playsAfterSleep = status == noErr;
    return status;
}

OSStatus DVDSession::wakeUp()
{
    if (!hasBegun())
        return kDVDErrorUninitializedLib;
    {
        const std::lock_guard call(m_calls);
        if (!std::exchange(m_playsAfterSleep, false))
            return noErr;
    }
    // One that came to its end on the way to the sleep must not begin anew.
    const std::optional<PlayerState> now = state();
    if (!now || now->playback != kDVDStatePaused)
        return noErr;
    return ask(PlayerMessageKind::Play);
}

std::optional<PlayerState> DVDSession::state() const
{
    const std::lock_guard lock(m_mutex);
    return m_isAlive ? std::optional(m_state) : std::nullopt;
}

std::optional<DVDDescription> DVDSession::description() const
{
    const std::lock_guard lock(m_mutex);
    return m_isAlive ? m_description : std::nullopt;
}

QString DVDSession::mediaFailure() const
{
    const std::lock_guard lock(m_mutex);
    return m_mediaFailure;
}

QString DVDSession::soundFailure() const
{
    const std::lock_guard lock(m_mutex);
    return m_isAlive && m_state.sound == std::uint8_t(SoundDevice::Absent) ? reasonForSilence() : QString();
}

/// With m_mutex held, and media open.
QString DVDSession::reasonForSilence() const
{
    const QString reason = m_sound->reason();
    return reason.isEmpty() ? QStringLiteral("the device takes sound in a form that is not known here") : reason;
}

bool DVDSession::takeFrame(QImage *image)
{
    const std::lock_guard lock(m_mutex);
    std::uint32_t number = 0;
    return m_frames && m_frames->takeNewest(image, &number);
}

void DVDSession::setFrameHearer(std::function<void()> hearer)
{
    const std::lock_guard hearing(m_frameHearing);
    m_frameHearer = std::move(hearer);
}

void DVDSession::setDriveRegion(const std::optional<DVDDriveRegion> &region)
{
    const std::lock_guard lock(m_mutex);
    m_driveRegion = region;
}

pid_t DVDSession::helperProcess() const
{
    const std::lock_guard lock(m_mutex);
    return m_helperProcess;
}

DVDSession::Settings DVDSession::settings() const
{
    const std::lock_guard lock(m_mutex);
    return m_settings;
}

void DVDSession::setSettings(const std::function<void(Settings *)> &change)
{
    const std::lock_guard lock(m_mutex);
    change(&m_settings);
    setGain();
}

/// With m_mutex held.
void DVDSession::setGain() const
{
    if (m_sound)
        m_sound->setGain(m_settings.isMuted ? 0 : float(m_settings.volume) / loudestVolume);
}

// What the helper tells.

void DVDSession::hear(const PlayerMessage &message)
{
    MessageReader reader(message.payload);
    switch (message.kind) {
    case PlayerMessageKind::State:
        if (const std::optional<PlayerState> state = decodedState(message.payload))
            hearState(*state);
        break;
    case PlayerMessageKind::TitleTime: {
        const auto elapsed = reader.take<std::uint32_t>();
        const auto length = reader.take<std::uint32_t>();
        {
            const std::lock_guard lock(m_mutex);
            m_state.elapsed = elapsed;
            m_state.length = length;
        }
        tell({kDVDEventTitleTime, elapsed, length});
        break;
    }
    case PlayerMessageKind::NewFrame: {
        const std::lock_guard hearing(m_frameHearing);
        if (m_frameHearer)
            m_frameHearer();
        break;
    }
    case PlayerMessageKind::Failure: {
        const auto status = reader.take<std::int32_t>();
        hearEnd(status, reader.takeText(longestPlayerMessage));
        break;
    }
    default:
        break;
    }
}

void DVDSession::hearState(const PlayerState &state)
{
    PlayerState before;
    std::optional<QString> whyNoSound;
    {
        const std::lock_guard lock(m_mutex);
        before = std::exchange(m_state, state);
        if (m_sound && state.sound == std::uint8_t(SoundDevice::Absent) && before.sound != state.sound)
            whyNoSound = reasonForSilence();
    }
    if (whyNoSound)
        log("DVD playback", QStringLiteral("without sound, since no device can be opened (%1)").arg(*whyNoSound));
    if (state.title != before.title)
        tell({kDVDEventTitle, state.title});
    if (state.chapter != before.chapter || state.title != before.title)
        tell({kDVDEventPTT, state.chapter});
    if (state.format != before.format)
        tell({kDVDEventVideoStandard, std::uint32_t(state.format)});
    if (state.aspect != before.aspect || state.width != before.width || state.height != before.height)
        tell({kDVDEventDisplayMode, std::uint32_t(state.aspect)});
    if (state.playback != before.playback)
        tell({kDVDEventPlayback, state.playback});
}

void DVDSession::hearEnd(OSStatus status, const QString &why)
{
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        if (m_mediaFailure.isEmpty())
            m_mediaFailure = why;
        // The call that opens media answers its own failure.
        if (!std::exchange(m_isAlive, false))
            return;
        // What the helper has left behind is of no interest any more.
        if (m_sound)
            m_sound->setGain(0);
    }
    log("DVD playback", why);
    tell({kDVDEventError, std::uint32_t(status), 0, true});
}

void DVDSession::tell(const Event &event)
{
    const std::lock_guard telling(m_telling);
    if (m_events.size() >= mostEvents)
        m_events.pop_front();
    m_events.push_back(event);
    m_told.notify_all();
}

void DVDSession::deliverEvents(const std::stop_token &stop)
{
    std::unique_lock telling(m_telling);
    m_tellingThread = std::this_thread::get_id();
    while (m_told.wait(telling, stop, [this] { return !m_events.empty(); })) {
        if (stop.stop_requested())
            break;
        const Event event = m_events.front();
        m_events.pop_front();
        telling.unlock();
        deliver(event);
        telling.lock();
    }
}

/// On the telling thread.
void DVDSession::deliver(const Event &event)
{
    std::unique_lock telling(m_telling);
    std::vector<std::uint32_t> wanted;
    for (const auto &[identifier, callBack] : m_callBacks) {
        if (callBack.codes.contains(event.code))
            wanted.push_back(identifier);
    }
    for (const std::uint32_t identifier : wanted) {
        const auto found = m_callBacks.find(identifier); // may have been removed meanwhile
        if (found == m_callBacks.end())
            continue;
        const CallBack callBack = found->second;
        m_running = identifier;
        telling.unlock();
        callBack.function(event.code, event.value1, event.value2, callBack.reference);
        telling.lock();
        m_running = 0;
        m_told.notify_all();
    }
    if (!event.isFatal || !m_fatalErrorCallBack)
        return;
    const DVDFatalErrorCallBack fatal = m_fatalErrorCallBack;
    void *const reference = m_fatalErrorReference;
    m_tellsFatalError = true;
    telling.unlock();
    fatal(OSStatus(event.value1), reference);
    telling.lock();
    m_tellsFatalError = false;
    m_told.notify_all();
}

} // namespace Tessaron
