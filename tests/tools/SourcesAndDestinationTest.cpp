#include "tests/support/TemporaryTree.h"
#include "tools/tessaron/Destination.h"
#include "tools/tessaron/Sources.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

using Kind = Problem::Kind;

class SourcesAndDestination : public testing::Test
{
protected:
    Problem inspected(const QList<QByteArray> &relativePaths)
    {
        QList<QByteArray> paths;
        for (const QByteArray &path : relativePaths)
            paths.append(m_tree.path(path));
        return inspectSources(paths, &m_sources);
    }

    Problem opened(const QByteArray &relative, ImageFormat format = ImageFormat::Iso)
    {
        m_destination = {};
        return openDestination(m_tree.path(relative), format, &m_destination);
    }

    /// Whether image and source are refused together.
    Kind conflictOf(const QByteArray &output, const QByteArray &source)
    {
        EXPECT_FALSE(inspected({source}));
        EXPECT_FALSE(opened(output));
        return checkOutside(m_destination, m_sources).kind;
    }

    const Testing::TemporaryTree m_tree;
    std::vector<Source> m_sources;
    Destination m_destination;
};

TEST_F(SourcesAndDestination, source_isTakenAsItIs)
{
    m_tree.makeFile("folder/file");
    EXPECT_FALSE(inspected({"folder", "folder/file"}));
    ASSERT_EQ(m_sources.size(), 2u);
    EXPECT_TRUE(m_sources[0].isFolder);
    EXPECT_EQ(m_sources[0].name, "folder");
    EXPECT_FALSE(m_sources[1].isFolder);
    EXPECT_EQ(m_sources[1].name, "file");
}

TEST_F(SourcesAndDestination, source_hasTheNameOfTheFolder_whenItIsADot)
{
    m_tree.makeFolder("folder/inner");
    EXPECT_FALSE(inspected({"folder/.", "folder/inner/..", "folder//"}));
    for (const Source &source : m_sources)
        EXPECT_EQ(source.name, "folder");
}

TEST_F(SourcesAndDestination, source_isWhatTheLinkLeadsTo_underTheLinksName)
{
    m_tree.makeFolder("folder");
    m_tree.makeSymbolicLink("link", "folder");
    EXPECT_FALSE(inspected({"link"}));
    EXPECT_TRUE(m_sources[0].isFolder);
    EXPECT_EQ(m_sources[0].name, "link");
    EXPECT_EQ(m_sources[0].path, m_tree.path("folder"));
}

TEST_F(SourcesAndDestination, source_isRefused_whenItIsMissingOrNoFile)
{
    m_tree.makeSymbolicLink("dangling", "nowhere");
    m_tree.makeFifo("fifo");
    m_tree.makeFile("file");
    for (const QByteArray path : {"missing", "dangling", "fifo", "file/inside", "file/"}) {
        const Problem problem = inspected({path});
        EXPECT_EQ(problem.kind, Kind::Source) << path.constData();
        EXPECT_TRUE(problem.message.contains(QString::fromUtf8(path))) << problem.message.toStdString();
    }
}

TEST_F(SourcesAndDestination, source_isRefused_whenItCannotBeRead)
{
    m_tree.makeFile("file");
    m_tree.setMode("file", 0);
    m_tree.makeFolder("folder");
    m_tree.setMode("folder", 0711);
    m_tree.setMode({}, 0755);
    const Testing::WithoutRootRights withoutRootRights;
    if (::geteuid() != ::getuid()) { // a normal user owns the folder and may list it
        EXPECT_EQ(inspected({"folder"}).kind, Kind::Source);
    }
    const Problem problem = inspected({"file"});
    EXPECT_EQ(problem.kind, Kind::Source);
    EXPECT_TRUE(problem.message.contains(QStringLiteral("Permission denied"))) << problem.message.toStdString();
}

TEST_F(SourcesAndDestination, sources_cannotLieSideBySide_whenOneComesTwice)
{
    m_tree.makeFile("a/same");
    m_tree.makeFile("b/same");
    m_tree.makeSymbolicLink("other", "a");
    EXPECT_FALSE(inspected({"a", "b"}));
    EXPECT_FALSE(checkSideBySide(m_sources));
    EXPECT_FALSE(inspected({"a/same", "b/same"}));
    EXPECT_EQ(checkSideBySide(m_sources).kind, Kind::Usage);
    EXPECT_FALSE(inspected({"a", "other"}));
    EXPECT_EQ(checkSideBySide(m_sources).kind, Kind::Usage);
    EXPECT_FALSE(inspected({"a/same", "a/../a/same"}));
    EXPECT_TRUE(checkSideBySide(m_sources).message.contains(QStringLiteral("are the same file")));
}

