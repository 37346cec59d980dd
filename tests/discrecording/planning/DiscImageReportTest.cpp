#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <QDateTime>
#include <QTimeZone>
#include <QVariant>

#include <array>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using Kind = DRStorageReportItem::Kind;

std::shared_ptr<DRFolder> rootWith(const TemporaryTree &tree, std::initializer_list<const char *> files)
{
    auto root = DRFolder::virtualFolderWithName({});
    for (const char *const file : files)
        root->addChild(DRFile::fileWithPath(tree.pathText(file)));
    return root;
}

DRDiscTree firstTreeOf(DRFilesystemMask mask)
{
    if ((mask & DRFilesystemInclusionMaskISO9660) != 0)
        return DRDiscTree::ISO9660;
    if ((mask & DRFilesystemInclusionMaskJoliet) != 0)
        return DRDiscTree::Joliet;
    return (mask & DRFilesystemInclusionMaskUDF) != 0 ? DRDiscTree::UDF : DRDiscTree::HFSPlus;
}

} // namespace

TEST(DiscImageReport, renamedInIsoAlone_isNotLost)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("read me.txt"), "r"));
    const WrittenImage image(root);
    ASSERT_EQ(image.plan().report->count(), 1u);
    const DRStorageReportItem item = image.plan().report->item(0);
    EXPECT_EQ(item.kind, Kind::Renamed);
    EXPECT_EQ(item.tree, DRDiscTree::ISO9660);
    EXPECT_EQ(item.path, QStringLiteral("/read me.txt"));
    EXPECT_EQ(item.nameGiven, QStringLiteral("READ_ME.TXT"));
    EXPECT_FALSE(item.reason.isEmpty());
    EXPECT_FALSE(item.isLost);
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageReport, renamedEverywhere_isLost)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("what?"), "w"));
    PlanOptions options;
    options.rockRidge = false;
    const WrittenImage image(root, options);
    ASSERT_EQ(image.plan().report->count(), 2u);
    EXPECT_TRUE(image.plan().report->item(0).isLost);
    EXPECT_TRUE(image.plan().report->item(1).isLost);
    EXPECT_EQ(image.plan().report->item(1).nameGiven, QStringLiteral("what_"));
    EXPECT_EQ(image.plan().report->lostCount(), 1u) << "one object, however many trees";
}

TEST(DiscImageReport, nameThatIsLegal_isNotReported)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"README", "README.TXT", "A_B_1"})
        root->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), "x"));
    EXPECT_EQ(WrittenImage(root).plan().report->count(), 0u);
}

TEST(DiscImageReport, fileCount_isThatOfTheImage_whereItsTreesCannotHoldEverything)
{
    const TemporaryTree tree;
    tree.makeFile("file", "x");
    tree.makeSymbolicLink("link", "file");
    tree.makeFifo("fifo");
    const auto root = DRFolder::folderWithPath(tree.pathText());
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskJoliet;
    EXPECT_EQ(WrittenImage(root, options).plan().fileCount, 1u);
    options.filesystems = DRFilesystemInclusionMaskISO9660;
    EXPECT_EQ(WrittenImage(root, options).plan().fileCount, 3u) << "Rock Ridge holds them";
    options.rockRidge = false;
    EXPECT_EQ(WrittenImage(root, options).plan().fileCount, 1u);
    options.filesystems = DRFilesystemInclusionMaskJoliet | DRFilesystemInclusionMaskUDF;
    const WrittenImage withUdf(root, options);
    EXPECT_EQ(withUdf.plan().fileCount, 3u) << "UDF holds them";
}

class DiscImageWithoutAFolder : public ::testing::TestWithParam<DRFilesystemMask>
{
};

