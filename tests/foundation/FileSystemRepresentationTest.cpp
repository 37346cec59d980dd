#include "platform/foundation/FileSystemRepresentation.h"

#include <gtest/gtest.h>

using namespace Tessaron;

class FileSystemRepresentationRoundTrip : public testing::TestWithParam<QByteArray>
{
};

TEST_P(FileSystemRepresentationRoundTrip, text_comesBackAsTheSameBytes)
{
    const QByteArray bytes = GetParam();
    EXPECT_EQ(fileSystemRepresentation(stringWithFileSystemRepresentation(bytes)), bytes);
}

INSTANTIATE_TEST_SUITE_P(Names, FileSystemRepresentationRoundTrip,
                         testing::Values(QByteArray(), QByteArray("plain"), QByteArray("gr\xC3\xBC\xC3\x9F"),
                                         QByteArray("\xF0\x9F\x8E\xB5 music"), QByteArray("latin\xE9"),
                                         QByteArray("\xFF\xFE\x80"), QByteArray("cut \xE2\x82"),
                                         QByteArray("overlong \xC0\xAF"), QByteArray("surrogate \xED\xA0\x80 coded"),
                                         QByteArray("above \xF4\x90\x80\x80"), QByteArray("\xC3\xBC\xE9\xC3\xBC"),
                                         QByteArray("\xEF\xBB\xBFmarked"), QByteArray("\xE9\xEF\xBB\xBF")));

TEST(FileSystemRepresentation, holdsUndecodableBytes_tellsValidTextFromBytes)
{
    EXPECT_FALSE(holdsUndecodableBytes(stringWithFileSystemRepresentation("\xF0\x9F\x8E\xB5 ok")));
    EXPECT_TRUE(holdsUndecodableBytes(stringWithFileSystemRepresentation("latin\xE9")));
}

TEST(FileSystemRepresentation, displayableText_showsUndecodableBytesAsReplacementCharacters)
{
    const QString shown = displayableText(stringWithFileSystemRepresentation("a\xE9\xFF"
                                                                             "b"));
    EXPECT_EQ(shown, QStringLiteral("a\uFFFD\uFFFDb"));
}

TEST(FileSystemRepresentation, fileSystemRepresentation_replacesASurrogateThatStandsForNoByte)
{
    EXPECT_EQ(fileSystemRepresentation(QString(QChar(0xD800)).append(u'x')), QByteArray("\xEF\xBF\xBDx"));
}
