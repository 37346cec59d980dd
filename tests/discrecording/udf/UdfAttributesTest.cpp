#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/discrecording/udf/UdfImageReader.h"
#include "tests/support/TemporaryTree.h"

#include <QDateTime>
#include <QVariant>
#include <QtEndian>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// UDF alone, with the times as they are.
WrittenImage imageOf(const std::shared_ptr<DRFolder> &root)
{
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskUDF;
    options.sourceDateEpoch.reset();
    return WrittenImage(root, options);
}

using Kind = DRStorageReportItem::Kind;

} // namespace

TEST(UdfAttributes, hardLinks_areOneFileEntry_withSeveralNames)
{
    const TemporaryTree tree;
    tree.makeFile("file", "one");
    tree.makeHardLink("folder/second", "file");
    tree.makeHardLink("folder/third", "file");
    tree.makeFile("alone", "two");
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    const auto &objects = reader.objects();
    EXPECT_EQ(objects.at("file").links, 3);
    EXPECT_EQ(objects.at("file").icb, objects.at("folder/second").icb);
    EXPECT_EQ(objects.at("file").icb, objects.at("folder/third").icb);
    EXPECT_NE(objects.at("file").icb, objects.at("alone").icb);
    EXPECT_EQ(objects.at("alone").links, 1);
    EXPECT_EQ(objects.at("").links, 2);
    EXPECT_EQ(reader.contents("folder/third"), "one");
}

TEST(UdfAttributes, oneFileWithOtherAttributes_hasAFileEntryOfItsOwn_overTheSameExtent)
{
    const TemporaryTree tree;
    tree.makeFile("file", "one");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto plain = DRFile::fileWithPath(tree.pathText("file"));
    const auto other = DRFile::fileWithPath(tree.pathText("file"));
    other->setBaseName(QStringLiteral("other"));
    other->setProperty(0400u, DRPosixFileMode, DRAllFilesystems);
    root->addChild(plain);
    root->addChild(other);
    const WrittenImage image = imageOf(root);
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_NE(reader.objects().at("file").icb, reader.objects().at("other").icb);
    EXPECT_EQ(reader.objects().at("file").extents, reader.objects().at("other").extents);
    EXPECT_EQ(reader.objects().at("other").permissions, 04u << 10);
}

TEST(UdfAttributes, permissionsAndOwner_areTheSources)
{
    const TemporaryTree tree;
    tree.makeFile("file", "x");
    tree.setMode("file", 0754);
    tree.makeFile("special", "x");
    tree.setMode("special", 07611);
    struct stat status;
    ASSERT_EQ(::stat(tree.path("special").constData(), &status), 0);
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    const UdfImageReader reader(image.path());
    const UdfObject file = reader.objects().at("file");
    EXPECT_EQ(file.permissions, 07u << 10 | 05u << 5 | 04u);
    EXPECT_EQ(file.userId, status.st_uid);
    EXPECT_EQ(file.groupId, status.st_gid);
    EXPECT_EQ(file.flags, 0);
    const UdfObject special = reader.objects().at("special");
    EXPECT_EQ(special.permissions, 06u << 10 | 01u << 5 | 01u);
    EXPECT_EQ(special.flags,
              static_cast<int>((status.st_mode >> 9 & 4) << 4 | (status.st_mode >> 9 & 2) << 6
                               | (status.st_mode >> 9 & 1) << 8));
}

TEST(UdfAttributes, owner_isUnset_whereNobodyGaveOne)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto owned = DRFile::virtualFileWithName(QStringLiteral("owned"), "x");
    owned->setProperty(0u, DRPosixUID, DRAllFilesystems);
    owned->setProperty(100u, DRPosixGID, DRAllFilesystems);
    root->addChild(owned);
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("unowned"), "x"));
    const WrittenImage image = imageOf(root);
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.objects().at("unowned").userId, 0xFFFFFFFFu);
    EXPECT_EQ(reader.objects().at("unowned").groupId, 0xFFFFFFFFu);
    EXPECT_EQ(reader.objects().at("owned").userId, 0u);
    EXPECT_EQ(reader.objects().at("owned").groupId, 100u);
}

TEST(UdfAttributes, hiddenObjects_areHiddenInTheirFolder)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto add = [&](const char *name, DRFilesystem filesystem) {
        const auto file = DRFile::virtualFileWithName(QString::fromLatin1(name), "x");
        file->setProperty(true, DRInvisible, filesystem);
        root->addChild(file);
    };
    add("everywhere", DRAllFilesystems);
    add("udf", DRUDF);
    add("joliet", DRJoliet);
    const WrittenImage image = imageOf(root);
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_TRUE(reader.objects().at("everywhere").isHidden);
    EXPECT_TRUE(reader.objects().at("udf").isHidden);
    EXPECT_FALSE(reader.objects().at("joliet").isHidden);
}

