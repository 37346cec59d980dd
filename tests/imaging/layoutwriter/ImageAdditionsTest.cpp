#include "imaging/ImageAdditions.h"

#include "platform/disctracks/vant/VANTReader.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRLayoutWriter.h>

#include <QFile>

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

/// Stands for a full disk: while it lives, no file grows beyond the size.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const struct rlimit limit = {bytes, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    struct rlimit m_before = {};
};

} // namespace

TEST(ImageAdditions, pathOfCueSheet_replacesTheExtension)
{
    EXPECT_EQ(pathOfCueSheet("/a/disc.bin"), "/a/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a/disc"), "/a/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a.b/disc"), "/a.b/disc.cue");
    EXPECT_EQ(pathOfCueSheet("/a/disc.one.bin"), "/a/disc.one.cue");
    EXPECT_EQ(pathOfCueSheet("/a/.bin"), "/a/.bin.cue");
    EXPECT_EQ(pathOfCueSheet("/a/d\xFF.bin"), "/a/d\xFF.cue");
}

TEST(ImageAdditions, pathOfCueSheet_isNeverTheImage)
{
    EXPECT_EQ(pathOfCueSheet("/a/disc.cue"), "/a/disc.cue.cue");
}

TEST(ImageAdditions, writeCueSheet_keepsTheBytesOfTheName)
{
    const TemporaryTree tree;
    tree.makeFile("M\xC3\xBCll \xFF.bin");
    EXPECT_TRUE(writeCueSheet(tree.path("M\xC3\xBCll \xFF.bin")));
    EXPECT_TRUE(tree.contents("M\xC3\xBCll \xFF.cue").startsWith("FILE \"M\xC3\xBCll \xFF.bin\" BINARY\r\n"));
}

TEST(ImageAdditions, writeCueSheet_replacesAnOlderSheet)
{
    const TemporaryTree tree;
    tree.makeFile("disc.cue", QByteArray(500, 'o'));
    EXPECT_TRUE(writeCueSheet(tree.path("disc.bin")));
    EXPECT_EQ(tree.contents("disc.cue").size(), 62 + 8);
}

TEST(ImageAdditions, writeCueSheet_leavesNothing_whenTheDiskIsFull)
{
    const TemporaryTree tree;
    {
        const FileSizeLimit limit(10);
        EXPECT_FALSE(writeCueSheet(tree.path("disc.bin")));
    }
    EXPECT_FALSE(tree.exists("disc.cue"));
    EXPECT_FALSE(writeCueSheet(tree.path("missing/disc.bin")));
}

TEST(ImageAdditions, appendVANTHeader_countsWholeBlocks_whenTheSizeIsNoMultiple)
{
    const TemporaryTree tree;
    tree.makeFile("disc.vant", QByteArray(3 * 2048 + 100, 'x'));
    EXPECT_TRUE(appendVANTHeader(tree.path("disc.vant"), KRLayoutWriter::layoutWriter()));
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText("disc.vant"));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    EXPECT_EQ(read.image->sessions.at(0).tracks.at(0).length, 3u);
    EXPECT_EQ(read.image->trailerOffset, 3u * 2048 + 100);
}

TEST(ImageAdditions, appendVANTHeader_leavesTheFileAsItWas_whenTheDiskIsFull)
{
    const TemporaryTree tree;
    const QByteArray blocks(2 * 2048, 'x');
    tree.makeFile("disc.vant", blocks);
    {
        const FileSizeLimit limit(2 * 2048 + 50);
        EXPECT_FALSE(appendVANTHeader(tree.path("disc.vant"), KRLayoutWriter::layoutWriter()));
    }
    EXPECT_EQ(tree.contents("disc.vant"), blocks);
}

TEST(ImageAdditions, appendVANTHeader_fails_whenThereIsNoFile)
{
    const TemporaryTree tree;
    EXPECT_FALSE(appendVANTHeader(tree.path("disc.vant"), KRLayoutWriter::layoutWriter()));
    EXPECT_FALSE(tree.exists("disc.vant"));
}
