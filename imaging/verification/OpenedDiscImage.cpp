#include "imaging/ImageFinisher.h"
#include "platform/discimage/FirstBlock.h"
#include "platform/disctracks/CueModes.h"
#include "platform/disctracks/DiscDescription.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
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

NSError cannotRead(const QByteArray &path, const NSError &error)
{
    return cannotRead(path, error.localizedFailureReason(), error.localizedRecoverySuggestion());
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

/// A track of data, and how its file holds its 2048 bytes.
struct DataTrack {
    std::uint32_t number = 0;
    QByteArray path;
    DiscImageSectors sectors;
};

/// The tracks of data of a sheet whose form holds filesystems.
std::vector<DataTrack> dataTracksOfSheet(const CueSheet &sheet)
{
    std::vector<DataTrack> result;
    const std::vector<const DiscTrack *> tracks = sheet.contents.tracks();
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const DiscTrack &track = *tracks[index];
        const std::vector<CueRun> &runs = sheet.places[index].data;
        if (track.isAudio() || runs.empty())
            continue;
        const std::optional<SectorForm> form = track.sectorForm();
        const std::optional<SectorPart> part = form ? userDataPart(track.kind, *form) : std::nullopt;
        if (part)
            result.push_back(
                {track.number, sheet.files[runs.front().file].path,
                 DiscImageSectors{runs.front().offset, track.blockSize, std::uint32_t(part->offset), track.kind,
                                  runs.front().blocks, firstBlockForSectors(sheet.contents, track)}});
    }
    return result;
}

