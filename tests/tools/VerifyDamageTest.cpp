#include "tests/tools/ImageFixture.h"

#include <QDateTime>
#include <QJsonArray>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// Each filesystem alone, and all of them.
const std::array<QByteArray, 5> choicesOfFilesystems = {"iso9660", "joliet", "udf", "hfs+", "iso9660,joliet,udf,hfs+"};

/// Sound images in which something is changed afterwards; `tessaron verify` must tell it, whatever it is.
class VerifyDamage : public ImageTest
{
protected:
    VerifyDamage()
    {
        makeOrdinaryTree();
        makeBigFile("source/folder/zz", 300'000);
    }

    void makeImage(const QByteArray &filesystems, const QList<QByteArray> &options = {})
    {
        const ChildResult result =
            runTessaron(imageArguments(QList<QByteArray>({"-q", "--no-sync", "--filesystems", filesystems}) + options));
        ASSERT_TRUE(result.exitStatus == 0 || result.exitStatus == 3) << result.errors.constData();
    }

    [[nodiscard]] ChildResult verified() const { return runTessaron({"verify", "-q", image(), m_tree.path("source")}); }

    /// Expects that verify tells it, and the exit status too.
    void expectDamage() const
    {
        const ChildResult result = verified();
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_FALSE(result.errors.isEmpty());
    }

    /// Changes bits of one byte of the image.
    void flip(off_t offset, unsigned int bits) const
    {
        const int file = ::open(image().constData(), O_RDWR | O_CLOEXEC);
        unsigned char byte = 0;
        ASSERT_EQ(::pread(file, &byte, 1, offset), 1);
        byte = static_cast<unsigned char>(byte ^ bits);
        ASSERT_EQ(::pwrite(file, &byte, 1, offset), 1);
        ::close(file);
    }

    [[nodiscard]] std::uintmax_t imageLength() const { return std::filesystem::file_size(image().toStdString()); }
};

TEST_F(VerifyDamage, anyBitOfAByteThatHidesAFilesystem_isTold)
{
    makeImage(choicesOfFilesystems.back());
    ASSERT_EQ(verified().exitStatus, 0);
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
    makeImage("hfs+");
    ASSERT_EQ(verified().exitStatus, 0);
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
    makeImage("udf", {"--format", "vant"});
    ASSERT_EQ(verified().exitStatus, 0);
    const auto length = static_cast<off_t>(imageLength());
    const off_t trailer = length % 2048;
    ASSERT_EQ(trailer, 120);
    for (off_t at = length - trailer; at < length; ++at) {
        SCOPED_TRACE(at - (length - trailer));
        flip(at, 1u << (at % 8));
        expectDamage();
        flip(at, 1u << (at % 8));
    }
    EXPECT_EQ(verified().exitStatus, 0);
}

TEST_F(VerifyDamage, cutImage_isTold_inEachFilesystemAloneAndInAll)
{
    for (const QByteArray &filesystems : choicesOfFilesystems) {
        for (const std::uintmax_t less : {1, 512, 2048, 100'000}) {
            SCOPED_TRACE(testing::Message() << filesystems.constData() << " without " << less);
            makeImage(filesystems);
            std::filesystem::resize_file(image().toStdString(), imageLength() - less);
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
    makeImage(choicesOfFilesystems.back());
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
