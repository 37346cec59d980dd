#pragma once

#include <QByteArray>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Tessaron::Testing
{

using HfsPlusExtents = std::vector<std::pair<std::uint32_t, std::uint32_t>>; ///< first block and count

/// Makes small HFS+ volumes of kinds that the project's own writer never makes, byte by byte from the text of the
/// format: other block sizes, files in many pieces, case-sensitive names, records that break a rule. Each B-tree has
/// one leaf. Records must be added in the order of their keys.
class HfsPlusVolumeMaker
{
public:
    explicit HfsPlusVolumeMaker(std::uint32_t blockSize = 4096)
        : m_blockSize(blockSize)
    {
    }

    static constexpr std::uint32_t blockCount = 200;
    /// The first block that no file of the volume itself has.
    [[nodiscard]] std::uint32_t firstFreeBlock() const;
    [[nodiscard]] std::uint32_t blockSize() const { return m_blockSize; }

    bool isHfsx = false;
    bool isCaseSensitive = false;
    bool hasJournal = false;
    /// Puts the second half of the catalog's blocks 50 blocks behind the first.
    bool hasCatalogInTwoPieces = false;

    struct File {
        std::uint32_t id = 16;
        std::uint16_t mode = 0100644;
        std::uint32_t special = 0;
        std::uint32_t created = 1000;
        QByteArray typeAndCreator = QByteArray(8, '\0');
        std::uint64_t length = 0;
        std::uint32_t blocks = 0; ///< in all extents
        HfsPlusExtents extents; ///< the first eight at most
    };

    /// The root and its thread come with the volume.
    void setRoot(std::uint32_t childCount) { m_rootChildren = childCount; }
    void addFolder(std::uint32_t parent, const std::u16string &name, std::uint32_t id, std::uint32_t childCount);
    void addFile(std::uint32_t parent, const std::u16string &name, const File &file);
    void addFolderThread(std::uint32_t id, std::uint32_t parent, const std::u16string &name);
    void addFileThread(std::uint32_t id, std::uint32_t parent, const std::u16string &name);
    /// A record of the extents file: the extents from block `startBlock` of a file's data fork on.
    void addExtents(std::uint32_t fileId, std::uint32_t startBlock, const HfsPlusExtents &extents);

    /// The whole image. The blocks of files hold their own numbers, one byte repeated.
    [[nodiscard]] QByteArray image() const;

private:
    struct Record {
        QByteArray key; ///< with its length
        QByteArray data;
    };

    [[nodiscard]] QByteArray tree(const std::vector<Record> &records, std::uint16_t longestKey,
                                  std::uint32_t attributes) const;
    [[nodiscard]] static QByteArray catalogKey(std::uint32_t parent, const std::u16string &name);
    [[nodiscard]] static QByteArray folderRecord(std::uint32_t id, std::uint32_t childCount);
    [[nodiscard]] static QByteArray threadRecord(bool isFolder, std::uint32_t parent, const std::u16string &name);

    const std::uint32_t m_blockSize;
    std::uint32_t m_rootChildren = 0;
    std::vector<Record> m_catalog;
    std::vector<Record> m_extents;
};

} // namespace Tessaron::Testing
