#include "imaging/verification/ContentComparison.h"
#include "imaging/verification/VolumeComparison.h"
#include <TessaronClasses/ImageVerification.h>

#include <algorithm>
#include <array>

namespace Tessaron
{

namespace
{

/// Those that keep every name come first: where they say that a file lies, the others are expected to have it, too.
constexpr std::array comparisonOrder = {VolumeKind::RockRidge, VolumeKind::UDF, VolumeKind::HFSPlus, VolumeKind::Joliet,
                                        VolumeKind::ISO9660};

/// A volume that states more blocks than the image has was cut.
void checkLengths(const VerificationRequest &request, ImageDifferenceList *differences)
{
    for (const FoundVolume &volume : request.volumes) {
        if (volume.error)
            differences->addDamage(setOf(volume.kind), "/", volume.error);
        if (!volume.reader)
            continue;
        const DiscVolumeFacts &facts = volume.reader->facts();
        const std::uint64_t length = request.image->length();
        if (facts.offset <= length && facts.blockCount <= (length - facts.offset) / facts.blockSize)
            continue;
        differences->add({ImageDifference::Kind::Damage, setOf(volume.kind), "/", length,
                          QStringLiteral("the volume has %1 blocks of %2 bytes, but the image ends at byte %3")
                              .arg(facts.blockCount)
                              .arg(facts.blockSize)
                              .arg(length)});
    }
}

void compareVolumes(const VerificationRequest &request, SourceIndex &sources, ContentPlan &plan,
                    const std::stop_token &stop, VerificationResult *result)
{
    RecordedSources rockRidge;
    const auto isRockRidge = [](const FoundVolume &volume) {
        return volume.kind == VolumeKind::RockRidge && volume.reader;
    };
    const bool hasRockRidge = std::any_of(request.volumes.begin(), request.volumes.end(), isRockRidge);
    for (const VolumeKind kind : comparisonOrder) {
        for (const FoundVolume &volume : request.volumes) {
            if (volume.kind != kind || !volume.reader || stop.stop_requested())
                continue;
            const bool sharesRecords = kind == VolumeKind::RockRidge || (kind == VolumeKind::ISO9660 && hasRockRidge);
            VolumeComparison comparison(*volume.reader, sources, plan, result->differences,
                                        sharesRecords ? &rockRidge : nullptr);
            result->volumes.push_back(comparison.run(stop));
        }
    }
}

} // namespace

VerificationResult verifyImage(const VerificationRequest &request, const std::stop_token &stop,
                               const std::function<void(const VerificationProgress &)> &progress)
{
    VerificationResult result;
    VerificationProgress state;
    progress(state);
    SourceIndex sources(request.sources, stop);
    for (const SourceFailure &failure : sources.failures())
        result.differences.add({ImageDifference::Kind::Source, 0, failure.path, {}, failure.reason});
    result.files = state.files = sources.fileCount();
    result.folders = state.folders = sources.folderCount();
    state.phase = VerificationProgress::Phase::ComparingNames;
    progress(state);
    ContentPlan plan(sources.count());
    checkLengths(request, &result.differences);
    compareVolumes(request, sources, plan, stop, &result);
    if (!stop.stop_requested()) {
        ContentComparison comparison(*request.image, sources, plan, result.differences);
        state.phase = VerificationProgress::Phase::ComparingContents;
        state.bytesTotal = comparison.byteCount();
        comparison.run([&](std::uint64_t done) {
            result.bytesCompared = state.bytesDone = done;
            progress(state);
            return !stop.stop_requested();
        });
    }
    result.isCancelled = stop.stop_requested();
    return result;
}

} // namespace Tessaron