TEST(UdfAttributes, times_areUtcToTheMicrosecond)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto add = [&](const char *name, qint64 milliseconds) {
        const auto file = DRFile::virtualFileWithName(QString::fromLatin1(name), "x");
        file->setProperty(QDateTime::fromMSecsSinceEpoch(milliseconds), DRContentModificationDate, DRAllFilesystems);
        root->addChild(file);
    };
    add("recent", 1'234'567'890'123);
    add("old", -86'400'000 - 1);
    const WrittenImage image = imageOf(root);
    const UdfImageReader reader(image.path());
    const int utc = 1 << 12; // local time, 0 minutes from UTC
    EXPECT_EQ(reader.objects().at("recent").modification, (std::vector<int>{utc, 2009, 2, 13, 23, 31, 30, 12, 30, 0}));
    EXPECT_EQ(reader.objects().at("old").modification, (std::vector<int>{utc, 1969, 12, 30, 23, 59, 59, 99, 90, 0}));
    EXPECT_EQ(image.plan().report->count(), 0u);
}

TEST(UdfAttributes, time_isTheLastPossible_andReported_whenItIsBeyondTheCalendar)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    const auto file = DRFile::virtualFileWithName(QStringLiteral("f"), "x");
    file->setProperty(QDateTime::fromSecsSinceEpoch(300'000'000'000), DRContentModificationDate, DRAllFilesystems);
    root->addChild(file);
    const WrittenImage image = imageOf(root);
    const auto altered = image.items(DRDiscTree::UDF, Kind::Altered);
    ASSERT_EQ(altered.size(), 1u);
    EXPECT_TRUE(altered[0].reason.contains(QStringLiteral("1 to 9999")));
    const auto modification = UdfImageReader(image.path()).objects().at("f").modification;
    EXPECT_EQ(std::vector<int>(modification.begin() + 1, modification.begin() + 7),
              (std::vector<int>{9999, 12, 31, 23, 59, 59}));
}

TEST(UdfAttributes, symbolicLinks_keepTheirTargets)
{
    const TemporaryTree tree;
    const QByteArrayList targets{"../up", "/absolute/path", "a/./b/../c", "/", "..", "\xE2\x82\xAC/x"};
    for (qsizetype index = 0; index < targets.size(); ++index)
        tree.makeSymbolicLink("link" + QByteArray::number(index), targets[index]);
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    for (qsizetype index = 0; index < targets.size(); ++index) {
        const UdfObject link = reader.objects().at("link" + QByteArray::number(index));
        EXPECT_EQ(link.type, 12);
        EXPECT_EQ(link.linkTarget, targets[index]);
    }
    EXPECT_EQ(image.plan().report->count(), 0u);
}

TEST(UdfAttributes, symbolicLink_isReported_whenItsTargetChanges)
{
    const TemporaryTree tree;
    tree.makeSymbolicLink("a slashes", "x//y/");
    tree.makeSymbolicLink("b bytes", "x\xFF");
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.objects().at("a slashes").linkTarget, "x/y");
    EXPECT_EQ(reader.objects().at("b bytes").linkTarget, "x_");
    const auto altered = image.items(DRDiscTree::UDF, Kind::Altered);
    ASSERT_EQ(altered.size(), 2u);
    EXPECT_TRUE(altered[0].reason.contains(QStringLiteral("simpler form")));
    EXPECT_TRUE(altered[1].reason.contains(QStringLiteral("may lead nowhere")));
}

TEST(UdfAttributes, symbolicLink_isRefusedAndReported_whenItsTargetIsTooLong)
{
    const TemporaryTree tree;
    // Components of 4 + 1 + 99 bytes: 18 of them fill 1872 bytes exactly.
    const QByteArray component = QByteArray(99, 'x') + '/';
    tree.makeSymbolicLink("fits", component.repeated(18).chopped(1));
    tree.makeSymbolicLink("too long", component.repeated(18) + 'y');
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.objects().at("fits").embedded.size(), 2048 - 176);
    EXPECT_FALSE(reader.objects().contains("too long"));
    const auto refused = image.items(DRDiscTree::UDF, Kind::Refused);
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_TRUE(refused[0].isLost);
}

TEST(UdfAttributes, specialFiles_areStoredWithTheirTypes)
{
    const TemporaryTree tree;
    tree.makeFifo("fifo");
    const bool hasDevices = ::mknod(tree.path("character").constData(), S_IFCHR | 0600, makedev(5, 300)) == 0
        && ::mknod(tree.path("block").constData(), S_IFBLK | 0600, makedev(8, 1)) == 0
        && ::mknod(tree.path("socket").constData(), S_IFSOCK | 0600, 0) == 0;
    const WrittenImage image = imageOf(DRFolder::folderWithPath(tree.pathText()));
    const UdfImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.objects().at("fifo").type, 9);
    EXPECT_EQ(image.plan().report->count(), 0u);
    if (!hasDevices)
        GTEST_SKIP() << "device files cannot be made here";
    EXPECT_EQ(reader.objects().at("socket").type, 10);
    EXPECT_EQ(reader.objects().at("block").type, 6);
    const UdfObject character = reader.objects().at("character");
    EXPECT_EQ(character.type, 7);
    ASSERT_EQ(character.attributes.size(), 24 + 56);
    const char *const device = character.attributes.constData() + 24;
    EXPECT_EQ(qFromLittleEndian<quint32>(device), 12u);
    EXPECT_EQ(qFromLittleEndian<quint32>(device + 8), 56u);
    EXPECT_EQ(qFromLittleEndian<quint32>(device + 16), 5u);
    EXPECT_EQ(qFromLittleEndian<quint32>(device + 20), 300u);
}

} // namespace Tessaron::Testing
