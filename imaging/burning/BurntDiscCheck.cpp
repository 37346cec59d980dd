#include "imaging/burning/BurntDiscCheck.h"

#include "imaging/burning/DescribedTrackWriter.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/disctracks/SectorCoding.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t dataSize = 2048;

/// A sink that holds the blocks that come against those on the disc.
class ComparingSink final : public BlockSink
{
public:
    ComparingSink(DRDevice &device, const CueSheet &image, std::size_t firstTrack, const CheckProgress &progress)
        : m_device(device)
        , m_index(firstTrack)
        , m_progress(progress)
    {
        m_told.phase = DiscJobPhase::Comparing;
        for (const DiscTrack *const track : image.contents.tracks())
            m_told.bytesTotal += track->isAudio() ? 0 : track->storedBlocks() * dataSize;
    }

    [[nodiscard]] NSError beginTrack(const DiscTrack &track) override
    {
        m_source.reset();
        m_offset = 0;
        m_track = track.number;
        const std::size_t index = m_index++;
        if (track.isAudio()) {
            m_check.notes << QStringLiteral("track %1 is sound, which is not compared").arg(track.number);
            return {};
        }
        m_keptFrom = std::uint32_t(userDataPart(track.kind, *track.sectorForm())->offset);
        std::uint64_t first = 0;
        if (!m_device.isFile()) {
            const std::vector<RecordedTrackDescription> &written = m_device.disc().tracks;
            if (index >= written.size())
                return differs(QStringLiteral("the drive does not find track %1").arg(track.number));
            first = std::uint64_t(std::max<std::int64_t>(written[index].firstBlock, 0));
        }
        m_source = m_device.readBack(first, track.storedBlocks());
        return {};
    }

    [[nodiscard]] NSError writeBlocks(const BlockBatch &run) override
    {
        if (!m_source)
            return {};
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
        m_check.blocksCompared += run.count;
        m_told.bytesDone += m_read.size();
        m_progress(m_told);
        return {};
    }

    [[nodiscard]] WrittenImageCheck takeCheck() { return std::move(m_check); }

private:
    [[nodiscard]] static NSError differs(const QString &what)
    {
        return burnError(ioErr, what, QStringLiteral("Write another disc, at a slower speed."));
    }

    DRDevice &m_device;
    std::size_t m_index; ///< of the next track on the disc
    const CheckProgress &m_progress;
    DiscJobProgress m_told;
    WrittenImageCheck m_check;
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

WrittenImageCheck checkWrittenImage(DRDevice &device, const CueSheet &image, std::size_t firstTrack,
                                    const std::stop_token &stop, const CheckProgress &progress)
{
    WrittenImageCheck failed;
    DescribedDiscNotes notes;
    const Result<BurnPlan> plan = planDescribedDisc(image, notes, stop);
    if (!plan) {
        failed.error = plan.error();
        return failed;
    }
    ComparingSink sink(device, image, firstTrack, progress);
    const NSError error = writeDisc(*plan, sink, stop, {});
    WrittenImageCheck check = sink.takeCheck();
    check.error = error;
    return check;
}

} // namespace Tessaron