TEST_P(DiscImageWithoutAFolder, allElse_isFoundByOtherReaders)
{
    const TemporaryTree tree;
    tree.makeFolder("a");
    tree.makeFile("b/f", "1");
    tree.makeFile("b/c/g", "22");
    tree.makeFolder("z");
    const auto source = [&](const char *path) {
        FSRef ref;
        EXPECT_EQ(FSPathMakeRef(tree.path(path), &ref, nullptr), noErr);
        return ref;
    };
    // As a program lays out what it scanned: the folders are objects of their own that have sources.
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    for (const char *const name : {"a", "b", "z"}) {
        const auto folder = DRFolder::virtualFolderWithName(QString::fromUtf8(name));
        folder->setSourceRef(source(name));
        root->addChild(folder);
    }
    const auto b = std::static_pointer_cast<DRFolder>(root->children()[1]);
    b->addChild(DRFile::fileWithPath(tree.pathText("b/f")));
    b->addChild(DRFolder::folderWithPath(tree.pathText("b/c")));
    PlanOptions options;
    options.filesystems = GetParam();
    // A folder that may not be listed is found out at the same time; permissions mean nothing to a test run by root.
    tree.remove("a");
    const WrittenImage made(root, options);
    EXPECT_FALSE(made.error());
    EXPECT_FALSE(made.items(firstTreeOf(GetParam()), Kind::Refused).empty());
    constexpr std::pair<DRFilesystemMask, const char *> kinds[] = {{DRFilesystemInclusionMaskISO9660, "-tiso"},
                                                                   {DRFilesystemInclusionMaskUDF, "-tudf"},
                                                                   {DRFilesystemInclusionMaskHFSPlus, "-thfs"}};
    for (const auto &[mask, type] : kinds) {
        if ((GetParam() & mask) == 0 || (mask == DRFilesystemInclusionMaskHFSPlus && GetParam() != mask))
            continue;
        const ProgramRun result = runProgram(
            QStringLiteral("7z"), {QStringLiteral("l"), QStringLiteral("-ba"), QString::fromUtf8(type), made.path()});
        EXPECT_LE(result.status, 1) << type << result.output.toStdString() << result.errors.toStdString();
        EXPECT_TRUE(result.output.toUpper().contains("B/F")) << type << result.output.toStdString();
        EXPECT_TRUE(result.output.toUpper().contains("B/C/G")) << type << result.output.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Masks, DiscImageWithoutAFolder, ::testing::Range<DRFilesystemMask>(1, 16));

TEST(DiscImageReport, vanishedFile_isRefusedWithItsPath)
{
    const TemporaryTree tree;
    tree.makeFile("GONE", "g");
    tree.makeFile("STAYS", "s");
    const auto root = rootWith(tree, {"GONE", "STAYS"});
    tree.remove("GONE");
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.children.size(), 1u);
    ASSERT_EQ(image.plan().report->count(), 1u);
    const DRStorageReportItem item = image.plan().report->item(0);
    EXPECT_EQ(item.kind, Kind::Refused);
    EXPECT_EQ(item.path, QStringLiteral("/GONE"));
    EXPECT_EQ(item.sourcePath.toStdString(), tree.pathText("GONE").toStdString());
    EXPECT_TRUE(item.isLost);
    EXPECT_EQ(image.plan().report->lostCount(), 1u);
    EXPECT_EQ(image.plan().fileCount, 1u);
}

TEST(DiscImageReport, renamedSource_isStillFound)
{
    const TemporaryTree tree;
    tree.makeFile("BEFORE", "contents");
    const auto root = rootWith(tree, {"BEFORE"});
    ASSERT_EQ(::rename(tree.path("BEFORE").constData(), tree.path("AFTER").constData()), 0);
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    ASSERT_EQ(reader.primary()->root.children.size(), 1u);
    EXPECT_EQ(reader.contents(*reader.primary()->root.children[0]), "contents");
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageReport, movedSource_doesNotDrawItsNeighboursAlong)
{
    const TemporaryTree tree;
    tree.makeFile("HERE/A", "a");
    tree.makeFile("HERE/B", "b of here");
    tree.makeFile("THERE/B", "b of there");
    const auto root = rootWith(tree, {"HERE/A", "HERE/B"});
    FSRef moved = root->children()[0]->sourceRef();
    ASSERT_EQ(::rename(tree.path("HERE/A").constData(), tree.path("THERE/A").constData()), 0);
    char path[1024];
    if (FSRefMakePath(&moved, path, sizeof path) != noErr)
        GTEST_SKIP() << "the system does not find moved files";
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    ASSERT_EQ(reader.primary()->root.children.size(), 2u);
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("A"))), "a");
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("B"))), "b of here");
}

TEST(DiscImageReport, replacedSource_isTakenAsItIsNow)
{
    const TemporaryTree tree;
    tree.makeFile("FILE", "old");
    tree.makeFile("NEW", "new contents");
    const auto root = rootWith(tree, {"FILE"});
    ASSERT_EQ(::rename(tree.path("NEW").constData(), tree.path("FILE").constData()), 0);
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("FILE"))), "new contents");
}

