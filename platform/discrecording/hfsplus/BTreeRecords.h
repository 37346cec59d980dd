#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

/// Where in the sequence of a B-tree's records one of them stands. The numbers mean something only to the BTreeRecords
/// that made them.
struct BTreePosition {
    std::uint32_t group = 0;
    std::uint32_t item = 0;

    friend bool operator==(const BTreePosition &, const BTreePosition &) = default;
};

/// All records of a B-tree, ordered by their keys: made one by one whenever they are needed, never held together. All
/// operations may be called by several threads at once.
class BTreeRecords
{
public:
    virtual ~BTreeRecords() = default;

    [[nodiscard]] virtual bool isEmpty() const = 0;
    [[nodiscard]] virtual BTreePosition first() const = 0;
    /// Moves on to the next record; false behind the last one.
    [[nodiscard]] virtual bool advance(BTreePosition *position) const = 0;

    /// Bytes of the key, its length included; an even number.
    [[nodiscard]] virtual std::size_t keySize(BTreePosition position) const = 0;
    /// Bytes of the key and what follows it; an even number.
    [[nodiscard]] virtual std::size_t recordSize(BTreePosition position) const = 0;
    /// Writes the key into zeroed bytes.
    virtual void storeKey(BTreePosition position, std::uint8_t *to) const = 0;
    /// Writes the key and what follows it into zeroed bytes.
    virtual void storeRecord(BTreePosition position, std::uint8_t *to) const = 0;
};

} // namespace Tessaron
