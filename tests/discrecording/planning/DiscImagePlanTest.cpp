#include "platform/discrecording/planning/DiscImagePlan.h"

#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"
#include "tests/support/WithoutThreads.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

std::shared_ptr<DRFile> maskedFile(const char *name, DRFilesystemMask mask)
{
    auto file = DRFile::virtualFileWithName(QString::fromUtf8(name), name);
    file->setExplicitFilesystemMask(mask);
    return file;
}

std::shared_ptr<DRFolder> maskedFolder(const char *name, DRFilesystemMask mask)
{
    auto folder = DRFolder::virtualFolderWithName(QString::fromUtf8(name));
    folder->setExplicitFilesystemMask(mask);
    return folder;
}

constexpr DRFilesystemMask iso = DRFilesystemInclusionMaskISO9660;
constexpr DRFilesystemMask joliet = DRFilesystemInclusionMaskJoliet;
constexpr DRFilesystemMask hfsPlus = DRFilesystemInclusionMaskHFSPlus;

} // namespace

TEST(PlanDiscImage, plan_isMadeAlone_whenTheSystemHasNoThread)
{
    const TemporaryTree tree;
    for (int number = 0; number < 5000; ++number) // as many as are worth threads
        tree.makeFile("files/" + QByteArray::number(number), "x");
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskAll;
    options.threadCount = 4;
    options.sourceDateEpoch = 1'700'000'000;
    const auto root = DRFolder::folderWithPath(tree.pathText());
    const auto planned = [&] {
        NSError error;
        const DiscImagePlan plan = planDiscImage(root, options, {}, {}, &error);
        EXPECT_FALSE(error) << error.localizedDescription().toStdString();
        return std::pair(plan.fileCount, plan.image ? plan.image->blockCount() : 0);
    };
    const auto withThreads = planned();
    const WithoutThreads none;
    EXPECT_EQ(planned(), withThreads);
    EXPECT_EQ(withThreads.first, 5000u);
}

TEST(PlanDiscImage, emptyRoot_getsAllAllowedFilesystems)
{
    const WrittenImage both(DRFolder::virtualFolderWithName(QStringLiteral("empty")));
    const IsoImageReader reader(both.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_TRUE(reader.primary() && reader.joliet());
    PlanOptions options;
    options.filesystems = joliet;
    const WrittenImage one(DRFolder::virtualFolderWithName(QStringLiteral("empty")), options);
    const IsoImageReader readerOfOne(one.path());
    EXPECT_EQ(readerOfOne.problems(), QStringList());
    EXPECT_TRUE(readerOfOne.primary() && readerOfOne.joliet()) << "the latter needs the former";
}

TEST(PlanDiscImage, filesystemThatNobodyWants_isLeftOut)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(maskedFile("a", joliet | hfsPlus));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    ASSERT_TRUE(reader.primary()) << "Joliet needs one";
    EXPECT_TRUE(reader.primary()->root.children.empty());
    ASSERT_TRUE(reader.joliet());
    EXPECT_EQ(reader.joliet()->root.children.size(), 1u);
    EXPECT_EQ(image.plan().report->count(), 0u);
}

TEST(PlanDiscImage, masks_areInheritedAndOverridden)
{
    const auto root = DRFolder::virtualFolderWithName({});
    const auto folder = maskedFolder("FOLDER", iso);
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("INHERITS"), "1"));
    folder->addChild(maskedFile("OWN", joliet));
    root->addChild(folder);
    const auto onlyIso = maskedFolder("ONLYISO", iso);
    onlyIso->addChild(DRFolder::virtualFolderWithName(QStringLiteral("DEEPER")));
    root->addChild(onlyIso);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    const auto has = [](const IsoVolume *volume, const char *path) {
        return IsoImageReader::objectAt(*volume, QString::fromUtf8(path)) != nullptr;
    };
    EXPECT_TRUE(has(reader.primary(), "/FOLDER/INHERITS"));
    EXPECT_FALSE(has(reader.primary(), "/FOLDER/OWN"));
    EXPECT_FALSE(has(reader.joliet(), "/FOLDER/INHERITS"));
    EXPECT_TRUE(has(reader.joliet(), "/FOLDER/OWN")) << "a folder is where something below it is";
    EXPECT_TRUE(has(reader.primary(), "/ONLYISO/DEEPER"));
    EXPECT_FALSE(has(reader.joliet(), "/ONLYISO"));
    EXPECT_EQ(image.plan().fileCount, 2u);
    EXPECT_EQ(image.plan().folderCount, 3u);
}

TEST(PlanDiscImage, objectThatNoFilesystemMayHold_isReportedAsLost)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(maskedFile("MAC", hfsPlus));
    root->addChild(maskedFile("ALL", 15));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.children.size(), 1u);
    ASSERT_EQ(image.plan().report->count(), 1u);
    const DRStorageReportItem item = image.plan().report->item(0);
    EXPECT_EQ(item.kind, DRStorageReportItem::Kind::Refused);
    EXPECT_EQ(item.path, QStringLiteral("/MAC"));
    EXPECT_TRUE(item.isLost);
    EXPECT_EQ(image.plan().fileCount, 1u);
}

TEST(PlanDiscImage, noFilesystemAtAll_isAnError)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(maskedFile("mac", hfsPlus));
    const WrittenImage image(root);
    EXPECT_FALSE(image.plan().image);
    EXPECT_EQ(image.error().code(), paramErr);
    EXPECT_FALSE(image.error().localizedDescription().isEmpty());
}

