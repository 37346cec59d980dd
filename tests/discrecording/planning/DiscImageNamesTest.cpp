#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <set>

namespace Tessaron::Testing
{

namespace
{

/// A virtual root with an empty file for each name, in this order.
std::shared_ptr<DRFolder> rootWithFiles(const QStringList &names)
{
    auto root = DRFolder::virtualFolderWithName(QStringLiteral("Names"));
    for (const QString &name : names)
        root->addChild(DRFile::virtualFileWithName(name, name.toUtf8()));
    return root;
}

QStringList identifiersOf(const IsoVolume &volume)
{
    QStringList result;
    for (const auto &child : volume.root.children)
        result.append(volume.isJoliet ? child->name : QString::fromLatin1(child->identifier));
    return result;
}

QStringList rockRidgeNamesOf(const IsoVolume &volume)
{
    QStringList result;
    for (const auto &child : volume.root.children)
        result.append(QString::fromUtf8(child->rockRidge->name));
    result.sort();
    return result;
}

QStringList strings(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *const text : texts)
        result.append(QString::fromUtf8(text));
    return result;
}

} // namespace

TEST(DiscImageNames, isoNames_followTheLevel)
{
    struct Row {
        int level;
        QStringList identifiers;
    };
    const std::vector<Row> rows{
        {1, strings({"A_LONGER.TXT;1", "README.;1", "SHORT.HTM;1"})},
        {2, strings({"A_LONGER_NAME.TXT;1", "README.;1", "SHORT.HTML;1"})},
        {3, strings({"A_LONGER_NAME.TXT;1", "README.;1", "SHORT.HTML;1"})},
    };
    for (const Row &row : rows) {
        const auto root = rootWithFiles(strings({"readme", "a longer name.txt", "short.html"}));
        root->setProperty(row.level, DRISOLevel, DRAllFilesystems);
        const WrittenImage image(root);
        const IsoImageReader reader(image.path());
        EXPECT_EQ(reader.problems(), QStringList());
        EXPECT_EQ(identifiersOf(*reader.primary()), row.identifiers) << row.level;
    }
}

TEST(DiscImageNames, records_areInTheOrderOfTheStandard)
{
    const WrittenImage image(rootWithFiles(strings({"b.a", "B", "a_b.c", "a.z", "a-b", "ab", "Z", "a", "é"})));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(identifiersOf(*reader.primary()),
              strings({"A.;1", "A.Z;1", "AB.;1", "A_B.;1", "A_B.C;1", "B.;1", "B.A;1", "Z.;1", "_.;1"}));
    EXPECT_EQ(identifiersOf(*reader.joliet()), strings({"B", "Z", "a", "a-b", "a.z", "a_b.c", "ab", "b.a", "é"}));
}

TEST(DiscImageNames, collisions_getNumbersByTheOrderOfNames_notOfChildren)
{
    const QStringList expected = strings({"A_B.;1", "A_B_1.;1", "A_B_2.;1"});
    for (const auto &names : {strings({"a b", "a+b", "a-b"}), strings({"a-b", "a b", "a+b"})}) {
        const WrittenImage image(rootWithFiles(names));
        const IsoImageReader reader(image.path());
        EXPECT_EQ(reader.problems(), QStringList());
        EXPECT_EQ(identifiersOf(*reader.primary()), expected);
        // Byte order: blank, plus, minus.
        EXPECT_EQ(reader.primary()->root.children[0]->name, QStringLiteral("a b"));
        EXPECT_EQ(reader.primary()->root.children[1]->name, QStringLiteral("a+b"));
        EXPECT_EQ(reader.primary()->root.children[2]->name, QStringLiteral("a-b"));
    }
}

