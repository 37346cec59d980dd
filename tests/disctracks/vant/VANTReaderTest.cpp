#include "platform/disctracks/vant/VANTReader.h"

#include "tests/disctracks/vant/VANTSamples.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/VANTHeader.h>

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

void expectError(const VANTReadResult &result, VANTErrorCode code, quint64 offset)
{
    EXPECT_FALSE(result.image);
    EXPECT_EQ(result.error.domain(), VANTErrorDomain);
    EXPECT_EQ(result.error.code(), int(code)) << qPrintable(result.error.localizedDescription());
    EXPECT_EQ(result.error.userInfo().value(VANTErrorOffsetKey).toULongLong(), offset);
    EXPECT_FALSE(result.error.localizedFailureReason().isEmpty());
}

/// The image with one byte of its trailer set and the checksum put right again.
QByteArray withTrailerByte(const QByteArray &image, qsizetype fromEnd, char value)
{
    QByteArray result = image;
    result[result.size() - fromEnd] = value;
    correctChecksum(&result);
    return result;
}

} // namespace

TEST(VANTReader, imageFromBytes_returnsWhatTheLayoutSaid)
{
    const QByteArray bytes = richImage();
    const VANTReadResult result = VANTReader::imageFromBytes(bytes);
    ASSERT_TRUE(result.image) << qPrintable(result.error.localizedDescription());
    const VANTImage &image = *result.image;
    EXPECT_EQ(image.majorVersion, 1);
    EXPECT_EQ(image.minorVersion, 0);
    EXPECT_EQ(image.dataLength, 11152u);
    EXPECT_EQ(image.trailerOffset, 11152u);
    EXPECT_EQ(image.trailerLength, quint64(bytes.size()) - 11152u);

    VANTTrack audio;
    audio.number = 1;
    audio.length = 3;
    audio.blockSize = 2352;
    audio.trackMode = audio.dataForm = audio.blockType = audio.sessionFormat = 0;
    audio.pregap = 150;
    audio.postgap = 2;
    audio.copyState = CopyState::ProtectedOriginal;
    audio.hasPreEmphasis = audio.hasFourChannels = true;
    audio.indexPoints = {10, 4000000000u};
    VANTTrack data;
    data.number = 2;
    data.startOffset = 7056;
    data.length = 2;
    data.blockSize = 2048;
    data.trackMode = 4;
    data.dataForm = 16;
    data.blockType = 8;
    data.sessionFormat = 0;
    VANTTrack empty = data;
    empty.number = 3;
    empty.startOffset = 11152;
    empty.length = 0;
    EXPECT_EQ(image.sessions, (std::vector<VANTSession>{{{audio, data}}, {{empty}}}));
    EXPECT_EQ(image.cdTextBlocks, (QList<QByteArray>{QByteArray("\x80\0\r\n", 4), QByteArray()}));
}

TEST(VANTReader, imageFromBytes_tellsUnstatedFromZero)
{
    const std::shared_ptr<DRTrack> bare = trackWith({{DRBlockSizeKey, 1u}, {DRTrackLengthKey, quint64(0)}});
    const VANTReadResult result = VANTReader::imageFromBytes(VANTHeaderForDRLayout(bare));
    ASSERT_TRUE(result.image);
    const VANTTrack &track = result.image->sessions.front().tracks.front();
    EXPECT_EQ(track.trackMode, std::nullopt);
    EXPECT_EQ(track.dataForm, std::nullopt);
    EXPECT_EQ(track.blockType, std::nullopt);
    EXPECT_EQ(track.sessionFormat, std::nullopt);
    EXPECT_EQ(track.copyState, CopyState::Unstated);
}

TEST(VANTReader, imageFromBytes_returnsEachCopyState)
{
    const std::vector<std::pair<QString, CopyState>> rows = {
        {DRSCMSCopyrightFree, CopyState::CopyrightFree},
        {DRSCMSCopyrightProtectedOriginal, CopyState::ProtectedOriginal},
        {DRSCMSCopyrightProtectedCopy, CopyState::ProtectedCopy},
        {QStringLiteral("something else"), CopyState::Unstated},
    };
    for (const auto &[text, state] : rows) {
        QVariantMap properties = dataTrack(0)->properties();
        properties.insert(DRSerialCopyManagementStateKey, text);
        const VANTReadResult result = VANTReader::imageFromBytes(VANTHeaderForDRLayout(trackWith(properties)));
        ASSERT_TRUE(result.image);
        EXPECT_EQ(result.image->sessions[0].tracks[0].copyState, state) << qPrintable(text);
    }
}

