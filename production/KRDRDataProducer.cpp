#include "production/BurnToDvd.h"
#include "production/MovieExcerpt.h"
#include "production/SectorCut.h"

#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/foundation/NSFileHandle.h"
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRAudioTrack.h>
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/PathHelpers.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t userDataSize = 2048;
constexpr std::uint32_t sizeWithSubchannel = 2448;
constexpr SectorCut sectorWithSubchannel = {16, userDataSize, 384};

/// What a recorder is told of a track. Some pairs contradict each other; they are what images were always burned with.
struct ModeRow {
    std::int32_t trackMode;
    std::uint32_t sectorSize;
    RecordingNumbers numbers; ///< track mode, data form, block type, session format
};
const std::array<ModeRow, 11> modeRows = {{
    {KRDRTrackMode::mode1, 2048, {4, 16, 8, 0}},
    {KRDRTrackMode::mode1, 2352, {4, 17, 8, 0}},
    {KRDRTrackMode::mode1, sizeWithSubchannel, {4, 16, 8, 0}},
    {KRDRTrackMode::mode2, 2336, {4, 48, 9, 32}},
    {KRDRTrackMode::mode2, 2332, {4, 33, 12, 32}},
    {KRDRTrackMode::mode2, 2352, {4, 33, 12, 32}},
    {KRDRTrackMode::mode2Form1, 2048, {4, 32, 10, 32}},
    {KRDRTrackMode::mode2Form2, 2324, {4, 32, 12, 32}},
    {KRDRTrackMode::audio, 2352, {0, 0, 0, 0}},
    {KRDRTrackMode::interactive, 2336, {4, 32, 13, 16}},
    {KRDRTrackMode::interactive, 2352, {4, 33, 12, 16}},
}};

/// States the numbers and the block size of the record's mode; false for a mode that does not go with its sectors.
bool stateMode(const KRDRDataProductionInfo &info, StatedTrack *stated)
{
    const auto row = std::find_if(modeRows.begin(), modeRows.end(), [&](const ModeRow &candidate) {
        return candidate.trackMode == info.trackMode && candidate.sectorSize == info.sectorSize;
    });
    if (row == modeRows.end())
        return false;
    stated->recording = row->numbers;
    stated->blockSize = info.sectorSize;
    if (info.sectorSize == sizeWithSubchannel) {
        if ((info.options & KRDRProductionOption::sectorsWithSubchannel) == 0)
            return false;
        stated->blockSize = userDataSize;
    }
    if (info.trackMode == KRDRTrackMode::audio) {
        stated->hasPreEmphasis = (info.options & KRDRProductionOption::preEmphasis) != 0;
        stated->hasFourChannels = (info.options & KRDRProductionOption::fourChannels) != 0;
    }
    return true;
}

CopyState copyStateOf(std::uint32_t options)
{
    if ((options & KRDRProductionOption::copyrightProtectedOriginal) != 0)
        return CopyState::ProtectedOriginal;
    return (options & KRDRProductionOption::copyrightFree) != 0 ? CopyState::CopyrightFree : CopyState::Unstated;
}

/// Seconds in the time scale of a movie, without the fraction; no value for a number that is not a time of a movie.
std::optional<std::int64_t> movieTime(float seconds, std::int64_t timeScale)
{
    constexpr double most = 9e18; // below 2^63
    const double units = std::trunc(double(seconds) * double(timeScale));
    return units >= 0 && units < most ? std::optional(std::int64_t(units)) : std::nullopt;
}

} // namespace

KRDRDataProducer::KRDRDataProducer(const KRDRDataProductionInfo &info, const FSRef &fsRef)
    : m_info(info)
    , m_fileRef(fsRef)
{
}

KRDRDataProducer::~KRDRDataProducer() = default;

KRDRDataProductionInfo KRDRDataProducer::blankInfo()
{
    return {};
}

std::shared_ptr<KRDRDataProducer> KRDRDataProducer::initWithInfo(const KRDRDataProductionInfo &info, const FSRef &fsRef)
{
    return std::shared_ptr<KRDRDataProducer>(new KRDRDataProducer(info, fsRef));
}

std::shared_ptr<KRDRDataProducer> KRDRDataProducer::initWithInfo(const KRDRDataProductionInfo &info,
                                                                 const QString &filePath)
{
    return initWithInfo(info, Tessaron::fsRef(filePath));
}

std::shared_ptr<DRTrack> KRDRDataProducer::track()
{
    StatedTrack stated;
    const bool isDecoded = m_info.trackMode == KRDRTrackMode::decodedAudio;
    if (m_info.numberOfIndexPoints > m_info.indexPointFrames.size() || (!isDecoded && !stateMode(m_info, &stated)))
        return nullptr;
    const auto points = m_info.indexPointFrames.begin();
    stated.indexPoints.assign(points, points + m_info.numberOfIndexPoints);
    if (m_info.hasPregapInfo)
        stated.pregap = m_info.pregapFramesCount;
    if (!isDecoded) // decoded sound knows its length itself
        stated.length = std::uint64_t(m_info.framesCount) + m_info.postgapFramesCount;
    stated.copyState = copyStateOf(m_info.options);
    std::shared_ptr<DRTrack> track = isDecoded ? decodedTrack() : DRTrack::trackWithProducer(shared_from_this());
    if (!track)
        return nullptr;
    track->setProperties(propertiesOfStatedTrack(stated, track->properties()));
    return track;
}