TEST(DiscImageNames, twentyThousandCollisions_areToldApart)
{
    QStringList names;
    for (int number = 0; number < 20'000; ++number)
        names.push_back(QStringLiteral("ä").repeated(40) + QChar(0x4E00 + number) + QStringLiteral(".txt"));
    const auto root = rootWithFiles(names);
    root->setProperty(1, DRISOLevel, DRAllFilesystems);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.children.size(), 20'000u);
    EXPECT_EQ(reader.joliet()->root.children.size(), 20'000u);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Renamed), 20'001u)
        << "all files and the volume";
    EXPECT_EQ(image.plan().report->count(DRDiscTree::Joliet, DRStorageReportItem::Kind::Renamed), 0u);
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
    std::set<QString> given;
    for (const DRStorageReportItem &item : image.items(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Renamed))
        given.insert(item.nameGiven);
    EXPECT_EQ(given.size(), 20'001u);
}

TEST(DiscImageNames, collisionsInSeveralFolders_areMeasuredRight_whenTreesOrderFoldersDifferently)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"Z", "b", "Y", "a", "_", "X"}) {
        const auto folder = DRFolder::virtualFolderWithName(QString::fromUtf8(name));
        for (int number = 0; number < 40; ++number)
            folder->addChild(DRFile::virtualFileWithName(
                QStringLiteral("x") + QChar(0x3B1 + number) + QStringLiteral(".y"), QByteArray::number(number)));
        root->addChild(folder);
    }
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    for (const auto &folder : reader.primary()->root.children) {
        EXPECT_EQ(folder->children.size(), 40u);
        EXPECT_EQ(folder->children.front()->identifier, "X_.Y;1");
        EXPECT_EQ(folder->children.back()->identifier, "X__9.Y;1");
    }
    EXPECT_EQ(differencesBetween(*reader.primary(), *reader.joliet()), QStringList());
}

TEST(DiscImageNames, oddNames_areWholeInRockRidge)
{
    const TemporaryTree tree;
    const std::vector<QByteArray> names{
        "caf\xE9",
        QByteArray(255, 'n'),
        QByteArray(254, 'm'),
        QByteArray(251, 'l'),
        QByteArray(250, 'k'),
        QByteArray(112, 'j'),
        QByteArray(111, 'i'),
        "a?b*c:d",
        "back\\slash",
        "semi;colon",
        "\xF0\x9F\x8E\x89 party",
        "new\nline",
        ".hidden",
        "...",
        "trailing.",
        " ",
        "\xFF\xFE",
        "-rf",
    };
    for (const QByteArray &name : names)
        tree.makeFile(name, name);
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    ASSERT_EQ(reader.primary()->root.children.size(), names.size());
    for (const auto &child : reader.primary()->root.children) {
        EXPECT_TRUE(std::find(names.begin(), names.end(), child->rockRidge->name) != names.end());
        EXPECT_EQ(reader.contents(*child), child->rockRidge->name) << "each name has its own file";
    }
    EXPECT_EQ(differencesBetween(*reader.primary(), *reader.joliet()), QStringList());
    EXPECT_TRUE(reader.joliet()->root.child(QString::fromUtf8("\xF0\x9F\x8E\x89 party")));
    EXPECT_TRUE(reader.joliet()->root.child(QStringLiteral("a_b_c_d")));
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DiscImageNames, sameNameTwice_isChangedInEveryTree)
{
    const WrittenImage image(rootWithFiles(strings({"twin.txt", "twin.txt", "twin_1.txt"})));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(rockRidgeNamesOf(*reader.primary()), strings({"twin.txt", "twin_1.txt", "twin_2.txt"}));
    EXPECT_EQ(identifiersOf(*reader.joliet()), strings({"twin.txt", "twin_1.txt", "twin_2.txt"}));
    const auto renamed = image.items(DRDiscTree::RockRidge, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(renamed.size(), 1u);
    EXPECT_EQ(renamed[0].path, QStringLiteral("/twin.txt"));
    EXPECT_EQ(renamed[0].nameGiven, QStringLiteral("twin_2.txt"));
    EXPECT_TRUE(renamed[0].isLost);
    EXPECT_EQ(image.plan().report->lostCount(), 1u);
}

TEST(DiscImageNames, sameNameTwice_isKept_whenTheFilesystemsDiffer)
{
    const auto root = DRFolder::virtualFolderWithName({});
    const auto forIso = DRFile::virtualFileWithName(QStringLiteral("READ_ME"), "iso");
    forIso->setExplicitFilesystemMask(DRFilesystemInclusionMaskISO9660);
    const auto forJoliet = DRFile::virtualFileWithName(QStringLiteral("READ_ME"), "joliet");
    forJoliet->setExplicitFilesystemMask(DRFilesystemInclusionMaskJoliet);
    root->addChild(forIso);
    root->addChild(forJoliet);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.contents(*reader.primary()->root.child(QStringLiteral("READ_ME"))), "iso");
    EXPECT_EQ(reader.contents(*reader.joliet()->root.child(QStringLiteral("READ_ME"))), "joliet");
    EXPECT_EQ(image.plan().report->count(), 0u);
}