TEST(DiscImageReport, renamedSource_isMeant_alsoWhereAnotherFileHasItsOldName)
{
    const TemporaryTree tree;
    tree.makeFile("NAME", "its own");
    const auto root = rootWith(tree, {"NAME"});
    ASSERT_EQ(::rename(tree.path("NAME").constData(), tree.path("OTHER").constData()), 0);
    tree.makeFile("NAME", "those of another file");
    root->children()[0]->setBaseName(QStringLiteral("OTHER")); // as a layout does that is made now
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("OTHER"))), "its own");
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageReport, sourcesOfARenamedFolder_areMeant_alsoWhereAnotherFolderHasItsOldName)
{
    const TemporaryTree tree;
    tree.makeFile("FOLDER/A", "a of its own");
    tree.makeFile("FOLDER/B", "b of its own");
    const auto root = rootWith(tree, {"FOLDER/A", "FOLDER/B"});
    ASSERT_EQ(::rename(tree.path("FOLDER").constData(), tree.path("RENAMED").constData()), 0);
    tree.makeFile("FOLDER/A", "a of another folder");
    tree.makeFile("FOLDER/B", "b of another folder");
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("A"))), "a of its own");
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("B"))), "b of its own");
}

TEST(DiscImageReport, renamedSourceThatMayNotBeRead_isRefused_whateverHasItsOldName)
{
    const TemporaryTree tree;
    tree.makeFile("NAME", "secret");
    const auto root = rootWith(tree, {"NAME"});
    ASSERT_EQ(::rename(tree.path("NAME").constData(), tree.path("OTHER").constData()), 0);
    tree.makeFile("NAME", "open to all");
    tree.setMode("OTHER", 0);
    tree.setMode("", 0755);
    const WithoutRootRights rights;
    const WrittenImage image(root);
    ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
    ASSERT_EQ(image.plan().report->count(), 1u);
    EXPECT_EQ(image.plan().report->item(0).kind, Kind::Refused);
    EXPECT_TRUE(image.plan().report->item(0).reason.contains(QStringLiteral("access was denied")));
}

