#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace Tessaron::Testing
{

/// A row of blocks of the image that holds bytes of a file.
struct UdfExtent {
    std::uint64_t block = 0; ///< of the image
    std::uint64_t bytes = 0;

    friend auto operator<=>(const UdfExtent &, const UdfExtent &) = default;
};

/// What a UDF volume says of one name.
struct UdfObject {
    int type = 0; ///< ECMA-167 4/14.6.6
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::uint32_t permissions = 0;
    int flags = 0; ///< of its ICB
    int links = 0;
    std::uint64_t uniqueId = 0;
    std::uint64_t size = 0;
    std::uint32_t icb = 0; ///< block of the image
    bool isHidden = false;
    std::vector<UdfExtent> extents;
    QByteArray embedded; ///< contents that lie in the file entry
    QByteArray attributes;
    QByteArray linkTarget;
    QByteArray recordedName; ///< with the byte that says how
    std::vector<int> modification; ///< zone with type, year, month, day, hour, minute, second, and the three fractions
};

/// Reads a UDF 1.02 volume as ECMA-167 and OSTA UDF 1.02 describe it, and holds every structure on the way against
/// these: tags, checksums, sequences, extents, counts. What it finds wrong is a problem. Shares no code with the
/// writer.
class UdfImageReader
{
public:
    explicit UdfImageReader(const QString &path);

    /// Everything that is not as the standards want it; empty for a sound volume.
    [[nodiscard]] const QStringList &problems() const { return m_problems; }
    /// By path from the root in UTF-8, without a slash before; the root is "".
    [[nodiscard]] const std::map<QByteArray, UdfObject> &objects() const { return m_objects; }
    [[nodiscard]] QByteArray contents(const QByteArray &path);
    /// SHA-1 of the contents.
    [[nodiscard]] QByteArray digest(const QByteArray &path);

    [[nodiscard]] QString volumeName() const { return m_volumeName; }
    [[nodiscard]] QString volumeSet() const { return m_volumeSet; }
    [[nodiscard]] std::uint32_t partitionStart() const { return m_partitionStart; }

private:
    /// Where blocks are counted from.
    enum class Space { Volume, Partition };

    void problem(const QString &what) { m_problems.append(what); }
    void expect(bool isRight, const QString &what);
    [[nodiscard]] QByteArray block(std::uint64_t number);
    /// The bytes of a row of blocks of the image.
    [[nodiscard]] QByteArray bytesOf(const std::vector<UdfExtent> &extents);

    void checkTag(const QByteArray &bytes, int identifier, std::uint32_t location, const QString &where);
    void readRecognition();
    void readAnchors();
    [[nodiscard]] std::vector<QByteArray> readSequence(std::uint32_t start, std::uint32_t length, const QString &where);
    void readVolume(const std::vector<QByteArray> &descriptors);
    void readLogicalVolume(const QByteArray &descriptor);
    void readIntegrity(std::uint32_t start, std::uint32_t length);
    void readFileSet(std::uint32_t blockOfPartition);
    UdfObject readEntry(std::uint32_t blockOfPartition, const QString &where);
    void readAllocation(UdfObject &object, QByteArray descriptors, const QString &where);
    void checkExtents(const UdfObject &object, std::uint64_t recordedBlocks, const QString &where);
    void readDirectory(const QByteArray &path, const UdfObject &directory, std::uint32_t parentIcb);
    void claim(const UdfExtent &extent, bool isFileContents, const QString &where);
    void checkWhole();

    QFile m_file;
    QStringList m_problems;
    std::uint64_t m_blockCount = 0;
    std::uint32_t m_partitionStart = 0;
    std::uint32_t m_partitionLength = 0;
    std::uint64_t m_reserveStart = 0;
    QString m_volumeName;
    QString m_volumeSet;
    std::map<QByteArray, UdfObject> m_objects;
    struct Claim {
        std::uint64_t count = 0;
        bool isFileContents = false;
    };
    std::map<std::uint64_t, Claim> m_claims; ///< blocks in use, by the first
    std::map<std::uint32_t, int> m_linksTo; ///< how many directory entries lead to an ICB
    std::map<std::uint32_t, UdfObject> m_entries; ///< by ICB
    std::uint32_t m_fileNames = 0;
    std::uint32_t m_folderNames = 1;
    std::uint32_t m_statedFiles = 0;
    std::uint32_t m_statedFolders = 0;
    std::uint64_t m_nextUniqueId = 0;
};

/// A text in OSTA compressed Unicode.
[[nodiscard]] QString decodedUdfText(const QByteArray &recorded);

} // namespace Tessaron::Testing
