#include "platform/discrecording/planning/DvdVideoOrder.h"

#include "platform/discrecording/content/ContentTreeBuilder.h"
#include "platform/discrecording/image/ImageLayout.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

using Contents = std::vector<std::pair<QByteArray, QByteArray>>;

/// Names and places of the files that got one, in the order in which they got it.
using Places = std::vector<std::pair<std::string, std::uint64_t>>;

Places placesOf(const QString &folderName, const Contents &files,
                DRFilesystemMask filesystems = DRFilesystemInclusionMaskISO9660,
                std::vector<std::string> *missed = nullptr)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("DISC"));
    const auto folder = DRFolder::virtualFolderWithName(folderName);
    root->addChild(folder);
    for (const auto &[name, contents] : files)
        folder->addChild(DRFile::virtualFileWithName(QString::fromUtf8(name), contents));
    const std::function<void(double)> report;
    const PlanProgress progress({}, report);
    StorageIssues issues;
    const auto tree = ContentTreeBuilder(progress, {}, {}, 1).build(*root, issues);
    DRFilesystemMask contents = 0;
    completeFilesystemMasks(*tree, &contents);
    ImageLayout layout;
    layout.reserve(0, 23, nullptr, 0);
    std::vector<NodeIndex> nodes;
    for (const NodeIndex node : placeDvdVideoFiles(*tree, filesystems, layout, nodes)) {
        if (missed)
            missed->emplace_back(tree->nodes[node].nameView());
    }
    Places places;
    for (const NodeIndex node : nodes)
        places.emplace_back(std::string(tree->nodes[node].nameView()), tree->nodes[node].extentStart());
    return places;
}

QByteArray blocks(qsizetype count)
{
    return QByteArray(count * 2048, 'x');
}

void putNumber(QByteArray &bytes, qsizetype at, std::uint32_t value)
{
    qToBigEndian(value, bytes.data() + at);
}

/// An information file of the manager of two blocks; `titleSets` are the numbers and places of title sets.
QByteArray manager(std::uint32_t lastBlock, std::uint32_t menus,
                   const std::vector<std::pair<int, std::uint32_t>> &titleSets)
{
    QByteArray bytes(qsizetype{2} * 2048, '\0');
    bytes.replace(0, 12, "DVDVIDEO-VMG");
    putNumber(bytes, 0x0C, lastBlock);
    putNumber(bytes, 0x1C, 1); // its own last block
    putNumber(bytes, 0xC0, menus);
    putNumber(bytes, 0xC4, 1); // the block of the table of titles
    bytes[2048 + 1] = static_cast<char>(titleSets.size());
    for (std::size_t index = 0; index < titleSets.size(); ++index) {
        const qsizetype entry = 2048 + 8 + static_cast<qsizetype>(index) * 12;
        bytes[entry + 6] = static_cast<char>(titleSets[index].first);
        putNumber(bytes, entry + 8, titleSets[index].second);
    }
    return bytes;
}

/// An information file of a title set of one block.
QByteArray titleSet(std::uint32_t lastBlock, std::uint32_t menus, std::uint32_t titles)
{
    QByteArray bytes(2048, '\0');
    bytes.replace(0, 12, "DVDVIDEO-VTS");
    putNumber(bytes, 0x0C, lastBlock);
    putNumber(bytes, 0xC0, menus);
    putNumber(bytes, 0xC4, titles);
    return bytes;
}

} // namespace

TEST(DvdVideoOrder, files_comeInThePlayersOrder_withInformationInUnitsOfTheirOwn)
{
    EXPECT_EQ(placesOf(QStringLiteral("VIDEO_TS"),
                       {{"VIDEO_TS.BUP", blocks(2)},
                        {"VIDEO_TS.IFO", blocks(2)},
                        {"VIDEO_TS.VOB", blocks(5)},
                        {"VTS_01_0.BUP", blocks(1)},
                        {"VTS_01_0.IFO", blocks(1)},
                        {"VTS_01_0.VOB", blocks(3)},
                        {"VTS_01_1.VOB", blocks(20)},
                        {"VTS_01_2.VOB", blocks(4)},
                        {"VTS_10_0.IFO", blocks(1)},
                        {"VTS_10_1.VOB", blocks(1)},
                        {"VTS_10_0.BUP", blocks(1)},
                        {"VTS_02_0.IFO", blocks(1)}}),
              (Places{{"VIDEO_TS.IFO", 32},
                      {"VIDEO_TS.VOB", 34},
                      {"VIDEO_TS.BUP", 48},
                      {"VTS_01_0.IFO", 64},
                      {"VTS_01_0.VOB", 65},
                      {"VTS_01_1.VOB", 68},
                      {"VTS_01_2.VOB", 88},
                      {"VTS_01_0.BUP", 96},
                      {"VTS_02_0.IFO", 112},
                      {"VTS_10_0.IFO", 128},
                      {"VTS_10_1.VOB", 129},
                      {"VTS_10_0.BUP", 144}}));
}

