#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/filemodel/tree/LayoutRecorder.h"
#include "tests/support/TemporaryTree.h"

#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

const QString disc = QStringLiteral("disc");

/// The one object that a layout of one item below a virtual root holds.
std::shared_ptr<DRFSObject> objectFor(const std::shared_ptr<KRFileReference> &reference)
{
    const auto root = virtualFolderItem(disc);
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference));
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    return folder && folder->children().size() == 1 ? folder->children().front() : nullptr;
}

// A row reads best in this order.
struct MaskRow { // NOLINT(clang-analyzer-optin.performance.Padding)
    char useBasic;
    char hasBasic;
    std::int32_t basic;
    char hasAdvanced;
    std::uint32_t advanced;
    DRFilesystemMask expected;
};

QByteArray finderInfoWithFlags(std::uint16_t flags)
{
    QByteArray info(32, '\0');
    info[8] = static_cast<char>(flags >> 8);
    info[9] = static_cast<char>(flags & 0xFF);
    return info;
}

} // namespace

TEST(LayoutObjects, masks_followTheOptions)
{
    const TemporaryTree tree;
    const QString path = QString::fromUtf8(tree.makeFile("file"));
    const MaskRow rows[] = {
        {1, 1, 2, 0, 15, 3},
        {1, 1, 1, 0, 15, 12},
        {1, 1, 0, 1, 4, 0}, // the basic choice "all" sets nothing, and the advanced mask is not looked at
        {1, 1, 7, 0, 15, 0},
        {1, 0, 2, 0, 15, 0}, // no choice has been made
        {0, 1, 2, 1, 0, 0},
        {0, 1, 2, 1, 9, 9},
        {0, 1, 2, 1, 0xFFFFFFFF, 0xFFFFFFFF}, // as it stands
        {0, 1, 2, 0, 9, 0},
    };
    for (const MaskRow &row : rows) {
        const auto reference = KRFileReference::fileReferenceWithPath(path);
        _TessaronAttributes &attributes = *reference->tessaronAttributes();
        attributes.useBasicFSInclusion = row.useBasic;
        attributes.hasBasicFSInclusion = row.hasBasic;
        attributes.basicFSInclusion = row.basic;
        attributes.hasAdvancedFSInclusion = row.hasAdvanced;
        attributes.advancedFSInclusion = row.advanced;
        const auto object = objectFor(reference);
        ASSERT_TRUE(object);
        EXPECT_EQ(object->explicitFilesystemMask(), row.expected) << int(row.useBasic) << row.basic << row.advanced;
        EXPECT_FALSE(object->propertyForKey(DRInvisible, DRAllFilesystems).isValid());
    }
}

TEST(LayoutObjects, defaultOptions_setNothing)
{
    const TemporaryTree tree;
    const auto object = objectFor(KRFileReference::fileReferenceWithPath(QString::fromUtf8(tree.makeFile("file"))));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->explicitFilesystemMask(), 0u);
    EXPECT_EQ(object->effectiveFilesystemMask(), DRFilesystemInclusionMaskAll);
    EXPECT_FALSE(object->hasExplicitBaseName()) << "a file without a desired name keeps its own";
    EXPECT_TRUE(object->propertiesForFilesystem(DRHFSPlus).isEmpty());
}

TEST(LayoutObjects, invisible_isSetForAllFilesystems_onFilesAndFolders)
{
    const TemporaryTree tree;
    const auto file = KRFileReference::fileReferenceWithPath(QString::fromUtf8(tree.makeFile("file")));
    file->tessaronAttributes()->invisible = 1;
    const auto folder = KRFileReference::virtualFolderWithName(QStringLiteral("folder"));
    folder->tessaronAttributes()->invisible = 1;
    for (const auto &reference : {file, folder}) {
        const auto object = objectFor(reference);
        ASSERT_TRUE(object);
        EXPECT_EQ(object->propertyForKey(DRInvisible, DRAllFilesystems), QVariant(true));
    }
}

TEST(LayoutObjects, desiredName_hidesTheExtensionThatWasNotTyped)
{
    const TemporaryTree tree;
    const QString path = QString::fromUtf8(tree.makeFile("scan.pdf"));
    const auto reference = KRFileReference::fileReferenceWithPath(path);
    reference->setDesiredName(QStringLiteral("Report"));
    auto object = objectFor(reference);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->baseName(), QStringLiteral("Report.pdf"));
    EXPECT_EQ(object->propertyForKey(DRMacFinderHideExtension, DRAllFilesystems), QVariant(true));

    reference->setDesiredName(QStringLiteral("Report.pdf"));
    object = objectFor(reference);
    EXPECT_EQ(object->baseName(), QStringLiteral("Report.pdf"));
    EXPECT_FALSE(object->propertyForKey(DRMacFinderHideExtension, DRAllFilesystems).isValid());
}

