#include "imaging/burning/BurntDiscCheck.h"

#include "imaging/burning/SoundComparison.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t dataSize = 2048;
constexpr std::uint32_t soundSize = 2352;

NSError differs(const QString &what)
{
    return burnError(ioErr, what, QStringLiteral("Write another disc, at a slower speed."));
}

QString flawText(const SoundFlaws &flaws, const QString &what)
{
    return QStringLiteral("%1 %2, the first %3 behind the track's begin")
        .arg(counted(flaws.count, "sector", "sectors"), what, MSF::ofFrames(std::int64_t(flaws.first)).text());
}

NSError errorOfSound(std::uint32_t track, const SoundFindings &findings)
{
    QStringList flaws;
    if (findings.unreadable.count > 0)
        flaws << flawText(findings.unreadable, QStringLiteral("cannot be read"));
    if (findings.different.count > 0)
        flaws << flawText(findings.different, QStringLiteral("not as sent"));
    return flaws.isEmpty() ? NSError()
                           : differs(QStringLiteral("the sound of track %1 is not on the disc as it was sent: %2")
                                         .arg(track)
                                         .arg(flaws.join(QStringLiteral("; "))));
}

/// A sink that holds the blocks that come against those on the disc.
class ComparingSink final : public BlockSink
{
public:
    ComparingSink(DRDevice &device, const TableOfContents &contents, std::size_t firstTrack,
                  const std::stop_token &stop, const CheckProgress &progress)
        : m_device(device)
        , m_index(firstTrack)
        , m_tracksAtOnce(tracksAtOnce(contents, firstTrack))
        , m_progress(progress)
        , m_sound([&device](std::int64_t first, std::uint32_t count,
                            char *out) { return device.readSound(first, count, out); },
                  std::int64_t(device.disc().readableBlocks), stop)
    {
        m_told.phase = DiscJobPhase::Comparing;
        for (const DiscTrack *const track : contents.tracks())
            m_told.bytesTotal += track->storedBlocks() * (track->isAudio() ? soundSize : dataSize);
    }

    [[nodiscard]] NSError beginTrack(const DiscTrack &track) override
    {
        m_source.reset();
        m_offset = 0;
        m_track = track.number;
        const std::size_t index = m_index++;
        std::int64_t first = 0;
        if (!m_device.isFile()) {
            const std::vector<RecordedTrackDescription> &written = m_device.disc().tracks;
            if (index >= written.size())
                return differs(QStringLiteral("the drive does not find track %1").arg(track.number));
            first = written[index].firstBlock;
        }
        m_isAudio = track.isAudio();
        if (m_isAudio) {
            // What lies in front of index 1 does so on the disc only where the tracks were written at once.
            const bool hasPregap = track.pregap.isStored && index < m_tracksAtOnce;
            m_sound.beginTrack(first - (hasPregap ? std::int64_t(track.pregap.length) : 0));
            return {};
        }
        m_keptFrom = std::uint32_t(userDataPart(track.kind, *track.sectorForm())->offset);
        m_source = m_device.readBack(std::uint64_t(std::max<std::int64_t>(first, 0)), track.storedBlocks());
        return {};
    }

    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override
    {
        if (m_isAudio) {
            m_sound.compare(static_cast<const char *>(run.bytes), run.count);
            tell(std::uint64_t(run.count) * soundSize);
            return {};
        }
        m_read.resize(std::size_t(run.count) * dataSize);
        if (NSError error = m_source->read(m_offset, m_read.data(), m_read.size()))
            return error;
        const auto *const sent = static_cast<const char *>(run.bytes);
        for (std::size_t block = 0; block < run.count; ++block) {
            if (std::memcmp(m_read.data() + block * dataSize, sent + block * run.blockSize + m_keptFrom, dataSize) != 0)
                return differs(QStringLiteral("block %1 of track %2 is not on the disc as it was sent")
                                   .arg(m_offset / dataSize + block)
                                   .arg(m_track));
        }
        m_offset += m_read.size();
        m_check.bytesCompared += m_read.size();
        tell(m_read.size());
        return {};
    }

    [[nodiscard]] NSError endTrack() override
    {
        if (!m_isAudio)
            return {};
        m_check.bytesCompared += m_sound.findings().compared * soundSize;
        return errorOfSound(m_track, m_sound.findings());
    }

    [[nodiscard]] WrittenImageCheck takeCheck()
    {
        if (const int samples = m_sound.displacement().value_or(0); samples != 0)
            m_check.notes << QStringLiteral("the drive has the sound %1 %2 than it was sent, as drives do; it was "
                                            "compared so")
                                 .arg(counted(std::uint64_t(std::abs(samples)), "sample", "samples"),
                                      samples > 0 ? QStringLiteral("later") : QStringLiteral("earlier"));
        return std::move(m_check);
    }

private:
    /// How many tracks, from the disc's first one on, were written at once: the first session of an empty disc, where
    /// it has nothing but sound.
    [[nodiscard]] static std::size_t tracksAtOnce(const TableOfContents &contents, std::size_t firstTrack)
    {
        const std::vector<DiscTrack> &tracks = contents.sessions.front().tracks;
        const bool isSound =
            std::all_of(tracks.begin(), tracks.end(), [](const DiscTrack &track) { return track.isAudio(); });
        return firstTrack == 0 && isSound ? tracks.size() : 0;
    }

    void tell(std::uint64_t bytes)
    {
        m_told.bytesDone += bytes;
        m_progress(m_told);
    }

    DRDevice &m_device;
    std::size_t m_index; ///< of the next track on the disc
    const std::size_t m_tracksAtOnce;
    const CheckProgress &m_progress;
    DiscJobProgress m_told;
    WrittenImageCheck m_check;
    SoundComparison m_sound;
    bool m_isAudio = false; ///< the track is sound
    std::shared_ptr<const DiscImageSource> m_source; ///< null for a track of sound
    std::uint64_t m_offset = 0; ///< in the track, bytes of user data
    std::uint32_t m_track = 0; ///< its number
    std::uint32_t m_keptFrom = 0;
    std::vector<char> m_read;
};

} // namespace

VerificationResult checkWrittenData(DRDevice &device, const WrittenData &written, VerificationRequest request,
                                    const std::stop_token &stop, const CheckProgress &progress)
{
    request.image = device.readBack(written.firstBlock, written.blocks);
    request.volumes = volumesInImage(request.image);
    request.hasEarlierFiles = written.earlier != nullptr;
    VerificationResult result = verifyImage(request, stop, progress);
    if (written.earlier == nullptr || result.error)
        return result;
    const auto volume = std::find_if(request.volumes.begin(), request.volumes.end(), [](const FoundVolume &one) {
        return one.kind == VolumeKind::RockRidge && one.reader; // which has the names as they are
    });
    if (volume == request.volumes.end())
        result.notes << QStringLiteral("It was not looked whether what the disc had before is still listed: that takes "
                                       "ISO 9660 with Rock Ridge.");
    else
        result.error = written.earlier->errorInVolume(*volume->reader, stop);
    return result;
}

WrittenImageCheck checkWrittenImage(DRDevice &device, const BurnPlan &plan, std::size_t firstTrack,
                                    const std::stop_token &stop, const CheckProgress &progress)
{
    ComparingSink sink(device, plan.contents, firstTrack, stop, progress);
    const NSError error = writeDisc(plan, sink, stop, {});
    WrittenImageCheck check = sink.takeCheck();
    check.error = error;
    return check;
}

} // namespace Tessaron
