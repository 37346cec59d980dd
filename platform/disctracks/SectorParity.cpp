#include "platform/disctracks/SectorParity.h"

#include "platform/disctracks/SectorCoding.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace Tessaron
{

namespace
{

// The bytes from 12 on are 16-bit words in rows of 43; both bytes of a word are coded alike and apart. A column of P is
// a word of each of the 24 rows; a diagonal of Q takes 43 words, each one row and one column further than the one
// before. Each gets two bytes so that sum(c) = 0 and sum(c * a^(n-1-i)) = 0 in GF(256), where a is the root of
// x^8+x^4+x^3+x^2+1. All columns (or diagonals) advance side by side here, eight bytes in one word of the machine.

constexpr std::size_t firstByte = SectorField::address;
constexpr std::size_t wordsInRow = 43;
constexpr std::size_t rows = 24;
constexpr std::size_t rowBytes = 2 * wordsInRow;
constexpr std::size_t diagonals = 26;
constexpr std::size_t diagonalBytes = 2 * diagonals;
constexpr std::size_t wordsUnderQ = 1118; // those of P's parity included
constexpr std::size_t stepOfDiagonal = wordsInRow + 1;

template <std::size_t Bytes>
using Lanes = std::array<std::uint64_t, (Bytes + 7) / 8>;

/// Multiplies each of eight bytes by the root.
constexpr std::uint64_t timesRoot(std::uint64_t bytes)
{
    constexpr std::uint64_t lowSeven = 0x7F7F7F7F7F7F7F7Full;
    constexpr std::uint64_t ones = 0x0101010101010101ull;
    constexpr std::uint64_t reduction = 0x1D;
    return (bytes & lowSeven) << 1 ^ (bytes >> 7 & ones) * reduction;
}

/// table[x] * (a + 1) == x
constexpr std::array<std::uint8_t, 256> makeQuotients()
{
    std::array<std::uint8_t, 256> table{};
    for (std::uint64_t byte = 0; byte < 256; ++byte)
        table[std::size_t(timesRoot(byte) ^ byte) & 0xFF] = std::uint8_t(byte);
    return table;
}
constexpr std::array<std::uint8_t, 256> quotients = makeQuotients();

template <std::size_t Bytes>
struct Sums {
    Lanes<Bytes> plain{};
    Lanes<Bytes> weighted{};

    void add(const Lanes<Bytes> &bytes)
    {
        for (std::size_t lane = 0; lane < plain.size(); ++lane) {
            plain[lane] ^= bytes[lane];
            weighted[lane] = timesRoot(weighted[lane]) ^ bytes[lane];
        }
    }
    /// Solves both equations for the two bytes of each code.
    void put(std::uint8_t *to)
    {
        // The two bytes of parity themselves stand behind those added: two more steps for the weighted sum.
        for (std::uint64_t &lane : weighted)
            lane = timesRoot(timesRoot(lane));
        std::array<std::uint8_t, sizeof(plain)> sum;
        std::array<std::uint8_t, sizeof(plain)> weightedSum;
        std::memcpy(sum.data(), plain.data(), sum.size());
        std::memcpy(weightedSum.data(), weighted.data(), weightedSum.size());
        for (std::size_t index = 0; index < Bytes; ++index) {
            to[index] = quotients[sum[index] ^ weightedSum[index]];
            to[index + Bytes] = to[index] ^ sum[index];
        }
    }
};

/// Two diagonals more than there are, so that all fill whole lanes; their sums are dropped.
constexpr std::size_t lanesOfDiagonals = 4 * std::tuple_size_v<Lanes<diagonalBytes>>;
using DiagonalWords = std::array<std::array<std::uint16_t, lanesOfDiagonals>, wordsInRow>;

/// Where the word of each diagonal lies at each step, in bytes. (The order of bytes in the machine's words does not
/// matter: no byte is combined with its neighbour.)
constexpr DiagonalWords makeDiagonalWords()
{
    DiagonalWords offsets{};
    for (std::size_t step = 0; step < wordsInRow; ++step) {
        for (std::size_t diagonal = 0; diagonal < lanesOfDiagonals; ++diagonal)
            offsets[step][diagonal] =
                std::uint16_t(2 * ((stepOfDiagonal * step + wordsInRow * diagonal) % wordsUnderQ));
    }
    return offsets;
}
constexpr DiagonalWords diagonalWords = makeDiagonalWords();

void putP(std::uint8_t *coded)
{
    Sums<rowBytes> sums;
    Lanes<rowBytes> row{};
    for (std::size_t index = 0; index < rows; ++index) {
        std::memcpy(row.data(), coded + index * rowBytes, rowBytes);
        sums.add(row);
    }
    sums.put(coded + rows * rowBytes);
}

std::uint64_t wordAt(const std::uint8_t *coded, std::size_t offset)
{
    std::uint16_t word;
    std::memcpy(&word, coded + offset, sizeof(word));
    return word;
}

void putQ(std::uint8_t *coded)
{
    Sums<diagonalBytes> sums;
    Lanes<diagonalBytes> words{};
    for (const auto &offsets : diagonalWords) {
        // Lanes are put together in registers: the processor is slow to load what was just stored in smaller parts.
        for (std::size_t lane = 0; lane < words.size(); ++lane) {
            const std::uint16_t *const from = &offsets[4 * lane];
            words[lane] = wordAt(coded, from[0]) | wordAt(coded, from[1]) << 16 | wordAt(coded, from[2]) << 32
                | wordAt(coded, from[3]) << 48;
        }
        sums.add(words);
    }
    sums.put(coded + 2 * wordsUnderQ);
}

} // namespace

void putSectorParity(std::uint8_t *sector)
{
    putP(sector + firstByte);
    putQ(sector + firstByte);
}

} // namespace Tessaron
