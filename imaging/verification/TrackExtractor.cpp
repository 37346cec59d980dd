#include "imaging/verification/TrackExtractor.h"

#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/KRDataProvider.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t plainSize = 2048;
constexpr std::size_t wholeSector = SectorField::sectorSize;
constexpr std::size_t sectorsAtOnce = 200; // of 2352 bytes nearly half a megabyte
constexpr std::size_t waveHeadSize = 44;
/// What the sizes in a WAVE file can say.
constexpr std::uint64_t mostWaveBytes = std::numeric_limits<std::uint32_t>::max() - waveHeadSize;

/// The head of a WAVE file of CD audio: the chunks "fmt " and "data" in a "RIFF".
std::array<char, waveHeadSize> waveHead(std::uint32_t soundBytes)
{
    constexpr std::uint32_t rate = 44100;
    constexpr std::uint16_t channels = 2;
    constexpr std::uint16_t bytesPerFrame = 4;
    std::array<char, waveHeadSize> head;
    char *at = head.data();
    const auto text = [&](const char *four) {
        std::memcpy(at, four, 4);
        at += 4;
    };
    const auto number = [&]<typename Number>(Number value) {
        storeLittleEndian<Number>(reinterpret_cast<std::uint8_t *>(at), value);
        at += sizeof value;
    };
    text("RIFF");
    number(std::uint32_t(waveHeadSize - 8 + soundBytes));
    text("WAVE");
    text("fmt ");
    number(std::uint32_t(16));
    number(std::uint16_t(1)); // whole numbers
    number(channels);
    number(rate);
    number(std::uint32_t(rate * bytesPerFrame));
    number(bytesPerFrame);
    number(std::uint16_t(16)); // bits
    text("data");
    number(soundBytes);
    return head;
}

/// What stands for mode and sector size in a production record; no value where records have no such sectors.
std::optional<std::int32_t> recordMode(const DiscTrack &track)
{
    switch (track.blockSize) {
    case 2048:
        return track.kind == TrackKind::Mode2Form1 ? KRDRTrackMode::mode2Form1 : KRDRTrackMode::mode1;
    case 2324:
        return KRDRTrackMode::mode2Form2;
    case 2332:
    case 2336:
        return KRDRTrackMode::mode2;
    case 2352:
        if (track.isAudio())
            return KRDRTrackMode::audio;
        return track.kind == TrackKind::Mode1 ? KRDRTrackMode::mode1 : KRDRTrackMode::mode2;
    default:
        return std::nullopt;
    }
}

} // namespace

TrackExtractor::TrackExtractor(const CueSheet &disc, std::size_t index)
    : m_disc(disc)
    , m_index(index)
    , m_track(*disc.contents.tracks()[index])
{
    m_result.number = m_track.number;
    m_result.isAudio = m_track.isAudio();
    m_result.pregapLeftOut = m_track.pregap.isStored ? m_track.pregap.length : 0;
    if (m_track.isAudio()) {
        m_keptSize = wholeSector;
    } else if (const std::optional<SectorForm> form = m_track.sectorForm()) {
        if (const std::optional<SectorPart> part = userDataPart(m_track.kind, *form)) {
            m_keptSize = part->length;
            m_keptOffset = part->offset;
        }
    }
    m_result.blocks = blocks();
    m_result.isChecked = !m_track.isAudio() && m_track.blockSize >= wholeSector;
}

TrackExtractor::~TrackExtractor() = default;

std::uint64_t TrackExtractor::blocks() const
{
    std::uint64_t sum = 0;
    for (const CueRun &run : runs())
        sum += run.blocks;
    return sum;
}

NSError TrackExtractor::sourceError(const QString &reason, const QByteArray &path, const QString &remedy) const
{
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("track %1 cannot be taken out: %2").arg(m_track.number).arg(reason), remedy,
                        path);
}

NSError TrackExtractor::check() const
{
    for (const CueRun &run : runs()) {
        const CueFile &file = m_disc.files[run.file];
        const bool isSound = file.type != CueFileType::Binary && file.type != CueFileType::Motorola;
        if (file.path.isEmpty())
            return sourceError(QStringLiteral("its file is not known"), {});
        if (isSound && !file.firstSample)
            return sourceError(QStringLiteral("%1 holds no plain CD audio and must be decoded").arg(quoted(file.path)),
                               file.path, QStringLiteral("Convert that file with a decoder."));
        if (run.blocks > std::numeric_limits<std::uint32_t>::max())
            return sourceError(QStringLiteral("it has more blocks than any disc"), file.path);
    }
    if (!m_disc.places[m_index].isLengthKnown)
        return sourceError(QStringLiteral("its length is not known"), {});
    if (blocks() == 0)
        return sourceError(QStringLiteral("no file holds any of it"), {});
    if (m_keptSize == 0)
        return sourceError(
            QStringLiteral("it is not known where its sectors of %1 bytes hold their data").arg(m_track.blockSize), {});
    if (m_track.isAudio() && blocks() > mostWaveBytes / wholeSector)
        return sourceError(QStringLiteral("it is longer than a WAVE file can be"), {});
    return {};
}

std::uint64_t TrackExtractor::outputBytes() const
{
    return blocks() * m_keptSize + (m_track.isAudio() ? waveHeadSize : 0);
}

