#include "tests/tools/VerifyFixture.h"

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/volume/VolumeWalk.h"

#include <QJsonArray>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

void VerifyFixture::makeImage(const QList<QByteArray> &options)
{
    const ChildResult result = runTessaron(imageArguments(QList<QByteArray>({"-q", "--no-sync"}) + options));
    ASSERT_TRUE(result.exitStatus == 0 || result.exitStatus == 3) << result.errors.constData();
}

QJsonObject VerifyFixture::verified(int expectedStatus) const
{
    const ChildResult result = runTessaron({"verify", "--json", image(), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, expectedStatus) << result.output.constData() << result.errors.constData();
    return jsonOf(result.output);
}

VerifyFixture::Words VerifyFixture::differencesIn(const QJsonObject &report)
{
    Words words;
    for (const QJsonValue item : report[QStringLiteral("differences")].toArray())
        words.insert(
            (item[QStringLiteral("kind")].toString() + u' ' + item[QStringLiteral("path")].toString()).toStdString());
    return words;
}

VerifyFixture::Words VerifyFixture::filesystemsIn(const QJsonObject &report)
{
    Words words;
    for (const QJsonValue item : report[QStringLiteral("differences")].toArray()) {
        for (const QJsonValue name : item[QStringLiteral("filesystems")].toArray())
            words.insert(name.toString().toStdString());
    }
    return words;
}

VolumeObject VerifyFixture::objectIn(VolumeKind kind, const QByteArray &path) const
{
    const auto source = DiscImageSource::sourceWithFile(QString::fromUtf8(image())).source;
    VolumeObject found;
    for (const FoundVolume &volume : volumesInImage(source)) {
        if (volume.kind != kind || !volume.reader)
            continue;
        VolumeWalker walker;
        walker.object = [&](const QByteArray &folder, const VolumeObject &object) {
            if ((folder.isEmpty() ? object.name : folder + '/' + object.name) == path)
                found = object;
            return true;
        };
        walkVolume(*volume.reader, walker);
    }
    EXPECT_EQ(found.name, path.mid(path.lastIndexOf('/') + 1));
    return found;
}

void VerifyFixture::flip(off_t offset, unsigned int bits) const
{
    const int file = ::open(image().constData(), O_RDWR | O_CLOEXEC);
    unsigned char byte = 0;
    ASSERT_EQ(::pread(file, &byte, 1, offset), 1);
    byte = static_cast<unsigned char>(byte ^ bits);
    ASSERT_EQ(::pwrite(file, &byte, 1, offset), 1);
    ::close(file);
}

off_t VerifyFixture::imageLength() const
{
    return static_cast<off_t>(std::filesystem::file_size(image().toStdString()));
}

void VerifyFixture::keepTimes(const QByteArray &path, const std::function<void()> &change)
{
    struct stat status;
    ASSERT_EQ(::stat(path.constData(), &status), 0);
    change();
    const timespec times[2] = {status.st_atim, status.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
}

} // namespace Tessaron::Testing
