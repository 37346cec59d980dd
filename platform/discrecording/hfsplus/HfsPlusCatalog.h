#pragma once

#include "platform/discrecording/hfsplus/BTreeRecords.h"
#include "platform/discrecording/hfsplus/HfsPlusForks.h"
#include "platform/discrecording/hfsplus/HfsPlusTree.h"

namespace Tessaron
{

/// Where the forks that the volume stores itself lie in the image: first blocks of their regions.
struct HfsPlusForkPlaces {
    std::uint64_t linkTargets = 0;
    std::uint64_t resourceForks = 0;
};

/// The records of the catalog file (HFS Plus Volume Format, "Catalog File"): a group for each folder and file in the
/// order of their IDs, its thread first, then a record for each child of a folder.
class HfsPlusCatalog final : public BTreeRecords
{
public:
    static constexpr std::uint16_t longestKey = 516;

    /// Both must outlive the catalog.
    HfsPlusCatalog(const HfsPlusTree &tree, const HfsPlusForks &forks);

    /// To be called before records are made; their sizes do not depend on it.
    void setPlaces(const HfsPlusForkPlaces &places) { m_places = places; }

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] BTreePosition first() const override;
    [[nodiscard]] bool advance(BTreePosition *position) const override;
    [[nodiscard]] std::size_t keySize(BTreePosition position) const override;
    [[nodiscard]] std::size_t recordSize(BTreePosition position) const override;
    void storeKey(BTreePosition position, std::uint8_t *to) const override;
    void storeRecord(BTreePosition position, std::uint8_t *to) const override;

private:
    enum class TargetKind : std::uint8_t {
        Node, ///< an object of the disc
        PrivateFolder, ///< the hidden folder
        LinkedFile, ///< a file with several names, in the hidden folder
    };
    /// What a record is about.
    struct Target {
        TargetKind kind = TargetKind::Node;
        std::uint32_t index = 0; ///< the object, or the number of the linked file
    };

    /// The folder or file that has the ID, which must be in use.
    [[nodiscard]] Target targetWithId(std::uint32_t id) const;
    [[nodiscard]] Target targetAt(BTreePosition position) const;
    [[nodiscard]] bool isFolder(Target target) const;
    /// Records of the group with the ID.
    [[nodiscard]] std::uint32_t itemCount(std::uint32_t id) const;
    [[nodiscard]] std::uint32_t parentIdOf(Target target) const;
    [[nodiscard]] std::size_t nameLengthOf(Target target) const;
    void nameOf(Target target, HfsPlusName *name) const;
    /// Writes length and units; returns the first byte behind them.
    std::uint8_t *storeName(Target target, std::uint8_t *to) const;

    void storeThread(Target target, std::uint8_t *to) const;
    void storeObject(NodeIndex node, std::uint8_t *to) const;
    void storeFolder(NodeIndex node, std::uint8_t *to) const;
    void storeFile(NodeIndex node, std::uint8_t *to) const;
    void storeLink(NodeIndex node, const HfsPlusSharedFile &file, std::uint8_t *to) const;
    void storePrivateFolder(std::uint8_t *to) const;
    void storeLinkedFile(std::uint32_t number, std::uint8_t *to) const;
    /// Times, permissions and Finder information, which have their places in all records.
    void storeAttributes(NodeIndex node, std::uint32_t special, std::uint8_t *to) const;
    void storeForks(NodeIndex node, std::uint8_t *to) const;

    const HfsPlusTree &m_tree;
    const HfsPlusForks &m_forks;
    HfsPlusForkPlaces m_places;
};

} // namespace Tessaron
