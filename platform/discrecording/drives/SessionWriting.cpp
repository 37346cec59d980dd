#include "platform/discrecording/drives/SessionWriting.h"

#include "platform/discrecording/drives/BurnControl.h"
#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/discrecording/drives/LibBurn.h"

#include <QByteArray>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::chrono::milliseconds lookInterval(50);

/// BURN_REASONS_LEN bytes for the library to write into, read as a text on one line.
QString textOf(const std::vector<char> &reasons)
{
    return QString::fromUtf8(reasons.data()).simplified();
}

int modeOf(const DiscTrack &track)
{
    int mode = track.isAudio() ? BURN_AUDIO : BURN_MODE1;
    if (track.copyState == CopyState::CopyrightFree)
        mode |= BURN_COPY;
    if (track.copyState == CopyState::ProtectedCopy)
        mode |= BURN_SCMS;
    if (track.isAudio() && track.hasPreEmphasis)
        mode |= BURN_PREEMPHASIS;
    if (track.isAudio() && track.hasFourChannels)
        mode |= BURN_4CH;
    return mode;
}

DriveStage stageOf(burn::burn_drive_status status)
{
    switch (status) {
    case burn::BURN_DRIVE_IDLE:
        return DriveStage::Idle;
    case burn::BURN_DRIVE_SPAWNING:
    case burn::BURN_DRIVE_WRITING_LEADIN:
    case burn::BURN_DRIVE_WRITING_PREGAP:
        return DriveStage::Starting;
    case burn::BURN_DRIVE_WRITING_LEADOUT:
    case burn::BURN_DRIVE_CLOSING_TRACK:
    case burn::BURN_DRIVE_CLOSING_SESSION:
        return DriveStage::Closing;
    default:
        return DriveStage::Writing;
    }
}

} // namespace

/// Counted by libburn's thread, read by ours.
struct SessionWriting::Progress {
    std::atomic<std::uint64_t> taken = 0; ///< bytes
    std::atomic<bool> wasCut = false; ///< a source had to say that it failed
    std::atomic<std::uint32_t> writers = 0; ///< threads of libburn that have looked at a source and have not ended
};

/// Order is that of freeing, from the last one up: tracks before the session, sessions before the disc.
struct SessionWriting::Handles {
    BurnWriteOptionsHandle options;
    BurnDiscHandle disc;
    BurnSessionHandle session;
    std::vector<BurnTrackHandle> tracks;
};

namespace
{

/// What stands behind a burn_source: the next bytes of the fifo, up to the end of its track.
template <typename Progress>
struct SourceState {
    BlockFifo &fifo;
    std::shared_ptr<Progress> progress;
    std::uint64_t size = 0;
    std::uint64_t left = 0;
};

template <typename Progress>
SourceState<Progress> &stateOf(burn::burn_source *source)
{
    return *static_cast<SourceState<Progress> *>(source->data);
}

/// Counts a thread of libburn as long as it lives. Such threads are detached, and that a drive is idle is said by a
/// plain number, which orders nothing: only the end of its writer makes sure that the writer's last steps with the
/// drive, its file and the messages have been seen by the thread that lets go of these.
template <typename Progress>
class CountedWriter
{
public:
    CountedWriter() = default;
    CountedWriter(const CountedWriter &) = delete;
    CountedWriter &operator=(const CountedWriter &) = delete;
    ~CountedWriter()
    {
        if (m_progress)
            --m_progress->writers;
    }