TEST(VANTReader, imageFromBytes_readsAnImage_whenBytesLieBetweenDataAndTrailer)
{
    const QByteArray header = VANTHeaderForDRLayout(dataTrack(1));
    const VANTReadResult result = VANTReader::imageFromBytes(QByteArray(2048 + 100, 'x') + header);
    ASSERT_TRUE(result.image);
    EXPECT_EQ(result.image->dataLength, 2048u);
    EXPECT_EQ(result.image->trailerOffset, 2148u);
}

TEST(VANTReader, imageFromBytes_skipsRecordsItDoesNotKnow)
{
    QByteArray image = VANTHeaderForDRLayout(dataTrack(0));
    image.insert(0, QByteArray("NEW!\0\0\0\3abc", 11));
    image[image.size() - 40 + 7] = char(image[image.size() - 40 + 7] + 11);
    image[image.size() - 40 + 19] = 9; // minor version
    correctChecksum(&image);
    const VANTReadResult result = VANTReader::imageFromBytes(image);
    ASSERT_TRUE(result.image) << qPrintable(result.error.localizedDescription());
    EXPECT_EQ(result.image->minorVersion, 9);
}

TEST(VANTReader, imageFromBytes_readsALongerTailAndLongerRecords_ofALaterMinorVersion)
{
    QByteArray image = VANTHeaderForDRLayout(dataTrack(0));
    image.insert(image.size() - 40, "grow"); // a field in front of the known ones of the tail
    image[image.size() - 40 + 23] = 44; // size of the tail
    image.insert(80, "more"); // behind the last index point of the track
    image[16 + 7] = 60; // payload of the track
    image[image.size() - 40 + 7] = 84; // length of the records
    correctChecksum(&image);
    const VANTReadResult result = VANTReader::imageFromBytes(image);
    ASSERT_TRUE(result.image) << qPrintable(result.error.localizedDescription());
    EXPECT_EQ(result.image->sessions[0].tracks[0].blockSize, 2048u);
    EXPECT_EQ(result.image->trailerLength, 128u);
}

TEST(VANTReader, imageFromBytes_fails_whenThereIsNoTrailer)
{
    expectError(VANTReader::imageFromBytes({}), VANTErrorCode::NoTrailer, 0);
    expectError(VANTReader::imageFromBytes(QByteArray(39, 'x')), VANTErrorCode::NoTrailer, 31);
    expectError(VANTReader::imageFromBytes(QByteArray(4096, '\0')), VANTErrorCode::NoTrailer, 4088);
}

TEST(VANTReader, imageFromBytes_fails_whenTheFileWasCutOrGrew)
{
    const QByteArray image = richImage();
    const auto size = quint64(image.size());
    expectError(VANTReader::imageFromBytes(image.first(image.size() - 1)), VANTErrorCode::NoTrailer, size - 9);
    expectError(VANTReader::imageFromBytes(image + "x"), VANTErrorCode::NoTrailer, size - 7);
    expectError(VANTReader::imageFromBytes(image.sliced(1)), VANTErrorCode::Incomplete, 11151);
}

TEST(VANTReader, imageFromBytes_fails_whenTheVersionIsNewer)
{
    const QByteArray image = withTrailerByte(richImage(), 40 - 17, 2);
    expectError(VANTReader::imageFromBytes(image), VANTErrorCode::UnknownVersion, quint64(image.size()) - 24);
}

TEST(VANTReader, imageFromBytes_fails_whenAnyBitOfTheTrailerIsFlipped)
{
    const QByteArray image = richImage();
    for (qsizetype at = 11152; at < image.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray flipped = image;
            flipped[at] = char(flipped[at] ^ (1 << bit));
            EXPECT_TRUE(VANTReader::imageFromBytes(flipped).error) << "byte " << at << " bit " << bit;
        }
    }
}

TEST(VANTReader, imageFromBytes_fails_whenTheTailClaimsMoreThanThereIs)
{
    const QByteArray image = richImage();
    const auto tail = quint64(image.size()) - 40;
    expectError(VANTReader::imageFromBytes(withTrailerByte(image, 40, char(0xFF))), VANTErrorCode::Damaged, tail);
    expectError(VANTReader::imageFromBytes(withTrailerByte(image, 20, char(0x7F))), VANTErrorCode::Damaged, tail + 20);
    expectError(VANTReader::imageFromBytes(withTrailerByte(image, 17, 39)), VANTErrorCode::Damaged, tail + 20);
}

