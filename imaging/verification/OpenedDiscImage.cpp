#include "imaging/verification/CueSheet.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr qint64 maximumCueSheet = 1 << 20; // 99 tracks with 99 index points each take a fifth

QByteArray folderOf(const QByteArray &path)
{
    return path.left(path.lastIndexOf('/') + 1);
}

NSError cannotRead(const QByteArray &path, const QString &reason)
{
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("the image %1 cannot be read: %2").arg(quoted(path), reason), {}, path);
}

/// The name that the cue sheet of an image has: "disc.cue" beside "disc.bin".
QByteArray cueSheetBeside(const QByteArray &path)
{
    return path.left(path.lastIndexOf('.')) + ".cue";
}

/// The text of the sheet; absent when there is none that can be read.
std::optional<QByteArray> readCueSheet(const QByteArray &path)
{
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const UniqueDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    QByteArray text(qsizetype(std::min<off_t>(status.st_size, maximumCueSheet)), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < text.size()) {
        const ssize_t got = ::pread(file.get(), text.data() + done, std::size_t(text.size() - done), done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    text.truncate(done);
    return text;
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

std::uint64_t sizeOfFile(const QByteArray &path)
{
    struct stat status;
    return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode) ? std::uint64_t(status.st_size) : 0;
}

/// The tracks that lie in one file, in order; positions are counted with the block size of what lies in between.
std::vector<DiscImageTrack> tracksInFile(const std::vector<CueTrack> &cueTracks, const QByteArray &name,
                                         std::uint64_t fileSize)
{
    std::vector<DiscImageTrack> tracks;
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
        DiscImageTrack track;
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
bool useCueSheet(const QByteArray &sheetPath, const QByteArray &wantedName, OpenedDiscImage *input,
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
    input->layout = DiscImageLayout::CueSheet;
    input->tracks = tracksInFile(cueTracks, named->fileName, sizeOfFile(input->path));
    for (const DiscImageTrack &track : input->tracks) {
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

std::vector<DiscImageTrack> tracksOfVant(const VANTImage &image)
{
    std::vector<DiscImageTrack> tracks;
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

Result<OpenedDiscImage> openDiscImage(const QByteArray &path)
{
    OpenedDiscImage image;
    image.path = path;
    std::optional<DiscImageSectors> sectors;
    if (const QString reason = reasonOfKind(path); !reason.isEmpty())
        return cannotRead(path, reason);
    if (path.toLower().endsWith(".cue")) {
        if (!useCueSheet(path, {}, &image, &sectors))
            return cannotRead(path, QStringLiteral("it is not a cue sheet that names a file with tracks"));
    } else if (path.toLower().endsWith(".bin")) {
        (void)useCueSheet(cueSheetBeside(path), lastComponent(path), &image, &sectors);
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
    image.volumes = volumesInImage(image.source);
    return image;
}

} // namespace Tessaron