    static void countThisThread(const std::shared_ptr<Progress> &progress)
    {
        static thread_local CountedWriter writer;
        // A source is asked for its size by the control thread, too. A writer writes one session only.
        if (writer.m_progress || BurnControl::instance().isThisThread())
            return;
        writer.m_progress = progress;
        ++progress->writers;
    }

private:
    std::shared_ptr<Progress> m_progress; ///< null for a thread that is not counted
};

/// The source is libburn's to free, with free().
template <typename Progress>
burn::burn_source *makeSource(BlockFifo &fifo, std::shared_ptr<Progress> progress, std::uint64_t size)
{
    using State = SourceState<Progress>;
    auto *const source = static_cast<burn::burn_source *>(std::calloc(1, sizeof(burn::burn_source)));
    if (source == nullptr)
        return nullptr;
    source->refcount = 1;
    source->version = 1;
    source->data = new State{fifo, std::move(progress), size, size};
    source->read_xt = [](burn::burn_source *own, unsigned char *buffer, int length) {
        State &state = stateOf<Progress>(own);
        CountedWriter<Progress>::countThisThread(state.progress);
        const auto wanted = std::size_t(std::min<std::uint64_t>(std::uint64_t(length), state.left));
        if (wanted == 0)
            return 0;
        if (!state.fifo.take({buffer, wanted})) {
            state.progress->wasCut = true;
            return -1;
        }
        state.left -= wanted;
        state.progress->taken += wanted;
        return int(wanted);
    };
    source->get_size = [](burn::burn_source *own) {
        const State &state = stateOf<Progress>(own);
        CountedWriter<Progress>::countThisThread(state.progress); // before anything is written
        return off_t(state.size);
    };
    source->set_size = [](burn::burn_source *, off_t) { return 1; };
    source->free_data = [](burn::burn_source *own) { delete &stateOf<Progress>(own); };
    source->cancel = [](burn::burn_source *) { return 1; };
    return source;
}

} // namespace

SessionWriting::SessionWriting(GrabbedDrive &drive, const RecordedSession &session, const RecordingOptions &options,
                               BlockFifo &fifo, DriveActivity &activity)
    : m_drive(drive)
    , m_session(session)
    , m_options(options)
    , m_fifo(fifo)
    , m_activity(activity)
    , m_handles(std::make_unique<Handles>())
    , m_progress(std::make_shared<Progress>())
{
}

SessionWriting::~SessionWriting()
{
    if (m_isRunning) {
        cancel();
        while (isRunning())
            std::this_thread::sleep_for(lookInterval);
    }
    BurnControl::instance().call([this] { m_handles.reset(); });
    m_activity.stage = DriveStage::Idle;
}

NSError SessionWriting::start()
{
    if (!m_drive.isOpen())
        return driveError(DriveFault::Gone, {}, m_drive.name());
    return BurnControl::instance().call([this] { return startOnControlThread(); });
}

NSError SessionWriting::startOnControlThread()
{
    static_cast<void>(takeDriveMessages());
    m_handles->disc.reset(burn::burn_disc_create());
    m_handles->session.reset(burn::burn_session_create());
    if (!m_handles->disc || !m_handles->session
        || burn::burn_disc_add_session(m_handles->disc.get(), m_handles->session.get(), BURN_POS_END) == 0)
        return driveError(DriveFault::Refused, takeDriveMessages(), m_drive.name());
    for (const RecordedTrack &track : m_session.tracks) {
        if (NSError error = addTrack(track))
            return error;
    }
    if (NSError error = setOptions())
        return error;
    burn::burn_drive_set_speed(m_drive.handle(), 0, int(m_options.speed));
    takeMessages();
    m_hasBegun = true;
    m_isRunning = true;
    m_lastTaking = std::chrono::steady_clock::now();
    m_activity.stage = DriveStage::Starting;
    burn::burn_disc_write(m_handles->options.get(), m_handles->disc.get());
    return {};
}

