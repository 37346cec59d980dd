#include "tests/tools/HostileTree.h"
#include "tests/tools/ImageFixture.h"
#include <TessaronClasses/ImageVerification.h>

#include <QFile>
#include <QJsonArray>

#include <map>

namespace Tessaron::Testing
{

namespace
{

/// Images of random trees against the trees that they were made of. The suite takes a hundred; for more:
///
///     TESSARON_RANDOM_TREES=10000 TESSARON_FIRST_TREE=1 build/release/bin/command_tests
///     --gtest_filter='HostileTrees.*'
class HostileTrees : public ImageTest
{
protected:
    static std::uint64_t numberFromEnvironment(const char *name, std::uint64_t otherwise)
    {
        bool isNumber = false;
        const qulonglong number = qgetenv(name).toULongLong(&isNumber);
        return isNumber ? number : otherwise;
    }

    /// Makes the image and says how many objects each tree refused.
    std::map<QString, std::uint64_t> makeImage(const QList<QByteArray> &filesystems, bool isRelocated)
    {
        QList<QByteArray> options = {"--json", "--filesystems", filesystems.join(',')};
        if (isRelocated)
            options.append("--relocate");
        const ChildResult result = runTessaron(imageArguments(options));
        EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 3) << result.errors.constData();
        std::map<QString, std::uint64_t> refused;
        const QJsonObject report = jsonOf(result.output);
        for (const QJsonValue item : report[QStringLiteral("refused")].toArray())
            ++refused[item[QStringLiteral("filesystem")].toString()];
        return refused;
    }

    [[nodiscard]] VerificationResult verified() const
    {
        VerificationRequest request;
        request.image = DiscImageSource::sourceWithFile(QString::fromUtf8(image())).source;
        request.volumes = volumesInImage(request.image);
        DiscSource source;
        source.path = m_tree.path("source");
        source.isFolder = true;
        request.sources = {source};
        return verifyImage(request, {}, [](const DiscJobProgress &) {});
    }

    static QString keyOf(VolumeKind kind)
    {
        switch (kind) {
        case VolumeKind::ISO9660:
            return QStringLiteral("iso9660");
        case VolumeKind::RockRidge:
            return QStringLiteral("rockridge");
        case VolumeKind::Joliet:
            return QStringLiteral("joliet");
        case VolumeKind::UDF:
            return QStringLiteral("udf");
        case VolumeKind::HFSPlus:
            break;
        }
        return QStringLiteral("hfs+");
    }
};

TEST_F(HostileTrees, image_isAsItsSources_whateverTheyAre)
{
    const std::uint64_t first = numberFromEnvironment("TESSARON_FIRST_TREE", 1);
    const std::uint64_t count = numberFromEnvironment("TESSARON_RANDOM_TREES", 100);
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        const int mask = 1 + int((seed * 7) % 15);
        SCOPED_TRACE(testing::Message() << "tree " << seed << ", filesystems " << mask);
        emptyFolder(m_tree.path("source"));
        HostileTree(seed).fill(m_tree.path("source"));
        std::map<QString, std::uint64_t> refused = makeImage(filesystemsOfMask(mask), seed % 2 == 0);
        const VerificationResult result = verified();
        EXPECT_EQ(result.volumes.size(), std::size_t(filesystemsOfMask(mask).size() + (mask & 1)));
        for (const ImageDifference &difference : result.differences.items())
            ADD_FAILURE() << "in " << int(difference.volumes) << ": "
                          << difference.path.toPercentEncoding("/").constData() << ": "
                          << difference.message.toUtf8().constData();
        // What a filesystem cannot hold was said, both times.
        for (const VolumeVerification &volume : result.volumes) {
            if (volume.kind == VolumeKind::ISO9660) // it has empty files for links
                continue;
            const std::uint64_t own = refused[keyOf(volume.kind)];
            EXPECT_EQ(volume.leftOut, own) << int(volume.kind);
        }
        if (HasFailure() && count > 1000 && seed > first + 100)
            break;
    }
}

} // namespace

} // namespace Tessaron::Testing