std::shared_ptr<DRTrack> KRDRDataProducer::decodedTrack()
{
    if (m_excerpt) {
        const std::shared_ptr<KRAudioTrack> made = audiotrack();
        return made ? made->trackUsingCustomExporter(true) : nullptr;
    }
    const bool isMade = makeExcerpt();
    const auto audio = isMade ? KRAudioTrack::audioTrackWithFileAtPath(m_excerpt->path()) : nullptr;
    std::shared_ptr<DRTrack> track = audio ? audio->trackUsingCustomExporter(true) : nullptr;
    if (track)
        setAudiotrack(audio);
    else
        m_excerpt.reset();
    return track;
}

bool KRDRDataProducer::makeExcerpt()
{
    m_excerpt = MovieExcerpt::ofFile(stringWithFSRef(&m_fileRef));
    if (!m_excerpt)
        return false;
    const QTTime all = m_excerpt->duration();
    if (m_info.quickTimeDurationGoTillEndOfFile)
        m_info.quickTimeDurationSeconds =
            float(double(all.timeValue) / double(all.timeScale) - double(m_info.quickTimeStartSeconds));
    const std::optional<std::int64_t> start = movieTime(m_info.quickTimeStartSeconds, all.timeScale);
    const std::optional<std::int64_t> length = movieTime(m_info.quickTimeDurationSeconds, all.timeScale);
    return start && length && m_excerpt->write(*start, *length, "excerpt.tempFile.mov");
}

std::shared_ptr<DRTrackProducer> KRDRDataProducer::dataProducer()
{
    if (const std::shared_ptr<KRAudioTrack> audio = audiotrack())
        return audio->dataProducer();
    return shared_from_this();
}

std::shared_ptr<KRAudioTrack> KRDRDataProducer::audiotrack() const
{
    const std::lock_guard lock(m_audiotrackMutex);
    return m_audiotrack;
}

void KRDRDataProducer::setAudiotrack(const std::shared_ptr<KRAudioTrack> &track)
{
    const std::lock_guard lock(m_audiotrackMutex);
    m_audiotrack = track;
}

bool KRDRDataProducer::prepareTrack(DRTrack *track, DRBurn * /*forBurn*/, const QVariantMap &toMedia)
{
    const QString path = stringWithFSRef(&m_fileRef);
    m_file = path.isNull() ? nullptr : NSFileHandle::fileHandleForReadingAtPath(path);
    if (!m_file)
        return false;
    m_isPregapInit = false;
    m_isDataInit = false;
    m_totalReadData = 0;
    if (isDvd(toMedia) && !describeForDvd(track, m_info.sectorSize)) {
        m_file.reset(); // nothing is cleaned up after a preparation that failed
        return false;
    }
    return true;
}

bool KRDRDataProducer::isCut() const
{
    return (m_info.options & KRDRProductionOption::sectorsWithSubchannel) != 0;
}

std::uint32_t KRDRDataProducer::readSectors(char *buffer, std::uint32_t length)
{
    if (!isCut())
        return std::uint32_t(m_file->readInto(buffer, length));
    readCutSectors(*m_file, sectorWithSubchannel, buffer, length);
    return length;
}

std::uint32_t KRDRDataProducer::producePreGapForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                                      std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                                      std::uint32_t * /*ioFlags*/)
{
    if (!m_info.hasPregapInfo || !m_info.producePregapFromFile) {
        std::memset(intoBuffer, 0, length);
        return length;
    }
    if (!m_file)
        return 0;
    if (!m_isPregapInit) {
        m_isPregapInit = true;
        seekToSector(*m_file, m_info.offsetInFile, m_info.sectorSize, m_info.pregapFrameStart);
    }
    return readSectors(intoBuffer, length);
}

std::uint32_t KRDRDataProducer::produceDataForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                                    std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                                    std::uint32_t * /*ioFlags*/)
{
    if (!m_file || m_info.sectorSize == 0)
        return 0;
    if (!m_isDataInit) {
        m_isDataInit = true;
        seekToSector(*m_file, m_info.offsetInFile, m_info.sectorSize, m_info.frameStart);
    }
    if (m_totalReadData / m_info.sectorSize >= m_info.framesCount) {
        std::memset(intoBuffer, 0, length);
        return length;
    }
    const std::uint32_t got = readSectors(intoBuffer, length);
    // With subchannels nothing is counted: there the track's length alone ends the data.
    if (!isCut())
        m_totalReadData += got;
    return got;
}

void KRDRDataProducer::cleanupTrackAfterBurn(DRTrack * /*track*/)
{
    m_file.reset();
}

} // namespace Tessaron
