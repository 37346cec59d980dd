#include "app/DiscPreview.h"

#include "app/DataView.h"

#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <QPushButton>

#include <gtest/gtest.h>
#include <platform/discrecording/objects/DRFilesystems.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class DiscPreviewTest : public testing::Test
{
protected:
    DiscPreviewTest()
    {
        tree.makeFile("letter.txt", "Dear reader,\n");
        tree.makeFile(longName, "long");
        tree.makeFile("folder/inner.txt", "inner");
    }

    void look()
    {
        view.preview().look();
        EXPECT_TRUE(runEventLoopUntil([this] { return !view.preview().isRunning(); }));
    }
    [[nodiscard]] DiscNode &at(const QString &path)
    {
        DiscNode *const node = nodeAt(document, path);
        EXPECT_NE(node, nullptr) << path.toStdString();
        return *node;
    }

    const QByteArray longName = QByteArray(146, 'n') + ".txt"; ///< Joliet has 103 characters
    const TemporaryTree tree;
    DiscDocument document;
    DataView view{document};
};

} // namespace

TEST_F(DiscPreviewTest, namesThatChange_areMarked_beforeAnythingIsWritten)
{
    addTo(document, {tree.path("letter.txt"), tree.path(longName)});
    look();
    const DiscMark mark = document.model().markOf(at(u'/' + QString::fromUtf8(longName)));
    EXPECT_EQ(mark.severity, DiscMark::Severity::Changed);
    EXPECT_TRUE(mark.text.contains(QStringLiteral("Joliet calls it ") + QString(99, u'n') + QStringLiteral(".txt")))
        << mark.text.toStdString();
    EXPECT_EQ(document.model().markOf(at(QStringLiteral("/letter.txt"))).severity, DiscMark::Severity::Told);
    EXPECT_FALSE(view.changesButton().isHidden());
    EXPECT_EQ(view.preview().changes().size(), 1);
}

TEST_F(DiscPreviewTest, anotherName_takesTheMarkAway)
{
    addTo(document, {tree.path(longName)});
    look();
    EXPECT_EQ(document.rename(at(u'/' + QString::fromUtf8(longName)), QStringLiteral("short.txt")), QString());
    EXPECT_FALSE(view.preview().isCurrent());
    EXPECT_TRUE(view.changesButton().isHidden());
    EXPECT_TRUE(runEventLoopUntil([this] { return view.preview().isCurrent(); }));
    EXPECT_EQ(document.model().markOf(at(QStringLiteral("/short.txt"))).severity, DiscMark::Severity::Told);
    EXPECT_TRUE(view.changesButton().isHidden());
}

TEST_F(DiscPreviewTest, whatNoFilesystemHoldsAsItStands_isMarkedAsLost_inFoldersToo)
{
    tree.makeFile("folder/" + longName, "long");
    addTo(document, {tree.path("folder")});
    DiscNode &file = at(QStringLiteral("/folder/") + QString::fromUtf8(longName));
    _TessaronAttributes onlyJoliet = TessaronFileAttributesNone_fct();
    onlyJoliet.useBasicFSInclusion = 0;
    onlyJoliet.hasAdvancedFSInclusion = 1;
    onlyJoliet.advancedFSInclusion = DRFilesystemInclusionMaskJoliet;
    document.setOptions({&file}, onlyJoliet);
    look();
    EXPECT_EQ(document.model().markOf(file).severity, DiscMark::Severity::Lost);
    EXPECT_EQ(view.preview().lostCount(), 1u);
    EXPECT_TRUE(view.changesButton().text().contains(QStringLiteral("stored")))
        << view.changesButton().text().toStdString();
}

TEST_F(DiscPreviewTest, size_isExact_onceItIsLookedAt)
{
    addTo(document, {tree.path("letter.txt")});
    const std::uint64_t estimate = view.discSize();
    look();
    EXPECT_EQ(view.discSize() % 2048, 0u);
    EXPECT_NE(view.discSize(), estimate);
    EXPECT_TRUE(view.preview().isCurrent());
}

TEST_F(DiscPreviewTest, change_whileItLooks_isNotMarkedWithWhatWasBefore)
{
    addTo(document, {tree.path(longName)});
    view.preview().look();
    document.remove({&at(u'/' + QString::fromUtf8(longName))});
    drainEventLoop();
    EXPECT_FALSE(view.preview().isRunning());
    EXPECT_TRUE(view.preview().changes().isEmpty());
}

TEST_F(DiscPreviewTest, subsets_showWhatChanges_whatIsInTrouble_andWhatIsThereTwice)
{
    addTo(document, {tree.path("letter.txt"), tree.path(longName)});
    DiscNode &folder = document.addFolder(document.model().root());
    const std::shared_ptr<TakenIn> again = takenIn({tree.path("letter.txt")});
    again->folder = {folder.name};
    EXPECT_EQ(document.addTaken(*again), QStringList());
    look();
    DiscTreeModel &model = document.model();
    const auto names = [&model] {
        QStringList shown;
        for (int row = 0; row < model.rowCount(); ++row)
            shown << model.index(row, DiscTreeModel::Name).data().toString();
        return shown;
    };
    model.setFilter({}, DiscSubset::Renamed);
    EXPECT_EQ(names(), QStringList({QString::fromUtf8(longName)}));
    model.setFilter({}, DiscSubset::Repeated);
    EXPECT_EQ(names(), QStringList({QStringLiteral("letter.txt"), QStringLiteral("letter.txt")}));
    model.setFilter(QStringLiteral("nothing"), DiscSubset::Repeated);
    EXPECT_EQ(names(), QStringList());
    model.setFilter({}, DiscSubset::Troubled);
    EXPECT_EQ(names(), QStringList());
    at(QStringLiteral("/letter.txt")).isUnreadable = true;
    model.setFilter({});
    EXPECT_EQ(model.rowCount(), 3);
    model.setFilter({}, DiscSubset::Troubled);
    EXPECT_EQ(names(), QStringList({QStringLiteral("letter.txt")}));

    // Marks that come later change what is shown.
    model.setFilter({}, DiscSubset::Renamed);
    model.setMarks({});
    EXPECT_EQ(names(), QStringList());
    look();
    EXPECT_EQ(names(), QStringList({QString::fromUtf8(longName)}));
}
