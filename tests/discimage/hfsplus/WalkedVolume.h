#pragma once

#include "platform/discimage/hfsplus/HfsPlusVolumeReader.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeWalk.h"

#include <QMap>
#include <QStringList>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

/// All that a reader tells of a volume.
struct WalkedVolume {
    explicit WalkedVolume(const std::shared_ptr<const DiscImageSource> &source)
        : opened(HfsPlusVolumeReader::open(source))
    {
        if (!opened.reader)
            return;
        VolumeWalker walker;
        walker.object = [this](const QByteArray &folder, const VolumeObject &object) {
            objects.insert(folder.isEmpty() ? object.name : folder + '/' + object.name, object);
            return true;
        };
        walker.failed = [this](const QByteArray &path, const NSError &error) {
            errors.append(QString::fromUtf8(path) + QStringLiteral(": ") + error.localizedFailureReason());
            return true;
        };
        walkVolume(*opened.reader, walker);
    }
    explicit WalkedVolume(const QByteArray &image)
        : WalkedVolume(DiscImageSource::sourceWithBytes(image))
    {
    }

    [[nodiscard]] QByteArray contents(const QByteArray &path) const
    {
        EXPECT_TRUE(objects.contains(path)) << path.toStdString();
        const VolumeObject object = objects.value(path);
        QByteArray bytes(qsizetype(object.size), '\0');
        std::size_t bytesRead = 0;
        EXPECT_FALSE(opened.reader->read(object, 0, bytes.data(), std::size_t(bytes.size()), &bytesRead));
        EXPECT_EQ(bytesRead, object.size);
        return bytes;
    }

    /// Everything in one text, to compare volumes.
    [[nodiscard]] QStringList text() const
    {
        QStringList lines = errors;
        for (auto object = objects.constBegin(); object != objects.constEnd(); ++object) {
            QString line = QStringLiteral("%1 %2 %3 %4 %5 %6 %7")
                               .arg(QString::fromUtf8(object.key().toHex()))
                               .arg(int(object->kind))
                               .arg(object->size)
                               .arg(object->modified->seconds)
                               .arg(object->mode.value_or(0))
                               .arg(object->identity)
                               .arg(QString::fromUtf8(object->linkTarget));
            for (const VolumeExtent &extent : object->extents)
                line += QStringLiteral(" %1+%2").arg(extent.offset).arg(extent.length);
            lines.append(line);
        }
        return lines;
    }

    VolumeReaderResult opened;
    QMap<QByteArray, VolumeObject> objects; ///< by path
    QStringList errors; ///< path and reason
};

} // namespace Tessaron::Testing
