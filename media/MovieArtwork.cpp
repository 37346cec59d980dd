#include "media/MovieArtwork.h"

#include <QBuffer>
#include <QImageReader>

namespace Tessaron
{

namespace
{

constexpr qsizetype searchedLength = 0x14000;
constexpr qsizetype longestPicture = 0x100000;
constexpr QSize sizeOfArtwork(80, 80);

/// A kind of picture and how it is found: a mark, which stands some bytes behind the begin.
struct PictureMark {
    QByteArrayView mark;
    qsizetype distance;
    const char *format;
};
constexpr PictureMark marks[] = {{"JFIF", 6, "jpeg"}, {"PNG", 1, "png"}};

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

QImage movieArtwork(const MediaFile &file)
{
    const QByteArray begin = file.bytesAt(0, searchedLength);
    for (const PictureMark &mark : marks) {
        const qsizetype at = begin.indexOf(mark.mark);
        if (at < 0)
            continue;
        // A mark without room for what comes before it belongs to no picture; the next kind is not looked for then.
        return at < mark.distance ? QImage() : pictureOf(file.bytesAt(at - mark.distance, longestPicture), mark.format);
    }
    return {};
}

} // namespace Tessaron
