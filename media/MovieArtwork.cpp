#include "media/MovieArtwork.h"

#include "platform/foundation/NSFileHandle.h"
#include <TessaronClasses/FileReadAdditions.h>

#include <QBuffer>
#include <QImageReader>

#include <sys/stat.h>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t searchedLength = 0x14000;
constexpr std::size_t longestPicture = 0x100000;
constexpr QSize sizeOfArtwork(80, 80);

/// A kind of picture and how it is found: a mark, which stands some bytes behind the begin.
struct PictureMark {
    QByteArrayView mark;
    std::uint64_t distance;
    const char *format;
};
constexpr PictureMark marks[] = {{"JFIF", 6, "jpeg"}, {"PNG", 1, "png"}};

bool isRegularFile(const NSFileHandle &file)
{
    struct stat status;
    return ::fstat(file.fileDescriptor(), &status) == 0 && S_ISREG(status.st_mode);
}

QImage pictureOf(const QByteArray &bytes, const char *format)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    // Which lets a JPEG be made that small from the start.
    reader.setScaledSize(sizeOfArtwork);
    const QImage picture = reader.read();
    return picture.isNull() ? picture : picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

QImage movieArtwork(const QString &path)
{
    const std::shared_ptr<NSFileHandle> file = NSFileHandle::fileHandleForReadingAtPath(path);
    if (!file || !isRegularFile(*file))
        return {};
    for (const PictureMark &mark : marks) {
        file->seekToFileOffset(0);
        const std::uint64_t at =
            offsetOfBytesWithBuffer(*file, mark.mark.data(), std::uint32_t(mark.mark.size()), searchedLength);
        if (at == 0)
            continue;
        // A mark without room for what comes before it belongs to no picture; the next kind is not looked for then.
        if (at < mark.distance)
            return {};
        file->seekToFileOffset(at - mark.distance);
        return pictureOf(file->readDataOfLength(longestPicture), mark.format);
    }
    return {};
}

} // namespace Tessaron
