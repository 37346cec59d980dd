#include "fuzz/DiscImagePromises.h"

#include "platform/discimage/source/DiscImageErrors.h"

#include <QFile>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

/// An image of the corpus; what is in it is told in fuzz/make-discimage-seed.
QByteArray seedImage(const std::string &name)
{
    QFile file(QString::fromStdString(DISCIMAGE_SEEDS "/" + name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    const QByteArray bytes = file.readAll();
    return expandedImage(reinterpret_cast<const std::uint8_t *>(bytes.constData()), std::size_t(bytes.size()));
}

struct Walked {
    std::vector<std::string> paths;
    std::vector<NSError> errors;

    [[nodiscard]] bool has(DiscImageErrorCode code) const
    {
        return std::any_of(errors.begin(), errors.end(), [code](const NSError &error) {
            return error.domain() == DiscImageErrorDomain && error.code() == qint64(code)
                && error.userInfo().contains(DiscImageErrorOffsetKey);
        });
    }
};

Walked walked(const QByteArray &image, VolumeKind kind)
{
    Walked result;
    for (const FoundVolume &volume : volumesInImage(DiscImageSource::sourceWithBytes(image))) {
        if (volume.kind != kind)
            continue;
        if (volume.error)
            result.errors.push_back(volume.error);
        VolumeWalker walker;
        walker.object = [&](const QByteArray &folder, const VolumeObject &object) {
            result.paths.push_back((folder + '/' + object.name).toStdString());
            return true;
        };
        walker.failed = [&](const QByteArray &, const NSError &error) {
            result.errors.push_back(error);
            return true;
        };
        if (volume.reader)
            walkVolume(*volume.reader, walker);
    }
    return result;
}

VolumeObject objectAt(const QByteArray &image, VolumeKind kind, const QByteArray &name)
{
    VolumeObject found;
    for (const FoundVolume &volume : volumesInImage(DiscImageSource::sourceWithBytes(image))) {
        VolumeWalker walker;
        walker.object = [&](const QByteArray &, const VolumeObject &object) {
            if (object.name == name)
                found = object;
            return true;
        };
        if (volume.kind == kind && volume.reader)
            walkVolume(*volume.reader, walker);
    }
    EXPECT_EQ(found.name, name);
    return found;
}

void putBothEndian(QByteArray *image, std::uint64_t offset, std::uint32_t value)
{
    auto *const at = reinterpret_cast<std::uint8_t *>(image->data()) + offset;
    storeLittleEndian<std::uint32_t>(at, value);
    storeBigEndian<std::uint32_t>(at + 4, value);
}

TEST(HostileImages, seeds_areReadWhole)
{
    for (const char *const name : {"all", "genisoimage"}) {
        const QByteArray image = seedImage(name);
        EXPECT_EQ(brokenDiscImagePromise(image), nullptr);
        for (const VolumeKind kind : {VolumeKind::RockRidge, VolumeKind::UDF}) {
            const Walked volume = walked(image, kind);
            EXPECT_TRUE(volume.errors.empty()) << name;
            EXPECT_NE(std::find(volume.paths.begin(), volume.paths.end(), "folder/Grüße"), volume.paths.end());
        }
    }
    // Ten folders in each other: relocated in the plain tree, in their places by Rock Ridge.
    const Walked deep = walked(seedImage("genisoimage"), VolumeKind::RockRidge);
    EXPECT_NE(std::find(deep.paths.begin(), deep.paths.end(), "1/2/3/4/5/6/7/8/9/10/d"), deep.paths.end());
    EXPECT_EQ(objectAt(seedImage("all"), VolumeKind::UDF, "link").linkTarget, "../folder/a.txt");
    EXPECT_EQ(objectAt(seedImage("all"), VolumeKind::RockRidge, "link").linkTarget, "../folder/a.txt");
    EXPECT_EQ(objectAt(seedImage("all"), VolumeKind::UDF, "other").identity,
              objectAt(seedImage("all"), VolumeKind::UDF, "a.txt").identity);
}

TEST(HostileImages, changedBytes_neverBreakAPromise)
{
    std::mt19937 random(20240229);
    for (const char *const name : {"all", "genisoimage", "iso", "joliet", "udf", "hfsplus"}) {
        const QByteArray sound = seedImage(name);
        std::vector<qsizetype> places; // where there is something to change
        for (qsizetype at = 0; at < sound.size(); ++at) {
            if (sound[at] != 0)
                places.push_back(at);
        }
        for (int round = 0; round < 150; ++round) {
            QByteArray image = sound;
            for (int change = 0; change <= round % 8; ++change)
                image[places[random() % places.size()]] = char(random());
            if (round % 10 == 9)
                image.truncate(qsizetype(random() % std::size_t(image.size())));
            ASSERT_EQ(brokenDiscImagePromise(image), nullptr) << name << ' ' << round;
            correctUdfTags(&image);
            ASSERT_EQ(brokenDiscImagePromise(image), nullptr) << name << ' ' << round << " corrected";
        }
    }
}

TEST(HostileImages, folderThatLeadsToItsParent_isALoop)
{
    QByteArray image = seedImage("iso");
    const VolumeObject folder = objectAt(image, VolumeKind::RockRidge, "folder");
    const auto root = loadLittleEndian<std::uint32_t>(reinterpret_cast<const std::uint8_t *>(image.constData())
                                                      + std::size_t{16} * 2048 + 156 + 2);
    putBothEndian(&image, folder.recordOffset + 2, root);
    const Walked volume = walked(image, VolumeKind::RockRidge);
    EXPECT_TRUE(volume.has(DiscImageErrorCode::Loop));
    EXPECT_LT(volume.paths.size(), 20u);
}

TEST(HostileImages, folderOfImpossibleLength_isNotListedForEver)
{
    QByteArray image = seedImage("iso");
    const VolumeObject folder = objectAt(image, VolumeKind::RockRidge, "folder");
    putBothEndian(&image, folder.recordOffset + 10, 0xFFFFF800);
    EXPECT_TRUE(walked(image, VolumeKind::RockRidge).has(DiscImageErrorCode::Loop));
}

TEST(HostileImages, continuationThatLeadsToItself_isALoop)
{
    QByteArray image = seedImage("iso");
    const qsizetype record = qsizetype(objectAt(image, VolumeKind::RockRidge, QByteArray(200, 'n')).recordOffset);
    const qsizetype entry = image.indexOf("CE\x1c\x01", record);
    ASSERT_LT(entry, record + 255);
    const auto *const bytes = reinterpret_cast<const std::uint8_t *>(image.constData());
    const auto block = loadLittleEndian<std::uint32_t>(bytes + entry + 4);
    const auto offset = loadLittleEndian<std::uint32_t>(bytes + entry + 12);
    // The area begins with an entry that leads to the area.
    const qsizetype area = qsizetype(block) * 2048 + qsizetype(offset);
    image.replace(area, 28, image.mid(entry, 28));
    putBothEndian(&image, std::uint64_t(area) + 20, 28);
    putBothEndian(&image, std::uint64_t(entry) + 20, 28);
    EXPECT_TRUE(walked(image, VolumeKind::RockRidge).has(DiscImageErrorCode::Loop));
}

TEST(HostileImages, wrongChecksum_isDamageWithItsPlace)
{
    QByteArray image = seedImage("udf");
    const VolumeObject file = objectAt(image, VolumeKind::UDF, "a.txt");
    image[qsizetype(file.recordOffset) + 60] = '\1'; // of the size
    const Walked volume = walked(image, VolumeKind::UDF);
    EXPECT_TRUE(volume.has(DiscImageErrorCode::Damaged));
    EXPECT_NE(std::find(volume.paths.begin(), volume.paths.end(), "folder/Grüße"), volume.paths.end())
        << "one bad entry must not hide the others";
    EXPECT_EQ(volume.errors.at(0).userInfo().value(DiscImageErrorOffsetKey).toULongLong(), file.recordOffset + 8);
}

TEST(HostileImages, reserveSequence_isUsed_whenTheMainOneIsDamaged)
{
    QByteArray image = seedImage("udf");
    image.replace(qsizetype{32} * 2048, qsizetype{6} * 2048, QByteArray(qsizetype{6} * 2048, 'x'));
    EXPECT_FALSE(walked(image, VolumeKind::UDF).paths.empty());
    image.replace(qsizetype{48} * 2048, qsizetype{6} * 2048, QByteArray(qsizetype{6} * 2048, 'x'));
    EXPECT_TRUE(walked(image, VolumeKind::UDF).has(DiscImageErrorCode::Damaged));
}

TEST(HostileImages, anchorAtTheEnd_isUsed_whenTheFirstIsGone)
{
    QByteArray image = seedImage("udf");
    image.append((2048 - image.size() % 2048) % 2048, '\0');
    image.replace(qsizetype{256} * 2048, 512, QByteArray(512, '\0'));
    EXPECT_FALSE(walked(image, VolumeKind::UDF).paths.empty());
}

} // namespace

} // namespace Tessaron::Testing
