#include "ui/views/Thumbnail.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QCoreApplication>
#include <QFile>
#include <QImageReader>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

QString text(const char *sentence)
{
    return QCoreApplication::translate("Thumbnail", sentence);
}

} // namespace

Thumbnail thumbnailOfFile(const QString &path, QSize pixels)
{
    const UniqueDescriptor descriptor(
        ::open(fileSystemRepresentation(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor)
        return {{}, text("The picture cannot be opened: %1.").arg(qt_error_string(errno))};
    struct stat facts = {};
    if (::fstat(descriptor.get(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return {{}, text("This is not a file with a picture.")};
    QFile file;
    if (!file.open(descriptor.get(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
        return {{}, text("The picture cannot be read: %1.").arg(file.errorString())};
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    // The sizes below are those before the picture is turned upright.
    const QSize size = reader.size();
    const bool isOnItsSide = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize room = isOnItsSide ? pixels.transposed() : pixels;
    if (size.isValid() && (size.width() > room.width() || size.height() > room.height()))
        reader.setScaledSize(size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1}));
    QImage image = reader.read();
    if (image.isNull())
        return {{}, text("The picture cannot be read: %1.").arg(reader.errorString())};
    if (image.width() > pixels.width() || image.height() > pixels.height())
        image = image.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return {image, {}};
}

} // namespace Tessaron