TEST(LayoutObjects, virtualFolder_hasItsDesiredName)
{
    const auto reference = KRFileReference::virtualFolderWithName(QStringLiteral("untitled"));
    EXPECT_EQ(objectFor(reference)->baseName(), QStringLiteral("untitled"));
    reference->setDesiredName(QStringLiteral("Photos"));
    EXPECT_EQ(objectFor(reference)->baseName(), QStringLiteral("Photos"));
}

TEST(LayoutObjects, realFolder_isRebuiltFromTheTree_andKeepsItsIcon)
{
    const TemporaryTree tree;
    tree.makeFile("folder/Icon\r", "icon");
    tree.makeFile("folder/one.txt", "1");
    tree.makeFile("folder/not in the project", "2");
    tree.setExtendedAttribute("folder", "user.com.apple.FinderInfo", finderInfoWithFlags(0x8400));
    const auto root = itemAt(tree.pathText("folder"));
    root->addItem(itemAt(tree.pathText("folder/one.txt")));
    root->addItem(itemAt(tree.pathText("folder/Icon\r")));
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->isVirtual());
    EXPECT_EQ(folder->baseName(), QStringLiteral("folder"));
    EXPECT_EQ(folder->sourceRef(), *root->fileReference()->fileRef());
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("Icon\r"), QStringLiteral("one.txt")}));
    EXPECT_EQ(folder->propertyForKey(DRMacFinderFlags, DRAllFilesystems), QVariant(int(std::int16_t(0x8400))));
    EXPECT_EQ(recorder.progress.size(), 1u) << "the icon is the folder's own step and reports nothing";
}

TEST(LayoutObjects, virtualFolder_neverGetsAnIconFile)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("Icon\r"))));
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("icon\r"))));
    LayoutRecorder recorder;
    EXPECT_EQ(pathsBelow(*recorder.run(*root)), (QStringList{QStringLiteral("icon\r")}));
}

TEST(LayoutObjects, itemsWithoutReference_areLeftOut)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(nullptr));
    root->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::initWithFSRef(FSRef())));
    root->addItem(itemAt(QString::fromUtf8(tree.makeFile("file"))));
    LayoutRecorder recorder;
    EXPECT_EQ(pathsBelow(*recorder.run(*root)), (QStringList{QStringLiteral("file")}));
}

TEST(LayoutObjects, vanishedFiles_stayInTheLayout_underTheirLastName)
{
    const TemporaryTree tree;
    const auto root = virtualFolderItem(disc);
    const QByteArray filePath = tree.makeFile("file");
    const QByteArray folderPath = tree.makeFolder("folder");
    root->addItem(itemAt(QString::fromUtf8(filePath)));
    root->addItem(itemAt(QString::fromUtf8(folderPath)));
    tree.remove("file");
    tree.remove("folder");
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("file"), QStringLiteral("folder/")}));
    EXPECT_FALSE(folder->children().back()->propertyForKey(DRMacFinderFlags, DRAllFilesystems).isValid());
}

TEST(LayoutObjects, namesThatAreNotUtf8_reachTheLayoutAsTheyAre)
{
    const TemporaryTree tree;
    tree.makeFile("f\xFF"
                  "older/caf\xE9");
    const auto root = virtualFolderItem(disc);
    FSRef folderRef;
    FSRef fileRef;
    ASSERT_EQ(FSPathMakeRef(tree.path("f\xFF"
                                      "older"),
                            &folderRef, nullptr),
              noErr);
    ASSERT_EQ(FSPathMakeRef(tree.path("f\xFF"
                                      "older/caf\xE9"),
                            &fileRef, nullptr),
              noErr);
    const auto inner =
        KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::initWithFSRef(folderRef));
    inner->addItem(KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::initWithFSRef(fileRef)));
    root->addItem(inner);
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder && folder->children().size() == 1u);
    const auto made = std::dynamic_pointer_cast<DRFolder>(folder->children().front());
    ASSERT_TRUE(made && made->children().size() == 1u);
    EXPECT_EQ(made->baseNameBytes(),
              QByteArray("f\xFF"
                         "older"));
    EXPECT_EQ(made->children().front()->baseNameBytes(), QByteArray("caf\xE9"));
}

