#include "imaging/ImageAdditions.h"

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/CueSheets.h>
#include <TessaronClasses/VANTHeader.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

bool writeAll(int descriptor, const QByteArray &bytes)
{
    return writeFully(descriptor, bytes.constData(), std::size_t(bytes.size())) == 0;
}

QByteArray headerForImageOfSize(std::uint64_t bytes, const std::shared_ptr<DRTrackProducer> &producer)
{
    constexpr std::uint32_t blockSize = 2048;
    const std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(producer);
    track->setProperties({{DRBlockSizeKey, blockSize},
                          {DRTrackLengthKey, quint64(bytes / blockSize)},
                          {DRTrackModeKey, 4},
                          {DRDataFormKey, 16},
                          {DRBlockTypeKey, 8},
                          {DRSessionFormatKey, 0}});
    return VANTHeaderForDRLayout(track);
}

} // namespace

QByteArray pathOfCueSheet(const QByteArray &imagePath)
{
    const qsizetype nameStart = imagePath.lastIndexOf('/') + 1;
    const qsizetype dot = imagePath.lastIndexOf('.');
    // A dot that begins the name hides the file; it begins no extension.
    const QByteArray base = dot > nameStart ? imagePath.first(dot) : imagePath;
    const QByteArray path = base + ".cue";
    // An image that is called "cue" itself must not be overwritten by its sheet.
    return path == imagePath ? path + ".cue" : path;
}

bool writeCueSheet(const QByteArray &imagePath)
{
    // ASCII, except that the image's name stands there as it is.
    const QString path = stringWithFileSystemRepresentation(imagePath);
    const QByteArray sheet = fileSystemRepresentation(standardCueSheetForFile(path));
    const QByteArray sheetPath = pathOfCueSheet(imagePath);
    UniqueDescriptor file(::open(sheetPath.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!file)
        return false;
    const bool isWritten = writeAll(file.get(), sheet);
    if (file.closeAndReport() && isWritten)
        return true;
    ::unlink(sheetPath.constData());
    return false;
}

bool appendVANTHeader(const QByteArray &imagePath, const std::shared_ptr<DRTrackProducer> &producer)
{
    UniqueDescriptor file(::open(imagePath.constData(), O_WRONLY | O_APPEND | O_CLOEXEC));
    struct stat status;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const QByteArray header = headerForImageOfSize(std::uint64_t(status.st_size), producer);
    const bool isWritten = !header.isEmpty() && writeAll(file.get(), header);
    // Half a header helps nobody; without one the file still is an image of plain blocks.
    if (!isWritten && ::ftruncate(file.get(), status.st_size) != 0)
        return false;
    return file.closeAndReport() && isWritten;
}

} // namespace Tessaron
