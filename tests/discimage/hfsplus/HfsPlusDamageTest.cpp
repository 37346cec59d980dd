#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discimage/hfsplus/WalkedVolume.h"
#include "tests/discrecording/planning/WrittenImage.h"

#include <random>

namespace Tessaron::Testing
{

namespace
{

/// An image of a volume whose catalog has an index, with links and folders.
QByteArray soundImage()
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("sound"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("a folder"));
    root->addChild(folder);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("inside"), QByteArray(3000, 'i')));
    for (int number = 0; number < 60; ++number) {
        const QString name = QStringLiteral("file %1").arg(number, 3, 10, QLatin1Char('0'));
        root->addChild(DRFile::virtualFileWithName(name, QByteArray::number(number)));
    }
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskHFSPlus;
    options.sourceDateEpoch = 1'500'000'000;
    const WrittenImage written(root, options);
    return written.bytes(0, written.size());
}

QByteArray stored(const QString &name)
{
    QByteArray bytes;
    for (const QChar unit : name)
        bytes += QByteArray(1, char(unit.unicode() >> 8)) + char(unit.unicode() & 0xFF);
    return bytes;
}

/// Every place in the image where the name stands with its length in front of it: in keys and in threads.
QList<qsizetype> placesOf(const QByteArray &image, const QString &name)
{
    const QByteArray wanted = QByteArray(1, '\0') + char(name.size()) + stored(name);
    QList<qsizetype> places;
    for (qsizetype at = image.indexOf(wanted); at >= 0; at = image.indexOf(wanted, at + 1))
        places.append(at + 2);
    return places;
}

constexpr qsizetype volumeStart = 16384;
constexpr qsizetype catalogForkPlace = volumeStart + 1024 + 272;

std::uint32_t big32(const QByteArray &image, qsizetype at)
{
    std::uint32_t value = 0;
    for (qsizetype index = 0; index < 4; ++index)
        value = value << 8 | std::uint8_t(image[at + index]);
    return value;
}

/// Where a node of the catalog lies in the image.
qsizetype catalogNode(const QByteArray &image, qsizetype number)
{
    return volumeStart + qsizetype(big32(image, catalogForkPlace + 16)) * 2048 + number * 8192;
}

} // namespace

TEST(HfsPlusDamage, flippedBitInAName_isNoticed)
{
    const QByteArray sound = soundImage();
    const QStringList expected = WalkedVolume(sound).text();
    for (const char *const name : {"a folder", "file 000", "file 031", "inside"}) {
        const QList<qsizetype> places = placesOf(sound, QString::fromLatin1(name));
        ASSERT_GE(places.size(), 2) << name;
        QByteArray image = sound;
        image[places[0] + 1] = char(image[places[0] + 1] ^ 1);
        EXPECT_NE(WalkedVolume(image).text(), expected) << name;
    }
    QByteArray image = sound; // the folder's thread
    const qsizetype thread = placesOf(sound, QStringLiteral("a folder")).back();
    image[thread + 1] = char(image[thread + 1] ^ 1);
    const WalkedVolume walked(image);
    ASSERT_EQ(walked.errors.size(), 1);
    EXPECT_TRUE(walked.errors[0].contains(QStringLiteral("thread"))) << qPrintable(walked.errors[0]);
}

TEST(HfsPlusDamage, everyByteOfTheTreesStructure_isNoticed)
{
    const QByteArray sound = soundImage();
    const WalkedVolume walked(sound);
    const QStringList expected = walked.text();
    const qsizetype nodes = qsizetype(big32(sound, catalogNode(sound, 0) + 36));
    ASSERT_GE(nodes, 4) << "header, leaves and an index";
    for (qsizetype node = 1; node < nodes; ++node) {
        const bool isIndex = sound[catalogNode(sound, node) + 8] == 0;
        // Links to neighbours, kind, height and number of records; a single index node has no neighbours.
        for (qsizetype at = isIndex ? 8 : 0; at < 12; ++at) {
            QByteArray image = sound;
            image[catalogNode(sound, node) + at] = char(image[catalogNode(sound, node) + at] ^ 0x21);
            const WalkedVolume damaged(image);
            EXPECT_TRUE(damaged.opened.error || damaged.text() != expected) << node << " " << at;
        }
    }
}

