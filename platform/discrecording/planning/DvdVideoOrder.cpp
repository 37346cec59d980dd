#include "platform/discrecording/planning/DvdVideoOrder.h"

#include "platform/discrecording/content/FileContentsReader.h"
#include "platform/discrecording/image/ImageLayout.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t unitBlocks = 16; ///< what a DVD protects with one error correction code
/// How many blocks may stay unused to meet an address. Where more are missing, files were left out of the folder and
/// the addresses lead nowhere anyway.
constexpr std::uint64_t longestGap = 1024;
constexpr unsigned int titleSetCount = 99;

/// A file of DVD-Video in the player's order.
struct DvdFile {
    enum Part : unsigned int {
        Information = 0,
        FirstObject = 1, ///< the menus; then the titles
        Backup = 100,
    };
    unsigned int titleSet = 0; ///< 0 is the manager
    unsigned int part = Information;
    NodeIndex node = 0;

    [[nodiscard]] bool isBefore(const DvdFile &other) const
    {
        return std::tie(titleSet, part, node) < std::tie(other.titleSet, other.part, other.node);
    }
};

std::optional<unsigned int> digits(std::string_view text)
{
    unsigned int value = 0;
    for (const char character : text) {
        if (character < '0' || character > '9')
            return std::nullopt;
        value = value * 10 + static_cast<unsigned int>(character - '0');
    }
    return value;
}

/// "VIDEO_TS.IFO", "VTS_01_0.IFO", "VTS_01_1.VOB" and their like; empty for other names. Players look for upper case.
std::optional<DvdFile> dvdFileNamed(std::string_view name)
{
    if (name.size() != 12 || name[8] != '.')
        return std::nullopt;
    DvdFile file;
    unsigned int object = 0;
    if (name.starts_with("VTS_") && name[6] == '_') {
        const std::optional<unsigned int> titleSet = digits(name.substr(4, 2));
        const std::optional<unsigned int> number = digits(name.substr(7, 1));
        if (!titleSet || *titleSet == 0 || !number)
            return std::nullopt;
        file.titleSet = *titleSet;
        object = *number;
    } else if (!name.starts_with("VIDEO_TS")) {
        return std::nullopt;
    }
    const bool isObject = name.ends_with("VOB");
    if (isObject)
        file.part = DvdFile::FirstObject + object;
    else if (object == 0 && name.ends_with("BUP"))
        file.part = DvdFile::Backup;
    else if (object != 0 || !name.ends_with("IFO"))
        return std::nullopt;
    return file;
}

using Head = std::array<std::uint8_t, logicalBlockSize>;

/// A block of a file; zeros where it has none or cannot be read.
Head blockOf(const ContentTree &tree, NodeIndex node, std::uint64_t block)
{
    Head bytes{};
    const ContentNode &content = tree.nodes[node];
    const std::uint64_t offset = block * logicalBlockSize;
    if (offset >= content.fileSize())
        return bytes;
    const std::uint64_t length = std::min<std::uint64_t>(bytes.size(), content.fileSize() - offset);
    if (content.has(ContentNode::HasContentsInMemory)) {
        std::memcpy(bytes.data(), tree.memoryContents(node).constData() + offset, length);
        return bytes;
    }
    NSError error;
    const FileContents contents = tree.fileContents(node);
    const UniqueDescriptor descriptor = openFileContents(contents, &error);
    if (!descriptor || readFileContents(descriptor.get(), contents, offset, bytes.data(), length))
        bytes.fill(0);
    return bytes;
}

std::uint32_t numberAt(const Head &head, std::size_t at)
{
    return loadBigEndian<std::uint32_t>(&head[at]);
}

/// The blocks, counted from the information file, at which the parts of a title set or of the manager begin; 0 where
/// the file says nothing.
struct PartPlaces {
    std::uint64_t menus = 0;
    std::uint64_t titles = 0;
    std::uint64_t backup = 0;
};

bool isHead(const Head &head, bool isManager)
{
    const std::string_view identifier = isManager ? "DVDVIDEO-VMG" : "DVDVIDEO-VTS";
    return std::memcmp(head.data(), identifier.data(), identifier.size()) == 0;
}

PartPlaces placesIn(const Head &head, bool isManager)
{
    constexpr std::size_t lastBlockAt = 0x0C;
    constexpr std::size_t lastInformationBlockAt = 0x1C;
    constexpr std::size_t menusAt = 0xC0;
    constexpr std::size_t titlesAt = 0xC4;
    PartPlaces places;
    if (!isHead(head, isManager))
        return places;
    places.menus = numberAt(head, menusAt);
    places.titles = isManager ? 0 : numberAt(head, titlesAt);
    if (numberAt(head, lastBlockAt) > numberAt(head, lastInformationBlockAt))
        places.backup = numberAt(head, lastBlockAt) - numberAt(head, lastInformationBlockAt);
    return places;
}

/// The blocks, counted from the manager's information file, at which the title sets begin, by their numbers; 0 where
/// nothing is said.
using TitleSetPlaces = std::array<std::uint64_t, titleSetCount + 1>;