TEST(DvdVideoOrder, files_lieWhereTheInformationSaysThatTheyAre)
{
    EXPECT_EQ(placesOf(QStringLiteral("VIDEO_TS"),
                       {{"VIDEO_TS.IFO", manager(11, 3, {{2, 100}, {1, 25}})},
                        {"VIDEO_TS.VOB", blocks(4)},
                        {"VIDEO_TS.BUP", blocks(2)},
                        {"VTS_01_0.IFO", titleSet(30, 2, 8)},
                        {"VTS_01_0.VOB", blocks(3)},
                        {"VTS_01_1.VOB", blocks(9)},
                        {"VTS_01_2.VOB", blocks(9)},
                        {"VTS_01_0.BUP", blocks(1)},
                        {"VTS_02_0.IFO", titleSet(0, 0, 1)},
                        {"VTS_02_1.VOB", blocks(1)}}),
              (Places{{"VIDEO_TS.IFO", 32},
                      {"VIDEO_TS.VOB", 32 + 3},
                      {"VIDEO_TS.BUP", 32 + 10},
                      {"VTS_01_0.IFO", 32 + 25},
                      {"VTS_01_0.VOB", 32 + 25 + 2},
                      {"VTS_01_1.VOB", 32 + 25 + 8},
                      {"VTS_01_2.VOB", 32 + 25 + 8 + 9},
                      {"VTS_01_0.BUP", 32 + 25 + 30},
                      {"VTS_02_0.IFO", 32 + 100},
                      {"VTS_02_1.VOB", 32 + 101}}));
}

TEST(DvdVideoOrder, addresses_areIgnored_whenTheyAreTakenOrFarAway)
{
    EXPECT_EQ(placesOf(QStringLiteral("VIDEO_TS"),
                       {{"VIDEO_TS.IFO", manager(4'000'000, 1, {{1, 3}, {2, 3'000'000}})},
                        {"VIDEO_TS.VOB", blocks(4)},
                        {"VIDEO_TS.BUP", blocks(2)},
                        {"VTS_01_0.IFO", titleSet(0xFFFFFFFF, 0xFFFFFFFF, 0)},
                        {"VTS_01_0.VOB", blocks(1)},
                        {"VTS_02_0.IFO", QByteArray("short")}}),
              (Places{{"VIDEO_TS.IFO", 32},
                      {"VIDEO_TS.VOB", 34},
                      {"VIDEO_TS.BUP", 48},
                      {"VTS_01_0.IFO", 64},
                      {"VTS_01_0.VOB", 65},
                      {"VTS_02_0.IFO", 80}}));
}

TEST(DvdVideoOrder, nothingIsPlaced_butWhatPlayersLookFor)
{
    const Contents files{{"VIDEO_TS.IFO", blocks(1)}, {"VTS_01_1.VOB", blocks(1)}, {"VIDEO_TS.TXT", blocks(1)},
                         {"video_ts.bup", blocks(1)}, {"Vts_02_1.Vob", blocks(1)}, {"VTS_00_0.IFO", blocks(1)},
                         {"VTS_01_1.IFO", blocks(1)}, {"VTS_AB_0.IFO", blocks(1)}, {"VTS_03_0.IFO", {}}};
    EXPECT_EQ(placesOf(QStringLiteral("VIDEO_TS"), files), (Places{{"VIDEO_TS.IFO", 32}, {"VTS_01_1.VOB", 33}}));
    EXPECT_EQ(placesOf(QStringLiteral("AUDIO_TS"), files), Places());
    EXPECT_EQ(placesOf(QStringLiteral("Video_TS"), files), Places());
    EXPECT_EQ(placesOf(QStringLiteral("VIDEO_TS"), files, 0), Places());
}

TEST(DvdVideoOrder, addressesThatCannotBeMet_areTold)
{
    // The title set is said to begin where the menus of the manager still are.
    std::vector<std::string> missed;
    (void)placesOf(QStringLiteral("VIDEO_TS"),
                   {{"VIDEO_TS.IFO", manager(9, 2, {{1, 4}})},
                    {"VIDEO_TS.VOB", blocks(10)},
                    {"VTS_01_0.IFO", titleSet(1, 0, 1)},
                    {"VTS_01_1.VOB", blocks(3)}},
                   DRFilesystemInclusionMaskISO9660, &missed);
    EXPECT_EQ(missed, std::vector<std::string>{"VTS_01_0.IFO"});
}

} // namespace Tessaron::Testing