TEST(HfsPlusDamage, leafThatLeadsToItself_endsTheListing)
{
    QByteArray image = soundImage();
    const qsizetype leaf = catalogNode(image, 1);
    image.replace(leaf, 4, QByteArray("\0\0\0\1", 4));
    const WalkedVolume walked(image);
    ASSERT_FALSE(walked.errors.isEmpty());
    EXPECT_TRUE(walked.errors[0].contains(QStringLiteral("the one before it"))) << qPrintable(walked.errors[0]);
}

TEST(HfsPlusDamage, numberOfChildren_isChecked)
{
    QByteArray image = soundImage();
    // The root's record is the first of the first leaf: its key has the name "sound".
    const qsizetype valence = catalogNode(image, 1) + 14 + 8 + 10 + 4;
    EXPECT_EQ(big32(image, valence), 61u);
    image[valence + 3] = 62;
    const WalkedVolume walked(image);
    EXPECT_EQ(walked.objects.size(), 62);
    ASSERT_EQ(walked.errors.size(), 1);
    EXPECT_TRUE(walked.errors[0].contains(QStringLiteral("has 61 children, but says 62")));
}

TEST(HfsPlusDamage, damagedCopyOfTheHeader_isAnErrorBesidesTheReader)
{
    QByteArray image = soundImage();
    const qsizetype blocks = qsizetype(big32(image, volumeStart + 1024 + 44));
    image[volumeStart + blocks * 2048 - 1024 + 44] = 1;
    const WalkedVolume walked(image);
    EXPECT_TRUE(walked.opened.reader);
    EXPECT_EQ(walked.opened.error.domain(), DiscImageErrorDomain);
    EXPECT_EQ(walked.objects.size(), 62);
}

TEST(HfsPlusDamage, volume_isFound_whenOneOfTheWaysToItIsLost)
{
    QByteArray withoutWrapper = soundImage();
    withoutWrapper.replace(1024, 512, QByteArray(512, '\0'));
    EXPECT_EQ(WalkedVolume(withoutWrapper).objects.size(), 62);
    QByteArray withoutMap = soundImage();
    withoutMap.replace(2048, 4096, QByteArray(4096, '\0'));
    EXPECT_EQ(WalkedVolume(withoutMap).objects.size(), 62);
    withoutMap.replace(volumeStart + 1024, 2, "XX");
    const WalkedVolume lost(withoutMap);
    EXPECT_FALSE(lost.opened.reader);
    EXPECT_TRUE(lost.opened.error) << "the wrapper says that there is a volume";
}

TEST(HfsPlusDamage, truncatedImage_isAnErrorOrAPartOfTheVolume)
{
    const QByteArray sound = soundImage();
    const QStringList expected = WalkedVolume(sound).text();
    const qsizetype volumeEnd = volumeStart + qsizetype(big32(sound, volumeStart + 1024 + 44)) * 2048;
    for (qsizetype length = volumeStart + 2048; length < volumeEnd; length += 1000) {
        const WalkedVolume walked(sound.first(length));
        EXPECT_TRUE(walked.opened.error) << length;
        EXPECT_TRUE(walked.text() == expected || walked.objects.isEmpty() || !walked.errors.isEmpty()) << length;
    }
}

TEST(HfsPlusDamage, anyBytes_endInAnErrorOrInSoundObjects)
{
    const QByteArray sound = soundImage();
    std::mt19937 random(20'260'101);
    int noticed = 0;
    for (int round = 0; round < 1500; ++round) {
        QByteArray image = sound;
        for (int change = 0; change < 4; ++change) {
            const qsizetype at = 1024 + qsizetype(random() % 60'000);
            if (at < image.size())
                image[at] = char(round % 3 == 0 ? 0xFF : random());
        }
        const WalkedVolume walked(image);
        noticed += walked.opened.error || !walked.errors.isEmpty() ? 1 : 0;
        for (const VolumeObject &object : walked.objects) {
            std::uint64_t sum = 0;
            for (const VolumeExtent &extent : object.extents)
                sum += extent.length;
            ASSERT_EQ(sum, object.size) << round;
        }
    }
    EXPECT_GT(noticed, 100);
}

} // namespace Tessaron::Testing
