#include "platform/discrecording/drives/DriveSink.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/burn/DRBurn.h"
#include "platform/discrecording/drives/DiscBegin.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// At the highest speed of a CD a second and a half, of a BD a tenth: files that are slow to open are bridged.
constexpr std::size_t fifoSize = std::size_t(16) << 20;
constexpr std::chrono::milliseconds lookInterval(100);

} // namespace

DriveSink::DriveSink(GrabbedDrive &drive, const RecordingOptions &options, DriveActivity &activity,
                     std::stop_token cancellation)
    : m_drive(drive)
    , m_options(options)
    , m_activity(activity)
    , m_cancellation(std::move(cancellation))
    , m_fifo(std::make_unique<BlockFifo>(fifoSize))
{
}

DriveSink::~DriveSink() = default;

NSError DriveSink::beginDisc(const TableOfContents &disc)
{
    m_family = m_drive.disc().family;
    m_hadSessions = m_drive.disc().state == DiscState::Appendable && m_drive.disc().sessions > 0;
    Result<RecordingPlan> plan = planRecording(disc, m_drive.disc(), m_options);
    if (!plan)
        return plan.error();
    m_plan = *std::move(plan);
    struct stat status = {};
    if (m_drive.isFile() && ::fstat(m_drive.fileDescriptor(), &status) != 0)
        return burnOutputError(errno, m_drive.name());
    m_lengthBefore = status.st_size;
    return {};
}

NSError DriveSink::beginTrack(const DiscTrack & /*track*/)
{
    const RecordedSession &session = m_plan.sessions[m_session];
    if (m_track == 0) {
        m_fifo->restart();
        m_writing = std::make_unique<SessionWriting>(m_drive, session, m_options, *m_fifo, m_activity);
    }
    m_recorded = &session.tracks[m_track];
    return {};
}

NSError DriveSink::writeBlocks(const BlockBatch &run)
{
    const auto *const bytes = static_cast<const std::uint8_t *>(run.bytes);
    keepBegin(run);
    const std::size_t kept = m_recorded->blockSize;
    if (run.blockSize == kept)
        return put({bytes, std::size_t(run.count) * run.blockSize});
    m_kept.resize(std::size_t(run.count) * kept);
    for (std::size_t block = 0; block < run.count; ++block)
        std::memcpy(m_kept.data() + block * kept, bytes + block * run.blockSize + m_recorded->keptFrom, kept);
    return put(m_kept);
}

void DriveSink::keepBegin(const BlockBatch &run)
{
    constexpr std::size_t wanted = std::size_t(blocksOfDiscBegin) * 2048;
    if (!m_options.growth || m_begin.size() >= wanted)
        return;
    const auto *const bytes = static_cast<const std::uint8_t *>(run.bytes);
    const std::size_t length = std::min(wanted - m_begin.size(), std::size_t(run.count) * run.blockSize);
    m_begin.insert(m_begin.end(), bytes, bytes + length);
}

NSError DriveSink::put(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        if (m_cancellation.stop_requested())
            return burnCancelledError();
        bytes = bytes.subspan(m_fifo->put(bytes, lookInterval));
        if (m_fifo->hasFailed()) { // the drive was made to stop
            waitUntilIdle();
            return failure();
        }
        if (!m_writing->hasBegun()) {
            if (m_fifo->filled() == m_fifo->capacity()) {
                if (NSError error = startWriting())
                    return error;
            }
            continue;
        }
        const auto now = std::chrono::steady_clock::now();
        if (now - m_lastLook < lookInterval)
            continue;
        m_lastLook = now;
        if (!m_writing->isRunning())
            return failure();
    }
    return {};
}

NSError DriveSink::startWriting()
{
    NSError error = m_writing->start();
    m_hasWritten = m_hasWritten || m_writing->hasBegun();
    return error;
}

NSError DriveSink::endTrack()
{
    ++m_track;
    if (m_track < m_plan.sessions[m_session].tracks.size())
        return {};
    if (NSError error = finishSession())
        return error;
    m_track = 0;
    ++m_session;
    return {};
}

