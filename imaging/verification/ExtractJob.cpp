#include "imaging/StagedFile.h"
#include "imaging/jobs/DiscJobWork.h"
#include "imaging/jobs/ImageDestination.h"
#include "imaging/verification/DecodedSounds.h"
#include "imaging/verification/OutputFolder.h"
#include "imaging/verification/TrackExtractor.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ExtractJob.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

QByteArray nameOfTrack(const ExtractedTrack &track, ExtractedSound sound)
{
    const QByteArray number = QByteArray::number(track.number).rightJustified(2, '0');
    const char *const soundEnd = sound == ExtractedSound::FLAC ? ".flac" : ".wav";
    return "track" + number + (track.isAudio ? soundEnd : ".iso");
}

/// Of an output for one track that is there already and cannot be replaced; null for any other.
NSError errorOfOutput(const QByteArray &path)
{
    struct stat status;
    if (::stat(path.constData(), &status) != 0 || S_ISREG(status.st_mode))
        return {};
    if (S_ISDIR(status.st_mode))
        return discJobError(DiscJobErrorCode::Destination,
                            QStringLiteral("the output %1 is a folder").arg(quoted(path)),
                            QStringLiteral("Name a file in it, or take all tracks."), path);
    return discJobError(DiscJobErrorCode::Destination,
                        QStringLiteral("the output %1 is not a regular file").arg(quoted(path)),
                        QStringLiteral("Name another file."), path);
}

/// Why the track must not become the file of this name: names tell people and programs what is in a file. Null where
/// the name fits, or says nothing.
NSError errorOfName(const QByteArray &path, const ExtractedTrack &track, ExtractedSound sound)
{
    constexpr std::array soundEnds = {".wav", ".wave", ".flac", ".mp3", ".aif", ".aiff", ".m4a", ".ogg", ".opus"};
    constexpr std::array dataEnds = {".iso", ".img", ".cue", ".ccd", ".toc"};
    const QByteArray name = path.toLower();
    const auto isEnd = [&name](const char *end) { return name.endsWith(end); };
    const auto refusal = [&](const QString &what, const QString &advice) {
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("track %1 is %2, which %3 is not by its name")
                                .arg(track.number)
                                .arg(what, quoted(lastComponent(path))),
                            advice, path);
    };
    if (!track.isAudio)
        return std::ranges::any_of(soundEnds, isEnd)
            ? refusal(QStringLiteral("data"), QStringLiteral("Name an output that ends in .iso."))
            : NSError();
    const bool isFlac = sound == ExtractedSound::FLAC;
    if (isEnd(isFlac ? ".flac" : ".wav") || (!isFlac && isEnd(".wave")))
        return {};
    if (std::ranges::any_of(dataEnds, isEnd) || std::ranges::any_of(soundEnds, isEnd))
        return refusal(isFlac ? QStringLiteral("sound, and becomes a FLAC file")
                              : QStringLiteral("sound, and becomes a WAVE file"),
                       isFlac ? QStringLiteral("Name an output that ends in .flac, or choose the format wav.")
                              : QStringLiteral("Name an output that ends in .wav, or in .flac for FLAC."));
    return {};
}

/// A track on its way.
struct TrackOutput {
    std::unique_ptr<TrackExtractor> extractor;
    ImageDestination destination;
    std::unique_ptr<StagedFile> file; ///< goes before the folder of the destination
};

} // namespace

bool ExtractResult::isComplete() const
{
    return !error && std::ranges::all_of(tracks, [](const ExtractedTrack &track) {
        return track.damagedSectors == 0 && track.cutSectors == 0 && track.damage.isEmpty();
    });
}

class ExtractJob::Work final : public DiscJobWork
{
public:
    explicit Work(ExtractOrder given)
        : order(std::move(given))
    {
    }

    void begin() override
    {
        runInBackground(
            [this](const std::stop_token &stop) {
                NSError error = extract(stop);
                return stop.stop_requested() && !isPublished ? discJobCancellation() : error;
            },
            [this](const NSError &error) {
                result.error = error;
                if (error)
                    result.tracks.clear();
                end(error);
            });
    }