/// Those of a trailer, in the image's own file.
std::vector<DataTrack> dataTracksOfVant(const VANTImage &image, const QByteArray &path)
{
    std::vector<DataTrack> result;
    for (const DescribedDataTrack &track : describedDataTracks(image))
        result.push_back({track.number, path, track.sectors});
    return result;
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

/// Where a sheet that describes the image would be; empty for an image that has none by its name.
QByteArray pathOfSheetBeside(const QByteArray &imagePath)
{
    const QByteArray end = imagePath.right(4).toLower();
    if (end == ".bin")
        return pathOfCueSheet(imagePath);
    return end == ".img" ? imagePath.chopped(4) + ".ccd" : QByteArray();
}

/// Looks whether the sheet beside an image describes it. A sheet that cannot be used is noted.
Result<std::vector<DataTrack>> useSheetBeside(const QByteArray &imagePath, const QByteArray &sheetPath,
                                              OpenedDiscImage *image)
{
    using Tracks = std::vector<DataTrack>;
    struct stat status;
    if (::stat(sheetPath.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return Tracks();
    const Result<CueSheet> sheet = discDescriptionOfFile(sheetPath);
    if (!sheet && isLackOfDescriptors(sheet.error()))
        return sheet.error();
    if (!sheet) {
        image->notes << QStringLiteral("The %1 beside the image is not used. %2")
                            .arg(nameOfDiscDescription(discDescriptionKind(sheetPath)),
                                 sheet.error().localizedFailureReason());
        return Tracks();
    }
    const auto isImage = [&](const CueFile &file) { return file.path == imagePath; };
    if (std::none_of(sheet->files.begin(), sheet->files.end(), isImage))
        return Tracks();
    useCueSheet(*sheet, sheetPath, imagePath, image);
    return dataTracksOfSheet(*sheet);
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

/// Opens the file with the sectors given, or with those that are recognised, and looks at which block of the disc the
/// filesystems in it begin.
DiscImageSourceResult openSource(const QByteArray &path, const std::optional<DiscImageSectors> &sectors)
{
    const QString text = stringWithFileSystemRepresentation(path);
    DiscImageSourceResult opened =
        sectors ? DiscImageSource::sourceWithFile(text, *sectors) : DiscImageSource::sourceWithFile(text);
    if (!opened.source)
        return opened;
    DiscImageSectors found = opened.source->sectors();
    found.firstBlock = firstBlockOfImage(*opened.source);
    return found == opened.source->sectors() ? opened : DiscImageSource::sourceWithFile(text, found);
}

/// The tracks of data behind the first one. One that cannot be opened is told with the image, unless that says nothing
/// about the image.
NSError addTracks(const std::vector<DataTrack> &tracks, OpenedDiscImage *image)
{
    for (const DataTrack &track : tracks) {
        if (track.path == image->path && track.sectors.start == image->source->sectors().start)
            continue;
        DiscImagePart part;
        part.name = QStringLiteral("track %1").arg(track.number);
        part.track = track.number;
        DiscImageSourceResult opened = openSource(track.path, track.sectors);
        part.source = std::move(opened.source);
        part.error = opened.error;
        if (isLackOfDescriptors(part.error))
            return part.error;
        if (part.source)
            part.volumes = volumesInImage(part.source);
        image->parts.push_back(std::move(part));
    }
    return {};
}

/// Filesystems that the image has at this very place are its own.
bool isKnown(const OpenedDiscImage &image, const DiscImagePartition &partition, const FoundVolume &volume)
{
    return std::any_of(image.volumes.begin(), image.volumes.end(), [&](const FoundVolume &own) {
        if (own.kind != volume.kind || volume.kind != VolumeKind::HFSPlus)
            return false; // others lie at the image's begin, where no such partition begins
        return !own.reader || !volume.reader
            || own.reader->facts().offset == partition.offset + volume.reader->facts().offset;
    });
}

void addPartitions(OpenedDiscImage *image)
{
    const std::vector<DiscImagePartition> &partitions = image->source->partitions();
    std::set<std::uint64_t> offsets{0};
    std::map<PartitionScheme, int> numbers;
    for (std::size_t index = 0; index < partitions.size(); ++index) {
        const DiscImagePartition &partition = partitions[index];
        const int number = ++numbers[partition.scheme];
        // Hybrid images have the same partitions in several maps.
        if (partition.length == 0 || partition.offset >= image->source->length()
            || !offsets.insert(partition.offset).second)
            continue;
        DiscImagePart part;
        part.name = QStringLiteral("partition %1 of the %2").arg(number).arg(partitionSchemeName(partition.scheme));
        part.partition = index;
        part.source = DiscImageSource::sourceWithPartition(image->source, partition.offset, partition.length);
        part.volumes = volumesInImage(part.source);
        std::erase_if(part.volumes, [&](const FoundVolume &volume) { return isKnown(*image, partition, volume); });
        if (!part.volumes.empty())
            image->parts.push_back(std::move(part));
    }
}

} // namespace

Result<OpenedDiscImage> openDiscImage(const QByteArray &path)
{
    OpenedDiscImage image;
    image.path = path;
    std::vector<DataTrack> tracks;
    if (const QString reason = reasonOfKind(path); !reason.isEmpty())
        return cannotRead(path, reason);
    if (discDescriptionKind(path) != DiscDescriptionKind::None) {
        const Result<CueSheet> sheet = discDescriptionOfFile(path);
        if (!sheet)
            return cannotRead(path, sheet.error());
        useCueSheet(*sheet, path, fileWithData(*sheet), &image);
        tracks = dataTracksOfSheet(*sheet);
    } else if (const QByteArray sheetPath = pathOfSheetBeside(path); !sheetPath.isEmpty()) {
        Result<std::vector<DataTrack>> described = useSheetBeside(path, sheetPath, &image);
        if (!described)
            return cannotRead(path, described.error());
        tracks = *std::move(described);
    }
    const auto own = std::find_if(tracks.begin(), tracks.end(),
                                  [&image](const DataTrack &track) { return track.path == image.path; });
    DiscImageSourceResult opened =
        openSource(image.path, own != tracks.end() ? std::optional(own->sectors) : std::nullopt);
    if (!opened.source)
        return cannotRead(image.path, opened.error);
    image.source = opened.source;
    if (opened.source->vantImage()) {
        image.layout = DiscImageLayout::VANT;
        image.tracks = tracksOfVant(*opened.source->vantImage());
        if (tracks.empty())
            tracks = dataTracksOfVant(*opened.source->vantImage(), image.path);
    } else if (image.cueSheet.isEmpty() && opened.source->sectors().size != 2048) {
        image.layout = DiscImageLayout::RawSectors;
    }
    image.volumes = volumesInImage(image.source);
    if (const NSError error = addTracks(tracks, &image))
        return cannotRead(image.path, error);
    addPartitions(&image);
    return image;
}

} // namespace Tessaron