TEST(PlanDiscImage, nullRoot_isAnError)
{
    const WrittenImage image(nullptr);
    EXPECT_FALSE(image.plan().image);
    EXPECT_TRUE(image.error());
}

TEST(PlanDiscImage, rootThatCannotBeListed_isAnError)
{
    auto tree = std::make_unique<TemporaryTree>();
    tree->makeFolder("root");
    const auto root = DRFolder::folderWithPath(tree->pathText("root"));
    ASSERT_TRUE(root);
    tree.reset();
    const WrittenImage image(root);
    EXPECT_FALSE(image.plan().image);
    EXPECT_EQ(image.error().code(), fnfErr);
}

TEST(PlanDiscImage, cancel_givesNeitherPlanNorError_atAnyStage)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (int number = 0; number < 300; ++number) {
        const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("f%1").arg(number));
        for (int file = 0; file < 20; ++file)
            folder->addChild(DRFile::virtualFileWithName(QString::number(file), "x"));
        root->addChild(folder);
    }
    PlanOptions options;
    options.threadCount = 1; // so that each run tells the same shares
    std::vector<double> told;
    {
        NSError error;
        EXPECT_TRUE(planDiscImage(
                        root, options, {}, [&](double share) { told.push_back(share); }, &error)
                        .image);
    }
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), 1.0);
    // Cancelled within each call of the progress function but the last, which comes when all is done.
    for (std::size_t call = 0; call + 1 < told.size(); ++call) {
        std::stop_source stopper;
        std::size_t calls = 0;
        NSError error;
        const auto cancel = [&](double) {
            if (calls++ == call)
                stopper.request_stop();
        };
        const DiscImagePlan plan = planDiscImage(root, options, stopper.get_token(), cancel, &error);
        EXPECT_FALSE(plan.image) << call;
        EXPECT_FALSE(plan.report) << call;
        EXPECT_FALSE(error) << call;
    }
}

TEST(PlanDiscImage, image_isReproducible_withSourceDateEpoch)
{
    const auto make = [](const TemporaryTree &tree, bool reversed) {
        std::vector<QByteArray> names{"b c", "b+c", "a", "z/y", "z/x"};
        if (reversed)
            std::reverse(names.begin(), names.end());
        for (const QByteArray &name : names) {
            tree.makeFile(name, "contents of " + name);
            tree.setModificationTime(name, name == "a" ? 2'000'000'000 : 1'600'000'000);
        }
        tree.makeHardLink("link", "a");
        tree.setModificationTime("z", 1'600'000'000);
        tree.setModificationTime("", 1'600'000'000);
    };
    PlanOptions options;
    options.sourceDateEpoch = 1'700'000'000;
    QByteArray first;
    for (const bool reversed : {false, true}) {
        const TemporaryTree tree;
        make(tree, reversed);
        const auto root = DRFolder::folderWithPath(tree.pathText());
        root->setBaseName(QStringLiteral("same"));
        NSError error;
        const DiscImagePlan plan = planDiscImage(root, options, {}, {}, &error);
        ASSERT_TRUE(plan.image);
        const QByteArray bytes = imageBytes(*plan.image, 64);
        if (first.isEmpty())
            first = bytes;
        EXPECT_TRUE(bytes == first);
        EXPECT_TRUE(bytes.contains("2023111422132000")) << "the volume's date is the given one";
    }
}

TEST(PlanDiscImage, times_areNoLaterThanSourceDateEpoch)
{
    const TemporaryTree tree;
    tree.makeFile("LATE", "l");
    tree.setModificationTime("LATE", 1'800'000'000);
    tree.makeFile("EARLY", "e");
    tree.setModificationTime("EARLY", 1'500'000'000);
    PlanOptions options;
    options.sourceDateEpoch = 1'700'000'000;
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), options);
    const IsoImageReader reader(image.path());
    const RockRidgeEntry &late = *reader.primary()->root.child(QStringLiteral("LATE"))->rockRidge;
    EXPECT_EQ(late.modificationTime, 1'700'000'000);
    EXPECT_EQ(late.attributeTime, 1'700'000'000);
    const RockRidgeEntry &early = *reader.primary()->root.child(QStringLiteral("EARLY"))->rockRidge;
    EXPECT_EQ(early.modificationTime, 1'500'000'000);
    EXPECT_EQ(early.attributeTime, 1'500'000'000);
}

TEST(PlanDiscImage, sourceDateEpoch_isTakenFromTheEnvironment_whenItIsANumber)
{
    ::setenv("SOURCE_DATE_EPOCH", "1234567890", 1);
    EXPECT_EQ(sourceDateEpochFromEnvironment(), 1'234'567'890);
    EXPECT_EQ(PlanOptions().sourceDateEpoch, 1'234'567'890);
    for (const char *const value : {"", "12x", "x", "99999999999999999999"}) {
        ::setenv("SOURCE_DATE_EPOCH", value, 1);
        EXPECT_FALSE(sourceDateEpochFromEnvironment()) << value;
    }
    ::unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_FALSE(sourceDateEpochFromEnvironment());
}

TEST(PlanDiscImage, volumeCreationDate_isTheOneThatWasSet)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->setProperty(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6), Qt::UTC), DRVolumeCreationDate, DRAllFilesystems);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.primary()->creationDate, QByteArray("2001020304050600\0", 17));
}

} // namespace Tessaron::Testing
