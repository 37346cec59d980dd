#include "platform/discrecording/audio/AudioFileTrack.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/quicktime/CDSound.h"

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

/// Decodes a file while it is written.
class AudioFileProducer final : public DRTrackProducer
{
public:
    explicit AudioFileProducer(QByteArray path)
        : m_path(std::move(path))
    {
    }

    bool prepareTrack(DRTrack * /*track*/, DRBurn * /*forBurn*/, const QVariantMap & /*toMedia*/) override
    {
        Result<std::unique_ptr<CDSound>> sound = CDSound::openFile(m_path);
        if (!sound)
            return false;
        m_sound = *std::move(sound);
        return true;
    }

    /// Silence behind the end fills up the last frame.
    std::uint32_t produceDataForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                      std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                      std::uint32_t * /*ioFlags*/) override
    {
        if (!m_sound)
            return 0;
        const Result<std::size_t> samples = m_sound->read(intoBuffer, length / CDSound::bytesPerSample);
        if (!samples)
            return 0;
        std::fill(intoBuffer + *samples * CDSound::bytesPerSample, intoBuffer + length, '\0');
        return length;
    }

    void cleanupTrackAfterBurn(DRTrack * /*track*/) override { m_sound.reset(); }

private:
    const QByteArray m_path;
    std::unique_ptr<CDSound> m_sound; ///< while the track is written
};

} // namespace

std::shared_ptr<DRTrack> trackForAudioOfLength(DRMSF length, const std::shared_ptr<DRTrackProducer> &producer)
{
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(producer);
    if (track)
        track->setProperties({{DRTrackLengthKey, quint64(length.intValue())},
                              {DRBlockSizeKey, quint32(CDSound::bytesPerFrame)},
                              {DRBlockTypeKey, 0},
                              {DRDataFormKey, 0},
                              {DRTrackModeKey, 0},
                              {DRSessionFormatKey, 0}});
    return track;
}

std::shared_ptr<DRTrack> trackForAudioFile(const QString &path)
{
    const QByteArray bytes = fileSystemRepresentation(path);
    const Result<std::uint64_t> samples = CDSound::countSamples(bytes);
    if (!samples || *samples == 0)
        return nullptr;
    const std::uint64_t frames = (*samples + CDSound::samplesPerFrame - 1) / CDSound::samplesPerFrame;
    if (frames > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    return trackForAudioOfLength(DRMSF::msfWithFrames(std::uint32_t(frames)),
                                 std::make_shared<AudioFileProducer>(bytes));
}

} // namespace Tessaron
