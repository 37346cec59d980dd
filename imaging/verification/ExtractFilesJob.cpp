#include "imaging/jobs/DiscJobWork.h"
#include "imaging/verification/FileExtractor.h"
#include "imaging/verification/OutputFolder.h"
#include "imaging/verification/PathSelection.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ExtractFilesJob.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <algorithm>
#include <array>
#include <atomic>

namespace Tessaron
{

namespace
{

/// From the one that keeps most of what files had.
constexpr std::array preferredKinds = {VolumeKind::RockRidge, VolumeKind::UDF, VolumeKind::HFSPlus, VolumeKind::Joliet,
                                       VolumeKind::ISO9660};

const FoundVolume *volumeOfKind(const std::vector<FoundVolume> &volumes, VolumeKind kind)
{
    const auto found = std::ranges::find_if(volumes, [kind](const FoundVolume &volume) { return volume.kind == kind; });
    return found == volumes.end() ? nullptr : &*found;
}

/// The volume of that kind or, if no kind was named, the readable volume that comes first in our order of preference.
/// Null if the image has no such volume.
const FoundVolume *chosenVolume(const std::vector<FoundVolume> &volumes, std::optional<VolumeKind> kind)
{
    if (kind)
        return volumeOfKind(volumes, *kind);
    for (const VolumeKind preferred : preferredKinds) {
        const FoundVolume *const volume = volumeOfKind(volumes, preferred);
        if (volume && volume->reader)
            return volume;
    }
    return volumes.empty() ? nullptr : &volumes.front();
}

const FoundVolume *chosenVolume(const OpenedDiscImage &image, const ExtractFilesOrder &order)
{
    if (order.part)
        return *order.part < image.parts.size() ? chosenVolume(image.parts[*order.part].volumes, order.filesystem)
                                                : nullptr;
    const auto isFirst = [&image](std::uint32_t track) {
        const auto first = std::ranges::find_if(image.tracks, &DiscImageTrack::isData);
        return first == image.tracks.end() ? track == 1 : track == first->number;
    };
    if (!order.track || isFirst(*order.track)) {
        const FoundVolume *const volume = chosenVolume(image.volumes, order.filesystem);
        if (volume || order.track)
            return volume;
    }
    for (const DiscImagePart &part : image.parts) {
        if (order.track && part.track != order.track)
            continue;
        if (const FoundVolume *const volume = chosenVolume(part.volumes, order.filesystem))
            return volume;
    }
    return nullptr;
}

NSError errorOfVolume(const OpenedDiscImage &image, const ExtractFilesOrder &order)
{
    QStringList kinds;
    const auto add = [&kinds](const std::vector<FoundVolume> &volumes) {
        for (const FoundVolume &volume : volumes)
            kinds << volumeKindName(volume.kind);
    };
    add(image.volumes);
    for (const DiscImagePart &part : image.parts)
        add(part.volumes);
    kinds.removeDuplicates();
    const QString place =
        order.track ? QStringLiteral("track %1 of %2").arg(*order.track).arg(quoted(order.image)) : quoted(order.image);
    const QString what = order.filesystem
        ? QStringLiteral("%1 has no filesystem of the kind %2").arg(place, volumeKindName(*order.filesystem))
        : QStringLiteral("%1 has no filesystem that is known here").arg(place);
    return discJobError(
        DiscJobErrorCode::Source, what,
        kinds.isEmpty() ? QString() : QStringLiteral("It has %1.").arg(kinds.join(QStringLiteral(", "))), order.image);
}

} // namespace

bool ExtractFilesResult::isComplete() const
{
    return !error && failureCount == 0 && unsetTimes == 0;
}

class ExtractFilesJob::Work final : public DiscJobWork
{
public:
    explicit Work(ExtractFilesOrder given)
        : order(std::move(given))
    {
    }

    void begin() override
    {
        runInBackground(
            [this](const std::stop_token &stop) {
                NSError error = extract(stop);
                return stop.stop_requested() && phase != DiscJobPhase::Finishing ? discJobCancellation() : error;
            },
            [this](const NSError &error) {
                result.error = error;
                end(error);
            });
    }