TEST(DiscImageNames, impossibleBaseNames_areMendedAndReported)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"AC/DC", ".", "..", ""})
        root->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), name));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("x").repeated(300), "x"));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    QStringList expected = strings({"AC_DC", "_", "__", "__1"});
    expected.append(QStringLiteral("x").repeated(255));
    EXPECT_EQ(rockRidgeNamesOf(*reader.primary()), expected);
    EXPECT_EQ(image.plan().report->count(DRDiscTree::RockRidge, DRStorageReportItem::Kind::Renamed), 5u);
    EXPECT_EQ(image.plan().report->lostCount(), 5u);
}

TEST(DiscImageNames, volume_hasTheNameOfTheRoot)
{
    const auto root = rootWithFiles(strings({"a"}));
    root->setBaseName(QStringLiteral("Ferien an der Nordsee 2024: Bilder"));
    root->setProperty(QStringLiteral("Me & Co."), DRApplicationIdentifier, DRAllFilesystems);
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->volumeName, "FERIEN_AN_DER_NORDSEE_2024__BILD");
    EXPECT_EQ(reader.primary()->application.trimmed(), "ME & CO.");
    QByteArray units;
    for (const char character : QByteArray("Ferien an der No"))
        units += QByteArray(1, '\0') + character;
    EXPECT_EQ(reader.joliet()->volumeName, units);
    const auto items = image.items(DRDiscTree::Joliet, DRStorageReportItem::Kind::Renamed);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].path, QStringLiteral("/"));
    EXPECT_EQ(items[0].nameGiven, QStringLiteral("Ferien an der No"));
    EXPECT_TRUE(items[0].isLost);
    EXPECT_EQ(image.plan().report->lostCount(), 0u) << "a label is nothing that is looked up";
}

TEST(DiscImageNames, jolietNames_areToldApart_whenTheyDifferInCaseAlone)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"README", "readme", "ReadMe", "\xC3\x84.txt", "\xC3\xA4.txt"})
        root->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), name));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(identifiersOf(*reader.joliet()),
              QStringList({QStringLiteral("README"), QStringLiteral("ReadMe_1"), QStringLiteral("readme_2"),
                           QStringLiteral("Ä.txt"), QStringLiteral("ä_1.txt")}));
    EXPECT_EQ(image.items(DRDiscTree::Joliet, DRStorageReportItem::Kind::Renamed).size(), 3u);
    for (const auto &child : root->children())
        EXPECT_TRUE(identifiersOf(*reader.joliet()).contains(child->mangledNameForFilesystem(DRJoliet)));
}

TEST(DiscImageNames, jolietNames_endInNoDotAndNoBlank)
{
    const auto root = DRFolder::virtualFolderWithName({});
    for (const char *const name : {"notes.", "notes", "blank ", "dots..."})
        root->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), name));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder."));
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("f"), "f"));
    root->addChild(folder);
    // Cut where a blank comes to be last.
    root->addChild(DRFile::virtualFileWithName(QString(102, u'x') + QStringLiteral(" yz"), "cut"));
    const WrittenImage image(root);
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(identifiersOf(*reader.joliet()),
              QStringList({QStringLiteral("blank_"), QStringLiteral("dots.._"), QStringLiteral("folder_"),
                           QStringLiteral("notes"), QStringLiteral("notes_"), QString(102, u'x') + u'_'}));
    EXPECT_EQ(image.items(DRDiscTree::Joliet, DRStorageReportItem::Kind::Renamed).size(), 5u);
}

} // namespace Tessaron::Testing
