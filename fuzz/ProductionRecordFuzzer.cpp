#include "fuzz/Fields.h"
#include "fuzz/FuzzTarget.h"

#include "platform/discrecording/objects/DRTrackDescription.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/KRDRDataProducer.h>
#include <TessaronClasses/KRDataProvider.h>

#include <sys/mman.h>
#include <vector>

namespace
{

using namespace Tessaron;

constexpr char untouched = 0x5A;

KRDRDataProductionInfo takeRecord(Fields &fields)
{
    KRDRDataProductionInfo info = KRDRDataProducer::blankInfo();
    info.offsetInFile = fields.next<std::int64_t>();
    info.sectorSize = fields.next<std::uint32_t>();
    info.frameStart = fields.next<std::uint32_t>();
    info.framesCount = fields.next<std::uint32_t>();
    info.hasPregapInfo = fields.next<char>();
    info.producePregapFromFile = fields.next<char>();
    info.pregapFrameStart = fields.next<std::uint32_t>();
    info.pregapFramesCount = fields.next<std::uint32_t>();
    info.postgapFramesCount = fields.next<std::uint32_t>();
    info.numberOfIndexPoints = fields.next<std::uint32_t>();
    info.indexPointFrames.fill(fields.next<std::uint32_t>());
    info.trackMode = std::int32_t(fields.next<std::uint8_t>()) - 1;
    info.options = fields.next<std::uint32_t>();
    return info;
}

/// A number without meaning for the modes that open media files: what these hold is another target's business.
template <typename Mode>
Mode withoutDecoding(Mode mode, Mode decoding)
{
    return mode == decoding ? Mode(-1) : mode;
}

void produceSome(DRTrackProducer &producer, DRTrack *track)
{
    if (!producer.prepareTrack(track, nullptr, {}))
        return;
    for (const std::uint32_t length : {1u, 2048u, 5000u, 100000u}) {
        std::vector<char> buffer(length + 1, untouched);
        require(producer.producePreGapForTrack(track, buffer.data(), length, 0, 0, nullptr) <= length,
                "no more of the pregap than was asked for");
        require(producer.produceDataForTrack(track, buffer.data(), length, 0, 0, nullptr) <= length,
                "no more than was asked for");
        require(buffer.back() == untouched, "nothing is written behind the buffer");
    }
    producer.cleanupTrackAfterBurn(track);
}

void checkTrack(const DRTrack &track)
{
    const StatedBlocks blocks = statedBlocks(track.properties());
    require(blocks.size && blocks.type && blocks.length, "a track says what its blocks are");
    const Result<DiscTrack> described = discTrackOfProperties(track.properties());
    require(described || !described.error().localizedDescription().isEmpty(), "a description or a reason");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    Fields fields(bytes, size);
    KRDRDataProductionInfo info = takeRecord(fields);
    info.trackMode = withoutDecoding(info.trackMode, KRDRTrackMode::decodedAudio);
    const auto start = fields.next<std::uint64_t>();
    const auto length = fields.next<std::uint64_t>();
    const auto sector = fields.next<std::uint32_t>();
    const auto pregap = fields.next<std::uint64_t>();
    const std::int16_t mode = withoutDecoding(fields.next<std::int16_t>(), KRDataProviderMode::decodedAudio);
    const auto options = fields.next<std::uint32_t>();

    const UniqueDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    require(file && writeFully(file.get(), fields.rest(), fields.restSize()) == 0, "there is memory for the input");
    const QString path = QStringLiteral("/proc/self/fd/%1").arg(file.get());

    const auto producer = KRDRDataProducer::initWithInfo(info, path);
    const std::shared_ptr<DRTrack> produced = producer->track();
    if (produced)
        checkTrack(*produced);
    produceSome(*producer, produced.get());

    if (const auto provider = KRDataProvider::providerWithFile(path, start, length, sector, pregap, mode, options)) {
        const std::shared_ptr<DRTrack> provided = provider->dataProducer();
        if (provided)
            checkTrack(*provided);
        produceSome(*provider, provided.get());
    }
    return 0;
}