TEST(LayoutObjects, realFolder_takesItsDesiredName_andHidesTheExtensionThatWasNotTyped)
{
    const TemporaryTree tree;
    tree.makeFolder("Program.app");
    const auto reference = KRFileReference::fileReferenceWithPath(tree.pathText("Program.app"));
    reference->setDesiredName(QStringLiteral("Editor"));
    reference->tessaronAttributes()->hasBasicFSInclusion = 1;
    reference->tessaronAttributes()->basicFSInclusion = 1;
    const auto object = objectFor(reference);
    ASSERT_TRUE(object && object->isFolder());
    EXPECT_EQ(object->baseName(), QStringLiteral("Editor.app"));
    EXPECT_EQ(object->propertyForKey(DRMacFinderHideExtension, DRAllFilesystems), QVariant(true));
    EXPECT_EQ(object->explicitFilesystemMask(), 12u);
}

TEST(LayoutObjects, aFileRenamedOnDisk_getsTheNameThatItHasNow)
{
    const TemporaryTree tree;
    const auto reference = KRFileReference::fileReferenceWithPath(QString::fromUtf8(tree.makeFile("before")));
    ASSERT_EQ(::rename(tree.path("before").constData(), tree.path("after").constData()), 0);
    ASSERT_EQ(reference->name(), QStringLiteral("after"));
    EXPECT_EQ(objectFor(reference)->baseName(), QStringLiteral("after"));
}

TEST(LayoutObjects, aFolderCalledIcon_isAFolder_whereTheTreeHasIt)
{
    const TemporaryTree tree;
    tree.makeFile("folder/Icon\r/inside", "x");
    const auto root = itemAt(tree.pathText("folder"));
    root->addItem(itemAt(tree.pathText("folder/Icon\r")));
    root->items().front()->addItem(itemAt(tree.pathText("folder/Icon\r/inside")));
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("Icon\r/"), QStringLiteral("Icon\r/inside")}));
}

TEST(LayoutObjects, aFolderRenamedToIcon_isAFolder)
{
    const TemporaryTree tree;
    tree.makeFile("folder/before/inside", "x");
    const auto root = itemAt(tree.pathText("folder"));
    root->addItem(itemAt(tree.pathText("folder/before")));
    root->items().front()->addItem(itemAt(tree.pathText("folder/before/inside")));
    ASSERT_EQ(::rename(tree.path("folder/before").constData(), tree.path("folder/Icon\r").constData()), 0);
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(pathsBelow(*folder), (QStringList{QStringLiteral("Icon\r/"), QStringLiteral("Icon\r/inside")}));
}

TEST(LayoutObjects, aFolderWhoseIconCannotBeLookedFor_isNamed)
{
    const TemporaryTree tree;
    tree.makeFile("closed/file");
    tree.setMode("", 0777);
    tree.setMode("closed", 0600);
    const auto root = virtualFolderItem(disc);
    root->addItem(itemAt(tree.pathText("closed")));
    LayoutRecorder recorder;
    std::vector<UnreadableFolder> duringTheEnd;
    recorder.onEnd = [&](KRFileHierarchyItem &item) { duringTheEnd = item.unreadableFolders(); };
    {
        // Rights belong to the whole process here, the worker included.
        const WithoutRootRights rights;
        const auto folder = recorder.run(*root);
        ASSERT_TRUE(folder);
        EXPECT_EQ(folder->children().size(), 1u);
    }
    const std::vector<UnreadableFolder> expected{{tree.path("closed"), EACCES}};
    EXPECT_EQ(duringTheEnd, expected);
    EXPECT_EQ(root->unreadableFolders(), expected);
    tree.setMode("closed", 0700);
    LayoutRecorder again;
    ASSERT_TRUE(again.run(*root));
    EXPECT_TRUE(root->unreadableFolders().empty());
}

