#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/discrecording/udf/UdfImageReader.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// An image with UDF alone of the files of these names.
class NamedFiles
{
public:
    explicit NamedFiles(const QByteArrayList &names)
        : m_image((makeFiles(m_tree, names), DRFolder::folderWithPath(m_tree.pathText())), options())
        , m_reader(m_image.path())
    {
        EXPECT_EQ(m_reader.problems(), QStringList());
    }

    [[nodiscard]] QByteArrayList paths() const
    {
        QByteArrayList result;
        for (const auto &[path, object] : m_reader.objects()) {
            if (!path.isEmpty())
                result.append(path);
        }
        return result;
    }
    [[nodiscard]] QByteArray recorded(const QByteArray &path) const { return m_reader.objects().at(path).recordedName; }
    [[nodiscard]] std::vector<DRStorageReportItem> renamed() const
    {
        return m_image.items(DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed);
    }

private:
    static void makeFiles(const TemporaryTree &tree, const QByteArrayList &names)
    {
        for (const QByteArray &name : names)
            tree.makeFile(name, name);
    }
    static PlanOptions options()
    {
        PlanOptions result;
        result.filesystems = DRFilesystemInclusionMaskUDF;
        return result;
    }

    TemporaryTree m_tree;
    WrittenImage m_image;
    UdfImageReader m_reader;
};

} // namespace

TEST(UdfNamesOnDisc, name_isRecordedInEightBits_whileAllCharactersFit)
{
    const QByteArray umlaut = "\xC3\xBC";
    const NamedFiles files({"plain", umlaut});
    EXPECT_EQ(files.recorded("plain"), "\x08plain");
    EXPECT_EQ(files.recorded(umlaut), "\x08\xFC");
    EXPECT_TRUE(files.renamed().empty());
}

TEST(UdfNamesOnDisc, name_isRecordedInSixteenBits_whenOneCharacterNeedsThem)
{
    const QByteArray euro = "a\xE2\x82\xAC";
    const QByteArray emoji = "\xF0\x9F\x98\x80.txt";
    const NamedFiles files({euro, emoji});
    EXPECT_EQ(files.recorded(euro), QByteArray("\x10\0a\x20\xAC", 5));
    EXPECT_EQ(files.recorded(emoji), QByteArray("\x10\xD8\x3D\xDE\0\0.\0t\0x\0t", 13));
    EXPECT_TRUE(files.renamed().empty());
}

TEST(UdfNamesOnDisc, name_isKept_upToTheLimitOfItsRecording)
{
    const QByteArray narrow(254, 'n');
    const QByteArray wide = QByteArray("\xD0\xB6").repeated(127);
    const QByteArray mixed = QByteArray(126, 'm') + "\xD0\xB6";
    const NamedFiles files({narrow, wide, mixed});
    EXPECT_EQ(files.paths(), (QByteArrayList{mixed, narrow, wide}));
    EXPECT_EQ(files.recorded(narrow).size(), 255);
    EXPECT_EQ(files.recorded(wide).size(), 255);
    EXPECT_TRUE(files.renamed().empty());
}

TEST(UdfNamesOnDisc, name_isCutBeforeItsExtension_andReported_whenItIsTooLong)
{
    const QByteArray narrow = QByteArray(251, 'n') + ".txt";
    const QByteArray wide = QByteArray(200, 'w') + "\xD0\xB6.txt";
    const NamedFiles files({narrow, wide});
    EXPECT_EQ(files.paths(), (QByteArrayList{QByteArray(250, 'n') + ".txt", QByteArray(123, 'w') + ".txt"}));
    const auto renamed = files.renamed();
    ASSERT_EQ(renamed.size(), 2u);
    EXPECT_EQ(renamed[0].path.toUtf8(), '/' + narrow);
    EXPECT_EQ(renamed[0].nameGiven.toUtf8(), QByteArray(250, 'n') + ".txt");
    EXPECT_TRUE(renamed[0].isLost) << "no other tree has the name";
}

TEST(UdfNamesOnDisc, names_areToldApart_whenTheyBecomeTheSame)
{
    const NamedFiles files({"f\xFF.txt", "f\xFE.txt", "f_.txt", "other"});
    EXPECT_EQ(files.paths(), (QByteArrayList{"f_.txt", "f__1.txt", "f__2.txt", "other"}));
    EXPECT_EQ(files.renamed().size(), 2u);
    // Two that are cut to the same, of which the first in order is cut, too.
    const NamedFiles cut({QByteArray(251, 'n') + ".txt", QByteArray(252, 'n') + "xyz", QByteArray(250, 'n') + ".txt"});
    EXPECT_EQ(
        cut.paths(),
        (QByteArrayList{QByteArray(121, 'n') + "_1.txt", QByteArray(250, 'n') + ".txt", QByteArray(252, 'n') + "xy"}));
}

TEST(UdfNamesOnDisc, differentCases_areDifferentNames)
{
    const NamedFiles files({"README", "readme", "what?*:<>|\\\""});
    EXPECT_EQ(files.paths(), (QByteArrayList{"README", "readme", "what?*:<>|\\\""}));
    EXPECT_TRUE(files.renamed().empty());
}

TEST(UdfNamesOnDisc, name_isReportedOnceForTheDisc_whenItCannotBeAFiles)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("D"));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("a/b"), "x"));
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskUDF;
    const WrittenImage image(root, options);
    const auto renamed = image.items(DRDiscTree::UDF, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(renamed.size(), 1u);
    EXPECT_EQ(renamed[0].nameGiven, QStringLiteral("a_b"));
}

} // namespace Tessaron::Testing