    [[nodiscard]] DiscJobProgress progress() const override
    {
        DiscJobProgress progress;
        progress.phase = phase;
        progress.bytesDone = bytesDone;
        progress.bytesTotal = bytesTotal;
        return progress;
    }

private:
    [[nodiscard]] NSError extract(const std::stop_token &stop);
    [[nodiscard]] NSError chooseTracks(std::vector<TrackOutput> *outputs);
    [[nodiscard]] NSError chooseHiddenSound(std::vector<TrackOutput> *outputs);
    [[nodiscard]] NSError choose(std::size_t index, TrackExtractor::Part part, std::vector<TrackOutput> *outputs);
    [[nodiscard]] NSError openOutputs(std::vector<TrackOutput> *outputs);
    [[nodiscard]] NSError checkNotASource(const ImageDestination &destination) const;
    [[nodiscard]] NSError publish(const std::vector<TrackOutput> &outputs, const std::stop_token &stop);

    const ExtractOrder order;

public:
    ExtractResult result; ///< the worker's until the job has ended

private:
    DescribedDisc disc;
    DecodedSounds sounds;
    bool isPublished = false;
    std::atomic<DiscJobPhase> phase = DiscJobPhase::Preparing;
    std::atomic<std::uint64_t> bytesDone = 0;
    std::atomic<std::uint64_t> bytesTotal = 0;
};

NSError ExtractJob::Work::extract(const std::stop_token &stop)
{
    Result<DescribedDisc> described = describedDisc(order.image, stop);
    if (!described)
        return described.error();
    disc = *std::move(described);
    result.notes = disc.notes;
    OutputFolder folder; // goes after the files in it
    std::vector<TrackOutput> outputs;
    if (NSError error = chooseTracks(&outputs))
        return error;
    if (!order.track) {
        if (NSError error =
                folder.open(order.output, QStringLiteral("Name a folder for the tracks, or one track with --track.")))
            return error;
    }
    if (NSError error = openOutputs(&outputs))
        return error;
    phase = DiscJobPhase::Writing;
    for (TrackOutput &output : outputs) {
        NSError error = output.extractor->write(
            output.file->descriptor(), output.destination.path, order.sound,
            [this](std::uint64_t bytes) { bytesDone += bytes; }, stop);
        if (error)
            return error;
    }
    NSError error = publish(outputs, stop);
    if (!error)
        folder.keep();
    return error;
}

NSError ExtractJob::Work::choose(std::size_t index, TrackExtractor::Part part, std::vector<TrackOutput> *outputs)
{
    TrackOutput output;
    output.extractor = std::make_unique<TrackExtractor>(disc.disc, index, part, sounds);
    NSError error = output.extractor->check();
    outputs->push_back(std::move(output));
    return error;
}

/// What is in front of the first track, where it was asked for.
NSError ExtractJob::Work::chooseHiddenSound(std::vector<TrackOutput> *outputs)
{
    const bool isAll = !order.track && order.isHiddenSoundTaken;
    if (order.track != 0U && !isAll)
        return {};
    const std::vector<const DiscTrack *> tracks = disc.disc.contents.tracks();
    const DiscTrack *const first = tracks.empty() ? nullptr : tracks.front();
    if (first && first->isAudio() && first->pregap.isStored && first->pregap.length > 0)
        return choose(0, TrackExtractor::Part::Pregap, outputs);
    if (!isAll)
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("%1 holds no sound in front of the first track").arg(quoted(order.image)),
                            {}, order.image);
    result.notes << QStringLiteral("There is no sound in front of the first track.");
    return {};
}

