#pragma once

#include "tests/discrecording/hfsplus/HfsPlusBTreeReader.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <map>
#include <memory>
#include <string>

namespace Tessaron::Testing
{

/// A fork in the image.
struct HfsFork {
    std::uint64_t length = 0;
    std::uint32_t blockCount = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> extents; ///< first block and count
    friend bool operator==(const HfsFork &, const HfsFork &) = default;
};

/// A folder or file of the catalog.
struct HfsObject {
    std::uint32_t id = 0;
    std::uint32_t parentId = 0;
    std::u16string recordedName;
    QString name; ///< composed, ":" and "/" as POSIX has them
    bool isFolder = false;
    std::uint32_t valence = 0;
    std::int64_t creationTime = 0; ///< seconds since 1970
    std::int64_t modificationTime = 0;
    std::int64_t attributeTime = 0;
    std::int64_t accessTime = 0;
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::uint16_t mode = 0;
    std::uint32_t special = 0;
    QByteArray finderInfo; ///< 32 bytes
    HfsFork data;
    HfsFork resource;
    std::vector<std::unique_ptr<HfsObject>> children;

    [[nodiscard]] const HfsObject *child(const QString &wanted) const;
    [[nodiscard]] std::uint16_t finderFlags() const;
    [[nodiscard]] QByteArray typeAndCreator() const { return finderInfo.left(8); }
};

/// Reads the HFS+ volume of an image as the volume format describes it, and collects everything in it that breaks its
/// rules. Written from the text of the format: it shares no code with the writer.
class HfsPlusImageReader
{
public:
    explicit HfsPlusImageReader(const QString &path);

    [[nodiscard]] const QStringList &problems() const { return m_problems; }
    [[nodiscard]] const HfsObject &root() const { return *m_root; }
    /// An object by path, "/" the root; null when there is none. Links are not followed.
    [[nodiscard]] const HfsObject *objectAt(const QString &path) const;
    /// The file that a hard link means; any other object itself; null for a link that leads nowhere.
    [[nodiscard]] const HfsObject *resolved(const HfsObject &object) const;
    [[nodiscard]] QByteArray contents(const HfsFork &fork) const;
    /// Where the first byte of a fork lies in the image.
    [[nodiscard]] std::uint64_t positionOf(const HfsFork &fork) const
    {
        return static_cast<std::uint64_t>(m_volume.data() - m_bytes.data())
            + std::uint64_t{fork.extents[0].first} * 2048;
    }

    [[nodiscard]] const HfsPlusBTreeReader *catalog() const { return m_catalog.get(); }
    [[nodiscard]] const HfsPlusBTreeReader *extents() const { return m_extents.get(); }
    [[nodiscard]] std::uint32_t attributes() const { return big32(m_header, 4); }
    [[nodiscard]] std::uint32_t fileCount() const { return big32(m_header, 32); }
    [[nodiscard]] std::uint32_t folderCount() const { return big32(m_header, 36); }
    [[nodiscard]] std::uint32_t freeBlocks() const { return big32(m_header, 48); }
    [[nodiscard]] const HfsObject *privateFolder() const;

    /// The order of names by the text of the format: letters of one case as of Unicode 2 without decomposition.
    [[nodiscard]] bool hasWrapper() const { return m_hasWrapper; }
    /// Bytes that the partition map counts in.
    [[nodiscard]] std::uint32_t mapUnit() const { return m_mapUnit; }
    [[nodiscard]] static std::u16string folded(std::u16string_view name);

private:
    void problem(const QString &text);
    [[nodiscard]] HfsFork readFork(Bytes at, const QString &what);
    [[nodiscard]] Bytes bytesOf(const HfsFork &fork);
    void takeBlocks(std::uint32_t first, std::uint32_t count, const QString &what);
    void readPartitionMap();
    void readWrapper();
    void readHeader();
    void readTrees();
    void readBadBlocks();
    void readCatalog();
    std::unique_ptr<HfsObject> readObject(Bytes key, Bytes data);
    void attach(std::map<std::uint32_t, std::vector<std::unique_ptr<HfsObject>>> &byParent, HfsObject &folder);
    void checkFolder(const HfsObject &folder);
    void checkLink(const HfsObject &link);
    void checkLinkCounts();
    void checkBitmap();

    QFile m_file;
    Bytes m_bytes;
    Bytes m_volume;
    Bytes m_header;
    QStringList m_problems;
    std::uint32_t m_totalBlocks = 0;
    HfsFork m_allocationFile;
    std::vector<std::uint8_t> m_taken;
    std::unique_ptr<HfsPlusBTreeReader> m_catalog;
    std::unique_ptr<HfsPlusBTreeReader> m_extents;
    std::unique_ptr<HfsObject> m_root;
    /// Threads by ID: parent and name.
    struct Thread {
        bool isFolder = false;
        std::uint32_t parentId = 0;
        std::u16string name;
    };
    std::map<std::uint32_t, Thread> m_threads;
    std::map<std::uint32_t, std::uint32_t> m_linkCounts; ///< by ID of the file that is meant
    std::uint32_t m_files = 0;
    std::uint32_t m_folders = 0;
    bool m_hasWrapper = false;
    std::uint32_t m_mapUnit = 0;
};

} // namespace Tessaron::Testing
