#include "production/BurnToDvd.h"
#include "production/MovieExcerpt.h"
#include "production/SectorCut.h"

#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSFileHandle.h"
#include <TessaronClasses/KRAudioTrack.h>
#include <TessaronClasses/KRDataProvider.h>
#include <TessaronClasses/PathHelpers.h>

#include <limits>
#include <optional>

namespace Tessaron
{

namespace
{

namespace Mode = KRDataProviderMode;
namespace Option = KRDataProviderOption;

constexpr std::uint32_t userDataSize = 2048;
constexpr std::uint32_t mixedSize = 2332;
constexpr std::uint32_t withoutHeaderSize = 2336;
constexpr std::uint32_t rawSize = 2352;

struct ProviderTrack {
    std::uint32_t blockSize = 0; ///< bytes; the sector size from then on
    RecordingNumbers numbers; ///< track mode, data form, block type, session format
    std::uint32_t divisor = 0; ///< bytes in the file of one block
};

/// What a mode, a sector size (as it is after normalising) and options make of a track; no value where they make none.
std::optional<ProviderTrack> providerTrack(std::int16_t mode, std::uint32_t sector, std::uint32_t options)
{
    const auto divisor = [options](std::uint32_t option, std::uint32_t size, std::uint32_t otherwise) {
        return (options & option) != 0 ? size : otherwise;
    };
    switch (mode) {
    case Mode::audio:
        if (sector == rawSize)
            return ProviderTrack{sector, {0, 0, 0, 0}, rawSize};
        break;
    case Mode::mode1:
        if (sector == userDataSize)
            return ProviderTrack{
                sector,
                {4, 16, 8, 0},
                divisor(Option::raw, rawSize, divisor(Option::withoutHeader, withoutHeaderSize, userDataSize))};
        break;
    case Mode::mode2:
        if (sector == withoutHeaderSize)
            return ProviderTrack{sector, {4, 48, 9, 32}, divisor(Option::mode2Raw, rawSize, withoutHeaderSize)};
        if (sector == mixedSize)
            return ProviderTrack{sector, {4, 33, 12, 32}, divisor(Option::mode2Mixed, rawSize, mixedSize)};
        if (sector == rawSize)
            return ProviderTrack{sector, {4, 33, 12, 32}, rawSize};
        break;
    case Mode::mode2Form1:
        return ProviderTrack{sector,
                             {4, 32, 10, 32},
                             divisor(Option::raw, rawSize, divisor(Option::withoutHeader, withoutHeaderSize, sector))};
    case Mode::mode2Form2:
        return ProviderTrack{sector, {4, 32, 12, 32}, sector};
    default:
        break;
    }
    return std::nullopt;
}

/// What is kept of the file's sectors; no value when they are produced as they stand.
std::optional<SectorCut> cutOf(std::int16_t mode, std::uint32_t options)
{
    const auto has = [options](std::uint32_t option) { return (options & option) != 0; };
    if (mode == Mode::mode1 && has(Option::raw))
        return SectorCut{16, userDataSize, 288};
    if (mode == Mode::mode2 && has(Option::mode2Raw))
        return SectorCut{16, withoutHeaderSize, 0};
    if (mode == Mode::mode2 && has(Option::mode2Mixed))
        return SectorCut{16, mixedSize, 4};
    // These sectors have their subheader in front, yet 24 bytes are skipped: so programs have always cut them.
    if (mode == Mode::mode2Form1 && has(Option::withoutHeader))
        return SectorCut{24, userDataSize, 264};
    if (mode == Mode::mode2Form1 && has(Option::raw))
        return SectorCut{24, userDataSize, 280};
    return std::nullopt;
}

} // namespace

KRDataProvider::~KRDataProvider() = default;

std::shared_ptr<KRDataProvider> KRDataProvider::providerWithFile(const QString &path, std::uint64_t start,
                                                                 std::uint64_t length, std::uint32_t sectorSize,
                                                                 std::uint64_t pregapLength, std::int16_t mode,
                                                                 std::uint32_t options)
{
    FSRef ref;
    bool isFolder = false;
    if (path.isNull() || length == 0 || sectorSize == 0
        || FSPathMakeRef(fileSystemRepresentation(path), &ref, &isFolder) != noErr || isFolder)
        return nullptr;
    std::shared_ptr<KRDataProvider> provider(new KRDataProvider);
    provider->_set(ref, start, length, sectorSize, pregapLength, mode, options);
    return provider;
}

void KRDataProvider::_set(const FSRef &fileRef, std::uint64_t start, std::uint64_t length, std::uint32_t sector,
                          std::uint64_t pregapLen, std::int16_t mode, std::uint32_t options)
{
    m_fileRef = fileRef;
    m_start = start;
    m_length = length;
    m_givenSector = sector;
    m_sector = sector;
    m_pregapLen = pregapLen;
    m_mode = mode;
    m_options = options;
}

QString KRDataProvider::path() const
{
    return stringWithFSRef(&m_fileRef);
}

void KRDataProvider::normalise()
{
    if (m_mode == Mode::mode2 && m_sector == rawSize) {
        if (has(Option::mode2Raw))
            m_sector = withoutHeaderSize;
        else if (has(Option::mode2Mixed))
            m_sector = mixedSize;
    }
    if (m_mode == Mode::mode2 && m_sector == withoutHeaderSize && has(Option::withoutHeader)) {
        m_mode = Mode::mode2Form1;
        m_sector = userDataSize;
    }
    const bool isForm1 = m_mode == Mode::mode1 || m_mode == Mode::mode2Form1;
    if (isForm1 && m_sector == rawSize && has(Option::raw))
        m_sector = userDataSize;
}

std::shared_ptr<DRTrack> KRDataProvider::dataProducer()
{
    if (m_mode == Mode::decodedAudio)
        return decodedTrack();
    normalise();
    const std::optional<ProviderTrack> made = providerTrack(m_mode, m_sector, m_options);
    if (!made)
        return nullptr;
    const std::uint32_t size = m_sector;
    if (m_mode == Mode::mode1)
        m_canBurnOnDVD = true;
    if (m_mode == Mode::mode2 && m_sector == mixedSize && has(Option::mode2Mixed))
        m_sector = rawSize;
    StatedTrack stated;
    stated.blockSize = made->blockSize;
    stated.recording = made->numbers;
    stated.length = m_length / made->divisor;
    if (m_pregapLen != 0)
        stated.pregap = m_pregapLen / m_givenSector;
    else if (m_mode == Mode::audio && size == rawSize && !has(Option::anyPregap))
        stated.pregap = 0; // or else there would be two seconds of silence in front
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(shared_from_this());
    track->setProperties(propertiesOfStatedTrack(stated, track->properties()));
    return track;
}

/// The excerpt's start and length are whole seconds.
std::shared_ptr<DRTrack> KRDataProvider::decodedTrack()
{
    if (!m_excerpt) {
        constexpr std::uint64_t framesPerSecond = 75;
        std::unique_ptr<MovieExcerpt> excerpt = MovieExcerpt::ofFile(path());
        if (!excerpt)
            return nullptr;
        const QTTime all = excerpt->duration();
        const auto start = std::int64_t(std::uint32_t(m_start));
        const std::int64_t length = has(Option::untilEnd) ? all.timeValue / all.timeScale - start
                                                          : std::int64_t(m_length / m_givenSector / framesPerSecond);
        const std::int64_t mostSeconds = std::numeric_limits<std::int64_t>::max() / all.timeScale;
        if (length < 0 || length > mostSeconds || start > mostSeconds
            || !excerpt->write(start * all.timeScale, length * all.timeScale, "excerpt.tempFile"))
            return nullptr;
        m_excerpt = std::move(excerpt);
    }
    const std::shared_ptr<KRAudioTrack> audio = KRAudioTrack::audioTrackWithFileAtPath(m_excerpt->path());
    std::shared_ptr<DRTrack> track = audio ? audio->trackUsingCustomExporter(true) : nullptr;
    if (!track)
        return nullptr;
    StatedTrack stated;
    if (m_pregapLen != 0)
        stated.pregap = m_pregapLen / m_givenSector;
    else if (!has(Option::anyPregap))
        stated.pregap = 0;
    track->setProperties(propertiesOfStatedTrack(stated, track->properties()));
    return track;
}

std::shared_ptr<DRTrack> KRDataProvider::track()
{
    return m_mode == Mode::decodedAudio ? nullptr : dataProducer();
}

bool KRDataProvider::prepareTrack(DRTrack *track, DRBurn * /*forBurn*/, const QVariantMap &toMedia)
{
    const QString file = path();
    m_file = file.isNull() ? nullptr : NSFileHandle::fileHandleForReadingAtPath(file);
    if (!m_file)
        return false;
    if (has(Option::pregapNotInFile))
        m_pregapLen = 0;
    constexpr std::uint64_t nowhere = std::numeric_limits<std::uint64_t>::max();
    m_file->seekToFileOffset(m_start > nowhere - m_pregapLen ? nowhere : m_start + m_pregapLen);
    if (isDvd(toMedia) && !describeForDvd(track, m_sector)) {
        m_file.reset(); // nothing is cleaned up after a preparation that failed
        return false;
    }
    return true;
}

std::uint32_t KRDataProvider::produceDataForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                                  std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                                  std::uint32_t * /*ioFlags*/)
{
    if (!m_file)
        return 0;
    if (const std::optional<SectorCut> cut = cutOf(m_mode, m_options)) {
        m_lenProd += readCutSectors(*m_file, *cut, intoBuffer, length);
        return length;
    }
    const auto got = std::uint32_t(m_file->readInto(intoBuffer, length));
    m_lenProd += got;
    return got;
}

void KRDataProvider::cleanupTrackAfterBurn(DRTrack * /*track*/)
{
    m_file.reset();
}

} // namespace Tessaron
