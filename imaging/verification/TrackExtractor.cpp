#include "imaging/verification/TrackExtractor.h"

#include "imaging/verification/DecodedSounds.h"
#include "imaging/verification/TrackSink.h"
#include "imaging/verification/TrackTags.h"
#include "platform/discrecording/objects/DRTrackProducer.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/KRDataProvider.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t plainSize = 2048;
constexpr std::size_t wholeSector = SectorField::sectorSize;
constexpr std::size_t sectorsAtOnce = 200; // of 2352 bytes nearly half a megabyte
constexpr std::size_t bytesPerSample = CDSound::bytesPerSample;
using Tags = QMap<QString, QString>;

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

/// Turns samples of 16 bits to the other byte order.
void swapBytes(char *samples, std::size_t length)
{
    for (std::size_t at = 0; at + 1 < length; at += 2)
        std::swap(samples[at], samples[at + 1]);
}

} // namespace

TrackExtractor::TrackExtractor(const CueSheet &disc, std::size_t index, Part part, DecodedSounds &sounds)
    : m_disc(disc)
    , m_index(index)
    , m_part(part)
    , m_track(*disc.contents.tracks()[index])
    , m_sounds(sounds)
{
    m_result.number = part == Part::Pregap ? 0 : m_track.number;
    m_result.isAudio = m_track.isAudio();
    m_result.hasPreEmphasis = m_track.isAudio() && m_track.hasPreEmphasis;
    m_result.pregapLeftOut = part == Part::Track && m_track.pregap.isStored ? m_track.pregap.length : 0;
    if (m_track.isAudio()) {
        m_keptSize = wholeSector;
    } else if (const std::optional<SectorForm> form = m_track.sectorForm()) {
        if (const std::optional<SectorPart> place = userDataPart(m_track.kind, *form)) {
            m_keptSize = place->length;
            m_keptOffset = place->offset;
        }
    }
    m_result.blocks = blocks();
    m_result.isChecked = !m_track.isAudio() && m_track.blockSize >= wholeSector;
}

TrackExtractor::~TrackExtractor() = default;

const std::vector<CueRun> &TrackExtractor::runs() const
{
    const CueTrackPlace &place = m_disc.places[m_index];
    return m_part == Part::Pregap ? place.pregap : place.data;
}

std::uint64_t TrackExtractor::blocks() const
{
    std::uint64_t sum = 0;
    for (const CueRun &run : runs())
        sum += run.blocks;
    return sum;
}

std::uint32_t TrackExtractor::restBytes() const
{
    if (m_part == Part::Pregap || !m_track.isAudio() || runs().empty())
        return 0;
    const std::uint32_t rest = m_disc.places[m_index].restBytes;
    return rest - rest % bytesPerSample;
}

bool TrackExtractor::mustDecode(const CueRun &run) const
{
    const CueFile &file = m_disc.files[run.file];
    return file.isSound() && !file.firstSample;
}

NSError TrackExtractor::sourceError(const QString &reason, const QByteArray &path, const QString &remedy) const
{
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("track %1 cannot be taken out: %2").arg(m_track.number).arg(reason), remedy,
                        path);
}

/// Producers do not tell why they cannot open a file: the system is asked again.
NSError TrackExtractor::notOpenedError(const QByteArray &path) const
{
    const QString what = QStringLiteral("%1 cannot be opened").arg(quoted(path));
    const UniqueDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file)
        return sourceError(what, path);
    const int reason = errno;
    return sourceError(QStringLiteral("%1: %2").arg(what, systemText(reason)), path,
                       isLackOfDescriptors(reason) ? adviceOnDescriptors() : QString());
}

NSError TrackExtractor::check() const
{
    for (const CueRun &run : runs()) {
        const CueFile &file = m_disc.files[run.file];
        if (file.path.isEmpty())
            return sourceError(QStringLiteral("its file is not known"), {});
        if (run.blocks > std::numeric_limits<std::uint32_t>::max())
            return sourceError(QStringLiteral("it has more blocks than any disc"), file.path);
        if (mustDecode(run) && !m_track.isAudio())
            return sourceError(QStringLiteral("it is data, and %1 holds sound").arg(quoted(file.path)), file.path);
    }
    if (m_part == Part::Track && !m_disc.places[m_index].isLengthKnown)
        return sourceError(QStringLiteral("its length is not known"), {},
                           QStringLiteral("Its file must be one that can be decoded."));
    if (blocks() == 0)
        return sourceError(QStringLiteral("no file holds any of it"), {});
    if (m_keptSize == 0)
        return sourceError(
            QStringLiteral("it is not known where its sectors of %1 bytes hold their data").arg(m_track.blockSize), {});
    if (m_track.isAudio() && keptBytes() > mostSoundInWave())
        return sourceError(QStringLiteral("it is longer than a WAVE file can be"), {});
    return {};
}

