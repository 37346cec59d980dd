#include "platform/discimage/source/DiscImageSource.h"
#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/DiscDescription.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include "platform/quicktime/SoundHelpers.h"
#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <array>
#include <optional>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

NSError cannotRead(const QByteArray &path, const NSError &error)
{
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("%1 cannot be read: %2").arg(quoted(path), error.localizedFailureReason()),
                        error.localizedRecoverySuggestion(), path);
}

void takeNotes(DescribedDisc *disc)
{
    const QString name = nameOfDiscDescription(discDescriptionKind(disc->description));
    for (const CueNote &note : disc->disc.notes)
        disc->notes << (note.line > 0 ? QStringLiteral("Line %1 of the %2: %3").arg(note.line).arg(name, note.text)
                                      : note.text);
}

bool areSameFile(const QByteArray &one, const QByteArray &other)
{
    struct stat first;
    struct stat second;
    return !one.isEmpty() && ::stat(one.constData(), &first) == 0 && ::stat(other.constData(), &second) == 0
        && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// Measures sounds by decoding them, all by one program; what cannot be decoded is noted.
SoundMeasure measureByDecoding(QStringList *notes, const std::stop_token &stop)
{
    const auto helpers = std::make_shared<SoundHelpers>();
    return [notes, stop, helpers](const QByteArray &path) -> std::optional<std::uint64_t> {
        const Result<std::uint64_t> samples = CDSound::countSamples(path, stop, helpers.get());
        if (samples)
            return *samples * CDSound::bytesPerSample;
        if (samples.error().code() != userCanceledErr)
            *notes << QStringLiteral("%1 cannot be decoded: %2")
                          .arg(quoted(path), samples.error().localizedFailureReason());
        return std::nullopt;
    };
}

/// The description of the same name beside an image, where it names that image. One that cannot be used is noted,
/// unless that says nothing about it.
Result<std::optional<DescribedDisc>> describedByFileBeside(const QByteArray &path, QStringList *notes,
                                                           const std::stop_token &stop)
{
    using Described = std::optional<DescribedDisc>;
    const qsizetype dot = path.lastIndexOf('.');
    if (dot <= path.lastIndexOf('/'))
        return Described();
    for (const char *const extension : {".cue", ".ccd", ".toc"}) {
        DescribedDisc disc;
        disc.description = path.first(dot) + extension;
        struct stat status;
        if (::stat(disc.description.constData(), &status) != 0 || !S_ISREG(status.st_mode))
            continue;
        Result<CueSheet> sheet = discDescriptionOfFile(disc.description, measureByDecoding(&disc.notes, stop));
        if (!sheet && isLackOfDescriptors(sheet.error()))
            return sheet.error();
        if (!sheet) {
            *notes << QStringLiteral("The %1 beside the image is not used. %2")
                          .arg(nameOfDiscDescription(discDescriptionKind(disc.description)),
                               sheet.error().localizedFailureReason());
            continue;
        }
        if (std::ranges::none_of(sheet->files, [&](const CueFile &file) { return areSameFile(file.path, path); }))
            continue;
        disc.disc = *std::move(sheet);
        takeNotes(&disc);
        return Described(std::move(disc));
    }
    return Described();
}

void takeVant(const VANTImage &image, DescribedDisc *disc)
{
    disc->disc.contents = tableOfContentsOfVANT(image);
    for (std::size_t session = 0; session < image.sessions.size(); ++session) {
        const std::vector<DiscTrack> &tracks = disc->disc.contents.sessions[session].tracks;
        for (std::size_t index = 0; index < tracks.size(); ++index) {
            const std::uint64_t start = image.sessions[session].tracks[index].startOffset;
            const DiscTrack &track = tracks[index];
            const std::uint64_t pregap = track.pregap.isStored ? track.pregap.length : 0;
            CueTrackPlace place;
            if (pregap > 0)
                place.pregap.push_back({0, start - pregap * track.blockSize, pregap});
            place.data.push_back({0, start, track.storedBlocks() - pregap});
            disc->disc.places.push_back(std::move(place));
        }
    }
    QByteArray packs;
    for (const QByteArray &block : image.cdTextBlocks)
        packs += block;
    if (packs.isEmpty())
        return;
    const Result<CDText> text = cdTextOfPacks(packs);
    if (text)
        disc->disc.contents.cdText = *text;
    else
        disc->notes << QStringLiteral("The CD-TEXT cannot be used: %1").arg(text.error().localizedFailureReason());
}

void takeBlocks(const DiscImageSource &source, DescribedDisc *disc)
{
    const DiscImageSectors &sectors = source.sectors();
    DiscTrack track;
    track.blockSize = sectors.size;
    track.kind = sectors.kind == TrackKind::Unstated ? TrackKind::Mode1 : sectors.kind;
    track.length = source.sectorCount();
    disc->isDescribed = false;
    disc->disc.contents = TableOfContents::withTrack(track);
    disc->disc.places.push_back({{}, {{0, sectors.start, track.length}}, true});
    if (const std::uint64_t rest = (source.fileLength() - sectors.start) % sectors.size)
        disc->notes << QStringLiteral("The image ends with %1 that fill no sector of %2.")
                           .arg(counted(rest, "byte", "bytes"))
                           .arg(sectors.size);
}

} // namespace

Result<DescribedDisc> describedDisc(const QByteArray &path, const std::stop_token &stop)
{
    DescribedDisc disc;
    if (discDescriptionKind(path) != DiscDescriptionKind::None) {
        Result<CueSheet> sheet = discDescriptionOfFile(path, measureByDecoding(&disc.notes, stop));
        if (!sheet)
            return cannotRead(path, sheet.error());
        disc.description = path;
        disc.disc = *std::move(sheet);
        takeNotes(&disc);
        return disc;
    }
    Result<std::optional<DescribedDisc>> beside = describedByFileBeside(path, &disc.notes, stop);
    if (!beside)
        return cannotRead(path, beside.error());
    if (*beside) {
        (*beside)->notes = disc.notes + (*beside)->notes;
        return **std::move(beside);
    }
    const DiscImageSourceResult opened = DiscImageSource::sourceWithFile(stringWithFileSystemRepresentation(path));
    if (!opened.source)
        return cannotRead(path, opened.error);
    if (opened.source->vantError())
        return cannotRead(path, opened.source->vantError());
    disc.disc.files.push_back({path, path, CueFileType::Binary, path});
    if (opened.source->vantImage()) {
        takeVant(*opened.source->vantImage(), &disc);
        return disc;
    }
    if (opened.source->sectorCount() == 0)
        return discJobError(DiscJobErrorCode::Source,
                            QStringLiteral("%1 has no track: it is shorter than a sector").arg(quoted(path)), {}, path);
    takeBlocks(*opened.source, &disc);
    return disc;
}

} // namespace Tessaron