/// Keeps root from reading what its permissions forbid, as a file server or a container may, while it lives; for this
/// thread and those that it starts.
class RootOfLittlePower
{
public:
    RootOfLittlePower()
    {
        EXPECT_EQ(::syscall(SYS_capget, &m_header, m_all.data()), 0);
        std::array<__user_cap_data_struct, 2> less = m_all;
        less[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
        EXPECT_EQ(::syscall(SYS_capset, &m_header, less.data()), 0);
    }
    ~RootOfLittlePower() { EXPECT_EQ(::syscall(SYS_capset, &m_header, m_all.data()), 0); }
    RootOfLittlePower(const RootOfLittlePower &) = delete;
    RootOfLittlePower &operator=(const RootOfLittlePower &) = delete;

private:
    __user_cap_header_struct m_header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> m_all = {};
};

TEST(DiscImageReport, sourceThatRootMayNotRead_isRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give up its power";
    const TemporaryTree tree;
    tree.makeFile("FOLDER/SECRET", "s");
    tree.makeFile("FOLDER/OPEN", "o");
    tree.setMode("FOLDER/SECRET", 0600);
    constexpr uid_t somebody = 65534;
    ASSERT_EQ(::chown(tree.path("FOLDER/SECRET").constData(), somebody, somebody), 0);
    const auto wholesale = DRFolder::folderWithPath(tree.pathText("FOLDER"));
    for (const auto &root : {rootWith(tree, {"FOLDER/SECRET", "FOLDER/OPEN"}), wholesale}) {
        const RootOfLittlePower power;
        const WrittenImage image(root);
        ASSERT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
        ASSERT_EQ(image.plan().report->count(), 1u);
        EXPECT_EQ(image.plan().report->item(0).path, QStringLiteral("/SECRET"));
        EXPECT_EQ(image.plan().report->item(0).kind, Kind::Refused);
        EXPECT_EQ(image.plan().fileCount, 1u);
    }
}

TEST(DiscImageReport, sourceInAFolderThatMayNotBeEntered_isRefusedForThatReason)
{
    const TemporaryTree tree;
    tree.makeFile("CLOSED/NAME", "x");
    const auto root = rootWith(tree, {"CLOSED/NAME"});
    tree.setMode("CLOSED", 0);
    tree.setMode("", 0755);
    {
        const WithoutRootRights rights;
        const WrittenImage image(root);
        ASSERT_EQ(image.plan().report->count(), 1u);
        EXPECT_EQ(image.plan().report->item(0).kind, Kind::Refused);
        EXPECT_TRUE(image.plan().report->item(0).reason.contains(QStringLiteral("access was denied")))
            << image.plan().report->item(0).reason.toStdString();
    }
    tree.setMode("CLOSED", 0755); // for the tree's end
}

TEST(DiscImageReport, fileThatBecameAFolder_isRefused)
{
    const TemporaryTree tree;
    tree.makeFile("X", "x");
    const auto root = rootWith(tree, {"X"});
    tree.remove("X");
    tree.makeFolder("X");
    const WrittenImage image(root);
    ASSERT_EQ(image.plan().report->count(), 1u);
    EXPECT_EQ(image.plan().report->item(0).kind, Kind::Refused);
    EXPECT_TRUE(image.plan().report->item(0).reason.contains(QStringLiteral("folder")));
}

TEST(DiscImageReport, unreadableFilesAndFolders_areRefused)
{
    const TemporaryTree tree;
    tree.makeFile("OPEN", "o");
    tree.makeFile("SECRET", "s");
    tree.makeFile("EMPTY");
    tree.makeFile("LOCKED/INSIDE", "i");
    FSRef lockedRef;
    ASSERT_EQ(FSPathMakeRef(tree.path("LOCKED"), &lockedRef, nullptr), noErr);
    ASSERT_EQ(::chmod(tree.path().constData(), 0755), 0);
    for (const char *const name : {"SECRET", "EMPTY", "LOCKED"})
        tree.setMode(name, 0);
    {
        const WithoutRootRights normalUser;
        const auto root = rootWith(tree, {"OPEN", "SECRET", "EMPTY"});
        // What a scanner that could not list the folder leaves: a folder without children that knows its source.
        const auto locked = DRFolder::virtualFolderWithName(QStringLiteral("LOCKED"));
        locked->setSourceRef(lockedRef);
        root->addChild(locked);
        const WrittenImage scanned(root);
        ASSERT_FALSE(scanned.error());
        const WrittenImage wholesale(DRFolder::folderWithPath(tree.pathText()));
        ASSERT_FALSE(wholesale.error()) << qPrintable(wholesale.error().localizedDescription());
        for (const WrittenImage *const image : {&scanned, &wholesale}) {
            const IsoImageReader reader(image->path());
            EXPECT_EQ(reader.problems(), QStringList());
            EXPECT_EQ(reader.primary()->root.children.size(), 2u) << "the empty file needs no reading";
            const auto refused = image->items(DRDiscTree::ISO9660, Kind::Refused);
            ASSERT_EQ(refused.size(), 2u);
            EXPECT_EQ(refused[0].path, QStringLiteral("/LOCKED"));
            EXPECT_EQ(refused[1].path, QStringLiteral("/SECRET"));
            EXPECT_TRUE(refused[0].isLost && refused[1].isLost);
        }
    }
    tree.setMode("LOCKED", 0700);
}

TEST(DiscImageReport, report_outlivesPlanAndLayout)
{
    std::shared_ptr<const DRStorageReport> report;
    {
        const auto root = DRFolder::virtualFolderWithName({});
        const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
        root->addChild(folder);
        for (int number = 0; number < 100; ++number)
            folder->addChild(DRFile::virtualFileWithName(QStringLiteral("same?%1").arg(QChar(0x100 + number)), "x"));
        report = WrittenImage(root).plan().report;
    }
    ASSERT_EQ(report->count(), 1u + 100 + 100);
    for (std::size_t index = 0; index < report->count(); ++index) {
        const DRStorageReportItem item = report->item(index);
        EXPECT_TRUE(item.path.startsWith(QStringLiteral("/folder")));
        EXPECT_FALSE(item.nameGiven.isEmpty());
    }
    EXPECT_EQ(report->count(DRDiscTree::Joliet, Kind::Renamed), 100u);
    EXPECT_EQ(report->count(DRDiscTree::UDF, Kind::Renamed), 0u);
}

TEST(DiscImageReport, reasons_areToldApart)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    for (const char *const name : {"a*b", "a?b", "README", "readme"})
        root->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), name));
    const WrittenImage image(root);
    const auto reasonOf = [&](const char *path) {
        for (const DRStorageReportItem &item : image.items(DRDiscTree::Joliet, Kind::Renamed)) {
            if (item.path == QString::fromUtf8(path))
                return item.reason;
        }
        return QString();
    };
    EXPECT_EQ(reasonOf("/a*b"), QStringLiteral("The filesystem does not allow the name as it is."));
    EXPECT_EQ(reasonOf("/a?b"),
              QStringLiteral("The filesystem does not allow the name as it is, and another object in the folder has "
                             "the one that would take its place."));
    EXPECT_EQ(reasonOf("/readme"),
              QStringLiteral("Another object in the folder has the name already, or one that the filesystem's readers "
                             "take for the same."));
    EXPECT_EQ(reasonOf("/README"), QString());
}