TEST(LayoutObjects, filesAreLaidOut_asTheyAreNamedAtThatTime)
{
    const TemporaryTree tree;
    tree.makeFile("folder/Icon\r", "was the icon");
    tree.makeFile("folder/other", "is the icon");
    tree.makeFile("folder/inner/file", "x");
    const auto root = itemAt(tree.pathText("folder"));
    for (const char *const name : {"folder/Icon\r", "folder/other", "folder/inner"})
        root->addItem(itemAt(tree.pathText(name)));
    root->items().back()->addItem(itemAt(tree.pathText("folder/inner/file")));
    for (const auto &item : root->items())
        EXPECT_FALSE(item->fileReference()->name().isNull()); // and remembered for five seconds
    const auto rename = [&tree](const char *from, const char *to) {
        ASSERT_EQ(::rename(tree.path(from).constData(), tree.path(to).constData()), 0);
    };
    rename("folder/Icon\r", "folder/plain");
    rename("folder/other", "folder/Icon\r");
    rename("folder/inner/file", "folder/inner/renamed file");
    rename("folder/inner", "folder/renamed folder");
    rename("folder", "renamed root");
    LayoutRecorder recorder;
    const auto folder = recorder.run(*root);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->baseName(), QStringLiteral("renamed root"));
    EXPECT_EQ(pathsBelow(*folder),
              (QStringList{QStringLiteral("Icon\r"), QStringLiteral("plain"), QStringLiteral("renamed folder/"),
                           QStringLiteral("renamed folder/renamed file")}));
}

/// Folders of many files are listed, not looked at file by file.
class LayoutOfManyFiles : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        for (int number = 0; number < 20; ++number) {
            const QByteArray name = "file " + QByteArray::number(number);
            m_tree.makeFile("folder/" + name, name);
            m_root->addItem(itemAt(m_tree.pathText("folder/" + name)));
            m_expected << QString::fromUtf8(name);
        }
    }

    [[nodiscard]] std::shared_ptr<KRFileHierarchyItem> makeRoot() const
    {
        m_tree.makeFolder("folder");
        return GetParam() ? virtualFolderItem(disc) : itemAt(m_tree.pathText("folder"));
    }
    void rename(const char *from, const char *to) const
    {
        ASSERT_EQ(::rename(m_tree.path(from).constData(), m_tree.path(to).constData()), 0);
    }
    void expectLayout()
    {
        LayoutRecorder recorder;
        const auto folder = recorder.run(*m_root);
        ASSERT_TRUE(folder);
        QStringList paths = pathsBelow(*folder);
        paths.sort();
        m_expected.sort();
        EXPECT_EQ(paths.join(u'|').toStdString(), m_expected.join(u'|').toStdString());
    }

    const TemporaryTree m_tree;
    const std::shared_ptr<KRFileHierarchyItem> m_root = makeRoot();
    QStringList m_expected;
};

TEST_P(LayoutOfManyFiles, names_areThoseOfThatTime)
{
    rename("folder/file 3", "folder/new name");
    m_expected[3] = QStringLiteral("new name");
    rename("folder/file 4", "elsewhere");
    m_expected[4] = QStringLiteral("elsewhere");
    rename("folder/file 5", "folder/swap");
    rename("folder/file 6", "folder/file 5");
    rename("folder/swap", "folder/file 6");
    m_tree.remove("folder/file 7");
    rename("folder/file 8", "folder/Icon\r"); // the folder's icon now
    m_expected.removeAll(QStringLiteral("file 8"));
    if (!GetParam())
        m_expected << QStringLiteral("Icon\r"); // added by the folder
    m_tree.remove("folder/file 9");
    m_tree.makeFile("folder/file 9", "another file, perhaps with the inode of the first");
    expectLayout();
}

TEST_P(LayoutOfManyFiles, names_areFound_whereTheFolderWasRenamed)
{
    rename("folder", "renamed folder");
    rename("renamed folder/file 3", "renamed folder/new name");
    m_expected[3] = QStringLiteral("new name");
    expectLayout();
}

TEST_P(LayoutOfManyFiles, names_areFound_whereAnotherFolderHasComeToThePlace)
{
    rename("folder", "renamed folder");
    rename("renamed folder/file 3", "renamed folder/new name");
    m_tree.makeFile("folder/file 3", "foreign");
    m_tree.makeFile("folder/file 4", "foreign");
    m_expected[3] = QStringLiteral("new name");
    expectLayout();
}

TEST_P(LayoutOfManyFiles, names_areFound_whereTheFolderMayNotBeListed)
{
    m_tree.setMode("", 0777);
    rename("folder/file 3", "folder/new name");
    m_expected[3] = QStringLiteral("file 3"); // nor can it be looked for
    m_tree.setMode("folder", 0300);
    {
        const WithoutRootRights rights;
        expectLayout();
    }
    m_tree.setMode("folder", 0700);
}

INSTANTIATE_TEST_SUITE_P(Roots, LayoutOfManyFiles, testing::Bool(),
                         [](const auto &row) { return row.param ? "virtualRoot" : "realRoot"; });