TEST_F(SourcesAndDestination, destination_isOpened_whetherOrNotTheFileExists)
{
    m_tree.makeFile("old.iso");
    EXPECT_FALSE(opened("old.iso"));
    EXPECT_TRUE(m_destination.existingImage);
    EXPECT_FALSE(opened("new.iso"));
    EXPECT_FALSE(m_destination.existingImage);
    EXPECT_EQ(m_destination.name, "new.iso");
    EXPECT_EQ(m_destination.cueName, "");
    EXPECT_FALSE(opened("new.tar.bin", ImageFormat::Bin));
    EXPECT_EQ(m_destination.cueName, "new.tar.cue");
}

TEST_F(SourcesAndDestination, destination_isWhereALinkLeads)
{
    m_tree.makeFile("place/real.iso");
    m_tree.makeSymbolicLink("link.iso", "place/real.iso");
    EXPECT_FALSE(opened("link.iso"));
    EXPECT_EQ(m_destination.path, m_tree.path("place/real.iso"));
    EXPECT_EQ(m_destination.name, "real.iso");
}

TEST_F(SourcesAndDestination, destination_isRefused_whenItIsNoPlaceForAnImage)
{
    m_tree.makeFolder("folder");
    m_tree.makeFolder("taken.cue");
    m_tree.makeFile("file");
    m_tree.makeFifo("fifo");
    m_tree.makeSymbolicLink("dangling", "nowhere");
    for (const QByteArray path : {"folder", "folder/", "missing/disc.iso", "file/disc.iso", "fifo", "dangling"})
        EXPECT_EQ(opened(path).kind, Kind::Destination) << path.constData();
    EXPECT_EQ(opened(QByteArray(256, 'x')).kind, Kind::Destination);
    EXPECT_EQ(opened("taken.bin", ImageFormat::Bin).kind, Kind::Destination);
    EXPECT_EQ(openDestination("-", ImageFormat::Iso, &m_destination).kind, Kind::Destination);
    EXPECT_EQ(openDestination("/dev/full", ImageFormat::Iso, &m_destination).kind, Kind::Destination);
    EXPECT_EQ(openDestination("", ImageFormat::Iso, &m_destination).kind, Kind::None); // the parser refuses it
}

TEST_F(SourcesAndDestination, destination_isRefused_whenItMayNotBeWritten)
{
    m_tree.makeFile("sticky/foreign.iso");
    m_tree.setMode("sticky", 01777);
    m_tree.setMode("sticky/foreign.iso", 0666);
    m_tree.makeFolder("closed");
    m_tree.setMode("closed", 0555);
    m_tree.makeFile("protected.iso");
    m_tree.setMode("protected.iso", 0444);
    m_tree.setMode({}, 0777);
    const Testing::WithoutRootRights withoutRootRights;
    EXPECT_EQ(opened("closed/disc.iso").kind, Kind::Destination);
    EXPECT_EQ(opened("protected.iso").kind, Kind::Destination);
    if (::getuid() == 0) { // a normal user's own file is not protected from that user
        EXPECT_EQ(opened("sticky/foreign.iso").kind, Kind::Destination);
    }
}

TEST_F(SourcesAndDestination, destination_conflicts_whenItLiesInASourceByAnyPath)
{
    m_tree.makeFile("source/inner/file");
    m_tree.makeSymbolicLink("alias", "source/inner");
    EXPECT_EQ(conflictOf("source/disc.iso", "source"), Kind::Destination);
    EXPECT_EQ(conflictOf("source/inner/disc.iso", "source"), Kind::Destination);
    EXPECT_EQ(conflictOf("alias/disc.iso", "source"), Kind::Destination);
    EXPECT_EQ(conflictOf("source/disc.iso", "source/inner"), Kind::None);
    EXPECT_EQ(conflictOf("source/inner/file", "source/inner/file"), Kind::Destination);
    EXPECT_EQ(conflictOf("disc.iso", "alias"), Kind::None);
}

TEST_F(SourcesAndDestination, destination_conflicts_whenTheCueSheetWouldReplaceASource)
{
    m_tree.makeFile("disc.cue");
    EXPECT_FALSE(inspected({"disc.cue"}));
    EXPECT_FALSE(opened("disc.bin", ImageFormat::Bin));
    EXPECT_EQ(checkOutside(m_destination, m_sources).kind, Kind::Destination);
}

} // namespace

} // namespace Tessaron::Tool