NSError SessionWriting::addTrack(const RecordedTrack &recorded)
{
    BurnTrackHandle track(burn::burn_track_create());
    const std::uint64_t bytes = recorded.blocks * recorded.blockSize;
    const BurnSourceHandle source(makeSource(m_fifo, m_progress, bytes));
    const auto refused = [this] { return driveError(DriveFault::Refused, takeDriveMessages(), m_drive.name()); };
    if (!track || !source)
        return refused();
    constexpr int padsLastBlock = 1;
    burn::burn_track_define_data(track.get(), 0, 0, padsLastBlock, modeOf(recorded.track));
    if (burn::burn_track_set_source(track.get(), source.get()) != burn::BURN_SOURCE_OK)
        return refused();
    if (m_session.mode == RecordingMode::AtOnce && recorded.track.isAudio()) {
        int index = recorded.hasIndex0 ? 0 : 1;
        for (const std::uint64_t point : recorded.indexPoints) {
            if (burn::burn_track_set_index(track.get(), index++, std::uint32_t(point), 0) <= 0)
                return refused();
        }
        if (recorded.madePregap > 0 && burn::burn_track_set_pregap_size(track.get(), int(recorded.madePregap), 0) <= 0)
            return refused();
        if (recorded.madePostgap > 0
            && burn::burn_track_set_postgap_size(track.get(), int(recorded.madePostgap), 0) <= 0)
            return refused();
        std::array<char, 13> isrc{}; // the library writes into it
        constexpr qsizetype lengthOfIsrc = 12;
        if (recorded.track.isrc.size() == lengthOfIsrc) {
            std::memcpy(isrc.data(), recorded.track.isrc.constData(), std::size_t(lengthOfIsrc));
            if (burn::burn_track_set_isrc_string(track.get(), isrc.data(), 0) <= 0)
                return refused();
        }
    }
    if (burn::burn_session_add_track(m_handles->session.get(), track.get(), BURN_POS_END) == 0)
        return refused();
    m_handles->tracks.push_back(std::move(track));
    return {};
}

NSError SessionWriting::setOptions()
{
    m_handles->options.reset(burn::burn_write_opts_new(m_drive.handle()));
    burn::burn_write_opts *const options = m_handles->options.get();
    if (options == nullptr)
        return driveError(DriveFault::Refused, takeDriveMessages(), m_drive.name());
    burn::burn_write_opts_set_multi(options, m_session.leavesOpen ? 1 : 0);
    burn::burn_write_opts_set_simulate(options, m_options.isSimulated ? 1 : 0);
    if (m_session.firstBlock) {
        constexpr off_t blockSize = 2048;
        burn::burn_write_opts_set_start_byte(options, off_t(*m_session.firstBlock) * blockSize);
    }
    burn::burn_write_opts_set_underrun_proof(options, 1); // where the drive has it
    burn::burn_write_opts_set_perform_opc(options, 0); // drives calibrate by themselves when they begin
    if (NSError error = setTexts())
        return error;
    std::vector<char> reasons(BURN_REASONS_LEN);
    burn::burn_write_types type =
        burn::burn_write_opts_auto_write_type(options, m_handles->disc.get(), reasons.data(), 0);
    // For DVD+R and BD-R the library takes both for the same, and its first choice is the other one.
    const bool wantsTracks = m_session.mode == RecordingMode::TrackByTrack && type == burn::BURN_WRITE_SAO;
    if (wantsTracks && burn::burn_write_opts_set_write_type(options, burn::BURN_WRITE_TAO, burn::BURN_BLOCK_MODE1) != 0)
        type = burn::BURN_WRITE_TAO;
    const bool isRightType = m_session.mode == RecordingMode::AtOnce || type == burn::BURN_WRITE_TAO;
    const bool needsAtOnce = !m_session.cdTextPacks.isEmpty() || m_session.tracks.front().track.isAudio();
    const bool losesTexts = m_session.mode == RecordingMode::AtOnce && needsAtOnce && type != burn::BURN_WRITE_SAO;
    if (type == burn::BURN_WRITE_NONE || !isRightType || losesTexts
        || burn::burn_precheck_write(options, m_handles->disc.get(), reasons.data(), 0) <= 0) {
        NSError error = driveError(DriveFault::WrongDisc, takeDriveMessages(), m_drive.name());
        QVariantMap userInfo = error.userInfo();
        userInfo.insert(NSLocalizedDescriptionKey,
                        QStringLiteral("%1 (%2)").arg(error.localizedDescription(), textOf(reasons)));
        return NSError(error.domain(), error.code(), userInfo);
    }
    return {};
}

