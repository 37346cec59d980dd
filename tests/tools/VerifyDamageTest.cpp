#include "tests/tools/VerifyFixture.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>

#include <array>
#include <filesystem>

namespace Tessaron::Testing
{

namespace
{

/// Each filesystem alone, and all of them.
const std::array<QByteArray, 5> choicesOfFilesystems = {"iso9660", "joliet", "udf", "hfs+", "iso9660,joliet,udf,hfs+"};

/// Sound images in which something is changed afterwards; `tessaron verify` must tell it, whatever it is.
class VerifyDamage : public VerifyFixture
{
protected:
    VerifyDamage()
    {
        makeOrdinaryTree();
        makeBigFile("source/folder/zz", 300'000);
    }

    void makeImageOf(const QByteArray &filesystems, const QList<QByteArray> &options = {})
    {
        makeImage(QList<QByteArray>({"--filesystems", filesystems}) + options);
    }

    /// Expects that verify tells it, be it that there is no filesystem at all, and the exit status too.
    void expectDamage() const
    {
        const QJsonObject report = verified(1);
        EXPECT_TRUE(!differencesIn(report).empty() || report[QStringLiteral("error")].isObject());
    }
};

TEST_F(VerifyDamage, flippedByteInContents_isFoundOnce_forAllThatShareIt)
{
    makeImage();
    const VolumeObject file = objectIn(VolumeKind::UDF, "folder/two.txt");
    const qint64 offset = qint64(file.extents.at(0).offset) + 77777;
    flip(offset);
    const QJsonObject object = verified(1);
    EXPECT_EQ(differencesIn(object), Words({"contents /folder/two.txt"}));
    const QJsonValue difference = object[QStringLiteral("differences")].toArray().at(0);
    EXPECT_EQ(object[QStringLiteral("differenceCount")].toInteger(), 1);
    EXPECT_EQ(difference[QStringLiteral("offset")].toInteger(), offset);
    EXPECT_TRUE(difference[QStringLiteral("message")].toString().contains(QStringLiteral("byte 77777 of the file")));
    EXPECT_EQ(filesystemsIn(object), allViews);
}

TEST_F(VerifyDamage, flippedByteInAName_blamesTheOneFilesystem)
{
    const QByteArray wide("\0r\0e\0a\0d\0m\0e\0.\0t\0x\0t", 20);
    struct Case {
        VolumeKind kind;
        QByteArray recorded;
        std::string filesystem;
    };
    const std::vector<Case> cases = {{VolumeKind::ISO9660, "README.TXT;1", "iso9660"},
                                     {VolumeKind::RockRidge, "readme.txt", "rockridge"},
                                     {VolumeKind::Joliet, wide, "joliet"}};
    for (const Case &one : cases) {
        SCOPED_TRACE(one.filesystem);
        makeImage();
        const QByteArray path = one.kind == VolumeKind::ISO9660 ? "README.TXT" : "readme.txt";
        const auto record = qint64(objectIn(one.kind, path).recordOffset);
        const qint64 place = m_tree.contents("out/disc.iso").indexOf(one.recorded, record);
        ASSERT_LT(place, record + 255);
        flip(place + one.recorded.indexOf(one.kind == VolumeKind::ISO9660 ? 'D' : 'd'));
        const QJsonObject object = verified(1);
        EXPECT_EQ(filesystemsIn(object), Words({one.filesystem}));
        EXPECT_EQ(object[QStringLiteral("differenceCount")].toInteger(), 2); // one is missing, one is extra
    }
}

TEST_F(VerifyDamage, flippedByteInAnEntry_blamesTheOneFilesystem)
{
    makeImage();
    flip(qint64(objectIn(VolumeKind::UDF, "folder/two.txt").recordOffset) + 57); // of the size
    const QJsonObject udf = verified(1);
    EXPECT_EQ(filesystemsIn(udf), Words({"udf"}));
    EXPECT_TRUE(differencesIn(udf).contains("damage /folder"));

    makeImage();
    const QByteArray wide("\0t\0w\0o\0.\0t\0x\0t", 14);
    const auto joliet = qsizetype(objectIn(VolumeKind::Joliet, "folder/two.txt").recordOffset);
    const QByteArray bytes = m_tree.contents("out/disc.iso");
    int others = 0;
    for (qsizetype at = bytes.indexOf(wide); at >= 0; at = bytes.indexOf(wide, at + 1)) {
        if (at >= joliet && at < joliet + 100)
            continue;
        ++others;
        flip(at + 3);
    }
    EXPECT_GE(others, 1);
    EXPECT_EQ(filesystemsIn(verified(1)), Words({"hfs+"}));
}

TEST_F(VerifyDamage, wrongExtentInOneFilesystem_blamesItsContents)
{
    m_tree.makeFile("source/folder/three.txt", QByteArray(100000, '3'));
    makeImage();
    // The block number of the record, in both byte orders: now that of the file's next block.
    const auto record = qint64(objectIn(VolumeKind::Joliet, "folder/two.txt").recordOffset);
    QFile file(QString::fromUtf8(image()));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(record + 2);
    QByteArray place = file.read(8);
    place[0] = char(place[0] ^ 1);
    place[7] = place[0];
    file.seek(record + 2);
    file.write(place);
    file.close();
    const QJsonObject object = verified(1);
    EXPECT_EQ(filesystemsIn(object), Words({"joliet"}));
    EXPECT_EQ(differencesIn(object), Words({"contents /folder/two.txt"}));
}

TEST_F(VerifyDamage, truncatedImage_isFound_whereverItEnds)
{
    makeBigFile("source/big", 3 << 20);
    makeImage();
    const qint64 whole = imageLength();
    std::filesystem::resize_file(image().toStdString(), std::uintmax_t(whole - 2048));
    EXPECT_TRUE(differencesIn(verified(1)).contains("damage /")); // nothing but the end of the last block is missing
    for (const qint64 length : {whole / 2, qint64(300) * 2048, qint64(20) * 2048}) {
        SCOPED_TRACE(length);
        std::filesystem::resize_file(image().toStdString(), std::uintmax_t(length));
        EXPECT_GT(verified(1)[QStringLiteral("differenceCount")].toInteger(), 0);
    }
    std::filesystem::resize_file(image().toStdString(), 100);
    EXPECT_EQ(verified(1)[QStringLiteral("error")][QStringLiteral("kind")].toString(), QStringLiteral("source"));
}

TEST_F(VerifyDamage, bitInACopyOrACount_isFound)
{
    makeImage();
    (void)verified(0);
    constexpr qint64 block = 2048;
    constexpr qint64 mainSequence = 32 * block;
    for (const qint64 place : {qint64(32769), qint64(34816), qint64(40961), 256 * block, mainSequence + 20,
                               mainSequence + 2 * block + 190, imageLength() - block + 20}) {
        SCOPED_TRACE(place);
        flip(place);
        (void)verified(1);
        flip(place);
    }
}

TEST_F(VerifyDamage, anyBitOfAByteThatHidesAFilesystem_isTold)
{
    makeImageOf(choicesOfFilesystems.back());
    (void)verified(0);
    // Identifiers of the primary volume and of UDF's recognition sequence; type, escape sequence and root record of the
    // Joliet volume; the entry of the HFS+ partition in the map.
    for (const off_t place : {32769, 40961, 34816, 34904, 34974, 1024, 1025}) {
        for (unsigned int bit = 1; bit <= 0x80; bit <<= 1) {
            SCOPED_TRACE(testing::Message() << "byte " << place << ", bit " << bit);
            flip(place, bit);
            expectDamage();
            flip(place, bit);
        }
    }
}

TEST_F(VerifyDamage, bitsInBothMapsAndInTheWrapper_areTold)
{
    makeImageOf("hfs+");
    (void)verified(0);
    // The wrapper's header, and the map's entries in units of 2048 bytes: together they hide the filesystem.
    for (unsigned int bit = 1; bit <= 0x80; bit <<= 1) {
        SCOPED_TRACE(bit);
        for (const off_t place : {1024, 2048, 4096})
            flip(place, bit);
        expectDamage();
        for (const off_t place : {1024, 2048, 4096})
            flip(place, bit);
    }
}

TEST_F(VerifyDamage, eachByteOfAVantTrailer_isTold)
{
    makeImageOf("udf", {"--format", "vant"});
    (void)verified(0);
    const off_t length = imageLength();
    const off_t trailer = length % 2048;
    ASSERT_EQ(trailer, 120);
    for (off_t at = length - trailer; at < length; ++at) {
        SCOPED_TRACE(at - (length - trailer));
        flip(at, 1u << (at % 8));
        expectDamage();
        flip(at, 1u << (at % 8));
    }
    (void)verified(0);
}

TEST_F(VerifyDamage, cutImage_isTold_inEachFilesystemAloneAndInAll)
{
    for (const QByteArray &filesystems : choicesOfFilesystems) {
        for (const off_t less : {1, 512, 2048, 100'000}) {
            SCOPED_TRACE(testing::Message() << filesystems.constData() << " without " << less);
            makeImageOf(filesystems);
            std::filesystem::resize_file(image().toStdString(), std::uintmax_t(imageLength() - less));
            expectDamage();
        }
    }
}

TEST_F(VerifyDamage, filesystemOfAnUnsupportedKind_isCalledSo)
{
    m_tree.makeSparseFile("out/disc.iso", 40 << 20);
    outputOf("mkudffs", {"--media-type=cdr", "--blocksize=2048", image()});
    const ChildResult result = runTessaron({"verify", image(), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("not supported")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("damaged")) << result.errors.constData();
}

/// Those of an image are the image's own, whatever the source's are.
TEST_F(VerifyDamage, datesOfAVolume_areThoseOfTheVolume)
{
    m_tree.setModificationTime("source", 1'000'000'000);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    makeImageOf(choicesOfFilesystems.back());
    const QJsonObject object = jsonOf(runTessaron({"inspect", "--json", image()}).output);
    const QJsonArray filesystems = object[QStringLiteral("filesystems")].toArray();
    ASSERT_EQ(filesystems.size(), 5);
    for (const QJsonValue filesystem : filesystems) {
        const QString name = filesystem[QStringLiteral("filesystem")].toString();
        for (const QString &key : {QStringLiteral("created"), QStringLiteral("modified")}) {
            if (filesystem[key].isNull())
                continue; // not every filesystem says both
            const QDateTime time = QDateTime::fromString(filesystem[key].toString(), Qt::ISODate);
            EXPECT_GE(time, before) << qPrintable(name + u' ' + key);
            EXPECT_LE(time, QDateTime::currentDateTimeUtc()) << qPrintable(name + u' ' + key);
        }
        EXPECT_FALSE(filesystem[QStringLiteral("created")].isNull()) << qPrintable(name);
    }
}

/// Partitioned as another program does it.
TEST_F(VerifyDamage, partitionsOfADisk_areShown_thoughNoFilesystemIsFound)
{
    for (const QByteArray table : {"dos", "gpt"}) {
        SCOPED_TRACE(table.constData());
        m_tree.makeSparseFile("out/disc.iso", 16 << 20);
        outputOf("sh",
                 {"-c", "printf 'label: " + table + "\nstart=2048, size=8192\n' | /usr/sbin/sfdisk --quiet \"$1\"",
                  "sh", image()});
        const ChildResult result = runTessaron({"inspect", image()});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.output.contains(": 4194304 bytes at byte 1048576")) << result.output.constData();
        EXPECT_FALSE(result.errors.contains("damaged")) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("no filesystem")) << result.errors.constData();
    }
}

} // namespace

} // namespace Tessaron::Testing
