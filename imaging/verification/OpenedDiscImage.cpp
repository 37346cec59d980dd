#include "imaging/ImageFinisher.h"
#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/DiscDescription.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <algorithm>
#include <optional>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

NSError cannotRead(const QByteArray &path, const QString &reason, const QString &suggestion = {})
{
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("the image %1 cannot be read: %2").arg(quoted(path), reason), suggestion, path);
}

/// Why a file of this kind cannot be an image; empty for one that can, or that is not there.
QString reasonOfKind(const QByteArray &path)
{
    struct stat status;
    if (::stat(path.constData(), &status) != 0 || S_ISREG(status.st_mode) || S_ISBLK(status.st_mode))
        return {};
    return S_ISDIR(status.st_mode) ? QStringLiteral("it is a folder")
                                   : QStringLiteral("it is neither a regular file nor a block device");
}

/// The word of a cue sheet for the track, or one like it where sheets have none.
QByteArray modeOf(const DiscTrack &track)
{
    QByteArray mode = cueModeOf(track);
    if (!mode.isEmpty())
        return mode;
    const QByteArray size = QByteArray::number(track.blockSize);
    if (track.kind == TrackKind::Unstated)
        return "BLOCKS/" + size;
    return (track.kind == TrackKind::Mode1 ? "MODE1/" : "MODE2/") + size;
}

DiscImageTrack trackOf(const DiscTrack &track, std::size_t session)
{
    DiscImageTrack result;
    result.session = std::uint32_t(session + 1);
    result.number = track.number;
    result.mode = modeOf(track);
    result.isData = !track.isAudio();
    result.blockSize = track.blockSize;
    result.length = track.length - (track.postgap.isStored ? 0 : track.postgap.length);
    result.pregap = std::uint32_t(track.pregap.length);
    result.isPregapInFile = track.pregap.length > 0 && track.pregap.isStored;
    result.postgap = std::uint32_t(track.postgap.length);
    return result;
}

DiscImageTrack trackOfSheet(const CueSheet &sheet, const DiscTrack &track, std::size_t session,
                            const CueTrackPlace &place, const QByteArray &imagePath)
{
    DiscImageTrack result = trackOf(track, session);
    if (place.data.empty())
        return result;
    const QByteArray &path = sheet.files[place.data.front().file].path;
    result.offset = place.data.front().offset;
    result.file = path == imagePath ? QByteArray() : path;
    return result;
}

/// The file of the sheet that holds filesystems, as far as the sheet can tell: that of its first track of data, else
/// that of its last track.
QByteArray fileWithData(const CueSheet &sheet)
{
    const std::vector<const DiscTrack *> tracks = sheet.contents.tracks();
    QByteArray path;
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const std::vector<CueRun> &runs = sheet.places[index].data;
        if (runs.empty())
            continue;
        path = sheet.files[runs.front().file].path;
        if (!tracks[index]->isAudio())
            break;
    }
    return path;
}

/// How the first track of data in the image's file holds its 2048 bytes; no value when it has none.
std::optional<DiscImageSectors> sectorsOfSheet(const CueSheet &sheet, const QByteArray &imagePath)
{
    const std::vector<const DiscTrack *> tracks = sheet.contents.tracks();
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const DiscTrack &track = *tracks[index];
        const std::vector<CueRun> &runs = sheet.places[index].data;
        if (track.isAudio() || runs.empty() || sheet.files[runs.front().file].path != imagePath)
            continue;
        const std::optional<SectorForm> form = track.sectorForm();
        const std::optional<SectorPart> part = form ? userDataPart(track.kind, *form) : std::nullopt;
        if (part)
            return DiscImageSectors{runs.front().offset, track.blockSize, std::uint32_t(part->offset), track.kind,
                                    runs.front().blocks};
    }
    return std::nullopt;
}

/// Takes path, tracks and notes from a sheet.
void useCueSheet(const CueSheet &sheet, const QByteArray &sheetPath, const QByteArray &imagePath,
                 OpenedDiscImage *image)
{
    image->path = imagePath;
    image->cueSheet = sheetPath;
    image->layout = DiscImageLayout::CueSheet;
    std::size_t index = 0;
    for (std::size_t session = 0; session < sheet.contents.sessions.size(); ++session) {
        for (const DiscTrack &track : sheet.contents.sessions[session].tracks) {
            const CueTrackPlace &place = sheet.places[index++];
            image->tracks.push_back(trackOfSheet(sheet, track, session, place, imagePath));
            if (!place.isLengthKnown)
                image->notes << QStringLiteral("The length of track %1 is not known: its file must be decoded first.")
                                    .arg(track.number);
        }
    }
    const QString name = nameOfDiscDescription(discDescriptionKind(sheetPath));
    for (const CueNote &note : sheet.notes)
        image->notes << (note.line > 0 ? QStringLiteral("Line %1 of the %2: %3").arg(note.line).arg(name, note.text)
                                       : note.text);
}

