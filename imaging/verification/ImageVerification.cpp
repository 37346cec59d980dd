#include "imaging/verification/ContentComparison.h"
#include "imaging/verification/VolumeComparison.h"
#include "platform/discimage/ImageCheck.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ImageVerification.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace Tessaron
{

namespace
{

/// Those that keep every name come first: where they say that a file lies, the others are expected to have it, too.
constexpr std::array comparisonOrder = {VolumeKind::RockRidge, VolumeKind::UDF, VolumeKind::HFSPlus, VolumeKind::Joliet,
                                        VolumeKind::ISO9660};

DiscFilesystems filesystemOf(VolumeKind kind)
{
    switch (kind) {
    case VolumeKind::ISO9660:
    case VolumeKind::RockRidge:
        return DiscFilesystem::ISO9660;
    case VolumeKind::Joliet:
        return DiscFilesystem::Joliet;
    case VolumeKind::UDF:
        return DiscFilesystem::UDF;
    case VolumeKind::HFSPlus:
        return DiscFilesystem::HFSPlus;
    }
    return {};
}

/// The image has the views that the filesystems asked for give it, Rock Ridge with ISO 9660.
void checkFilesystems(const VerificationRequest &request, ImageDifferenceList *differences)
{
    for (const VolumeKind kind : comparisonOrder) {
        const auto isOfKind = [kind](const FoundVolume &volume) { return volume.kind == kind; };
        const bool isThere = std::any_of(request.volumes.begin(), request.volumes.end(), isOfKind);
        const bool isWanted = (*request.filesystems & filesystemOf(kind)) == filesystemOf(kind);
        if (isThere == isWanted)
            continue;
        differences->add({isThere ? ImageDifference::Kind::Extra : ImageDifference::Kind::Missing,
                          setOf(kind),
                          "/",
                          {},
                          isThere ? QStringLiteral("the image has this filesystem, which was not asked for")
                                  : QStringLiteral("the image does not have this filesystem")});
    }
}

/// The damage that the image's structures show when they are held against one another, and what is too long. What a
/// reader says of a volume that it cannot open is told there, too, unless the check does not look at it.
void checkImage(const VerificationRequest &request, const std::stop_token &stop, ImageDifferenceList *differences)
{
    const std::uint64_t length = request.image->length();
    VolumeSet told = 0;
    const auto add = [&](const VolumeProblem &problem) {
        const VolumeSet volumes = problem.volume ? setOf(*problem.volume) : VolumeSet(0);
        told = VolumeSet(told | volumes);
        differences->add({ImageDifference::Kind::Damage, volumes, "/", problem.offset,
                          QStringLiteral("%1: %2 (at byte %3 of the %4)")
                              .arg(problem.structure, problem.message)
                              .arg(problem.offset)
                              .arg(problem.part.isEmpty() ? QStringLiteral("image") : problem.part)});
        return true;
    };
    (void)checkDiscImagePart(request.image, request.part, add, stop);
    const VolumeSet toldOfCompared = told;
    for (const DiscImagePart &part : request.checkedOnly) {
        if (part.source)
            (void)checkDiscImagePart(part.source, part.name, add, stop);
        else
            differences->addDamage(0, "/", part.error);
    }
    told = toldOfCompared;
    for (const FoundVolume &volume : request.volumes) {
        if (volume.error && (told & setOf(volume.kind)) == 0)
            differences->addDamage(setOf(volume.kind), "/", volume.error);
    }
    constexpr std::uint64_t smallestBlock = 512;
    const std::uint64_t rest = length % smallestBlock;
    if (rest != 0 && !request.image->vantError())
        differences->add({ImageDifference::Kind::Damage, 0, "/", length - rest,
                          QStringLiteral("the image ends with a piece of a block, or with a trailer that is damaged: "
                                         "%1 from byte %2 on")
                              .arg(counted(rest, "byte", "bytes"))
                              .arg(length - rest)});
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
            if (volume.kind != kind || !volume.reader || stop.stop_requested() || sources.lacksDescriptors())
                continue;
            const bool sharesRecords = kind == VolumeKind::RockRidge || (kind == VolumeKind::ISO9660 && hasRockRidge);
            VolumeComparison comparison(*volume.reader, sources, plan, result->differences,
                                        sharesRecords ? &rockRidge : nullptr);
            if (request.hasEarlierFiles)
                comparison.allowExtra();
            result->volumes.push_back(comparison.run(stop));
        }
    }
}

/// Without descriptors, each source that could not be opened looks like a difference, so differences are not told.
VerificationResult withoutDescriptors(const SourceIndex &sources)
{
    VerificationResult result;
    result.error = discJobError(DiscJobErrorCode::Source,
                                QStringLiteral("the sources cannot be compared: %1").arg(systemText(EMFILE)),
                                adviceOnDescriptors(), {}, tmfoErr);
    result.files = sources.fileCount();
    result.folders = sources.folderCount();
    return result;
}

} // namespace

VerificationResult verifyImage(const VerificationRequest &request, const std::stop_token &stop,
                               const std::function<void(const DiscJobProgress &)> &progress)
{
    VerificationResult result;
    for (const DiscImagePart &part : request.checkedOnly) {
        if (!part.volumes.empty())
            result.notes << QStringLiteral("The filesystems of %1 were checked, but not compared with the sources.")
                                .arg(part.name);
    }
    DiscJobProgress state;
    state.phase = DiscJobPhase::Scanning;
    progress(state);
    SourceIndex sources = request.tree ? SourceIndex(*request.tree, stop) : SourceIndex(request.sources, stop);
    if (sources.lacksDescriptors())
        return withoutDescriptors(sources);
    for (const SourceFailure &failure : sources.failures())
        result.differences.add({ImageDifference::Kind::Source, 0, failure.path, {}, failure.reason});
    result.files = state.files = sources.fileCount();
    result.folders = state.folders = sources.folderCount();
    state.phase = DiscJobPhase::Planning;
    progress(state);
    ContentPlan plan(sources.count());
    if (request.filesystems)
        checkFilesystems(request, &result.differences);
    checkImage(request, stop, &result.differences);
    compareVolumes(request, sources, plan, stop, &result);
    if (!stop.stop_requested() && !sources.lacksDescriptors()) {
        ContentComparison comparison(*request.image, sources, plan, result.differences);
        state.phase = DiscJobPhase::Comparing;
        state.bytesTotal = comparison.byteCount();
        comparison.run([&](std::uint64_t done) {
            result.bytesCompared = state.bytesDone = done;
            progress(state);
            return !stop.stop_requested() && !sources.lacksDescriptors();
        });
    }
    if (sources.lacksDescriptors())
        return withoutDescriptors(sources);
    if (stop.stop_requested())
        result.error = discJobCancellation();
    return result;
}

} // namespace Tessaron