TEST(DiscImageReport, reasonsForNamesOnTheDisc_areToldApart)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    for (const QString &name :
         {QStringLiteral("SAME"), QStringLiteral("SAME"), QString(300, u'L'), QStringLiteral("A/B")})
        root->addChild(DRFile::virtualFileWithName(name, "x"));
    const WrittenImage image(root);
    QStringList reasons;
    for (const DRStorageReportItem &item : image.items(DRDiscTree::RockRidge, Kind::Renamed))
        reasons.append(item.reason);
    reasons.sort();
    EXPECT_EQ(reasons,
              QStringList({QStringLiteral("Another object in the folder has the name already."),
                           QStringLiteral("The name cannot be a file's."),
                           QStringLiteral("The name is longer than 255 bytes.")}));
}

TEST(DiscImageReport, volumeNameThatNoTreeHolds_isLost)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("a volume with quite a long name"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("F"), "x"));
    const WrittenImage lost(root);
    ASSERT_EQ(lost.plan().report->count(), 2u);
    for (std::size_t index = 0; index < 2; ++index) {
        EXPECT_EQ(lost.plan().report->item(index).path, QStringLiteral("/"));
        EXPECT_EQ(lost.plan().report->item(index).reason,
                  QStringLiteral("The filesystem does not allow the name of the volume as it is."));
        EXPECT_TRUE(lost.plan().report->item(index).isLost);
    }
    EXPECT_EQ(lost.plan().report->lostCount(), 0u) << "no object is lost";
    PlanOptions withUdf;
    withUdf.filesystems |= DRFilesystemInclusionMaskUDF;
    const WrittenImage kept(root, withUdf);
    for (std::size_t index = 0; index < kept.plan().report->count(); ++index)
        EXPECT_FALSE(kept.plan().report->item(index).isLost);
}

TEST(DiscImageReport, timesOfTheRootAndOfAccess_areChecked)
{
    const QDateTime late(QDate(2200, 1, 1), QTime(0, 0), QTimeZone::utc());
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    const auto file = DRFile::virtualFileWithName(QStringLiteral("F"), "x");
    file->setProperty(late, DRAccessDate, DRAllFilesystems);
    root->addChild(file);
    root->setProperty(late, DRContentModificationDate, DRAllFilesystems);
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskHFSPlus;
    const WrittenImage image(root, options);
    for (const DRDiscTree tree : {DRDiscTree::ISO9660, DRDiscTree::HFSPlus}) {
        QStringList paths;
        for (const DRStorageReportItem &item : image.items(tree, Kind::Altered))
            paths.append(item.path);
        EXPECT_EQ(paths, QStringList({QStringLiteral("/"), QStringLiteral("/F")})) << static_cast<int>(tree);
    }
}

TEST(DiscImageReport, filesOfManySections_areTold)
{
    const TemporaryTree tree;
    tree.makeSparseFile("HUGE", (std::int64_t{101} << 32));
    tree.makeSparseFile("BIG", (std::int64_t{5} << 30));
    const auto pathsFor = [&](int level, const char *words) {
        const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
        root->addChild(DRFile::fileWithPath(tree.pathText("HUGE")));
        root->addChild(DRFile::fileWithPath(tree.pathText("BIG")));
        if (level > 0)
            root->setProperty(level, DRISOLevel, DRAllFilesystems);
        NSError error;
        const DiscImagePlan plan = planDiscImage(root, {}, {}, {}, &error);
        QStringList paths;
        for (std::size_t index = 0; plan.report && index < plan.report->count(); ++index) {
            const DRStorageReportItem item = plan.report->item(index);
            if (item.tree == DRDiscTree::ISO9660 && item.reason.contains(QString::fromUtf8(words)))
                paths.append(item.path);
        }
        return paths;
    };
    EXPECT_EQ(pathsFor(0, "100 sections"), QStringList({QStringLiteral("/HUGE")}));
    EXPECT_EQ(pathsFor(0, "several sections"), QStringList());
    EXPECT_EQ(pathsFor(1, "several sections"), QStringList({QStringLiteral("/BIG"), QStringLiteral("/HUGE")}));
    EXPECT_EQ(pathsFor(3, "several sections"), QStringList());
}

} // namespace Tessaron::Testing
