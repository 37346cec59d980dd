#include "platform/discrecording/drives/RecordingPlan.h"

#include "platform/discrecording/drives/DriveFaults.h"
#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t soundSize = 2352;
constexpr std::uint32_t dataSize = 2048;
constexpr std::uint64_t firstPregap = 150; // blocks, on every CD
constexpr std::uint64_t gapOfTracks = 152; // a pregap, and two run-out blocks (MMC-5 4.2.3.5)
constexpr std::uint64_t shortestTrack = 300; // blocks of a CD (ECMA-130 20)
constexpr std::uint64_t gapBehindFirstSession = 11'400; // lead-out, lead-in and pregap
constexpr std::uint64_t gapBehindSession = 6'900;

NSError refusal(DriveFault fault, OSStatus status, const QString &description, const QString &suggestion)
{
    return NSError(NSOSStatusErrorDomain, status,
                   {{NSLocalizedDescriptionKey, description},
                    {NSLocalizedRecoverySuggestionErrorKey, suggestion},
                    {DriveFaultKey, nameOfDriveFault(fault)}});
}

NSError refusal(const QString &description, const QString &suggestion)
{
    return refusal(DriveFault::WrongDisc, paramErr, description, suggestion);
}

QString sizeText(std::uint64_t blocks)
{
    return QStringLiteral("%1 MB").arg((blocks * dataSize + 999'999) / 1'000'000);
}

NSError errorOfClosedDisc(const DiscDescription &disc)
{
    const QString what = QStringLiteral("the disc (%1) is written and closed").arg(disc.profileName);
    return isRewritable(disc.family)
        ? refusal(what, QStringLiteral("Blank it first with 'tessaron blank', which destroys what is on it."))
        : refusal(what, QStringLiteral("Put an empty disc in."));
}

NSError errorOfState(const DiscDescription &disc, const RecordingOptions &options)
{
    switch (disc.state) {
    case DiscState::NoDisc:
        return refusal(DriveFault::NoDisc, ioErr, QStringLiteral("there is no disc in the drive"),
                       QStringLiteral("Put one in."));
    case DiscState::Closed:
        return errorOfClosedDisc(disc);
    case DiscState::Unknown:
    case DiscState::Unsuitable:
        return refusal(QStringLiteral("the drive cannot make use of the disc in it"),
                       QStringLiteral("Clean it, or put another one in."));
    case DiscState::Appendable:
        if (!options.leavesOpen)
            return refusal(QStringLiteral("there are sessions on the disc (%1) already").arg(disc.profileName),
                           QStringLiteral("Add to it with --multi, or put an empty disc in."));
        if (disc.damage >= 2)
            return refusal(QStringLiteral("an earlier writing was broken off, and nothing can be added to the disc"),
                           QStringLiteral("Put an empty disc in."));
        break;
    case DiscState::Blank:
        break;
    }
    if (disc.family == DiscFamily::ReadOnly || disc.family == DiscFamily::None)
        return refusal(QStringLiteral("discs of this kind (%1) are not written here").arg(disc.profileName),
                       QStringLiteral("Put a CD-R, CD-RW, DVD±R, DVD±RW, DVD-RAM, BD-R or BD-RE in."));
    return {};
}

/// What the options ask for and the disc cannot do.
NSError errorOfOptions(const DiscDescription &disc, const RecordingOptions &options)
{
    if (options.isSimulated && !disc.canSimulate)
        return refusal(QStringLiteral("writing to a disc of this kind (%1) cannot be simulated").arg(disc.profileName),
                       QStringLiteral("Leave --simulate out, or put a CD-R, CD-RW, DVD-R or DVD-RW in."));
    if (options.leavesOpen && !disc.canAppendLater && !isOverwritten(disc.family))
        return refusal(QStringLiteral("a disc of this kind (%1) takes one session only").arg(disc.profileName),
                       QStringLiteral("Leave --multi out."));
    return {};
}

/// Filesystems count their blocks from the begin of the disc: data are added only where they were made for the place
/// that the drive will write them to.
NSError errorOfPlace(const TableOfContents &contents, const DiscTrack &track, const DiscDescription &disc,
                     const RecordingOptions &options)
{
    if (track.isAudio() || (disc.state != DiscState::Appendable && !options.growth))
        return {};
    const std::int64_t begin = contents.firstBlockOfTrack(track.number).number();
    const std::optional<std::uint64_t> next = options.growth ? options.growth->firstBlock : disc.nextBlock;
    if (next && begin > 0 && begin == std::int64_t(*next))
        return {};
    return refusal(QStringLiteral("the disc (%1) is written already, and track %2 was made for another place than "
                                  "behind that")
                       .arg(disc.profileName)
                       .arg(track.number),
                   QStringLiteral("Add folders and files to it instead of an image, or put an empty disc in."));
}

/// The kinds of data that a drive gets as mode 1. Mode 2 has another meaning to readers and is not made here.
NSError errorOfTrack(const DiscTrack &track)
{
    const bool isSound = track.isAudio() && track.blockSize >= soundSize;
    const bool isMode1 = track.kind == TrackKind::Mode1 || track.kind == TrackKind::Unstated;
    const std::optional<SectorForm> form = track.sectorForm();
    const std::optional<SectorPart> part = form ? userDataPart(track.kind, *form) : std::nullopt;
    if (isSound || (isMode1 && part && part->length == dataSize))
        return {};
    if (track.kind == TrackKind::Mode1 || track.isAudio() || track.kind == TrackKind::Unstated)
        return refusal(QStringLiteral("track %1 has blocks of %2 bytes, which no drive takes")
                           .arg(track.number)
                           .arg(track.blockSize),
                       QStringLiteral("Make the image with blocks of 2048 bytes, or of 2352 bytes for sound."));
    return refusal(QStringLiteral("track %1 is of mode 2, which is not written here").arg(track.number),
                   QStringLiteral("Take its data out with 'tessaron extract' and burn what comes of it."));
}

RecordedTrack recordedTrack(const DiscTrack &track)
{
    RecordedTrack recorded;
    recorded.track = track;
    recorded.blocks = track.storedBlocks();
    recorded.blockSize = track.isAudio() ? soundSize : dataSize;
    if (!track.isAudio())
        recorded.keptFrom = std::uint32_t(userDataPart(track.kind, *track.sectorForm())->offset);
    recorded.madePregap = track.pregap.isStored ? 0 : track.pregap.length;
    recorded.madePostgap = track.postgap.isStored ? 0 : track.postgap.length;
    recorded.hasIndex0 = track.pregap.isStored && track.pregap.length > 0;
    if (recorded.hasIndex0 || !track.indexPoints.empty()) {
        const std::uint64_t index1 = recorded.hasIndex0 ? track.pregap.length : 0;
        if (recorded.hasIndex0)
            recorded.indexPoints.push_back(0);
        recorded.indexPoints.push_back(index1);
        for (const std::uint64_t point : track.indexPoints)
            recorded.indexPoints.push_back(index1 + point);
    }
    return recorded;
}

bool isAllSound(const std::vector<DiscTrack> &tracks)
{
    return std::all_of(tracks.begin(), tracks.end(), [](const DiscTrack &track) { return track.isAudio(); });
}

bool isAllData(const std::vector<DiscTrack> &tracks)
{
    return std::none_of(tracks.begin(), tracks.end(), [](const DiscTrack &track) { return track.isAudio(); });
}

/// Plans one disc; holds what all of its sessions share.
class RecordingPlanner
{
public:
    RecordingPlanner(const TableOfContents &contents, const DiscDescription &disc, const RecordingOptions &options)
        : m_contents(contents)
        , m_disc(disc)
        , m_options(options)
    {
    }

    [[nodiscard]] Result<RecordingPlan> plan();

private:
    [[nodiscard]] NSError errorOfKind() const;
    [[nodiscard]] NSError addSession(std::size_t index);
    [[nodiscard]] NSError addTexts(RecordedSession *session);
    void tellWhatIsLost(RecordedSession *session);
    void countBlocks(RecordedSession *session) const;
    [[nodiscard]] NSError errorOfSize() const;
    [[nodiscard]] QString adviceOnSize() const;

    const TableOfContents &m_contents;
    const DiscDescription &m_disc;
    const RecordingOptions &m_options;
    RecordingPlan m_plan;
};

Result<RecordingPlan> RecordingPlanner::plan()
{
    if (NSError error = errorOfState(m_disc, m_options))
        return error;
    if (NSError error = errorOfOptions(m_disc, m_options))
        return error;
    if (NSError error = errorOfKind())
        return error;
    m_plan.blocksOnDisc = m_options.growth ? m_options.growth->firstBlock : 0;
    for (std::size_t index = 0; index < m_contents.sessions.size(); ++index) {
        if (NSError error = addSession(index))
            return error;
    }
    if (NSError error = errorOfSize())
        return error;
    return std::move(m_plan);
}

/// What other discs than CDs, and files, cannot hold.
NSError RecordingPlanner::errorOfKind() const
{
    for (const DiscTrack *const track : m_contents.tracks()) {
        if (NSError error = errorOfTrack(*track))
            return error;
        if (NSError error = errorOfPlace(m_contents, *track, m_disc, m_options))
            return error;
        if (track->isAudio() && !isCDFamily(m_disc.family))
            return refusal(QStringLiteral("track %1 is sound, which only CDs have; this is a %2")
                               .arg(track->number)
                               .arg(m_disc.profileName),
                           QStringLiteral("Put a CD-R or CD-RW in."));
    }
    if (!isCDFamily(m_disc.family) && m_contents.trackCount() > 1)
        return refusal(QStringLiteral("there are %1, and only CDs hold more than one of them; this is a %2")
                           .arg(counted(m_contents.trackCount(), "track", "tracks"), m_disc.profileName),
                       QStringLiteral("Put a CD-R or CD-RW in."));
    if (m_contents.sessions.size() > 1 && m_options.isSimulated)
        return refusal(QStringLiteral("the writing of several sessions cannot be simulated"),
                       QStringLiteral("Leave --simulate out."));
    return {};
}

NSError RecordingPlanner::addSession(std::size_t index)
{
    const std::vector<DiscTrack> &tracks = m_contents.sessions[index].tracks;
    const bool isLast = index + 1 == m_contents.sessions.size();
    RecordedSession session;
    session.leavesOpen = !isOverwritten(m_disc.family) && (!isLast || m_options.leavesOpen);
    if (m_options.growth)
        session.firstBlock = m_options.growth->firstBlock;
    std::transform(tracks.begin(), tracks.end(), std::back_inserter(session.tracks), recordedTrack);
    const bool isOnFreshDisc = m_disc.state == DiscState::Blank && index == 0;
    const bool isOfOneKind = isAllSound(tracks) || isAllData(tracks);
    const bool isAtOnce = isCDFamily(m_disc.family) ? isOnFreshDisc && isOfOneKind : !session.leavesOpen;
    session.mode = isAtOnce ? RecordingMode::AtOnce : RecordingMode::TrackByTrack;
    if (isCDFamily(m_disc.family)) {
        if (isAtOnce && isAllSound(tracks)) {
            if (NSError error = addTexts(&session))
                return error;
        } else {
            tellWhatIsLost(&session);
        }
    }
    for (const RecordedTrack &track : session.tracks) {
        if (!track.track.isAudio() && track.track.number > 1)
            m_plan.lost << QStringLiteral("track %1 may begin at another block than its filesystem counts from")
                               .arg(track.track.number);
    }
    countBlocks(&session);
    m_plan.blocksOnDisc += session.blocksOnDisc;
    if (index > 0)
        m_plan.blocksOnDisc +=
            index == 1 && m_disc.state == DiscState::Blank ? gapBehindFirstSession : gapBehindSession;
    m_plan.sessions.push_back(std::move(session));
    return {};
}

NSError RecordingPlanner::addTexts(RecordedSession *session)
{
    session->mediaCatalogNumber = m_contents.mediaCatalogNumber;
    if (m_contents.cdText.isEmpty())
        return {};
    const Result<QByteArray> packs = cdTextPacks(m_contents.cdText, session->tracks.back().track.number);
    if (!packs)
        return refusal(
            QStringLiteral("the texts of the disc cannot be written: %1").arg(packs.error().localizedFailureReason()),
            QStringLiteral("Shorten them, or leave them out."));
    session->cdTextPacks = *packs;
    return {};
}

/// Tracks that are written one by one have no gaps of their own lengths, no index points, and no texts.
void RecordingPlanner::tellWhatIsLost(RecordedSession *session)
{
    const bool hasSound = std::any_of(session->tracks.begin(), session->tracks.end(),
                                      [](const RecordedTrack &track) { return track.track.isAudio(); });
    if (hasSound && !m_contents.cdText.isEmpty())
        m_plan.lost << QStringLiteral("CD-TEXT is written to discs of nothing but sound only, and is left out");
    if (hasSound && !m_contents.mediaCatalogNumber.isEmpty())
        m_plan.lost << QStringLiteral("the catalogue number of the disc is left out");
    for (RecordedTrack &track : session->tracks) {
        const QString number = QString::number(track.track.number);
        if (!track.track.isrc.isEmpty())
            m_plan.lost << QStringLiteral("the ISRC of track %1 is left out").arg(number);
        if (!track.track.indexPoints.empty())
            m_plan.lost << QStringLiteral("the index points of track %1 are left out").arg(number);
        if (hasSound && track.hasIndex0)
            m_plan.lost
                << QStringLiteral("what lies in front of index 1 of track %1 becomes part of the track").arg(number);
        if (session->tracks.size() > 1 && track.track.isAudio() && session->mode == RecordingMode::TrackByTrack
            && track.track.number > session->tracks.front().track.number)
            m_plan.lost << QStringLiteral("track %1 begins behind a gap of two seconds").arg(number);
        track.madePregap = 0;
        track.madePostgap = 0;
        track.indexPoints.clear();
        track.hasIndex0 = false;
    }
}

void RecordingPlanner::countBlocks(RecordedSession *session) const
{
    const bool isCD = isCDFamily(m_disc.family);
    for (const RecordedTrack &track : session->tracks) {
        const std::uint64_t blocks = track.blocks + track.madePregap + track.madePostgap;
        session->blocksOnDisc += isCD ? std::max(blocks, shortestTrack) : blocks;
        if (isCD && session->mode == RecordingMode::TrackByTrack)
            session->blocksOnDisc += gapOfTracks;
    }
    // The pregap in front of the first track of a CD lies in front of what is counted as its room.
    if (isCD && session->mode == RecordingMode::AtOnce)
        session->blocksOnDisc -= std::min(session->tracks.front().madePregap, firstPregap);
}

NSError RecordingPlanner::errorOfSize() const
{
    if (m_plan.blocksOnDisc <= m_disc.freeBlocks)
        return {};
    const bool isFile = m_disc.family == DiscFamily::File;
    const std::uint64_t excess = m_plan.blocksOnDisc - m_disc.freeBlocks;
    return refusal(
        DriveFault::Full, dskFulErr,
        QStringLiteral("%1 (%2 blocks) are to be written, and there is room for %3 (%4 blocks) %5: %6 (%7) too much")
            .arg(sizeText(m_plan.blocksOnDisc))
            .arg(m_plan.blocksOnDisc)
            .arg(sizeText(m_disc.freeBlocks))
            .arg(m_disc.freeBlocks)
            .arg(isFile ? QStringLiteral("on the disk of the file")
                        : QStringLiteral("on the disc (%1)").arg(m_disc.profileName),
                 sizeText(excess), counted(excess, "block", "blocks")),
        isFile ? QStringLiteral("Make room on the disk.") : adviceOnSize());
}

QString RecordingPlanner::adviceOnSize() const
{
    const QString advice = QStringLiteral("Put a larger disc in, or less onto it.");
    return m_options.overburns
        ? advice
            + QStringLiteral(
                " The library that writes discs (libburn) stops where the disc says that it ends and would "
                "spoil it: there is no way to write more with it.")
        : advice + QStringLiteral(" No drive is told to write beyond what its disc says of itself.");
}

} // namespace

Result<RecordingPlan> planRecording(const TableOfContents &contents, const DiscDescription &disc,
                                    const RecordingOptions &options)
{
    return RecordingPlanner(contents, disc, options).plan();
}

} // namespace Tessaron