TitleSetPlaces titleSetPlacesIn(const ContentTree &tree, NodeIndex information)
{
    constexpr std::size_t titleTableAt = 0xC4;
    constexpr std::size_t tableHeadSize = 8;
    constexpr std::size_t entrySize = 12;
    constexpr std::size_t titleSetAt = 6; // within an entry, like the next one
    constexpr std::size_t startAt = 8;
    TitleSetPlaces places{};
    const Head head = blockOf(tree, information, 0);
    if (!isHead(head, true))
        return places;
    const Head table = blockOf(tree, information, numberAt(head, titleTableAt));
    const std::size_t count = std::min<std::size_t>(loadBigEndian<std::uint16_t>(table.data()), titleSetCount);
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t entry = tableHeadSize + index * entrySize;
        const std::uint8_t titleSet = table[entry + titleSetAt];
        if (titleSet > 0 && titleSet <= titleSetCount)
            places[titleSet] = numberAt(table, entry + startAt);
    }
    return places;
}

/// Puts the files into the layout one after another.
class DvdVideoPlacer
{
public:
    DvdVideoPlacer(ContentTree &tree, ImageLayout &layout, std::vector<NodeIndex> &files)
        : m_tree(tree)
        , m_layout(layout)
        , m_files(files)
    {
    }

    void place(const DvdFile &file)
    {
        const ContentNode &content = m_tree.nodes[file.node];
        ContentNode &owner = m_tree.nodes[content.contentsOwner()];
        const std::uint64_t wanted = wantedPlace(file);
        if (owner.hasExtent()) { // another name of a file that has its place
            noteMissed(file.node, wanted, owner.extentStart());
            return;
        }
        const bool isInformation = file.part == DvdFile::Information;
        const std::uint64_t next = m_layout.allocateExtent(0);
        std::uint64_t start = next;
        if (wanted >= next && wanted - next <= longestGap)
            start = wanted;
        else if (isInformation || file.part == DvdFile::Backup)
            start = (next + unitBlocks - 1) / unitBlocks * unitBlocks;
        m_layout.leaveUnusedUpTo(start);
        start = m_layout.allocateExtent(blocksForBytes(content.fileSize()));
        noteMissed(file.node, wanted, start);
        owner.setExtentStart(static_cast<std::uint32_t>(start));
        m_files.push_back(content.contentsOwner());
        if (isInformation)
            take(file, start);
    }

    /// Files that do not lie where they were wanted.
    [[nodiscard]] const std::vector<NodeIndex> &missed() const { return m_missed; }

private:
    void noteMissed(NodeIndex file, std::uint64_t wanted, std::uint64_t start)
    {
        if (wanted != 0 && wanted != start)
            m_missed.push_back(file);
    }

    /// 0 for anywhere.
    [[nodiscard]] std::uint64_t wantedPlace(const DvdFile &file) const
    {
        if (file.part == DvdFile::Information)
            return m_managerStart != 0 && m_titleSets[file.titleSet] != 0 ? m_managerStart + m_titleSets[file.titleSet]
                                                                          : 0;
        if (file.titleSet != m_titleSet)
            return 0; // its information file is missing
        std::uint64_t place = 0;
        if (file.part == DvdFile::FirstObject)
            place = m_parts.menus;
        else if (file.part == DvdFile::FirstObject + 1)
            place = m_parts.titles;
        else if (file.part == DvdFile::Backup)
            place = m_parts.backup;
        return place != 0 ? m_titleSetStart + place : 0;
    }

    void take(const DvdFile &information, std::uint64_t start)
    {
        const bool isManager = information.titleSet == 0;
        m_titleSet = information.titleSet;
        m_titleSetStart = start;
        m_parts = placesIn(blockOf(m_tree, information.node, 0), isManager);
        if (!isManager)
            return;
        m_managerStart = start;
        m_titleSets = titleSetPlacesIn(m_tree, information.node);
    }

    ContentTree &m_tree;
    ImageLayout &m_layout;
    std::vector<NodeIndex> &m_files;
    std::vector<NodeIndex> m_missed;
    std::uint64_t m_managerStart = 0;
    TitleSetPlaces m_titleSets{};
    unsigned int m_titleSet = titleSetCount + 1; ///< which one m_parts is about
    std::uint64_t m_titleSetStart = 0;
    PartPlaces m_parts;
};

} // namespace

std::vector<NodeIndex> placeDvdVideoFiles(ContentTree &tree, DRFilesystemMask filesystems, ImageLayout &layout,
                                          std::vector<NodeIndex> &files)
{
    const auto isOnDisc = [&](const ContentNode &content) {
        return content.kind != ContentKind::Absent && (content.filesystems() & filesystems) != 0;
    };
    std::vector<DvdFile> found;
    const ContentNode &root = tree.nodes[0];
    for (NodeIndex node = root.firstChild(); node < root.endChild(); ++node) {
        const ContentNode &folder = tree.nodes[node];
        if (!folder.isFolder() || !isOnDisc(folder) || folder.nameView() != "VIDEO_TS")
            continue;
        for (NodeIndex child = folder.firstChild(); child < folder.endChild(); ++child) {
            const ContentNode &content = tree.nodes[child];
            std::optional<DvdFile> file = dvdFileNamed(content.nameView());
            const bool isToBePlaced = content.isFile() && content.fileSize() > 0 && isOnDisc(content)
                && !content.has(ContentNode::LiesOnDisc);
            if (!file || !isToBePlaced)
                continue;
            file->node = child;
            found.push_back(*file);
        }
    }
    std::sort(found.begin(), found.end(), [](const DvdFile &one, const DvdFile &other) { return one.isBefore(other); });
    DvdVideoPlacer placer(tree, layout, files);
    for (const DvdFile &file : found)
        placer.place(file);
    return placer.missed();
}

} // namespace Tessaron
