#include "platform/discimage/VolumeFinder.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discimage/hfsplus/WalkedVolume.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <sys/stat.h>

namespace Tessaron::Testing
{

namespace
{

constexpr DRFilesystemMask hfsPlusOnly = DRFilesystemInclusionMaskHFSPlus;

struct WrittenVolume {
    explicit WrittenVolume(const std::shared_ptr<DRFolder> &root, DRFilesystemMask filesystems = hfsPlusOnly)
        : written(root, optionsFor(filesystems))
        , source(DiscImageSource::sourceWithFile(written.path()).source)
        , walked(source)
    {
        EXPECT_FALSE(written.error());
        EXPECT_TRUE(walked.opened.reader);
        EXPECT_FALSE(walked.opened.error) << qPrintable(walked.opened.error.localizedFailureReason());
        EXPECT_EQ(walked.errors, QStringList());
    }

    static PlanOptions optionsFor(DRFilesystemMask filesystems)
    {
        PlanOptions options;
        options.filesystems = filesystems;
        options.sourceDateEpoch = std::nullopt;
        return options;
    }

    WrittenImage written;
    std::shared_ptr<const DiscImageSource> source;
    WalkedVolume walked;
};

} // namespace

class HfsPlusVolumes : public ::testing::TestWithParam<DRFilesystemMask>
{
};

TEST_P(HfsPlusVolumes, walk_tellsWhatTheSourceIs)
{
    const TemporaryTree tree;
    tree.makeFile("folder/Ünïcode", QByteArray(70'000, 'u'));
    tree.makeFile("folder/empty");
    tree.makeFile("colon:name", "colon");
    tree.makeFile("emoji \xF0\x9F\x98\x80", "emoji");
    tree.makeFile(QByteArray(255, 'a'), "long");
    tree.makeSymbolicLink("link", "folder/empty");
    tree.makeFifo("pipe");
    tree.setModificationTime("colon:name", 1'000'000'001);
    tree.setMode("colon:name", 0640);
    const WrittenVolume volume(DRFolder::folderWithPath(tree.pathText()), GetParam());
    const WalkedVolume &walked = volume.walked;
    const QList<QByteArray> expected = {QByteArray(255, 'a'),
                                        "colon:name",
                                        "emoji \xF0\x9F\x98\x80",
                                        "folder",
                                        "folder/empty",
                                        "folder/Ünïcode",
                                        "link",
                                        "pipe"};
    EXPECT_EQ(walked.objects.keys(), expected);
    EXPECT_EQ(walked.contents("folder/Ünïcode"), QByteArray(70'000, 'u'));
    EXPECT_EQ(walked.contents("colon:name"), "colon");
    EXPECT_EQ(walked.contents("folder/empty"), "");
    EXPECT_EQ(walked.objects["colon:name"].modified->seconds, 1'000'000'001);
    EXPECT_EQ(walked.objects["colon:name"].mode, std::uint32_t(S_IFREG | 0640));
    EXPECT_EQ(walked.objects["folder"].kind, VolumeObjectKind::Folder);
    EXPECT_EQ(walked.objects["link"].kind, VolumeObjectKind::SymbolicLink);
    EXPECT_EQ(walked.objects["link"].linkTarget, "folder/empty");
    EXPECT_EQ(walked.objects["link"].size, 0u);
    EXPECT_EQ(walked.objects["pipe"].kind, VolumeObjectKind::Other);
}

INSTANTIATE_TEST_SUITE_P(Masks, HfsPlusVolumes, ::testing::Range<DRFilesystemMask>(8, 16));

TEST(HfsPlusVolumeReader, facts_areThoseOfTheVolume)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("Müll: 1"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("file"), "f"));
    const WrittenVolume volume(root);
    const DiscVolumeFacts &facts = volume.walked.opened.reader->facts();
    EXPECT_EQ(facts.kind, VolumeKind::HFSPlus);
    EXPECT_EQ(facts.name, QStringLiteral("Müll: 1"));
    EXPECT_EQ(facts.blockSize, 2048u);
    EXPECT_EQ(facts.offset, 16384u);
    EXPECT_LE(facts.offset + facts.blockCount * 2048, volume.source->length());
    EXPECT_EQ(facts.created, facts.modified);
    EXPECT_EQ(volume.walked.opened.reader->root().kind, VolumeObjectKind::Folder);
}

TEST(HfsPlusVolumeReader, namesOfOneFile_haveOneIdentity_andItsContents)
{
    const TemporaryTree tree;
    tree.makeFile("a", "shared");
    tree.makeHardLink("sub/b", "a");
    tree.makeFile("other", "shared");
    const WrittenVolume volume(DRFolder::folderWithPath(tree.pathText()), 15);
    const WalkedVolume &walked = volume.walked;
    EXPECT_EQ(walked.objects.keys(), QList<QByteArray>({"a", "other", "sub", "sub/b"}));
    EXPECT_EQ(walked.objects["a"].identity, walked.objects["sub/b"].identity);
    EXPECT_NE(walked.objects["a"].identity, walked.objects["other"].identity);
    EXPECT_EQ(walked.objects["a"].extents, walked.objects["sub/b"].extents);
    EXPECT_EQ(walked.contents("sub/b"), "shared");
}

TEST(HfsPlusVolumeReader, manyFiles_areAllTold_inTheOrderOfTheVolume)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("many"));
    for (int number = 0; number < 20'000; ++number) {
        const QString name = (number % 2 ? QStringLiteral("File %1") : QStringLiteral("ÄFILE-%1")).arg(number);
        root->addChild(DRFile::virtualFileWithName(name, QByteArray::number(number)));
    }
    const WrittenVolume volume(root);
    EXPECT_EQ(volume.walked.objects.size(), 20'000);
    EXPECT_EQ(volume.walked.contents("File 12345"), "12345");
    EXPECT_EQ(volume.walked.contents("ÄFILE-19998"), "19998");
    int told = 0;
    EXPECT_FALSE(volume.walked.opened.reader->listFolder(volume.walked.opened.reader->root(),
                                                         [&told](const VolumeObject &) { return ++told < 5; }));
    EXPECT_EQ(told, 5) << "the visitor ends it";
}

TEST(HfsPlusVolumeReader, imageWithoutVolume_hasNeitherReaderNorError)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("file"), "f"));
    const WrittenImage written(root, WrittenVolume::optionsFor(7));
    for (const auto &source :
         {DiscImageSource::sourceWithFile(written.path()).source,
          DiscImageSource::sourceWithBytes(QByteArray(100'000, '\0')), DiscImageSource::sourceWithBytes({})}) {
        const VolumeReaderResult result = HfsPlusVolumeReader::open(source);
        EXPECT_FALSE(result.reader);
        EXPECT_FALSE(result.error);
    }
}

TEST(HfsPlusVolumeReader, allFilesystemsOfAnImage_haveTheSameExtents)
{
    const TemporaryTree tree;
    for (const char *const name : {"a", "folder/b", "folder/deeper/c"})
        tree.makeFile(name, QByteArray(30'000, name[0]));
    tree.makeHardLink("linked", "folder/b");
    tree.makeSparseFile("huge", (qint64(5) << 30) + 1);
    const WrittenVolume volume(DRFolder::folderWithPath(tree.pathText()), 15);
    int compared = 0;
    for (const FoundVolume &found : volumesInImage(volume.source)) {
        if (found.kind != VolumeKind::RockRidge && found.kind != VolumeKind::UDF)
            continue;
        ASSERT_TRUE(found.reader);
        VolumeWalker walker;
        walker.object = [&](const QByteArray &folder, const VolumeObject &object) {
            if (object.kind != VolumeObjectKind::File)
                return true;
            const QByteArray path = folder.isEmpty() ? object.name : folder + '/' + object.name;
            const VolumeObject here = volume.walked.objects.value(path);
            EXPECT_EQ(here.extents, object.extents) << path.toStdString() << " " << int(found.kind);
            EXPECT_EQ(here.size, object.size) << path.toStdString();
            ++compared;
            return true;
        };
        EXPECT_TRUE(walkVolume(*found.reader, walker));
    }
    EXPECT_EQ(compared, 10) << "five files in each of the two";
}

TEST(HfsPlusVolumeReader, volumeOfAnotherWriter_isRead)
{
    if (!hasProgram(QStringLiteral("xorriso")))
        GTEST_SKIP() << "xorriso is not installed";
    const TemporaryTree tree;
    tree.makeFile("in/folder/Ünïcode", QByteArray(70'000, 'u'));
    tree.makeFile("in/plain.txt", "plain");
    for (int number = 0; number < 300; ++number)
        tree.makeFile("in/many/file " + QByteArray::number(number), QByteArray::number(number));
    const QString image = tree.pathText("image.iso");
    ASSERT_EQ(runProgram(QStringLiteral("xorriso"),
                         {QStringLiteral("-as"), QStringLiteral("mkisofs"), QStringLiteral("-quiet"),
                          QStringLiteral("-hfsplus"), QStringLiteral("-o"), image, tree.pathText("in")})
                  .status,
              0);
    const WalkedVolume walked(DiscImageSource::sourceWithFile(image).source);
    ASSERT_TRUE(walked.opened.reader);
    EXPECT_EQ(walked.errors, QStringList());
    EXPECT_EQ(walked.objects.size(), 304);
    EXPECT_EQ(walked.contents("plain.txt"), "plain");
    EXPECT_EQ(walked.contents("folder/Ünïcode"), QByteArray(70'000, 'u'));
    EXPECT_EQ(walked.contents("many/file 299"), "299");
}

} // namespace Tessaron::Testing
