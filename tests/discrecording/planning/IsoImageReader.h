#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// What Rock Ridge says of an object.
struct RockRidgeEntry {
    QByteArray name;
    std::uint32_t mode = 0;
    std::uint32_t linkCount = 0;
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::uint32_t serialNumber = 0;
    std::optional<std::uint64_t> deviceNumber; ///< high half times 2^32 plus low half
    QByteArray linkTarget;
    std::optional<std::uint32_t> childBlock; ///< CL: where the folder lies that the record stands for
    std::optional<std::uint32_t> parentBlock; ///< PL: where the folder lies to which a relocated one belongs
    bool isRelocated = false; ///< RE
    std::int64_t modificationTime = 0; ///< seconds since 1970
    std::int64_t accessTime = 0;
    std::int64_t attributeTime = 0;
};

/// One object of a hierarchy as an image has it.
struct IsoObject {
    QByteArray identifier; ///< as recorded
    bool isFolder = false;
    bool isHidden = false;
    std::uint64_t size = 0;
    struct Extent {
        std::uint32_t block = 0;
        std::uint32_t bytes = 0;
        friend bool operator==(const Extent &, const Extent &) = default;
    };
    std::vector<Extent> extents; ///< one for each file section
    std::int64_t recordingTime = 0;
    std::optional<RockRidgeEntry> rockRidge;
    std::vector<std::unique_ptr<IsoObject>> children;
    std::optional<std::uint32_t> belongsTo; ///< PL of a folder's ".."

    /// The name for comparisons: Rock Ridge's, else the identifier without version and final dot, else the text of
    /// UCS-2.
    QString name;
    /// The child of that name; null when there is none.
    [[nodiscard]] const IsoObject *child(const QString &wanted) const;
};

/// One volume descriptor with its hierarchy.
struct IsoVolume {
    int type = 0; ///< 1 primary, 2 supplementary
    QByteArray volumeName; ///< 32 bytes as recorded
    QByteArray application;
    QByteArray creationDate; ///< 17 bytes
    std::uint32_t blockCount = 0;
    std::uint32_t pathTableSize = 0;
    std::uint32_t littleEndianTable = 0;
    std::uint32_t bigEndianTable = 0;
    std::size_t pathTableFolders = 0;
    IsoObject root;
    bool isJoliet = false;
};

/// Reads an image as ECMA-119, SUSP and IEEE P1282 describe it, and collects everything in it that breaks a rule of
/// these texts. Written from the texts: it shares no code with the writer.
class IsoImageReader
{
public:
    explicit IsoImageReader(const QString &path);

    /// What is wrong with the image, one sentence each; empty for a sound one.
    [[nodiscard]] const QStringList &problems() const { return m_problems; }
    [[nodiscard]] const std::vector<std::unique_ptr<IsoVolume>> &volumes() const { return m_volumes; }
    /// The primary volume; null when there is none.
    [[nodiscard]] const IsoVolume *primary() const { return volumeOfType(1); }
    [[nodiscard]] const IsoVolume *joliet() const { return volumeOfType(2); }
    /// An object by path, "/" the root; null when there is none.
    [[nodiscard]] static const IsoObject *objectAt(const IsoVolume &volume, const QString &path);
    /// The contents of a file.
    [[nodiscard]] QByteArray contents(const IsoObject &file) const;

    /// Lets the hierarchy be deeper and the path table shorter than the standard has it.
    static constexpr std::size_t largestParentNumber = 65535;

private:
    [[nodiscard]] const IsoVolume *volumeOfType(int type) const;
    [[nodiscard]] std::span<const std::uint8_t> block(std::uint64_t number, std::uint64_t bytes = 2048) const;
    void problem(const QString &text) { m_problems.append(text); }
    std::uint32_t bothEndian32(std::span<const std::uint8_t> at, const QString &what);
    std::uint16_t bothEndian16(std::span<const std::uint8_t> at, const QString &what);

    void readDescriptors();
    void readVolume(std::span<const std::uint8_t> descriptor);
    void checkDate(std::span<const std::uint8_t> date, const QString &what);
    void readRootRecord(IsoVolume &volume, std::span<const std::uint8_t> record);
    void readFolder(IsoVolume &volume, IsoObject &folder, const IsoObject &parent, const QString &path);
    std::unique_ptr<IsoObject> readRecord(const IsoVolume &volume, std::span<const std::uint8_t> record,
                                          const QString &where);
    void checkIdentifier(const IsoVolume &volume, const IsoObject &object, const QString &where);
    void checkOrder(const IsoVolume &volume, const IsoObject &folder, const QString &where);
    std::int64_t recordingTime(std::span<const std::uint8_t> date, const QString &what);
    void readPathTable(IsoVolume &volume);
    void takeExtent(std::uint64_t blockNumber, std::uint64_t bytes, bool isFile, const QString &what);
    void checkExtents();

    /// Reads the entries of a system use field and of the areas that it leads to.
    void readSystemUse(std::span<const std::uint8_t> area, RockRidgeEntry &entry, bool isRootItself,
                       const QString &where);
    void readAttributes(std::span<const std::uint8_t> entry, RockRidgeEntry &result, const QString &where);
    void readLink(std::span<const std::uint8_t> entry, RockRidgeEntry &result, const QString &where);

    struct TakenExtent {
        std::uint64_t block = 0;
        std::uint64_t blockCount = 0;
        bool isFile = false;
        QString what;
    };

    QFile m_file;
    std::span<const std::uint8_t> m_bytes;
    std::vector<std::unique_ptr<IsoVolume>> m_volumes;
    std::vector<TakenExtent> m_extents;
    QStringList m_problems;
    bool m_hasRockRidge = false;
    // State of the system use field that is being read.
    QStringList m_signatures;
    bool m_nameContinues = false;
    bool m_linkContinues = false;
    bool m_componentContinues = false;
};

/// Compares the hierarchies of a primary and a Joliet volume: each regular file and folder of one must be in the other
/// with the same contents. Problems as sentences.
[[nodiscard]] QStringList differencesBetween(const IsoVolume &primary, const IsoVolume &joliet);

} // namespace Tessaron::Testing