NSError SessionWriting::setTexts()
{
    burn::burn_write_opts *const options = m_handles->options.get();
    constexpr qsizetype digits = 13;
    if (m_session.mediaCatalogNumber.size() == digits) {
        std::array<unsigned char, std::size_t(digits)> number{};
        std::memcpy(number.data(), m_session.mediaCatalogNumber.constData(), number.size());
        burn::burn_write_opts_set_mediacatalog(options, number.data());
        burn::burn_write_opts_set_has_mediacatalog(options, 1);
    }
    if (m_session.cdTextPacks.isEmpty())
        return {};
    constexpr int packSize = 18;
    QByteArray packs = m_session.cdTextPacks;
    if (burn::burn_write_opts_set_leadin_text(options, reinterpret_cast<unsigned char *>(packs.data()),
                                              int(packs.size() / packSize), 0)
        > 0)
        return {};
    return driveError(DriveFault::Refused, takeDriveMessages(), m_drive.name());
}

void SessionWriting::takeMessages()
{
    const std::vector<DriveMessage> messages = takeDriveMessages();
    m_messages.insert(m_messages.end(), messages.begin(), messages.end());
}

bool SessionWriting::isRunning()
{
    if (!m_isRunning)
        return false;
    BurnControl::instance().call([this] {
        burn::burn_progress progress{};
        const burn::burn_drive_status status = burn::burn_drive_get_status(m_drive.handle(), &progress);
        takeMessages();
        m_activity.stage = stageOf(status);
        if (status != burn::BURN_DRIVE_IDLE || m_progress->writers > 0)
            return;
        m_isRunning = false;
        m_isWellWritten = burn::burn_drive_wrote_well(m_drive.handle()) != 0;
        if (burn::burn_disc_get_status(m_drive.handle()) == burn::BURN_DISC_UNGRABBED)
            m_drive.forget();
    });
    m_activity.bytesSent = m_progress->taken.load();
    m_activity.waits = m_fifo.waits();
    stopWhenStalled();
    return m_isRunning;
}

/// What follows the last byte is not looked at: a drive may take minutes to end a session, and is not to be disturbed.
void SessionWriting::stopWhenStalled()
{
    if (!m_isRunning || m_hasStalled || m_drive.isFile())
        return;
    const auto now = std::chrono::steady_clock::now();
    const std::uint64_t taken = m_progress->taken;
    if (taken != std::exchange(m_takenLately, taken) || m_fifo.filled() == 0) {
        m_lastTaking = now;
        return;
    }
    const DrivePatience &patience = m_drive.patience();
    if (now - m_lastTaking < (taken < patience.beginBytes ? patience.atBegin : patience.later))
        return;
    m_hasStalled = true;
    cancel();
}

void SessionWriting::cancel()
{
    if (m_isRunning)
        BurnControl::instance().call([this] { burn::burn_drive_cancel(m_drive.handle()); });
    m_fifo.fail();
}

bool SessionWriting::isAllTaken() const
{
    std::uint64_t bytes = 0;
    for (const RecordedTrack &track : m_session.tracks)
        bytes += track.blocks * track.blockSize;
    return m_progress->taken == bytes;
}

NSError SessionWriting::outcome()
{
    // A source that was cut short is filled up with zeros and called well written by the library.
    if (m_isWellWritten && isAllTaken() && !m_progress->wasCut)
        return {};
    const DriveFault fault = driveFault(m_messages);
    if (m_hasStalled && fault == DriveFault::Unknown)
        return driveError(DriveFault::Stalled, {}, m_drive.name());
    return driveError(fault, m_messages, m_drive.name());
}

} // namespace Tessaron
