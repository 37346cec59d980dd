#pragma once

#include "platform/quicktime/MediaFile.h"

#include <QByteArray>
#include <QByteArrayView>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stop_token>

namespace Tessaron
{

/// Four characters as a number, the first one in the highest byte.
[[nodiscard]] constexpr std::uint32_t fourCharacterCode(const char (&text)[5])
{
    std::uint32_t code = 0;
    for (int index = 0; index < 4; ++index)
        code = code << 8 | std::uint8_t(text[index]);
    return code;
}

/// An atom of a QuickTime file, a box of an MP4 file: where it lies (QuickTime File Format, "Atoms"; ISO/IEC 14496-12
/// 4.2).
struct Atom {
    std::uint32_t type = 0;
    std::int64_t begin = 0; ///< its header
    std::int64_t content = 0; ///< behind the header
    std::int64_t end = 0; ///< not included
};

/// What atoms lie in: a file, of which a window of 32 KiB is kept, or bytes in memory. Reading has limits, so that no
/// structure can lead in circles or through a terabyte of nothing. One thread at a time.
class AtomSource
{
public:
    static constexpr std::int64_t longestView = std::int64_t(32) << 10;

    /// The file must outlive this.
    explicit AtomSource(const MediaFile &file, std::stop_token stop = {});
    explicit AtomSource(const QByteArray &bytes);
    AtomSource(const AtomSource &) = delete;
    AtomSource &operator=(const AtomSource &) = delete;

    [[nodiscard]] std::int64_t length() const { return m_length; }

    /// At most `longestView` bytes from a place, valid until the next call; fewer at the end, after a failure, when
    /// cancelled, and when the limit is reached.
    [[nodiscard]] QByteArrayView bytesAt(std::int64_t offset, std::int64_t length);
    /// The same for a number, the highest byte first; 0 where it is cut.
    [[nodiscard]] std::uint32_t numberAt(std::int64_t offset);

    /// Counts an atom that is looked at; false once there are too many.
    [[nodiscard]] bool countAtom() { return m_atoms > 0 && m_atoms-- > 0; }

    /// Why bytes were missing: 0, or the `errno` value of a read that failed.
    [[nodiscard]] int failure() const { return m_failure; }
    [[nodiscard]] bool isCancelled() const { return m_stop.stop_requested(); }
    /// More was to be read than the tables of a movie of a day take.
    [[nodiscard]] bool isLimitReached() const { return m_budget <= 0 || m_atoms <= 0; }

private:
    void fillWindow(std::int64_t offset);

    const MediaFile *const m_file; ///< null for memory
    const std::stop_token m_stop;
    const std::int64_t m_length;
    QByteArray m_window;
    std::int64_t m_windowBegin = 0;
    std::int64_t m_budget; ///< bytes
    std::int64_t m_atoms;
    int m_failure = 0;
};

/// Goes through the atoms between two places. One that reaches past the end is cut there; one that is shorter than its
/// header ends the walk.
class AtomWalk
{
public:
    AtomWalk(AtomSource &source, std::int64_t begin, std::int64_t end);
    /// Those inside of an atom.
    AtomWalk(AtomSource &source, const Atom &parent);

    [[nodiscard]] std::optional<Atom> next();

private:
    AtomSource &m_source;
    std::int64_t m_next;
    const std::int64_t m_end;
};

/// The first atom of a type inside of another one, and so on down a way; no value where one is missing.
[[nodiscard]] std::optional<Atom> atomOnWay(AtomSource &source, const Atom &parent,
                                            std::initializer_list<std::uint32_t> way);

/// The content of an atom, cut at a limit.
[[nodiscard]] QByteArray contentOfAtom(AtomSource &source, const Atom &atom, std::int64_t most);

/// The entries of a table, `count` of them of a size, from a place on: each is passed to `take`, as bytes that are
/// there. False when the table is cut.
template <typename Take>
[[nodiscard]] bool forEachEntry(AtomSource &source, std::int64_t begin, std::int64_t end, std::uint64_t count,
                                std::int64_t entrySize, const Take &take)
{
    const std::int64_t mostEntries = AtomSource::longestView / entrySize;
    if (begin > end || count > std::uint64_t((end - begin) / entrySize))
        return false;
    while (count > 0) {
        const auto entries = std::int64_t(std::min(count, std::uint64_t(mostEntries)));
        const QByteArrayView bytes = source.bytesAt(begin, entries * entrySize);
        if (bytes.size() < entries * entrySize)
            return false;
        for (std::int64_t index = 0; index < entries; ++index)
            take(reinterpret_cast<const std::uint8_t *>(bytes.data()) + index * entrySize);
        begin += entries * entrySize;
        count -= std::uint64_t(entries);
    }
    return true;
}

} // namespace Tessaron
