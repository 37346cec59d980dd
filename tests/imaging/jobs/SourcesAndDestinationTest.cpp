#include "imaging/jobs/ImageDestination.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using Code = DiscJobErrorCode;

std::optional<Code> codeOf(const NSError &error)
{
    return error ? std::optional(Code(error.code())) : std::nullopt;
}

class SourcesAndDestination : public testing::Test
{
protected:
    NSError inspected(const QList<QByteArray> &relativePaths)
    {
        QList<QByteArray> paths;
        for (const QByteArray &path : relativePaths)
            paths.append(m_tree.path(path));
        Result<std::vector<DiscSource>> found = discSourcesAtPaths(paths);
        if (found)
            m_sources = std::move(*found);
        return found.error();
    }

    NSError opened(const QByteArray &relative, DiscFormat format = DiscFormat::ISO)
    {
        m_destination = {};
        return openDestination(m_tree.path(relative), format, &m_destination);
    }

    /// Whether image and source are refused together.
    std::optional<Code> conflictOf(const QByteArray &output, const QByteArray &source)
    {
        EXPECT_FALSE(inspected({source}));
        EXPECT_FALSE(opened(output));
        return codeOf(checkOutside(m_destination, m_sources));
    }

    const Testing::TemporaryTree m_tree;
    std::vector<DiscSource> m_sources;
    ImageDestination m_destination;
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
    for (const DiscSource &source : m_sources)
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
        const NSError error = inspected({path});
        EXPECT_EQ(codeOf(error), Code::Source) << path.constData();
        EXPECT_TRUE(error.localizedDescription().contains(QString::fromUtf8(path)))
            << error.localizedDescription().toStdString();
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
        EXPECT_EQ(codeOf(inspected({"folder"})), Code::Source);
    }
    const NSError error = inspected({"file"});
    EXPECT_EQ(codeOf(error), Code::Source);
    EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("Permission denied")))
        << error.localizedDescription().toStdString();
}

TEST_F(SourcesAndDestination, sources_cannotLieSideBySide_whenOneComesTwice)
{
    m_tree.makeFile("a/same");
    m_tree.makeFile("b/same");
    m_tree.makeSymbolicLink("other", "a");
    EXPECT_FALSE(inspected({"a", "b"}));
    EXPECT_FALSE(errorOfSourcesSideBySide(m_sources));
    EXPECT_FALSE(inspected({"a/same", "b/same"}));
    EXPECT_EQ(codeOf(errorOfSourcesSideBySide(m_sources)), Code::InvalidOrder);
    EXPECT_FALSE(inspected({"a", "other"}));
    EXPECT_EQ(codeOf(errorOfSourcesSideBySide(m_sources)), Code::InvalidOrder);
    EXPECT_FALSE(inspected({"a/same", "a/../a/same"}));
    EXPECT_TRUE(
        errorOfSourcesSideBySide(m_sources).localizedDescription().contains(QStringLiteral("are the same file")));
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
    EXPECT_FALSE(opened("new.tar.bin", DiscFormat::BIN));
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
        EXPECT_EQ(codeOf(opened(path)), Code::Destination) << path.constData();
    EXPECT_EQ(codeOf(opened(QByteArray(256, 'x'))), Code::Destination);
    EXPECT_EQ(codeOf(opened("taken.bin", DiscFormat::BIN)), Code::Destination);
    EXPECT_EQ(codeOf(openDestination("", DiscFormat::ISO, &m_destination)), std::nullopt); // the parser refuses it
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
    EXPECT_EQ(codeOf(opened("closed/disc.iso")), Code::Destination);
    EXPECT_EQ(codeOf(opened("protected.iso")), Code::Destination);
    if (::getuid() == 0) { // a normal user's own file is not protected from that user
        EXPECT_EQ(codeOf(opened("sticky/foreign.iso")), Code::Destination);
    }
}

TEST_F(SourcesAndDestination, destination_conflicts_whenItLiesInASourceByAnyPath)
{
    m_tree.makeFile("source/inner/file");
    m_tree.makeSymbolicLink("alias", "source/inner");
    EXPECT_EQ(conflictOf("source/disc.iso", "source"), Code::Destination);
    EXPECT_EQ(conflictOf("source/inner/disc.iso", "source"), Code::Destination);
    EXPECT_EQ(conflictOf("alias/disc.iso", "source"), Code::Destination);
    EXPECT_EQ(conflictOf("source/disc.iso", "source/inner"), std::nullopt);
    EXPECT_EQ(conflictOf("source/inner/file", "source/inner/file"), Code::Destination);
    EXPECT_EQ(conflictOf("disc.iso", "alias"), std::nullopt);
}

TEST_F(SourcesAndDestination, destination_conflicts_whenTheCueSheetWouldReplaceASource)
{
    m_tree.makeFile("disc.cue");
    EXPECT_FALSE(inspected({"disc.cue"}));
    EXPECT_FALSE(opened("disc.bin", DiscFormat::BIN));
    EXPECT_EQ(codeOf(checkOutside(m_destination, m_sources)), Code::Destination);
}

} // namespace

} // namespace Tessaron