std::shared_ptr<DRTrackProducer> TrackExtractor::producerOf(const CueRun &run) const
{
    const CueFile &file = m_disc.files[run.file];
    const QString path = stringWithFileSystemRepresentation(file.path);
    const std::uint64_t offset = run.offset + file.firstSample.value_or(0);
    if (const std::optional<std::int32_t> mode = recordMode(m_track)) {
        KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
        info.offsetInFile = std::int64_t(offset);
        info.sectorSize = m_track.blockSize;
        info.framesCount = std::uint32_t(run.blocks);
        info.trackMode = *mode;
        return KRDRDataProducer::initWithInfo(info, path);
    }
    // Sectors of any other size, as they stand in the file.
    return KRDataProvider::providerWithFile(path, offset, run.blocks * m_track.blockSize, m_track.blockSize, 0,
                                            KRDataProviderMode::mode2Form2, 0);
}

NSError TrackExtractor::write(int descriptor, const std::function<void(std::uint64_t)> &progress,
                              const std::stop_token &stop)
{
    if (m_track.isAudio()) {
        const auto head = waveHead(std::uint32_t(blocks() * wholeSector));
        if (const int failure = writeFully(descriptor, head.data(), head.size()))
            return discJobError(DiscJobErrorCode::Write,
                                QStringLiteral("the output cannot be written: %1").arg(systemText(failure)));
        progress(head.size());
    }
    for (const CueRun &run : runs()) {
        if (NSError error = writeRun(run, descriptor, progress, stop))
            return error;
    }
    return {};
}

NSError TrackExtractor::writeRun(const CueRun &run, int descriptor, const std::function<void(std::uint64_t)> &progress,
                                 const std::stop_token &stop)
{
    const CueFile &file = m_disc.files[run.file];
    const std::shared_ptr<DRTrackProducer> producer = producerOf(run);
    if (!producer || !producer->prepareTrack(nullptr, nullptr, {}))
        return sourceError(QStringLiteral("%1 cannot be opened").arg(quoted(file.path)), file.path);
    const std::size_t size = m_track.blockSize;
    std::vector<char> buffer(sectorsAtOnce * size);
    NSError error;
    for (std::uint64_t left = run.blocks; left > 0 && !error;) {
        if (stop.stop_requested()) {
            error = discJobCancellation();
            break;
        }
        const auto count = std::size_t(std::min<std::uint64_t>(left, sectorsAtOnce));
        std::uint32_t flags = 0;
        const std::uint32_t got = producer->produceDataForTrack(nullptr, buffer.data(), std::uint32_t(count * size), 0,
                                                                std::uint32_t(size), &flags);
        if (got != count * size) {
            error = sourceError(QStringLiteral("%1 ends, or cannot be read, in block %2 of the track")
                                    .arg(quoted(file.path))
                                    .arg(m_done + got / size),
                                file.path, QStringLiteral("Copy the image again, or repair the disk that it lies on."));
            break;
        }
        const std::size_t kept = keepUserData(buffer.data(), count, m_done, file.hasBigEndianSamples());
        if (const int failure = writeFully(descriptor, buffer.data(), kept)) {
            error = discJobError(DiscJobErrorCode::Write,
                                 QStringLiteral("the output cannot be written: %1").arg(systemText(failure)));
            break;
        }
        m_done += count;
        left -= count;
        progress(kept);
    }
    producer->cleanupTrackAfterBurn(nullptr);
    return error;
}

/// Moves what is kept of each sector together at the front; returns its bytes.
std::size_t TrackExtractor::keepUserData(char *sectors, std::size_t count, std::uint64_t first, bool isBigEndian)
{
    const std::size_t size = m_track.blockSize;
    for (std::size_t sector = 0; sector < count; ++sector) {
        const char *const from = sectors + sector * size;
        const std::size_t offset =
            m_track.isAudio() ? 0 : keptOffset(reinterpret_cast<const std::uint8_t *>(from), first + sector);
        std::memmove(sectors + sector * m_keptSize, from + offset, m_keptSize);
    }
    const std::size_t kept = count * m_keptSize;
    if (m_track.isAudio() && isBigEndian) {
        for (std::size_t at = 0; at + 1 < kept; at += 2)
            std::swap(sectors[at], sectors[at + 1]);
    }
    return kept;
}

/// Where the user data of a sector begins; notes what is wrong with the sector.
std::size_t TrackExtractor::keptOffset(const std::uint8_t *sector, std::uint64_t number)
{
    const auto noteDamage = [&] {
        if (m_result.damagedSectors++ == 0)
            m_result.firstDamagedSector = number;
    };
    if (m_track.blockSize >= wholeSector) {
        if (checkSector(sector, m_track.kind, std::nullopt))
            noteDamage();
    }
    if (m_track.kind != TrackKind::Mode2Mixed && m_track.kind != TrackKind::Mode2Form1)
        return m_keptOffset;
    // The submode is the third byte of the subheader, in front of the user data by six bytes.
    constexpr std::size_t submodeBeforeData = 6;
    if (m_keptOffset >= submodeBeforeData && (sector[m_keptOffset - submodeBeforeData] & SectorSubheader::form2) != 0) {
        if (m_result.cutSectors++ == 0)
            m_result.firstCutSector = number;
    }
    return m_keptOffset;
}

} // namespace Tessaron