    [[nodiscard]] DiscJobProgress progress() const override
    {
        DiscJobProgress progress;
        progress.phase = phase;
        progress.files = filesDone;
        progress.bytesDone = bytesDone;
        progress.bytesTotal = bytesTotal;
        return progress;
    }

private:
    [[nodiscard]] NSError extract(const std::stop_token &stop);
    [[nodiscard]] NSError extractFrom(const VolumeReader &reader, const std::stop_token &stop);
    [[nodiscard]] NSError checkSelection(const PathSelection &selection);

    const ExtractFilesOrder order;

public:
    ExtractFilesResult result; ///< the worker's until the job has ended

private:
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    std::atomic<std::uint64_t> filesDone = 0;
    std::atomic<std::uint64_t> bytesDone = 0;
    std::atomic<std::uint64_t> bytesTotal = 0;
};

NSError ExtractFilesJob::Work::extract(const std::stop_token &stop)
{
    const Result<OpenedDiscImage> image = openDiscImage(order.image);
    if (!image)
        return image.error();
    result.notes = image->notes;
    const FoundVolume *const volume = chosenVolume(*image, order);
    if (!volume)
        return errorOfVolume(*image, order);
    result.filesystem = volume->kind;
    if (!volume->reader)
        return discJobError(
            DiscJobErrorCode::Source,
            QStringLiteral("the filesystem %1 of %2 cannot be read: %3")
                .arg(volumeKindName(volume->kind), quoted(order.image), volume->error.localizedDescription()),
            {}, order.image);
    if (volume->error)
        result.notes << QStringLiteral("%1 is damaged: %2")
                            .arg(volumeKindName(volume->kind), volume->error.localizedDescription());
    return extractFrom(*volume->reader, stop);
}

NSError ExtractFilesJob::Work::extractFrom(const VolumeReader &reader, const std::stop_token &stop)
{
    phase = DiscJobPhase::Scanning;
    PathSelection selection(order.paths);
    bytesTotal = bytesOfSelection(reader, selection, stop);
    if (stop.stop_requested())
        return discJobCancellation();
    if (NSError error = checkSelection(selection))
        return error;
    OutputFolder folder;
    if (NSError error = folder.open(order.folder, QStringLiteral("Name a folder for the files.")))
        return error;
    if (NSError error = checkRoomForOutput(folder.descriptor(), bytesTotal, order.folder))
        return error;
    phase = DiscJobPhase::Writing;
    NSError error = FileExtractor(reader, selection, folder.descriptor(), result)
                        .extract(
                            [this](std::uint64_t bytes) {
                                bytesDone += bytes;
                                filesDone = result.files;
                            },
                            stop);
    if (error || stop.stop_requested())
        return error ? error : discJobCancellation();
    folder.keep();
    phase = DiscJobPhase::Finishing;
    const int failure = order.isSynchronized ? folder.sync() : 0;
    return failure == 0 ? NSError() : outputError(order.folder, failure);
}

/// One path that is not there is told; when none is, there is nothing to do.
NSError ExtractFilesJob::Work::checkSelection(const PathSelection &selection)
{
    const QList<QByteArray> missing = selection.missing();
    for (const QByteArray &path : missing) {
        NSError error = discJobError(
            DiscJobErrorCode::Source,
            QStringLiteral("there is no %1 in %2").arg(quoted(path), volumeKindName(result.filesystem)),
            QStringLiteral("Upper and lower case matter, and each filesystem may have names of its own."), path);
        if (missing.size() == selection.namedCount())
            return error;
        ++result.failureCount;
        result.failures.push_back({path, error});
    }
    return {};
}

ExtractFilesJob::ExtractFilesJob(ExtractFilesOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

ExtractFilesJob::~ExtractFilesJob() = default;

const ExtractFilesResult &ExtractFilesJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void ExtractFilesJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