NSError DriveSink::finishSession()
{
    if (!m_writing->hasBegun()) {
        if (NSError error = startWriting())
            return error;
    }
    m_fifo->end();
    waitUntilIdle();
    if (m_cancellation.stop_requested() && !m_writing->isAllTaken())
        return burnCancelledError();
    if (NSError error = m_writing->outcome())
        return failure();
    m_writing.reset();
    return m_drive.isFile() ? NSError() : m_drive.lookAgain();
}

/// Until the drive does nothing any more. A cancel still stops it as long as there are data to be written; the ending
/// of a session goes on then, since it leaves more behind than breaking it off.
void DriveSink::waitUntilIdle()
{
    while (m_writing->isRunning()) {
        if (m_cancellation.stop_requested() && !m_fifo->hasFailed() && !m_writing->isAllTaken())
            m_writing->cancel();
        std::this_thread::sleep_for(lookInterval / 2);
    }
}

NSError DriveSink::failure()
{
    m_wasAllTaken = m_writing->isAllTaken();
    if (NSError error = m_writing->outcome())
        return error;
    // It ended while there were bytes for it left to come.
    return driveError(DriveFault::Unknown, m_writing->messages(), m_drive.name());
}

NSError DriveSink::endDisc()
{
    m_fifo.reset();
    if (NSError error = m_options.growth && !m_options.isSimulated ? endGrowth() : NSError())
        return error;
    m_condition = m_options.isSimulated ? DiscCondition::Unchanged : DiscCondition::Written;
    return m_drive.isFile() ? endFile() : NSError();
}

/// What was added is whole, and is made to be found.
NSError DriveSink::endGrowth()
{
    // What was added is on the disk before anything leads to it.
    if (const int failure = m_drive.isFile() ? syncToDisk(m_drive.fileDescriptor()) : 0; failure != 0)
        return burnOutputError(failure, m_drive.name());
    m_begin.resize(std::size_t(blocksOfDiscBegin) * 2048);
    return writeDiscBegin(m_drive, *m_options.growth, m_begin, &m_isBeginTouched);
}

/// Whether what is overwritten has what it had before, and nothing leads to what was to be added.
bool DriveSink::isGrowthUndone()
{
    if (!m_options.growth || m_isBeginTouched)
        return false;
    // Before anything is written a file has its length still, and that may not be known yet.
    return !m_drive.isFile() || !m_hasWritten || ::ftruncate(m_drive.fileDescriptor(), m_lengthBefore) == 0;
}

/// The file ends with the last block, and is on the disk.
NSError DriveSink::endFile() const
{
    if (m_options.isSimulated)
        return {};
    const auto length = off_t(m_plan.blocksOnDisc * 2048);
    struct stat status = {};
    const bool isLonger = ::fstat(m_drive.fileDescriptor(), &status) == 0 && status.st_size > length;
    const int failure =
        isLonger && ::ftruncate(m_drive.fileDescriptor(), length) != 0 ? errno : syncToDisk(m_drive.fileDescriptor());
    return failure == 0 ? NSError() : burnOutputError(failure, m_drive.name());
}

NSError DriveSink::abandonDisc(const NSError &reason)
{
    InterruptedWriting writing;
    writing.hasBegun = m_hasWritten;
    writing.hadSessions = m_hadSessions;
    writing.isSimulated = m_options.isSimulated;
    if (m_writing) {
        m_writing->cancel();
        waitUntilIdle();
        writing.isWholeDataWritten = m_wasAllTaken;
        m_writing.reset();
    }
    m_fifo.reset();
    const bool asks = writing.hasBegun && !m_drive.isFile();
    const bool isKnown = !asks || (m_drive.isOpen() && !m_drive.lookAgain());
    writing.isOldKept = isGrowthUndone();
    m_condition = conditionAfter(writing, m_family, isKnown ? &m_drive.disc() : nullptr);
    return withDiscCondition(reason, m_condition, m_family);
}

} // namespace Tessaron
