#include "platform/coreservices/MimeGlobs.h"

#include <QMimeDatabase>
#include <QString>

#include <gtest/gtest.h>
#include <random>

namespace Tessaron
{

namespace
{

MimeGlobs sample()
{
    MimeGlobs globs;
    globs.addFile("# a comment\n"
                  "50:text/plain:*.txt\n"
                  "50:application/gzip:*.gz\n"
                  "50:application/x-compressed-tar:*.tar.gz\n"
                  "80:text/x-preferred:*.dat\n"
                  "50:text/x-other:*.dat\n"
                  "50:text/x-c++src:*.C:cs\n"
                  "50:text/x-c++src:*.C\n"
                  "50:text/x-csrc:*.c:cs\n"
                  "50:text/x-cmake:CMakeLists.txt\n"
                  "10:text/x-readme:readme*\n"
                  "50:application/x-trash:*~\n");
    return globs;
}

} // namespace

TEST(MimeGlobs, typeOfName_takesTheLongestGlob)
{
    EXPECT_EQ(sample().typeOfName("a.gz"), "application/gzip");
    EXPECT_EQ(sample().typeOfName("a.tar.gz"), "application/x-compressed-tar");
    EXPECT_EQ(sample().typeOfName("CMakeLists.txt"), "text/x-cmake");
    EXPECT_EQ(sample().typeOfName("other.txt"), "text/plain");
}

TEST(MimeGlobs, typeOfName_takesTheHighestWeight)
{
    EXPECT_EQ(sample().typeOfName("a.dat"), "text/x-preferred");
    EXPECT_EQ(sample().typeOfName("readme.txt"), "text/plain");
    EXPECT_EQ(sample().typeOfName("README"), "text/x-readme");
}

TEST(MimeGlobs, typeOfName_mindsCase_onlyWhereTheGlobDoes)
{
    EXPECT_EQ(sample().typeOfName("A.TXT"), "text/plain");
    EXPECT_EQ(sample().typeOfName("a.C"), "text/x-c++src");
    EXPECT_EQ(sample().typeOfName("a.c"), "text/x-csrc");
}

TEST(MimeGlobs, typeOfName_isEmpty_whenNothingMatches)
{
    EXPECT_TRUE(sample().typeOfName("name").isEmpty());
    EXPECT_TRUE(sample().typeOfName("a.unknown").isEmpty());
    EXPECT_TRUE(sample().typeOfName("").isEmpty());
    EXPECT_TRUE(sample().typeOfName("caf\xE9").isEmpty());
    EXPECT_TRUE(MimeGlobs().typeOfName("a.txt").isEmpty());
}

TEST(MimeGlobs, addFile_mayTakeBackEarlierGlobsOfAType)
{
    MimeGlobs globs = sample();
    globs.addFile("50:text/plain:__NOGLOBS__\n50:text/plain:*.text\n");
    EXPECT_TRUE(globs.typeOfName("a.txt").isEmpty());
    EXPECT_EQ(globs.typeOfName("a.text"), "text/plain");
}

TEST(MimeGlobs, addFile_leavesOutLinesThatMakeNoSense)
{
    MimeGlobs globs;
    globs.addFile("\n:\n50:\n50::*.x\n50:type:\nnonsense\n::::\n");
    EXPECT_TRUE(globs.isEmpty());
    std::mt19937 random(11);
    for (int round = 0; round < 500; ++round) {
        QByteArray noise(static_cast<qsizetype>(random() % 100), ' ');
        for (char &byte : noise)
            byte = ":*.[]?a\n5/\\"[random() % 11];
        globs.addFile(noise);
        (void)globs.typeOfName(noise);
    }
}

TEST(MimeGlobs, installedGlobs_agreeWithTheDatabase)
{
    const MimeGlobs &globs = MimeGlobs::shared();
    if (globs.isEmpty())
        GTEST_SKIP() << "no MIME database is installed";
    const QMimeDatabase database;
    for (const char *const name : {"a.txt", "a.pdf", "photo.JPG", "song.mp3", "film.mp4", "disc.iso", "page.html",
                                   "archive.tar.gz", "source.c", "source.C", "Makefile", "notes.md", "table.ods"}) {
        const QString expected = database.mimeTypeForFile(QLatin1String(name), QMimeDatabase::MatchExtension).name();
        EXPECT_EQ(database.mimeTypeForName(QLatin1String(globs.typeOfName(name))).name(), expected) << name;
    }
}

} // namespace Tessaron
