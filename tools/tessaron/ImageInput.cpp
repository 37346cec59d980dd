#include "tools/tessaron/ImageInput.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CueSheet.h"
#include "tools/tessaron/Text.h"
#include <TessaronClasses/DiscFormat.h>

#include <QFile>

#include <algorithm>
#include <optional>

namespace Tessaron::Tool
{

namespace
{

constexpr qint64 maximumCueSheet = 1 << 20; // 99 tracks with 99 index points each take a fifth

QByteArray folderOf(const QByteArray &path)
{
    return path.left(path.lastIndexOf('/') + 1);
}

Problem cannotRead(const QByteArray &path, const QString &reason)
{
    return {
        Problem::Kind::Source, QStringLiteral("the image %1 cannot be read: %2").arg(quoted(path), reason), {}, path};
}

/// The text of the sheet; absent when there is none that can be read.
std::optional<QByteArray> readCueSheet(const QByteArray &path)
{
    QFile file(stringWithFileSystemRepresentation(path));
    if (!QFile::exists(file.fileName()) || !file.open(QIODevice::ReadOnly) || file.isSequential())
        return std::nullopt;
    return file.read(maximumCueSheet);
}

std::uint64_t sizeOfFile(const QByteArray &path)
{
    return std::uint64_t(std::max<qint64>(QFile(stringWithFileSystemRepresentation(path)).size(), 0));
}

/// The tracks that lie in one file, in order; positions are counted with the block size of what lies in between.
std::vector<ImageTrack> tracksInFile(const std::vector<CueTrack> &cueTracks, const QByteArray &name,
                                     std::uint64_t fileSize)
{
    std::vector<ImageTrack> tracks;
    std::uint64_t offset = 0;
    std::int64_t frame = 0;
    for (std::size_t index = 0; index < cueTracks.size(); ++index) {
        const CueTrack &cueTrack = cueTracks[index];
        if (cueTrack.fileName != name || cueTrack.blockSize == 0 || cueTrack.startFrame < frame)
            continue;
        const std::uint32_t blockSize = tracks.empty() ? cueTrack.blockSize : tracks.back().blockSize;
        const std::int64_t first = std::max(cueTrack.firstFrame, frame);
        offset += std::uint64_t(first - frame) * blockSize;
        if (!tracks.empty())
            tracks.back().length = (offset - std::min(offset, tracks.back().offset)) / blockSize;
        offset += std::uint64_t(cueTrack.startFrame - first) * cueTrack.blockSize;
        frame = cueTrack.startFrame;
        ImageTrack track;
        track.number = cueTrack.number;
        track.mode = cueTrack.mode;
        track.isData = cueTrack.isData;
        track.blockSize = cueTrack.blockSize;
        track.offset = offset;
        track.pregap = cueTrack.pregap;
        tracks.push_back(track);
    }
    if (!tracks.empty())
        tracks.back().length = (fileSize - std::min(fileSize, tracks.back().offset)) / tracks.back().blockSize;
    return tracks;
}

/// Takes tracks and file from a sheet; false when it names no file with a track.
bool useCueSheet(const QByteArray &sheetPath, const QByteArray &wantedName, ImageInput *input,
                 std::optional<DiscImageSectors> *sectors)
{
    const std::optional<QByteArray> text = readCueSheet(sheetPath);
    if (!text)
        return false;
    const std::vector<CueTrack> cueTracks = tracksOfCueSheet(*text);
    const auto named = std::find_if(cueTracks.begin(), cueTracks.end(), [&](const CueTrack &track) {
        return wantedName.isEmpty() ? track.isData || &track == &cueTracks.back() : track.fileName == wantedName;
    });
    if (named == cueTracks.end() || named->fileName.isEmpty())
        return false;
    input->path = named->fileName.startsWith('/') ? named->fileName : folderOf(sheetPath) + named->fileName;
    input->cueSheet = sheetPath;
    input->format = "bin";
    input->tracks = tracksInFile(cueTracks, named->fileName, sizeOfFile(input->path));
    for (const ImageTrack &track : input->tracks) {
        if (!track.isData)
            continue;
        const auto cueTrack = std::find_if(cueTracks.begin(), cueTracks.end(),
                                           [&](const CueTrack &other) { return other.number == track.number; });
        *sectors = DiscImageSectors{track.offset, track.blockSize, cueTrack->dataOffset};
        break;
    }
    return true;
}

QByteArray modeOfVantTrack(const VANTTrack &track)
{
    constexpr std::int32_t audio = 0;
    constexpr std::int32_t mode1 = 8;
    if (!track.blockType)
        return "BLOCKS/" + QByteArray::number(track.blockSize);
    if (*track.blockType == audio)
        return "AUDIO";
    return (*track.blockType == mode1 ? "MODE1/" : "MODE2/") + QByteArray::number(track.blockSize);
}

std::vector<ImageTrack> tracksOfVant(const VANTImage &image)
{
    std::vector<ImageTrack> tracks;
    for (std::size_t session = 0; session < image.sessions.size(); ++session) {
        for (const VANTTrack &track : image.sessions[session].tracks) {
            const bool isData = track.blockType.value_or(8) != 0;
            tracks.push_back({std::uint32_t(session + 1), track.number, modeOfVantTrack(track), isData, track.blockSize,
                              track.startOffset, track.length, track.pregap, track.postgap});
        }
    }
    return tracks;
}

} // namespace

Problem openImage(const QByteArray &argument, ImageInput *input)
{
    input->path = argument;
    std::optional<DiscImageSectors> sectors;
    if (argument.toLower().endsWith(".cue")) {
        if (!useCueSheet(argument, {}, input, &sectors))
            return cannotRead(argument, QStringLiteral("it is no cue sheet that names a file with tracks"));
    } else if (argument.toLower().endsWith(".bin")) {
        (void)useCueSheet(folderOf(argument) + cueSheetNameForImage(lastComponent(argument)), lastComponent(argument),
                          input, &sectors);
    }
    const QString path = stringWithFileSystemRepresentation(input->path);
    DiscImageSourceResult opened =
        sectors ? DiscImageSource::sourceWithFile(path, *sectors) : DiscImageSource::sourceWithFile(path);
    if (!opened.source)
        return cannotRead(input->path, opened.error.localizedFailureReason());
    input->source = opened.source;
    if (opened.source->vantImage()) {
        input->format = "vant";
        input->tracks = tracksOfVant(*opened.source->vantImage());
    } else if (input->cueSheet.isEmpty() && opened.source->sectors().size != 2048) {
        input->format = "raw";
    }
    input->volumes = volumesInImage(input->source);
    return {};
}

} // namespace Tessaron::Tool