NSError ExtractJob::Work::chooseTracks(std::vector<TrackOutput> *outputs)
{
    if (NSError error = chooseHiddenSound(outputs))
        return error;
    const std::vector<const DiscTrack *> tracks = disc.disc.contents.tracks();
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        if (order.track && tracks[index]->number != *order.track)
            continue;
        if (order.track && order.sound == ExtractedSound::FLAC && !tracks[index]->isAudio())
            return discJobError(DiscJobErrorCode::InvalidOrder,
                                QStringLiteral("track %1 is data, which no FLAC file holds").arg(*order.track),
                                QStringLiteral("Name an output that ends in .iso."), order.output);
        if (NSError error = choose(index, TrackExtractor::Part::Track, outputs))
            return error;
    }
    if (!outputs->empty())
        return {};
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("%1 has no track %2").arg(quoted(order.image)).arg(order.track.value_or(0)),
                        QStringLiteral("It has %1.").arg(counted(tracks.size(), "track", "tracks")), order.image);
}

/// Neither the image nor its description may be what is written: it would be gone while it is read.
NSError ExtractJob::Work::checkNotASource(const ImageDestination &destination) const
{
    QList<QByteArray> sources = {order.image, disc.description};
    for (const CueFile &file : disc.disc.files)
        sources << file.path;
    for (const QByteArray &source : std::as_const(sources)) {
        struct stat status;
        const bool isThere = !source.isEmpty() && ::stat(source.constData(), &status) == 0;
        if (isThere && destination.existingImage == DeviceAndInode{status.st_dev, status.st_ino})
            return discJobError(DiscJobErrorCode::Destination,
                                QStringLiteral("the output %1 is what is to be read").arg(quoted(destination.path)),
                                QStringLiteral("Name another file."), destination.path);
    }
    return {};
}

NSError ExtractJob::Work::openOutputs(std::vector<TrackOutput> *outputs)
{
    for (TrackOutput &output : *outputs) {
        const QByteArray name = nameOfTrack(output.extractor->result(), order.sound);
        const QByteArray path = order.track ? order.output : order.output + '/' + name;
        NSError error = order.track ? errorOfOutput(path) : NSError();
        if (!error)
            error = openDestination(path, DiscFormat::ISO, &output.destination);
        if (!error)
            error = checkNotASource(output.destination);
        if (!error && order.track)
            error = errorOfName(path, output.extractor->result(), order.sound);
        if (error)
            return error;
        int failure = 0;
        StagedFile::removeAbandoned(output.destination.folder.get(), output.destination.name);
        output.file = StagedFile::create(output.destination.folder.get(), output.destination.folderPath,
                                         output.destination.name, &failure);
        if (!output.file)
            return outputError(path, failure);
        bytesTotal += output.extractor->keptBytes();
    }
    // How small FLAC will be is not known before: there only trying tells.
    if (order.sound == ExtractedSound::FLAC)
        return {};
    return checkRoomForOutput(outputs->front().file->descriptor(), bytesTotal, order.output);
}

NSError ExtractJob::Work::publish(const std::vector<TrackOutput> &outputs, const std::stop_token &stop)
{
    phase = DiscJobPhase::Finishing;
    std::vector<StagedFile *> files;
    for (const TrackOutput &output : outputs) {
        if (order.isSynchronized && ::fsync(output.file->descriptor()) != 0)
            return outputError(output.destination.path, errno);
        struct stat status;
        if (::fstat(output.file->descriptor(), &status) != 0)
            return outputError(output.destination.path, errno);
        files.push_back(output.file.get());
        result.tracks.push_back(output.extractor->result());
        result.tracks.back().path = output.destination.path;
        result.tracks.back().bytes = std::uint64_t(status.st_size);
    }
    if (result.tracks.size() > 1 && result.tracks.front().number == 0)
        result.tracks[1].pregapLeftOut = 0;
    if (stop.stop_requested())
        return discJobCancellation();
    if (const int failure = publishTogether(files))
        return outputError(order.output, failure);
    isPublished = true;
    return {};
}

ExtractJob::ExtractJob(ExtractOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

ExtractJob::~ExtractJob() = default;

const ExtractResult &ExtractJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void ExtractJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
