#include "platform/quicktime/AtomSource.h"

#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

/// Enough for the tables of a movie of a day, far below what keeps anybody waiting.
constexpr std::int64_t mostBytes = std::int64_t(128) << 20;
/// A film of ten hours in fragments of half a second has 150,000.
constexpr std::int64_t mostAtoms = 1'000'000;
/// Behind a jump, what is read are mostly the headers of a few atoms.
constexpr std::int64_t leastCostOfRead = 512;

constexpr std::int64_t shortHeader = 8;
constexpr std::int64_t longHeader = 16;

// Sizes that mean something else.
constexpr std::uint64_t sizeIsLong = 1; ///< 64 bits behind the type
constexpr std::uint64_t reachesToTheEnd = 0;

template <typename Integer>
Integer bigEndian(QByteArrayView bytes, qsizetype at)
{
    return loadBigEndian<Integer>(reinterpret_cast<const std::uint8_t *>(bytes.data()) + at);
}

} // namespace

AtomSource::AtomSource(const MediaFile &file, std::stop_token stop)
    : m_file(&file)
    , m_stop(std::move(stop))
    , m_length(file.length())
    , m_budget(mostBytes)
    , m_atoms(mostAtoms)
{
}

AtomSource::AtomSource(const QByteArray &bytes)
    : m_file(nullptr)
    , m_length(bytes.size())
    , m_window(bytes)
    , m_budget(mostBytes)
    , m_atoms(mostAtoms)
{
}

QByteArrayView AtomSource::bytesAt(std::int64_t offset, std::int64_t length)
{
    if (offset < 0 || offset >= m_length || length <= 0)
        return {};
    length = std::min({length, longestView, m_length - offset});
    const std::int64_t windowEnd = m_windowBegin + m_window.size();
    if (m_file && (offset < m_windowBegin || offset + length > windowEnd))
        fillWindow(offset);
    const std::int64_t at = offset - m_windowBegin;
    const auto available = std::min<std::int64_t>(length, m_window.size() - at);
    return available > 0 ? QByteArrayView(m_window).sliced(at, available) : QByteArrayView();
}

void AtomSource::fillWindow(std::int64_t offset)
{
    m_windowBegin = offset;
    m_window.resize(longestView);
    std::size_t got = 0;
    if (!isCancelled() && !isLimitReached() && m_failure == 0)
        m_failure = m_file->read(offset, m_window.data(), std::size_t(m_window.size()), &got);
    m_window.truncate(qsizetype(got));
    m_budget -= std::max(std::int64_t(got), leastCostOfRead);
}

std::uint32_t AtomSource::numberAt(std::int64_t offset)
{
    const QByteArrayView bytes = bytesAt(offset, 4);
    return bytes.size() == 4 ? bigEndian<std::uint32_t>(bytes, 0) : 0;
}

AtomWalk::AtomWalk(AtomSource &source, std::int64_t begin, std::int64_t end)
    : m_source(source)
    , m_next(begin)
    , m_end(std::min(end, source.length()))
{
}

AtomWalk::AtomWalk(AtomSource &source, const Atom &parent)
    : AtomWalk(source, parent.content, parent.end)
{
}

std::optional<Atom> AtomWalk::next()
{
    const std::int64_t left = m_end - m_next;
    if (left < shortHeader || !m_source.countAtom())
        return {};
    const QByteArrayView head = m_source.bytesAt(m_next, std::min(left, longHeader));
    if (head.size() < shortHeader)
        return {};
    std::uint64_t size = bigEndian<std::uint32_t>(head, 0);
    std::int64_t headerSize = shortHeader;
    if (size == sizeIsLong && head.size() == longHeader) {
        size = bigEndian<std::uint64_t>(head, 8);
        headerSize = longHeader;
    } else if (size == reachesToTheEnd) {
        size = std::uint64_t(left);
    }
    if (size < std::uint64_t(headerSize))
        return {};
    Atom atom{bigEndian<std::uint32_t>(head, 4), m_next, m_next + headerSize, m_end};
    if (size < std::uint64_t(left))
        atom.end = m_next + std::int64_t(size);
    m_next = atom.end;
    return atom;
}

std::optional<Atom> atomOnWay(AtomSource &source, const Atom &parent, std::initializer_list<std::uint32_t> way)
{
    Atom place = parent;
    for (const std::uint32_t type : way) {
        AtomWalk walk(source, place);
        std::optional<Atom> atom;
        do
            atom = walk.next();
        while (atom && atom->type != type);
        if (!atom)
            return {};
        place = *atom;
    }
    return place;
}

QByteArray contentOfAtom(AtomSource &source, const Atom &atom, std::int64_t most)
{
    const std::int64_t length = std::min(atom.end - atom.content, most);
    QByteArray content;
    while (content.size() < length) {
        const QByteArrayView piece = source.bytesAt(atom.content + content.size(), length - content.size());
        if (piece.isEmpty())
            break;
        content.append(piece);
    }
    return content;
}

} // namespace Tessaron