TEST(VANTReader, imageFromBytes_namesWhatIsWrong_whenARecordMakesNoSense)
{
    struct Row {
        qsizetype at; ///< byte of the trailer that is changed
        char value;
        quint64 offset; ///< in the trailer, where the error is found
    };
    // One session (record at 0, payload at 8) with one track (record at 16, payload at 24), then the tail at 80.
    const Row rows[] = {
        {3, 'X', 24}, // the session is not known, so the track belongs to none
        {11, 2, 8}, // session number
        {15, 2, 12}, // count of tracks
        {15, 0, 12},          {7, 4, 8}, // length of the session's payload: too short for its fields
        {19, 'X', 12}, // the track is not known, so the session has none
        {23, 55, 24}, // length of the track's payload
        {20, 1, 20},          {27, 2, 24}, // track number
        {32, char(0x80), 40}, // start offset far behind the data
        {40, char(0x80), 40}, // length times block size beyond 64 bits
        {47, 9, 40}, // length beyond the data
        {50, 0, 48}, // block size 0
        {75, 6, 72}, // postgap longer than the track
        {79, 1, 76}, // an index point that is not there
    };
    const QByteArray data(qsizetype{5} * 2048, 'x');
    const QByteArray image = data + VANTHeaderForDRLayout(dataTrack(5));
    for (const Row &row : rows) {
        QByteArray wrong = image;
        wrong[data.size() + row.at] = row.value;
        correctChecksum(&wrong);
        SCOPED_TRACE(row.at);
        expectError(VANTReader::imageFromBytes(wrong), VANTErrorCode::Damaged, quint64(data.size()) + row.offset);
    }
}

TEST(VANTReader, imageFromFile_readsWhatLiesInAFile)
{
    const TemporaryTree tree;
    const QByteArray image = richImage();
    tree.makeFile("n\xFFme.vant", image);
    const QString path = tree.pathText("n\xFFme.vant");
    const VANTReadResult result = VANTReader::imageFromFile(path);
    ASSERT_TRUE(result.image) << qPrintable(result.error.localizedDescription());
    EXPECT_EQ(*result.image, *VANTReader::imageFromBytes(image).image);
}

TEST(VANTReader, imageFromFile_readsOnlyTheTrailer_whenTheFileIsHuge)
{
    const TemporaryTree tree;
    const quint64 blocks = quint64(5) << 20; // 10 GiB, a hole
    const QByteArray path = tree.makeSparseFile("huge.vant", qint64(blocks * 2048));
    QFile file(QFile::decodeName(path));
    ASSERT_TRUE(file.open(QIODevice::Append));
    ASSERT_GT(file.write(VANTHeaderForDRLayout(dataTrack(blocks))), 0);
    file.close();
    const VANTReadResult result = VANTReader::imageFromFile(tree.pathText("huge.vant"));
    ASSERT_TRUE(result.image) << qPrintable(result.error.localizedDescription());
    EXPECT_EQ(result.image->dataLength, blocks * 2048);
}

TEST(VANTReader, imageFromFile_believesNoImpossibleLength_inAHugeFile)
{
    const TemporaryTree tree;
    QByteArray tail = VANTHeaderForDRLayout(dataTrack(0)).last(40);
    tail[3] = 1; // records of more than 4 GiB, which the file could hold
    const QByteArray path = tree.makeSparseFile("huge.vant", qint64(8) << 30);
    QFile file(QFile::decodeName(path));
    ASSERT_TRUE(file.open(QIODevice::Append));
    ASSERT_EQ(file.write(tail), 40);
    file.close();
    expectError(VANTReader::imageFromFile(tree.pathText("huge.vant")), VANTErrorCode::Damaged, quint64(8) << 30);
}

TEST(VANTReader, imageFromFile_namesTheFile_whenItCannotBeRead)
{
    const TemporaryTree tree;
    tree.makeFile("text", "no image");
    tree.makeFolder("folder");
    tree.makeFifo("fifo");
    const VANTReadResult text = VANTReader::imageFromFile(tree.pathText("text"));
    expectError(text, VANTErrorCode::NoTrailer, 0);
    EXPECT_EQ(text.error.filePath(), tree.pathText("text"));
    for (const char *const name : {"missing", "folder", "fifo"}) {
        const VANTReadResult result = VANTReader::imageFromFile(tree.pathText(name));
        EXPECT_FALSE(result.image);
        EXPECT_EQ(result.error.domain(), NSOSStatusErrorDomain) << name;
        EXPECT_EQ(result.error.filePath(), tree.pathText(name));
    }
}

TEST(VANTReader, imageFromFile_reportsTheSystemsError_whenTheFileMayNotBeRead)
{
    const TemporaryTree tree;
    tree.makeFile("secret.vant", richImage());
    tree.setMode("secret.vant", 0);
    tree.setMode("", 0755);
    const WithoutRootRights rights;
    EXPECT_EQ(VANTReader::imageFromFile(tree.pathText("secret.vant")).error.code(), afpAccessDenied);
}