/// Looks whether the sheet beside an image describes it. A sheet that cannot be used is noted.
std::optional<DiscImageSectors> useSheetBeside(const QByteArray &imagePath, const QByteArray &sheetPath,
                                               OpenedDiscImage *image)
{
    struct stat status;
    if (::stat(sheetPath.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    const Result<CueSheet> sheet = discDescriptionOfFile(sheetPath);
    if (!sheet) {
        image->notes << QStringLiteral("The %1 beside the image is not used. %2")
                            .arg(nameOfDiscDescription(discDescriptionKind(sheetPath)),
                                 sheet.error().localizedFailureReason());
        return std::nullopt;
    }
    const auto isImage = [&](const CueFile &file) { return file.path == imagePath; };
    if (std::none_of(sheet->files.begin(), sheet->files.end(), isImage))
        return std::nullopt;
    useCueSheet(*sheet, sheetPath, imagePath, image);
    return sectorsOfSheet(*sheet, imagePath);
}

std::vector<DiscImageTrack> tracksOfVant(const VANTImage &image)
{
    const TableOfContents contents = tableOfContentsOfVANT(image);
    std::vector<DiscImageTrack> tracks;
    for (std::size_t session = 0; session < contents.sessions.size(); ++session) {
        for (std::size_t index = 0; index < contents.sessions[session].tracks.size(); ++index) {
            tracks.push_back(trackOf(contents.sessions[session].tracks[index], session));
            tracks.back().offset = image.sessions[session].tracks[index].startOffset;
        }
    }
    return tracks;
}

/// Notes the tracks of data that were not looked at: filesystems are looked for in the first one only.
void noteTracksNotLookedAt(OpenedDiscImage *image)
{
    const auto isData = [](const DiscImageTrack &track) { return track.isData; };
    auto track = std::find_if(image->tracks.begin(), image->tracks.end(), isData);
    while (track != image->tracks.end()) {
        track = std::find_if(track + 1, image->tracks.end(), isData);
        if (track != image->tracks.end())
            image->notes << QStringLiteral("Track %1 was not looked at: filesystems are looked for in the first track "
                                           "of data alone.")
                                .arg(track->number);
    }
}

} // namespace

Result<OpenedDiscImage> openDiscImage(const QByteArray &path)
{
    OpenedDiscImage image;
    image.path = path;
    std::optional<DiscImageSectors> sectors;
    if (const QString reason = reasonOfKind(path); !reason.isEmpty())
        return cannotRead(path, reason);
    if (discDescriptionKind(path) != DiscDescriptionKind::None) {
        const Result<CueSheet> sheet = discDescriptionOfFile(path);
        if (!sheet)
            return cannotRead(path, sheet.error().localizedFailureReason(),
                              sheet.error().localizedRecoverySuggestion());
        useCueSheet(*sheet, path, fileWithData(*sheet), &image);
        sectors = sectorsOfSheet(*sheet, image.path);
    } else if (path.toLower().endsWith(".bin")) {
        sectors = useSheetBeside(path, pathOfCueSheet(path), &image);
    } else if (path.toLower().endsWith(".img")) {
        sectors = useSheetBeside(path, path.chopped(4) + ".ccd", &image);
    }
    const QString text = stringWithFileSystemRepresentation(image.path);
    DiscImageSourceResult opened =
        sectors ? DiscImageSource::sourceWithFile(text, *sectors) : DiscImageSource::sourceWithFile(text);
    if (!opened.source)
        return cannotRead(image.path, opened.error.localizedFailureReason());
    image.source = opened.source;
    if (opened.source->vantImage()) {
        image.layout = DiscImageLayout::VANT;
        image.tracks = tracksOfVant(*opened.source->vantImage());
    } else if (image.cueSheet.isEmpty() && opened.source->sectors().size != 2048) {
        image.layout = DiscImageLayout::RawSectors;
    }
    noteTracksNotLookedAt(&image);
    image.volumes = volumesInImage(image.source);
    return image;
}

} // namespace Tessaron