std::uint64_t TrackExtractor::keptBytes() const
{
    return blocks() * m_keptSize + restBytes();
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

NSError TrackExtractor::write(int descriptor, const QByteArray &path, ExtractedSound form, const Progress &progress,
                              const std::stop_token &stop)
{
    const TrackFile file{descriptor, path, keptBytes()};
    const std::unique_ptr<TrackSink> sink = m_track.isAudio()
        ? soundSink(file, form, m_part == Part::Track ? tagsOfTrack(m_disc.contents, m_track) : Tags())
        : dataSink(file);
    for (const CueRun &run : runs()) {
        if (NSError error = writeRun(run, *sink, progress, stop))
            return error;
    }
    if (restBytes() > 0) {
        if (NSError error = writeRest(runs().back(), *sink, progress, stop))
            return error;
    }
    return sink->finish();
}

/// Of a sound file, what is behind its last whole block.
NSError TrackExtractor::writeRest(const CueRun &run, TrackSink &sink, const Progress &progress,
                                  const std::stop_token &stop)
{
    const CueFile &file = m_disc.files[run.file];
    const std::uint64_t end = run.offset + run.blocks * wholeSector;
    const std::uint32_t length = restBytes();
    if (mustDecode(run))
        return writeDecoded(file, end / bytesPerSample, length / bytesPerSample, sink, progress, stop);
    const auto provider =
        KRDataProvider::providerWithFile(stringWithFileSystemRepresentation(file.path), *file.firstSample + end, length,
                                         length, 0, KRDataProviderMode::mode2Form2, 0);
    std::array<char, wholeSector> rest;
    const bool isOpen = provider && provider->prepareTrack(nullptr, nullptr, {});
    const std::uint32_t got =
        isOpen ? provider->produceDataForTrack(nullptr, rest.data(), length, 0, length, nullptr) : 0;
    if (isOpen)
        provider->cleanupTrackAfterBurn(nullptr);
    if (got != length)
        return sourceError(QStringLiteral("the end of %1 cannot be read").arg(quoted(file.path)), file.path);
    if (file.hasBigEndianSamples())
        swapBytes(rest.data(), length);
    progress(length);
    return sink.write(rest.data(), length);
}

/// Samples of a file that holds them in another form.
NSError TrackExtractor::writeDecoded(const CueFile &file, std::uint64_t first, std::uint64_t samples, TrackSink &sink,
                                     const Progress &progress, const std::stop_token &stop)
{
    constexpr std::size_t samplesAtOnce = sectorsAtOnce * CDSound::samplesPerFrame;
    std::vector<char> buffer(std::min<std::uint64_t>(samples, samplesAtOnce) * bytesPerSample);
    std::uint64_t missing = 0;
    for (std::uint64_t done = 0; done < samples;) {
        if (stop.stop_requested())
            return discJobCancellation();
        const auto count = std::size_t(std::min<std::uint64_t>(samples - done, samplesAtOnce));
        std::size_t there = 0;
        if (missing == 0) {
            const Result<std::size_t> got =
                m_sounds.read(file.path, first + done, buffer.data(), count, &m_result.damage, stop);
            if (!got && got.error().code() == userCanceledErr)
                return discJobCancellation();
            if (!got)
                return sourceError(QStringLiteral("%1 cannot be decoded: %2")
                                       .arg(quoted(file.path), got.error().localizedFailureReason()),
                                   file.path, got.error().localizedRecoverySuggestion());
            there = *got;
        }
        missing += count - there;
        std::fill(buffer.begin() + std::ptrdiff_t(there * bytesPerSample), buffer.end(), '\0');
        if (NSError error = sink.write(buffer.data(), count * bytesPerSample))
            return error;
        done += count;
        progress(count * bytesPerSample);
    }
    if (missing > 0)
        m_result.damage.add(double(first + samples - missing) / CDSound::samplesPerSecond,
                            QStringLiteral("the sound ends %1 samples early; silence stands for them").arg(missing));
    return {};
}

NSError TrackExtractor::writeRun(const CueRun &run, TrackSink &sink, const Progress &progress,
                                 const std::stop_token &stop)
{
    const CueFile &file = m_disc.files[run.file];
    if (mustDecode(run))
        return writeDecoded(file, run.offset / bytesPerSample, run.blocks * CDSound::samplesPerFrame, sink, progress,
                            stop);
    const std::shared_ptr<DRTrackProducer> producer = producerOf(run);
    if (!producer || !producer->prepareTrack(nullptr, nullptr, {}))
        return notOpenedError(file.path);
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
        error = sink.write(buffer.data(), kept);
        if (error)
            break;
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
    if (m_track.isAudio() && isBigEndian)
        swapBytes(sectors, kept);
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
